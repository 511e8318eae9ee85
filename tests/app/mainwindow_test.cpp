#include <QAbstractButton>
#include <QAbstractItemModel>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QProcess>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
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

// Everything below a directory that is not a finished output: temporary
// names of atomic writes, or files of zero length.
QStringList leftovers(const QString &dir)
{
    QStringList found;
    for (const QString &name : test::filesBelow(dir)) {
        const QFileInfo info(QDir(dir).filePath(name));
        if (info.size() == 0 || !(info.suffix() == QLatin1String("jpg") || info.suffix() == QLatin1String("png")))
            found.append(name);
    }
    return found;
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
    MainWindowTest()
    {
        settingsFile = sandbox.filePath(QStringLiteral("valtrona.ini"));
        targetDir = sandbox.filePath(QStringLiteral("out"));
    }

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

    template <typename T>
    T *child(MainWindow &window, const char *name)
    {
        T *found = window.findChild<T *>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }

    VxLineIn *line(MainWindow &window, const char *name) { return child<VxLineIn>(window, name); }

    void click(MainWindow &window, const char *name) { child<QPushButton>(window, name)->click(); }

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
        VxLineIn *style = line(window, "cmbTyp");
        style->setListIndex(2);
        line(window, "txtB")->setText(QStringLiteral("200"));
        line(window, "txtDst")->setText(targetDir);
    }

    QStringList sourceImages(int count, const QString &folder = QStringLiteral("src"))
    {
        QStringList paths;
        for (int i = 1; i <= count; ++i)
            paths.append(writeJpeg(sandbox.filePath(QStringLiteral("%1/img%2.jpg").arg(folder).arg(i, 2, 10,
                                                                                                     QLatin1Char('0'))),
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
    QString settingsFile;
    QString targetDir;
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
        EXPECT_FALSE(child<QPushButton>(*window, "cmdZ")->isEnabled());
        EXPECT_TRUE(child<QPushButton>(*window, "cmdW")->isEnabled());
        EXPECT_EQ(child<QLabel>(*window, "lblStat")->text(), QStringLiteral("Keine Bilder"));

        // Presets are read before seeding: empty at the very first start.
        const auto presets = window->findChildren<VxLineIn *>(QStringLiteral("cmbFMT"));
        ASSERT_EQ(presets.size(), 4);
        for (const VxLineIn *preset : presets)
            EXPECT_EQ(preset->listCount(), 0);

        VxLineIn *style = line(*window, "cmbTyp");
        EXPECT_EQ(style->itemData(style->listIndex()), 3);
        // The loaded style sets label and inputs as a chosen one does.
        EXPECT_EQ(line(*window, "txtB")->caption(), QStringLiteral("Seitenlänge :"));
        EXPECT_EQ(line(*window, "txtB")->text(), QStringLiteral("1024"));
        EXPECT_EQ(line(*window, "txtH")->text(), QStringLiteral("768"));
        EXPECT_FALSE(line(*window, "txtH")->textEnabled());
        EXPECT_EQ(child<QComboBox>(*window, "cmbFB")->currentText(), QStringLiteral("Pixel"));
        EXPECT_TRUE(dialogs->shown.isEmpty());
    }
    // The second start shows the presets the first one seeded.
    auto second = open();
    const auto presets = second->findChildren<VxLineIn *>(QStringLiteral("cmbFMT"));
    ASSERT_EQ(presets.size(), 4);
    EXPECT_EQ(presets.at(0)->listCount(), 16);
    EXPECT_EQ(presets.at(0)->itemText(9), QStringLiteral("0800x0600"));
    EXPECT_EQ(presets.at(0)->listIndex(), -1);
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
            const QString name = widget->objectName() + QLatin1Char(' ') + QString::fromLatin1(widget->metaObject()->className());
            EXPECT_GE(widget->height(), widget->minimumSizeHint().height()) << card << " " << name.toStdString();
            EXPECT_GE(widget->width(), widget->minimumSizeHint().width()) << card << " " << name.toStdString();
            for (QWidget *other : shown) {
                if (other != widget && other->parentWidget() == widget->parentWidget()) {
                    EXPECT_FALSE(widget->geometry().intersects(other->geometry()))
                        << card << " " << name.toStdString() << " / " << other->objectName().toStdString();
                }
            }
        }
    }
}

