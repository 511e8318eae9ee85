#include <QImage>
#include <QPushButton>
#include <QSignalSpy>
#include <QWidget>

#include <gtest/gtest.h>

#include "controls/controlsupport.h"
#include "controls/vxactctrl.h"
#include "controls/vxinvisiblecont.h"
#include "controls/vxlinein.h"
#include "controlstest.h"

using namespace Qt::StringLiterals;

namespace valtrona {
namespace {

// A host window with the three cards of the main window and a switcher.
struct Host
{
    QWidget window;
    VxInvisibleCont *cards[3] = {};
    VxActCtrl *switcher = nullptr;

    Host()
    {
        window.resize(800, 600);
        const char16_t *names[] = {u"boxSEL", u"boxPRM", u"boxDO"};
        for (int i = 0; i < 3; ++i) {
            cards[i] = new VxInvisibleCont(&window);
            cards[i]->setObjectName(QString::fromUtf16(names[i]));
            cards[i]->setGeometry(300 + i * 10, 200, 100 + i, 50 + i);
        }
        switcher = new VxActCtrl(&window);
        switcher->setCtlNames(u"boxSEL;boxPRM;boxDO"_s);
        switcher->setCtlDisplays(u"Quelldateien;Parameter;Bildverarbeitung"_s);
        switcher->setCtlWidth(u"0;0;"_s);
        switcher->setCtlHeight(u"0;0;"_s);
    }

