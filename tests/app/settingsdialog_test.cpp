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
using valtrona::test::Sandbox;
using valtrona::test::ScriptedDialogs;

namespace {

class SettingsDialogTest : public ::testing::Test
{
protected:
    SettingsDialogTest()
    {
        file = sandbox.filePath(QStringLiteral("valtrona.ini"));
        const char *values[][2] = {{"PRZ", "85"}, {"INT", "7"}, {"SMT", "4"}, {"PXL", "2"}, {"CMP", "2"}};
        for (const auto &v : values)
            writeIniString(file, QStringLiteral("JPG"), QString::fromLatin1(v[0]), QString::fromLatin1(v[1]));
        dialog = std::make_unique<SettingsDialog>(file, dialogs);
        dialog->initButton()->setProperty("Tag", 1);
        dialog->initButton()->click();
        dialog->show();
    }

    QString stored(const char *key) const
    {
        return readIniString(file, QStringLiteral("JPG"), QString::fromLatin1(key));
    }

    void type(int index, const QString &text)
    {
        QLineEdit *edit = dialog->line(index)->findChild<QLineEdit *>(QStringLiteral("txt"));
        ASSERT_NE(edit, nullptr);
        edit->selectAll();
        QTest::keyClicks(edit, text);
    }

    void press(const char *name) { dialog->findChild<QPushButton *>(QString::fromLatin1(name))->click(); }

    Sandbox sandbox;
    QString file;
    std::shared_ptr<ScriptedDialogs> dialogs = std::make_shared<ScriptedDialogs>();
    std::unique_ptr<SettingsDialog> dialog;
};

TEST_F(SettingsDialogTest, FillsFromTheFileWithoutCountingAsAChange)
{
    EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Konfiguration..."));
    EXPECT_EQ(dialog->line(5)->text(), QStringLiteral("85"));
    EXPECT_EQ(dialog->line(9)->text(), QStringLiteral("2"));
    EXPECT_EQ(dialog->line(5)->tag(), QStringLiteral("PRZ"));
    EXPECT_EQ(dialog->line(4), nullptr);
    EXPECT_FALSE(dialog->isDirty());

    press("cmdSave");
    press("cmdAB");
    EXPECT_TRUE(dialogs->shown.isEmpty());
}

TEST_F(SettingsDialogTest, NoLineIsSqueezedOrOverlapped)
{
    ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog.get()));
    for (int index = 5; index <= 9; ++index) {
        VxLineIn *line = dialog->line(index);
        EXPECT_GE(line->height(), line->minimumSizeHint().height()) << index;
        EXPECT_GE(line->width(), 4755 / 15) << index;
        if (index > 5) {
            EXPECT_FALSE(line->geometry().intersects(dialog->line(index - 1)->geometry())) << index;
        }
    }
}

TEST_F(SettingsDialogTest, SaveWithYesWritesAllFiveLines)
{
    type(5, QStringLiteral("70"));
    type(6, QStringLiteral("5"));
    EXPECT_TRUE(dialog->isDirty());
    dialogs->answers = {true};
    press("cmdSave");

    ASSERT_EQ(dialogs->shown.size(), 1);
    EXPECT_EQ(dialogs->shown.first().kind, QStringLiteral("question"));
    EXPECT_EQ(dialogs->shown.first().title, QStringLiteral("Speichern"));
    EXPECT_EQ(dialogs->shown.first().text, QStringLiteral("Wollen Sie Ihre Änderungen speichern ?"));
    EXPECT_EQ(stored("PRZ"), QStringLiteral("70"));
    EXPECT_EQ(stored("INT"), QStringLiteral("5"));
    EXPECT_TRUE(dialog->isVisible()); // "Speichern" keeps the dialog open
    EXPECT_FALSE(dialog->isDirty());
}

TEST_F(SettingsDialogTest, AnsweringNoKeepsTheEditsButWritesNothingAndAsksNoMore)
{
    type(5, QStringLiteral("10"));
    dialogs->answers = {false};
    press("cmdSave");
    EXPECT_EQ(stored("PRZ"), QStringLiteral("85"));
    EXPECT_EQ(dialog->line(5)->text(), QStringLiteral("10"));

    press("cmdAB");
    EXPECT_EQ(dialogs->shown.size(), 1);
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(stored("PRZ"), QStringLiteral("85"));
}

TEST_F(SettingsDialogTest, CloseBoxAndEscapeAskOnce)
{
    type(7, QStringLiteral("3"));
    dialogs->answers = {true};
    dialog->close();
    EXPECT_EQ(dialogs->shown.size(), 1);
    EXPECT_EQ(stored("SMT"), QStringLiteral("3"));

    dialog->show();
    type(8, QStringLiteral("0"));
    dialogs->answers = {false};
    QTest::keyClick(dialog.get(), Qt::Key_Escape);
    EXPECT_EQ(dialogs->shown.size(), 2);
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(stored("PXL"), QStringLiteral("2"));
}

TEST_F(SettingsDialogTest, EnterInALineConfirmsWithTheSaveQuestion)
{
    type(5, QStringLiteral("60"));
    dialogs->answers = {true};
    QTest::keyClick(dialog->line(5)->findChild<QLineEdit *>(QStringLiteral("txt")), Qt::Key_Return);
    ASSERT_EQ(dialogs->shown.size(), 1);
    EXPECT_EQ(stored("PRZ"), QStringLiteral("60"));
    EXPECT_FALSE(dialog->isVisible());
}

TEST_F(SettingsDialogTest, ModeLinesTakeOneDigitOfTheirRange)
{
    const struct
    {
        int index;
        const char *typed;
        const char *kept;
    } cases[] = {{6, "9", ""}, {6, "7", "7"}, {6, "45", "4"}, {7, "5", ""}, {9, "x4", "4"}, {5, "1a00", "100"}};
    for (const auto &c : cases) {
        dialog->line(c.index)->setText(QString());
        type(c.index, QString::fromLatin1(c.typed));
        EXPECT_EQ(dialog->line(c.index)->text().toStdString(), c.kept) << c.index << " " << c.typed;
    }
}

TEST_F(SettingsDialogTest, HelpListsTheCodesOfEachModeLine)
{
    EXPECT_TRUE(SettingsDialog::parameterHelp(QStringLiteral("PRZ")).isEmpty());
    EXPECT_EQ(SettingsDialog::parameterHelp(QStringLiteral("INT")).size(), 8);
    EXPECT_EQ(SettingsDialog::parameterHelp(QStringLiteral("CMP")).last(), QStringLiteral("4 = AssumeLinear"));
    EXPECT_EQ(SettingsDialog::parameterHelp(QStringLiteral("PXL")).last(), QStringLiteral("4 = Half"));

    dialog->line(6)->clickButton();
    ASSERT_EQ(dialogs->shown.size(), 1);
    EXPECT_EQ(dialogs->shown.first().kind, QStringLiteral("information"));
    EXPECT_EQ(dialogs->shown.first().title, QStringLiteral("GDI Parameterhilfe"));
    EXPECT_TRUE(dialogs->shown.first().text.startsWith(QStringLiteral("0 = Default\n1 = LowQuality\n")));
    EXPECT_EQ(dialog->line(6)->text(), QStringLiteral("7")); // the button changes nothing
    EXPECT_FALSE(dialog->isDirty());

    EXPECT_FALSE(dialog->line(5)->buttonShow()); // quality has no help button
}

} // namespace
