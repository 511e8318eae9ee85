#include <climits>

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDropEvent>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <gtest/gtest.h>

#include "controls/controlsupport.h"
#include "controls/lineinput_dialogs.h"
#include "controls/lineinput_edit.h"
#include "controls/vxlinein.h"
#include "support/testsupport.h"

using namespace Qt::StringLiterals;

using valtrona::LineInputRules;
using valtrona::VxLineIn;

namespace {

// Answers the dialogs without a window and remembers what it was asked.
class FakeDialogs : public valtrona::LineInputDialogs
{
public:
    QString answer;
    QStringList answers;
    QStringList calls;
    QString caption;
    QString start;
    QString filter;
    bool foldersOnly = false;
    QWidget *parent = nullptr;

    QString openFile(QWidget *p, const QString &c, const QString &s, const QString &f) override
    {
        remember(u"open"_s, p, c, s, f);
        return answer;
    }
    QStringList openFiles(QWidget *p, const QString &c, const QString &s, const QString &f) override
    {
        remember(u"openMany"_s, p, c, s, f);
        return answers;
    }
    QString saveFile(QWidget *p, const QString &c, const QString &s, const QString &f) override
    {
        remember(u"save"_s, p, c, s, f);
        return answer;
    }
    QString chooseFolder(QWidget *p, const QString &c, const QString &s, bool only) override
    {
        remember(u"folder"_s, p, c, s, QString());
        foldersOnly = only;
        return answer;
    }

private:
    void remember(const QString &call, QWidget *p, const QString &c, const QString &s, const QString &f)
    {
        calls.append(call);
        parent = p;
        caption = c;
        start = s;
        filter = f;
    }
};

// Records the line's events in the order they arrive.
QStringList *recordEvents(VxLineIn &line, QStringList *log)
{
    QObject::connect(&line, &VxLineIn::beforeButtonClicked, &line, [log] { log->append(u"before"_s); });
    QObject::connect(&line, &VxLineIn::buttonClicked, &line, [log] { log->append(u"clicked"_s); });
    QObject::connect(&line, &VxLineIn::afterButtonClicked, &line, [log] { log->append(u"after"_s); });
    QObject::connect(&line, &VxLineIn::change, &line, [log] { log->append(u"change"_s); });
    QObject::connect(&line, &VxLineIn::afterButtonClickedFinished, &line, [log] { log->append(u"finished"_s); });
    return log;
}

QLineEdit *txt(VxLineIn &line)
{
    return line.findChild<QLineEdit *>(u"txt"_s);
}

// --- The click sequence ----------------------------------------------------

struct ClickCase
{
    const char *name;
    int controlStyle;
    int commandStyle;
    const char *answer;    // what the dialog answers ("" = cancelled)
    const char *dialog;    // which dialog is expected to open ("" = none)
    const char *textAfter; // the line's text afterwards
    const char *events;    // the events, space-separated
};

class ClickSequence : public ::testing::TestWithParam<ClickCase>
{
};

TEST_P(ClickSequence, RaisesItsEventsInOrderAndSetsTheText)
{
    const ClickCase c = GetParam();
    VxLineIn line;
    auto dialogs = std::make_shared<FakeDialogs>();
    dialogs->answer = QString::fromUtf8(c.answer);
    dialogs->answers = dialogs->answer.isEmpty() ? QStringList() : dialogs->answer.split(u'|');
    line.setDialogs(dialogs);
    line.setControlStyle(c.controlStyle);
    line.setCommandStyle(c.commandStyle);
    line.setText(u"/alt/wert.txt"_s);
    line.addItem(u"eins"_s);
    line.setListIndex(0);
    QStringList log;
    recordEvents(line, &log);

    line.buttonControl()->click();

    EXPECT_EQ(log.join(u' '), QString::fromLatin1(c.events));
    EXPECT_EQ(line.text(), QString::fromUtf8(c.textAfter));
    EXPECT_EQ(dialogs->calls.join(u' '), QString::fromLatin1(c.dialog));
}

INSTANTIATE_TEST_SUITE_P(
    Styles, ClickSequence,
    ::testing::Values(
        ClickCase{"clear", 0, 0, "", "", "", "before after change finished"},
        ClickCase{"open", 0, 1, "/neu/a.txt", "open", "/neu/a.txt", "before after change finished"},
        ClickCase{"openCancelled", 0, 1, "", "open", "/alt/wert.txt", "before after finished"},
        ClickCase{"openSameFile", 0, 1, "/alt/wert.txt", "open", "/alt/wert.txt", "before after finished"},
        ClickCase{"save", 0, 2, "/neu/b.txt", "save", "/neu/b.txt", "before after change finished"},
        ClickCase{"saveCancelled", 0, 2, "", "save", "/alt/wert.txt", "before after finished"},
        ClickCase{"folder", 0, 3, "/ziel//bilder/", "folder", "/ziel/bilder", "before after change finished"},
        ClickCase{"folderCancelled", 0, 3, "", "folder", "/alt/wert.txt", "before after finished"},
        ClickCase{"report", 0, 4, "/x", "", "/alt/wert.txt", "before clicked after finished"},
        ClickCase{"copy", 0, 5, "", "", "/alt/wert.txt", "before after finished"},
        ClickCase{"openMany", 0, 6, "/a.txt|/b.txt", "openMany", "/a.txt|/b.txt", "before after change finished"},
        ClickCase{"unknownStyle", 0, 7, "/x", "", "/alt/wert.txt", "before after finished"},
        ClickCase{"memoOpen", 2, 1, "/m.txt", "open", "/m.txt", "before after change finished"},
        ClickCase{"displayFolder", 3, 3, "/d", "folder", "/d", "before after change finished"},
        ClickCase{"secondTextReport", 4, 4, "", "", "/alt/wert.txt", "before clicked after finished"},
        // On a combo line the clear empties the combo; the rest only report.
        ClickCase{"comboClear", 1, 0, "", "", "/alt/wert.txt", "before change after finished"},
        ClickCase{"comboOpen", 1, 1, "/x", "", "/alt/wert.txt", "before clicked after finished"},
        ClickCase{"comboSave", 1, 2, "/x", "", "/alt/wert.txt", "before clicked after finished"},
        ClickCase{"comboFolder", 1, 3, "/x", "", "/alt/wert.txt", "before clicked after finished"},
        ClickCase{"comboCopy", 1, 5, "/x", "", "/alt/wert.txt", "before clicked after finished"},
        ClickCase{"comboOpenMany", 1, 6, "/x", "", "/alt/wert.txt", "before clicked after finished"}),
    [](const ::testing::TestParamInfo<ClickCase> &param) { return std::string(param.param.name); });

TEST(VxLineIn, ClickLeavesTheFocusOnTheElementOfTheInputStyle)
{
    QWidget window;
    auto *line = new VxLineIn(&window);
    auto *elsewhere = new QLineEdit(&window);
    elsewhere->move(0, 40);
    line->setCommandStyle(4);
    window.show();
    QApplication::setActiveWindow(&window);
    if (!QTest::qWaitForWindowActive(&window))
        GTEST_SKIP() << "no active window on this platform";

    const struct
    {
        int style;
        const char *element;
    } cases[] = {{0, "txt"}, {1, "cmb2"}, {2, "mem"}, {4, "txi"}};
    for (const auto &c : cases) {
        line->setControlStyle(c.style);
        elsewhere->setFocus();
        line->clickButton();
        ASSERT_NE(QApplication::focusWidget(), nullptr) << c.style;
        EXPECT_EQ(QApplication::focusWidget()->objectName(), QString::fromLatin1(c.element)) << c.style;
    }
    // The display field of style 3 takes no focus, and its hidden text box cannot.
    line->setControlStyle(3);
    elsewhere->setFocus();
    line->clickButton();
    EXPECT_EQ(QApplication::focusWidget(), elsewhere);

    line->setControlStyle(0);
    line->setSuppressFocus(true);
    elsewhere->setFocus();
    line->clickButton();
    EXPECT_EQ(QApplication::focusWidget(), elsewhere);
}

TEST(VxLineIn, FocusOfTextAndComboIsReported)
{
    QWidget window;
    auto *line = new VxLineIn(&window);
    auto *elsewhere = new QLineEdit(&window);
    elsewhere->move(0, 40);
    window.show();
    QApplication::setActiveWindow(&window);
    if (!QTest::qWaitForWindowActive(&window))
        GTEST_SKIP() << "no active window on this platform";
    QStringList log;
    QObject::connect(line, &VxLineIn::gotFocusText, line, [&] { log.append(u"gotText"_s); });
    QObject::connect(line, &VxLineIn::lostFocusText, line, [&] { log.append(u"lostText"_s); });
    QObject::connect(line, &VxLineIn::gotFocusCombo, line, [&] { log.append(u"gotCombo"_s); });
    QObject::connect(line, &VxLineIn::lostFocusCombo, line, [&] { log.append(u"lostCombo"_s); });

    elsewhere->setFocus();
    log.clear();
    line->setActive();
    elsewhere->setFocus();
    line->setControlStyle(1);
    line->setActive();
    elsewhere->setFocus();
    EXPECT_EQ(log.join(u' '), u"gotText lostText gotCombo lostCombo"_s);
}

TEST(VxLineIn, ComboClearLeavesNoSelectionAndNoText)
{
    VxLineIn line;
    line.setControlStyle(1);
    line.setComboStyle(0);
    line.addItem(u"eins"_s);
    line.setListIndex(0);
    line.clickButton();
    EXPECT_EQ(line.listIndex(), -1);
    EXPECT_EQ(line.comboText(), QString());
}

TEST(VxLineIn, CopyPutsTheTextOnTheClipboard)
{
    VxLineIn line;
    line.setCommandStyle(5);
    line.setText(u"Zu kopieren"_s);
    QGuiApplication::clipboard()->setText(u"vorher"_s);
    line.clickButton();
    EXPECT_EQ(QGuiApplication::clipboard()->text(), u"Zu kopieren"_s);
}

TEST(VxLineIn, DialogsGetCaptionsFilterStartPathAndOwner)
{
    QWidget window;
    auto *line = new VxLineIn(&window);
    auto dialogs = std::make_shared<FakeDialogs>();
    line->setDialogs(dialogs);

    line->setCommandStyle(1);
    line->setText(u"/daten/alt.txt"_s);
    line->setDefaultFilename(u"neu.txt"_s);
    line->clickButton();
    EXPECT_EQ(dialogs->caption, u"Datei öffnen : "_s);
    EXPECT_EQ(dialogs->filter, u"Textdatei (*.txt);;Alle Dateien (*.*)"_s);
    EXPECT_EQ(dialogs->start, u"/daten/neu.txt"_s);
    EXPECT_EQ(dialogs->parent, &window);

    // Empty captions fall back to the library's texts.
    const struct
    {
        int command;
        const char *property;
        QString expected;
    } captions[] = {{1, "DlgOpenCaption", u"Datei öffnen :"_s},
                    {6, "DlgOpenCaption", u"Datei öffnen :"_s},
                    {2, "DlgSaveCaption", u"Datei speichern :"_s},
                    {3, "DlgPathCaption", u"Wählen Sie ein Verzeichnis :"_s}};
    for (const auto &c : captions) {
        line->setCommandStyle(c.command);
        line->setProperty(c.property, QString());
        line->clickButton();
        EXPECT_EQ(dialogs->caption, c.expected) << c.command;
    }
    line->setDlgPathCaption(u"Ziel wählen"_s);
    line->setDlgFolderStyle(0);
    line->clickButton();
    EXPECT_EQ(dialogs->caption, u"Ziel wählen"_s);
    EXPECT_FALSE(dialogs->foldersOnly);

    // The host may name another owner for the dialog.
    QWidget other;
    QObject::connect(line, &VxLineIn::requestMainForm, line, [&other](QWidget **form) { *form = &other; });
    line->clickButton();
    EXPECT_EQ(dialogs->parent, &other);
}

// Drives Qt's own dialog: looks at it once it is up, then closes it.
struct OpenDialog
{
    QString title;
    QStringList filters;
    QString directory;
    QStringList selected;
};

void answerDialog(OpenDialog *seen, const QString &choose)
{
    QTimer::singleShot(0, [seen, choose] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (!dialog) {
            answerDialog(seen, choose); // not up yet
            return;
        }
        seen->title = dialog->windowTitle();
        seen->filters = dialog->nameFilters();
        seen->directory = dialog->directory().absolutePath();
        seen->selected = dialog->selectedFiles();
        if (choose.isEmpty()) {
            dialog->reject();
        } else {
            dialog->selectFile(choose);
            QMetaObject::invokeMethod(dialog, "accept");
        }
    });
}

