#include <QDeadlineTimer>
#include <QFontMetrics>
#include <QImage>
#include <QPainter>
#include <QVBoxLayout>
#include <QSignalSpy>
#include <QTest>
#include <QVariant>

#include <gtest/gtest.h>

#include "controls/controlsupport.h"
#include "controls/vxborder.h"
#include "controls/vxcont.h"
#include "controls/vxflood.h"

using namespace Qt::StringLiterals;

namespace valtrona {
namespace {

// Counts the paint events a widget receives.
class PaintCounter : public QObject
{
public:
    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            ++count;
        return false;
    }
};

TEST(BorderStyleNames, DisplayTextIsCodeDashName)
{
    const struct
    {
        int code;
        const char16_t *text;
    } cases[] = {
        {0, u"0 - Threed Inner"},     {3, u"3 - Single Black"},
        {12, u"12 - Line Horzizontal"}, {13, u"13 - Threed In Out"},
        {16, u"16 - PictureBox"},     {19, u"19 - Form"},
        {20, u"20 - Single Border"},  {21, u"21 - "},
        {-1, u"-1 - "},
    };
    for (const auto &c : cases)
        EXPECT_EQ(borderStyleDisplayText(c.code), QString::fromUtf16(c.text)) << c.code;

    const QStringList all = borderStyleDisplayTexts();
    ASSERT_EQ(all.size(), 21);
    for (int code = 0; code < 21; ++code) {
        EXPECT_FALSE(borderStyleName(code).isEmpty()) << code;
        EXPECT_EQ(all.indexOf(borderStyleDisplayText(code)), code) << "names must be unique";
    }
}

TEST(BorderGeometry, MarginsFollowStyleLineWidthAndSwitchedLines)
{
    const struct
    {
        int style;
        int lineWidth;
        bool outer;
        bool inner;
        QMargins expected;
    } cases[] = {
        {BorderStyleCode::ThreedInner, 1, true, true, {1, 1, 1, 1}},
        {BorderStyleCode::PictureBox, 1, true, true, {2, 2, 2, 2}},
        {BorderStyleCode::PictureBox, 3, true, true, {6, 6, 6, 6}},
        {BorderStyleCode::PictureBox, 0, true, true, {2, 2, 2, 2}},   // width 0 draws 1 px lines
        {BorderStyleCode::PictureBox, 1, false, true, {2, 2, 2, 2}},  // the place stays
        {BorderStyleCode::PictureBox, 1, false, false, {0, 0, 0, 0}}, // nothing drawn, nothing taken
        {BorderStyleCode::Form, 1, true, true, {4, 4, 4, 4}},
        {BorderStyleCode::LineHorizontal, 1, true, true, {0, 2, 0, 0}},
        {BorderStyleCode::SingleLineTop, 2, true, true, {0, 2, 0, 0}},
        {BorderStyleCode::MenuLines, 1, true, true, {0, 1, 0, 1}},
        {BorderStyleCode::Label, 1, true, true, {0, 0, 0, 0}},
        {BorderStyleCode::NoBorder, 1, true, true, {0, 0, 0, 0}},
        {42, 1, true, true, {0, 0, 0, 0}},
    };
    for (const auto &c : cases) {
        BorderOptions options;
        options.style = c.style;
        options.lineWidth = c.lineWidth;
        options.outerLine = c.outer;
        options.innerLine = c.inner;
        EXPECT_EQ(borderMargins(options), c.expected) << "style " << c.style << " width " << c.lineWidth;
    }
}

// The colours a border leaves on the edges of a 40 x 30 canvas.
struct EdgeColours
{
    QColor topLeft, top, left, bottom, right, inside;
};

EdgeColours drawnEdges(const BorderOptions &options, const QPalette &palette)
{
    QImage canvas(40, 30, QImage::Format_RGB32);
    canvas.fill(Qt::gray);
    QPainter painter(&canvas);
    drawBorder(painter, canvas.rect(), palette, options);
    painter.end();
    return {canvas.pixelColor(0, 0),   canvas.pixelColor(20, 0),  canvas.pixelColor(0, 15),
            canvas.pixelColor(20, 29), canvas.pixelColor(39, 15), canvas.pixelColor(20, 15)};
}

TEST(BorderDrawing, EachStyleLightsItsOwnEdges)
{
    QPalette palette;
    palette.setColor(QPalette::Light, QColor(250, 250, 250));
    palette.setColor(QPalette::Midlight, QColor(220, 220, 220));
    palette.setColor(QPalette::Mid, QColor(160, 160, 160));
    palette.setColor(QPalette::Dark, QColor(100, 100, 100));
    palette.setColor(QPalette::Shadow, QColor(20, 20, 20));
    palette.setColor(QPalette::Button, QColor(200, 200, 200));
    palette.setColor(QPalette::WindowText, QColor(0, 0, 90));
    const QColor light(250, 250, 250), dark(100, 100, 100), shadow(20, 20, 20), gray(Qt::gray);

    const struct
    {
        int style;
        QColor top, left, bottom, right;
    } cases[] = {
        {BorderStyleCode::ThreedInner, dark, dark, light, light},   // sunken
        {BorderStyleCode::ThreedOuter, light, light, dark, dark},   // raised
        {BorderStyleCode::SingleBlack, Qt::black, Qt::black, Qt::black, Qt::black},
        {BorderStyleCode::SingleWhite, Qt::white, Qt::white, Qt::white, Qt::white},
        {BorderStyleCode::Button, light, light, shadow, shadow},
        {BorderStyleCode::ButtonDown, shadow, shadow, light, light},
        {BorderStyleCode::SingleBorder, QColor(0, 0, 90), QColor(0, 0, 90), QColor(0, 0, 90), QColor(0, 0, 90)},
        {BorderStyleCode::LineHorizontal, dark, gray, gray, gray},
        {BorderStyleCode::SingleLineTop, dark, gray, gray, gray},
        {BorderStyleCode::MenuLines, light, gray, dark, gray},
        {BorderStyleCode::NoBorder, gray, gray, gray, gray},
        {BorderStyleCode::Label, gray, gray, gray, gray},
    };
    for (const auto &c : cases) {
        BorderOptions options;
        options.style = c.style;
        const EdgeColours edges = drawnEdges(options, palette);
        EXPECT_EQ(edges.top, c.top) << borderStyleName(c.style).toStdString() << " top";
        EXPECT_EQ(edges.left, c.left) << borderStyleName(c.style).toStdString() << " left";
        EXPECT_EQ(edges.bottom, c.bottom) << borderStyleName(c.style).toStdString() << " bottom";
        EXPECT_EQ(edges.right, c.right) << borderStyleName(c.style).toStdString() << " right";
        EXPECT_EQ(edges.inside, gray) << borderStyleName(c.style).toStdString() << " drew inside";
    }

    BorderOptions light3d;
    light3d.style = BorderStyleCode::Button;
    light3d.lightBorders = true;
    EXPECT_EQ(drawnEdges(light3d, palette).bottom, dark) << "LightBorders softens the shadow";

    BorderOptions outerOff;
    outerOff.style = BorderStyleCode::PictureBox;
    outerOff.outerLine = false;
    EXPECT_EQ(drawnEdges(outerOff, palette).top, gray) << "FrameOuter off leaves the outer line out";
}

struct PercentCase
{
    int type, percent, value, min, max;
    std::optional<int> expected;
};

TEST(FloodPercent, RoundsHalfToEvenClampsAndTakesTheShortcuts)
{
    const PercentCase cases[] = {
        {3, 37, 0, 0, 0, 37},
        {3, 150, 0, 0, 0, 100},
        {3, -5, 0, 0, 0, 0},
        {4, 0, 5, 0, 10, 50},
        {4, 0, 1, 0, 200, 0},     // 0.5 -> 0
        {4, 0, 3, 0, 200, 2},     // 1.5 -> 2
        {4, 0, 5, 0, 200, 2},     // 2.5 -> 2
        {4, 0, 3, 0, 8, 38},      // 37.5 -> 38
        {4, 0, 5, 5, 5, 0},       // Min = Max: empty, no division by zero
        {4, 0, 20, 0, 10, 100},   // above Max
        {4, 0, -20, 0, 10, 0},    // below Min
        {4, 0, 0, -10, 10, 0},    // Value 0 shows 0 % whatever Min is
        {4, 0, 5, -10, 10, 75},
        {4, 0, 7, 10, 0, 30},     // a falling range still works
        {-1, 50, 5, 0, 10, std::nullopt},
        {0, 50, 5, 0, 10, std::nullopt},
        {5, 50, 5, 0, 10, std::nullopt},
    };
    for (const PercentCase &c : cases)
        EXPECT_EQ(FloodState::percentFor(c.type, c.percent, c.value, c.min, c.max), c.expected)
            << "type " << c.type << " percent " << c.percent << " value " << c.value << " in "
            << c.min << ".." << c.max;
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
    cont.setFloodType(3);
    cont.initFloodStartTime();
    QSignalSpy changed(&cont, &VxCont::floodPercentChanged);

    clock = 120.0;
    cont.setFloodPercent(40);
    EXPECT_EQ(changed.count(), 1);
    EXPECT_DOUBLE_EQ(cont.aktualFloodTime(), 20.0);
    EXPECT_DOUBLE_EQ(cont.aktualFloodRemainingTime(), 30.0);

    clock = 130.0;
    cont.setFloodPercent(40);
    EXPECT_EQ(changed.count(), 1) << "same percentage must not redraw";
    EXPECT_DOUBLE_EQ(cont.aktualFloodTime(), 30.0);
    EXPECT_DOUBLE_EQ(cont.aktualFloodRemainingTime(), 45.0) << "remaining time grows while the bar stands";

    clock = 140.0;
    cont.setFloodPercent(80);
    EXPECT_EQ(changed.count(), 2);
    EXPECT_EQ(changed.last().at(0).toInt(), 80);
    EXPECT_DOUBLE_EQ(cont.aktualFloodRemainingTime(), 10.0);

    cont.setFloodPercent(0);
    EXPECT_DOUBLE_EQ(cont.aktualFloodRemainingTime(), 0.0) << "0 % must not divide by zero";
}

TEST_F(VxContFlood, StartTimeResetsTheLastUpdateAndMidnightGivesANegativeTime)
{
    cont.setFloodType(3);
    clock = 86390.0;
    cont.initFloodStartTime();
    EXPECT_DOUBLE_EQ(cont.aktualFloodTime(), -86390.0) << "last update time is 0 after the start";

    clock = 10.0; // the run passed midnight
    cont.setFloodPercent(50);
    EXPECT_DOUBLE_EQ(cont.aktualFloodTime(), -86380.0);
}

TEST_F(VxContFlood, RangeTypeTakesValueMinMaxAndClamps)
{
    cont.setFloodType(4);
    cont.setMin(0);
    cont.setMax(8);
    cont.setValue(3);
    EXPECT_EQ(cont.floodPercent(), 38);
    cont.setValue(12);
    EXPECT_EQ(cont.floodPercent(), 100);
    cont.setMax(0);
    EXPECT_EQ(cont.floodPercent(), 0) << "Min = Max gives an empty bar";
}

TEST_F(VxContFlood, NoFloodTypeNeverUpdates)
{
    QSignalSpy changed(&cont, &VxCont::floodPercentChanged);
    cont.initFloodStartTime();
    clock = 150.0;
    cont.setFloodPercent(50);
    cont.setValue(5);
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(cont.floodPercent(), 50) << "keeps the given percentage";
    EXPECT_DOUBLE_EQ(cont.aktualFloodTime(), -100.0) << "no update time recorded";
}

TEST_F(VxContFlood, UnchangedPercentCausesNoRepaint)
{
    cont.setFloodType(3);
    cont.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&cont));
    cont.setFloodPercent(30);
    QCoreApplication::processEvents();

    PaintCounter counter;
    cont.installEventFilter(&counter);
    cont.setFloodPercent(30);
    QCoreApplication::processEvents();
    EXPECT_EQ(counter.count, 0);

    cont.setFloodPercent(31);
    QDeadlineTimer deadline(3000);
    while (counter.count == 0 && !deadline.hasExpired())
        QTest::qWait(10);
    EXPECT_GT(counter.count, 0);
}

