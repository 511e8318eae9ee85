#include "batch/conversionrun.h"

#include "batch/naming.h"
#include "batch/sizerules.h"
#include "core/fileservices.h"
#include "core/numeric.h"
#include "core/trash.h"

#include <QDir>
#include <QFileInfo>

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

// The imaging library is restarted before every file whose number is a
// multiple of this, so its memory does not grow over long runs.
constexpr int restartInterval = 15;

// How long the parallel run waits for a worker before it lets the host
// process events and looks at the stop flag again.
constexpr std::chrono::milliseconds pollInterval(40);

// A path as the file system resolves its directory: two paths that give the
// same identity name the same directory entry, so writing one replaces the
// other. The last component is kept as it is (a link there is replaced by
// the rename that puts a target into place, not followed).
QString entryIdentity(const QString &path)
{
    const QFileInfo info(path);
    QString directory = QFileInfo(info.absolutePath()).canonicalFilePath();
    if (directory.isEmpty())
        directory = QDir::cleanPath(info.absolutePath());
    return directory + u'/' + info.fileName();
}

} // namespace

namespace runtext {

QString startRow(int count)
{
    return u"Bearbeite "_s + QString::number(count) + u" Bilder"_s;
}

QString pictureRow(const QString &path)
{
    return u"Bearbeite Bild : "_s + files::fileNamePart(path);
}

QString progressText(int index, int count)
{
    return QString::number(index) + u" von "_s + QString::number(count) + u"..."_s;
}

QString finished()
{
    return u"Bearbeitung abgeschlossen"_s;
}

QString stopped()
{
    return u"Bearbeitung abgebrochen"_s;
}

QString success()
{
    return u"Bild erfolgreich bearbeitet"_s;
}

QString failure()
{
    return u"Fehler beim Verarbeiten des Bildes"_s;
}

QString deleting()
{
    return u"Quelldatei wird gelöscht..."_s;
}

QString notDeletedSameFile()
{
    return u"Quelldatei ist zugleich die Zieldatei und wird nicht gelöscht"_s;
}

} // namespace runtext

int runPercent(int index, int count)
{
    if (count <= 0)
        return 0;
    return toInt32Or(static_cast<double>(index) / count * 100.0, 0);
}

// Everything one file needs, gathered on the run's thread before its work.
struct ConversionRun::FileTask
{
    QString source;
    QString target;
    QDateTime sourceDate;    ///< valid only when the date is kept
    bool keepDate = false;
    bool copyExif = false;
    bool sourceIsTarget = false;
    int style = 0;
    QString formatCode;
    FileInputs inputs;
    DrawingSettings drawing; ///< read ahead for worker threads
};

ConversionRun::ConversionRun(ConversionHost &host, ConversionImaging &imaging,
                             DrawingSettingsReader drawingSettings)
    : m_host(host)
    , m_imaging(imaging)
    , m_drawingSettings(std::move(drawingSettings))
{
}

void ConversionRun::setJobs(int jobs)
{
    m_jobs = jobs < 1 ? 1 : jobs;
}

int ConversionRun::jobs() const
{
    return m_jobs;
}

void ConversionRun::setConvertInBackground(bool background)
{
    m_background = background;
}

RunSummary ConversionRun::run(const RunParameters &parameters)
{
    RunSummary summary;
    restartImaging(summary);
    m_host.clearStatusRows();

    summary.count = static_cast<int>(parameters.sources.size());
    addRow(runtext::startRow(summary.count), StatusKind::Info);

    const QString commonBase = commonBaseDirectory(parameters.sources);
    if ((m_jobs > 1 && summary.count > 1) || (m_background && summary.count > 0))
        runParallel(parameters, commonBase, summary);
    else
        runSequential(parameters, commonBase, summary);

    // Finished or stopped, the run ends the same way.
    restartImaging(summary);
    m_host.runEnded();
    m_host.showPreview(QString());
    return summary;
}

void ConversionRun::runSequential(const RunParameters &parameters, const QString &commonBase,
                                  RunSummary &summary)
{
    const int count = summary.count;
    for (int i = 1; i <= count; ++i) {
        if (i % restartInterval == 0)
            restartImaging(summary);

        const QString progress = runtext::progressText(i, count);
        m_host.setCaptionPercent(runPercent(i, count));

        FileTask task = prepareFile(parameters, commonBase, i);
        files::createDirectoryChain(files::directoryPart(task.target));

        m_host.yield();
        if (m_host.stopRequested()) {
            addRow(runtext::stopped(), StatusKind::Info);
            summary.stopped = true;
            return;
        }

        m_host.showPreview(task.source);
        addRow(runtext::pictureRow(task.source), StatusKind::Picture, task.source);
        m_host.setProgress(i, count, progress);
        m_host.yield();

        task.inputs = m_host.fileInputs();
        const RowSink toHost = [this](const StatusRow &row) { m_host.addStatusRow(row); };
        // The EXIF block is taken before the conversion: when a source is its
        // own target, the conversion has replaced it by then.
        std::optional<QByteArray> exif;
        if (task.copyExif)
            exif = m_imaging.readExif(task.source);
        Error failure;
        const bool converted = convertPicture(task, toHost, m_drawingSettings, failure);
        if (converted && exif)
            m_imaging.writeExif(task.target, *exif);
        finishFile(task, converted, failure, summary);
    }
    addRow(runtext::finished(), StatusKind::Info);
}