    // The number of the one card shown, 0 for none, -1 for several.
    int visibleCard() const
    {
        int shown = 0;
        for (int i = 0; i < 3; ++i) {
            if (!cards[i]->isHidden())
                shown = shown == 0 ? i + 1 : -1;
        }
        return shown;
    }
};

int px(int twips)
{
    return twipsToPixelsX(twips, nullptr);
}

TEST(VxActCtrl, NavigationShowsTheExpectedCardOnly)
{
    const struct
    {
        int start;
        const char16_t *code;
        void (VxActCtrl::*named)(); // the member that hands on the code, if any
        int expected;
    } cases[] = {
        {2, u"F", &VxActCtrl::firstControl, 1}, {1, u"L", &VxActCtrl::lastControl, 3},
        {1, u"N", &VxActCtrl::nextControl, 2},  {3, u"N", &VxActCtrl::nextControl, 1}, // wraps to the first
        {2, u"NX", &VxActCtrl::nextControlX, 3}, {3, u"NX", &VxActCtrl::nextControlX, 3}, // stops at the last
        {3, u"P", &VxActCtrl::prevControl, 2},  {1, u"P", &VxActCtrl::prevControl, 3}, // wraps to the last
        {2, u"PX", &VxActCtrl::prevControlX, 1}, {1, u"PX", &VxActCtrl::prevControlX, 1}, // stops at the first
        {1, u"nx", nullptr, 2}, {3, u"px", nullptr, 2}, // any case
        {0, u"N", nullptr, 2}, {0, u"P", nullptr, 3}, {0, u"PX", nullptr, 1}, // no card yet counts as card 1
        {2, u"Q", nullptr, 2},
    };
    for (const auto &c : cases) {
        for (const bool byName : {false, true}) {
            if (byName && !c.named)
                continue;
            Host host;
            host.switcher->setActiveControl(c.start);
            QSignalSpy spy(host.switcher, &VxActCtrl::activeControlChanged);
            if (byName)
                (host.switcher->*c.named)();
            else
                host.switcher->navigate(QString::fromUtf16(c.code));
            const std::string what = QString::fromUtf16(c.code).toStdString() + (byName ? " by name" : "");
            EXPECT_EQ(host.switcher->activeControl(), c.expected) << what << " from " << c.start;
            EXPECT_EQ(host.visibleCard(), c.expected) << what;
            EXPECT_EQ(spy.count(), c.expected == c.start ? 0 : 1) << what;
        }
    }
}

TEST(VxActCtrl, ShownCardIsPlacedRaisedAndSizedFromItsListOrTheContainer)
{
    Host host;
    host.switcher->setActiveControl(2);
    const QWidget *card = host.cards[1];
    EXPECT_EQ(card->geometry(), QRect(px(60), px(60), 101, 51)); // "0;0;" keeps the card's own size
    EXPECT_EQ(host.window.children().last(), card);                // raised to the front
    EXPECT_EQ(host.switcher->getControlLF(2), pixelsToTwipsX(px(60), card));

    host.switcher->setContainerWidth(1440);
    host.switcher->setContainerHeight(720);
    host.switcher->setCtlWidth(u" 2880 ;0x;abc"_s); // numbers are read leniently
    host.switcher->setContainerLeft(150);
    host.switcher->setContainerTop(300);
    host.switcher->setActiveControl(1);
    EXPECT_EQ(host.cards[0]->geometry(), QRect(px(150), px(300), px(2880), px(720)));
    host.switcher->setActiveControl(3); // "abc" reads as 0: the container's size
    EXPECT_EQ(host.cards[2]->size(), QSize(px(1440), px(720)));

    // An extended card follows the size of its parent.
    host.window.show();
    host.switcher->setBExtendWidth(true);
    host.window.resize(1000, 600);
    EXPECT_EQ(host.cards[2]->size(), QSize(1000 - 2 * px(150), px(720)));
}

TEST(VxActCtrl, DesignModeParksTheHiddenCardAndRunTimeOnlyHidesIt)
{
    for (const bool design : {true, false}) {
        Host host;
        host.switcher->setDesignMode(design);
        host.switcher->setActiveControl(2);
        host.switcher->setActiveControl(3);
        const QWidget *parked = host.cards[1];
        EXPECT_TRUE(parked->isHidden());
        EXPECT_EQ(parked->pos(), design ? QPoint(px(4500), px(260 + 420 * 1)) : QPoint(px(60), px(60)));
    }
}

TEST(VxActCtrl, ChooserOffersTheCardsByNumberAndMakesTheChosenOneActive)
{
    Host host;
    host.switcher->setActiveControl(1);
    QList<CardChoice> offered;
    int current = 0;
    int answer = 3;
    host.switcher->setChooser([&](QWidget *, const QList<CardChoice> &choices, int shown) {
        offered = choices;
        current = shown;
        return answer;
    });
    EXPECT_EQ(host.switcher->activeControlDlg(), 3);
    EXPECT_EQ(current, 1);
    EXPECT_EQ(host.switcher->activeControl(), 3);
    ASSERT_EQ(offered.size(), 3);
    EXPECT_EQ(offered.last().text, u"03 - Bildverarbeitung"_s);
    EXPECT_EQ(offered.last().number, 3);
    answer = 0; // cancelled
    EXPECT_EQ(host.switcher->activeControlDlg(), 0);
    EXPECT_EQ(host.switcher->activeControl(), 3);
}

// Termination reaches every library control of the window, nested ones
// included: the switcher no longer switches and a line reports nothing.
TEST(VxActCtrl, TerminationStopsTheSwitchingAndEveryOtherControl)
{
    Host host;
    host.switcher->setActiveControl(1);
    auto *line = new VxLineIn(host.cards[0]);
    new QPushButton(&host.window);
    EXPECT_EQ(terminateControls(&host.window), 5); // three cards, the switcher and the line
    host.switcher->nextControl();
    EXPECT_EQ(host.switcher->activeControl(), 1);
    QSignalSpy change(line, &VxLineIn::change);
    line->setText(u"nach dem Ende"_s);
    EXPECT_EQ(change.count(), 0);
}

// --- The card container ----------------------------------------------------

TEST(VxInvisibleCont, DrawsNothingAtRunTimeAndItsOutlineInDesignMode)
{
    QWidget window;
    test::fillWindow(window, {60, 40}, Qt::white);
    auto *card = new VxInvisibleCont(&window);
    card->setGeometry(10, 10, 40, 20);
    card->setBorderColor(0x0000FFu); // red as a stored colour value
    card->setDrawStyle(0);
    for (const bool design : {false, true}) {
        card->setDesignMode(design);
        const QImage image = test::rendered(window);
        const QColor outline = design ? QColor(Qt::red) : QColor(Qt::white);
        EXPECT_EQ(QList<QColor>({image.pixelColor(10, 10), image.pixelColor(49, 29), image.pixelColor(30, 20)}),
                  QList<QColor>({outline, outline, Qt::white})) << design; // the inside stays clear
    }
    const Qt::PenStyle expected[] = {Qt::SolidLine,      Qt::DashLine, Qt::DotLine,   Qt::DashDotLine,
                                     Qt::DashDotDotLine, Qt::NoPen,    Qt::SolidLine, Qt::SolidLine};
    for (int style = 0; style < 8; ++style) {
        card->setDrawStyle(style);
        EXPECT_EQ(card->outlinePen().style(), expected[style]) << style;
    }
}

} // namespace
} // namespace valtrona
