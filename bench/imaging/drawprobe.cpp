// Draws one file the way a run does and prints what drawMemory() expected
// next to what the drawing took: the rise of the process's peak resident
// memory over what it held just before. One drawing per process, so peaks
// do not mix; bench/memory.sh runs it over one file per decoder, and it can
// be run by hand for any file:
//
//   imaging_drawprobe SOURCE WIDTH HEIGHT jpeg|png|webp|avif [WARM-UP SOURCE]
//
// A warm-up drawing of a small file of the same format first brings in the
// code and the worker threads every drawing shares, so that the rise is what
// one more drawing costs. Prints "estimate <bytes> measured <bytes>", or the
// error code of a failure, and exits with 0 when the drawing succeeded, 1
// when it failed, 3 when the system cannot reset the peak to measure it.

#include "core/targetfolder.h"
#include "imaging/conversion.h"
#include "imaging/imaging.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDir>
#include <QFile>

#include <cstdio>

using namespace valtrona;

namespace {

// A field of /proc/self/status in bytes ("VmRSS", "VmHWM").
qint64 statusBytes(const char *field)
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    const QByteArray prefix = QByteArray(field) + ':';
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith(prefix))
            return line.mid(prefix.size()).trimmed().split(' ').value(0).toLongLong() * 1024;
    }
    return -1;
}

Expected<void, Error> draw(const files::TargetFolder &folder, const imaging::DrawRequest &request)
{
    auto pending = folder.createPending();
    if (!pending)
        return unexpected(pending.error());
    return imaging::drawInto(request, *pending);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList arguments = app.arguments();
    if (arguments.size() < 5) {
        std::fprintf(stderr, "usage: imaging_drawprobe SOURCE WIDTH HEIGHT jpeg|png|webp|avif [WARM-UP SOURCE]\n");
        return 2;
    }
    if (!imaging::start())
        return 2;
    auto folder = files::TargetFolder::open(QDir::tempPath(), files::TargetFolder::Creation::ExistingOnly);
    if (!folder)
        return 2;

    imaging::DrawRequest request;
    request.source = arguments.at(1);
    request.width = arguments.at(2).toInt();
    request.height = arguments.at(3).toInt();
    const QString format = arguments.at(4);
    request.format = format == QStringLiteral("png")    ? imaging::OutputFormat::Png
                     : format == QStringLiteral("webp") ? imaging::OutputFormat::WebP
                     : format == QStringLiteral("avif") ? imaging::OutputFormat::Avif
                                                        : imaging::OutputFormat::Jpeg;
    if (arguments.size() > 5) {
        imaging::DrawRequest warmUp = request;
        warmUp.source = arguments.at(5);
        warmUp.width = 16;
        warmUp.height = 12;
        if (!draw(*folder, warmUp))
            return 2;
    }

    auto info = imaging::inspect(request.source);
    if (!info) {
        std::printf("error %d\n", int(info.error().code));
        return 1;
    }
    const qint64 estimate = imaging::drawMemory(*info, request.width, request.height, request.modes, request.format);

    // Resets the peak to what is resident now.
    QFile clearRefs(QStringLiteral("/proc/self/clear_refs"));
    if (!clearRefs.open(QIODevice::WriteOnly) || clearRefs.write("5") != 1 || !clearRefs.flush())
        return 3;
    clearRefs.close();
    const qint64 before = statusBytes("VmRSS");
    const auto drawn = draw(*folder, request);
    const qint64 peak = statusBytes("VmHWM");
    if (!drawn) {
        std::printf("error %d %s\n", int(drawn.error().code), qPrintable(drawn.error().detail));
        return 1;
    }
    std::printf("estimate %lld measured %lld\n", static_cast<long long>(estimate),
                static_cast<long long>(peak - before));
    return 0;
}