// Whether the bar is filled at 25 % and at 75 % of the work area's width,
// sampled along its middle row; "filled" means the pixel's hue is the
// flood colour's dominant channel (the raised bar shades it).
struct BarProbe
{
    bool filledAt25 = false;
    bool filledAt75 = false;
};

BarProbe probeBar(VxCont &cont, int channel)
{
    const QImage image = cont.grab().toImage();
    const QRect work = cont.workArea();
    const int y = work.center().y();
    const auto dominant = [&](int x) {
        const QColor c = image.pixelColor(x, y);
        const int values[] = {c.red(), c.green(), c.blue()};
        int others = 0;
        for (int i = 0; i < 3; ++i)
            if (i != channel)
                others = qMax(others, values[i]);
        return values[channel] > 120 && values[channel] > others + 80;
    };
    return {dominant(work.left() + work.width() / 4), dominant(work.left() + work.width() * 3 / 4)};
}

constexpr int red = 0;
constexpr int green = 1;

TEST_F(VxContFlood, BarFillsInProportionAndOnlyForKnownTypes)
{
    cont.setFloodColor(0x0000FF);
    cont.setFloodType(3);
    cont.setFloodPercent(50);

    const struct
    {
        int barType;
        bool filled;
    } cases[] = {{0, true}, {2, true}, {3, false /* no FloodBackImage yet */}, {4, false}, {-1, false}};
    for (const auto &c : cases) {
        cont.setFloodBarType(c.barType);
        const BarProbe probe = probeBar(cont, red);
        EXPECT_EQ(probe.filledAt25, c.filled) << "bar type " << c.barType;
        EXPECT_FALSE(probe.filledAt75) << "bar type " << c.barType << " filled beyond 50 %";
    }

    QPixmap image(8, 8);
    image.fill(Qt::green);
    cont.setFloodBackImage(image);
    cont.setFloodBarType(3);
    EXPECT_TRUE(probeBar(cont, green).filledAt25) << "FloodBackImage stretched over the filled part";
    EXPECT_FALSE(probeBar(cont, green).filledAt75);

    cont.setFloodPercent(100);
    cont.setFloodBarType(0);
    EXPECT_TRUE(probeBar(cont, red).filledAt75);
    cont.setFloodType(-1);
    EXPECT_FALSE(probeBar(cont, red).filledAt25) << "no flood type, no bar";
}

