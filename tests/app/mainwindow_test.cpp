// The window as a whole: start-up, navigation and its checks, keys and
// focus, what a run shows on the cards, the buttons of the source card and
// closing. What the run writes is tested with the run; what each card's
// controls mean, with the card.

#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

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

QStringList names(const std::vector<const char *> &list)
{
    QStringList result;
    for (const char *name : list)
        result.append(QString::fromLatin1(name));
    return result;
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
        line(window, "txtB")->setText(QStringLiteral("200"));
        line(window, "txtDst")->setText(targetDir);
    }

    QStringList sourceImages(int count)
    {
        QStringList paths;
        for (int i = 1; i <= count; ++i)
            paths.append(writeJpeg(sandbox.filePath(QStringLiteral("src/img%1.jpg").arg(i, 2, 10, QLatin1Char('0'))),
                                   400, 300));
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
    QString settingsFile = sandbox.filePath(QStringLiteral("valtrona.ini"));
    QString targetDir = sandbox.filePath(QStringLiteral("out"));
    std::shared_ptr<ScriptedDialogs> dialogs = std::make_shared<ScriptedDialogs>();
    int quits = 0;
    bool started = false;
};

TEST_F(MainWindowTest, FirstStartSeedsTheFileAndTheSecondShowsThePresets)
{
    {
        auto window = open();
        ASSERT_TRUE(started);
        EXPECT_EQ(window->windowTitle(), QStringLiteral("Valtrona"));
        EXPECT_EQ(window->currentCard(), 1);
        // Presets are read before seeding: empty at the very first start.
        EXPECT_EQ(window->findChildren<VxLineIn *>(QStringLiteral("cmbFMT")).at(0)->listCount(), 0);
        // The loaded style sets label and inputs as a chosen one does.
        EXPECT_EQ(line(*window, "txtB")->caption(), QStringLiteral("Seitenlänge :"));
        EXPECT_FALSE(line(*window, "txtH")->textEnabled());
        EXPECT_TRUE(dialogs->shown.isEmpty());
    }
    auto second = open();
    EXPECT_EQ(second->findChildren<VxLineIn *>(QStringLiteral("cmbFMT")).at(0)->listCount(), 16);
}

TEST_F(MainWindowTest, EveryCardShowsItsControlsWholeAndApart)
{
    auto window = open();
    dialogs->nextFiles = sourceImages(1);
    click(*window, "cmdOpen");
    for (int card = 1; card <= 3; ++card) {
        window->showCard(card);
        QCoreApplication::processEvents();
        QList<QWidget *> shown;
        const QList<QWidget *> all = window->findChildren<QWidget *>();
        for (QWidget *widget : all) {
            const bool control = qobject_cast<QAbstractButton *>(widget) || qobject_cast<VxLineIn *>(widget)
                || qobject_cast<QComboBox *>(widget) || qobject_cast<QLabel *>(widget);
            if (control && widget->isVisibleTo(window.get()) && !widget->parentWidget()->inherits("valtrona::VxLineIn")
                && !widget->parentWidget()->parentWidget()->inherits("valtrona::VxLineIn"))
                shown.append(widget);
        }
        for (QWidget *widget : shown) {
            const std::string name = widget->objectName().toStdString() + ' ' + widget->metaObject()->className();
            EXPECT_GE(widget->height(), widget->minimumSizeHint().height()) << card << " " << name;
            EXPECT_GE(widget->width(), widget->minimumSizeHint().width()) << card << " " << name;
            for (QWidget *other : shown) {
                if (other != widget && other->parentWidget() == widget->parentWidget()) {
                    EXPECT_FALSE(widget->geometry().intersects(other->geometry()))
                        << card << " " << name << " / " << other->objectName().toStdString();
                }
            }
        }
    }
}

