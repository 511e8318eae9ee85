#include <climits>

#include <QImage>
#include <QListWidget>
#include <QSignalSpy>
#include <QWidget>

#include <gtest/gtest.h>

#include "controls/controlsupport.h"
#include "controls/vxactctrl.h"
#include "controls/vxinvisiblecont.h"
#include "support/testsupport.h"

using namespace Qt::StringLiterals;

using valtrona::VxActCtrl;
using valtrona::VxInvisibleCont;

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
        const char *names[] = {"boxSEL", "boxPRM", "boxDO"};
        for (int i = 0; i < 3; ++i) {
            cards[i] = new VxInvisibleCont(&window);
            cards[i]->setObjectName(QString::fromLatin1(names[i]));
            cards[i]->setGeometry(300 + i * 10, 200, 100 + i, 50 + i);
        }
        switcher = new VxActCtrl(&window);
        switcher->setCtlNames(u"boxSEL;boxPRM;boxDO"_s);
        switcher->setCtlDisplays(u"Quelldateien;Parameter;Bildverarbeitung"_s);
        switcher->setCtlWidth(u"0;0;"_s);
        switcher->setCtlHeight(u"0;0;"_s);
    }

    int visibleCard() const
    {
        int shown = 0;
        for (int i = 0; i < 3; ++i) {
            if (!cards[i]->isHidden()) {
                if (shown != 0)
                    return -1; // more than one
                shown = i + 1;
            }
        }
        return shown;
    }
};

int px(int twips)
{
    return valtrona::twipsToPixelsX(twips, nullptr);
}

struct NavCase
{
    int start;
    const char *code;
    int expected;
};

class Navigation : public ::testing::TestWithParam<NavCase>
{
};

TEST_P(Navigation, MovesToTheExpectedCardAndShowsOnlyIt)
{
    const NavCase c = GetParam();
    Host host;
    host.switcher->setActiveControl(c.start);
    QSignalSpy spy(host.switcher, &VxActCtrl::activeControlChanged);

    host.switcher->navigate(QString::fromLatin1(c.code));

    EXPECT_EQ(host.switcher->activeControl(), c.expected);
    EXPECT_EQ(host.visibleCard(), c.expected);
    if (c.expected == c.start) {
        EXPECT_EQ(spy.count(), 0);
    } else {
        ASSERT_EQ(spy.count(), 1);
        EXPECT_EQ(spy.at(0).at(0).toInt(), c.start);
        EXPECT_EQ(spy.at(0).at(1).toInt(), c.expected);
    }
}

INSTANTIATE_TEST_SUITE_P(Codes, Navigation,
                         ::testing::Values(NavCase{2, "F", 1}, NavCase{1, "L", 3}, NavCase{1, "N", 2},
                                           NavCase{3, "N", 1},   // wraps to the first
                                           NavCase{2, "NX", 3}, NavCase{3, "NX", 3}, // stops at the last
                                           NavCase{3, "P", 2}, NavCase{1, "P", 3},   // wraps to the last
                                           NavCase{2, "PX", 1}, NavCase{1, "PX", 1}, // stops at the first
                                           NavCase{1, "nx", 2}, NavCase{3, "px", 2}, // any case
                                           NavCase{0, "N", 2},   // no card yet counts as card 1
                                           NavCase{0, "P", 3}, NavCase{0, "PX", 1}, NavCase{2, "Q", 2}));

TEST(VxActCtrl, NamedNavigationCallsUseTheirCodes)
{
    Host host;
    host.switcher->setActiveControl(3);
    host.switcher->nextControl();
    EXPECT_EQ(host.switcher->activeControl(), 1);
    host.switcher->prevControlX();
    EXPECT_EQ(host.switcher->activeControl(), 1);
    host.switcher->prevControl();
    EXPECT_EQ(host.switcher->activeControl(), 3);
    host.switcher->nextControlX();
    EXPECT_EQ(host.switcher->activeControl(), 3);
    host.switcher->firstControl();
    EXPECT_EQ(host.switcher->activeControl(), 1);
    host.switcher->lastControl();
    EXPECT_EQ(host.switcher->activeControl(), 3);
}

