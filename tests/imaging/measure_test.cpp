#include "imaging/imaging.h"
#include "fixtures.h"
#include "support/testsupport.h"

#include <QFile>

#include <gtest/gtest.h>

#include <functional>

using namespace Qt::StringLiterals;
using namespace valtrona;
using namespace valtrona::test;

namespace {

class MeasureTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(imaging::start());
        imaging::setQuiet(false);
        imaging::setReporter([this](const QString &, const QString &) { ++m_reports; });
    }
    void TearDown() override { imaging::setReporter({}); }

    QString jpeg(const QString &name, int width, int height)
    {
        return writeWithVips(m_sandbox.filePath(name), gradientImage(width, height), u"[Q=90]"_s);
    }

    Sandbox m_sandbox;
    int m_reports = 0;
};

TEST_F(MeasureTest, ReadsSizesOfEveryFormatAndOddNames)
{
    const struct
    {
        const char *name;
        int width;
        int height;
    } cases[] = {
        {"photo.jpg", 300, 200},       {"tall.png", 7, 301},        {"layers.tif", 33, 17},
        {"pixel.png", 1, 1},           {"bitmap.bmp", 40, 30},      {"Bild [1] äöü ß.jpg", 64, 48},
        {"ends in bracket[Q=5]", 20, 10}, {"no-suffix", 12, 9},     {"wrong suffix.png", 50, 40},
    };
    for (const auto &c : cases) {
        const QString name = QString::fromUtf8(c.name);
        QString path = m_sandbox.filePath(name);
        if (name.endsWith(u".bmp"_s)) {
            const QString ppm = m_sandbox.filePath(u"bitmap.ppm"_s);
            writePnm(ppm, gradientImage(c.width, c.height));
            ASSERT_TRUE(runTool(u"vips"_s, {u"magicksave"_s, ppm, path}));
        } else if (name.endsWith(u".png"_s) && name.startsWith(u"wrong"_s)) {
            // JPEG bytes behind a PNG name: the content decides.
            QFile::copy(jpeg(u"content.jpg"_s, c.width, c.height), path);
        } else if (!name.contains(u'.')) {
            QFile::copy(jpeg(u"plain.jpg"_s, c.width, c.height), path);
        } else {
            writeWithVips(path, gradientImage(c.width, c.height));
        }
        int width = -1;
        int height = -1;
        EXPECT_TRUE(imaging::measure(path, width, height)) << c.name;
        EXPECT_EQ(width, c.width) << c.name;
        EXPECT_EQ(height, c.height) << c.name;
        EXPECT_EQ(imaging::lastStatus(), 0) << c.name;
    }
    EXPECT_EQ(m_reports, 0);
}

TEST_F(MeasureTest, MissingFileGivesZeroWithoutReport)
{
    int width = -1;
    int height = -1;
    EXPECT_FALSE(imaging::measure(m_sandbox.filePath(u"absent.jpg"_s), width, height));
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, 0);
    EXPECT_EQ(imaging::lastStatus(), imaging::FileNotFound);
    EXPECT_FALSE(imaging::measure(m_sandbox.path(), width, height)); // a directory
    EXPECT_EQ(m_reports, 0);
}

TEST_F(MeasureTest, BadFilesGiveZeroAndAReport)
{
    const QByteArray good = readAll(jpeg(u"good.jpg"_s, 120, 80));
    ASSERT_FALSE(good.isEmpty());
    QByteArray garbage(4096, '\0');
    for (qsizetype i = 0; i < garbage.size(); ++i)
        garbage[i] = char((i * 7919) ^ (i >> 3));
    const int anyStatus = -1;
    const struct
    {
        const char *name;
        QByteArray bytes;
        int status;
    } cases[] = {
        {"empty.jpg", QByteArray(), imaging::UnknownImageFormat},
        {"text.jpg", QByteArray("Dies ist kein Bild.\n"), imaging::UnknownImageFormat},
        {"start-marker-only.jpg", QByteArray::fromHex("ffd8"), anyStatus},
        {"cut-in-header.jpg", good.left(40), anyStatus},
        {"garbage-after-marker.jpg", QByteArray::fromHex("ffd8ffe0") + garbage, anyStatus},
        {"zero-size-frame.jpg", withFrameSize(good, 0, 0), anyStatus},
        {"huge-frame.jpg", withFrameSize(good, 65535, 65535), imaging::ValueOverflow},
        {"huge-claim.png", pngClaiming(100000, 100000), imaging::ValueOverflow},
        {"png-signature-only.png", QByteArray("\x89PNG\r\n\x1a\n", 8), anyStatus},
    };
    for (const auto &c : cases) {
        m_reports = 0;
        const QString path = m_sandbox.writeFile(QString::fromUtf8(c.name), c.bytes);
        int width = -1;
        int height = -1;
        EXPECT_FALSE(imaging::measure(path, width, height)) << c.name;
        EXPECT_EQ(width, 0) << c.name;
        EXPECT_EQ(height, 0) << c.name;
        EXPECT_NE(imaging::lastStatus(), 0) << c.name;
        if (c.status != anyStatus) {
            EXPECT_EQ(imaging::lastStatus(), c.status) << c.name;
        }
        EXPECT_EQ(m_reports, 1) << c.name;
        EXPECT_TRUE(imaging::drawFile(path, 10, 10).isNull()) << c.name;
    }
}

TEST_F(MeasureTest, ReadsTheHeaderOnlyOfATruncatedFile)
{
    const QByteArray good = readAll(jpeg(u"good.jpg"_s, 400, 300));
    const QString path = m_sandbox.writeFile(u"half.jpg"_s, good.left(good.size() / 2));
    int width = 0;
    int height = 0;
    EXPECT_TRUE(imaging::measure(path, width, height));
    EXPECT_EQ(width, 400);
    EXPECT_EQ(height, 300);
    // Drawing needs the pixels, which are not all there.
    EXPECT_TRUE(imaging::drawFile(path, 40, 30).isNull());
    EXPECT_NE(imaging::lastStatus(), 0);
}

} // namespace
