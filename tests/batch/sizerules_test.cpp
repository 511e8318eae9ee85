#include "batch/sizerules.h"


#include <gtest/gtest.h>

#include <limits>

using namespace valtrona;
using namespace Qt::StringLiterals;

namespace {

constexpr int px = sizeunit::pixel;
constexpr int pc = sizeunit::percent;
constexpr ChangeStyle wh = ChangeStyle::WidthAndHeight;
constexpr ChangeStyle fh = ChangeStyle::FixedHeight;
constexpr ChangeStyle fw = ChangeStyle::FixedWidth;
constexpr ChangeStyle ls = ChangeStyle::LongSide;
constexpr ChangeStyle fit = ChangeStyle::FitRectangle;

struct SizeCase
{
    const char *name;
    SizeRequest request;
    TargetSize expected;
};

void PrintTo(const SizeCase &c, std::ostream *os)
{
    *os << c.name;
}

class ComputeTargetSizeTest : public ::testing::TestWithParam<SizeCase> {};

TEST_P(ComputeTargetSizeTest, GivesSizeAndUsable)
{
    const SizeCase &c = GetParam();
    const TargetSize got = computeTargetSize(c.request);
    EXPECT_EQ(got.width, c.expected.width);
    EXPECT_EQ(got.height, c.expected.height);
    EXPECT_EQ(got.usable, c.expected.usable);
}

// {widthInput, heightInput, widthUnit, heightUnit, style, sourceWidth, sourceHeight}
INSTANTIATE_TEST_SUITE_P(WorkedExamples, ComputeTargetSizeTest, ::testing::Values(
    SizeCase {"style0 pixels", {800, 600, px, px, wh, 4000, 3000}, {800, 600, true}},
    SizeCase {"style0 percent", {50, 50, pc, pc, wh, 4000, 3000}, {2000, 1500, true}},
    SizeCase {"style0 zero inputs", {0, 0, px, px, wh, 4000, 3000}, {0, 0, true}},
    SizeCase {"style1", {0, 600, px, px, fh, 4000, 3000}, {800, 600, true}},
    SizeCase {"style2", {1024, 0, px, px, fw, 4000, 3000}, {1024, 768, true}},
    SizeCase {"style3 landscape", {1000, 0, px, px, ls, 4000, 3000}, {1000, 750, true}},
    SizeCase {"style3 portrait", {1000, 0, px, px, ls, 3000, 4000}, {750, 1000, true}},
    SizeCase {"style3 square", {1000, 0, px, px, ls, 3000, 3000}, {1000, 1000, true}},
    SizeCase {"style3 portrait percent of width", {50, 0, pc, px, ls, 3000, 4000}, {1125, 1500, true}},
    SizeCase {"style3 landscape percent", {50, 0, pc, px, ls, 4000, 3000}, {2000, 1500, true}},
    SizeCase {"style4 landscape", {800, 800, px, px, fit, 4000, 3000}, {800, 600, true}},
    SizeCase {"style4 portrait second try", {800, 800, px, px, fit, 3000, 4000}, {600, 800, true}},
    SizeCase {"style4 percent fails", {50, 50, pc, pc, fit, 4000, 3000}, {0, 0, false}},
    SizeCase {"style4 flat box height-led", {100, 10, px, px, fit, 4000, 3000}, {13, 10, true}},
    SizeCase {"any nonzero unit is percent", {50, 25, 7, -1, wh, 4000, 3000}, {2000, 750, true}}));

// Halves go to even at every conversion: 1000 / (4000/2999) = 749.75 -> 750,
// 5 x 50 % = 2.5 -> 2, 7 x 50 % = 3.5 -> 4.
INSTANTIATE_TEST_SUITE_P(Rounding, ComputeTargetSizeTest, ::testing::Values(
    SizeCase {"style0 half down", {50, 50, pc, pc, wh, 5, 7}, {2, 4, true}},
    SizeCase {"style2 fraction", {1000, 0, px, px, fw, 4000, 2999}, {1000, 750, true}},
    SizeCase {"style1 from rounded height", {0, 1, px, px, fh, 3, 2}, {2, 1, true}},
    SizeCase {"style4 rounded height fits", {800, 1067, px, px, fit, 3000, 4000}, {800, 1067, true}}));

// A 0 x 0 source (an unreadable file) or a zero side divides by zero; the
// failed statement is skipped and nothing crashes or overflows.
INSTANTIATE_TEST_SUITE_P(ZeroAndHuge, ComputeTargetSizeTest, ::testing::Values(
    SizeCase {"style0 empty source px", {800, 600, px, px, wh, 0, 0}, {800, 600, true}},
    SizeCase {"style0 empty source pc", {50, 50, pc, pc, wh, 0, 0}, {0, 0, true}},
    SizeCase {"style1 zero height", {0, 600, px, px, fh, 4000, 0}, {0, 600, true}},
    SizeCase {"style2 zero height", {1024, 0, px, px, fw, 4000, 0}, {1024, 0, true}},
    SizeCase {"style2 zero width", {1024, 0, px, px, fw, 0, 3000}, {1024, 0, true}},
    SizeCase {"style3 empty source", {1000, 0, px, px, ls, 0, 0}, {0, 1000, true}},
    SizeCase {"style3 zero height", {1000, 0, px, px, ls, 4000, 0}, {1000, 0, true}},
    SizeCase {"style4 empty source", {800, 800, px, px, fit, 0, 0}, {800, 0, true}},
    SizeCase {"style0 beyond 32 bits", {1e12, 600, px, px, wh, 4000, 3000}, {0, 600, true}},
    SizeCase {"style2 height overflows", {2e9, 0, px, px, fw, 1, 4000}, {2000000000, 0, true}},
    SizeCase {"style0 NaN input", {std::numeric_limits<double>::quiet_NaN(), 5, px, px, wh, 4, 3},
              {0, 5, true}}));

TEST(FormatParametersValidTest, TestsOnlyEmptiness)
{
    struct Case
    {
        std::optional<ChangeStyle> style;
        QString width;
        QString height;
        bool valid;
    };
    const Case cases[] = {
        {std::nullopt, u"800"_s, u"600"_s, false},
        {wh, u"800"_s, u"600"_s, true}, {wh, {}, u"600"_s, false}, {wh, u"800"_s, {}, false},
        {wh, u"0"_s, u"0"_s, true}, {fit, u"abc"_s, u"-3"_s, true}, {fit, u"800"_s, {}, false},
        {fh, {}, u"600"_s, true}, {fh, u"800"_s, {}, false},
        {fw, {}, u"600"_s, false}, {fw, u"800"_s, {}, true},
        {ls, u"1000"_s, {}, true}, {ls, {}, u"1000"_s, false},
        {wh, u" "_s, u" "_s, true},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(formatParametersValid(c.style, c.width, c.height), c.valid)
            << (c.style ? int(*c.style) : -1) << " '" << c.width.toStdString() << "' '" << c.height.toStdString()
            << "'";
    }
}

// The list's item data and the settings value give the style; the style
// gives the width label and the enabled inputs.
TEST(ChangeStyleTest, NumbersLabelsAndEnabledInputs)
{
    const struct
    {
        int number;
        std::optional<ChangeStyle> style;
        const char *widthLabel;
        InputEnabling enabling;
    } cases[] = {{-1, std::nullopt, "Breite :", {}},
                 {0, wh, "Breite :", {true, true}},
                 {1, fh, "Breite :", {false, true}},
                 {2, fw, "Breite :", {true, false}},
                 {3, ls, "Seitenlänge :", {true, false}},
                 {4, fit, "Breite :", {true, true}},
                 {5, std::nullopt, "Breite :", {}}};
    for (const auto &c : cases) {
        EXPECT_EQ(changeStyleFromNumber(c.number), c.style) << c.number;
        EXPECT_EQ(widthLabelText(c.style).toStdString(), c.widthLabel) << c.number;
        if (c.style) {
            EXPECT_EQ(inputEnabling(*c.style), c.enabling) << c.number;
        }
    }
    EXPECT_EQ(changeStyleEntries().at(3).itemData, 3);
}

TEST(PresetTest, SplitsAtLowerCaseX)
{
    struct Case
    {
        QString entry;
        std::optional<std::pair<QString, QString>> texts;
    };
    const Case cases[] = {
        {u"0800x0600"_s, std::pair {u"800"_s, u"600"_s}},
        {u"2048x1536"_s, std::pair {u"2048"_s, u"1536"_s}},
        {u" 12.5 x 1 024"_s, std::pair {u"12.5"_s, u"1024"_s}},
        {u"abcxdef"_s, std::pair {u"0"_s, u"0"_s}},
        {u"x"_s, std::pair {u"0"_s, u"0"_s}},
        {u"0800X0600"_s, std::nullopt},
        {u"1x2x3"_s, std::nullopt},
        {QString(), std::nullopt},
    };
    for (const Case &c : cases) {
        const std::optional<PresetSize> size = splitPreset(c.entry);
        ASSERT_EQ(size.has_value(), c.texts.has_value()) << c.entry.toStdString();
        if (size) {
            EXPECT_EQ(size->widthText(), c.texts->first) << c.entry.toStdString();
            EXPECT_EQ(size->heightText(), c.texts->second) << c.entry.toStdString();
        }
    }
}

} // namespace