TEST(VxContLayout, WorkAreaAndChildrenStayInsideTheFrame)
{
    VxCont cont;
    cont.resize(200, 120);
    cont.setBorderStyle(BorderStyleCode::PictureBox);
    cont.setFrameWidth(4);
    EXPECT_EQ(cont.workArea(), QRect(6, 6, 188, 108));

    cont.setOuterOffset(3);
    cont.setTopOffset(10);
    EXPECT_EQ(cont.workArea(), QRect(9, 19, 182, 92));
    cont.setWorkHeight(40);
    EXPECT_EQ(cont.workArea().height(), 40);

    // A frame caption pushes the work area below itself.
    cont.setWorkHeight(0);
    cont.setTopOffset(0);
    const int before = cont.workArea().top();
    cont.setCaptionFrame(u"Optionen"_s);
    EXPECT_GT(cont.workArea().top(), before + QFontMetrics(cont.font()).height() / 2);

    // A layout set on the container keeps its widgets in the work area.
    auto *layout = new QVBoxLayout(&cont);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *child = new QWidget;
    layout->addWidget(child);
    cont.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&cont));
    cont.setControlStyle(2);
    QCoreApplication::processEvents();
    layout->activate();
    EXPECT_TRUE(cont.workArea().contains(child->geometry()))
        << "child " << child->geometry().x() << "," << child->geometry().y();
}

