#pragma once

#include "batch/conversionrun.h"
#include "controls/pictureloader.h"

#include <QElapsedTimer>
#include <QObject>
#include <QSize>
#include <QString>
#include <QTimer>

#include <memory>

namespace valtrona {

class LibraryImaging;
class WorkerPool;

/// Runs a conversion for the window without holding it up: the files are
/// converted on a pool of workers, and everything the window shows happens
/// on its own thread whenever a worker reports. The run's previews are read
/// on the same workers.
class RunController : public QObject
{
    Q_OBJECT

public:
    /// `host` is the window's side of the run; it outlives the controller.
    explicit RunController(ConversionHost &host, QObject *parent = nullptr);
    /// Lets the file in hand finish (nothing half-written stays) and waits
    /// for the workers.
    ~RunController() override;

    /// Starts a run on `jobs` workers (0: one per core) and returns at once.
    void start(const RunParameters &parameters, DrawingSettingsReader drawingSettings, int jobs = 0);
    bool isRunning() const;

    /// Tells the run to look at the host's stop flag now, so work on files
    /// after the one in hand ends at once.
    void checkStop();

    /// Reads a preview of `path` no larger than `box` on a worker;
    /// previewReady() follows. While one is read, only the newest request
    /// waits, and a new one starts at most every quarter of a second. Only
    /// during a run.
    void readPreview(const QString &path, const QSize &box);

    /// How the last run ended.
    RunSummary summary() const;

Q_SIGNALS:
    void previewReady(const QString &path, const valtrona::LoadedPicture &picture);
    /// The run has ended (finished or stopped).
    void finished(const valtrona::RunSummary &summary);

private:
    void advance();
    void tryPreview();
    void startPreview();
    void release();

    ConversionHost &m_host;
    std::unique_ptr<WorkerPool> m_pool;
    std::unique_ptr<LibraryImaging> m_imaging;
    std::unique_ptr<ConversionRun> m_run;
    RunSummary m_summary;
    bool m_running = false;
    bool m_advancing = false;
    bool m_advanceAgain = false;
    bool m_previewBusy = false;
    QString m_wantedPreview;
    QSize m_previewBox;
    QElapsedTimer m_lastPreview;
    QTimer m_previewTimer;
};

/// The end of a run in a few words: "198 bearbeitet, 2 Fehler".
QString runSummaryText(const RunSummary &summary);

} // namespace valtrona
