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
using namespace Qt::StringLiterals;
using valtrona::test::ScriptedDialogs;

namespace {

class ParameterCardTest : public ::testing::Test
{
protected:
    ParameterCardTest()
    {
        card.fillLists(sandbox.filePath(u"none.ini"_s));
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
        {[&] { child("txtB")->setText(u"800"_s); }, "Sie haben kein Zielverzeichnis gewählt !"},
        {[&] { child("txtDst")->setText(u"/ziel"_s); }, ""},
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
    child("txtB")->setText(u"50"_s);
    child("txtH")->setText(u"40"_s);
    child<QComboBox>("cmbFH")->setCurrentIndex(1);
    child("txtSFor")->setText(u"IMG"_s);
    child("txtRep")->setText(u"Bild"_s);
    child("txtDst")->setText(u"/ziel"_s);
    const RunParameters plain = card.runParameters({});
    EXPECT_EQ(plain.changeStyle, ChangeStyle::FitRectangle);
    EXPECT_EQ(QStringList({plain.targetDirectory, plain.searchText, plain.replaceText}),
              QStringList({u"/ziel"_s, u"IMG"_s, u"Bild"_s}));
    EXPECT_EQ(plain.format, ImageFormat::Jpeg);
    EXPECT_FALSE(plain.keepDate || plain.copyExif || plain.keepDirectoryStructure || card.deleteSources());
    const FileInputs inputs = card.fileInputs();
    EXPECT_EQ(QStringList({inputs.widthText, inputs.heightText}), QStringList({u"50"_s, u"40"_s}));
    // No width unit chosen yet: check() picks the first.
    EXPECT_EQ(QList<int>({inputs.widthUnit, inputs.heightUnit}), QList<int>({-1, 1}));

    // The format's index in optDF, a check box and the flag it sets.
    const std::tuple<int, const char *, ImageFormat, bool RunParameters::*> cases[] = {
        {1, "chkDU", ImageFormat::Png, &RunParameters::keepDate},
        {2, "chkEXF", ImageFormat::WebP, &RunParameters::copyExif},
        {3, "chkKeepDir", ImageFormat::Avif, &RunParameters::keepDirectoryStructure},
    };
    for (const auto &[option, box, format, flag] : cases) {
        child<QRadioButton>("optDF", option)->setChecked(true);
        child<QCheckBox>(box)->setChecked(true);
        const RunParameters parameters = card.runParameters({});
        EXPECT_EQ(parameters.format, format) << box;
        EXPECT_TRUE(parameters.*flag) << box;
        child<QCheckBox>(box)->setChecked(false);
    }
    child<QCheckBox>("chkDel")->setChecked(true);
    EXPECT_TRUE(card.deleteSources());
}

TEST_F(ParameterCardTest, StyleRelabelsAndEnablesTheInputsWithTheirUnits)
{
    // Style, the width input's label, whether width and height are enabled.
    const std::tuple<int, const char *, bool, bool> cases[] = {
        {3, "Seitenlänge :", true, false}, {1, "Breite :", false, true}, {0, "Breite :", true, true}};
    for (const auto &[style, widthLabel, width, height] : cases) {
        child("cmbTyp")->setListIndex(style);
        EXPECT_EQ(child("txtB")->caption().toStdString(), widthLabel) << style;
        EXPECT_EQ(QList<bool>({child("txtB")->textEnabled(), child<QComboBox>("cmbFB")->isEnabled()}),
                  QList<bool>(2, width)) << style;
        EXPECT_EQ(QList<bool>({child("txtH")->textEnabled(), child<QComboBox>("cmbFH")->isEnabled()}),
                  QList<bool>(2, height)) << style;
    }
}

TEST_F(ParameterCardTest, APickedPresetFillsBothInputsAndCanBePickedAgain)
{
    const QString settings = sandbox.filePath(u"v.ini"_s);
    writeIniString(settings, u"FMT_169"_s, u"01"_s, u"0800x0450"_s);
    card.fillLists(settings);
    VxLineIn *preset = child("cmbFMT", 3);
    for (int pick = 0; pick < 2; ++pick) {
        child("txtB")->setText(u"1"_s);
        preset->setListIndex(0);
        EXPECT_EQ(child("txtB")->text(), u"800"_s);
        EXPECT_EQ(child("txtH")->text(), u"450"_s);
        EXPECT_EQ(preset->listIndex(), -1);
    }
}

TEST_F(ParameterCardTest, TargetFolderButtonStartsAtTheLineAndFillsIt)
{
    VxLineIn *target = child("txtDst");
    target->setText(u"/alt"_s);
    dialogs->nextFolder = sandbox.path();
    target->clickButton();
    EXPECT_EQ(target->text(), sandbox.path());
    EXPECT_EQ(dialogs->lastStartFolder, u"/alt"_s);
}

} // namespace
