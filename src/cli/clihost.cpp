#include "cli/clihost.h"

#include "batch/conversionrun.h"

#include <QStringBuilder>
#include <QStringEncoder>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace valtrona::cli {

namespace {

QString clockText(qint64 ms)
{
    const qint64 seconds = ms / 1000;
    const qint64 hours = seconds / 3600;
    const QString minutesSeconds = QString::number((seconds / 60) % 60).rightJustified(hours ? 2 : 1, u'0')
        % u':' % QString::number(seconds % 60).rightJustified(2, u'0');
    return hours ? QString::number(hours) % u':' % minutesSeconds : minutesSeconds;
}

// Returns 0, or the errno value of the failed write.
int writeLine(std::FILE *stream, const QString &line)
{
    // The encoder writes U+FFFD for a byte of a file name that is not UTF-8
    // (kept as a lone surrogate), where toUtf8() would write "?".
    QStringEncoder toUtf8(QStringEncoder::Utf8);
    const QByteArray bytes = QByteArray(toUtf8(line)) + '\n';
    errno = 0;
    if (std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream) != size_t(bytes.size())
        || std::fflush(stream) != 0)
        return errno != 0 ? errno : EIO;
    return 0;
}

// The signal handlers set the ending too.
static_assert(std::atomic<Ending>::is_always_lock_free);

} // namespace

int exitCode(Ending ending, bool fileFailed)
{
    switch (ending) {
    case Ending::Interrupted:
        return exitcode::interrupted;
    case Ending::Terminated:
        return exitcode::terminated;
    case Ending::OutputClosed:
    case Ending::OutputFailed:
    case Ending::FileSizeLimit:
        return exitcode::cannotContinue;
    case Ending::None:
        break;
    }
    return fileFailed ? exitcode::fileFailed : exitcode::success;
}

QString endingText(Ending ending)
{
    switch (ending) {
    case Ending::OutputClosed:
        return u"Standardausgabe geschlossen"_s;
    case Ending::OutputFailed:
        return u"Schreiben auf die Standardausgabe fehlgeschlagen"_s;
    case Ending::FileSizeLimit:
        return u"Dateigrößengrenze erreicht (ulimit -f)"_s;
    case Ending::None:
    case Ending::Interrupted:
    case Ending::Terminated:
        break;
    }
    return QString();
}

bool requestEnding(std::atomic<Ending> &current, Ending ending)
{
    Ending none = Ending::None;
    return current.compare_exchange_strong(none, ending);
}

Terminal::Terminal(std::FILE *out, std::FILE *err, bool progressEnabled, bool rowsOnTerminal)
    : m_out(out)
    , m_err(err)
    , m_enabled(progressEnabled)
    , m_rowsOnTerminal(rowsOnTerminal)
{
    m_clock.start();
}

QString Terminal::progressLine(int index, int count, qint64 elapsedMs)
{
    QString line = u"Bild "_s % QString::number(index) % u" von "_s % QString::number(count)
        % u" · "_s % QString::number(runPercent(index, count)) % u" % · "_s
        % clockText(elapsedMs) % u" vergangen"_s;
    // Files before `index` are done; the rest, this one included, remain.
    const int done = index - 1;
    if (done > 0) {
        const qint64 remaining = elapsedMs * (count - done) / done;
        line += u" · noch etwa "_s % clockText(remaining);
    }
    return line;
}

int Terminal::writeRow(const QString &line)
{
    std::lock_guard guard(m_mutex);
    if (!m_rowsOnTerminal)
        return writeLine(m_out, line);
    clearLocked();
    const int error = writeLine(m_out, line);
    drawLocked();
    return error;
}

void Terminal::writeMessage(const QString &line)
{
    std::lock_guard guard(m_mutex);
    clearLocked();
    // Nowhere left to say it when standard error fails too.
    writeLine(m_err, line);
    drawLocked();
}

void Terminal::setProgress(int index, int count)
{
    std::lock_guard guard(m_mutex);
    m_index = index;
    m_count = count;
    drawLocked();
}

void Terminal::tick()
{
    std::lock_guard guard(m_mutex);
    if (m_clock.elapsed() - m_lastDraw >= 1000)
        drawLocked();
}

void Terminal::finish()
{
    std::lock_guard guard(m_mutex);
    clearLocked();
    m_index = 0;
}

void Terminal::clearLocked()
{
    if (!m_drawn)
        return;
    std::fputs("\r\033[K", m_err);
    std::fflush(m_err);
    m_drawn = false;
}

void Terminal::drawLocked()
{
    if (!m_enabled || m_index <= 0)
        return;
    const QByteArray bytes = "\r\033[K" + progressLine(m_index, m_count, m_clock.elapsed()).toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), m_err);
    std::fflush(m_err);
    m_drawn = true;
    m_lastDraw = m_clock.elapsed();
}

CliHost::CliHost(Terminal &terminal, const FileInputs &inputs, bool deleteSources,
                 std::atomic<Ending> &ending, const QString &workingDirectory)
    : m_terminal(terminal)
    , m_inputs(inputs)
    , m_deleteSources(deleteSources)
    , m_ending(ending)
    , m_workingDirectory(workingDirectory)
{
}

bool CliHost::errorWritten() const
{
    return m_errorWritten;
}

void CliHost::clearStatusRows() {}

void CliHost::addStatusRow(const StatusRow &row)
{
    if (row.kind == StatusKind::Error)
        m_errorWritten = true;
    const int error = m_terminal.writeRow(statusIconKey(row.kind) % u'\t' % row.text);
    // Rows nobody reads make the rest of the run pointless; the file in hand
    // still finishes.
    if (error != 0)
        requestEnding(m_ending, error == EPIPE ? Ending::OutputClosed : Ending::OutputFailed);
}

void CliHost::setCaptionPercent(int) {}

void CliHost::setProgress(int index, int count, const QString &)
{
    m_terminal.setProgress(index, count);
}

void CliHost::showPreview(const QString &) {}

void CliHost::yield()
{
    m_terminal.tick();
}

bool CliHost::stopRequested()
{
    return m_ending.load() != Ending::None;
}

FileInputs CliHost::fileInputs()
{
    return m_inputs;
}

bool CliHost::deleteSources()
{
    return m_deleteSources;
}

void CliHost::fileFailed(const QString &source, const Error &error)
{
    // Below the working directory the path as the user would type it, else in full.
    const QString base = m_workingDirectory.endsWith(u'/') ? m_workingDirectory : m_workingDirectory % u'/';
    const QString name = source.startsWith(base) ? source.mid(base.size()) : source;
    QString line = name % u": "_s % errorText(error.code);
    // The German text says nothing more than "internal"; the detail helps a bug report.
    if (error.code == ErrorCode::Internal && !error.detail.isEmpty())
        line += u" ("_s % error.detail.simplified() % u')';
    m_terminal.writeMessage(line);
    // Every later output would hit the same limit.
    if (error.code == ErrorCode::FileSizeLimit)
        requestEnding(m_ending, Ending::FileSizeLimit);
}

void CliHost::runEnded()
{
    m_terminal.finish();
}

} // namespace valtrona::cli
