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
    EXPECT_EQ(dialog->line(5)->text(), QStringLiteral("85"));
    EXPECT_EQ(dialog->line(9)->text(), QStringLiteral("2"));
    EXPECT_EQ(dialog->line(10)->text(), QString()); // ORI, not in the file: upright
    EXPECT_FALSE(dialog->isDirty());

    press("cmdSave");
    press("cmdAB");
    EXPECT_TRUE(dialogs->shown.isEmpty());
}

TEST_F(SettingsDialogTest, NoLineIsSqueezedOrOverlapped)
{
    ASSERT_TRUE(QTest::qWaitForWindowExposed(dialog.get()));
    for (int index = 5; index <= 10; ++index) {
        VxLineIn *line = dialog->line(index);
        EXPECT_GE(line->height(), line->minimumSizeHint().height()) << index;
        EXPECT_GE(line->width(), 4755 / 15) << index;
        if (index > 5) {
            EXPECT_FALSE(line->geometry().intersects(dialog->line(index - 1)->geometry())) << index;
        }
    }
}

TEST_F(SettingsDialogTest, EveryWayOutAsksOnceAndWritesOnlyOnYes)
{
    enum Way { SaveButton, CloseBox, Escape, EnterInALine };
    const struct
    {
        Way way;
        bool yes;
        bool staysOpen;
    } cases[] = {
        {SaveButton, true, true}, // "Speichern" keeps the dialog open
        {SaveButton, false, true},
        {CloseBox, true, false},
        {CloseBox, false, false},
        {Escape, false, false},
        {EnterInALine, true, false},
    };
    for (const auto &c : cases) {
        writeIniString(file, QStringLiteral("JPG"), QStringLiteral("PRZ"), QStringLiteral("85"));
        writeIniString(file, QStringLiteral("JPG"), QStringLiteral("INT"), QStringLiteral("7"));
        open();
        type(5, QStringLiteral("70"));
        type(6, QStringLiteral("5"));
        EXPECT_TRUE(dialog->isDirty());
        dialogs->shown.clear();
        dialogs->answers = {c.yes};
        switch (c.way) {
        case SaveButton: press("cmdSave"); break;
        case CloseBox: dialog->close(); break;
        case Escape: QTest::keyClick(dialog.get(), Qt::Key_Escape); break;
        case EnterInALine:
            QTest::keyClick(dialog->line(5)->findChild<QLineEdit *>(QStringLiteral("txt")), Qt::Key_Return);
            break;
        }
        const std::string context = std::to_string(c.way) + (c.yes ? " yes" : " no");
        ASSERT_EQ(dialogs->shown.size(), 1) << context;
        EXPECT_EQ(dialogs->shown.first().kind, QStringLiteral("question"));
        EXPECT_EQ(dialogs->shown.first().title, QStringLiteral("Speichern"));
        EXPECT_EQ(dialogs->shown.first().text, QStringLiteral("Wollen Sie Ihre Änderungen speichern ?"));
        EXPECT_EQ(stored("PRZ"), c.yes ? QStringLiteral("70") : QStringLiteral("85")) << context;
        EXPECT_EQ(stored("INT"), c.yes ? QStringLiteral("5") : QStringLiteral("7")) << context;
        EXPECT_EQ(dialog->isVisible(), c.staysOpen) << context;
        EXPECT_EQ(dialog->line(5)->text(), QStringLiteral("70")) << "the edits stay: " << context;
        press("cmdAB"); // answered either way: leaving asks no more
        EXPECT_EQ(dialogs->shown.size(), 1) << context;
    }
}

TEST_F(SettingsDialogTest, ModeLinesTakeOneDigitOfTheirRange)
{
    const struct
    {
        int index;
        const char *typed;
        const char *kept;
    } cases[] = {{6, "9", ""},  {6, "7", "7"},         {6, "45", "4"}, {7, "5", ""},
                 {9, "x4", "4"}, {5, "1a00", "100"}, {10, "2", ""},  {10, "01", "0"}};
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
    EXPECT_EQ(SettingsDialog::parameterHelp(QStringLiteral("ORI")).size(), 2);

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
