#include <QDeadlineTimer>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <QSet>
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

TEST(BorderStyleNames, DisplayTextIsCodeDashName)
{
    const std::pair<int, const char16_t *> cases[] = {
        {0, u"0 - Threed Inner"}, {12, u"12 - Line Horzizontal"}, {16, u"16 - PictureBox"},
        {20, u"20 - Single Border"}, {21, u"21 - "}, {-1, u"-1 - "},
    };
    for (const auto &[code, text] : cases)
        EXPECT_EQ(borderStyleDisplayText(code), QString::fromUtf16(text)) << code;
    const QStringList all = borderStyleDisplayTexts();
    ASSERT_EQ(all.size(), 21);
    EXPECT_EQ(QSet<QString>(all.begin(), all.end()).size(), 21) << "names must be unique";
}

TEST(BorderGeometry, MarginsFollowStyleLineWidthAndSwitchedLines)
{
    const struct
    {
        int style, lineWidth;
        bool outer, inner;
        QMargins expected;
    } cases[] = {
        {BorderStyleCode::ThreedInner, 1, true, true, {1, 1, 1, 1}},
        {BorderStyleCode::PictureBox, 3, true, true, {6, 6, 6, 6}},
        {BorderStyleCode::PictureBox, 0, true, true, {2, 2, 2, 2}},   // width 0 draws 1 px lines
        {BorderStyleCode::PictureBox, 1, false, true, {2, 2, 2, 2}},  // the place stays
        {BorderStyleCode::PictureBox, 1, false, false, {0, 0, 0, 0}}, // nothing drawn, nothing taken
        {BorderStyleCode::Form, 1, true, true, {4, 4, 4, 4}},
        {BorderStyleCode::LineHorizontal, 1, true, true, {0, 2, 0, 0}},
        {BorderStyleCode::SingleLineTop, 2, true, true, {0, 2, 0, 0}},
        {BorderStyleCode::MenuLines, 1, true, true, {0, 1, 0, 1}},
        {BorderStyleCode::Label, 1, true, true, {0, 0, 0, 0}},
        {42, 1, true, true, {0, 0, 0, 0}},
    };
    for (const auto &c : cases)
        EXPECT_EQ(borderMargins({c.style, c.lineWidth, c.outer, c.inner}), c.expected)
            << "style " << c.style << " width " << c.lineWidth;
}

TEST(BorderDrawing, EachStyleLightsItsOwnEdges)
{
    QPalette palette;
    const QColor light(250, 250, 250), dark(100, 100, 100), shadow(20, 20, 20), text(0, 0, 90), gray(Qt::gray);
    palette.setColor(QPalette::Light, light);
    palette.setColor(QPalette::Midlight, QColor(220, 220, 220));
    palette.setColor(QPalette::Mid, QColor(160, 160, 160));
    palette.setColor(QPalette::Dark, dark);
    palette.setColor(QPalette::Shadow, shadow);
    palette.setColor(QPalette::WindowText, text);
    const struct
    {
        BorderOptions options;
        QColor top, left, bottom, right;
    } cases[] = {
        {{BorderStyleCode::ThreedInner}, dark, dark, light, light}, // sunken
        {{BorderStyleCode::ThreedOuter}, light, light, dark, dark}, // raised
        {{BorderStyleCode::SingleBlack}, Qt::black, Qt::black, Qt::black, Qt::black},
        {{BorderStyleCode::SingleWhite}, Qt::white, Qt::white, Qt::white, Qt::white},
        {{BorderStyleCode::Button}, light, light, shadow, shadow},
        {{BorderStyleCode::ButtonDown}, shadow, shadow, light, light},
        {{BorderStyleCode::SingleBorder}, text, text, text, text},
        {{BorderStyleCode::LineHorizontal}, dark, gray, gray, gray},
        {{BorderStyleCode::MenuLines}, light, gray, dark, gray},
        {{BorderStyleCode::NoBorder}, gray, gray, gray, gray},
        {{BorderStyleCode::Button, 1, true, true, true}, light, light, dark, dark}, // LightBorders soften
        {{BorderStyleCode::PictureBox, 1, false}, gray, gray, gray, gray}, // FrameOuter off
    };
    for (const auto &c : cases) {
        QImage canvas(40, 30, QImage::Format_RGB32);
        canvas.fill(gray);
        QPainter painter(&canvas);
        drawBorder(painter, canvas.rect(), palette, c.options);
        painter.end();
        const QList<QColor> edges {canvas.pixelColor(20, 0), canvas.pixelColor(0, 15), canvas.pixelColor(20, 29),
                                   canvas.pixelColor(39, 15), canvas.pixelColor(20, 15)};
        EXPECT_EQ(edges, QList<QColor>({c.top, c.left, c.bottom, c.right, gray}))
            << borderStyleName(c.options.style).toStdString() << ": top, left, bottom, right, inside";
    }
}