TEST_F(MainWindowTest, ARefusedCheckSaysWhyAndSavesNothing)
{
    auto window = open();
    click(*window, "cmdW");
    EXPECT_EQ(window->currentCard(), 1);
    dialogs->nextFiles = sourceImages(1);
    click(*window, "cmdOpen");
    click(*window, "cmdW");
    ASSERT_EQ(window->currentCard(), 2);
    line(*window, "cmbTyp")->setListIndex(-1);
    click(*window, "cmdW");
    EXPECT_EQ(window->currentCard(), 2);

    ASSERT_EQ(dialogs->shown.size(), 3); // the open dialog between the two
    for (const int i : {0, 2}) {
        EXPECT_EQ(dialogs->shown.at(i).kind, QStringLiteral("information"));
        EXPECT_EQ(dialogs->shown.at(i).title, QStringLiteral("Abbruch"));
    }
    EXPECT_EQ(dialogs->shown.at(0).text, QStringLiteral("Sie haben keine Quelldateien gewählt !"));
    EXPECT_EQ(dialogs->shown.at(2).text, QStringLiteral("Sie haben keinen Änderungsstil gewählt !"));
    EXPECT_EQ(readIniString(settingsFile, QStringLiteral("LAST"), QStringLiteral("Style")), QStringLiteral("3"));
}

