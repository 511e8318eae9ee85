#include "cli/clihost.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using valtrona::cli::Terminal;

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

} // namespace
