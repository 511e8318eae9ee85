#pragma once

// The command line's side of a run: status rows on standard output, a
// progress line and the reason for every failed file on standard error, and
// the reason a run ends early, which also decides the exit code.

#include "batch/conversionhost.h"

#include <QElapsedTimer>
#include <QString>

#include <atomic>
#include <cstdio>
#include <mutex>

namespace valtrona::cli {

/// The progress line drawn on standard error, and every other line written
/// there, serialised so that messages from worker threads never tear it.
class Terminal
{
public:
    /// `progressEnabled`: draw the progress line (standard error is a terminal).
    /// `rowsOnTerminal`: standard output shows on that terminal too, so rows
    /// must not be written into the progress line.
    Terminal(std::FILE *out, std::FILE *err, bool progressEnabled, bool rowsOnTerminal);

    /// Writes one line to standard output, keeping the progress line below it.
    /// Returns 0, or the errno value of the failed write (EPIPE: the reader
    /// has gone).
    [[nodiscard]] int writeRow(const QString &line);
    /// Writes one line to standard error, keeping the progress line below it.
    void writeMessage(const QString &line);
    /// Sets the progress shown: file `index` of `count` started.
    void setProgress(int index, int count);
    /// Redraws the line when a second has passed (the elapsed time moves on).
    void tick();
    /// Removes the progress line for good.
    void finish();

    /// The progress line for file `index` of `count` after `elapsedMs`:
    /// "Bild 3 von 30 · 10 % · 0:05 vergangen · noch etwa 0:45".
    static QString progressLine(int index, int count, qint64 elapsedMs);

private:
    void clearLocked();
    void drawLocked();

    std::mutex m_mutex;
    std::FILE *m_out;
    std::FILE *m_err;
    bool m_enabled;
    bool m_rowsOnTerminal;
    bool m_drawn = false;
    int m_index = 0;
    int m_count = 0;
    QElapsedTimer m_clock;
    qint64 m_lastDraw = 0;
};

/// Why a run ended before its list did. Set once: the first reason stays.
enum class Ending : int {
    None,          ///< not ended early (yet)
    Interrupted,   ///< SIGINT (Ctrl-C)
    Terminated,    ///< SIGTERM
    OutputClosed,  ///< standard output has no reader any more (EPIPE)
    OutputFailed,  ///< standard output refused a write for another reason
    FileSizeLimit, ///< an output hit the process's file-size limit (ulimit -f)
};

/// Exit codes of valtrona-cli.
namespace exitcode {
constexpr int success = 0;        ///< every file converted (or help shown)
constexpr int fileFailed = 1;     ///< at least one file failed
constexpr int refused = 2;        ///< the parameters were refused; nothing converted
constexpr int cannotContinue = 3; ///< standard output or the file-size limit stopped the run
constexpr int interrupted = 130;  ///< stopped by SIGINT (128 + 2)
constexpr int terminated = 143;   ///< stopped by SIGTERM (128 + 15)
} // namespace exitcode

/// The exit code of a run that ended by `ending`; `fileFailed`: an "ERR" row
/// was written. A stop or a run that could not go on outranks failed files.
int exitCode(Ending ending, bool fileFailed);

/// Why the run could not go on, in German, for endings that are not a
/// signal ("Standardausgabe geschlossen"); empty for the others.
QString endingText(Ending ending);

/// Requests `ending` unless one is requested already; true when this call set
/// it. Async-signal-safe.
bool requestEnding(std::atomic<Ending> &current, Ending ending);

/// ConversionHost for the command line.
class CliHost : public ConversionHost
{
public:
    /// `ending` is shared with the signal handlers; the run stops at the next
    /// file once it is set. Failed files are named relative to
    /// `workingDirectory` when they lie below it.
    CliHost(Terminal &terminal, const FileInputs &inputs, bool deleteSources,
            std::atomic<Ending> &ending, const QString &workingDirectory);

    /// True once a row of kind "ERR" was written.
    bool errorWritten() const;

    void clearStatusRows() override;
    void addStatusRow(const StatusRow &row) override;
    void setCaptionPercent(int percent) override;
    void setProgress(int index, int count, const QString &progressText) override;
    void showPreview(const QString &path) override;
    void yield() override;
    bool stopRequested() override;
    FileInputs fileInputs() override;
    bool deleteSources() override;
    void fileFailed(const QString &source, const Error &error) override;
    void runEnded() override;

private:
    Terminal &m_terminal;
    FileInputs m_inputs;
    bool m_deleteSources;
    std::atomic<Ending> &m_ending;
    QString m_workingDirectory;
    bool m_errorWritten = false;
};

} // namespace valtrona::cli