// A run as the window shows it: caption, bar, count label, rows with their
// tooltips and preview, and the list, whose sources the run moved to the
// trash. The parameters it passed on are saved.
TEST_F(MainWindowTest, ARunShowsItsProgressAndResultOnTheCards)
{
    const test::ScopedEnvironment trash("XDG_DATA_HOME", sandbox.filePath(QStringLiteral("data")));
    const QStringList sources = sourceImages(3);
    const QString broken = sandbox.writeFile(QStringLiteral("src/broken.jpg"), "not a picture");
    auto window = open();
    prepareRun(*window, sources + QStringList {broken});
    child<QCheckBox>(*window, "chkDel")->setChecked(true);
    QSignalSpy finished(window.get(), &MainWindow::runFinished);
    QString tabbedTo;
    onRow(*window, QStringLiteral("Bearbeite Bild : img01.jpg"), [&] {
        press(Qt::Key_Tab);
        tabbedTo = focused();
    });
    QStringList captions;
    QObject::connect(window->statusList(), &StatusList::rowAdded, window.get(), [&](const QString &text) {
        if (text.startsWith(QLatin1String("Bearbeite Bild")))
            captions.append(window->windowTitle());
    });

    click(*window, "cmdW");
    waitForRun(*window);

    ASSERT_EQ(finished.size(), 1);
    EXPECT_EQ(dialogs->shown.size(), 1); // the open dialog; no box during the run
    EXPECT_FALSE(child(*window, "cmdStop")->isEnabled());
    EXPECT_EQ(tabbedTo, QStringLiteral("cmdStop"));
    EXPECT_EQ(focused(), QStringLiteral("lvStat")); // not whatever follows "Abbruch"
    EXPECT_EQ(captions, QStringList({QStringLiteral("Valtrona - 25 %"), QStringLiteral("Valtrona - 50 %"),
                                     QStringLiteral("Valtrona - 75 %"), QStringLiteral("Valtrona - 100 %")}));
    EXPECT_EQ(window->windowTitle(), QStringLiteral("Valtrona"));
    EXPECT_EQ(child<QProgressBar>(*window, "prog")->maximum(), 4);
    EXPECT_EQ(child<QProgressBar>(*window, "prog")->value(), 0);
    EXPECT_EQ(QDir(targetDir).entryList(QDir::Files).size(), 3);

    // The failed file's row says why; a click on a row with a path shows
    // that file in the card's preview, which the end of the run cleared.
    StatusList *status = window->statusList();
    const QStringList texts = rows(*window);
    const int errorRow = int(texts.indexOf(QStringLiteral("Fehler beim Verarbeiten des Bildes")));
    EXPECT_EQ(status->topLevelItem(errorRow)->toolTip(0),
              broken + QStringLiteral(": Kein Bild oder unbekanntes Bildformat"));
    auto *preview = child<VxPict>(*window, "picPrev");
    EXPECT_TRUE(preview->fileName().isEmpty());
    const int pictureRow = int(texts.indexOf(QStringLiteral("Bearbeite Bild : img01.jpg")));
    QTest::mouseClick(status->viewport(), Qt::LeftButton, {},
                      status->visualItemRect(status->topLevelItem(pictureRow)).center());
    EXPECT_EQ(preview->fileName(), sources.first());

    EXPECT_EQ(label(*window), QStringLiteral("3 bearbeitet, 1 Fehler"));
    click(*window, "cmdZ"); // the other cards count the list again
    EXPECT_EQ(label(*window), QStringLiteral("4 Bilder"));
    EXPECT_EQ(readIniString(settingsFile, QStringLiteral("Last"), QStringLiteral("Style")), QStringLiteral("2"));
    EXPECT_EQ(readIniString(settingsFile, QStringLiteral("Last"), QStringLiteral("Path")), targetDir);

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
    const struct
    {
        int card;
        std::vector<const char *> tabs; // from the control a card change focuses
        std::vector<const char *> enters; // Enter goes from field to field of the card
    } cases[] = {
        {1, {"lv", "cmdOpen", "cmdOpenF", "cmdRemove", "cmdRemoveAll", "Command1", "cmdCFG", "cmdW", "cmdOK"}, {}},
        {2,
         {"cmbTyp", "txtB", "cmbFB", "txtH", "cmbFH", "cmbFMT", "cmbFMT", "cmbFMT", "cmbFMT", "optDF", "txtSFor",
          "txtRep", "txtDst", "txtDst", "chkKeepDir", "chkDel", "chkEXF", "chkDU", "Command1", "cmdCFG", "cmdZ",
          "cmdW", "cmdOK"},
         {"cmbTyp", "txtB", "cmbFB", "txtH", "cmbFH", "cmbFMT", "cmbFMT", "cmbFMT", "cmbFMT", "optDF", "txtSFor",
          "txtRep", "txtDst", "chkKeepDir", "chkDel", "chkEXF", "chkDU", "cmbTyp"}},
        {3, {"lvStat", "Command1", "cmdCFG", "cmdZ", "cmdOK"}, {}},
    };
    // Everything set for a run: only "Weiter >" may start it.
    auto window = open();
    prepareRun(*window, sourceImages(1));
    line(*window, "cmbTyp")->setListIndex(0);
    line(*window, "txtH")->setText(QStringLiteral("150"));
    for (const auto &c : cases) {
        window->showCard(c.card);
        const QStringList tabs = names(c.tabs);
        ASSERT_EQ(focused(), tabs.first()) << c.card;
        QStringList seen;
        for (qsizetype i = 0; i < tabs.size(); ++i) {
            seen.append(focused());
            press(Qt::Key_Tab);
        }
        seen.append(focused());
        EXPECT_EQ(seen, tabs + QStringList {tabs.first()}) << c.card;

        seen.clear();
        for (size_t i = 0; i < c.enters.size(); ++i) {
            seen.append(focused());
            press(Qt::Key_Return);
        }
        EXPECT_EQ(seen, names(c.enters)) << c.card;
        EXPECT_EQ(window->currentCard(), c.card);
    }
    // Enter in the list goes on to the parameters, and no further; a unit
    // picked with the arrow key and Enter is just picked.
    window->showCard(1);
    press(Qt::Key_Return);
    EXPECT_EQ(window->currentCard(), 2);
    EXPECT_EQ(focused(), QStringLiteral("cmbTyp"));
    child<QComboBox>(*window, "cmbFB")->setFocus();
    press(Qt::Key_Down);
    press(Qt::Key_Enter);
    EXPECT_EQ(child<QComboBox>(*window, "cmbFB")->currentIndex(), 1);
    EXPECT_EQ(window->currentCard(), 2);
    EXPECT_FALSE(window->isRunning());
    EXPECT_EQ(window->statusList()->topLevelItemCount(), 0);
}

