#pragma once

// The command line's side of a run: status rows on standard output, a
// progress line on standard error when that is a terminal, and the stop
// flag raised by Ctrl-C.

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
    void writeRow(const QString &line);
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

/// ConversionHost for the command line.
class CliHost : public ConversionHost
{
public:
    CliHost(Terminal &terminal, const FileInputs &inputs, bool deleteSources,
            const std::atomic_int &interrupts);

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
    const std::atomic_int &m_interrupts;
    bool m_errorWritten = false;
};

} // namespace valtrona::cli
