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
#include "controlstest.h"
#include "support/testsupport.h"

using namespace Qt::StringLiterals;

namespace valtrona {
namespace {

// Answers the dialogs without a window and remembers the last question.
class FakeDialogs : public LineInputDialogs
{
public:
    QString answer; // "" = cancelled; several paths separated by "|"
    QStringList calls;
    QString caption, start, filter;
    bool foldersOnly = false;
    QWidget *parent = nullptr;

    QString openFile(QWidget *p, const QString &c, const QString &s, const QString &f) override
    {
        return ask(u"open"_s, p, c, s, f);
    }
    QStringList openFiles(QWidget *p, const QString &c, const QString &s, const QString &f) override
    {
        return ask(u"openMany"_s, p, c, s, f).split(u'|', Qt::SkipEmptyParts);
    }
    QString saveFile(QWidget *p, const QString &c, const QString &s, const QString &f) override
    {
        return ask(u"save"_s, p, c, s, f);
    }
    QString chooseFolder(QWidget *p, const QString &c, const QString &s, bool only) override
    {
        foldersOnly = only;
        return ask(u"folder"_s, p, c, s, QString());
    }

private:
    QString ask(const QString &call, QWidget *p, const QString &c, const QString &s, const QString &f)
    {
        calls.append(call);
        std::tie(parent, caption, start, filter) = std::tie(p, c, s, f);
        return answer;
    }
};

// Records the events of the click sequence in the order they arrive.
void recordEvents(VxLineIn &line, QStringList *log)
{
    const auto record = [&line, log](auto signal, const QString &name) {
        QObject::connect(&line, signal, &line, [log, name] { log->append(name); });
    };
    record(&VxLineIn::beforeButtonClicked, u"before"_s);
    record(&VxLineIn::buttonClicked, u"clicked"_s);
    record(&VxLineIn::afterButtonClicked, u"after"_s);
    record(&VxLineIn::change, u"change"_s);
    record(&VxLineIn::afterButtonClickedFinished, u"finished"_s);
}

QLineEdit *txt(VxLineIn &line)
{
    return line.findChild<QLineEdit *>(u"txt"_s);
}

// --- The click sequence ----------------------------------------------------

TEST(VxLineIn, ClickRaisesItsEventsInOrderAndActsByCommandAndControlStyle)
{
    const struct
    {
        const char *name;
        int controlStyle, commandStyle;
        const char16_t *answer;   // what the dialog answers ("" = cancelled)
        const char16_t *dialog;   // which dialog is expected to open ("" = none)
        const char16_t *textAfter; // the line's text afterwards
        const char16_t *events;
    } cases[] = {
        {"clear", 0, 0, u"", u"", u"", u"before after change finished"},
        {"open", 0, 1, u"/neu/a.txt", u"open", u"/neu/a.txt", u"before after change finished"},
        {"openCancelled", 0, 1, u"", u"open", u"/alt/wert.txt", u"before after finished"},
        {"openSameFile", 0, 1, u"/alt/wert.txt", u"open", u"/alt/wert.txt", u"before after finished"},
        {"save", 0, 2, u"/neu/b.txt", u"save", u"/neu/b.txt", u"before after change finished"},
        {"folder", 0, 3, u"/ziel//bilder/", u"folder", u"/ziel/bilder", u"before after change finished"},
        {"report", 0, 4, u"/x", u"", u"/alt/wert.txt", u"before clicked after finished"},
        {"copy", 0, 5, u"", u"", u"/alt/wert.txt", u"before after finished"},
        {"openMany", 0, 6, u"/a.txt|/b.txt", u"openMany", u"/a.txt|/b.txt", u"before after change finished"},
        {"unknownCommand", 0, 7, u"/x", u"", u"/alt/wert.txt", u"before after finished"},
        {"memoSave", 2, 2, u"/m.txt", u"save", u"/m.txt", u"before after change finished"},
        {"displayFolder", 3, 3, u"/d", u"folder", u"/d", u"before after change finished"},
        {"secondTextReport", 4, 4, u"", u"", u"/alt/wert.txt", u"before clicked after finished"},
        {"unknownStyleOpens", 9, 1, u"/u", u"open", u"/u", u"before after change finished"},
        // On a combo line the clear empties the combo; the rest only report.
        {"comboClear", 1, 0, u"", u"", u"/alt/wert.txt", u"before change after finished"},
        {"comboOpen", 1, 1, u"/x", u"", u"/alt/wert.txt", u"before clicked after finished"},
        {"comboFolder", 1, 3, u"/x", u"", u"/alt/wert.txt", u"before clicked after finished"},
        {"comboCopy", 1, 5, u"/x", u"", u"/alt/wert.txt", u"before clicked after finished"},
        {"comboOpenMany", 1, 6, u"/x", u"", u"/alt/wert.txt", u"before clicked after finished"},
    };
    for (const auto &c : cases) {
        VxLineIn line;
        auto dialogs = std::make_shared<FakeDialogs>();
        dialogs->answer = QString::fromUtf16(c.answer);
        line.setDialogs(dialogs);
        line.setControlStyle(c.controlStyle);
        line.setCommandStyle(c.commandStyle);
        line.setText(u"/alt/wert.txt"_s);
        line.addItem(u"eins"_s);
        line.setListIndex(0);
        QGuiApplication::clipboard()->setText(u"vorher"_s);
        QStringList log;
        recordEvents(line, &log);

        line.buttonControl()->click();

        EXPECT_EQ(log.join(u' '), QString::fromUtf16(c.events)) << c.name;
        EXPECT_EQ(line.text(), QString::fromUtf16(c.textAfter)) << c.name;
        EXPECT_EQ(dialogs->calls.join(u' '), QString::fromUtf16(c.dialog)) << c.name;
        const bool comboClear = c.controlStyle == 1 && c.commandStyle == 0;
        EXPECT_EQ(line.listIndex(), comboClear ? -1 : 0) << c.name;
        const bool copied = c.controlStyle != 1 && c.commandStyle == 5;
        EXPECT_EQ(QGuiApplication::clipboard()->text(), copied ? line.text() : u"vorher"_s) << c.name;
    }
}

TEST(VxLineIn, ControlStyleShowsItsElementAndAClickFocusesIt)
{
    QWidget window;
    auto *line = new VxLineIn(&window);
    auto *elsewhere = new QLineEdit(&window);
    elsewhere->move(0, 40);
    line->setCommandStyle(4);
    window.show();
    QApplication::setActiveWindow(&window);
    const bool active = QTest::qWaitForWindowActive(&window);
    QStringList log;
    QObject::connect(line, &VxLineIn::gotFocusText, line, [&] { log.append(u"gotText"_s); });
    QObject::connect(line, &VxLineIn::lostFocusText, line, [&] { log.append(u"lostText"_s); });
    QObject::connect(line, &VxLineIn::gotFocusCombo, line, [&] { log.append(u"gotCombo"_s); });
    QObject::connect(line, &VxLineIn::lostFocusCombo, line, [&] { log.append(u"lostCombo"_s); });

    const struct
    {
        int style;
        const char16_t *shown;
        const char16_t *focused; // "" = the focus stays where it was
        const char16_t *focusEvents;
    } cases[] = {
        {0, u"txt", u"txt", u"gotText lostText"}, {1, u"cmb2", u"cmb2", u"gotCombo lostCombo"},
        {2, u"mem", u"mem", u"gotText lostText"}, {3, u"anz", u"", u""}, // the display field takes no focus
        {4, u"txi", u"txi", u"gotText lostText"}, {9, u"txt", u"txt", u"gotText lostText"},
    };
    for (const auto &c : cases) {
        line->setControlStyle(c.style);
        QStringList shown;
        for (const char16_t *name : {u"txt", u"txi", u"mem", u"cmb2", u"anz"}) {
            if (line->findChild<QWidget *>(QString::fromUtf16(name))->isVisibleTo(line))
                shown.append(QString::fromUtf16(name));
        }
        EXPECT_EQ(shown, QStringList {QString::fromUtf16(c.shown)}) << c.style;
        if (!active)
            continue;
        elsewhere->setFocus();
        log.clear();
        line->clickButton();
        const QString focused = QString::fromUtf16(c.focused);
        EXPECT_EQ(QApplication::focusWidget(), focused.isEmpty() ? elsewhere : line->findChild<QWidget *>(focused))
            << c.style;
        elsewhere->setFocus();
        EXPECT_EQ(log.join(u' '), QString::fromUtf16(c.focusEvents)) << c.style;
    }
    if (!active)
        GTEST_SKIP() << "no active window on this platform: focus not checked";
    line->setControlStyle(0);
    line->setSuppressFocus(true);
    line->clickButton();
    EXPECT_EQ(QApplication::focusWidget(), elsewhere);
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

    // Empty captions fall back to the library's texts; DlgFolderStyle 1 lists folders only.
    const struct
    {
        int command;
        const char *property;
        const char16_t *caption;
        int folderStyle;
        bool foldersOnly;
    } cases[] = {{1, "DlgOpenCaption", u"Datei öffnen :", 1, false},
                 {6, "DlgOpenCaption", u"Datei öffnen :", 1, false},
                 {2, "DlgSaveCaption", u"Datei speichern :", 1, false},
                 {3, "DlgPathCaption", u"Wählen Sie ein Verzeichnis :", 1, true},
                 {3, "DlgPathCaption", u"Wählen Sie ein Verzeichnis :", 0, false},
                 {3, "DlgPathCaption", u"Wählen Sie ein Verzeichnis :", 5, false}};
    for (const auto &c : cases) {
        line->setCommandStyle(c.command);
        line->setProperty(c.property, QString());
        line->setDlgFolderStyle(c.folderStyle);
        dialogs->foldersOnly = false;
        line->clickButton();
        EXPECT_EQ(dialogs->caption, QString::fromUtf16(c.caption)) << c.command;
        EXPECT_EQ(dialogs->foldersOnly, c.foldersOnly) << c.folderStyle;
    }

    // The host may name another owner for the dialog.
    QWidget other;
    QObject::connect(line, &VxLineIn::requestMainForm, line, [&other](QWidget **form) { *form = &other; });
    line->clickButton();
    EXPECT_EQ(dialogs->parent, &other);
}

TEST(VxLineIn, StandardDialogStartsInTheNearestFolderAndCancelKeepsTheText)
{
    test::Sandbox sandbox;
    const QString chosen = sandbox.writeFile(u"bild.txt"_s, "x");
    const QString missing = sandbox.filePath(u"fehlt/auch/alt.txt"_s);
    VxLineIn line;
    line.setCommandStyle(1);
    line.setText(missing);
    QSignalSpy change(&line, &VxLineIn::change);
    for (const QString &answer : {QString(), chosen}) {
        QStringList seen;
        QTimer::singleShot(0, &line, [&] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            seen = QStringList {dialog->windowTitle(), dialog->directory().absolutePath()};
            dialog->selectFile(answer);
            QMetaObject::invokeMethod(dialog, answer.isEmpty() ? "reject" : "accept");
        });
        line.clickButton();
        EXPECT_EQ(seen, QStringList({u"Datei öffnen : "_s, sandbox.path()}));
        EXPECT_EQ(line.text(), answer.isEmpty() ? missing : chosen);
        EXPECT_EQ(change.count(), answer.isEmpty() ? 0 : 1);
    }
}

TEST(VxLineIn, EnterClicksOnlyWhenAskedAndDesignModeAndTerminationStopTheClick)
{
    VxLineIn line;
    line.setCommandStyle(4);
    QStringList log;
    recordEvents(line, &log);
    QTest::keyClick(txt(line), Qt::Key_Return);
    EXPECT_TRUE(log.isEmpty());
    line.setButtonClickOnEnter(true);
    QTest::keyClick(txt(line), Qt::Key_Return);
    EXPECT_EQ(log.join(u' '), u"before clicked after finished"_s);

    log.clear();
    line.setDesignMode(true);
    EXPECT_EQ(test::controlMessages([&] { line.clickButton(); }), QStringList {u"Zur Entwurfszeit nicht gültig !"_s});
    line.setDesignMode(false);
    line.terminateControl();
    line.clickButton();
    line.setText(u"x"_s);
    QTest::keyClicks(txt(line), u"y"_s);
    EXPECT_TRUE(log.isEmpty());
}

// --- Filter, start path, mask and length -----------------------------------

TEST(LineInputFilter, PairsTypesWithExtensionsAndEndsWithAllFiles)
{
    const std::tuple<const char16_t *, const char16_t *, const char16_t *> cases[] = {
        {u"Textdatei", u"txt", u"Textdatei (*.txt);;Alle Dateien (*.*)"},
        {u"JPEG|PNG|GIF", u"jpg|png", u"JPEG (*.jpg);;PNG (*.png);;Alle Dateien (*.*)"},
        {u"Bild", u"jpg|png", u"Bild (*.jpg);;Alle Dateien (*.*)"},
        {u" Bild ", u" jpg ", u"Bild (*.jpg);;Alle Dateien (*.*)"},
        {u"Leer|Bild", u"|png", u"Bild (*.png);;Alle Dateien (*.*)"},
        {u"", u"", u"Alle Dateien (*.*)"},
    };
    for (const auto &[types, extensions, expected] : cases)
        EXPECT_EQ(lineInputFilter(QString::fromUtf16(types), QString::fromUtf16(extensions)),
                  QString::fromUtf16(expected));
    setControlText(ControlText::AllFiles, u"All files"_s);
    const QString translated = lineInputFilter(u"Text"_s, u"txt"_s);
    setControlText(ControlText::AllFiles, QString());
    EXPECT_EQ(translated, u"Text (*.txt);;All files (*.*)"_s);
}

TEST(LineInputStartPath, ProposesTheDefaultNameInTheLinesDirectory)
{
    test::Sandbox sandbox;
    const QString dir = sandbox.path();
    const QString file = sandbox.writeFile(u"alt.txt"_s, "x");
    const std::tuple<QString, QString, QString> cases[] = {
        {QString(), u"neu.txt"_s, u"neu.txt"_s},
        {dir, QString(), dir},
        {dir, u"neu.txt"_s, dir + u"/neu.txt"_s},
        {dir + u"/"_s, u"neu.txt"_s, dir + u"/neu.txt"_s},
        {file, QString(), file},
        {file, u"neu.txt"_s, dir + u"/neu.txt"_s},
        {u"C:\\Bilder\\a.jpg"_s, QString(), u"C:\\Bilder\\a.jpg"_s},
        {u"/a/eins.txt|/a/zwei.txt"_s, QString(), u"/a/eins.txt"_s},
    };
    for (const auto &[text, name, expected] : cases)
        EXPECT_EQ(lineInputStartPath(text, name), expected) << text.toStdString();
}

TEST(LineInputRules, CleanKeepsWhatTheStyleAndMaskAllow)
{
    const std::tuple<int, const char16_t *, const char16_t *, const char16_t *> cases[] = {
        {0, u"*", u"Frei & offen", u"Frei & offen"}, {0, u"", u"leer heißt alles", u"leer heißt alles"},
        {0, u"01234", u"0815-4711", u"01411"},     {1, u"*", u"gRoß", u"GROSS"},
        {2, u"*", u"KLEIN", u"klein"},             {1, u"ABC", u"abcd", u"ABC"},
        {9, u"*", u"a1b2-3", u"123"},              {10, u"*", u"-12-3", u"-123"},
        {10, u"*", u"1-2", u"12"},                 {11, u"*", u"-1,5.3x", u"-1,53"},
        {0, u"*", u"eins\nzwei", u"einszwei"},     {7, u"*", u"Ab-1", u"Ab-1"}, // unknown: any text
    };
    for (const auto &[style, mask, input, expected] : cases) {
        LineInputRules rules;
        rules.textBoxStyle = style;
        rules.mask = QString::fromUtf16(mask);
        EXPECT_EQ(rules.clean(QString::fromUtf16(input)), QString::fromUtf16(expected)) << style;
    }
}

TEST(VxLineIn, TypingAndPastingKeepTheAllowedCharactersThatFit)
{
    const struct
    {
        bool paste; // else typed key by key
        int style;
        const char16_t *mask;
        int maxLength;
        const char16_t *before;
        int cursor;
        const char16_t *input, *expected;
    } cases[] = {
        {false, 9, u"01234", 1, u"", 0, u"9a3 4", u"3"},
        {false, 0, u"*", 2, u"12", 1, u"3", u"12"}, // a full line takes nothing more
        {true, 9, u"*", 3, u"12", 2, u"a3b4c5", u"123"},
        {true, 0, u"*", 4, u"ab", 1, u"XYZ", u"aXYb"},
        {true, 0, u"01", 0, u"1", 0, u"2", u"1"}, // nothing allowed: text stays
        {true, 11, u"*", 0, u"1,5", 3, u",25", u"1,525"},
    };
    for (const auto &c : cases) {
        VxLineIn line;
        line.setTextBoxStyle(c.style);
        line.setTextMask(QString::fromUtf16(c.mask));
        line.setMaxLength(c.maxLength);
        line.setText(QString::fromUtf16(c.before));
        txt(line)->setCursorPosition(c.cursor);
        QSignalSpy change(&line, &VxLineIn::change);
        if (c.paste) {
            QGuiApplication::clipboard()->setText(QString::fromUtf16(c.input));
            txt(line)->paste();
        } else {
            QTest::keyClicks(txt(line), QString::fromUtf16(c.input));
        }
        const QString expected = QString::fromUtf16(c.expected);
        EXPECT_EQ(line.text(), expected) << QString::fromUtf16(c.input).toStdString();
        EXPECT_EQ(change.count(), expected == QString::fromUtf16(c.before) ? 0 : 1) << QString::fromUtf16(c.input).toStdString();
        EXPECT_EQ(line.edited(), change.count() > 0) << QString::fromUtf16(c.input).toStdString();
    }
}

TEST(VxLineIn, MultiLineBoxAndHostFilterHoldToTheRules)
{
    VxLineIn line;
    line.setControlStyle(2);
    line.setTextMask(u"ab"_s);
    line.setMaxLength(4);
    auto *mem = line.findChild<QPlainTextEdit *>(u"mem"_s);
    QTest::keyClicks(mem, u"axb"_s);
    EXPECT_EQ(line.text(), u"ab"_s);
    QGuiApplication::clipboard()->setText(u"bbbb"_s);
    mem->paste();
    EXPECT_EQ(line.text(), u"abbb"_s);

    VxLineIn digits;
    digits.setTextMask(u"0123456789"_s);
    QObject::connect(&digits, &VxLineIn::keyPressBeforeCheck, &digits, [](QChar *c) {
        if (*c == u'o')
            *c = u'0';
        else if (*c == u'5')
            *c = QChar();
    });
    QTest::keyClicks(txt(digits), u"1o5x2"_s);
    EXPECT_EQ(digits.text(), u"102"_s);
}

// --- Text across the elements ----------------------------------------------

TEST(VxLineIn, TextIsSharedByEveryInputElementAndReportedOnce)
{
    VxLineIn line;
    QSignalSpy change(&line, &VxLineIn::change);
    line.setText(u"Wert & mehr"_s);
    line.setText(u"Wert & mehr"_s);
    EXPECT_EQ(change.count(), 1);
    EXPECT_EQ(line.findChild<QPlainTextEdit *>(u"mem"_s)->toPlainText(), u"Wert & mehr"_s);
    EXPECT_EQ(line.findChild<QLabel *>(u"anz"_s)->text(), u"Wert & mehr"_s);

    line.setTextBoxStyle(9);
    line.setText(u"abc"_s); // code may set what the user could not type
    line.setControlStyle(4);
    auto *txi = line.findChild<QLineEdit *>(u"txi"_s);
    txi->end(false);
    QTest::keyClicks(txi, u"7"_s);
    EXPECT_EQ(line.text(), u"abc7"_s);
    EXPECT_EQ(txt(line)->text(), u"abc7"_s);

    const std::pair<int, Qt::Alignment> alignments[] = {
        {0, Qt::AlignLeft}, {1, Qt::AlignRight}, {2, Qt::AlignHCenter}, {3, Qt::AlignLeft}};
    for (const auto &[code, horizontal] : alignments) {
        line.setAlignment(code);
        EXPECT_EQ(line.findChild<QLabel *>(u"anz"_s)->alignment(), horizontal | Qt::AlignVCenter) << code;
    }
}

TEST(VxLineIn, ComboItemsCarryDataAndTagsAndOutOfRangeReadsEmpty)
{
    VxLineIn line;
    line.setControlStyle(1);
    QSignalSpy change(&line, &VxLineIn::change);
    EXPECT_EQ(line.addItem(u"Pixel"_s, 0, u"PX"_s), 0);
    EXPECT_EQ(line.addItem(u"Prozent"_s, 1, u"PR"_s), 1);
    EXPECT_EQ(line.listIndex(), -1); // adding selects nothing
    EXPECT_TRUE(line.selectByItemTag(u"PR"_s));
    EXPECT_EQ(line.itemData(line.listIndex()), 1);
    EXPECT_EQ(line.listFocusItemTag(), u"PR"_s);
    EXPECT_FALSE(line.selectByItemTag(u"XX"_s));
    EXPECT_TRUE(line.selectByItemData(0));
    EXPECT_FALSE(line.selectByItemData(7));
    EXPECT_EQ(line.listIndex(), 0);
    for (int index : {2, INT_MAX, -2, INT_MIN}) {
        EXPECT_EQ(line.itemData(index), 0) << index;
        EXPECT_EQ(line.itemTag(index), QString()) << index;
    }
    line.setListIndex(INT_MAX);
    EXPECT_EQ(line.listIndex(), -1);
    EXPECT_EQ(change.count(), 3);
}

TEST(VxLineIn, ComboStyleZeroIsEditableAndEveryOtherCodeADropDownList)
{
    VxLineIn line;
    line.setControlStyle(1);
    auto *combo = line.findChild<QComboBox *>();
    for (const auto &[code, editable] : {std::pair(0, true), std::pair(2, false), std::pair(0, true),
                                         std::pair(5, false)}) {
        line.setComboStyle(code);
        EXPECT_EQ(combo->isEditable(), editable) << code;
        EXPECT_EQ(combo->objectName(), editable ? u"cmb0"_s : u"cmb2"_s);
        EXPECT_EQ(line.comboStyle(), editable ? 0 : 2);
    }
    line.setComboStyle(0);
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

TEST(VxLineIn, DroppedFilesReplaceOrAppendAndRefusedDropsChangeNothing)
{
    const QList<QUrl> two = {QUrl::fromLocalFile(u"/a/eins.jpg"_s), QUrl::fromLocalFile(u"/a/zwei.jpg"_s)};
    const struct
    {
        bool multi, append, locked;
        QList<QUrl> urls;
        const char16_t *expected;
    } cases[] = {
        {false, false, false, two, u"/a/eins.jpg"},
        {true, false, false, two, u"/a/eins.jpg|/a/zwei.jpg"},
        {false, true, false, two, u"/alt|/a/eins.jpg"},
        {true, true, false, two, u"/alt|/a/eins.jpg|/a/zwei.jpg"},
        {true, true, true, two, u"/alt"},
        {true, true, false, {QUrl(u"https://example.org/a.jpg"_s)}, u"/alt"},
    };
    for (const auto &c : cases) {
        VxLineIn line;
        line.setText(u"/alt"_s);
        line.setAllowDDMultiFiles(c.multi);
        line.setAppendOleDDFiles(c.append);
        line.setLocked(c.locked);
        QSignalSpy done(&line, &VxLineIn::oleDragDropDone);
        QSignalSpy change(&line, &VxLineIn::change);
        const bool taken = dropOn(txt(line), c.urls);
        EXPECT_EQ(line.text(), QString::fromUtf16(c.expected));
        EXPECT_EQ(done.count(), taken ? 1 : 0);
        EXPECT_EQ(change.count(), taken ? 1 : 0);
        EXPECT_EQ(taken, line.text() != u"/alt"_s);
    }
}

// --- Layout and label ------------------------------------------------------

TEST(VxLineIn, LaysOutLabelElementAndButtonInOneRow)
{
    QWidget window;
    auto *line = new VxLineIn(&window);
    line->setGeometry(0, 0, 400, 26);
    window.show();
    const auto s = [line](int pixels) { return scaledPixels(pixels, line); };
    const QLabel *label = line->findChild<QLabel *>(u"lbl"_s);

    EXPECT_EQ(label->geometry(), QRect(0, s(2), s(125), 26 - s(2)));
    EXPECT_EQ(line->ctlLeft(), s(125) + s(4));
    EXPECT_EQ(line->buttonControl()->geometry(), QRect(400 - s(32), s(2), s(32), 26 - s(2)));
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
    const auto button = [&log](const QString &name) {
        return [&log, name](Qt::MouseButton b, const QPoint &) { log.append(name + QString::number(int(b))); };
    };
    const auto plain = [&log](const QString &name) { return [&log, name] { log.append(name); }; };
    QObject::connect(&line, &VxLineIn::labelMouseDown, &line, button(u"down"_s));
    QObject::connect(&line, &VxLineIn::labelMouseUp, &line, button(u"up"_s));
    QObject::connect(&line, &VxLineIn::labelClick, &line, plain(u"click"_s));
    QObject::connect(&line, &VxLineIn::labelDblClick, &line, plain(u"double"_s));
    QObject::connect(&line, &VxLineIn::buttonRightClick, &line, plain(u"right"_s));
    QObject::connect(&line, &VxLineIn::afterButtonClickedFinished, &line, plain(u"clicked"_s));
    QTest::mouseClick(label, Qt::LeftButton);
    QTest::mouseClick(label, Qt::RightButton);
    QTest::mouseDClick(label, Qt::LeftButton);
    QTest::mouseClick(line.buttonControl(), Qt::RightButton); // a right click is no button click
    EXPECT_EQ(log.join(u' '), u"down1 up1 click down2 up2 double right"_s);
}

TEST(VxLineIn, CaptionTooWideIsCutWithAnEllipsisAndTranslatedOnlyWhenSwitchedOn)
{
    VxLineIn line;
    line.resize(400, 24);
    line.setLabelWidth(40);
    line.setCaption(u"GDI CompositingQuality :"_s);
    const QLabel *label = line.findChild<QLabel *>(u"lbl"_s);
    EXPECT_TRUE(label->text().endsWith(QChar(0x2026))) << label->text().toStdString();
    EXPECT_EQ(label->toolTip(), u"GDI CompositingQuality :"_s);
    line.autoSizeLabel();
    EXPECT_EQ(label->text(), u"GDI CompositingQuality :"_s);
    EXPECT_EQ(label->toolTip(), QString());
    line.setLabelToolTip(u"Hilfe"_s);
    line.setLabelWidth(40);
    EXPECT_EQ(label->toolTip(), u"Hilfe"_s); // the host's tooltip wins

    EXPECT_TRUE(line.ctlEnumAllCaptionsInUCtl().isEmpty());
    line.setCtlUseLng(1);
    EXPECT_TRUE(line.ctlEnumAllCaptionsInUCtl().contains(qMakePair(u"Caption"_s, u"GDI CompositingQuality :"_s)));
    EXPECT_EQ(line.ctlGetLngPropertyType(u"ButtonToolTip"_s), LngPropertyType::ToolTip);
    EXPECT_TRUE(line.ctlSetUserControlLanguage(u"Caption"_s, u"Quality:"_s));
    EXPECT_EQ(line.caption(), u"Quality:"_s);
    EXPECT_FALSE(line.ctlSetUserControlLanguage(u"Text"_s, u"nein"_s));
    EXPECT_EQ(line.text(), QString());
}

TEST(VxLineIn, CheckBoxReportsTheUsersChanges)
{
    VxLineIn line;
    line.setCheckboxShow(true);
    QSignalSpy spy(&line, &VxLineIn::checkBoxChanged);
    line.findChild<QCheckBox *>(u"chk"_s)->click();
    EXPECT_FALSE(line.value());
    line.setValue(false);
    EXPECT_EQ(spy.count(), 1);
}

} // namespace
} // namespace valtrona
