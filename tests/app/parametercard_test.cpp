#include <QCheckBox>
#include <QComboBox>
#include <QRadioButton>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "app/parametercard.h"
#include "controls/vxlinein.h"
#include "core/inifile.h"
#include "scripteddialogs.h"
#include "support/testsupport.h"

using namespace valtrona;
using valtrona::test::ScriptedDialogs;

namespace {

class ParameterCardTest : public ::testing::Test
{
protected:
    ParameterCardTest()
    {
        card.fillLists(sandbox.filePath(QStringLiteral("none.ini")));
        card.show();
    }

    template <typename T = VxLineIn>
    T *child(const char *name, int index = 0)
    {
        const QList<T *> found = card.findChildren<T *>(QString::fromLatin1(name));
        EXPECT_GT(found.size(), index) << name;
        return found.value(index);
    }

    test::Sandbox sandbox;
    std::shared_ptr<ScriptedDialogs> dialogs = std::make_shared<ScriptedDialogs>();
    ParameterCard card {dialogs};
};

TEST_F(ParameterCardTest, ChecksRefuseInTheirOrderAndPickTheFirstUnitSilently)
{
    const struct
    {
        std::function<void()> set;
        const char *message;
    } steps[] = {
        {[] {}, "Sie haben keinen Änderungsstil gewählt !"},
        {[&] { child("cmbTyp")->setListIndex(2); }, "Sie haben ungültige Formatparameter gewählt !"},
        {[&] { child("txtB")->setText(QStringLiteral("800")); }, "Sie haben kein Zielverzeichnis gewählt !"},
        {[&] { child("txtDst")->setText(QStringLiteral("/ziel")); }, ""},
    };
    for (const auto &step : steps) {
        step.set();
        EXPECT_EQ(card.check().toStdString(), step.message);
    }
    EXPECT_EQ(child<QComboBox>("cmbFB")->currentIndex(), 0);
    EXPECT_EQ(child<QComboBox>("cmbFH")->currentIndex(), 0);
}

TEST_F(ParameterCardTest, RunParametersFollowTheControls)
{
    child("cmbTyp")->setListIndex(4);
    child("txtB")->setText(QStringLiteral("50"));
    child("txtH")->setText(QStringLiteral("40"));
    child<QComboBox>("cmbFH")->setCurrentIndex(1);
    child("txtSFor")->setText(QStringLiteral("IMG"));
    child("txtRep")->setText(QStringLiteral("Bild"));
    child("txtDst")->setText(QStringLiteral("/ziel"));
    const RunParameters plain = card.runParameters({QStringLiteral("/a.jpg")});
    EXPECT_EQ(plain.sources, QStringList {QStringLiteral("/a.jpg")});
    EXPECT_EQ(plain.changeStyle, ChangeStyle::FitRectangle);
    EXPECT_EQ(plain.targetDirectory, QStringLiteral("/ziel"));
    EXPECT_EQ(plain.searchText, QStringLiteral("IMG"));
    EXPECT_EQ(plain.replaceText, QStringLiteral("Bild"));
    EXPECT_EQ(plain.format, ImageFormat::Jpeg);
    EXPECT_FALSE(plain.keepDate || plain.copyExif || plain.keepDirectoryStructure || card.deleteSources());
    const FileInputs inputs = card.fileInputs();
    EXPECT_EQ(inputs.widthText, QStringLiteral("50"));
    EXPECT_EQ(inputs.heightText, QStringLiteral("40"));
    EXPECT_EQ(inputs.widthUnit, -1); // nothing chosen yet: check() picks the first
    EXPECT_EQ(inputs.heightUnit, 1);

    const struct
    {
        int option; ///< index in optDF
        const char *box;
        ImageFormat format;
        bool RunParameters::*flag;
    } cases[] = {
        {1, "chkDU", ImageFormat::Png, &RunParameters::keepDate},
        {2, "chkEXF", ImageFormat::WebP, &RunParameters::copyExif},
        {3, "chkKeepDir", ImageFormat::Avif, &RunParameters::keepDirectoryStructure},
    };
    for (const auto &c : cases) {
        child<QRadioButton>("optDF", c.option)->setChecked(true);
        child<QCheckBox>(c.box)->setChecked(true);
        const RunParameters parameters = card.runParameters({});
        EXPECT_EQ(parameters.format, c.format) << c.box;
        EXPECT_TRUE(parameters.*c.flag) << c.box;
        child<QCheckBox>(c.box)->setChecked(false);
    }
    child<QCheckBox>("chkDel")->setChecked(true);
    EXPECT_TRUE(card.deleteSources());
}

TEST_F(ParameterCardTest, StyleRelabelsAndEnablesTheInputsWithTheirUnits)
{
    const struct
    {
        int style;
        const char *widthLabel;
        bool width;
        bool height;
    } cases[] = {{3, "Seitenlänge :", true, false}, {1, "Breite :", false, true}, {0, "Breite :", true, true}};
    for (const auto &c : cases) {
        child("cmbTyp")->setListIndex(c.style);
        EXPECT_EQ(child("txtB")->caption().toStdString(), c.widthLabel) << c.style;
        EXPECT_EQ(child("txtB")->textEnabled(), c.width) << c.style;
        EXPECT_EQ(child<QComboBox>("cmbFB")->isEnabled(), c.width) << c.style;
        EXPECT_EQ(child("txtH")->textEnabled(), c.height) << c.style;
        EXPECT_EQ(child<QComboBox>("cmbFH")->isEnabled(), c.height) << c.style;
    }
}

TEST_F(ParameterCardTest, APickedPresetFillsBothInputsAndCanBePickedAgain)
{
    const QString settings = sandbox.filePath(QStringLiteral("v.ini"));
    writeIniString(settings, QStringLiteral("FMT_169"), QStringLiteral("01"), QStringLiteral("0800x0450"));
    card.fillLists(settings);
    VxLineIn *preset = child("cmbFMT", 3);
    for (int pick = 0; pick < 2; ++pick) {
        child("txtB")->setText(QStringLiteral("1"));
        preset->setListIndex(0);
        EXPECT_EQ(child("txtB")->text(), QStringLiteral("800"));
        EXPECT_EQ(child("txtH")->text(), QStringLiteral("450"));
        EXPECT_EQ(preset->listIndex(), -1);
    }
}

TEST_F(ParameterCardTest, TargetFolderButtonFillsTheLineUnlessCancelled)
{
    VxLineIn *target = child("txtDst");
    target->setText(QStringLiteral("/alt"));
    dialogs->nextFolder = sandbox.path();
    target->clickButton();
    EXPECT_EQ(target->text(), sandbox.path());
    EXPECT_EQ(dialogs->lastStartFolder, QStringLiteral("/alt"));
    target->clickButton(); // cancelled
    EXPECT_EQ(target->text(), sandbox.path());
}

} // namespace
