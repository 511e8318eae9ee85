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

TEST(CliHost, FailedFileGetsItsReasonLine)
{
    struct Case {
        QString workingDirectory;
        QString source;
        Error error;
        QString line;
        bool stops;
    };
    const Case cases[] = {
        {u"/home/anna"_s, u"/home/anna/urlaub/IMG_0042.jpg"_s, {ErrorCode::TargetNotWritable, u"Permission denied"_s},
         u"urlaub/IMG_0042.jpg: Zielordner nicht beschreibbar"_s, false},
        // Beside the working directory, not below it: the full path.
        {u"/home/anna"_s, u"/home/anna2/x.jpg"_s, {ErrorCode::SourceMissing, {}},
         u"/home/anna2/x.jpg: Quelldatei nicht gefunden"_s, false},
        // Only the internal error carries its detail, on one line.
        {u"/home/anna"_s, u"/tmp/b.jpg"_s, {ErrorCode::Internal, u"VipsJpeg: out of\nmemory\n"_s},
         u"/tmp/b.jpg: Interner Fehler der Bildverarbeitung (VipsJpeg: out of memory)"_s, false},
        // Every later file would hit the limit too: the run ends.
        {u"/home/anna"_s, u"/home/anna/c.jpg"_s, {ErrorCode::FileSizeLimit, u"File too large"_s},
         u"c.jpg: Dateigrößengrenze erreicht"_s, true},
    };
    char *buffer = nullptr;
    size_t size = 0;
    std::FILE *err = open_memstream(&buffer, &size);
    Terminal terminal(stdout, err, false, false);
    QString lines;
    for (const Case &c : cases) {
        std::atomic<Ending> ending {Ending::None};
        CliHost host(terminal, {}, false, ending, c.workingDirectory);
        host.fileFailed(c.source, c.error);
        EXPECT_EQ(ending.load(), c.stops ? Ending::FileSizeLimit : Ending::None) << c.line.toStdString();
        EXPECT_EQ(host.stopRequested(), c.stops) << c.line.toStdString();
        lines += c.line + u'\n';
    }
    std::fclose(err);
    EXPECT_EQ(QString::fromUtf8(buffer, qsizetype(size)), lines);
    std::free(buffer);
}

TEST(ExitCode, StopsAndBrokenRunsOutrankFailedFiles)
{
    struct Case { Ending ending; bool fileFailed; int code; };
    // Each code alone is seen end to end; here which one wins.
    const Case cases[] = {
        {Ending::None, true, 1},
        {Ending::OutputClosed, true, 3},
        {Ending::FileSizeLimit, true, 3},
        {Ending::Interrupted, true, 130},
        {Ending::Terminated, true, 143},
    };
    for (const Case &c : cases)
        EXPECT_EQ(exitCode(c.ending, c.fileFailed), c.code) << int(c.ending) << ' ' << c.fileFailed;
}

} // namespace