TEST(VxActCtrl, OutOfRangeAndRepeatedNumbersChangeNothing)
{
    Host host;
    host.switcher->setActiveControl(2);
    QSignalSpy spy(host.switcher, &VxActCtrl::activeControlChanged);
    for (int number : {4, -1, INT_MAX, INT_MIN, 2}) {
        host.switcher->setActiveControl(number);
        EXPECT_EQ(host.switcher->activeControl(), 2) << number;
    }
    EXPECT_EQ(spy.count(), 0);
    EXPECT_EQ(host.visibleCard(), 2);
}

TEST(VxActCtrl, ShownCardIsPlacedAndRaisedWithItsOwnSizeForZeroLists)
{
    Host host;
    host.switcher->setActiveControl(2);
    const QWidget *card = host.cards[1];
    EXPECT_EQ(card->pos(), QPoint(px(60), px(60)));
    EXPECT_EQ(card->size(), QSize(101, 51)); // "0;0;" keeps the card's own size
    EXPECT_EQ(host.window.children().last(), card); // raised to the front
    EXPECT_EQ(host.switcher->getControlLF(2), valtrona::pixelsToTwipsX(px(60), card));
    EXPECT_EQ(host.switcher->getControlWD(2), valtrona::pixelsToTwipsX(101, card));
    EXPECT_EQ(host.switcher->getControlWD(7), 0);
}

TEST(VxActCtrl, CardSizeComesFromItsListOrTheContainerSize)
{
    Host host;
    host.switcher->setContainerWidth(1440);
    host.switcher->setContainerHeight(720);
    host.switcher->setCtlWidth(u"2880;0"_s);
    host.switcher->setContainerLeft(150);
    host.switcher->setContainerTop(300);

    host.switcher->setActiveControl(1);
    EXPECT_EQ(host.cards[0]->geometry(), QRect(px(150), px(300), px(2880), px(720)));
    host.switcher->setActiveControl(2);
    EXPECT_EQ(host.cards[1]->size(), QSize(px(1440), px(720)));
    host.switcher->setActiveControl(3); // the missing third element reads as 0
    EXPECT_EQ(host.cards[2]->size(), QSize(px(1440), px(720)));
}

TEST(VxActCtrl, ListsSplitIntoNumbersWithMissingElementsAsZero)
{
    VxActCtrl switcher;
    switcher.setCtlNames(u"a;b;c;d"_s);
    switcher.setCtlWidth(u"100; 7 ;abc;;"_s);
    switcher.setCtlHeight(u"50x"_s);
    EXPECT_EQ(switcher.controlCount(), 4);
    const int widths[] = {100, 7, 0, 0};
    for (int n = 1; n <= 4; ++n)
        EXPECT_EQ(switcher.controlWidth(n), widths[n - 1]) << n;
    EXPECT_EQ(switcher.controlHeight(1), 50);
    EXPECT_EQ(switcher.controlHeight(2), 0);
    EXPECT_EQ(switcher.controlName(0), QString());
    EXPECT_EQ(switcher.controlName(5), QString());
}

TEST(VxActCtrl, KeysFindCardsWithoutRegardToCase)
{
    Host host;
    host.switcher->setCtlKeys(u"sel;prm;do"_s);
    EXPECT_EQ(host.switcher->getControlIndexByKey(u"PRM"_s), 2);
    EXPECT_EQ(host.switcher->getControlIndexByKey(u"xyz"_s), 0);
    EXPECT_EQ(host.switcher->getControlIndexByKey(QString()), 0);

    host.switcher->setActiveControlByKey(u"do"_s);
    EXPECT_EQ(host.switcher->activeControl(), 3);
    EXPECT_EQ(host.switcher->activeControlByKey(), u"do"_s);
    host.switcher->setActiveControlByKey(u"unknown"_s);
    EXPECT_EQ(host.switcher->activeControl(), 3);
}