TEST_F(MainWindowTest, APickedPresetFillsBothInputsAndCanBePickedAgain)
{
    { open(); }
    auto window = open();
    VxLineIn *preset = window->findChildren<VxLineIn *>(QStringLiteral("cmbFMT")).at(3); // 16:9
    preset->setListIndex(9);
    EXPECT_EQ(line(*window, "txtB")->text(), QStringLiteral("800"));
    EXPECT_EQ(line(*window, "txtH")->text(), QStringLiteral("450"));
    EXPECT_EQ(preset->listIndex(), -1);

    line(*window, "txtB")->setText(QStringLiteral("1"));
    preset->setListIndex(9);
    EXPECT_EQ(line(*window, "txtB")->text(), QStringLiteral("800"));
}

TEST_F(MainWindowTest, StyleDecidesLabelAndEnabledInputs)
{
    auto window = open();
    const struct
    {
        int style;
        const char *widthLabel;
        bool width;
        bool height;
    } cases[] = {{0, "Breite :", true, true},
                 {1, "Breite :", false, true},
                 {2, "Breite :", true, false},
                 {3, "Seitenlänge :", true, false},
                 {4, "Breite :", true, true}};
    VxLineIn *style = line(*window, "cmbTyp");
    for (const auto &c : cases) {
        style->setListIndex(c.style);
        EXPECT_EQ(line(*window, "txtB")->caption().toStdString(), c.widthLabel) << c.style;
        EXPECT_EQ(line(*window, "txtB")->textEnabled(), c.width) << c.style;
        EXPECT_EQ(child<QComboBox>(*window, "cmbFB")->isEnabled(), c.width) << c.style;
        EXPECT_EQ(line(*window, "txtH")->textEnabled(), c.height) << c.style;
        EXPECT_EQ(child<QComboBox>(*window, "cmbFH")->isEnabled(), c.height) << c.style;
    }
}

TEST_F(MainWindowTest, EachCheckStopsWithItsMessage)
{
    auto window = open();
    click(*window, "cmdW");
    EXPECT_EQ(window->currentCard(), 1);
    ASSERT_EQ(dialogs->shown.size(), 1);
    EXPECT_EQ(dialogs->shown.last().kind, QStringLiteral("information"));
    EXPECT_EQ(dialogs->shown.last().title, QStringLiteral("Abbruch"));
    EXPECT_EQ(dialogs->shown.last().text, QStringLiteral("Sie haben keine Quelldateien gewählt !"));

    dialogs->nextFiles = sourceImages(1);
    click(*window, "cmdOpen");
    click(*window, "cmdW");
    ASSERT_EQ(window->currentCard(), 2);

    struct Step
    {
        std::function<void()> set;
        const char *message;
    };
    VxLineIn *style = line(*window, "cmbTyp");
    const Step steps[] = {
        {[&] { style->setListIndex(-1); }, "Sie haben keinen Änderungsstil gewählt !"},
        {[&] {
             style->setListIndex(2); // constant width needs a width
             line(*window, "txtB")->setText(QString());
             line(*window, "txtH")->setText(QStringLiteral("600"));
         },
         "Sie haben ungültige Formatparameter gewählt !"},
        {[&] {
             style->setListIndex(1); // constant height: an empty width is fine
             line(*window, "txtDst")->setText(QString());
         },
         "Sie haben kein Zielverzeichnis gewählt !"},
    };
    for (const Step &step : steps) {
        step.set();
        dialogs->shown.clear();
        click(*window, "cmdW");
        EXPECT_EQ(window->currentCard(), 2) << step.message;
        ASSERT_EQ(dialogs->shown.size(), 1) << step.message;
        EXPECT_EQ(dialogs->shown.first().title, QStringLiteral("Abbruch"));
        EXPECT_EQ(dialogs->shown.first().text.toStdString(), step.message);
    }
    // Nothing was saved by a refused check.
    EXPECT_EQ(readIniString(settingsFile, QStringLiteral("LAST"), QStringLiteral("Style")), QStringLiteral("3"));
}

