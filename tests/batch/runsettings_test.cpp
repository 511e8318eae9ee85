#include "batch/runsettings.h"

#include "support/testsupport.h"

#include <QFileInfo>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace valtrona;

namespace {

TEST(SeededSettings, MissingOrEmptyKeysReadAsSeededWithoutWriting)
{
    test::Sandbox box;
    const QString missing = box.filePath(u"none.ini"_s);
    const LastParameters fresh = readSeededLastParameters(missing);
    EXPECT_EQ(fresh.style, 3);
    EXPECT_EQ(fresh.width, u"1024"_s);
    EXPECT_EQ(fresh.height, u"768"_s);
    EXPECT_EQ(fresh.widthUnit, 0);
    EXPECT_EQ(fresh.path, QString());
    EXPECT_EQ(readSeededDrawingSettings(missing), (DrawingSettings {85, 7, 4, 2, 2}));
    EXPECT_FALSE(QFileInfo::exists(missing));

    const QByteArray text = "[LAST]\r\nStyle=0\r\nWidth=\r\nHeight=abc\r\nWU=1\r\nSFOR=x\r\n"
                            "[jpg]\r\nPRZ=\r\nINT=5\r\nCMP=drei\r\nORI=0\r\n";
    const QString file = box.writeFile(u"user.ini"_s, text);
    const LastParameters user = readSeededLastParameters(file);
    EXPECT_EQ(user.style, 0);           // a value the user chose, though it is 0
    EXPECT_EQ(user.width, u"1024"_s);   // emptied by hand: seeding restores it
    EXPECT_EQ(user.height, u"abc"_s);
    EXPECT_EQ(user.widthUnit, 1);
    EXPECT_EQ(user.searchFor, u"x"_s);
    EXPECT_EQ(user.replaceWith, QString()); // never seeded
    // PRZ empty -> seeded 85; CMP without digits -> 0, as the window reads it;
    // ORI=0 draws photos as stored.
    EXPECT_EQ(readSeededDrawingSettings(file), (DrawingSettings {85, 5, 4, 2, 0, false}));
    EXPECT_EQ(test::readAll(file), text);
}

} // namespace
