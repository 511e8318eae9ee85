#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

#include "app/settingsdialog.h"
#include "controls/vxlinein.h"
#include "core/inifile.h"
#include "scripteddialogs.h"
#include "support/testsupport.h"

using namespace valtrona;
using namespace Qt::StringLiterals;
using valtrona::test::Sandbox;
using valtrona::test::ScriptedDialogs;

namespace {

class SettingsDialogTest : public ::testing::Test
{
protected:
    SettingsDialogTest()
    {
        file = sandbox.filePath(u"valtrona.ini"_s);
        const char *values[][2] = {{"PRZ", "85"}, {"INT", "7"}, {"SMT", "4"}, {"PXL", "2"}, {"CMP", "2"}};
        for (const auto &v : values)
            writeIniString(file, u"JPG"_s, QString::fromLatin1(v[0]), QString::fromLatin1(v[1]));
        open();
    }

    void open()
    {
        dialog = std::make_unique<SettingsDialog>(file, dialogs);
        dialog->initButton()->setProperty("Tag", 1);
        dialog->initButton()->click();
        dialog->show();
    }

    QString stored(const char *key) const
    {
        return readIniString(file, u"JPG"_s, QString::fromLatin1(key));
    }

    QLineEdit *edit(int index) { return dialog->line(index)->findChild<QLineEdit *>(u"txt"_s); }

    void type(int index, const QString &text)
    {
        edit(index)->selectAll();
        QTest::keyClicks(edit(index), text);
    }

    void press(const char *name) { dialog->findChild<QPushButton *>(QString::fromLatin1(name))->click(); }

    Sandbox sandbox;
    QString file;
    std::shared_ptr<ScriptedDialogs> dialogs = std::make_shared<ScriptedDialogs>();
    std::unique_ptr<SettingsDialog> dialog;
};

TEST_F(SettingsDialogTest, FillsFromTheFileWithoutCountingAsAChange)
{
    EXPECT_EQ(dialog->line(5)->text(), u"85"_s);
    EXPECT_EQ(dialog->line(9)->text(), u"2"_s);
    EXPECT_EQ(dialog->line(10)->text(), QString()); // ORI, not in the file: upright
    EXPECT_FALSE(dialog->isDirty());
    press("cmdSave");
    press("cmdAB");
    EXPECT_TRUE(dialogs->shown.isEmpty());
}

TEST_F(SettingsDialogTest, EveryWayOutAsksOnceAndWritesOnlyOnYes)
{
    enum Way { SaveButton, CloseBox, Escape, EnterInALine };
    // Way, answer Yes, whether the dialog stays open ("Speichern" keeps it).
    const std::tuple<Way, bool, bool> cases[] = {{SaveButton, true, true}, {SaveButton, false, true},
                                                 {CloseBox, true, false},  {CloseBox, false, false},
                                                 {Escape, false, false},   {EnterInALine, true, false}};
    for (const auto &[way, yes, staysOpen] : cases) {
        writeIniString(file, u"JPG"_s, u"PRZ"_s, u"85"_s);
        writeIniString(file, u"JPG"_s, u"INT"_s, u"7"_s);
        open();
        type(5, u"70"_s);
        type(6, u"5"_s);
        dialogs->shown.clear();
        dialogs->answers = {yes};
        switch (way) {
        case SaveButton: press("cmdSave"); break;
        case CloseBox: dialog->close(); break;
        case Escape: QTest::keyClick(dialog.get(), Qt::Key_Escape); break;
        case EnterInALine: QTest::keyClick(edit(5), Qt::Key_Return); break;
        }
        SCOPED_TRACE(std::to_string(way) + (yes ? " yes" : " no"));
        EXPECT_EQ(QStringList({stored("PRZ"), stored("INT")}),
                  yes ? QStringList({u"70"_s, u"5"_s}) : QStringList({u"85"_s, u"7"_s}));
        EXPECT_EQ(dialog->isVisible(), staysOpen);
        EXPECT_EQ(dialog->line(5)->text(), u"70"_s); // the edits stay
        press("cmdAB"); // answered either way: leaving asks no more
        EXPECT_EQ(dialogs->shown, QStringList {u"question|Speichern|Wollen Sie Ihre Änderungen speichern ?"_s});
    }
}

TEST_F(SettingsDialogTest, ModeLinesTakeOneDigitOfTheirRange)
{
    // Line, typed, kept.
    const std::tuple<int, const char *, const char *> cases[] = {
        {6, "9", ""}, {6, "7", "7"}, {6, "45", "4"}, {7, "5", ""}, {9, "x4", "4"}, {5, "1a00", "100"}, {10, "01", "0"}};
    for (const auto &[index, typed, kept] : cases) {
        dialog->line(index)->setText(QString());
        type(index, QString::fromLatin1(typed));
        EXPECT_EQ(dialog->line(index)->text().toStdString(), kept) << index << " " << typed;
    }
}

TEST_F(SettingsDialogTest, HelpListsTheCodesOfEachModeLine)
{
    EXPECT_EQ(SettingsDialog::parameterHelp(u"CMP"_s).last(), u"4 = AssumeLinear"_s);
    EXPECT_FALSE(dialog->line(5)->buttonShow()); // quality has no help button

    dialog->line(6)->clickButton();
    ASSERT_EQ(dialogs->shown.size(), 1);
    EXPECT_TRUE(dialogs->shown.first().startsWith(u"information|GDI Parameterhilfe|0 = Default\n1 = LowQuality\n"_s));
    EXPECT_FALSE(dialog->isDirty()); // the button changes nothing
}

} // namespace