TEST(VxActCtrl, ControlArrayElementsAreFoundByNameAndIndex)
{
    QWidget window;
    QWidget *elements[3];
    for (int i = 0; i < 3; ++i) {
        elements[i] = new QWidget(&window);
        elements[i]->setObjectName(u"box"_s);
        valtrona::setControlArrayIndex(elements[i], i);
    }
    auto *plain = new QWidget(&window);
    plain->setObjectName(u"plain"_s);
    VxActCtrl switcher(&window);
    switcher.setCtlNames(u"box|2; box | 0 ;plain;box|9;missing"_s);

    EXPECT_EQ(switcher.getControl(1), elements[2]);
    EXPECT_EQ(switcher.getControl(2), elements[0]);
    EXPECT_EQ(switcher.getControl(3), plain);
    EXPECT_EQ(switcher.getControl(4), nullptr);
    EXPECT_EQ(switcher.getControl(5), nullptr);
    EXPECT_EQ(switcher.getControl(0), nullptr);

    switcher.setActiveControl(1);
    EXPECT_FALSE(elements[2]->isHidden());
    // A missing card changes the number but leaves the cards as they are.
    switcher.setActiveControl(5);
    EXPECT_EQ(switcher.activeControl(), 5);
    EXPECT_TRUE(elements[2]->isHidden());
}

TEST(VxActCtrl, DisplayFallsBackToCaptionStoredCaptionTagAndNumber)
{
    QWidget window;
    const char *names[] = {"c1", "c2", "c3", "c4", "c5"};
    QWidget *cards[5];
    for (int i = 0; i < 5; ++i) {
        cards[i] = new QWidget(&window);
        cards[i]->setObjectName(QString::fromLatin1(names[i]));
    }
    cards[1]->setProperty("Caption", u"Titel"_s);
    cards[1]->setProperty("Tag", u"unused"_s);
    cards[2]->setProperty("Caption", QString());
    cards[2]->setProperty("CaptionStored", u"Gespeichert"_s);
    cards[3]->setProperty("Tag", u"Marke"_s);
    VxActCtrl switcher(&window);
    switcher.setCtlNames(u"c1;c2;c3;c4;c5;c6;c7;c8;c9;c10;c11;c12"_s);
    switcher.setCtlDisplays(u"Erste;;"_s);

    EXPECT_EQ(switcher.getControlDisplay(1), u"Erste"_s);
    EXPECT_EQ(switcher.getControlDisplay(2), u"Titel"_s);
    EXPECT_EQ(switcher.getControlDisplay(3), u"Gespeichert"_s);
    EXPECT_EQ(switcher.getControlDisplay(4), u"Marke"_s);
    EXPECT_EQ(switcher.getControlDisplay(5), u"Steuerelement 05"_s);
    EXPECT_EQ(switcher.getControlDisplay(6), u"Steuerelement 06"_s); // no such widget
    EXPECT_EQ(switcher.getControlDisplay(12), u"Steuerelement 12"_s);

    const QList<valtrona::CardChoice> choices = switcher.chooserChoices();
    ASSERT_EQ(choices.size(), 12);
    EXPECT_EQ(choices.at(0).text, u"01 - Erste"_s);
    EXPECT_EQ(choices.at(4).text, u"05 - Steuerelement 05"_s);
    EXPECT_EQ(choices.at(11).number, 12);
}

TEST(VxActCtrl, ArrangeAllShowsOnlyTheActiveCardAndResetHidesIt)
{
    Host host;
    host.window.show();
    for (VxInvisibleCont *card : host.cards)
        card->show();
    host.switcher->setActiveControl(2);
    for (VxInvisibleCont *card : host.cards)
        card->show();
    host.switcher->arrangeAll();
    EXPECT_EQ(host.visibleCard(), 2);

    QSignalSpy spy(host.switcher, &VxActCtrl::activeControlChanged);
    host.switcher->activeControlReset();
    EXPECT_EQ(host.switcher->activeControl(), 0);
    EXPECT_EQ(host.visibleCard(), 0);
    ASSERT_EQ(spy.count(), 1);
    EXPECT_EQ(spy.at(0).at(0).toInt(), 2);
    EXPECT_EQ(spy.at(0).at(1).toInt(), 0);
}