TEST(FloodPercent, RoundsHalfToEvenClampsAndTakesTheShortcuts)
{
    const struct
    {
        int type, percent, value, min, max;
        std::optional<int> expected;
    } cases[] = {
        {3, 37, 0, 0, 0, 37},   {3, 150, 0, 0, 0, 100}, {3, -5, 0, 0, 0, 0},
        {4, 0, 1, 0, 200, 0},   // 0.5 -> 0
        {4, 0, 3, 0, 200, 2},   // 1.5 -> 2
        {4, 0, 5, 0, 200, 2},   // 2.5 -> 2
        {4, 0, 3, 0, 8, 38},    // 37.5 -> 38
        {4, 0, 5, 5, 5, 0},     // Min = Max: empty, no division by zero
        {4, 0, 20, 0, 10, 100}, // above Max
        {4, 0, -20, 0, 10, 0},  // below Min
        {4, 0, 0, -10, 10, 0},  // Value 0 shows 0 % whatever Min is
        {4, 0, 5, -10, 10, 75}, {4, 0, 7, 10, 0, 30}, // a falling range still works
        {-1, 50, 5, 0, 10, std::nullopt}, {0, 50, 5, 0, 10, std::nullopt}, {5, 50, 5, 0, 10, std::nullopt},
    };
    for (const auto &c : cases)
        EXPECT_EQ(FloodState::percentFor(c.type, c.percent, c.value, c.min, c.max), c.expected)
            << "type " << c.type << " percent " << c.percent << " value " << c.value << " in " << c.min
            << ".." << c.max;
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
    const struct
    {
        double clock;
        int percent;
        int signals;
        double elapsed, remaining;
    } steps[] = {
        {120.0, 40, 1, 20.0, 30.0},
        {130.0, 40, 1, 30.0, 45.0}, // same percentage: no redraw, the remaining time grows
        {140.0, 80, 2, 40.0, 10.0},
        {150.0, 0, 3, 50.0, 0.0},   // 0 % must not divide by zero
    };
    for (const auto &s : steps) {
        clock = s.clock;
        cont.setFloodPercent(s.percent);
        EXPECT_EQ(changed.count(), s.signals) << s.clock;
        EXPECT_DOUBLE_EQ(cont.aktualFloodTime(), s.elapsed) << s.clock;
        EXPECT_DOUBLE_EQ(cont.aktualFloodRemainingTime(), s.remaining) << s.clock;
    }
    EXPECT_EQ(changed.value(1).value(0).toInt(), 80);

    clock = 86390.0;
    cont.initFloodStartTime();
    EXPECT_DOUBLE_EQ(cont.aktualFloodTime(), -86390.0) << "last update time is 0 after the start";
    clock = 10.0; // the run passed midnight
    cont.setFloodPercent(50);
    EXPECT_DOUBLE_EQ(cont.aktualFloodTime(), -86380.0);
}

TEST_F(VxContFlood, RangeTypeFollowsValueMinAndMaxAndNoTypeNeverUpdates)
{
    cont.setFloodType(rangeType);
    cont.setMax(8);
    cont.setValue(3);
    EXPECT_EQ(cont.floodPercent(), 38);
    cont.setMax(0);
    EXPECT_EQ(cont.floodPercent(), 0) << "Min = Max gives an empty bar";

    VxCont none;
    none.setFloodClock([this] { return clock; });
    QSignalSpy changed(&none, &VxCont::floodPercentChanged);
    none.initFloodStartTime();
    none.setFloodPercent(50);
    none.setValue(5);
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(none.floodPercent(), 50) << "keeps the given percentage";
    EXPECT_DOUBLE_EQ(none.aktualFloodTime(), -100.0) << "no update time recorded";
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
    for (QDeadlineTimer deadline(3000); counter.paints == 0 && !deadline.hasExpired();)
        QTest::qWait(10);
    EXPECT_GT(counter.paints, 0);
}

// Whether the bar is red at 25 % and at 75 % of the work area's width, along
// its middle row (the raised bar shades the colour, so red means dominant).
std::pair<bool, bool> redAt25And75(VxCont &cont, int channel = 0)
{
    const QImage image = test::rendered(cont);
    const QRect work = cont.workArea();
    const auto filled = [&](int x) {
        const QColor c = image.pixelColor(x, work.center().y());
        const int values[] = {c.red(), c.green(), c.blue()};
        return values[channel] > 120 && values[channel] > values[(channel + 1) % 3] + 80
            && values[channel] > values[(channel + 2) % 3] + 80;
    };
    return {filled(work.left() + work.width() / 4), filled(work.left() + work.width() * 3 / 4)};
}