TEST_F(MainWindowTest, BatchRunsToCompletionWithRowsFilesAndSavedParameters)
{
    const QStringList sources = sourceImages(3);
    const QString broken = sandbox.writeFile(QStringLiteral("src/broken.jpg"), "not a picture");
    auto window = open();
    prepareRun(*window, sources + QStringList{broken});
    child<QComboBox>(*window, "cmbFH")->setCurrentIndex(-1); // chosen silently
    QSignalSpy finished(window.get(), &MainWindow::runFinished);
    EXPECT_EQ(dialogs->shown.size(), 1); // the open dialog; the broken file is no box
    QStringList captions;
    QObject::connect(window->statusList(), &StatusList::rowAdded, window.get(), [&](const QString &text) {
        if (text.startsWith(QLatin1String("Bearbeite Bild")))
            captions.append(window->windowTitle());
    });
    EXPECT_EQ(window->sourceList()->topLevelItem(3)->text(SourceList::DimensionColumn), QStringLiteral("0 x 0"));

    click(*window, "cmdW");
    waitForRun(*window);

    ASSERT_EQ(finished.size(), 1);
    EXPECT_EQ(dialogs->shown.size(), 1); // and no box during the run
    EXPECT_EQ(window->currentCard(), 3);
    EXPECT_FALSE(child<QPushButton>(*window, "cmdW")->isEnabled());
    EXPECT_EQ(child<QComboBox>(*window, "cmbFH")->currentIndex(), 0);

    const QStringList texts = rows(*window);
    ASSERT_FALSE(texts.isEmpty());
    EXPECT_EQ(texts.first(), QStringLiteral("Bearbeite 4 Bilder"));
    EXPECT_EQ(texts.last(), QStringLiteral("Bearbeitung abgeschlossen"));
    EXPECT_EQ(texts.count(QStringLiteral("Bild erfolgreich bearbeitet")), 3);

    StatusList *status = window->statusList();
    const int pictureRow = static_cast<int>(texts.indexOf(QStringLiteral("Bearbeite Bild : img01.jpg")));
    EXPECT_EQ(status->rowKey(pictureRow), QStringLiteral("PIC"));
    EXPECT_EQ(status->rowPath(pictureRow), sources.first());
    EXPECT_EQ(status->rowKey(static_cast<int>(texts.indexOf(QStringLiteral("Bild erfolgreich bearbeitet")))),
              QStringLiteral("POK"));
    EXPECT_EQ(status->rowKey(static_cast<int>(texts.indexOf(QStringLiteral("Fehler beim Verarbeiten des Bildes")))),
              QStringLiteral("ERR"));
    EXPECT_EQ(status->selectedItems().value(0), status->topLevelItem(status->topLevelItemCount() - 1));
    EXPECT_EQ(captions, QStringList({QStringLiteral("Valtrona - 25 %"), QStringLiteral("Valtrona - 50 %"),
                                     QStringLiteral("Valtrona - 75 %"), QStringLiteral("Valtrona - 100 %")}));

    // A click on a row with a path shows that file in the card's preview.
    auto *preview = child<VxPict>(*window, "picPrev");
    EXPECT_TRUE(preview->fileName().isEmpty()); // cleared when the run ended
    QTest::mouseClick(status->viewport(), Qt::LeftButton, {},
                      status->visualItemRect(status->topLevelItem(pictureRow)).center());
    EXPECT_EQ(preview->fileName(), sources.first());

    for (int i = 1; i <= 3; ++i) {
        const QString output = QDir(targetDir).filePath(QStringLiteral("img%1.jpg").arg(i, 2, 10, QLatin1Char('0')));
        EXPECT_EQ(QImageReader(output).size(), QSize(200, 150)) << output.toStdString();
    }
    EXPECT_FALSE(QFileInfo::exists(QDir(targetDir).filePath(QStringLiteral("broken.jpg"))));
    EXPECT_TRUE(leftovers(targetDir).isEmpty()) << leftovers(targetDir).join(u',').toStdString();

    EXPECT_EQ(window->windowTitle(), QStringLiteral("Valtrona"));
    EXPECT_EQ(child<QProgressBar>(*window, "prog")->value(), 0);
    EXPECT_EQ(child<QProgressBar>(*window, "prog")->maximum(), 4);
    EXPECT_EQ(child<QLabel>(*window, "lblStat")->text(), QStringLiteral("3 bearbeitet, 1 Fehler"));
    click(*window, "cmdZ"); // the other cards count the list again
    EXPECT_EQ(child<QLabel>(*window, "lblStat")->text(), QStringLiteral("4 Bilder"));
    const int errorRow = static_cast<int>(texts.indexOf(QStringLiteral("Fehler beim Verarbeiten des Bildes")));
    EXPECT_EQ(status->topLevelItem(errorRow)->toolTip(0), broken + QStringLiteral(": Kein Bild oder unbekanntes Bildformat"));

    EXPECT_EQ(readIniString(settingsFile, QStringLiteral("Last"), QStringLiteral("Style")), QStringLiteral("2"));
    EXPECT_EQ(readIniString(settingsFile, QStringLiteral("Last"), QStringLiteral("Width")), QStringLiteral("200"));
    EXPECT_EQ(readIniString(settingsFile, QStringLiteral("Last"), QStringLiteral("HU")), QStringLiteral("0"));
    EXPECT_EQ(readIniString(settingsFile, QStringLiteral("Last"), QStringLiteral("Path")), targetDir);
    EXPECT_EQ(window->sourceList()->count(), 4); // the run leaves the list alone
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
        EXPECT_EQ(seen, tabs + QStringList{tabs.first()}) << c.card;

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
        quits = 0;
        dialogs->shown.clear();
        const QStringList sources = sourceImages(3);
        auto window = open();
        prepareRun(*window, sources);
        QStringList focusDuringRun;
        onRow(*window, QStringLiteral("Bearbeite Bild : img01.jpg"), [&] {
            focusDuringRun.append(focused());
            for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space, Qt::Key_Enter})
                press(key);
            focusDuringRun.append(focused());
        });
        auto *next = child<QPushButton>(*window, "cmdW");
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
        EXPECT_TRUE(window->isVisible());
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
        auto *reset = child<QPushButton>(*window, "Command1");
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
        EXPECT_LT(QDir(targetDir).entryList(QDir::Files).size(), 6);
        QDir(targetDir).removeRecursively();
    }
}

