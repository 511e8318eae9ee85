#include <QPalette>
#include <QWidget>

#include <gtest/gtest.h>

#include "controls/controlsupport.h"
#include "controls/vxcolor.h"

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
        {0x123456u, QColor(0x56, 0x34, 0x12)}, // 0x00BBGGRR
        {FixedColor::Magenta, QColor(255, 0, 255)},
        {SystemColor::ActiveCaption, palette.color(QPalette::Highlight)},
        {SystemColor::Window, palette.color(QPalette::Base)},
        {SystemColor::ButtonShadow, palette.color(QPalette::Dark)},
        {SystemColor::ButtonText, palette.color(QPalette::ButtonText)},
        {0x80000031u, palette.color(QPalette::Window)}, // beyond the table
    };
    for (const auto &[value, expected] : cases)
        EXPECT_EQ(colorFromValue(value, palette), expected) << std::hex << value;
    EXPECT_EQ(colorValueFromColor(QColor(0x12, 0x34, 0x56)), 0x563412u);
}

} // namespace
} // namespace valtrona
