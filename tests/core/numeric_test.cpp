#include "core/numeric.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

using namespace valtrona;
using namespace Qt::StringLiterals;

namespace {

struct ValCase
{
    const char16_t *text;
    double expected;
};

class ValTest : public ::testing::TestWithParam<ValCase> {};

TEST_P(ValTest, ReadsLeadingNumber)
{
    const ValCase &c = GetParam();
    const double got = val(QStringView(c.text));
    EXPECT_DOUBLE_EQ(got, c.expected) << QString::fromUtf16(c.text).toStdString();
    EXPECT_FALSE(std::signbit(got) && got == 0) << "negative zero";
}

INSTANTIATE_TEST_SUITE_P(Decimal, ValTest, ::testing::Values(
    ValCase {u"", 0}, ValCase {u"abc", 0}, ValCase {u"0800", 800}, ValCase {u"1e3", 1000},
    ValCase {u"12.7", 12.7}, ValCase {u"-5", -5}, ValCase {u"+5", 5}, ValCase {u".5", 0.5},
    ValCase {u"1.", 1}, ValCase {u"1.2.3", 1.2}, ValCase {u"1E-2", 0.01}, ValCase {u"1d2", 100},
    ValCase {u"2e+2", 200}, ValCase {u"3e", 3}, ValCase {u"3e+", 3}, ValCase {u"-", 0},
    ValCase {u".", 0}, ValCase {u"--5", 0}, ValCase {u"-0", 0}, ValCase {u"1,5", 1},
    ValCase {u"1e400", 0}, ValCase {u"\u0661\u0662", 0}));

// Spaces, tabs and line feeds go wherever they are; nothing else does.
INSTANTIATE_TEST_SUITE_P(SkippedBlanks, ValTest, ::testing::Values(
    ValCase {u"1 024", 1024}, ValCase {u"\t- 1\n2 e 3", -12000}, ValCase {u"1\r2", 1}, ValCase {u"\u00A01", 0}));

INSTANTIATE_TEST_SUITE_P(Radix, ValTest, ::testing::Values(
    ValCase {u"&hff", 255}, ValCase {u"&HFFFF", -1}, ValCase {u"&HFFFF&", 65535}, ValCase {u"&H10000", 65536},
    ValCase {u"&HFFFFFFFF", -1}, ValCase {u"&H7FFFFFFF", 2147483647}, ValCase {u"&H100000001", 0},
    ValCase {u"&o777", 511}, ValCase {u"&O8", 0}, ValCase {u"& H 1 F", 31}, ValCase {u"&HG", 0},
    ValCase {u"&X1", 0}, ValCase {u"&", 0}, ValCase {u"-&H10", 0}));

struct RoundCase
{
    double value;
    std::optional<qint32> expected;
};

class RoundTest : public ::testing::TestWithParam<RoundCase> {};

TEST_P(RoundTest, HalvesGoToEven)
{
    const RoundCase &c = GetParam();
    EXPECT_EQ(toInt32(c.value), c.expected) << c.value;
    EXPECT_EQ(toInt32Or(c.value, 7), c.expected.value_or(7)) << c.value;
    if (c.expected) {
        EXPECT_EQ(roundHalfEven(c.value), double(*c.expected)) << c.value;
    }
}

constexpr double inf = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(Values, RoundTest, ::testing::Values(
    RoundCase {0.5, 0}, RoundCase {1.5, 2}, RoundCase {2.5, 2}, RoundCase {-0.5, 0},
    RoundCase {-1.5, -2}, RoundCase {-2.5, -2}, RoundCase {1066.666, 1067}, RoundCase {-7.2, -7},
    RoundCase {0.49999999999999994, 0}, RoundCase {inf, std::nullopt},
    RoundCase {2147483647.4, 2147483647}, RoundCase {2147483647.5, std::nullopt},
    RoundCase {-2147483648.5, -2147483647 - 1}, RoundCase {-2147483649.0, std::nullopt},
    RoundCase {std::numeric_limits<double>::quiet_NaN(), std::nullopt}));

TEST(PlainNumberTextTest, WritesNumbersBack)
{
    EXPECT_EQ(plainNumberText(-12.5), u"-12.5"_s);
    EXPECT_EQ(plainNumberText(0.1 + 0.2), u"0.3"_s);
    EXPECT_EQ(plainNumberText(-0.0), u"0"_s);
    EXPECT_EQ(plainNumberText(val(u"1 234 567"_s)), u"1234567"_s);
}

} // namespace