TEST_F(MainWindowTest, GoneSourcesShowAsSuchAfterARunAndOnReturn)
{
    const test::ScopedEnvironment trash("XDG_DATA_HOME", sandbox.filePath(QStringLiteral("data")));
    const QStringList sources = sourceImages(3);
    auto window = open();
    prepareRun(*window, sources);
    child<QCheckBox>(*window, "chkDel")->setChecked(true);
    click(*window, "cmdW");
    waitForRun(*window);

    SourceList *list = window->sourceList();
    ASSERT_EQ(list->count(), 3);
    for (int row = 0; row < 3; ++row)
        EXPECT_TRUE(list->isGone(row)) << row;

    list->addSourceFiles({writeJpeg(sandbox.filePath(QStringLiteral("later.jpg")), 40, 30)});
    EXPECT_FALSE(list->isGone(3));
    // Deleted by another program meanwhile: seen when the window is back.
    QFile::remove(list->pathAt(3));
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    EXPECT_FALSE(list->isGone(3));
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    EXPECT_TRUE(list->isGone(3));
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
    onRow(*window, QStringLiteral("Bild erfolgreich bearbeitet"), [&] { ticksAtEnd = ticks; });
    // The card's preview follows the file; it is read ahead on a worker and
    // may come a moment after the file's first row.
    bool previewShown = false;
    onRow(*window, QStringLiteral("Bild erfolgreich bearbeitet"), [&] {
        auto *preview = child<VxPict>(*window, "picPrev");
        previewShown = QTest::qWaitFor([&] { return preview->fileName() == photo && preview->hasPicture(); }, 5000);
    });

    click(*window, "cmdW");
    waitForRun(*window);

    ASSERT_GE(ticksAtStart, 0);
    EXPECT_GT(ticksAtEnd, ticksAtStart);
    EXPECT_TRUE(previewShown);
    EXPECT_EQ(QImageReader(QDir(targetDir).filePath(QStringLiteral("big.jpg"))).size(), QSize(200, 133));
}

TEST_F(MainWindowTest, PreviewFollowsTheClickedSourceAndClearsOnRemoval)
{
    auto window = open();
    dialogs->nextFiles = sourceImages(2);
    click(*window, "cmdOpen");
    SourceList *list = window->sourceList();
    auto *preview = child<VxPict>(*window, "PRV");

    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->topLevelItem(1)).center());
    EXPECT_EQ(preview->fileName(), list->pathAt(1));
    EXPECT_TRUE(preview->hasPicture());

    list->topLevelItem(0)->setSelected(true);
    click(*window, "cmdRemove");
    EXPECT_EQ(list->count(), 0); // the clicked row and this one
    EXPECT_TRUE(preview->fileName().isEmpty());
    EXPECT_FALSE(preview->hasPicture());
}

