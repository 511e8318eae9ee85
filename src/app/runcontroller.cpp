#include "app/runcontroller.h"

#include "app/imagingpictureloader.h"
#include "batch/libraryimaging.h"
#include "batch/workerpool.h"

#include <QMetaObject>
#include <QThread>

namespace valtrona {

namespace {

constexpr qint64 previewInterval = 1000; // ms

} // namespace

RunController::RunController(ConversionHost &host, QObject *parent)
    : QObject(parent)
    , m_host(host)
{
    m_previewTimer.setSingleShot(true);
    connect(&m_previewTimer, &QTimer::timeout, this, &RunController::tryPreview);
}

RunController::~RunController()
{
    release();
}

void RunController::start(const RunParameters &parameters, DrawingSettingsReader drawingSettings, int jobs)
{
    release();
    const int workers = jobs > 0 ? jobs : std::max(1, QThread::idealThreadCount());
    shareCoresAmong(workers);
    m_pool = std::make_unique<WorkerPool>(workers);
    m_imaging = std::make_unique<LibraryImaging>();
    m_run = std::make_unique<ConversionRun>(m_host, *m_imaging, *m_pool, std::move(drawingSettings));
    // Workers report from their threads; the run goes on on this one. The
    // pool never outlives the controller, so `this` is safe to post to.
    m_pool->setJobFinished([this] { QMetaObject::invokeMethod(this, &RunController::advance, Qt::QueuedConnection); });
    m_running = true;
    m_previewBusy = false;
    m_wantedPreview.clear();
    m_lastPreview.invalidate();
    m_run->start(parameters);
    advance();
}

bool RunController::isRunning() const
{
    return m_running;
}

void RunController::checkStop()
{
    if (m_running)
        advance();
}

void RunController::advance()
{
    if (!m_running || !m_run)
        return;
    // The run calls the window, and the window may call back (a stop
    // pressed from a row's handler): such a call is taken up afterwards.
    if (m_advancing) {
        m_advanceAgain = true;
        return;
    }
    m_advancing = true;
    bool goesOn = true;
    do {
        m_advanceAgain = false;
        goesOn = m_run->advance();
    } while (goesOn && m_advanceAgain);
    m_advancing = false;
    if (goesOn)
        return;
    m_running = false;
    m_summary = m_run->summary();
    shareCoresAmong(1);
    // The workers go once the window has heard the news.
    QMetaObject::invokeMethod(this, [this] { if (!m_running) release(); }, Qt::QueuedConnection);
    Q_EMIT finished(m_summary);
}

void RunController::readPreview(const QString &path, const QSize &box)
{
    m_wantedPreview = path;
    m_previewBox = box;
    tryPreview();
}

// A preview costs a decode of the whole source on the workers that
// convert (some 40 ms for a 24-megapixel photo): one a second shows the
// run's progress, so faster runs skip the ones that would only flash by.
void RunController::tryPreview()
{
    if (m_previewBusy || !m_pool || !m_running || m_wantedPreview.isEmpty())
        return;
    const qint64 wait = m_lastPreview.isValid() ? previewInterval - m_lastPreview.elapsed() : 0;
    if (wait > 0) {
        if (!m_previewTimer.isActive())
            m_previewTimer.start(int(wait));
        return;
    }
    startPreview();
}

void RunController::startPreview()
{
    m_previewBusy = true;
    m_lastPreview.start();
    const QString path = m_wantedPreview;
    const QSize box = m_previewBox;
    m_pool->submit([this, path, box] {
        const LoadedPicture picture = ImagingPictureLoader::readPreview(path, box);
        QMetaObject::invokeMethod(this, [this, path, picture] {
            m_previewBusy = false;
            if (path == m_wantedPreview)
                Q_EMIT previewReady(path, picture);
            else
                tryPreview(); // the run has moved on meanwhile
        }, Qt::QueuedConnection);
    });
}

RunSummary RunController::summary() const
{
    return m_summary;
}

void RunController::release()
{
    // The run first: it waits for its own jobs, which need the pool.
    m_run.reset();
    m_pool.reset();
    m_imaging.reset();
    m_running = false;
}

QString runSummaryText(const RunSummary &summary)
{
    QString text = QString::number(summary.written) + QStringLiteral(" bearbeitet, ")
        + QString::number(summary.failed) + QStringLiteral(" Fehler");
    if (summary.stopped)
        text += QStringLiteral(" – abgebrochen");
    return text;
}

} // namespace valtrona