TEST(VxActCtrl, DesignModeParksTheHiddenCard)
{
    Host host;
    host.switcher->setDesignMode(true);
    host.switcher->setContainerWidth(1500);
    host.switcher->setActiveControl(2);
    host.switcher->setActiveControl(3);
    const QWidget *parked = host.cards[1];
    EXPECT_TRUE(parked->isHidden());
    EXPECT_EQ(parked->pos(), QPoint(px(4500), px(260 + 420 * 1)));
    EXPECT_EQ(parked->width(), px(1500));

    // At run time the old card is only hidden.
    Host run;
    run.switcher->setActiveControl(2);
    run.switcher->setActiveControl(3);
    EXPECT_EQ(run.cards[1]->pos(), QPoint(px(60), px(60)));
}

TEST(VxActCtrl, ChooserMakesTheChosenCardActiveAndCancelKeepsIt)
{
    Host host;
    host.switcher->setActiveControl(1);
    QList<valtrona::CardChoice> offered;
    int shownWhenAsked = 0;
    int answer = 3;
    host.switcher->setChooser([&](QWidget *, const QList<valtrona::CardChoice> &choices, int current) {
        offered = choices;
        shownWhenAsked = current;
        return answer;
    });

    EXPECT_EQ(host.switcher->activeControlDlg(), 3);
    EXPECT_EQ(shownWhenAsked, 1);
    EXPECT_EQ(host.switcher->activeControl(), 3);
    ASSERT_EQ(offered.size(), 3);
    EXPECT_EQ(offered.at(2).text, u"03 - Bildverarbeitung"_s);

    answer = 0; // cancelled
    EXPECT_EQ(host.switcher->activeControlDlg(), 0);
    EXPECT_EQ(host.switcher->activeControl(), 3);
}

TEST(VxActCtrl, ChooserIsRefusedAtDesignTime)
{
    Host host;
    host.switcher->setDesignMode(true);
    bool asked = false;
    host.switcher->setChooser([&](QWidget *, const QList<valtrona::CardChoice> &, int) {
        asked = true;
        return 2;
    });
    QStringList messages;
    const auto previous = valtrona::setControlMessageHandler(
        [&](QWidget *, const QString &text) { messages.append(text); });

    EXPECT_EQ(host.switcher->activeControlDlg(), 0);
    valtrona::setControlMessageHandler(previous);

    EXPECT_FALSE(asked);
    EXPECT_EQ(messages, QStringList{u"Zur Entwurfszeit nicht gültig !"_s});
    EXPECT_EQ(host.switcher->activeControl(), 0);
}

TEST(VxActCtrlChooser, ListsTheCardsAndReportsTheSelectedNumber)
{
    const QList<valtrona::CardChoice> choices = {{u"01 - A"_s, 1}, {u"02 - B"_s, 2}, {u"03 - C"_s, 3}};
    valtrona::VxActCtrlChooser dialog(choices, 2);
    ASSERT_EQ(dialog.list()->count(), 3);
    EXPECT_EQ(dialog.list()->item(1)->text(), u"02 - B"_s);
    EXPECT_EQ(dialog.chosenNumber(), 2); // the current card is preselected
    dialog.list()->setCurrentRow(2);
    EXPECT_EQ(dialog.chosenNumber(), 3);
    dialog.list()->clearSelection();
    EXPECT_EQ(dialog.chosenNumber(), 0);
}

TEST(VxActCtrl, ExtendedCardFollowsTheParentSize)
{
    Host host;
    host.window.show();
    host.switcher->setActiveControl(1);
    host.switcher->setBExtendWidth(true);
    EXPECT_EQ(host.cards[0]->width(), 800 - 2 * px(60));
    host.window.resize(1000, 600);
    EXPECT_EQ(host.cards[0]->width(), 1000 - 2 * px(60));
    EXPECT_EQ(host.cards[0]->height(), 50); // height left alone
}

