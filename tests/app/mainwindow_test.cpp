// The window as a whole: start-up, navigation and its checks, keys and
// focus, how a run is wired to the cards, the buttons of the source card
// and closing. What a run writes, row by row, is tested with the run; what
// each card's controls mean, with the card.

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <memory>

#include "app/mainwindow.h"
#include "app/settingsdialog.h"
#include "app/sourcelist.h"
#include "app/statuslist.h"
#include "controls/vxlinein.h"
#include "controls/vxpict.h"
#include "core/inifile.h"
#include "imaging/imaging.h"
#include "scripteddialogs.h"
#include "support/testsupport.h"

using namespace valtrona;
using namespace Qt::StringLiterals;
using valtrona::test::Sandbox;
using valtrona::test::ScriptedDialogs;

namespace {

QString writeJpeg(const QString &path, int width, int height)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(QColor(40, 120, 200));
    EXPECT_TRUE(image.save(path, "JPG", 90)) << path.toStdString();
    return path;
}

class MainWindowTest : public ::testing::Test
{
protected:
    std::unique_ptr<MainWindow> open(std::function<bool()> startImaging = {})
    {
        MainWindow::Environment env;
        env.settingsPath = settingsFile;
        env.dialogs = dialogs;
        env.startImaging = std::move(startImaging);
        env.quit = [this] { ++quits; };
        auto window = std::make_unique<MainWindow>(env);
        started = window->start();
        window->show();
        window->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window.get()));
        return window;
    }

    template <typename T = QPushButton>
    T *child(MainWindow &window, const char *name)
    {
        T *found = window.findChild<T *>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    VxLineIn *line(MainWindow &window, const char *name) { return child<VxLineIn>(window, name); }
    QString label(MainWindow &window) { return child<QLabel>(window, "lblStat")->text(); }
    void click(MainWindow &window, const char *name) { child(window, name)->click(); }

    // The control with the keyboard focus, by its program name; the inner
    // elements of a line input count as the line.
    static QString focused()
    {
        QWidget *widget = QApplication::focusWidget();
        for (QWidget *w = widget; w; w = w->parentWidget()) {
            if (qobject_cast<VxLineIn *>(w))
                return w->objectName();
        }
        return widget ? widget->objectName() : QString();
    }

    // A key as the user types it: to the focused widget, shortcuts first.
    static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {})
    {
        QWidget *target = QApplication::focusWidget();
        ASSERT_NE(target, nullptr) << "nothing has the focus";
        QTest::keyClick(target, key, modifiers);
    }

    // A run goes on while the window serves its events; this waits for its end.
    static void waitForRun(MainWindow &window)
    {
        EXPECT_TRUE(QTest::qWaitFor([&] { return !window.isRunning(); }, 60000));
    }

    // Card 1 filled through "Bilder laden", card 2 set to width 200 px
    // (constant width) into the target directory.
    void prepareRun(MainWindow &window, const QStringList &sources)
    {
        dialogs->nextFiles = sources;
        click(window, "cmdOpen");
        click(window, "cmdW");
        ASSERT_EQ(window.currentCard(), 2);
        line(window, "cmbTyp")->setListIndex(2);
        line(window, "txtB")->setText(u"200"_s);
        line(window, "txtDst")->setText(targetDir);
    }

    QStringList sourceImages(int count)
    {
        QStringList paths;
        for (int i = 1; i <= count; ++i)
            paths.append(writeJpeg(sandbox.filePath(u"src/img%1.jpg"_s.arg(i, 2, 10, QLatin1Char('0'))), 400, 300));
        return paths;
    }

    QStringList rows(MainWindow &window)
    {
        QStringList texts;
        for (int i = 0; i < window.statusList()->topLevelItemCount(); ++i)
            texts.append(window.statusList()->rowText(i));
        return texts;
    }

    // Runs `action` once, when the status list gets a row with this text.
    void onRow(MainWindow &window, const QString &text, std::function<void()> action)
    {
        auto fired = std::make_shared<bool>(false);
        QObject::connect(window.statusList(), &StatusList::rowAdded, &window,
                         [text, action, fired](const QString &added) {
                             if (!*fired && added == text) {
                                 *fired = true;
                                 action();
                             }
                         });
    }

    Sandbox sandbox;
    QString settingsFile = sandbox.filePath(u"valtrona.ini"_s);
    QString targetDir = sandbox.filePath(u"out"_s);
    std::shared_ptr<ScriptedDialogs> dialogs = std::make_shared<ScriptedDialogs>();
    int quits = 0;
    bool started = false;
};

