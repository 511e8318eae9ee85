#include "app/offthreadimaging.h"

#include <QEventLoop>
#include <QThread>

#include <atomic>

namespace valtrona {

OffThreadImaging::OffThreadImaging(ConversionImaging &inner, bool processEvents)
    : m_inner(inner)
    , m_processEvents(processEvents)
{
}

bool OffThreadImaging::restart()
{
    return m_inner.restart();
}

SourceSize OffThreadImaging::measure(const QString &path)
{
    return m_inner.measure(path);
}

bool OffThreadImaging::drawAndSave(const QString &source, const QString &target, int width, int height,
                                   const DrawingSettings &settings, const QString &formatCode)
{
    return offThread([&] { return m_inner.drawAndSave(source, target, width, height, settings, formatCode); });
}

bool OffThreadImaging::copyFile(const QString &source, const QString &target)
{
    return offThread([&] { return m_inner.copyFile(source, target); });
}

bool OffThreadImaging::offThread(const std::function<bool()> &work)
{
    std::atomic_bool result = false;
    QThread *worker = QThread::create([&] { result = work(); });
    QEventLoop loop;
    QObject::connect(worker, &QThread::finished, &loop, &QEventLoop::quit);
    worker->start();
    // The loop returns early when the application is told to quit; the
    // file is still finished below, so nothing is left half-written.
    if (m_processEvents)
        loop.exec();
    worker->wait();
    delete worker;
    return result;
}

std::optional<QByteArray> OffThreadImaging::readExif(const QString &source)
{
    return m_inner.readExif(source);
}

bool OffThreadImaging::writeExif(const QString &target, const QByteArray &block)
{
    return m_inner.writeExif(target, block);
}

Error OffThreadImaging::lastError()
{
    return m_inner.lastError();
}

} // namespace valtrona