TEST_F(MainWindowTest, EachFormatChoiceWritesItsFiles)
{
    const struct
    {
        int index; ///< of the option button in optDF
        const char *caption;
        const char *file;
        qsizetype at; ///< where the file's signature stands
        QByteArray signature;
    } cases[] = {
        {1, "PNG", "img01.png", 0, "\x89PNG"},
        {2, "WebP", "img01.webp", 8, "WEBP"},
        {3, "AVIF", "img01.avif", 4, "ftypavif"},
    };
    const QStringList sources = sourceImages(1);
    for (const auto &c : cases) {
        auto window = open();
        prepareRun(*window, sources);
        QRadioButton *option = window->findChildren<QRadioButton *>(QStringLiteral("optDF")).at(c.index);
        EXPECT_EQ(option->text().remove(QLatin1Char('&')), QLatin1String(c.caption));
        option->setChecked(true);
        click(*window, "cmdW");
        waitForRun(*window);
        EXPECT_EQ(test::readAll(QDir(targetDir).filePath(QLatin1String(c.file))).mid(c.at, c.signature.size()),
                  c.signature)
            << c.file;
    }
}

// A phone photo stored on its side lists as stored while the settings say
// so at start, and as shown once the dialog has saved "1".
TEST_F(MainWindowTest, TheOrientationSettingAppliesAtStartAndAfterTheDialog)
{
    const QString photo = writeJpeg(sandbox.filePath(QStringLiteral("src/phone.jpg")), 40, 30);
    ASSERT_EQ(QProcess::execute(QStringLiteral("exiftool"),
                                {QStringLiteral("-q"), QStringLiteral("-overwrite_original"), QStringLiteral("-n"),
                                 QStringLiteral("-Orientation=6"), photo}),
              0);
    writeIniString(settingsFile, QStringLiteral("JPG"), QStringLiteral("ORI"), QStringLiteral("0"));
    auto window = open();
    auto listed = [&] {
        dialogs->nextFiles = {photo};
        click(*window, "cmdOpen");
        const QString text = window->sourceList()->topLevelItem(0)->text(SourceList::DimensionColumn);
        window->sourceList()->removeAll();
        return text;
    };
    EXPECT_EQ(listed(), QStringLiteral("40 x 30"));

    QTimer::singleShot(0, window.get(), [&] {
        auto *dialog = qobject_cast<SettingsDialog *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        QLineEdit *edit = dialog->line(10)->findChild<QLineEdit *>(QStringLiteral("txt"));
        edit->setFocus();
        edit->selectAll();
        QTest::keyClick(edit, Qt::Key_1);
        dialogs->answers = {true};
        QTest::keyClick(dialog, Qt::Key_Escape);
    });
    click(*window, "cmdCFG");
    EXPECT_EQ(readIniString(settingsFile, QStringLiteral("JPG"), QStringLiteral("ORI")), QStringLiteral("1"));
    EXPECT_EQ(listed(), QStringLiteral("30 x 40"));
}

TEST_F(MainWindowTest, BackDuringARunLeavesItRunning)
{
    auto window = open();
    prepareRun(*window, sourceImages(4));
    int cardAfterBack = 0;
    onRow(*window, QStringLiteral("Bearbeite Bild : img01.jpg"), [&] {
        click(*window, "cmdZ");
        cardAfterBack = window->currentCard();
        // Going on again does not start a second run over the first.
        click(*window, "cmdW");
    });

    click(*window, "cmdW");
    waitForRun(*window);

    EXPECT_EQ(cardAfterBack, 2);
    const QStringList texts = rows(*window);
    EXPECT_EQ(texts.count(QStringLiteral("Bearbeite 4 Bilder")), 1);
    EXPECT_EQ(texts.last(), QStringLiteral("Bearbeitung abgeschlossen"));
    EXPECT_EQ(texts.count(QStringLiteral("Bild erfolgreich bearbeitet")), 4);
}