TEST_F(MainWindowTest, StrayKeysAfterAStartLeaveTheRunAlone)
{
    enum class Start { Mouse, Enter, Space, AccessKey };
    for (const Start start : {Start::Mouse, Start::Enter, Start::Space, Start::AccessKey}) {
        SCOPED_TRACE(static_cast<int>(start));
        QDir(targetDir).removeRecursively();
        dialogs->shown.clear();
        auto window = open();
        prepareRun(*window, sourceImages(3));
        QStringList focusDuringRun;
        onRow(*window, QStringLiteral("Bearbeite Bild : img01.jpg"), [&] {
            focusDuringRun.append(focused());
            for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Enter})
                press(key);
            focusDuringRun.append(focused());
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
            EXPECT_TRUE(QTest::qWaitFor([&] { return !focusDuringRun.isEmpty(); }));
            break;
        }
        waitForRun(*window);

        EXPECT_EQ(focusDuringRun, QStringList({QStringLiteral("lvStat"), QStringLiteral("lvStat")}));
        EXPECT_EQ(focused(), QStringLiteral("lvStat"));
        EXPECT_EQ(quits, 0);
        EXPECT_EQ(window->sourceList()->count(), 3);
        EXPECT_EQ(rows(*window).count(QStringLiteral("Bearbeite 3 Bilder")), 1);
        EXPECT_EQ(rows(*window).last(), QStringLiteral("Bearbeitung abgeschlossen"));
        EXPECT_EQ(dialogs->shown.size(), 1); // the open dialog only
    }
}

TEST_F(MainWindowTest, EscapeStopsARunFromEveryCardAndResetWaitsForTheEnd)
{
    for (const int card : {3, 2, 1}) {
        SCOPED_TRACE(card);
        auto window = open();
        prepareRun(*window, sourceImages(6));
        auto *reset = child(*window, "Command1");
        bool resetDuringRun = true;
        onRow(*window, QStringLiteral("Bearbeite Bild : img02.jpg"), [&] {
            // "< Zurück" by its access key, which presses the button a
            // moment later.
            for (int i = 3; i > card; --i) {
                press(Qt::Key_Z, Qt::AltModifier);
                EXPECT_TRUE(QTest::qWaitFor([&] { return window->currentCard() == i - 1; }));
            }
            resetDuringRun = reset->isEnabled();
            press(Qt::Key_R, Qt::AltModifier); // "Reset" is not there to press
            press(Qt::Key_Escape);
        });
        click(*window, "cmdW");
        waitForRun(*window);

        EXPECT_EQ(window->currentCard(), card);
        EXPECT_FALSE(resetDuringRun);
        EXPECT_TRUE(reset->isEnabled());
        EXPECT_EQ(window->sourceList()->count(), 6);
        EXPECT_TRUE(window->stopRequested());
        EXPECT_EQ(rows(*window).last(), QStringLiteral("Bearbeitung abgebrochen"));
        QDir(targetDir).removeRecursively();
    }
}

TEST_F(MainWindowTest, BackDuringARunLeavesItRunning)
{
    auto window = open();
    prepareRun(*window, sourceImages(4));
    QSignalSpy added(window->statusList(), &StatusList::rowAdded);
    int cardAfterBack = 0;
    onRow(*window, QStringLiteral("Bearbeite Bild : img01.jpg"), [&] {
        click(*window, "cmdZ");
        cardAfterBack = window->currentCard();
        click(*window, "cmdW"); // going on again starts no second run
    });

    click(*window, "cmdW");
    waitForRun(*window);

    EXPECT_EQ(cardAfterBack, 2);
    EXPECT_EQ(added.size(), window->statusList()->topLevelItemCount()); // no row cleared away
    EXPECT_EQ(rows(*window).count(QStringLiteral("Bearbeite 4 Bilder")), 1);
    EXPECT_EQ(rows(*window).count(QStringLiteral("Bild erfolgreich bearbeitet")), 4);
}

