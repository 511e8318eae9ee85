#include "imaging/imaging.h"
#include "imaging/jpegheader.h"
#include "imaging/picture.h"
#include "fixtures.h"
#include "support/testsupport.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <csignal>
#include <sys/resource.h>

using namespace Qt::StringLiterals;
using namespace valtrona;
using namespace valtrona::test;

namespace {

class SaveTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        ASSERT_TRUE(imaging::start());
        imaging::setQuiet(true);
    }

    void SetUp() override
    {
        m_source = gradientImage(160, 120);
        m_sourcePath = m_sandbox.filePath(u"source.ppm"_s);
        writePnm(m_sourcePath, m_source);
        m_picture = imaging::drawFile(m_sourcePath, -1, -1);
        ASSERT_FALSE(m_picture.isNull());
    }

    QStringList entries(const QString &dir = {}) const
    {
        return QDir(dir.isEmpty() ? m_sandbox.path() : dir)
            .entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
    }

    Sandbox m_sandbox;
    PixelBuffer m_source;
    QString m_sourcePath;
    imaging::Picture m_picture;
};

TEST_F(SaveTest, PngKeepsEveryPixel)
{
    const QString path = m_sandbox.filePath(u"out.png"_s);
    ASSERT_TRUE(imaging::savePng(m_picture, path));
    EXPECT_TRUE(imagesClose(firstChannels(pixelsOf(imaging::pictureFromFile(path)), 3), m_source, 0, 0.0));
}

TEST_F(SaveTest, JpegQualityIsClampedToTheValidRange)
{
    auto save = [&](int quality) {
        const QString path = m_sandbox.filePath(u"q%1.jpg"_s.arg(quality));
        EXPECT_TRUE(imaging::saveJpeg(m_picture, path, quality)) << quality;
        return readAll(path);
    };
    const QByteArray q150 = save(150);
    const QByteArray q100 = save(100);
    const QByteArray q50 = save(50);
    const QByteArray q0 = save(0);
    const QByteArray qMinus5 = save(-5);
    ASSERT_FALSE(q100.isEmpty());
    EXPECT_EQ(q150, q100);
    EXPECT_EQ(qMinus5, q0);
    EXPECT_NE(q50, q100);
    EXPECT_LT(q0.size(), q50.size());
    EXPECT_LT(q50.size(), q100.size());

    const PixelBuffer best = firstChannels(pixelsOf(imaging::pictureFromFile(m_sandbox.filePath(u"q100.jpg"_s))), 3);
    const PixelBuffer worst = firstChannels(pixelsOf(imaging::pictureFromFile(m_sandbox.filePath(u"q0.jpg"_s))), 3);
    EXPECT_GT(psnr(best, m_source), 40.0);
    EXPECT_LT(psnr(worst, m_source), psnr(best, m_source) - 10.0);
}

TEST_F(SaveTest, JpegFlattensTransparencyOntoWhite)
{
    const QString ppm = m_sandbox.filePath(u"blue.ppm"_s);
    writePnm(ppm, solidImage(20, 20, 0, 0, 255));
    PixelBuffer alpha {QByteArray(400, '\0'), 20, 20, 1};
    for (int i = 0; i < 200; ++i)
        alpha.bytes[i] = char(255);
    const QString pgm = m_sandbox.filePath(u"alpha.pgm"_s);
    writePnm(pgm, alpha);
    const QString png = m_sandbox.filePath(u"rgba.png"_s);
    ASSERT_TRUE(runTool(u"vips"_s, {u"bandjoin"_s, ppm + u" "_s + pgm, png}));
    const imaging::Picture picture = imaging::drawFile(png, 10, 10);
    ASSERT_TRUE(picture.hasAlpha());
    // Resampled with premultiplied alpha: the edge row keeps its colour and
    // gets half the coverage, no dark fringe.
    const PixelBuffer drawn = pixelsOf(picture);
    const char *edge = drawn.bytes.constData() + (5 * 10 + 5) * 4;
    EXPECT_EQ(static_cast<unsigned char>(edge[0]), 0);
    EXPECT_GE(static_cast<unsigned char>(edge[2]), 250);

    const QString jpeg = m_sandbox.filePath(u"flat.jpg"_s);
    ASSERT_TRUE(imaging::saveJpeg(picture, jpeg, 95));
    const PixelBuffer flat = pixelsOf(imaging::pictureFromFile(jpeg));
    auto at = [&](int x, int y, int c) { return int(static_cast<unsigned char>(flat.bytes[(y * 10 + x) * 4 + c])); };
    EXPECT_LE(at(5, 1, 0), 8); // opaque blue stays blue
    EXPECT_GE(at(5, 1, 2), 245);
    EXPECT_GE(at(5, 8, 0), 245); // clear turns white, not black
    EXPECT_GE(at(5, 8, 1), 245);

    const QString keep = m_sandbox.filePath(u"keep.png"_s);
    ASSERT_TRUE(imaging::savePng(picture, keep));
    const imaging::Picture reloaded = imaging::pictureFromFile(keep);
    EXPECT_TRUE(reloaded.hasAlpha());
    EXPECT_TRUE(imagesClose(pixelsOf(reloaded), pixelsOf(picture), 0, 0.0));
}