TEST_F(MainWindowTest, StartSeedsTheSettingsAndSaysSoWhenImagingFails)
{
    {
        auto window = open();
        ASSERT_TRUE(started);
        // Presets are read before seeding: empty at the very first start.
        EXPECT_EQ(window->findChildren<VxLineIn *>(u"cmbFMT"_s).at(0)->listCount(), 0);
        // The loaded style sets label and inputs as a chosen one does.
        EXPECT_EQ(line(*window, "txtB")->caption(), u"Seitenlänge :"_s);
        EXPECT_FALSE(line(*window, "txtH")->textEnabled());
        EXPECT_TRUE(dialogs->shown.isEmpty());
    }
    auto second = open([] { return false; });
    EXPECT_EQ(second->findChildren<VxLineIn *>(u"cmbFMT"_s).at(0)->listCount(), 16);
    EXPECT_FALSE(started);
    EXPECT_EQ(dialogs->shown, QStringList {u"plain||GDI konnte nicht initialisiert werden !"_s});
}

TEST_F(MainWindowTest, ARefusedCheckSaysWhyAndSavesNothing)
{
    auto window = open();
    click(*window, "cmdW");
    dialogs->nextFiles = sourceImages(1);
    click(*window, "cmdOpen");
    click(*window, "cmdW");
    line(*window, "cmbTyp")->setListIndex(-1);
    click(*window, "cmdW");
    EXPECT_EQ(window->currentCard(), 2);
    EXPECT_EQ(dialogs->shown, QStringList({u"information|Abbruch|Sie haben keine Quelldateien gewählt !"_s,
                                           u"openFiles|Dateien wählen :|"_s,
                                           u"information|Abbruch|Sie haben keinen Änderungsstil gewählt !"_s}));
    EXPECT_EQ(readIniString(settingsFile, u"LAST"_s, u"Style"_s), u"3"_s);
}

// A run as the window shows it: caption, bar, focus, count label, the failed
// file's tooltip, the preview and the list, whose sources the run moved to
// the trash. The parameters it passed on are saved.
TEST_F(MainWindowTest, ARunShowsItsProgressAndResultOnTheCards)
{
    const test::ScopedEnvironment trash("XDG_DATA_HOME", sandbox.filePath(u"data"_s));
    const QStringList sources = sourceImages(3);
    const QString broken = sandbox.writeFile(u"src/broken.jpg"_s, "not a picture");
    auto window = open();
    prepareRun(*window, sources + QStringList {broken});
    child<QCheckBox>(*window, "chkDel")->setChecked(true);
    QStringList duringRun;
    onRow(*window, u"Bearbeite Bild : img01.jpg"_s, [&] {
        press(Qt::Key_Tab);
        duringRun = QStringList {window->windowTitle(), focused()};
    });

    click(*window, "cmdW");
    waitForRun(*window);

    EXPECT_EQ(dialogs->shown.size(), 1); // the open dialog; no box during the run
    EXPECT_EQ(duringRun, QStringList({u"Valtrona - 25 %"_s, u"cmdStop"_s}));
    EXPECT_EQ(window->windowTitle(), u"Valtrona"_s);
    EXPECT_FALSE(child(*window, "cmdStop")->isEnabled());
    EXPECT_EQ(focused(), u"lvStat"_s); // not whatever follows "Abbruch"
    EXPECT_EQ(child<QProgressBar>(*window, "prog")->maximum(), 4);
    EXPECT_EQ(child<QProgressBar>(*window, "prog")->value(), 0);
    EXPECT_EQ(QDir(targetDir).entryList(QDir::Files).size(), 3);

    // The failed file's row says why; a click on a row with a path shows
    // that file in the card's preview, which the end of the run cleared.
    StatusList *status = window->statusList();
    const QStringList texts = rows(*window);
    const int errorRow = int(texts.indexOf(u"Fehler beim Verarbeiten des Bildes"_s));
    EXPECT_EQ(status->topLevelItem(errorRow)->toolTip(0), broken + u": Kein Bild oder unbekanntes Bildformat"_s);
    auto *preview = child<VxPict>(*window, "picPrev");
    EXPECT_TRUE(preview->fileName().isEmpty());
    const int pictureRow = int(texts.indexOf(u"Bearbeite Bild : img01.jpg"_s));
    QTest::mouseClick(status->viewport(), Qt::LeftButton, {},
                      status->visualItemRect(status->topLevelItem(pictureRow)).center());
    EXPECT_EQ(preview->fileName(), sources.first());

    EXPECT_EQ(label(*window), u"3 bearbeitet, 1 Fehler"_s);
    click(*window, "cmdZ"); // the other cards count the list again
    EXPECT_EQ(label(*window), u"4 Bilder"_s);
    EXPECT_EQ(readIniString(settingsFile, u"Last"_s, u"Style"_s), u"2"_s);
    EXPECT_EQ(readIniString(settingsFile, u"Last"_s, u"Path"_s), targetDir);

    SourceList *list = window->sourceList();
    ASSERT_EQ(list->count(), 4);
    for (int row = 0; row < 3; ++row)
        EXPECT_TRUE(list->isGone(row)) << row;
    EXPECT_FALSE(list->isGone(3)); // it failed, so it stays
    // Deleted by another program meanwhile: seen when the window is back.
    QFile::remove(broken);
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    EXPECT_FALSE(list->isGone(3));
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    EXPECT_TRUE(list->isGone(3));
}

