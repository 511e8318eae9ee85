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

namespace {

TEST(ControlSupport, TwipsFollowTheLogicalDpi)
{
    QWidget widget;
    const int dpi = widget.logicalDpiX();
    EXPECT_EQ(valtrona::twipsToPixelsX(1440, &widget), dpi); // one inch
    EXPECT_EQ(valtrona::twipsToPixelsX(0, &widget), 0);
    if (dpi == 96) {
        // 15 twips per pixel: 60 -> 4, 7.5 pixels rounds to even 8, 22.5 to 22
        EXPECT_EQ(valtrona::twipsToPixelsX(60, &widget), 4);
        EXPECT_EQ(valtrona::twipsToPixelsX(112, &widget), 7);
        EXPECT_EQ(valtrona::twipsToPixelsX(4755, &widget), 317);
        EXPECT_EQ(valtrona::twipsToPixelsY(315, &widget), 21);
        EXPECT_EQ(valtrona::pixelsToTwipsX(21, &widget), 315);
        EXPECT_EQ(valtrona::scaledPixels(125, &widget), 125);
    }
    for (int twips : {0, 15, 60, 315, 4500, 12345})
        EXPECT_NEAR(valtrona::pixelsToTwipsX(valtrona::twipsToPixelsX(twips, &widget), &widget), twips,
                    1440.0 / dpi);
}

TEST(ControlSupport, ColourValuesAreRgbOrSystemColours)
{
    QPalette palette;
    palette.setColor(QPalette::Base, QColor(1, 2, 3));
    palette.setColor(QPalette::Button, QColor(4, 5, 6));
    palette.setColor(QPalette::ButtonText, QColor(7, 8, 9));
    EXPECT_EQ(valtrona::colorFromValue(0x0000FFu, palette), QColor(255, 0, 0)); // 0x00BBGGRR
    EXPECT_EQ(valtrona::colorFromValue(0xC0C0C0u, palette), QColor(192, 192, 192));
    EXPECT_EQ(valtrona::colorFromValue(0x123456u, palette), QColor(0x56, 0x34, 0x12));
    EXPECT_EQ(valtrona::colorFromValue(0x80000005u, palette), QColor(1, 2, 3));
    EXPECT_EQ(valtrona::colorFromValue(0x8000000Fu, palette), QColor(4, 5, 6));
    EXPECT_EQ(valtrona::colorFromValue(0x80000012u, palette), QColor(7, 8, 9));
    for (const QColor &colour : {QColor(Qt::red), QColor(0x12, 0x34, 0x56), QColor(Qt::white)})
        EXPECT_EQ(valtrona::colorFromValue(valtrona::colorValueFromColor(colour), palette), colour);
    EXPECT_EQ(valtrona::colorValueFromColor(QColor(0x12, 0x34, 0x56)), 0x563412u);
}

TEST(ControlSupport, ControlArrayIndexIsMinusOneForPlainWidgets)
{
    QWidget widget;
    EXPECT_EQ(valtrona::controlArrayIndex(&widget), -1);
    EXPECT_EQ(valtrona::controlArrayIndex(nullptr), -1);
    valtrona::setControlArrayIndex(&widget, 0);
    EXPECT_EQ(valtrona::controlArrayIndex(&widget), 0);
    widget.setProperty("Index", u"kein"_s);
    EXPECT_EQ(valtrona::controlArrayIndex(&widget), -1);
}

TEST(ControlSupport, TerminateReachesEveryLibraryControlAndSkipsOthers)
{
    QWidget window;
    auto *card = new valtrona::VxInvisibleCont(&window);
    auto *line = new valtrona::VxLineIn(card); // nested inside a card
    new valtrona::VxActCtrl(&window);
    new QPushButton(&window);
    EXPECT_EQ(valtrona::terminateControls(&window), 3);
    EXPECT_EQ(valtrona::terminateControls(nullptr), 0);

    bool reported = false;
    QObject::connect(line, &valtrona::VxLineIn::change, line, [&] { reported = true; });
    line->setText(u"nach dem Ende"_s);
    EXPECT_FALSE(reported);
}

} // namespace