ConversionRun::FileTask ConversionRun::prepareFile(const RunParameters &parameters,
                                                   const QString &commonBase, int index) const
{
    FileTask task;
    task.source = parameters.sources.at(index - 1);
    const QString target = composeTargetPath(parameters.targetDirectory, commonBase, task.source,
                                             parameters.keepDirectoryStructure,
                                             parameters.formatCode);
    task.target = renameTarget(target, parameters.searchText, parameters.replaceText);
    task.keepDate = parameters.keepDate;
    if (task.keepDate)
        task.sourceDate = QFileInfo(task.source).lastModified();
    task.copyExif = parameters.copyExif;
    task.sourceIsTarget = entryIdentity(task.source) == entryIdentity(task.target);
    task.style = parameters.changeStyle;
    task.formatCode = parameters.formatCode;
    return task;
}

bool ConversionRun::convertPicture(const FileTask &task, const RowSink &sink,
                                   const DrawingSettingsReader &drawing, Error &failure)
{
    // The size as its text would read ("4000 x 3000"); the numbers are what
    // the rest works with.
    const SourceSize size = m_imaging.measure(task.source);

    SizeRequest request;
    request.widthInput = toInt32Or(val(task.inputs.widthText), 0);
    request.heightInput = toInt32Or(val(task.inputs.heightText), 0);
    request.widthUnit = task.inputs.widthUnit;
    request.heightUnit = task.inputs.heightUnit;
    request.style = task.style;
    request.sourceWidth = size.width;
    request.sourceHeight = size.height;
    const TargetSize target = computeTargetSize(request);
    sink({targetSizeStatusText(target), int(StatusKind::Info), QString()});
    if (!target.usable) {
        failure = size.width == 0 && size.height == 0 ? m_imaging.lastError() : Error {ErrorCode::SizeUnusable, {}};
        return false;
    }

    sink({u"Dateiname : "_s + files::fileNamePart(task.target), int(StatusKind::Info), task.target});
    const DrawingSettings settings = drawing ? drawing() : task.drawing;

    if (target.width == size.width && target.height == size.height) {
        sink({u"Quelldatei hat bereits korrekte Größe ("_s + QString::number(size.width) + u'x'
                  + QString::number(size.height) + u')',
              int(StatusKind::Info), QString()});
        const bool copied = m_imaging.copyFile(task.source, task.target);
        if (!copied)
            failure = m_imaging.lastError();
        return copied && QFileInfo(task.target).isFile();
    }
    if (size.measured) {
        const bool saved = m_imaging.drawAndSave(task.source, task.target, target.width,
                                                 target.height, settings, task.formatCode);
        if (!saved)
            failure = m_imaging.lastError();
        return saved && QFileInfo(task.target).isFile();
    }
    failure = {ErrorCode::UnknownFormat, {}};
    sink({u"Ungültiges Dateiformat ("_s + files::extensionPart(task.source) + u')',
          int(StatusKind::Error), QString()});
    return false;
}

void ConversionRun::finishFile(const FileTask &task, bool converted, const Error &failure,
                               RunSummary &summary)
{
    if (!converted) {
        addRow(runtext::failure(), StatusKind::Error);
        m_host.fileFailed(task.source, failure);
        ++summary.failed;
        return;
    }
    if (m_host.deleteSources()) {
        if (task.sourceIsTarget) {
            // The output has replaced the source; deleting would trash the result.
            addRow(runtext::notDeletedSameFile(), StatusKind::Info);
        } else {
            addRow(runtext::deleting(), StatusKind::Info);
            files::deleteToRecycleBin(task.source);
        }
    }
    addRow(runtext::success(), StatusKind::Written);
    ++summary.written;
    if (task.keepDate && task.sourceDate.isValid())
        files::setFileTimes(task.target, task.sourceDate, files::LastWriteTime);
}

void ConversionRun::restartImaging(RunSummary &summary)
{
    m_imaging.restart();
    ++summary.restarts;
}

void ConversionRun::addRow(const QString &text, StatusKind kind, const QString &tag)
{
    m_host.addStatusRow({text, int(kind), tag});
}

// ---- Several files at once -------------------------------------------------
//
// The run's thread prepares files in list order (everything that asks the
// host), workers claim them strictly in that order, and the run's thread
// writes each file's rows once it and every file before it are done. A
// worker that finds the stop flag set when it claims file k leaves k and all
// later files alone, so the rows are those of a sequential run stopped at k.
// Before every 15th file all earlier files are finished and the imaging
// library is restarted while no worker is busy.