TEST_F(MainWindowTest, FocusFollowsTheReadingOrderOfEachCard)
{
    // Tab goes from the control a card change focuses round to it again;
    // Enter goes from field to field of the card and never leaves it.
    const struct
    {
        int card;
        const char *tabs;
        const char *enters;
    } cases[] = {
        {1, "lv cmdOpen cmdOpenF cmdRemove cmdRemoveAll Command1 cmdCFG cmdW cmdOK lv", ""},
        {2,
         "cmbTyp txtB cmbFB txtH cmbFH cmbFMT cmbFMT cmbFMT cmbFMT optDF txtSFor txtRep txtDst txtDst chkKeepDir "
         "chkDel chkEXF chkDU Command1 cmdCFG cmdZ cmdW cmdOK cmbTyp",
         "cmbTyp txtB cmbFB txtH cmbFH cmbFMT cmbFMT cmbFMT cmbFMT optDF txtSFor txtRep txtDst chkKeepDir chkDel "
         "chkEXF chkDU cmbTyp"},
        {3, "lvStat Command1 cmdCFG cmdZ cmdOK lvStat", "lvStat lvStat"},
    };
    // Everything set for a run: only "Weiter >" may start it.
    auto window = open();
    prepareRun(*window, sourceImages(1));
    line(*window, "cmbTyp")->setListIndex(0);
    line(*window, "txtH")->setText(u"150"_s);
    for (const auto &c : cases) {
        window->showCard(c.card);
        for (const auto &[key, names] : {std::pair(Qt::Key_Tab, c.tabs), std::pair(Qt::Key_Return, c.enters)}) {
            const QStringList expected = QString::fromLatin1(names).split(u' ', Qt::SkipEmptyParts);
            if (expected.isEmpty())
                continue;
            QStringList seen {focused()};
            while (seen.size() < expected.size()) {
                press(key);
                seen.append(focused());
            }
            EXPECT_EQ(seen, expected) << c.card << " key " << int(key);
        }
        EXPECT_EQ(window->currentCard(), c.card);
    }
    // Enter in the list goes on to the parameters, and no further; a unit
    // picked with the arrow key and Enter is just picked.
    window->showCard(1);
    press(Qt::Key_Return);
    EXPECT_EQ(window->currentCard(), 2);
    EXPECT_EQ(focused(), u"cmbTyp"_s);
    child<QComboBox>(*window, "cmbFB")->setFocus();
    press(Qt::Key_Down);
    press(Qt::Key_Enter);
    EXPECT_EQ(child<QComboBox>(*window, "cmbFB")->currentIndex(), 1);
    EXPECT_EQ(window->currentCard(), 2);
    EXPECT_EQ(window->statusList()->topLevelItemCount(), 0); // no run started
}

// However a run was started, keys pressed during it land on the status list
// and close nothing; going back and on again starts no second run.
TEST_F(MainWindowTest, StrayKeysAndGoingBackLeaveTheRunAlone)
{
    enum class Start { Mouse, Enter, Space, AccessKey };
    for (const Start start : {Start::Mouse, Start::Enter, Start::Space, Start::AccessKey}) {
        SCOPED_TRACE(static_cast<int>(start));
        QDir(targetDir).removeRecursively();
        dialogs->shown.clear();
        auto window = open();
        prepareRun(*window, sourceImages(3));
        QSignalSpy added(window->statusList(), &StatusList::rowAdded);
        QStringList duringRun;
        onRow(*window, u"Bearbeite Bild : img01.jpg"_s, [&] {
            for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Enter})
                press(key);
            duringRun.append(focused());
            click(*window, "cmdZ");
            duringRun.append(QString::number(window->currentCard()));
            click(*window, "cmdW");
        });
        auto *next = child(*window, "cmdW");
        switch (start) {
        case Start::Mouse:
            QTest::mouseClick(next, Qt::LeftButton);
            break;
        case Start::Enter:
        case Start::Space:
            next->setFocus();
            press(start == Start::Enter ? Qt::Key_Return : Qt::Key_Space);
            break;
        case Start::AccessKey:
            press(Qt::Key_W, Qt::AltModifier); // presses "Weiter >" a moment later
            EXPECT_TRUE(QTest::qWaitFor([&] { return !duringRun.isEmpty(); }));
            break;
        }
        waitForRun(*window);

        EXPECT_EQ(duringRun, QStringList({u"lvStat"_s, u"2"_s}));
        EXPECT_EQ(quits, 0);
        EXPECT_EQ(added.size(), window->statusList()->topLevelItemCount()); // no row cleared away
        EXPECT_EQ(rows(*window).count(u"Bearbeite 3 Bilder"_s), 1);
        EXPECT_EQ(rows(*window).last(), u"Bearbeitung abgeschlossen"_s);
        EXPECT_EQ(dialogs->shown.size(), 1); // the open dialog only
    }
}