TEST(VxContProperties, DefaultsAsDesigned)
{
    VxCont cont;
    const struct
    {
        const char *name;
        QVariant value;
    } defaults[] = {
        {"ControlStyle", 0},        {"FrameOuter", true},
        {"FrameInner", true},       {"FrameWidth", 4},
        {"BorderStyle", 0},         {"BorderWidth", 0},
        {"OuterOffset", 0},         {"LightBorders", false},
        {"Caption", QString()},     {"Alignment", 2},
        {"AlignmentVertical", 1},   {"ForeColor", 0x80000012u},
        {"FloodPercent", 0},        {"Value", 0},
        {"Min", 0},                 {"Max", 0},
        {"Enabled", true},          {"FloodColor", 0x80000002u},
        {"BackColor", 0x8000000Fu}, {"FloodBarType", 0},
        {"WordWrap", true},         {"UseMnemonic", false},
        {"BackStyle", 1},           {"FrameForeColor", 0x80000012u},
        {"ShowBorderShape", false}, {"WindowColor", 0x8000000Fu},
        {"ShadowColor", 0x80000010u}, {"ShadowOffset", 6},
        {"ShadowSize", 6},          {"ForeColorText", 0x80000012u},
        {"RasterDistance", 2},      {"RasterFaktor", 1.7},
        {"CABorderColor", 0x80000012u}, {"CAColor", 0xFFFFFFu},
        {"DesignIndexDisplayStyle", 1}, {"FloodOffset", 0},
        {"CTLUseLng", 1},           {"FloodType", -1},
    };
    for (const auto &d : defaults) {
        const QVariant actual = cont.property(d.name);
        ASSERT_TRUE(actual.isValid()) << d.name << " is not a property";
        EXPECT_EQ(actual, d.value) << d.name;
    }
}