namespace {

enum class SlotState { Queued, Running, Done, Stopped };

struct ParallelSlot
{
    SlotState state = SlotState::Queued;
    bool converted = false;
    Error failure;
    QList<StatusRow> rows;
};

} // namespace

void ConversionRun::runParallel(const RunParameters &parameters, const QString &commonBase,
                                RunSummary &summary)
{
    const int count = summary.count;
    const int workers = std::min(m_jobs, count);
    const int window = 2 * workers; // files prepared ahead of the one written next

    std::mutex mutex;
    std::condition_variable workQueued;
    std::condition_variable workDone;
    std::deque<int> queue; // prepared, not yet claimed, in list order
    std::vector<FileTask> tasks(static_cast<size_t>(count) + 1);
    std::vector<ParallelSlot> slots(static_cast<size_t>(count) + 1);
    bool closing = false;
    bool stopRequested = false;

    auto worker = [&]() {
        std::unique_lock lock(mutex);
        for (;;) {
            workQueued.wait(lock, [&] { return closing || !queue.empty(); });
            if (queue.empty())
                return;
            const int index = queue.front();
            queue.pop_front();
            FileTask &task = tasks[size_t(index)];
            ParallelSlot &slot = slots[size_t(index)];
            const bool stop = stopRequested;
            if (stop) {
                // Nothing after this file starts any more.
                queue.clear();
                closing = true;
                workQueued.notify_all();
            }
            slot.state = SlotState::Running;
            lock.unlock();

            files::createDirectoryChain(files::directoryPart(task.target));
            bool converted = false;
            Error failure;
            QList<StatusRow> rows;
            if (!stop) {
                const RowSink collect = [&rows](const StatusRow &row) { rows.append(row); };
                std::optional<QByteArray> exif;
                if (task.copyExif)
                    exif = m_imaging.readExif(task.source);
                converted = convertPicture(task, collect, DrawingSettingsReader(), failure);
                if (converted && exif)
                    m_imaging.writeExif(task.target, *exif);
            }

            lock.lock();
            slot.rows = std::move(rows);
            slot.converted = converted;
            slot.failure = failure;
            slot.state = stop ? SlotState::Stopped : SlotState::Done;
            workDone.notify_all();
        }
    };

    std::vector<std::thread> threads;
    threads.reserve(size_t(workers));
    for (int w = 0; w < workers; ++w)
        threads.emplace_back(worker);

    auto pollStop = [&]() {
        m_host.yield();
        if (m_host.stopRequested()) {
            std::lock_guard guard(mutex);
            stopRequested = true;
        }
    };

    int prepared = 0; // highest index handed to the workers
    bool stoppedRun = false;
    for (int next = 1; next <= count && !stoppedRun; ++next) {
        // Hand out files up to the window, but never past a restart point
        // whose earlier files are not all written yet.
        for (;;) {
            const int candidate = prepared + 1;
            if (candidate > count || candidate >= next + window)
                break;
            if (candidate % restartInterval == 0) {
                if (candidate != next)
                    break;
                restartImaging(summary);
            }
            pollStop();
            FileTask task = prepareFile(parameters, commonBase, candidate);
            task.inputs = m_host.fileInputs();
            task.drawing = m_drawingSettings ? m_drawingSettings() : DrawingSettings();
            {
                std::lock_guard guard(mutex);
                if (closing)
                    break;
                tasks[size_t(candidate)] = std::move(task);
                queue.push_back(candidate);
            }
            workQueued.notify_one();
            prepared = candidate;
        }

        // Wait for file `next`, keeping the host responsive.
        SlotState state;
        {
            std::unique_lock lock(mutex);
            while (slots[size_t(next)].state == SlotState::Queued
                   || slots[size_t(next)].state == SlotState::Running) {
                if (workDone.wait_for(lock, pollInterval) == std::cv_status::timeout) {
                    lock.unlock();
                    pollStop();
                    lock.lock();
                }
            }
            state = slots[size_t(next)].state;
        }

        const FileTask &task = tasks[size_t(next)];
        m_host.setCaptionPercent(runPercent(next, count));
        m_host.yield();
        if (state == SlotState::Stopped) {
            addRow(runtext::stopped(), StatusKind::Info);
            summary.stopped = true;
            stoppedRun = true;
            break;
        }
        m_host.showPreview(task.source);
        addRow(runtext::pictureRow(task.source), StatusKind::Picture, task.source);
        m_host.setProgress(next, count, runtext::progressText(next, count));
        m_host.yield();
        ParallelSlot &slot = slots[size_t(next)];
        for (const StatusRow &row : std::as_const(slot.rows))
            m_host.addStatusRow(row);
        slot.rows.clear();
        finishFile(task, slot.converted, slot.failure, summary);
    }

    {
        std::lock_guard guard(mutex);
        closing = true;
        queue.clear();
    }
    workQueued.notify_all();
    for (std::thread &thread : threads)
        thread.join();

    if (!stoppedRun)
        addRow(runtext::finished(), StatusKind::Info);
}

} // namespace valtrona