TEST(VxLineIn, StandardDialogsStartNearTheTextAndCancelKeepsIt)
{
    valtrona::test::Sandbox sandbox;
    const QString chosen = sandbox.writeFile(u"bild.txt"_s, "x");
    VxLineIn line;
    line.setCommandStyle(1);
    line.setText(sandbox.filePath(u"fehlt/auch/alt.txt"_s));
    QSignalSpy change(&line, &VxLineIn::change);

    OpenDialog seen;
    answerDialog(&seen, QString());
    line.clickButton();
    EXPECT_EQ(seen.title, u"Datei öffnen : "_s);
    EXPECT_EQ(seen.filters, QStringList({u"Textdatei (*.txt)"_s, u"Alle Dateien (*)"_s}));
    EXPECT_EQ(seen.directory, sandbox.path()); // nearest folder that exists
    EXPECT_EQ(line.text(), sandbox.filePath(u"fehlt/auch/alt.txt"_s));
    EXPECT_EQ(change.count(), 0);

    answerDialog(&seen, chosen);
    line.clickButton();
    EXPECT_EQ(line.text(), chosen);
    EXPECT_EQ(change.count(), 1);

    line.setCommandStyle(3);
    line.setText(sandbox.filePath(u"neu/unter"_s));
    answerDialog(&seen, QString());
    line.clickButton();
    EXPECT_EQ(seen.title, u"Wählen Sie ein Verzeichnis : "_s);
    EXPECT_EQ(seen.directory, sandbox.path());
    EXPECT_EQ(line.text(), sandbox.filePath(u"neu/unter"_s));
}