TEST_F(MainWindowTest, ClosingDuringARunEndsAtOnceWithoutPartialFiles)
{
    const QStringList sources = sourceImages(6);
    auto window = open();
    prepareRun(*window, sources);
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
    const QStringList written = QDir(targetDir).entryList(QDir::Files);
    EXPECT_LE(written.size(), 2);
    EXPECT_TRUE(leftovers(targetDir).isEmpty()) << leftovers(targetDir).join(u',').toStdString();
    for (const QString &name : written)
        EXPECT_EQ(QImageReader(QDir(targetDir).filePath(name)).size(), QSize(200, 150)) << name.toStdString();
}

TEST_F(MainWindowTest, FolderLoadCollectsJpegsBelowAndRemembersTheFolder)
{
    const QStringList jpegs = sourceImages(2, QStringLiteral("tree/a"));
    writeJpeg(sandbox.filePath(QStringLiteral("tree/b/deep/UPPER.JPG")), 20, 10);
    writeJpeg(sandbox.filePath(QStringLiteral("tree/b/long.jpeg")), 20, 10);
    writeJpeg(sandbox.filePath(QStringLiteral("tree/a/.thumbnails/normal/img01.jpg")), 20, 10);
    sandbox.writeFile(QStringLiteral("tree/b/other.png"), "x");
    QDir().mkpath(sandbox.filePath(QStringLiteral("empty")));
    auto window = open();

    dialogs->nextFolder = sandbox.filePath(QStringLiteral("tree"));
    click(*window, "cmdOpenF");
    EXPECT_EQ(window->sourceList()->count(), 4);
    EXPECT_EQ(child<QLabel>(*window, "lblStat")->text(), QStringLiteral("4 Bilder"));
    EXPECT_EQ(dialogs->shown.last().title, QStringLiteral("Verzeichnis für Konvertierung wählen (JPG) : "));

    dialogs->nextFolder = sandbox.filePath(QStringLiteral("empty"));
    click(*window, "cmdOpenF");
    EXPECT_EQ(dialogs->lastStartFolder, sandbox.filePath(QStringLiteral("tree")));
    EXPECT_EQ(window->sourceList()->count(), 4);

    click(*window, "cmdOpenF"); // cancelled: nothing changes, not even the folder
    EXPECT_EQ(dialogs->lastStartFolder, sandbox.filePath(QStringLiteral("empty")));
}

TEST_F(MainWindowTest, StartPathsAddFilesAndFolderPhotosInTheirOrder)
{
    const QString single = writeJpeg(sandbox.filePath(QStringLiteral("single.jpg")), 40, 30);
    const QString album = writeJpeg(sandbox.filePath(QStringLiteral("album/b.jpeg")), 20, 10);
    writeJpeg(sandbox.filePath(QStringLiteral("album/.thumbnails/normal/b.jpg")), 8, 6);
    sandbox.writeFile(QStringLiteral("album/notes.txt"), "x");
    const QString previous = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(sandbox.path()));

    // As the program starts: the window first, then what it was given.
    auto window = open();
    const QStringList missing = window->addStartPaths(
        {QStringLiteral("single.jpg"), sandbox.filePath(QStringLiteral("album")), QStringLiteral("fehlt.jpg")});
    QDir::setCurrent(previous);

    EXPECT_EQ(missing, QStringList {QStringLiteral("fehlt.jpg")});
    SourceList *list = window->sourceList();
    EXPECT_EQ(list->paths(), QStringList({single, album}));
    EXPECT_EQ(list->topLevelItem(0)->text(SourceList::DimensionColumn), QStringLiteral("40 x 30"));
    EXPECT_EQ(list->topLevelItem(1)->text(SourceList::DimensionColumn), QStringLiteral("20 x 10"));
    EXPECT_EQ(child<QLabel>(*window, "lblStat")->text(), QStringLiteral("2 Bilder"));
}

TEST_F(MainWindowTest, OpenDialogOffersImagesThenAllFiles)
{
    auto window = open();
    click(*window, "cmdOpen");
    EXPECT_EQ(dialogs->shown.last().title, QStringLiteral("Dateien wählen :"));
    EXPECT_EQ(dialogs->lastFilters,
              QStringList({QStringLiteral("Bilddateien (*.jpg *.jpeg *.jpe *.gif *.bmp *.png *.tif *.tiff *.webp "
                                          "*.heic *.heif *.avif *.jxl)"),
                           QStringLiteral("Alle Dateien (*.*)")}));
    EXPECT_EQ(window->sourceList()->count(), 0);
}

