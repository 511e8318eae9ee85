#include "batch/conversionrun.h"

#include "batch/memorybudget.h"
#include "batch/naming.h"
#include "batch/sizerules.h"
#include "batch/workerpool.h"
#include "core/fileservices.h"
#include "core/numeric.h"
#include "core/targetfolder.h"
#include "core/trash.h"

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

// The imaging library is restarted before every file whose number is a
// multiple of this, so its memory does not grow over long runs.
constexpr int restartInterval = 15;

// How long run() waits for a worker before it lets the host yield.
constexpr std::chrono::milliseconds yieldInterval(40);

using IdentityKey = std::pair<quint64, quint64>;

IdentityKey keyOf(const files::FileIdentity &identity)
{
    return {identity.device, identity.inode};
}

// Everything one file's work needs, gathered on the run's thread when the
// file is handed to a worker.
struct FileTask
{
    QString source;
    QString target;
    QDateTime sourceDate; ///< valid only when the date is kept
    bool copyExif = false;
    ChangeStyle style = ChangeStyle::WidthAndHeight;
    std::optional<ImageFormat> format;
    FileInputs inputs;
    DrawingSettings drawing;
};

// What a worker made of a file: its detail rows and, on success, the
// finished output waiting to be put into place.
struct FileOutcome
{
    QList<StatusRow> rows;
    files::PendingFile output;
    bool copied = false; ///< the output is the source's bytes unchanged
    std::optional<Error> failure;
};

struct FileSlot
{
    FileTask task;
    FileOutcome outcome;
    std::atomic_bool cancel {false};
    bool dispatched = false;
    bool done = false; ///< guarded by the run's mutex
};

} // namespace

class ConversionRun::Private
{
public:
    Private(ConversionHost &host, ConversionImaging &imaging, WorkerPool &pool, DrawingSettingsReader drawing)
        : m_host(host)
        , m_imaging(imaging)
        , m_pool(pool)
        , m_drawingSettings(std::move(drawing))
    {
    }

    void start(const RunParameters &parameters);
    bool advance();
    void cancelFrom(int first);
    void waitForJobs();

    ConversionHost &m_host;
    ConversionImaging &m_imaging;
    WorkerPool &m_pool;
    DrawingSettingsReader m_drawingSettings;
    qint64 m_budgetBytes = defaultMemoryBudget;

    enum class Phase { Idle, Running, Stopping, Finished };
    Phase m_phase = Phase::Idle;
    RunSummary m_summary;

private:
    bool openTurn();
    void fill();
    void dispatch(int index);
    FileOutcome convert(const FileTask &task, const std::atomic_bool &cancel) const;
    Expected<files::PendingFile, Error> newOutput() const;
    void report(FileSlot &slot, int index);
    void putIntoPlace(FileSlot &slot, int index);
    void fail(const FileTask &task, const Error &error);
    bool laterSource(const std::optional<files::FileIdentity> &identity, int index) const;
    bool isDone(const FileSlot &slot) const;
    int jobsInFlight() const;
    void finish();
    void restartImaging();
    void addRow(const QString &text, StatusKind kind, const QString &tag = QString());

    RunParameters m_parameters;
    QString m_commonBase;
    std::optional<files::TargetFolder> m_folder;
    Error m_folderError;
    std::unique_ptr<MemoryBudget> m_budget;
    std::vector<std::unique_ptr<FileSlot>> m_slots; // index 1..count
    std::map<IdentityKey, int> m_lastSourceIndex;   // file -> last list position it is a source at
    int m_turn = 1;           // the file whose rows come next
    bool m_turnOpened = false; // its "PIC" row is written
    int m_dispatched = 0;     // files 1..m_dispatched were handed to workers
    int m_window = 2;         // files handed out ahead of the turn

    mutable std::mutex m_mutex;
    std::condition_variable m_jobEnded;
    int m_jobsInFlight = 0;
};