TEST(VxActCtrl, TranslatedDisplaysReachTheChooser)
{
    Host host;
    EXPECT_TRUE(host.switcher->ctlEnumAllCaptionsInUCtl().isEmpty());
    host.switcher->setCtlUseLng(1);
    const auto captions = host.switcher->ctlEnumAllCaptionsInUCtl();
    ASSERT_EQ(captions.size(), 1);
    EXPECT_EQ(captions.at(0).second, u"Quelldateien;Parameter;Bildverarbeitung"_s);
    EXPECT_TRUE(host.switcher->ctlSetUserControlLanguage(u"CTLDisplays"_s, u"Sources;Settings;Processing"_s));
    EXPECT_EQ(host.switcher->chooserChoices().at(1).text, u"02 - Settings"_s);
}

TEST(VxActCtrl, TerminatedSwitcherIgnoresFurtherCalls)
{
    Host host;
    host.switcher->setActiveControl(1);
    EXPECT_EQ(valtrona::terminateControls(&host.window), 4); // three cards and the switcher
    QSignalSpy spy(host.switcher, &VxActCtrl::activeControlChanged);
    host.switcher->nextControl();
    EXPECT_EQ(host.switcher->activeControl(), 1);
    EXPECT_EQ(spy.count(), 0);
    EXPECT_EQ(host.switcher->ctlClassName(), u"VxActCtrl"_s);
}

// --- The card container ----------------------------------------------------

QImage render(QWidget &window)
{
    return window.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

TEST(VxInvisibleCont, DrawsNothingAtRunTimeAndAnOutlineInDesignMode)
{
    QWidget window;
    window.resize(60, 40);
    QPalette palette = window.palette();
    palette.setColor(QPalette::Window, Qt::white);
    window.setPalette(palette);
    window.setAutoFillBackground(true);
    auto *card = new VxInvisibleCont(&window);
    card->setGeometry(10, 10, 40, 20);
    card->setBorderColor(0x0000FFu); // red as a stored colour value
    card->setDrawStyle(0);

    const QImage runTime = render(window);
    for (int y = 0; y < runTime.height(); ++y)
        for (int x = 0; x < runTime.width(); ++x)
            ASSERT_EQ(QColor(runTime.pixel(x, y)), QColor(Qt::white)) << x << "," << y;

    card->setDesignMode(true);
    const QImage design = render(window);
    EXPECT_EQ(QColor(design.pixel(10, 10)), QColor(Qt::red));
    EXPECT_EQ(QColor(design.pixel(49, 29)), QColor(Qt::red));
    EXPECT_EQ(QColor(design.pixel(30, 20)), QColor(Qt::white)); // inside stays clear
}

TEST(VxInvisibleCont, DrawStyleMapsToPenStyles)
{
    VxInvisibleCont card;
    EXPECT_EQ(card.drawStyle(), 2);
    EXPECT_EQ(card.borderColor(), 0x80000003u);
    const Qt::PenStyle expected[] = {Qt::SolidLine, Qt::DashLine, Qt::DotLine, Qt::DashDotLine,
                                     Qt::DashDotDotLine, Qt::NoPen, Qt::SolidLine};
    for (int style = 0; style < 7; ++style) {
        card.setDrawStyle(style);
        EXPECT_EQ(card.outlinePen().style(), expected[style]) << style;
    }
}

TEST(VxActCtrl, PersistedPropertiesStartWithTheirDefaults)
{
    VxActCtrl switcher;
    const QList<QPair<const char *, QVariant>> defaults = {
        {"ActiveControl", 0},        {"ControlCount", 0},        {"CTLNames", QString()},
        {"CTLDisplays", QString()},  {"CTLKeys", QString()},     {"CTLWidth", QString()},
        {"CTLHeight", QString()},    {"CardInvisibleTop", 260},  {"CardInvisibleLeft", 4500},
        {"CardOffset", 420},         {"ContainerTop", 60},       {"ContainerLeft", 60},
        {"ContainerWidth", 0},       {"ContainerHeight", 0},
    };
    for (const auto &[name, value] : defaults)
        EXPECT_EQ(switcher.property(name), value) << name;
}

} // namespace
