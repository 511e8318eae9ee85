#include "cli/clihost.h"

#include "batch/conversionrun.h"

#include <QStringBuilder>
#include <QStringEncoder>

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

void writeLine(std::FILE *stream, const QString &line)
{
    // The encoder writes U+FFFD for a byte of a file name that is not UTF-8
    // (kept as a lone surrogate), where toUtf8() would write "?".
    QStringEncoder toUtf8(QStringEncoder::Utf8);
    const QByteArray bytes = QByteArray(toUtf8(line)) + '\n';
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
    std::fflush(stream);
}

} // namespace

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

void Terminal::writeRow(const QString &line)
{
    std::lock_guard guard(m_mutex);
    if (!m_rowsOnTerminal) {
        writeLine(m_out, line);
        return;
    }
    clearLocked();
    writeLine(m_out, line);
    drawLocked();
}

void Terminal::writeMessage(const QString &line)
{
    std::lock_guard guard(m_mutex);
    clearLocked();
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
                 const std::atomic_int &interrupts)
    : m_terminal(terminal)
    , m_inputs(inputs)
    , m_deleteSources(deleteSources)
    , m_interrupts(interrupts)
{
}

bool CliHost::errorWritten() const
{
    return m_errorWritten;
}

void CliHost::clearStatusRows() {}

void CliHost::addStatusRow(const StatusRow &row)
{
    if (row.kind == int(StatusKind::Error))
        m_errorWritten = true;
    m_terminal.writeRow(statusIconKey(row.kind) % u'\t' % row.text);
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
    return m_interrupts.load() > 0;
}

FileInputs CliHost::fileInputs()
{
    return m_inputs;
}

bool CliHost::deleteSources()
{
    return m_deleteSources;
}

void CliHost::fileFailed(const QString &, const Error &) {}

void CliHost::runEnded()
{
    m_terminal.finish();
}

} // namespace valtrona::cli
