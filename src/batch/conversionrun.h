#pragma once

#include "batch/conversionhost.h"
#include "batch/conversionimaging.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>

namespace valtrona {

/// What a run reads once at its start (cards 1 and 2 of the window).
struct RunParameters
{
    QStringList sources;           ///< full source paths in list order
    QString targetDirectory;       ///< with or without a trailing separator
    int changeStyle = 0;           ///< 0..4, see sizerules
    bool keepDate = false;         ///< target gets the source's modification time
    bool copyExif = false;         ///< EXIF block of a JPEG source is carried over
    QString searchText;            ///< replaced in the target file name, ignoring case
    QString replaceText;
    QString formatCode = QStringLiteral("J"); ///< "J" JPEG, "P" PNG
    bool keepDirectoryStructure = false;
};

/// How a run ended.
struct RunSummary
{
    int count = 0;      ///< files in the list
    int written = 0;    ///< files reported "Bild erfolgreich bearbeitet"
    int failed = 0;     ///< files reported with an "ERR" row
    bool stopped = false;
    int restarts = 0;   ///< imaging restarts, the first and the last included
};

/// Reads the drawing settings (section "JPG") as they stand now.
using DrawingSettingsReader = std::function<DrawingSettings()>;

/// One pass over a source list: every image measured, sized, drawn or copied,
/// written into the target directory and reported row by row to the host.
///
/// With one job the run is strictly sequential on the calling thread. With
/// more jobs files are converted on worker threads; the rows still reach the
/// host grouped per file in list order, exactly as the sequential run writes
/// them, and the imaging library is restarted at the same points. The host
/// is only ever called on the calling thread, which yields to it at least
/// every 40 ms while it waits; the per-file inputs and drawing settings are
/// read when a file is handed to a worker, up to twice the job count ahead
/// of the file whose rows are written, and the stop flag is honoured at the
/// first file no worker has started yet.
class ConversionRun
{
public:
    ConversionRun(ConversionHost &host, ConversionImaging &imaging, DrawingSettingsReader drawingSettings);

    /// Number of files converted at once (default 1); values below 1 count as 1.
    void setJobs(int jobs);
    int jobs() const;

    /// Converts on a worker thread even with one job, so that the host's
    /// yield() keeps running (every 40 ms) while a large file is worked on.
    /// Files are still done one after the other. Default off: the run's
    /// thread converts each file itself, between its yields.
    void setConvertInBackground(bool background);

    /// Runs over `parameters.sources`; returns when all files are done or the host asked to stop.
    RunSummary run(const RunParameters &parameters);

private:
    struct FileTask;
    struct FileOutcome;
    class Scheduler;

    using RowSink = std::function<void(const StatusRow &)>;

    FileTask prepareFile(const RunParameters &parameters, const QString &commonBase, int index) const;
    bool convertPicture(const FileTask &task, const RowSink &sink, const DrawingSettingsReader &drawing,
                        Error &failure);
    void carryExif(const FileTask &task);
    void finishFile(const FileTask &task, bool converted, const Error &failure, RunSummary &summary);
    void restartImaging(RunSummary &summary);
    void addRow(const QString &text, StatusKind kind, const QString &tag = QString());

    void runSequential(const RunParameters &parameters, const QString &commonBase, RunSummary &summary);
    void runParallel(const RunParameters &parameters, const QString &commonBase, RunSummary &summary);

    ConversionHost &m_host;
    ConversionImaging &m_imaging;
    DrawingSettingsReader m_drawingSettings;
    int m_jobs = 1;
    bool m_background = false;
};

/// The row texts a run writes, for hosts and tests that look for them.
namespace runtext {
QString startRow(int count);              ///< "Bearbeite 3 Bilder"
QString pictureRow(const QString &path);  ///< "Bearbeite Bild : a.jpg"
QString progressText(int index, int count); ///< "3 von 30..."
QString finished();                       ///< "Bearbeitung abgeschlossen"
QString stopped();                        ///< "Bearbeitung abgebrochen"
QString success();                        ///< "Bild erfolgreich bearbeitet"
QString failure();                        ///< "Fehler beim Verarbeiten des Bildes"
QString deleting();                       ///< "Quelldatei wird gelöscht..."
QString notDeletedSameFile();             ///< the source is its own target and stays
} // namespace runtext

/// Percent of the run at file `index` of `count`, rounded half to even.
int runPercent(int index, int count);

} // namespace valtrona
