#include "core/settings.h"

#include "core/fileservices.h"
#include "core/inifile.h"
#include "support/testsupport.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <array>

using namespace valtrona;
using namespace Qt::StringLiterals;

namespace {

// The settings file a first start leaves behind, byte for byte. The four
// preset lists hold the same sixteen widths, each with the height at the
// list's ratio, halves rounded up.
QByteArray firstStartFile()
{
    QByteArray text =
        "[Main]\r\nVersion=1\r\n\r\n"
        "[Last]\r\nStyle=3\r\nWidth=1024\r\nHeight=768\r\nWU=0\r\nHU=0\r\nPath=\r\n\r\n"
        "[JPG]\r\nPRZ=85\r\nINT=7\r\nSMT=4\r\nPXL=2\r\nCMP=2\r\n";
    const int widths[16] = {180, 210, 240, 320, 400, 510, 621, 630, 640, 800, 825, 1024, 1200, 1280, 1600, 2048};
    const std::pair<const char *, double> lists[] = {
        {"43", 3.0 / 4}, {"32", 2.0 / 3}, {"54", 4.0 / 5}, {"169", 9.0 / 16}};
    for (const auto &[key, ratio] : lists) {
        text += "\r\n[FMT_"_ba + key + "]\r\n";
        for (int row = 0; row < 16; ++row) {
            const int width = widths[row];
            text += QString::asprintf("%02d=%04dx%04d\r\n", row + 1, width, qRound(width * ratio)).toLatin1();
        }
    }
    return text;
}

TEST(SeedDefaultSettingsTest, FirstAndSecondStart)
{
    test::Sandbox sandbox;
    const QString file = sandbox.filePath(u"valtrona.ini"_s);
    seedDefaultSettings(file);
    EXPECT_EQ(test::readAll(file), firstStartFile());

    // The second start leaves the file as it is, not even rewritten.
    const QDateTime old = QDateTime::currentDateTimeUtc().addDays(-3);
    ASSERT_TRUE(files::setFileTimes(file, old));
    seedDefaultSettings(file);
    EXPECT_EQ(QFileInfo(file).lastModified().toSecsSinceEpoch(), old.toSecsSinceEpoch());
}

TEST(SeedDefaultSettingsTest, RestoresEmptiedKeysAndKeepsTheUsers)
{
    test::Sandbox sandbox;
    const QString file = sandbox.writeFile(u"v.ini"_s,
        "; my settings\r\n[LAST]\r\nWidth=\r\nHeight=480\r\nSFOR=\r\nPath=/srv/out[2]\r\n"
        "[fmt_43]\r\n01=0100x0075\r\n99=0999x0749\r\n");
    seedDefaultSettings(file);

    // The user's lines keep their place and spelling; an emptied key is
    // seeded again, SFOR is not, missing presets follow the user's own. The
    // tidy pass cuts a value at a bracket, so the keys seeded after it land
    // below "[2]".
    const QByteArray bytes = test::readAll(file);
    const QByteArray head =
        "; my settings\r\n\r\n[LAST]\r\nWidth=1024\r\nHeight=480\r\nSFOR=\r\nPath=/srv/out\r\n\r\n"
        "[2]\r\nStyle=3\r\nWU=0\r\nHU=0\r\n\r\n[fmt_43]\r\n01=0100x0075\r\n99=0999x0749\r\n02=0210x0158\r\n";
    EXPECT_EQ(bytes.left(head.size()).toStdString(), head.toStdString());
    EXPECT_EQ(tidiedIniText(bytes), bytes);
}

// Each parameter comes from its own key and goes back to it.
TEST(SettingsTest, EachParameterHasItsOwnKey)
{
    test::Sandbox sandbox;
    const QString file = sandbox.writeFile(u"v.ini"_s,
        "[JPG]\r\nPRZ=61\r\nINT=5\r\nSMT=3\r\nPXL=1\r\nCMP=4\r\n"
        "[LAST]\r\nStyle=2\r\nWidth=50\r\nHeight=abc\r\nWU=1\r\nHU=7\r\nPath=/p\r\nSFOR=s\r\nREPW=r\r\n");
    // A missing key reads as the number given for it.
    const DrawingSettings none {10, 11, 12, 13, 14, true};
    const DrawingSettings imaging = readDrawingSettings(file, none);
    EXPECT_EQ((std::array {imaging.quality, imaging.interpolation, imaging.smoothing, imaging.pixelOffset,
                           imaging.compositing}),
              (std::array {61, 5, 3, 1, 4}));
    EXPECT_EQ(readDrawingSettings(sandbox.filePath(u"missing.ini"_s), none), none);
    const LastParameters read = readLastParameters(file);
    EXPECT_EQ((std::array {read.style, read.widthUnit, read.heightUnit}), (std::array {2, 1, 7}));
    EXPECT_EQ((QStringList {read.width, read.height, read.path, read.searchFor, read.replaceWith}),
              (QStringList {u"50"_s, u"abc"_s, u"/p"_s, u"s"_s, u"r"_s}));

    // Photos are turned upright unless the orientation key, never seeded,
    // reads 0.
    EXPECT_TRUE(imaging.upright);
    for (const auto &[value, upright] : {std::pair {u" 0 "_s, false}, std::pair {u"00"_s, true}}) {
        ASSERT_TRUE(writeIniString(file, u"JPG"_s, u"ORI"_s, value));
        EXPECT_EQ(readDrawingSettings(file, none).upright, upright) << value.toStdString();
    }

    const LastParameters p {4, u"800"_s, u"600"_s, 1, 0, u"/home/jörg/Bilder klein"_s, u" "_s, u"_"_s};
    const QString written = sandbox.filePath(u"w.ini"_s);
    EXPECT_TRUE(writeLastParameters(written, p));
    EXPECT_EQ(test::readAll(written), "[Last]\r\nStyle=4\r\nWidth=800\r\nHeight=600\r\nWU=1\r\nHU=0\r\n"
                                      "Path=/home/j\xC3\xB6rg/Bilder klein\r\nSFOR=\" \"\r\nREPW=_\r\n"_ba);
}

TEST(SettingsPathTest, FollowsTheExecutableName)
{
    const QString dir = programDirectory();
    EXPECT_EQ(dir, QCoreApplication::applicationDirPath() + u'/') << "the test directory is writable";
    const QString base = QFileInfo(QCoreApplication::applicationFilePath()).completeBaseName();
    EXPECT_EQ(settingsFilePath(u".ini"_s, {}, u"valtrona"_s), dir + u"valtrona.ini"_s);
    EXPECT_EQ(settingsFilePath(u"log"_s, u"sub/"_s, u"v"_s), dir + u"sub/v.log"_s);

    // An installed program keeps its settings in the configuration folder,
    // even when the user may write to the program's folder.
    test::Sandbox sandbox;
    EXPECT_FALSE(keepsSettings(u"/usr/local/bin"_s));
    EXPECT_FALSE(keepsSettings(u"/opt"_s));
    EXPECT_TRUE(keepsSettings(sandbox.path()));

    setSettingsPath(sandbox.filePath(u"x.ini"_s));
    seedDefaultSettings();
    EXPECT_EQ(readIniInt(sandbox.filePath(u"x.ini"_s), u"JPG"_s, u"PRZ"_s, 0), 85);
    setSettingsPath({});
    EXPECT_EQ(settingsPath(), dir + base + u".ini"_s);
}

} // namespace