// Escape stops a run from every card; closing the window hides it at once
// and ends the program when the file in hand is done. "Reset" waits for the
// end either way, then goes back to card 1 and empties the list unasked.
TEST_F(MainWindowTest, EscapeStopsARunFromEveryCardAndClosingEndsItAtOnce)
{
    const std::pair<int, bool> cases[] = {{3, false}, {2, false}, {1, false}, {3, true}}; // card, close
    for (const auto &[card, close] : cases) {
        SCOPED_TRACE(std::to_string(card) + (close ? " close" : " Esc"));
        QDir(targetDir).removeRecursively();
        dialogs->shown.clear();
        auto window = open();
        prepareRun(*window, sourceImages(6));
        auto *reset = child(*window, "Command1");
        bool resetDuringRun = true;
        bool hiddenAtOnce = false;
        onRow(*window, u"Bearbeite Bild : img02.jpg"_s, [&] {
            // "< Zurück" by its access key, which presses the button a
            // moment later.
            for (int i = 3; i > card; --i) {
                press(Qt::Key_Z, Qt::AltModifier);
                EXPECT_TRUE(QTest::qWaitFor([&] { return window->currentCard() == i - 1; }));
            }
            resetDuringRun = reset->isEnabled();
            press(Qt::Key_R, Qt::AltModifier); // "Reset" is not there to press
            if (close) {
                window->close();
                hiddenAtOnce = window->isHidden();
                EXPECT_EQ(quits, 0); // the file in hand is finished first
            } else {
                press(Qt::Key_Escape);
            }
        });
        click(*window, "cmdW");
        waitForRun(*window);

        EXPECT_EQ(window->currentCard(), card);
        EXPECT_FALSE(resetDuringRun);
        EXPECT_TRUE(reset->isEnabled());
        EXPECT_EQ(window->sourceList()->count(), 6);
        EXPECT_LE(QDir(targetDir).entryList(QDir::Files).size(), 2);
        EXPECT_EQ(hiddenAtOnce, close);
        EXPECT_EQ(quits, close ? 1 : 0);
        EXPECT_EQ(window->stopRequested(), !close); // closing is no "Abbruch"
        if (close)
            continue;
        EXPECT_EQ(rows(*window).last(), u"Bearbeitung abgebrochen"_s);
        reset->click();
        EXPECT_EQ(window->currentCard(), 1);
        EXPECT_EQ(label(*window), u"Keine Bilder"_s);
        EXPECT_EQ(dialogs->shown.size(), 1); // the open dialog only
    }
}

TEST_F(MainWindowTest, WindowServesEventsWhileAPhotoConverts)
{
    const QString photo = writeJpeg(sandbox.filePath(u"src/big.jpg"_s), 6000, 4000);
    auto window = open();
    prepareRun(*window, {photo});
    int ticks = 0;
    int ticksAtStart = -1;
    int ticksAtEnd = -1;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, [&] { ++ticks; });
    ticker.start(0);
    // Between these two rows the run does nothing but convert the file.
    onRow(*window, u"Bearbeite Bild : big.jpg"_s, [&] { ticksAtStart = ticks; });
    // The card's preview follows the file; it is read ahead on a worker and
    // may come a moment after the file's first row.
    bool previewShown = false;
    onRow(*window, u"Bild erfolgreich bearbeitet"_s, [&] {
        ticksAtEnd = ticks;
        auto *preview = child<VxPict>(*window, "picPrev");
        previewShown = QTest::qWaitFor([&] { return preview->fileName() == photo && preview->hasPicture(); }, 5000);
    });

    click(*window, "cmdW");
    waitForRun(*window);

    ASSERT_GE(ticksAtStart, 0);
    EXPECT_GT(ticksAtEnd, ticksAtStart);
    EXPECT_TRUE(previewShown);
}

