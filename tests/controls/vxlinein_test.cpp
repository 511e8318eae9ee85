#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include <gtest/gtest.h>

#include "controls/lineinput_dialogs.h"
#include "controls/lineinput_edit.h"
#include "controls/vxlinein.h"

using namespace Qt::StringLiterals;

namespace valtrona {
namespace {

// Answers the dialogs without a window and records which one was asked.
class FakeDialogs : public LineInputDialogs
{
public:
    QString answer; // "" = cancelled; several paths separated by "|"
    QStringList calls;

    QString openFile(QWidget *, const QString &, const QString &, const QString &) override { return ask(u"open"_s); }
    QStringList openFiles(QWidget *, const QString &, const QString &, const QString &) override
    {
        return ask(u"openMany"_s).split(u'|', Qt::SkipEmptyParts);
    }
    QString saveFile(QWidget *, const QString &, const QString &, const QString &) override { return ask(u"save"_s); }
    QString chooseFolder(QWidget *, const QString &, const QString &, bool) override { return ask(u"folder"_s); }

private:
    QString ask(const QString &call)
    {
        calls.append(call);
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
        {"folder", 0, 3, u"/ziel//bilder/", u"folder", u"/ziel/bilder", u"before after change finished"},
        {"folderCancelled", 0, 3, u"", u"folder", u"/alt/wert.txt", u"before after finished"},
        {"folderSame", 0, 3, u"/alt/wert.txt", u"folder", u"/alt/wert.txt", u"before after finished"},
        {"report", 0, 4, u"/x", u"", u"/alt/wert.txt", u"before clicked after finished"},
        {"unknownCommand", 0, 7, u"/x", u"", u"/alt/wert.txt", u"before after finished"},
        // On a combo line the clear empties the combo; the rest only report.
        {"comboClear", 1, 0, u"", u"", u"/alt/wert.txt", u"before change after finished"},
        {"comboCopy", 1, 5, u"/x", u"", u"/alt/wert.txt", u"before clicked after finished"},
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
        QStringList log;
        recordEvents(line, &log);

        line.buttonControl()->click();

        SCOPED_TRACE(c.name);
        EXPECT_EQ(log.join(u' '), QString::fromUtf16(c.events));
        EXPECT_EQ(line.text(), QString::fromUtf16(c.textAfter));
        EXPECT_EQ(dialogs->calls.join(u' '), QString::fromUtf16(c.dialog));
        EXPECT_EQ(line.listIndex(), c.controlStyle == 1 && c.commandStyle == 0 ? -1 : 0);
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
    const std::pair<int, const char16_t *> cases[] = {
        {0, u"txt"}, {1, u"cmb2"}, {2, u"mem"}, {3, u"anz"}, {4, u"txi"}, {9, u"txt"}};
    for (const auto &[style, name] : cases) {
        line->setControlStyle(style);
        QStringList shown;
        for (const char16_t *each : {u"txt", u"txi", u"mem", u"cmb2", u"anz"}) {
            if (line->findChild<QWidget *>(QString::fromUtf16(each))->isVisibleTo(line))
                shown.append(QString::fromUtf16(each));
        }
        EXPECT_EQ(shown, QStringList {QString::fromUtf16(name)}) << style;
        if (!active)
            continue;
        elsewhere->setFocus();
        line->clickButton();
        // The display field takes no focus.
        QWidget *focused = style == 3 ? elsewhere : line->findChild<QWidget *>(QString::fromUtf16(name));
        EXPECT_EQ(QApplication::focusWidget(), focused) << style;
    }
    if (!active)
        GTEST_SKIP() << "no active window on this platform: focus not checked";
}

// --- Mask and length -------------------------------------------------------

TEST(LineInputRules, CleanKeepsWhatTheStyleAndMaskAllow)
{
    const std::tuple<int, const char16_t *, const char16_t *, const char16_t *> cases[] = {
        {0, u"", u"leer heißt alles", u"leer heißt alles"}, {0, u"01234", u"0815-4711", u"01411"},
        {9, u"*", u"a1b2-3", u"123"},                       {10, u"*", u"-12-3", u"-123"},
        {10, u"*", u"1-2", u"12"},                          {11, u"*", u"-1,5.3x", u"-1,53"},
        {0, u"*", u"eins\nzwei", u"einszwei"},              {7, u"*", u"Ab-1", u"Ab-1"}, // unknown: any text
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
        int maxLength;
        const char16_t *before;
        int cursor;
        const char16_t *input, *expected;
    } cases[] = {
        {false, 9, 1, u"", 0, u"a3 4", u"3"}, // the full line takes no "4"
        {true, 9, 3, u"12", 2, u"a3b4c5", u"123"},
        {true, 0, 4, u"ab", 1, u"XYZ", u"aXYb"},
        {true, 9, 0, u"1", 0, u"x", u"1"}, // nothing allowed: text stays
        {true, 11, 0, u"1,5", 3, u",25", u"1,525"}, // one decimal comma in the whole line
    };
    for (const auto &c : cases) {
        VxLineIn line;
        line.setTextBoxStyle(c.style);
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
        SCOPED_TRACE(QString::fromUtf16(c.input).toStdString());
        EXPECT_EQ(line.text(), expected);
        EXPECT_EQ(change.count(), expected == QString::fromUtf16(c.before) ? 0 : 1);
    }
}

// --- Text across the elements ----------------------------------------------

TEST(VxLineIn, TextIsSharedByEveryInputElementAndReportedOnce)
{
    VxLineIn line;
    QSignalSpy change(&line, &VxLineIn::change);
    line.setText(u"Wert & mehr"_s);
    line.setText(u"Wert & mehr"_s);
    EXPECT_EQ(change.count(), 1);
    EXPECT_EQ(line.findChild<QLabel *>(u"anz"_s)->text(), u"Wert & mehr"_s);
    line.setTextBoxStyle(9);
    line.setText(u"abc"_s); // code may set what the user could not type
    EXPECT_EQ(txt(line)->text(), u"abc"_s);

    const std::pair<int, Qt::Alignment> alignments[] = {{1, Qt::AlignRight}, {2, Qt::AlignHCenter}, {3, Qt::AlignLeft}};
    for (const auto &[code, horizontal] : alignments) {
        line.setAlignment(code);
        EXPECT_EQ(line.findChild<QLabel *>(u"anz"_s)->alignment(), horizontal | Qt::AlignVCenter) << code;
    }
}

TEST(VxLineIn, ComboStyleZeroIsEditableAndEveryOtherCodeADropDownList)
{
    VxLineIn line;
    line.setControlStyle(1);
    auto *combo = line.findChild<QComboBox *>();
    for (const auto &[code, editable] : {std::pair(0, true), std::pair(5, false)}) {
        line.setComboStyle(code);
        EXPECT_EQ(combo->isEditable(), editable) << code;
        EXPECT_EQ(combo->objectName(), editable ? u"cmb0"_s : u"cmb2"_s);
    }
}

// A drop of several files takes the first; other URLs are refused.
TEST(VxLineIn, DroppedFilesReplaceTheTextAndRefusedDropsChangeNothing)
{
    const std::pair<QList<QUrl>, const char16_t *> cases[] = {
        {{QUrl::fromLocalFile(u"/a/eins.jpg"_s), QUrl::fromLocalFile(u"/a/zwei.jpg"_s)}, u"/a/eins.jpg"},
        {{QUrl(u"https://example.org/a.jpg"_s)}, u"/alt"},
    };
    for (const auto &[urls, expected] : cases) {
        VxLineIn line;
        line.setText(u"/alt"_s);
        QSignalSpy change(&line, &VxLineIn::change);
        QMimeData mime;
        mime.setUrls(urls);
        // A drop reaches only a widget that took the drag when it entered.
        QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(txt(line), &enter);
        QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(txt(line), &drop);
        const bool taken = QString::fromUtf16(expected) != u"/alt"_s;
        EXPECT_EQ(line.text(), QString::fromUtf16(expected));
        EXPECT_EQ(enter.isAccepted() && drop.isAccepted(), taken);
        EXPECT_EQ(change.count(), taken ? 1 : 0);
    }
}

} // namespace
} // namespace valtrona