TEST_F(SaveTest, WritesNoMetadata)
{
    // A source with a colour profile and an EXIF block.
    const QString p3 = m_sandbox.filePath(u"p3.jpg"_s);
    ASSERT_TRUE(runTool(u"vips"_s, {u"icc_transform"_s, m_sourcePath, p3, u"p3"_s, u"--input-profile"_s, u"srgb"_s}));
    ASSERT_TRUE(runTool(u"exiftool"_s, {u"-q"_s, u"-overwrite_original"_s, u"-Make=Testkamera"_s, p3}));
    QByteArray sourceBytes = readAll(p3);
    ASSERT_TRUE(sourceBytes.contains("ICC_PROFILE"));
    ASSERT_TRUE(sourceBytes.contains("Testkamera"));

    const imaging::Picture picture = imaging::drawFile(p3, 80, 60);
    const QString jpeg = m_sandbox.filePath(u"out.jpg"_s);
    const QString png = m_sandbox.filePath(u"out.png"_s);
    ASSERT_TRUE(imaging::saveJpeg(picture, jpeg, 85));
    ASSERT_TRUE(imaging::savePng(picture, png));
    const QByteArray jpegBytes = readAll(jpeg);
    EXPECT_FALSE(jpegBytes.contains("ICC_PROFILE"));
    EXPECT_FALSE(jpegBytes.contains("Exif"));
    EXPECT_FALSE(jpegBytes.contains("Testkamera"));
    EXPECT_EQ(imaging::parseJpegHeader(jpegBytes, true).kind, 1);
    const QByteArray pngBytes = readAll(png);
    for (const char *chunk : {"iCCP", "eXIf", "tEXt", "zTXt", "iTXt"})
        EXPECT_FALSE(pngBytes.contains(chunk)) << chunk;
}

TEST_F(SaveTest, FailedSavesLeaveNoFileBehind)
{
    const QString blocker = m_sandbox.writeFile(u"plain-file"_s, "x");
    QDir(m_sandbox.path()).mkdir(u"a-directory"_s);
    const QStringList before = entries();
    const QString targets[] = {
        m_sandbox.filePath(u"missing-dir/out.jpg"_s),
        blocker + u"/out.jpg"_s,
        m_sandbox.filePath(u"a-directory"_s),
    };
    for (const QString &target : targets) {
        EXPECT_FALSE(imaging::saveJpeg(m_picture, target, 85)) << target.toStdString();
        EXPECT_NE(imaging::lastStatus(), 0);
        EXPECT_FALSE(imaging::savePng(m_picture, target)) << target.toStdString();
        EXPECT_FALSE(imaging::copyFile(m_sourcePath, target)) << target.toStdString();
        EXPECT_EQ(entries(), before) << target.toStdString();
    }
    EXPECT_TRUE(entries(m_sandbox.filePath(u"a-directory"_s)).isEmpty());
}

TEST_F(SaveTest, FullDiskKeepsTheOldTargetAndLeavesNoTemporaryFile)
{
    const QString target = m_sandbox.writeFile(u"target.jpg"_s, "old content");
    const QString copyTarget = m_sandbox.writeFile(u"copy.ppm"_s, "old copy");
    const QStringList before = entries();
    {
        test::FileSizeLimit limit(200);
        EXPECT_FALSE(imaging::saveJpeg(m_picture, target, 95));
        EXPECT_FALSE(imaging::savePng(m_picture, target));
        EXPECT_FALSE(imaging::copyFile(m_sourcePath, copyTarget));
    }
    EXPECT_EQ(readAll(target), QByteArray("old content"));
    EXPECT_EQ(readAll(copyTarget), QByteArray("old copy"));
    EXPECT_EQ(entries(), before);
}

TEST_F(SaveTest, SavingOverTheSourceReplacesItWhole)
{
    const QString path = writeWithVips(m_sandbox.filePath(u"photo.jpg"_s), gradientImage(400, 300));
    const imaging::Picture picture = imaging::drawFile(path, 100, 75);
    ASSERT_TRUE(imaging::saveJpeg(picture, path, 85));
    int width = 0;
    int height = 0;
    ASSERT_TRUE(imaging::measure(path, width, height));
    EXPECT_EQ(width, 100);
    EXPECT_EQ(height, 75);
    EXPECT_FALSE(imaging::pictureFromFile(path).isNull());
}

TEST_F(SaveTest, CopyIsByteForByteAndNeverTouchesItsOwnSource)
{
    const QByteArray original = readAll(m_sourcePath);
    const QString target = m_sandbox.filePath(u"sub/../copy.jpg"_s);
    QDir(m_sandbox.path()).mkdir(u"sub"_s);
    ASSERT_TRUE(imaging::copyFile(m_sourcePath, target));
    EXPECT_EQ(readAll(target), original);
    EXPECT_TRUE(imaging::copyFile(m_sourcePath, m_sourcePath));
    EXPECT_TRUE(imaging::copyFile(m_sourcePath, m_sandbox.filePath(u"sub/../source.ppm"_s)));
    EXPECT_EQ(readAll(m_sourcePath), original);
    EXPECT_FALSE(imaging::copyFile(m_sandbox.filePath(u"absent"_s), target));
    EXPECT_EQ(readAll(target), original);
}

} // namespace
