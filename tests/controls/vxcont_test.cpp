#include <QFontMetrics>
#include <QImage>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

#include <gtest/gtest.h>

#include "controls/controlsupport.h"
#include "controls/vxborder.h"
#include "controls/vxcont.h"
#include "controls/vxflood.h"
#include "controlstest.h"

using namespace Qt::StringLiterals;

namespace valtrona {
namespace {

// The flood types and bar types as a host sets them.
constexpr int percentType = 3;
constexpr int rangeType = 4;

TEST(BorderGeometry, MarginsFollowStyleLineWidthAndSwitchedLines)
{
    // Style, line width, FrameOuter, FrameInner; the margins the border takes.
    const std::tuple<int, int, bool, bool, QMargins> cases[] = {
        {BorderStyleCode::ThreedInner, 1, true, true, {1, 1, 1, 1}},
        {BorderStyleCode::PictureBox, 3, true, true, {6, 6, 6, 6}},
        {BorderStyleCode::PictureBox, 0, true, true, {2, 2, 2, 2}},   // width 0 draws 1 px lines
        {BorderStyleCode::PictureBox, 1, false, true, {2, 2, 2, 2}},  // the place stays
        {BorderStyleCode::PictureBox, 1, false, false, {0, 0, 0, 0}}, // nothing drawn, nothing taken
        {BorderStyleCode::LineHorizontal, 1, true, true, {0, 2, 0, 0}},
        {BorderStyleCode::MenuLines, 1, true, true, {0, 1, 0, 1}},
        {42, 1, true, true, {0, 0, 0, 0}},
    };
    for (const auto &[style, lineWidth, outer, inner, expected] : cases)
        EXPECT_EQ(borderMargins({style, lineWidth, outer, inner}), expected)
            << "style " << style << " width " << lineWidth;
}

TEST(FloodPercent, RoundsHalfToEvenClampsAndTakesTheShortcuts)
{
    // FloodType, FloodPercent, Value, Min, Max; the percentage shown.
    const std::tuple<int, int, int, int, int, std::optional<int>> cases[] = {
        {3, 37, 0, 0, 0, 37},   {3, 150, 0, 0, 0, 100}, {3, -5, 0, 0, 0, 0},
        {4, 0, 1, 0, 200, 0},   // 0.5 -> 0
        {4, 0, 3, 0, 200, 2},   // 1.5 -> 2
        {4, 0, 5, 5, 5, 0},     // Min = Max: empty, no division by zero
        {4, 0, 0, -10, 10, 0},  // Value 0 shows 0 % whatever Min is
        {4, 0, 5, -10, 10, 75}, {4, 0, 7, 10, 0, 30}, // a falling range still works
        {-1, 50, 5, 0, 10, std::nullopt}, {0, 50, 5, 0, 10, std::nullopt}, {5, 50, 5, 0, 10, std::nullopt},
    };
    for (const auto &[type, percent, value, min, max, expected] : cases)
        EXPECT_EQ(FloodState::percentFor(type, percent, value, min, max), expected)
            << "type " << type << " percent " << percent << " value " << value << " in " << min << ".." << max;
}

class VxContFlood : public ::testing::Test
{
protected:
    void SetUp() override
    {
        cont.resize(200, 40);
        cont.setFloodClock([this] { return clock; });
    }

    double clock = 100.0;
    VxCont cont;
};

TEST_F(VxContFlood, TimesFollowTheClockAndAnUnchangedPercentOnlyMovesTheTime)
{
    cont.setFloodType(percentType);
    cont.initFloodStartTime();
    QSignalSpy changed(&cont, &VxCont::floodPercentChanged);
    // Clock, FloodPercent; signals so far, elapsed and remaining seconds.
    const std::tuple<double, int, int, double, double> steps[] = {
        {120.0, 40, 1, 20.0, 30.0},
        {130.0, 40, 1, 30.0, 45.0}, // same percentage: no redraw, the remaining time grows
        {140.0, 80, 2, 40.0, 10.0},
        {150.0, 0, 3, 50.0, 0.0},   // 0 % must not divide by zero
    };
    for (const auto &[now, percent, signals, elapsed, remaining] : steps) {
        clock = now;
        cont.setFloodPercent(percent);
        EXPECT_EQ(changed.count(), signals) << now;
        EXPECT_DOUBLE_EQ(cont.aktualFloodTime(), elapsed) << now;
        EXPECT_DOUBLE_EQ(cont.aktualFloodRemainingTime(), remaining) << now;
    }
    EXPECT_EQ(changed.value(1).value(0).toInt(), 80);
}

TEST_F(VxContFlood, UnchangedPercentCausesNoRepaint)
{
    cont.setFloodType(percentType);
    cont.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&cont));
    cont.setFloodPercent(30);
    QCoreApplication::processEvents();