TEST_F(MainWindowTest, WindowServesEventsWhileAPhotoConverts)
{
    const QString photo = writeJpeg(sandbox.filePath(QStringLiteral("src/big.jpg")), 6000, 4000);
    auto window = open();
    prepareRun(*window, {photo});
    int ticks = 0;
    int ticksAtStart = -1;
    int ticksAtEnd = -1;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, [&] { ++ticks; });
    ticker.start(0);
    // Between these two rows the run does nothing but convert the file.
    onRow(*window, QStringLiteral("Bearbeite Bild : big.jpg"), [&] { ticksAtStart = ticks; });
    // The card's preview follows the file; it is read ahead on a worker and
    // may come a moment after the file's first row.
    bool previewShown = false;
    onRow(*window, QStringLiteral("Bild erfolgreich bearbeitet"), [&] {
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

TEST_F(MainWindowTest, ClosingDuringARunEndsAtOnce)
{
    auto window = open();
    prepareRun(*window, sourceImages(6));
    bool hiddenAtOnce = false;
    onRow(*window, QStringLiteral("Bearbeite Bild : img02.jpg"), [&] {
        window->close();
        hiddenAtOnce = window->isHidden();
        EXPECT_EQ(quits, 0); // the file in hand is finished first
    });

    click(*window, "cmdW");
    waitForRun(*window);

    EXPECT_TRUE(hiddenAtOnce);
    EXPECT_EQ(quits, 1);
    EXPECT_FALSE(window->stopRequested()); // closing is no "Abbruch"
    EXPECT_LE(QDir(targetDir).entryList(QDir::Files).size(), 2);
}

// The buttons of card 1: what each dialog is asked, and the count label
// following every change of the list, drops and start paths included.
TEST_F(MainWindowTest, SourceButtonsAskTheirDialogsAndTheCountFollows)
{
    const QStringList images = sourceImages(3);
    writeJpeg(sandbox.filePath(QStringLiteral("tree/a/b/deep.jpg")), 20, 10);
    auto window = open();
    SourceList *list = window->sourceList();

    click(*window, "cmdOpen"); // cancelled
    EXPECT_EQ(dialogs->shown.last().title, QStringLiteral("Dateien wählen :"));
    EXPECT_EQ(dialogs->lastFilters,
              QStringList({QStringLiteral("Bilddateien (*.jpg *.jpeg *.jpe *.gif *.bmp *.png *.tif *.tiff *.webp "
                                          "*.heic *.heif *.avif *.jxl)"),
                           QStringLiteral("Alle Dateien (*.*)")}));

    dialogs->nextFolder = sandbox.filePath(QStringLiteral("tree"));
    click(*window, "cmdOpenF");
    EXPECT_EQ(dialogs->shown.last().title, QStringLiteral("Verzeichnis für Konvertierung wählen (JPG) : "));
    EXPECT_EQ(label(*window), QStringLiteral("1 Bild"));
    click(*window, "cmdOpenF"); // cancelled: the list stays, the folder is remembered
    EXPECT_EQ(dialogs->lastStartFolder, sandbox.filePath(QStringLiteral("tree")));
    EXPECT_EQ(list->count(), 1);

    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(images.at(0)), QUrl::fromLocalFile(images.at(1))});
    QDragEnterEvent enter(QPoint(30, 30), Qt::CopyAction, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(list->viewport(), &enter);
    QDropEvent drop(QPointF(30, 30), Qt::CopyAction, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(list->viewport(), &drop);
    EXPECT_EQ(label(*window), QStringLiteral("3 Bilder"));

    const QString previous = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(sandbox.path()));
    const QStringList missing = window->addStartPaths({QStringLiteral("src/img03.jpg"), QStringLiteral("fehlt.jpg")});
    QDir::setCurrent(previous);
    EXPECT_EQ(missing, QStringList {QStringLiteral("fehlt.jpg")});
    EXPECT_EQ(list->pathAt(3), images.at(2));
    EXPECT_EQ(label(*window), QStringLiteral("4 Bilder"));

    // A clicked row shows in the preview until rows are removed: Delete
    // removes the current one like "Bild(er) entfernen", unasked.
    auto *preview = child<VxPict>(*window, "PRV");
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->topLevelItem(1)).center());
    EXPECT_EQ(preview->fileName(), list->pathAt(1));
    EXPECT_TRUE(preview->hasPicture());
    list->setFocus();
    press(Qt::Key_Delete);
    EXPECT_EQ(label(*window), QStringLiteral("3 Bilder"));
    EXPECT_FALSE(preview->hasPicture());
    // "Alle entfernen" asks, and only when there is something to remove.
    dialogs->shown.clear();
    dialogs->answers = {false, true};
    click(*window, "cmdRemoveAll");
    EXPECT_EQ(list->count(), 3);
    ASSERT_EQ(dialogs->shown.size(), 1);
    EXPECT_EQ(dialogs->shown.first().kind, QStringLiteral("question"));
    EXPECT_EQ(dialogs->shown.first().title, QStringLiteral("Entfernen"));
    EXPECT_EQ(dialogs->shown.first().text, QStringLiteral("Wollen Sie alle Bilder aus der Auswahl entfernen ?"));
    click(*window, "cmdRemoveAll");
    EXPECT_EQ(label(*window), QStringLiteral("Keine Bilder"));
    click(*window, "cmdRemoveAll");
    EXPECT_EQ(dialogs->shown.size(), 2);

    // "Reset": back to card 1, emptied without asking.
    dialogs->nextFiles = images;
    click(*window, "cmdOpen");
    click(*window, "cmdW");
    ASSERT_EQ(window->currentCard(), 2);
    dialogs->shown.clear();
    click(*window, "Command1");
    EXPECT_EQ(window->currentCard(), 1);
    EXPECT_EQ(label(*window), QStringLiteral("Keine Bilder"));
    EXPECT_TRUE(dialogs->shown.isEmpty());
}