// The buttons of card 1: what each dialog is asked, and the count label
// following every change of the list, start paths included.
TEST_F(MainWindowTest, SourceButtonsAskTheirDialogsAndTheCountFollows)
{
    const QString image = sourceImages(1).first();
    writeJpeg(sandbox.filePath(u"tree/a/b/deep.jpg"_s), 20, 10);
    auto window = open();
    SourceList *list = window->sourceList();

    click(*window, "cmdOpen"); // cancelled
    EXPECT_EQ(dialogs->lastFilters, QStringList({u"Bilddateien (*.jpg *.jpeg *.jpe *.gif *.bmp *.png *.tif *.tiff "
                                                 u"*.webp *.heic *.heif *.avif *.jxl)"_s,
                                                 u"Alle Dateien (*.*)"_s}));
    dialogs->nextFolder = sandbox.filePath(u"tree"_s);
    click(*window, "cmdOpenF");
    EXPECT_EQ(label(*window), u"1 Bild"_s);
    click(*window, "cmdOpenF"); // cancelled: the list stays, the folder is remembered
    EXPECT_EQ(dialogs->lastStartFolder, sandbox.filePath(u"tree"_s));
    EXPECT_EQ(dialogs->shown.mid(0, 2),
              QStringList({u"openFiles|Dateien wählen :|"_s,
                           u"chooseFolder|Verzeichnis für Konvertierung wählen (JPG) : |"_s}));

    const QString previous = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(sandbox.path()));
    const QStringList missing = window->addStartPaths({u"src/img01.jpg"_s, u"fehlt.jpg"_s});
    QDir::setCurrent(previous);
    EXPECT_EQ(missing, QStringList {u"fehlt.jpg"_s});
    EXPECT_EQ(list->pathAt(1), image);
    EXPECT_EQ(label(*window), u"2 Bilder"_s);

    // A clicked row shows in the preview until rows are removed: Delete
    // removes the current one like "Bild(er) entfernen", unasked.
    auto *preview = child<VxPict>(*window, "PRV");
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->topLevelItem(1)).center());
    EXPECT_EQ(preview->fileName(), list->pathAt(1));
    EXPECT_TRUE(preview->hasPicture());
    list->setFocus();
    press(Qt::Key_Delete);
    EXPECT_EQ(label(*window), u"1 Bild"_s);
    EXPECT_FALSE(preview->hasPicture());
    // "Alle entfernen" asks, and only when there is something to remove.
    dialogs->shown.clear();
    dialogs->answers = {false, true};
    click(*window, "cmdRemoveAll"); // answered No
    click(*window, "cmdRemoveAll");
    EXPECT_EQ(label(*window), u"Keine Bilder"_s);
    click(*window, "cmdRemoveAll");
    EXPECT_EQ(dialogs->shown,
              QStringList(2, u"question|Entfernen|Wollen Sie alle Bilder aus der Auswahl entfernen ?"_s));
}

// "Konfiguration" opens the dialog filled and modal; the orientation it saves
// applies at once (previews and dimensions follow it), as the file's did at start.
TEST_F(MainWindowTest, KonfigurationAndTheOrientationSettingApply)
{
    writeIniString(settingsFile, u"JPG"_s, u"ORI"_s, u"0"_s);
    auto window = open();
    EXPECT_EQ(imaging::orientation(), imaging::Orientation::Stored);

    QString shownBefore;
    QTimer::singleShot(0, window.get(), [&] {
        auto *dialog = qobject_cast<SettingsDialog *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        shownBefore = dialog->line(10)->text();
        dialog->line(10)->setText(u"1"_s);
        dialogs->answers = {true};
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    click(*window, "cmdCFG");
    EXPECT_EQ(shownBefore, u"0"_s);
    EXPECT_EQ(window->findChild<SettingsDialog *>(), nullptr);
    EXPECT_EQ(imaging::orientation(), imaging::Orientation::Upright);
}

TEST_F(MainWindowTest, SchliessenEndsTheProgramWithoutAskingOrSaving)
{
    auto window = open();
    const QByteArray before = test::readAll(settingsFile);
    line(*window, "txtB")->setText(u"4711"_s);
    click(*window, "cmdOK");
    EXPECT_EQ(quits, 1);
    EXPECT_TRUE(window->isHidden());
    EXPECT_TRUE(dialogs->shown.isEmpty());
    EXPECT_EQ(test::readAll(settingsFile), before);
}

} // namespace