TEST_F(VxContFlood, BarFillsInProportionAndOnlyForKnownTypes)
{
    cont.setFloodColor(0x0000FF);
    cont.setFloodType(percentType);
    cont.setFloodPercent(50);
    const std::pair<int, bool> cases[] = {{0, true}, {2, true}, {3, false /* no FloodBackImage yet */},
                                          {4, false}, {-1, false}};
    for (const auto &[barType, filled] : cases) {
        cont.setFloodBarType(barType);
        EXPECT_EQ(redAt25And75(cont), std::make_pair(filled, false)) << "bar type " << barType;
    }
    QPixmap image(8, 8);
    image.fill(Qt::green);
    cont.setFloodBackImage(image);
    cont.setFloodBarType(3);
    EXPECT_EQ(redAt25And75(cont, 1), std::make_pair(true, false)) << "FloodBackImage over the filled part";

    cont.setFloodPercent(100);
    cont.setFloodBarType(0);
    EXPECT_EQ(redAt25And75(cont), std::make_pair(true, true));
    cont.setFloodType(-1);
    EXPECT_EQ(redAt25And75(cont), std::make_pair(false, false)) << "no flood type, no bar";
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
    cont.setControlStyle(0);
    cont.setOuterOffset(3);
    cont.setTopOffset(10);
    cont.setWorkHeight(40);
    EXPECT_EQ(cont.workArea(), QRect(9, 19, 182, 40));

    // A frame caption pushes the work area below itself.
    cont.setWorkHeight(0);
    cont.setTopOffset(0);
    cont.setCaptionFrame(u"Optionen"_s);
    EXPECT_GT(cont.workArea().top(), 9 + QFontMetrics(cont.font()).height() / 2);

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

    enum Third { Start, Middle, End };
    const struct
    {
        int horizontal, vertical, backStyle;
        Third column, row;
        bool white;
    } cases[] = {
        {0, 0, 1, Start, Start, true},   {1, 2, 1, End, End, true},
        {2, 1, 0, Middle, Middle, false}, // BackStyle 0 lets the window show through
        {7, 9, 5, Start, Middle, false},  // unknown: left, middle, transparent
    };
    for (const auto &c : cases) {
        cont->setAlignment(c.horizontal);
        cont->setAlignmentVertical(c.vertical);
        cont->setBackStyle(c.backStyle);
        const QImage image = test::rendered(window);
        QRect ink;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (qGray(image.pixel(x, y)) < 40)
                    ink |= QRect(x, y, 1, 1);
        const QPoint centre = ink.center();
        EXPECT_EQ(Third(3 * centre.x() / 300), c.column) << c.horizontal;
        EXPECT_EQ(Third(3 * centre.y() / 150), c.row) << c.vertical;
        EXPECT_EQ(image.pixelColor(2, 2) == QColor(Qt::white), c.white) << "BackStyle " << c.backStyle;
    }
}

TEST(VxContLanguage, CaptionsSwitchOnlyWithCtlUseLngAndKeepTheDesignedCaption)
{
    VxCont cont;
    cont.setCaption(u"Ziel"_s);
    EXPECT_TRUE(cont.ctlSetUserControlLanguage(u"Caption"_s, u"Target"_s));
    EXPECT_TRUE(cont.ctlSetUserControlLanguage(u"Caption"_s, u"Cible"_s));
    EXPECT_EQ(cont.caption(), u"Cible"_s);
    EXPECT_EQ(cont.captionStored(), u"Ziel"_s);
    EXPECT_FALSE(cont.ctlSetUserControlLanguage(u"BorderStyle"_s, u"x"_s));
    EXPECT_TRUE(cont.ctlSetUserControlLanguage(u"ToolTip"_s, u"Hinweis"_s));
    EXPECT_EQ(cont.toolTip(), u"Hinweis"_s);

    cont.setCtlUseLng(0);
    EXPECT_FALSE(cont.ctlSetUserControlLanguage(u"Caption"_s, u"Ziel"_s));
    EXPECT_EQ(cont.caption(), u"Cible"_s);
    EXPECT_TRUE(cont.ctlEnumAllCaptionsInUCtl().isEmpty());

    QPixmap picture(4, 4);
    picture.fill(Qt::red);
    cont.setPicture(picture);
    cont.terminateControl();
    EXPECT_TRUE(cont.picture().isNull());
}

} // namespace
} // namespace valtrona