// "Konfiguration" opens the dialog filled and modal; the orientation it saves
// applies at once (previews and dimensions follow it), as the file's did at start.
TEST_F(MainWindowTest, KonfigurationAndTheOrientationSettingApply)
{
    writeIniString(settingsFile, QStringLiteral("JPG"), QStringLiteral("ORI"), QStringLiteral("0"));
    auto window = open();
    EXPECT_EQ(imaging::orientation(), imaging::Orientation::Stored);

    QString shownBefore;
    QTimer::singleShot(0, window.get(), [&] {
        auto *dialog = qobject_cast<SettingsDialog *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        shownBefore = dialog->line(10)->text();
        QLineEdit *edit = dialog->line(10)->findChild<QLineEdit *>(QStringLiteral("txt"));
        edit->setFocus();
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_1);
        dialogs->answers = {true};
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    click(*window, "cmdCFG");
    EXPECT_EQ(shownBefore, QStringLiteral("0"));
    EXPECT_EQ(window->findChild<SettingsDialog *>(), nullptr);
    EXPECT_EQ(imaging::orientation(), imaging::Orientation::Upright);
}

TEST_F(MainWindowTest, SchliessenEndsTheProgramWithoutAskingOrSaving)
{
    auto window = open();
    const QByteArray before = test::readAll(settingsFile);
    line(*window, "txtB")->setText(QStringLiteral("4711"));
    click(*window, "cmdOK");
    EXPECT_EQ(quits, 1);
    EXPECT_TRUE(window->isHidden());
    EXPECT_TRUE(dialogs->shown.isEmpty());
    EXPECT_EQ(test::readAll(settingsFile), before);
}

TEST_F(MainWindowTest, FailedImagingStartSaysSoAndStops)
{
    auto window = open([] { return false; });
    EXPECT_FALSE(started);
    ASSERT_EQ(dialogs->shown.size(), 1);
    EXPECT_EQ(dialogs->shown.first().kind, QStringLiteral("plain"));
    EXPECT_TRUE(dialogs->shown.first().title.isEmpty());
    EXPECT_EQ(dialogs->shown.first().text, QStringLiteral("GDI konnte nicht initialisiert werden !"));
}

} // namespace
