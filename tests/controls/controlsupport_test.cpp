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
    EXPECT_EQ(twipsToPixelsY(1440, &widget), widget.logicalDpiY());
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
    const std::pair<quint32, QColor> cases[] = {
        {0x0000FFu, QColor(255, 0, 0)}, // 0x00BBGGRR
        {0x123456u, QColor(0x56, 0x34, 0x12)},
        {FixedColor::Magenta, QColor(255, 0, 255)},
        {SystemColor::ActiveCaption, palette.color(QPalette::Highlight)},
        {SystemColor::InactiveCaption, palette.color(QPalette::Mid)},
        {SystemColor::Window, palette.color(QPalette::Base)},
        {SystemColor::WindowText, palette.color(QPalette::Text)},
        {SystemColor::ButtonShadow, palette.color(QPalette::Dark)},
        {SystemColor::ButtonText, palette.color(QPalette::ButtonText)},
        {0x80000031u, palette.color(QPalette::Window)}, // beyond the table
    };
    for (const auto &[value, expected] : cases)
        EXPECT_EQ(colorFromValue(value, palette), expected) << std::hex << value;
    EXPECT_EQ(colorValueFromColor(QColor(0x12, 0x34, 0x56)), 0x563412u);
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