void ConversionRun::Private::start(const RunParameters &parameters)
{
    m_parameters = parameters;
    m_summary = RunSummary();
    m_summary.count = int(parameters.sources.size());
    m_phase = Phase::Running;
    m_turn = 1;
    m_turnOpened = false;
    m_dispatched = 0;
    m_window = 2 * m_pool.workerCount();
    m_budget = std::make_unique<MemoryBudget>(m_budgetBytes);
    m_slots.clear();
    m_slots.resize(size_t(m_summary.count) + 1);
    for (int i = 1; i <= m_summary.count; ++i)
        m_slots[size_t(i)] = std::make_unique<FileSlot>();

    restartImaging();
    m_host.clearStatusRows();
    addRow(runtext::startRow(m_summary.count), StatusKind::Info);

    m_commonBase = commonBaseDirectory(parameters.sources);
    m_folder.reset();
    if (m_summary.count > 0) {
        auto folder = files::TargetFolder::open(files::addTrailingSeparator(parameters.targetDirectory));
        if (folder)
            m_folder = std::move(*folder);
        else
            m_folderError = folder.error();
    }
    // A source is known by what it is, not by its path text: by the file
    // it reaches and by its own directory entry (when it is a link).
    m_lastSourceIndex.clear();
    for (int i = 1; i <= m_summary.count; ++i) {
        const QString &source = parameters.sources.at(i - 1);
        for (const auto &identity : {files::fileIdentity(source), files::entryIdentity(source)}) {
            if (identity)
                m_lastSourceIndex[keyOf(*identity)] = i;
        }
    }
}

bool ConversionRun::Private::advance()
{
    if (m_phase == Phase::Running && m_host.stopRequested()) {
        // The stop is certain from here on: work on files after the one in
        // hand can end now, it would be thrown away anyway.
        cancelFrom(m_turnOpened ? m_turn + 1 : m_turn);
    }
    for (;;) {
        switch (m_phase) {
        case Phase::Idle:
        case Phase::Finished:
            return false;
        case Phase::Stopping:
            if (jobsInFlight() > 0)
                return true;
            finish();
            return false;
        case Phase::Running:
            break;
        }
        if (m_turn > m_summary.count) {
            addRow(runtext::finished(), StatusKind::Info);
            finish();
            return false;
        }
        if (!m_turnOpened && !openTurn())
            continue; // the stop was honoured
        FileSlot &slot = *m_slots[size_t(m_turn)];
        if (!isDone(slot)) {
            fill();
            return true;
        }
        report(slot, m_turn);
        m_slots[size_t(m_turn)].reset();
        ++m_turn;
        m_turnOpened = false;
    }
}

// The steps of a file's turn before its work is reported, in the order a
// run one file after the other takes them; false when the stop came.
bool ConversionRun::Private::openTurn()
{
    const int index = m_turn;
    const int count = m_summary.count;
    if (index % restartInterval == 0)
        restartImaging(); // every file before is done, none after was started
    m_host.setCaptionPercent(runPercent(index, count));
    fill();

    const FileTask &task = m_slots[size_t(index)]->task;
    if (const auto relative = m_folder ? m_folder->relativePath(task.target) : std::nullopt) {
        // The target's folder exists from its file's turn on, converted or
        // not; a failure here shows when the output is put into place.
        const qsizetype slash = relative->lastIndexOf(u'/');
        if (slash > 0) {
            const auto created = m_folder->createFolders(relative->left(slash));
            Q_UNUSED(created);
        }
    }

    if (m_host.stopRequested()) {
        addRow(runtext::stopped(), StatusKind::Info);
        m_summary.stopped = true;
        cancelFrom(index);
        m_phase = Phase::Stopping;
        return false;
    }
    m_host.showPreview(task.source);
    addRow(runtext::pictureRow(task.source), StatusKind::Picture, task.source);
    m_host.setProgress(index, count, runtext::progressText(index, count));
    m_turnOpened = true;
    return true;
}

// Hands files to the workers up to the window ahead of the turn, never past
// the next restart.
void ConversionRun::Private::fill()
{
    const int limit = std::min(m_summary.count, m_turn + m_window - 1);
    while (m_dispatched < limit && (m_dispatched + 1) / restartInterval == m_turn / restartInterval)
        dispatch(m_dispatched + 1);
}

void ConversionRun::Private::dispatch(int index)
{
    FileSlot &slot = *m_slots[size_t(index)];
    FileTask &task = slot.task;
    task.source = m_parameters.sources.at(index - 1);
    const QString target = composeTargetPath(m_parameters.targetDirectory, m_commonBase, task.source,
                                             m_parameters.keepDirectoryStructure, m_parameters.format);
    task.target = renameTarget(target, m_parameters.searchText, m_parameters.replaceText);
    if (m_parameters.keepDate)
        task.sourceDate = files::fileFacts(task.source).value_or(files::FileFacts()).modified;
    task.copyExif = m_parameters.copyExif;
    task.style = m_parameters.changeStyle;
    task.format = m_parameters.format;
    task.inputs = m_host.fileInputs();
    task.drawing = m_drawingSettings ? m_drawingSettings() : DrawingSettings();

    slot.dispatched = true;
    m_dispatched = index;
    {
        std::lock_guard lock(m_mutex);
        ++m_jobsInFlight;
    }
    m_pool.submit([this, &slot] {
        FileOutcome outcome;
        if (!slot.cancel.load())
            outcome = convert(slot.task, slot.cancel);
        // Notified under the lock: once it is released this job touches
        // nothing of the run, which may then go away.
        std::lock_guard lock(m_mutex);
        slot.outcome = std::move(outcome);
        slot.done = true;
        --m_jobsInFlight;
        m_jobEnded.notify_all();
    });
}