TEST(VxContLanguage, CaptionsSwitchOnlyWithCtlUseLngAndKeepTheDesignedCaption)
{
    VxCont cont;
    cont.setCaption(u"Ziel"_s);
    EXPECT_EQ(cont.ctlClassName(), u"VxCont"_s);
    EXPECT_TRUE(cont.ctlSetUserControlLanguage(u"Caption"_s, u"Target"_s));
    EXPECT_TRUE(cont.ctlSetUserControlLanguage(u"Caption"_s, u"Cible"_s));
    EXPECT_EQ(cont.caption(), u"Cible"_s);
    EXPECT_EQ(cont.captionStored(), u"Ziel"_s);
    EXPECT_FALSE(cont.ctlSetUserControlLanguage(u"BorderStyle"_s, u"x"_s));
    EXPECT_EQ(cont.ctlGetLngPropertyType(u"CaptionText"_s), LngPropertyType::Text);
    EXPECT_TRUE(cont.ctlEnumAllCaptionsInUCtl().contains(qMakePair(u"Caption"_s, u"Cible"_s)));
    EXPECT_TRUE(cont.ctlSetUserControlLanguage(u"ToolTip"_s, u"Hinweis"_s));
    EXPECT_EQ(cont.toolTip(), u"Hinweis"_s);

    cont.setCtlUseLng(0);
    EXPECT_FALSE(cont.ctlSetUserControlLanguage(u"Caption"_s, u"Ziel"_s));
    EXPECT_EQ(cont.caption(), u"Cible"_s);
    EXPECT_TRUE(cont.ctlEnumAllCaptionsInUCtl().isEmpty());

    // The host finds the release call through the shared hooks.
    QWidget window;
    auto *inner = new VxCont(&window);
    QPixmap picture(4, 4);
    picture.fill(Qt::red);
    inner->setPicture(picture);
    EXPECT_EQ(terminateControls(&window), 1);
    EXPECT_TRUE(inner->picture().isNull());
}

} // namespace
} // namespace valtrona