TEST(VxLineIn, DesignModeRefusesTheClick)
{
    VxLineIn line;
    line.setDesignMode(true);
    line.setCommandStyle(4);
    QStringList log;
    recordEvents(line, &log);
    QStringList messages;
    const auto previous = valtrona::setControlMessageHandler(
        [&](QWidget *, const QString &text) { messages.append(text); });
    line.clickButton();
    valtrona::setControlMessageHandler(previous);
    EXPECT_TRUE(log.isEmpty());
    EXPECT_EQ(messages, QStringList{u"Zur Entwurfszeit nicht gültig !"_s});
}

TEST(VxLineIn, EnterActsAsAClickOnlyWhenAsked)
{
    VxLineIn line;
    line.setCommandStyle(4);
    QSignalSpy clicked(&line, &VxLineIn::buttonClicked);
    QTest::keyClick(txt(line), Qt::Key_Return);
    EXPECT_EQ(clicked.count(), 0);
    line.setButtonClickOnEnter(true);
    QTest::keyClick(txt(line), Qt::Key_Return);
    EXPECT_EQ(clicked.count(), 1);
}

// --- Filter and start path -------------------------------------------------

TEST(LineInputFilter, PairsTypesWithExtensionsAndEndsWithAllFiles)
{
    const struct
    {
        const char *types;
        const char *extensions;
        const char *expected;
    } cases[] = {
        {"Textdatei", "txt", "Textdatei (*.txt);;Alle Dateien (*.*)"},
        {"JPEG-Bild|PNG-Bild|GIF-Bild", "jpg|png", "JPEG-Bild (*.jpg);;PNG-Bild (*.png);;Alle Dateien (*.*)"},
        {"Bild", "jpg|png", "Bild (*.jpg);;Alle Dateien (*.*)"},
        {" Bild ", " jpg ", "Bild (*.jpg);;Alle Dateien (*.*)"},
        {"Leer|Bild", "|png", "Bild (*.png);;Alle Dateien (*.*)"},
        {"", "", "Alle Dateien (*.*)"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(valtrona::lineInputFilter(QString::fromUtf8(c.types), QString::fromUtf8(c.extensions)),
                  QString::fromUtf8(c.expected))
            << c.types << " / " << c.extensions;
}

TEST(LineInputFilter, AllFilesTextFollowsTheLanguageTable)
{
    valtrona::setControlText(valtrona::ControlText::AllFiles, u"All files"_s);
    const QString filter = valtrona::lineInputFilter(u"Text"_s, u"txt"_s);
    valtrona::setControlText(valtrona::ControlText::AllFiles, QString());
    EXPECT_EQ(filter, u"Text (*.txt);;All files (*.*)"_s);
    EXPECT_EQ(valtrona::controlText(valtrona::ControlText::AllFiles), u"Alle Dateien"_s);
}

TEST(LineInputStartPath, ProposesTheDefaultNameInTheLinesDirectory)
{
    valtrona::test::Sandbox sandbox;
    const QString dir = sandbox.path();
    const QString file = sandbox.writeFile(u"alt.txt"_s, "x");
    const struct
    {
        QString text;
        QString name;
        QString expected;
    } cases[] = {
        {QString(), QString(), QString()},
        {QString(), u"neu.txt"_s, u"neu.txt"_s},
        {dir, QString(), dir},
        {dir, u"neu.txt"_s, dir + u"/neu.txt"_s},
        {dir + u"/"_s, u"neu.txt"_s, dir + u"/neu.txt"_s},
        {file, QString(), file},
        {file, u"neu.txt"_s, dir + u"/neu.txt"_s},
        {u"C:\\Bilder\\a.jpg"_s, QString(), u"C:\\Bilder\\a.jpg"_s},
        {u"/a/eins.txt|/a/zwei.txt"_s, QString(), u"/a/eins.txt"_s},
    };
    for (const auto &c : cases)
        EXPECT_EQ(valtrona::lineInputStartPath(c.text, c.name), c.expected) << c.text.toStdString();
}

// --- Mask and length -------------------------------------------------------

TEST(LineInputRules, CleanKeepsWhatTheStyleAndMaskAllow)
{
    const struct
    {
        int style;
        const char *mask;
        const char *input;
        const char *expected;
    } cases[] = {
        {0, "*", "Frei & offen", "Frei & offen"},
        {0, "", "leer heißt alles", "leer heißt alles"},
        {0, "01234", "0815-4711", "01411"},
        {1, "*", "gRoß", "GROSS"},
        {2, "*", "KLEIN", "klein"},
        {1, "ABC", "abcd", "ABC"},
        {9, "*", "a1b2-3", "123"},
        {9, "01234567", "0123456789", "01234567"},
        {10, "*", "-12-3", "-123"},
        {10, "*", "1-2", "12"},
        {11, "*", "-1,5.3x", "-1,53"},
        {0, "*", "eins\nzwei", "einszwei"},
    };
    for (const auto &c : cases) {
        LineInputRules rules;
        rules.textBoxStyle = c.style;
        rules.mask = QString::fromUtf8(c.mask);
        EXPECT_EQ(rules.clean(QString::fromUtf8(c.input)), QString::fromUtf8(c.expected))
            << c.style << " " << c.mask << " " << c.input;
    }
}

TEST(VxLineIn, TypingAndPastingKeepTheAllowedCharactersThatFit)
{
    const struct
    {
        bool paste; // else typed key by key
        int style;
        const char *mask;
        int maxLength;
        const char *before;
        int cursor;
        const char *input;
        const char *expected;
    } cases[] = {
        {false, 9, "01234", 1, "", 0, "9a3 4", "3"},
        {false, 0, "*", 2, "12", 1, "3", "12"}, // a full line takes nothing more
        {true, 9, "*", 3, "12", 2, "a3b4c5", "123"},
        {true, 0, "*", 4, "ab", 1, "XYZ", "aXYb"},
        {true, 0, "01", 0, "1", 0, "2", "1"}, // nothing allowed: text stays
        {true, 1, "*", 0, "", 0, "straße", "STRASSE"},
        {true, 11, "*", 0, "1,5", 3, ",25", "1,525"},
    };
    for (const auto &c : cases) {
        VxLineIn line;
        line.setTextBoxStyle(c.style);
        line.setTextMask(QString::fromUtf8(c.mask));
        line.setMaxLength(c.maxLength);
        line.setText(QString::fromUtf8(c.before));
        txt(line)->setCursorPosition(c.cursor);
        QSignalSpy change(&line, &VxLineIn::change);
        if (c.paste) {
            QGuiApplication::clipboard()->setText(QString::fromUtf8(c.input));
            txt(line)->paste();
        } else {
            QTest::keyClicks(txt(line), QString::fromUtf8(c.input));
        }
        EXPECT_EQ(line.text(), QString::fromUtf8(c.expected)) << c.before << " + " << c.input;
        EXPECT_EQ(txt(line)->text(), line.text());
        EXPECT_EQ(change.count(), line.text() == QString::fromUtf8(c.before) ? 0 : 1) << c.input;
        EXPECT_EQ(line.edited(), change.count() > 0) << c.input;
    }
}

TEST(VxLineIn, MultiLineBoxHoldsToMaskAndLength)
{
    VxLineIn line;
    line.setControlStyle(2);
    line.setTextMask(u"ab"_s);
    line.setMaxLength(4);
    auto *mem = line.findChild<QPlainTextEdit *>(u"mem"_s);
    ASSERT_NE(mem, nullptr);
    QTest::keyClicks(mem, u"axb"_s);
    EXPECT_EQ(line.text(), u"ab"_s);
    QGuiApplication::clipboard()->setText(u"bbbb"_s);
    mem->paste();
    EXPECT_EQ(line.text(), u"abbb"_s);
}

TEST(VxLineIn, HostMayReplaceOrDropATypedCharacter)
{
    VxLineIn line;
    line.setTextMask(u"0123456789"_s);
    QObject::connect(&line, &VxLineIn::keyPressBeforeCheck, &line, [](QChar *c) {
        if (*c == u'o')
            *c = u'0';
        else if (*c == u'5')
            *c = QChar();
    });
    QTest::keyClicks(txt(line), u"1o5x2"_s);
    EXPECT_EQ(line.text(), u"102"_s);
}

// --- Text across the elements ----------------------------------------------

TEST(VxLineIn, TextIsSharedByEveryInputElementAndReportedOnce)
{
    VxLineIn line;
    QSignalSpy change(&line, &VxLineIn::change);
    line.setText(u"Wert & mehr"_s);
    line.setText(u"Wert & mehr"_s);
    EXPECT_EQ(change.count(), 1);
    EXPECT_EQ(line.findChild<QLineEdit *>(u"txi"_s)->text(), u"Wert & mehr"_s);
    EXPECT_EQ(line.findChild<QPlainTextEdit *>(u"mem"_s)->toPlainText(), u"Wert & mehr"_s);
    EXPECT_EQ(line.findChild<QLabel *>(u"anz"_s)->text(), u"Wert & mehr"_s);

    // Code may set what the user could not type.
    line.setTextBoxStyle(9);
    line.setText(u"abc"_s);
    EXPECT_EQ(line.text(), u"abc"_s);

    line.setControlStyle(4);
    auto *txi = line.findChild<QLineEdit *>(u"txi"_s);
    txi->end(false);
    QTest::keyClicks(txi, u"7"_s);
    EXPECT_EQ(line.text(), u"abc7"_s);
    EXPECT_EQ(txt(line)->text(), u"abc7"_s);
}

// --- Combo list ------------------------------------------------------------

TEST(VxLineIn, ComboItemsCarryDataAndTagsAndOutOfRangeReadsEmpty)
{
    VxLineIn line;
    line.setControlStyle(1);
    QSignalSpy change(&line, &VxLineIn::change);
    EXPECT_EQ(line.addItem(u"Pixel"_s, 0, u"PX"_s), 0);
    EXPECT_EQ(line.addItem(u"Prozent"_s, 1, u"PR"_s), 1);
    EXPECT_EQ(line.listIndex(), -1); // adding selects nothing
    EXPECT_EQ(change.count(), 0);

    EXPECT_TRUE(line.selectByItemTag(u"PR"_s));
    EXPECT_EQ(line.listIndex(), 1);
    EXPECT_EQ(line.itemData(line.listIndex()), 1);
    EXPECT_EQ(line.listFocusItemTag(), u"PR"_s);
    EXPECT_EQ(change.count(), 1);

    EXPECT_FALSE(line.selectByItemTag(u"XX"_s));
    EXPECT_EQ(line.listIndex(), 1);
    EXPECT_TRUE(line.selectByItemData(0));
    EXPECT_EQ(line.listIndex(), 0);
    EXPECT_FALSE(line.selectByItemData(7));
    EXPECT_EQ(line.listIndex(), 0);
    line.setListIndex(1);

    for (int index : {2, INT_MAX, -2, INT_MIN}) {
        EXPECT_EQ(line.itemData(index), 0) << index;
        EXPECT_EQ(line.itemTag(index), QString()) << index;
        line.setItemData(index, 5);
    }
    line.setListIndex(INT_MAX);
    EXPECT_EQ(line.listIndex(), -1);
    EXPECT_EQ(line.listFocusItemTag(), QString());
    EXPECT_EQ(change.count(), 4);
}

TEST(VxLineIn, ComboStyleSwitchesBetweenEditableAndDropDown)
{
    VxLineIn line;
    line.setControlStyle(1);
    EXPECT_EQ(line.comboStyle(), 2);
    auto *combo = line.findChild<QComboBox *>();
    EXPECT_EQ(combo->objectName(), u"cmb2"_s);
    EXPECT_FALSE(combo->isEditable());
    line.setComboStyle(0);
    EXPECT_EQ(combo->objectName(), u"cmb0"_s);
    EXPECT_TRUE(combo->isEditable());

    QSignalSpy change(&line, &VxLineIn::change);
    QTest::keyClicks(combo->lineEdit(), u"0640x0480"_s);
    EXPECT_EQ(line.comboText(), u"0640x0480"_s);
    EXPECT_EQ(change.count(), 9);
}

// --- Drops -----------------------------------------------------------------

bool dropOn(QWidget *target, const QList<QUrl> &urls)
{
    QMimeData mime;
    mime.setUrls(urls);
    // A drop reaches only a widget that took the drag when it entered.
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &enter);
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(target, &drop);
    return enter.isAccepted() && drop.isAccepted();
}

TEST(VxLineIn, DroppedFilesReplaceOrAppendToTheText)
{
    const QList<QUrl> two = {QUrl::fromLocalFile(u"/a/eins.jpg"_s), QUrl::fromLocalFile(u"/a/zwei.jpg"_s)};
    const struct
    {
        bool multi;
        bool append;
        const char *expected;
    } cases[] = {
        {false, false, "/a/eins.jpg"},
        {true, false, "/a/eins.jpg|/a/zwei.jpg"},
        {false, true, "/alt|/a/eins.jpg"},
        {true, true, "/alt|/a/eins.jpg|/a/zwei.jpg"},
    };
    for (const auto &c : cases) {
        VxLineIn line;
        line.setText(u"/alt"_s);
        line.setAllowDDMultiFiles(c.multi);
        line.setAppendOleDDFiles(c.append);
        QSignalSpy done(&line, &VxLineIn::oleDragDropDone);
        QSignalSpy change(&line, &VxLineIn::change);
        EXPECT_TRUE(dropOn(txt(line), two));
        EXPECT_EQ(line.text(), QString::fromLatin1(c.expected));
        EXPECT_EQ(done.count(), 1);
        EXPECT_EQ(change.count(), 1);
    }
}

TEST(VxLineIn, DropsWithoutLocalFilesOrOnALockedLineAreRefused)
{
    VxLineIn line;
    line.setText(u"/alt"_s);
    QSignalSpy done(&line, &VxLineIn::oleDragDropDone);
    dropOn(txt(line), {QUrl(u"https://example.org/a.jpg"_s)});
    line.setLocked(true);
    dropOn(txt(line), {QUrl::fromLocalFile(u"/a/b.jpg"_s)});
    EXPECT_EQ(line.text(), u"/alt"_s);
    EXPECT_EQ(done.count(), 0);
}

// --- Layout ----------------------------------------------------------------

TEST(VxLineIn, LaysOutLabelElementAndButtonInOneRow)
{
    QWidget window;
    auto *line = new VxLineIn(&window);
    line->setGeometry(0, 0, 400, 26);
    window.show();
    const auto s = [line](int pixels) { return valtrona::scaledPixels(pixels, line); };
    const QLabel *label = line->findChild<QLabel *>(u"lbl"_s);
    const QPushButton *button = line->buttonControl();

    EXPECT_EQ(label->geometry(), QRect(0, s(2), s(125), 26 - s(2)));
    EXPECT_EQ(line->ctlLeft(), s(125) + s(4));
    EXPECT_EQ(button->geometry(), QRect(400 - s(32), s(2), s(32), 26 - s(2)));
    EXPECT_EQ(line->ctlLeft() + line->ctlWidth(), 400 - s(32) - s(4));

    line->setButtonShow(false);
    line->setLeftOffset(10);
    line->setFixedBlockWidth(100);
    line->setCheckboxShow(true);
    const int check = line->findChild<QCheckBox *>(u"chk"_s)->width();
    EXPECT_EQ(label->x(), s(10) + check + s(4));
    EXPECT_EQ(label->x() + label->width(), s(10) + s(100)); // check box and label share the block
    EXPECT_EQ(line->ctlLeft() + line->ctlWidth(), 400);
}

TEST(VxLineIn, LabelAndButtonMouseEventsReachTheHost)
{
    VxLineIn line;
    line.resize(300, 26);
    QLabel *label = line.findChild<QLabel *>(u"lbl"_s);
    QStringList log;
    QObject::connect(&line, &VxLineIn::labelMouseDown, &line,
                     [&](Qt::MouseButton button, const QPoint &) { log.append(u"down%1"_s.arg(int(button))); });
    QObject::connect(&line, &VxLineIn::labelMouseUp, &line,
                     [&](Qt::MouseButton button, const QPoint &) { log.append(u"up%1"_s.arg(int(button))); });
    QObject::connect(&line, &VxLineIn::labelClick, &line, [&] { log.append(u"click"_s); });
    QObject::connect(&line, &VxLineIn::labelDblClick, &line, [&] { log.append(u"double"_s); });
    QObject::connect(&line, &VxLineIn::buttonRightClick, &line, [&] { log.append(u"right"_s); });
    QSignalSpy clicked(&line, &VxLineIn::afterButtonClickedFinished);

    QTest::mouseClick(label, Qt::LeftButton);
    QTest::mouseClick(label, Qt::RightButton);
    QTest::mouseDClick(label, Qt::LeftButton);
    QTest::mouseClick(line.buttonControl(), Qt::RightButton);

    EXPECT_EQ(log.join(u' '), u"down1 up1 click down2 up2 double right"_s);
    EXPECT_EQ(clicked.count(), 0); // a right click is no button click
}

TEST(VxLineIn, CaptionTooWideForItsColumnIsCutWithAnEllipsisAndShownInTheTooltip)
{
    VxLineIn line;
    line.resize(400, 24);
    line.setLabelWidth(40);
    line.setCaption(u"GDI CompositingQuality :"_s);
    const QLabel *label = line.findChild<QLabel *>(u"lbl"_s);
    EXPECT_TRUE(label->text().endsWith(QChar(0x2026))) << label->text().toStdString();
    EXPECT_EQ(label->toolTip(), u"GDI CompositingQuality :"_s);
    EXPECT_EQ(line.caption(), u"GDI CompositingQuality :"_s);

    line.autoSizeLabel();
    EXPECT_EQ(label->text(), u"GDI CompositingQuality :"_s);
    EXPECT_EQ(label->toolTip(), QString());

    line.setLabelToolTip(u"Hilfe"_s);
    line.setLabelWidth(40);
    EXPECT_EQ(label->toolTip(), u"Hilfe"_s); // the host's tooltip wins
}

// --- Check box, hooks, defaults --------------------------------------------

TEST(VxLineIn, CheckBoxReportsItsChanges)
{
    VxLineIn line;
    line.setCheckboxShow(true);
    QSignalSpy spy(&line, &VxLineIn::checkBoxChanged);
    EXPECT_TRUE(line.value());
    line.findChild<QCheckBox *>(u"chk"_s)->click();
    EXPECT_FALSE(line.value());
    line.setValue(false);
    EXPECT_EQ(spy.count(), 1);
}

TEST(VxLineIn, LanguageHooksOfferCaptionsOnlyWhenSwitchedOn)
{
    VxLineIn line;
    line.setCaption(u"Zielverzeichnis :"_s);
    EXPECT_EQ(line.ctlClassName(), u"VxLineIn"_s);
    EXPECT_TRUE(line.ctlEnumAllCaptionsInUCtl().isEmpty());

    line.setCtlUseLng(1);
    const auto captions = line.ctlEnumAllCaptionsInUCtl();
    EXPECT_TRUE(captions.contains(qMakePair(u"Caption"_s, u"Zielverzeichnis :"_s)));
    EXPECT_EQ(line.ctlGetLngPropertyType(u"Caption"_s), valtrona::LngPropertyType::Caption);
    EXPECT_EQ(line.ctlGetLngPropertyType(u"ButtonToolTip"_s), valtrona::LngPropertyType::ToolTip);
    EXPECT_EQ(line.ctlGetLngPropertyType(u"Text"_s), valtrona::LngPropertyType::None);

    EXPECT_TRUE(line.ctlSetUserControlLanguage(u"Caption"_s, u"Target folder:"_s));
    EXPECT_EQ(line.findChild<QLabel *>(u"lbl"_s)->text(), u"Target folder:"_s);
    EXPECT_FALSE(line.ctlSetUserControlLanguage(u"Text"_s, u"nein"_s));
    EXPECT_EQ(line.text(), QString());
}

TEST(VxLineIn, TerminatedLineStaysQuiet)
{
    VxLineIn line;
    line.setCommandStyle(4);
    QStringList log;
    recordEvents(line, &log);
    line.terminateControl();
    line.clickButton();
    line.setText(u"x"_s);
    QTest::keyClicks(txt(line), u"y"_s);
    EXPECT_TRUE(log.isEmpty());
}

TEST(VxLineIn, PersistedPropertiesStartWithTheirDefaults)
{
    VxLineIn line;
    const QList<QPair<const char *, QVariant>> defaults = {
        {"ButtonWidth", 32}, {"LabelWidth", 125}, {"FixedBlockWidth", 0}, {"ControlDistance", 4},
        {"TopDistance", 2}, {"DlgFileType", u"Textdatei"_s}, {"DlgFileExtension", u"txt"_s},
        {"DlgOpenCaption", u"Datei öffnen : "_s}, {"DlgSaveCaption", u"Datei speichern : "_s},
        {"DlgPathCaption", u"Wählen Sie ein Verzeichnis : "_s}, {"ButtonShow", true}, {"TextBoxStyle", 0},
        {"TextMask", u"*"_s}, {"ControlStyle", 0}, {"GreyControl", false}, {"CommandStyle", 0},
        {"PictureType", 0}, {"AutoAmbientChanges", true}, {"DefaultFilename", QString()},
        {"AppendOleDDFiles", false}, {"AllowDDMultiFiles", false}, {"Caption", u"Label : "_s},
        {"LabelAlignment", QString()}, {"LabelToolTip", QString()}, {"CheckboxShow", false}, {"Value", true},
        {"Text", QString()}, {"TextBackColor", 0x80000005u}, {"Locked", false}, {"PasswordChar", QString()},
        {"MaxLength", 0}, {"Enabled", true}, {"TextToolTip", QString()}, {"Alignment", 0},
        {"UseMnemonic", false}, {"ButtonClickOnEnter", false}, {"ButtonCaption", QString()},
        {"ButtonMaskColor", 0xC0C0C0u}, {"ButtonUseMaskColor", true}, {"ButtonToolTip", QString()},
        {"CTLUseLng", 0}, {"DlgFolderStyle", 1}, {"DlgFolderNamesAsis", false}, {"ComboLines", 8},
        {"ComboStyle", 2}, {"LeftOffset", 0}, {"ShowImage", false},
    };
    for (const auto &[name, value] : defaults)
        EXPECT_EQ(line.property(name), value) << name;
    EXPECT_TRUE(line.buttonPicture().isNull());
    EXPECT_TRUE(line.linePicture().isNull());
}

} // namespace