// A file's work, on a worker: measure, size, then copy or draw into a
// pending output. Rows are collected for the run's thread to write.
FileOutcome ConversionRun::Private::convert(const FileTask &task, const std::atomic_bool &cancel) const
{
    FileOutcome outcome;
    const auto inspected = m_imaging.inspect(task.source, task.drawing.upright);
    // An unreadable or missing file measures 0 x 0; the size rules decide.
    const SourceFacts facts = inspected ? *inspected : SourceFacts();

    SizeRequest request;
    request.widthInput = toInt32Or(val(task.inputs.widthText), 0);
    request.heightInput = toInt32Or(val(task.inputs.heightText), 0);
    request.widthUnit = task.inputs.widthUnit;
    request.heightUnit = task.inputs.heightUnit;
    request.style = task.style;
    request.sourceWidth = facts.width;
    request.sourceHeight = facts.height;
    const TargetSize target = computeTargetSize(request);
    outcome.rows.append({targetSizeStatusText(target), StatusKind::Info, QString()});
    if (!target.usable) {
        outcome.failure = inspected ? Error {ErrorCode::SizeUnusable, {}} : inspected.error();
        return outcome;
    }
    outcome.rows.append({runtext::targetName(task.target), StatusKind::Info, task.target});
    if (!inspected) {
        outcome.failure = inspected.error();
        return outcome;
    }

    const bool sameSize = target.width == facts.width && target.height == facts.height;
    if (sameSize) {
        outcome.rows.append({runtext::rightSize(facts.width, facts.height), StatusKind::Info, QString()});
    }
    const std::optional<ImageFormat> &format = task.format;
    // A file of the right size is copied byte for byte. A JPEG or PNG target
    // takes any source as it is (a PNG keeps its content under a ".jpg"
    // name, as the program always did); a WebP or AVIF target is always what
    // its name says, so another format is encoded at the same size.
    const bool copies = sameSize
        && (!format || *format == ImageFormat::Jpeg || *format == ImageFormat::Png || facts.writtenAs == format);
    if (!copies && !format) {
        outcome.failure = Error {ErrorCode::NoEncoder, u"no output format"_s};
        return outcome;
    }

    DrawJob job;
    job.source = task.source;
    job.width = target.width;
    job.height = target.height;
    job.settings = task.drawing;
    job.format = format.value_or(ImageFormat::Jpeg);
    job.carryExif = task.copyExif;
    job.cancel = &cancel;
    // A copy streams; a drawing waits until its memory fits.
    MemoryBudget::Reservation memory;
    if (!copies) {
        memory = m_budget->acquire(m_imaging.drawMemory(facts, job), &cancel);
        if (!memory.isGranted()) {
            outcome.failure = cancel.load() ? Error {ErrorCode::Internal, u"cancelled"_s}
                                            : Error {ErrorCode::TooLarge, {}};
            return outcome;
        }
    }
    auto output = newOutput();
    if (!output) {
        outcome.failure = output.error();
        return outcome;
    }
    const auto made = copies ? m_imaging.copyInto(task.source, *output) : m_imaging.drawInto(job, *output);
    if (!made) {
        outcome.failure = made.error();
        return outcome;
    }
    outcome.output = std::move(*output);
    outcome.copied = copies;
    return outcome;
}

Expected<files::PendingFile, Error> ConversionRun::Private::newOutput() const
{
    if (!m_folder)
        return unexpected(m_folderError);
    return m_folder->createPending();
}

// The rest of a file's turn, once its work is done.
void ConversionRun::Private::report(FileSlot &slot, int index)
{
    for (const StatusRow &row : std::as_const(slot.outcome.rows))
        m_host.addStatusRow(row);
    if (slot.outcome.failure) {
        fail(slot.task, *slot.outcome.failure);
        return;
    }
    putIntoPlace(slot, index);
}