    // Counts the paint events the container receives.
    struct Counter : QObject
    {
        int paints = 0;
        bool eventFilter(QObject *, QEvent *event) override
        {
            paints += event->type() == QEvent::Paint ? 1 : 0;
            return false;
        }
    } counter;
    cont.installEventFilter(&counter);
    cont.setFloodPercent(30);
    QCoreApplication::processEvents();
    EXPECT_EQ(counter.paints, 0);
    cont.setFloodPercent(31);
    EXPECT_TRUE(QTest::qWaitFor([&] { return counter.paints > 0; }, 3000));
}

TEST(VxContLayout, WorkAreaByControlStyleOffsetsAndFrameCaption)
{
    VxCont cont;
    cont.resize(200, 120);
    cont.setBorderStyle(BorderStyleCode::PictureBox);
    const int captionArea = QFontMetrics(cont.font()).height() + 8;
    const std::pair<int, QRect> styles[] = {
        {0, QRect(6, 6, 188, 108)},
        {1, QRect(6, 6, 182, 102)}, // the shadow takes ShadowOffset from the right and the bottom
        {2, QRect(6, 6 + captionArea, 188, 108 - captionArea)},
        {5, QRect(6, 6, 188, 108)}, // unknown styles are plain
    };
    for (const auto &[style, work] : styles) {
        cont.setControlStyle(style);
        EXPECT_EQ(cont.workArea(), work) << "ControlStyle " << style;
    }
    // A frame caption pushes the work area below itself.
    cont.setControlStyle(0);
    cont.setCaptionFrame(u"Optionen"_s);
    EXPECT_GT(cont.workArea().top(), 6 + QFontMetrics(cont.font()).height() / 2);

    // A layout set on the container keeps its widgets in the work area.
    auto *layout = new QVBoxLayout(&cont);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *child = new QWidget;
    layout->addWidget(child);
    cont.setControlStyle(2);
    layout->activate();
    EXPECT_TRUE(cont.workArea().contains(child->geometry()));
}

TEST(VxContPainting, CaptionAlignmentAndBackStyle)
{
    // A red window behind a white container with a black caption.
    QWidget window;
    test::fillWindow(window, {300, 150}, Qt::red);
    auto *cont = new VxCont(&window);
    cont->setGeometry(0, 0, 300, 150);
    cont->setBorderStyle(BorderStyleCode::NoBorder);
    cont->setFrameWidth(0);
    cont->setBackColor(0xFFFFFF);
    cont->setWindowColor(0xFFFFFF);
    cont->setForeColor(0x000000);
    cont->setCaption(u"XX"_s);

    // Alignment, vertical alignment, BackStyle; where the caption shows and
    // whether the container paints its background.
    enum Third { Start, Middle, End };
    const std::tuple<int, int, int, Third, Third, bool> cases[] = {
        {0, 0, 1, Start, Start, true},   {1, 2, 1, End, End, true},
        {2, 1, 0, Middle, Middle, false}, // BackStyle 0 lets the window show through
        {7, 9, 5, Start, Middle, false},  // unknown: left, middle, transparent
    };
    for (const auto &[horizontal, vertical, backStyle, column, row, white] : cases) {
        cont->setAlignment(horizontal);
        cont->setAlignmentVertical(vertical);
        cont->setBackStyle(backStyle);
        const QImage image = test::rendered(window);
        QRect ink;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (qGray(image.pixel(x, y)) < 40)
                    ink |= QRect(x, y, 1, 1);
        const QPoint centre = ink.center();
        EXPECT_EQ(Third(3 * centre.x() / 300), column) << horizontal;
        EXPECT_EQ(Third(3 * centre.y() / 150), row) << vertical;
        EXPECT_EQ(image.pixelColor(2, 2) == QColor(Qt::white), white) << "BackStyle " << backStyle;
    }
}

} // namespace
} // namespace valtrona
