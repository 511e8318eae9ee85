#include "core/settings.h"

#include "core/inifile.h"
#include "support/testsupport.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <array>

using namespace valtrona;
using namespace Qt::StringLiterals;

namespace {

// The preset lists as they ship, one row per key "01" to "16":
// 4:3, 3:2, 5:4, 16:9.
const char *const shippedPresets[16][4] = {
    {"0180x0135", "0180x0120", "0180x0144", "0180x0101"},
    {"0210x0158", "0210x0140", "0210x0168", "0210x0118"},
    {"0240x0180", "0240x0160", "0240x0192", "0240x0135"},
    {"0320x0240", "0320x0213", "0320x0256", "0320x0180"},
    {"0400x0300", "0400x0267", "0400x0320", "0400x0225"},
    {"0510x0383", "0510x0340", "0510x0408", "0510x0287"},
    {"0621x0466", "0621x0414", "0621x0497", "0621x0349"},
    {"0630x0473", "0630x0420", "0630x0504", "0630x0354"},
    {"0640x0480", "0640x0427", "0640x0512", "0640x0360"},
    {"0800x0600", "0800x0533", "0800x0640", "0800x0450"},
    {"0825x0619", "0825x0550", "0825x0660", "0825x0464"},
    {"1024x0768", "1024x0683", "1024x0819", "1024x0576"},
    {"1200x0900", "1200x0800", "1200x0960", "1200x0675"},
    {"1280x0960", "1280x0853", "1280x1024", "1280x0720"},
    {"1600x1200", "1600x1067", "1600x1280", "1600x0900"},
    {"2048x1536", "2048x1365", "2048x1638", "2048x1152"},
};

QByteArray firstStartFile()
{
    QByteArray text =
        "[Main]\r\nVersion=1\r\n\r\n"
        "[Last]\r\nStyle=3\r\nWidth=1024\r\nHeight=768\r\nWU=0\r\nHU=0\r\nPath=\r\n\r\n"
        "[JPG]\r\nPRZ=85\r\nINT=7\r\nSMT=4\r\nPXL=2\r\nCMP=2\r\n";
    const char *const sections[] = {"FMT_43", "FMT_32", "FMT_54", "FMT_169"};
    for (int list = 0; list < 4; ++list) {
        text += "\r\n["_ba + sections[list] + "]\r\n";
        for (int row = 0; row < 16; ++row)
            text += QByteArray::number(row + 1).rightJustified(2, '0') + '=' + shippedPresets[row][list] + "\r\n";
    }
    return text;
}

// What the window program does at load, in its order: presets are read
// before the defaults are seeded.
QList<QStringList> startUp(const QString &file)
{
    QList<QStringList> presets;
    const QStringList keys = presetKeys();
    for (const QString &key : keys) {
        QStringList names, values;
        readIniSectionPairs(file, presetSection(key), names, values);
        presets.append(values);
    }
    seedDefaultSettings(file);
    return presets;
}

TEST(SeedDefaultSettingsTest, FirstAndSecondStart)
{
    test::Sandbox sandbox;
    const QString file = sandbox.filePath(u"valtrona.ini"_s);

    for (const QStringList &list : startUp(file))
        EXPECT_TRUE(list.isEmpty()) << "no presets before the file exists";
    EXPECT_EQ(test::readAll(file), firstStartFile());

    // The second start reads the presets and leaves the file as it is.
    const QDateTime old = QDateTime::currentDateTimeUtc().addDays(-3);
    {
        QFile f(file);
        ASSERT_TRUE(f.open(QIODevice::ReadWrite));
        ASSERT_TRUE(f.setFileTime(old, QFileDevice::FileModificationTime));
    }
    const QList<QStringList> second = startUp(file);
    ASSERT_EQ(second.size(), 4);
    for (int list = 0; list < 4; ++list) {
        ASSERT_EQ(second.at(list).size(), 16);
        for (int row = 0; row < 16; ++row)
            EXPECT_EQ(second.at(list).at(row), QLatin1String(shippedPresets[row][list]));
    }
    EXPECT_EQ(test::readAll(file), firstStartFile());
    EXPECT_EQ(QFileInfo(file).lastModified().toSecsSinceEpoch(), old.toSecsSinceEpoch())
        << "an untouched file is not rewritten";
}

TEST(SeedDefaultSettingsTest, RestoresEmptiedKeysAndKeepsTheUsers)
{
    test::Sandbox sandbox;
    const QString file = sandbox.writeFile(u"v.ini"_s,
        "; my settings\r\n[LAST]\r\nWidth=\r\nHeight=480\r\nSFOR=\r\nPath=/srv/out[2]\r\n"
        "[fmt_43]\r\n01=0100x0075\r\n99=0999x0749\r\n");
    seedDefaultSettings(file);

    const LastParameters last = readLastParameters(file);
    EXPECT_EQ(last.width, u"1024"_s) << "an emptied key is seeded again";
    EXPECT_EQ(last.height, u"480"_s);
    EXPECT_EQ(last.searchFor, QString()) << "SFOR is not seeded";
    EXPECT_EQ(last.path, u"/srv/out"_s) << "the tidy pass cuts a value at a bracket";

    QStringList names, values;
    ASSERT_EQ(readIniSectionPairs(file, u"FMT_43"_s, names, values), 17);
    EXPECT_EQ(values.at(0), u"0100x0075"_s) << "a changed preset stays";
    EXPECT_EQ(values.at(1), u"0999x0749"_s) << "a hand-added preset is offered in file order";
    EXPECT_EQ(values.at(2), u"0210x0158"_s) << "missing presets come back";

    const QByteArray bytes = test::readAll(file);
    EXPECT_TRUE(bytes.startsWith("; my settings\r\n\r\n[LAST]\r\nWidth=1024\r\nHeight=480\r\n"))
        << bytes.left(80).toStdString();
    EXPECT_FALSE(bytes.contains("[Last]")) << "the user's header spelling is kept";
    EXPECT_EQ(tidiedIniText(bytes), bytes);
}

TEST(SeedDefaultSettingsTest, NeverReplacesAnUnreadableFile)
{
    test::Sandbox sandbox;
    const QString file = sandbox.filePath(u"v.ini"_s);
    ASSERT_TRUE(QDir().mkpath(file));
    seedDefaultSettings(file);
    EXPECT_TRUE(QFileInfo(file).isDir());
}

// Each parameter comes from its own key and goes back to it.
TEST(SettingsTest, EachParameterHasItsOwnKey)
{
    test::Sandbox sandbox;
    const QString file = sandbox.writeFile(u"v.ini"_s,
        "[JPG]\r\nPRZ=61\r\nINT=5\r\nSMT=3\r\nPXL=1\r\nCMP=4\r\n"
        "[LAST]\r\nStyle=2\r\nWidth=50\r\nHeight=abc\r\nWU=1\r\nHU=7\r\nPath=/p\r\nSFOR=s\r\nREPW=r\r\n");
    // A missing key reads as the number given for it.
    const DrawingSettings none {0, 0, 0, 0, 0, true};
    const DrawingSettings imaging = readDrawingSettings(file, none);
    EXPECT_EQ((std::array {imaging.quality, imaging.interpolation, imaging.smoothing, imaging.pixelOffset,
                           imaging.compositing}),
              (std::array {61, 5, 3, 1, 4}));
    EXPECT_EQ(readDrawingSettings(sandbox.filePath(u"missing.ini"_s), none), none);
    const LastParameters read = readLastParameters(file);
    EXPECT_EQ((std::array {read.style, read.widthUnit, read.heightUnit}), (std::array {2, 1, 7}));
    EXPECT_EQ((QStringList {read.width, read.height, read.path, read.searchFor, read.replaceWith}),
              (QStringList {u"50"_s, u"abc"_s, u"/p"_s, u"s"_s, u"r"_s}));
    // Seeding writes what a default-made value holds.
    const QString seeded = sandbox.filePath(u"seeded.ini"_s);
    seedDefaultSettings(seeded);
    EXPECT_EQ(readDrawingSettings(seeded, none), DrawingSettings());

    // Photos are turned upright unless the orientation key, never seeded,
    // reads 0.
    EXPECT_TRUE(imaging.upright);
    for (const auto &[value, upright] : {std::pair {u"0"_s, false}, std::pair {u" 0 "_s, false},
                                         std::pair {u"1"_s, true}, std::pair {u"nein"_s, true},
                                         std::pair {u"00"_s, true}}) {
        writeIniString(file, u"JPG"_s, u"ORI"_s, value);
        EXPECT_EQ(readDrawingSettings(file, none).upright, upright) << value.toStdString();
    }

    LastParameters p;
    p.style = 4;
    p.width = u"800"_s;
    p.height = u"600"_s;
    p.widthUnit = 1;
    p.heightUnit = 0;
    p.path = u"/home/jörg/Bilder klein"_s;
    p.searchFor = u" "_s;
    p.replaceWith = u"_"_s;
    const QString written = sandbox.filePath(u"w.ini"_s);
    EXPECT_TRUE(writeLastParameters(written, p));
    EXPECT_EQ(test::readAll(written), "[Last]\r\nStyle=4\r\nWidth=800\r\nHeight=600\r\nWU=1\r\nHU=0\r\n"
                                      "Path=/home/j\xC3\xB6rg/Bilder klein\r\nSFOR=\" \"\r\nREPW=_\r\n"_ba);
    EXPECT_EQ(readLastParameters(written).searchFor, u" "_s) << "a blank search text survives";
}

TEST(SettingsPathTest, FollowsTheExecutableName)
{
    const QString dir = programDirectory();
    ASSERT_TRUE(dir.endsWith(u'/'));
    const QString exeDir = QCoreApplication::applicationDirPath() + u'/';
    EXPECT_EQ(dir, exeDir) << "the test directory is writable";

    const QString base = QFileInfo(QCoreApplication::applicationFilePath()).completeBaseName();
    EXPECT_EQ(settingsFilePath(u"ini"_s), dir + base + u".ini"_s);
    EXPECT_EQ(settingsFilePath(u".ini"_s, {}, u"valtrona"_s), dir + u"valtrona.ini"_s);
    EXPECT_EQ(settingsFilePath(u"log"_s, u"sub"_s, u"v"_s), dir + u"sub/v.log"_s);
    EXPECT_EQ(settingsFilePath(u"log"_s, u"sub/"_s, u"v"_s), dir + u"sub/v.log"_s);
    EXPECT_EQ(settingsFilePath(u"log"_s, u"a\\b"_s, u"v"_s), dir + u"a\\b/v.log"_s);

    EXPECT_EQ(settingsPath(), dir + base + u".ini"_s);
    test::Sandbox sandbox;
    // An installed program keeps its settings in the configuration folder,
    // even when the user may write to the program's folder.
    for (const QString &system : {u"/usr/bin"_s, u"/usr/local/bin"_s, u"/opt"_s})
        EXPECT_FALSE(keepsSettings(system)) << system.toStdString();
    EXPECT_TRUE(keepsSettings(sandbox.path()));
    EXPECT_FALSE(keepsSettings(sandbox.filePath(u"missing"_s)));
    setSettingsPath(sandbox.filePath(u"x.ini"_s));
    EXPECT_EQ(settingsPath(), sandbox.filePath(u"x.ini"_s));
    seedDefaultSettings();
    EXPECT_EQ(readIniInt(sandbox.filePath(u"x.ini"_s), u"JPG"_s, u"PRZ"_s, 0), 85);
    setSettingsPath({});
    EXPECT_EQ(settingsPath(), dir + base + u".ini"_s);
}

} // namespace
