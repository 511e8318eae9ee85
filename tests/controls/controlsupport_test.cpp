#include <QPalette>
#include <QPushButton>
#include <QWidget>

#include <gtest/gtest.h>

#include "controls/controlsupport.h"
#include "controls/vxactctrl.h"
#include "controls/vxcolor.h"
#include "controls/vxinvisiblecont.h"
#include "controls/vxlinein.h"

using namespace Qt::StringLiterals;

namespace valtrona {
namespace {

TEST(ControlSupport, TwipsFollowTheLogicalDpi)
{
    QWidget widget;
    const int dpi = widget.logicalDpiX();
    EXPECT_EQ(twipsToPixelsX(1440, &widget), dpi); // one inch
    if (dpi == 96) {
        // 15 twips a pixel: 112 -> 7.47, 113 -> 7.53
        EXPECT_EQ(twipsToPixelsX(112, &widget), 7);
        EXPECT_EQ(twipsToPixelsX(113, &widget), 8);
        EXPECT_EQ(twipsToPixelsY(4755, &widget), 317);
        EXPECT_EQ(pixelsToTwipsY(21, &widget), 315);
    }
    for (int twips : {0, 15, 315, 4500, 12345})
        EXPECT_NEAR(pixelsToTwipsX(twipsToPixelsX(twips, &widget), &widget), twips, 1440.0 / dpi);
}

TEST(ControlSupport, ColourValuesArePlainColoursOrNamedPaletteEntries)
{
    // Every palette entry a distinct colour, so a wrong mapping shows.
    QPalette palette;
    int shade = 0;
    for (const QPalette::ColorRole role :
         {QPalette::Window, QPalette::WindowText, QPalette::Base, QPalette::Text, QPalette::Button,
          QPalette::ButtonText, QPalette::Highlight, QPalette::Mid, QPalette::Dark}) {
        shade += 20;
        palette.setColor(role, QColor(shade, 0, 255 - shade));
    }
    const struct
    {
        quint32 value;
        QColor expected;
    } cases[] = {
        {0x0000FFu, QColor(255, 0, 0)}, // 0x00BBGGRR
        {0x123456u, QColor(0x56, 0x34, 0x12)},
        {FixedColor::Magenta, QColor(255, 0, 255)},
        {SystemColor::ActiveCaption, palette.color(QPalette::Highlight)},
        {SystemColor::InactiveCaption, palette.color(QPalette::Mid)},
        {SystemColor::Window, palette.color(QPalette::Base)},
        {SystemColor::WindowText, palette.color(QPalette::Text)},
        {SystemColor::ButtonFace, palette.color(QPalette::Button)},
        {SystemColor::ButtonShadow, palette.color(QPalette::Dark)},
        {SystemColor::ButtonText, palette.color(QPalette::ButtonText)},
        {0x80000031u, palette.color(QPalette::Window)}, // beyond the table
    };
    for (const auto &c : cases)
        EXPECT_EQ(colorFromValue(c.value, palette), c.expected) << std::hex << c.value;
    EXPECT_EQ(colorValueFromColor(QColor(0x12, 0x34, 0x56)), 0x563412u);
}

TEST(ControlSupport, ControlArrayIndexIsMinusOneForPlainWidgets)
{
    QWidget widget;
    EXPECT_EQ(controlArrayIndex(&widget), -1);
    EXPECT_EQ(controlArrayIndex(nullptr), -1);
    setControlArrayIndex(&widget, 0);
    EXPECT_EQ(controlArrayIndex(&widget), 0);
    widget.setProperty("Index", u"kein"_s);
    EXPECT_EQ(controlArrayIndex(&widget), -1);
}

TEST(ControlSupport, TerminateReachesEveryLibraryControlAndSkipsOthers)
{
    QWidget window;
    auto *card = new VxInvisibleCont(&window);
    auto *line = new VxLineIn(card); // nested inside a card
    new VxActCtrl(&window);
    new QPushButton(&window);
    EXPECT_EQ(terminateControls(&window), 3);
    EXPECT_EQ(terminateControls(nullptr), 0);

    bool reported = false;
    QObject::connect(line, &VxLineIn::change, line, [&] { reported = true; });
    line->setText(u"nach dem Ende"_s);
    EXPECT_FALSE(reported);
}

} // namespace
} // namespace valtrona