TEST_F(MainWindowTest, TargetFolderButtonFillsTheLineUnlessCancelled)
{
    auto window = open();
    VxLineIn *target = line(*window, "txtDst");
    target->setText(QStringLiteral("/alt"));
    dialogs->nextFolder = sandbox.path();
    target->clickButton();
    EXPECT_EQ(target->text(), sandbox.path());
    EXPECT_EQ(dialogs->lastStartFolder, QStringLiteral("/alt"));
    target->clickButton(); // cancelled
    EXPECT_EQ(target->text(), sandbox.path());
}

TEST_F(MainWindowTest, RemovingRowsAsksOnlyForAll)
{
    auto window = open();
    dialogs->nextFiles = sourceImages(3);
    click(*window, "cmdOpen");
    SourceList *list = window->sourceList();

    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    list->setFocus();
    list->setCurrentItem(list->topLevelItem(0));
    QTest::keyClick(list, Qt::Key_Delete); // the Delete key removes like the button
    EXPECT_EQ(list->count(), 2);
    EXPECT_EQ(child<QLabel>(*window, "lblStat")->text(), QStringLiteral("2 Bilder"));

    dialogs->shown.clear();
    dialogs->answers = {false, true};
    click(*window, "cmdRemoveAll");
    EXPECT_EQ(list->count(), 2);
    ASSERT_EQ(dialogs->shown.size(), 1);
    EXPECT_EQ(dialogs->shown.first().kind, QStringLiteral("question"));
    EXPECT_EQ(dialogs->shown.first().title, QStringLiteral("Entfernen"));
    EXPECT_EQ(dialogs->shown.first().text, QStringLiteral("Wollen Sie alle Bilder aus der Auswahl entfernen ?"));
    click(*window, "cmdRemoveAll");
    EXPECT_EQ(list->count(), 0);
    EXPECT_EQ(child<QLabel>(*window, "lblStat")->text(), QStringLiteral("Keine Bilder"));

    dialogs->shown.clear();
    click(*window, "cmdRemoveAll"); // empty list: no question
    EXPECT_TRUE(dialogs->shown.isEmpty());

    dialogs->nextFiles = sourceImages(2, QStringLiteral("again"));
    click(*window, "cmdOpen");
    click(*window, "cmdW");
    ASSERT_EQ(window->currentCard(), 2);
    dialogs->shown.clear();
    click(*window, "Command1"); // "Reset": back to card 1, emptied without asking
    EXPECT_EQ(window->currentCard(), 1);
    EXPECT_EQ(list->count(), 0);
    EXPECT_TRUE(dialogs->shown.isEmpty());
}

TEST_F(MainWindowTest, DropAddsRowsAndTheCountFollows)
{
    auto window = open();
    const QStringList files = sourceImages(2);
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(files.at(0)), QUrl::fromLocalFile(files.at(1))});
    QDragEnterEvent enter(QPoint(30, 30), Qt::CopyAction, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(window->sourceList()->viewport(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(30, 30), Qt::CopyAction, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(window->sourceList()->viewport(), &drop);
    ASSERT_EQ(window->sourceList()->count(), 2);
    EXPECT_EQ(window->sourceList()->topLevelItem(0)->text(SourceList::DimensionColumn), QStringLiteral("400 x 300"));
    EXPECT_EQ(child<QLabel>(*window, "lblStat")->text(), QStringLiteral("2 Bilder"));
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
    EXPECT_EQ(test::readAll(settingsFile), before); // nothing is saved on exit
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

TEST_F(MainWindowTest, KonfigurationOpensTheFilledDialogModally)
{
    auto window = open();
    writeIniString(settingsFile, QStringLiteral("JPG"), QStringLiteral("PRZ"), QStringLiteral("70"));
    QString seenQuality;
    bool wasModal = false;
    QTimer::singleShot(0, window.get(), [&] {
        auto *dialog = qobject_cast<SettingsDialog *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        wasModal = dialog->isModal();
        seenQuality = dialog->line(5)->text();
        dialog->findChild<QPushButton *>(QStringLiteral("cmdAB"))->click();
    });
    click(*window, "cmdCFG");
    EXPECT_TRUE(wasModal);
    EXPECT_EQ(seenQuality, QStringLiteral("70"));
    EXPECT_TRUE(dialogs->shown.isEmpty()); // unchanged: no save question
    EXPECT_EQ(window->findChild<SettingsDialog *>(), nullptr);
}

} // namespace
