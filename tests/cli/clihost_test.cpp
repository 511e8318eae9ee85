#include "cli/clihost.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

using namespace Qt::StringLiterals;
using namespace valtrona;
using namespace valtrona::cli;

namespace {

TEST(ProgressLine, CountPercentElapsedAndRemaining)
{
    struct Case { int index; int count; qint64 elapsedMs; QString line; };
    const Case cases[] = {
        // Nothing done yet: no estimate.
        {1, 3, 400, u"Bild 1 von 3 · 33 % · 0:00 vergangen"_s},
        // Two of thirty done in 10 s: 28 left at 5 s each.
        {3, 30, 10000, u"Bild 3 von 30 · 10 % · 0:10 vergangen · noch etwa 2:20"_s},
        {2, 3, 65000, u"Bild 2 von 3 · 67 % · 1:05 vergangen · noch etwa 2:10"_s},
        {101, 400, 3600000, u"Bild 101 von 400 · 25 % · 1:00:00 vergangen · noch etwa 3:00:00"_s},
    };
    for (const Case &c : cases)
        EXPECT_EQ(Terminal::progressLine(c.index, c.count, c.elapsedMs), c.line);
}

// What a stream written by a Terminal received.
class MemoryStream
{
public:
    MemoryStream() : m_file(open_memstream(&m_buffer, &m_size)) {}
    ~MemoryStream()
    {
        std::fclose(m_file);
        std::free(m_buffer);
    }
    MemoryStream(const MemoryStream &) = delete;
    MemoryStream &operator=(const MemoryStream &) = delete;

    std::FILE *file() const { return m_file; }
    QString text()
    {
        std::fflush(m_file);
        return QString::fromUtf8(m_buffer, qsizetype(m_size));
    }

private:
    char *m_buffer = nullptr;
    size_t m_size = 0;
    std::FILE *m_file;
};

TEST(CliHost, FailedFileGetsItsReasonLine)
{
    struct Case {
        QString workingDirectory;
        QString source;
        Error error;
        Ending before;
        QString line;
        Ending after;
    };
    const Case cases[] = {
        {u"/home/anna"_s, u"/home/anna/urlaub/IMG_0042.jpg"_s, {ErrorCode::TargetNotWritable, u"Permission denied"_s},
         Ending::None, u"urlaub/IMG_0042.jpg: Zielordner nicht beschreibbar"_s, Ending::None},
        // Beside the working directory, not below it: the full path.
        {u"/home/anna"_s, u"/home/anna2/x.jpg"_s, {ErrorCode::SourceMissing, {}}, Ending::None,
         u"/home/anna2/x.jpg: Quelldatei nicht gefunden"_s, Ending::None},
        {u"/"_s, u"/srv/a.jpg"_s, {ErrorCode::DiskFull, u"No space left"_s}, Ending::None,
         u"srv/a.jpg: Kein Platz mehr auf dem Zieldatenträger"_s, Ending::None},
        // Only the internal error carries its detail, on one line.
        {u"/home/anna"_s, u"/tmp/b.jpg"_s, {ErrorCode::Internal, u"VipsJpeg: out of\nmemory\n"_s}, Ending::None,
         u"/tmp/b.jpg: Interner Fehler der Bildverarbeitung (VipsJpeg: out of memory)"_s, Ending::None},
        // Every later file would hit the limit too: the run ends.
        {u"/home/anna"_s, u"/home/anna/c.jpg"_s, {ErrorCode::FileSizeLimit, u"File too large"_s}, Ending::None,
         u"c.jpg: Dateigrößengrenze erreicht"_s, Ending::FileSizeLimit},
        // The first reason to end stays.
        {u"/home/anna"_s, u"/home/anna/c.jpg"_s, {ErrorCode::FileSizeLimit, {}}, Ending::Interrupted,
         u"c.jpg: Dateigrößengrenze erreicht"_s, Ending::Interrupted},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.line.toStdString());
        MemoryStream out;
        MemoryStream err;
        Terminal terminal(out.file(), err.file(), false, false);
        std::atomic<Ending> ending {c.before};
        CliHost host(terminal, {}, false, ending, c.workingDirectory);
        host.fileFailed(c.source, c.error);
        EXPECT_EQ(err.text(), c.line + u'\n');
        EXPECT_EQ(out.text(), QString());
        EXPECT_EQ(ending.load(), c.after);
        EXPECT_EQ(host.stopRequested(), c.after != Ending::None);
    }
}

// A closed pipe is told apart end to end; any other refused row ends the run too.
TEST(CliHost, RowThatCannotBeWrittenEndsTheRun)
{
    std::FILE *full = std::fopen("/dev/full", "w");
    ASSERT_NE(full, nullptr);
    MemoryStream err;
    Terminal terminal(full, err.file(), false, false);
    std::atomic<Ending> ending {Ending::None};
    CliHost host(terminal, {}, false, ending, u"/"_s);
    EXPECT_FALSE(host.stopRequested());
    host.addStatusRow({u"Bearbeite 3 Bilder"_s, int(StatusKind::Info), {}});
    EXPECT_EQ(ending.load(), Ending::OutputFailed);
    EXPECT_TRUE(host.stopRequested());
    std::fclose(full);
}

TEST(ExitCode, StopsAndBrokenRunsOutrankFailedFiles)
{
    struct Case { Ending ending; bool fileFailed; int code; };
    const Case cases[] = {
        {Ending::None, false, 0},
        {Ending::None, true, 1},
        {Ending::OutputClosed, false, 3},
        {Ending::OutputFailed, true, 3},
        {Ending::FileSizeLimit, true, 3},
        {Ending::Interrupted, true, 130},
        {Ending::Terminated, false, 143},
    };
    for (const Case &c : cases)
        EXPECT_EQ(exitCode(c.ending, c.fileFailed), c.code) << int(c.ending) << ' ' << c.fileFailed;
}

} // namespace