void ConversionRun::Private::putIntoPlace(FileSlot &slot, int index)
{
    const FileTask &task = slot.task;
    FileOutcome &outcome = slot.outcome;
    const std::optional<QString> relative = m_folder->relativePath(task.target);
    if (!relative) {
        fail(task, {ErrorCode::TargetPathUnsafe, task.target});
        return;
    }
    const std::optional<files::FileIdentity> present = m_folder->entryIdentity(*relative);
    // Writing over a source that has not had its turn would lose it.
    if (laterSource(present, index)) {
        fail(task, {ErrorCode::TargetIsUnreadSource, task.target});
        return;
    }
    // A right-size copy onto its own source leaves the file as it is.
    const bool ownCopy = outcome.copied && present && present == files::fileIdentity(task.source);
    if (!ownCopy) {
        files::CommitOptions options;
        options.modificationTime = task.sourceDate;
        if (auto placed = m_folder->commit(outcome.output, *relative, options); !placed) {
            fail(task, placed.error());
            return;
        }
    }
    if (m_host.deleteSources()) {
        if (files::fileIdentity(task.source) == files::fileIdentity(task.target)) {
            // The output took the source's place; deleting would trash the result.
            addRow(runtext::notDeletedSameFile(), StatusKind::Info);
        } else {
            addRow(runtext::deleting(), StatusKind::Info);
            files::deleteToRecycleBin(task.source); // a failed deletion is not reported
        }
    }
    addRow(runtext::success(), StatusKind::Written);
    ++m_summary.written;
}

void ConversionRun::Private::fail(const FileTask &task, const Error &error)
{
    addRow(runtext::failure(), StatusKind::Error);
    m_host.fileFailed(task.source, error);
    ++m_summary.failed;
}

bool ConversionRun::Private::laterSource(const std::optional<files::FileIdentity> &identity, int index) const
{
    if (!identity)
        return false;
    const auto found = m_lastSourceIndex.find(keyOf(*identity));
    return found != m_lastSourceIndex.end() && found->second > index;
}

bool ConversionRun::Private::isDone(const FileSlot &slot) const
{
    std::lock_guard lock(m_mutex);
    return slot.done;
}

int ConversionRun::Private::jobsInFlight() const
{
    std::lock_guard lock(m_mutex);
    return m_jobsInFlight;
}

void ConversionRun::Private::cancelFrom(int first)
{
    for (size_t i = size_t(std::max(first, 1)); i < m_slots.size(); ++i) {
        if (m_slots[i])
            m_slots[i]->cancel = true;
    }
    if (m_budget)
        m_budget->wakeWaiting();
}

void ConversionRun::Private::waitForJobs()
{
    std::unique_lock lock(m_mutex);
    m_jobEnded.wait(lock, [&] { return m_jobsInFlight == 0; });
}

// Finished or stopped, a run ends the same way.
void ConversionRun::Private::finish()
{
    waitForJobs();
    m_slots.clear(); // pending outputs of files never reported are discarded
    restartImaging();
    m_phase = Phase::Finished;
    m_host.runEnded();
    m_host.showPreview(QString());
}

void ConversionRun::Private::restartImaging()
{
    // Other jobs on the pool (a window's previews) use the library too.
    m_pool.waitUntilIdle();
    if (!m_imaging.restart()) {
        // The library cannot start again only where it never started; each
        // file after this then fails with its own row and reason.
    }
    ++m_summary.restarts;
}

void ConversionRun::Private::addRow(const QString &text, StatusKind kind, const QString &tag)
{
    m_host.addStatusRow({text, kind, tag});
}

ConversionRun::ConversionRun(ConversionHost &host, ConversionImaging &imaging, WorkerPool &pool,
                             DrawingSettingsReader drawingSettings)
    : d(std::make_unique<Private>(host, imaging, pool, std::move(drawingSettings)))
{
}

ConversionRun::~ConversionRun()
{
    d->cancelFrom(1);
    d->waitForJobs();
}

void ConversionRun::setMemoryBudget(qint64 bytes)
{
    d->m_budgetBytes = bytes;
}

void ConversionRun::start(const RunParameters &parameters)
{
    d->start(parameters);
}

bool ConversionRun::advance()
{
    return d->advance();
}

bool ConversionRun::isFinished() const
{
    return d->m_phase == Private::Phase::Finished;
}

RunSummary ConversionRun::summary() const
{
    return d->m_summary;
}

RunSummary ConversionRun::run(const RunParameters &parameters)
{
    start(parameters);
    while (advance()) {
        d->m_pool.waitForJob(yieldInterval);
        d->m_host.yield();
    }
    return summary();
}

} // namespace valtrona
