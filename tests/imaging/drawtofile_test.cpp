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

const QString kJpeg = u"image/jpeg"_s;
const QString kPng = u"image/png"_s;

class DrawToFileTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        ASSERT_TRUE(imaging::start());
        imaging::setQuiet(true);
    }

    QStringList entries() const
    {
        return QDir(m_sandbox.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden, QDir::Name);
    }

    Sandbox m_sandbox;
};

imaging::DrawModes withInterpolation(int code, int quality = 2)
{
    imaging::DrawModes modes;
    modes.interpolation = code;
    modes.compositingQuality = quality;
    return modes;
}

// The streamed conversion must give what drawing into memory and saving
// gives: the exact size, sRGB pixels, and for JPEG a plain JFIF file without
// metadata.
TEST_F(DrawToFileTest, WritesWhatDrawingAndSavingWrite)
{
    const QString png = writeWithVips(m_sandbox.filePath(u"small.png"_s), gradientImage(300, 200));
    // Large enough for every shrink while decoding (2, 4 and 8).
    const QString jpeg = writeWithVips(m_sandbox.filePath(u"photo.jpg"_s), gradientImage(2400, 1800), u"[Q=95]"_s);
    // Wide-gamut colours with an embedded profile and an EXIF block.
    const QString p3 = m_sandbox.filePath(u"p3.jpg"_s);
    ASSERT_TRUE(runTool(u"vips"_s, {u"icc_transform"_s, png, p3, u"p3"_s, u"--input-profile"_s, u"srgb"_s}));
    ASSERT_TRUE(runTool(u"exiftool"_s, {u"-q"_s, u"-overwrite_original"_s, u"-Make=Testkamera"_s, p3}));

    const struct
    {
        QString source;
        int width;
        int height;
        int code;
        int quality;
    } cases[] = {
        {png, 150, 100, 7, 2},   {png, 37, 301, 7, 2},     {png, -1, -1, 5, 2},   {png, 99, 66, 7, 3},
        {jpeg, 1024, 768, 7, 2}, {jpeg, 601, 450, 7, 2},   {jpeg, 300, 225, 4, 2}, {jpeg, 150, 113, 0, 2},
        {jpeg, 1, 1, 7, 2},      {jpeg, 1200, 5, 5, 2},    {jpeg, 640, 480, 7, 3}, {p3, 150, 100, 7, 2},
        {p3, 300, 200, 7, 2},
    };
    int n = 0;
    for (const auto &c : cases) {
        const imaging::DrawModes modes = withInterpolation(c.code, c.quality);
        const imaging::Picture drawn = imaging::drawFile(c.source, c.width, c.height, modes);
        ASSERT_FALSE(drawn.isNull());
        const PixelBuffer expected = firstChannels(pixelsOf(drawn), 3);
        const QString where = u"%1 to %2x%3 code %4"_s.arg(QFileInfo(c.source).fileName()).arg(c.width).arg(c.height).arg(c.code);

        const QString pngOut = m_sandbox.filePath(u"out%1.png"_s.arg(n));
        ASSERT_TRUE(imaging::drawFileToFile(c.source, pngOut, c.width, c.height, modes, kPng, 85)) << qPrintable(where);
        EXPECT_TRUE(imagesClose(firstChannels(pixelsOf(imaging::pictureFromFile(pngOut)), 3), expected, 0, 0.0))
            << qPrintable(where);

        const QString jpegOut = m_sandbox.filePath(u"out%1.jpg"_s.arg(n));
        const QString jpegSaved = m_sandbox.filePath(u"saved%1.jpg"_s.arg(n));
        ASSERT_TRUE(imaging::drawFileToFile(c.source, jpegOut, c.width, c.height, modes, kJpeg, 90)) << qPrintable(where);
        ASSERT_TRUE(imaging::saveJpeg(drawn, jpegSaved, 90));
        const QByteArray bytes = readAll(jpegOut);
        EXPECT_EQ(bytes, readAll(jpegSaved)) << qPrintable(where);
        EXPECT_EQ(imaging::parseJpegHeader(bytes, true).kind, 1) << qPrintable(where);
        EXPECT_FALSE(bytes.contains("ICC_PROFILE")) << qPrintable(where);
        EXPECT_FALSE(bytes.contains("Testkamera")) << qPrintable(where);
        int width = 0;
        int height = 0;
        ASSERT_TRUE(imaging::measure(jpegOut, width, height));
        EXPECT_EQ(width, drawn.width()) << qPrintable(where);
        EXPECT_EQ(height, drawn.height()) << qPrintable(where);
        ++n;
    }
}

TEST_F(DrawToFileTest, QualityIsClampedAndTransparencyFlattened)
{
    // A gradient that is fully transparent everywhere: the JPEG must come
    // out white.
    const QString ppm = m_sandbox.filePath(u"colour.ppm"_s);
    writePnm(ppm, gradientImage(64, 48));
    const QString pgm = m_sandbox.filePath(u"alpha.pgm"_s);
    writePnm(pgm, PixelBuffer {QByteArray(64 * 48, '\0'), 64, 48, 1});
    const QString source = m_sandbox.filePath(u"clear.png"_s);
    ASSERT_TRUE(runTool(u"vips"_s, {u"bandjoin"_s, ppm + u" "_s + pgm, source}));
    auto convert = [&](int quality) {
        const QString path = m_sandbox.filePath(u"q%1.jpg"_s.arg(quality));
        EXPECT_TRUE(imaging::drawFileToFile(source, path, 32, 24, {}, kJpeg, quality)) << quality;
        return readAll(path);
    };
    EXPECT_EQ(convert(150), convert(100));
    EXPECT_EQ(convert(-5), convert(0));
    EXPECT_NE(convert(50), convert(100));
    const PixelBuffer white = solidImage(32, 24, 255, 255, 255);
    EXPECT_TRUE(imagesClose(firstChannels(pixelsOf(imaging::pictureFromFile(m_sandbox.filePath(u"q100.jpg"_s))), 3),
                            white, 2, 0.5));
}

TEST_F(DrawToFileTest, FailuresLeaveNoFileAndKeepAnOldTarget)
{
    // The pixels of a cut-off JPEG run out while the encoder is already
    // taking them in; that must still fail, not write grey rows.
    const QByteArray whole = readAll(writeWithVips(m_sandbox.filePath(u"whole.jpg"_s), gradientImage(1600, 1200)));
    const QString truncated = m_sandbox.writeFile(u"truncated.jpg"_s, whole.left(whole.size() / 2));
    const QString text = m_sandbox.writeFile(u"text.jpg"_s, "kein Bild");
    const QString empty = m_sandbox.writeFile(u"empty.jpg"_s, QByteArray());
    const QString old = m_sandbox.writeFile(u"old.jpg"_s, "old content");
    const QString good = m_sandbox.filePath(u"whole.jpg"_s);
    const QStringList before = entries();

    const struct
    {
        QString source;
        QString target;
        int width;
        QString mimeType;
    } cases[] = {
        {truncated, m_sandbox.filePath(u"a.jpg"_s), 400, kJpeg},
        {truncated, m_sandbox.filePath(u"a.png"_s), 400, kPng},
        {truncated, old, 100, kJpeg},
        {text, m_sandbox.filePath(u"b.jpg"_s), 100, kJpeg},
        {empty, m_sandbox.filePath(u"c.jpg"_s), 100, kJpeg},
        {m_sandbox.filePath(u"absent.jpg"_s), m_sandbox.filePath(u"d.jpg"_s), 100, kJpeg},
        {good, m_sandbox.filePath(u"missing-dir/e.jpg"_s), 100, kJpeg},
        {good, m_sandbox.filePath(u"f.jpg"_s), 0, kJpeg},
        {good, m_sandbox.filePath(u"g.jpg"_s), 100000, kJpeg},
    };
    for (const auto &c : cases) {
        EXPECT_FALSE(imaging::drawFileToFile(c.source, c.target, c.width, 100, {}, c.mimeType, 85))
            << qPrintable(c.source) << " -> " << qPrintable(c.target);
        EXPECT_NE(imaging::lastStatus(), imaging::Ok) << qPrintable(c.source);
        EXPECT_EQ(entries(), before) << qPrintable(c.source);
    }
    {
        test::FileSizeLimit limit(200);
        EXPECT_FALSE(imaging::drawFileToFile(good, old, 400, 300, {}, kJpeg, 95));
    }
    EXPECT_EQ(readAll(old), QByteArray("old content"));
    EXPECT_EQ(entries(), before);
}

TEST_F(DrawToFileTest, MissingEncoderIsReportedEvenWhenQuiet)
{
    QStringList reports;
    imaging::setReporter([&reports](const QString &title, const QString &text) { reports << title + u'|' + text; });
    const QString source = writeWithVips(m_sandbox.filePath(u"in.png"_s), gradientImage(20, 20));
    EXPECT_FALSE(imaging::drawFileToFile(source, m_sandbox.filePath(u"out.xyz"_s), 10, 10, {}, u"image/x-unknown"_s, 80));
    imaging::setReporter({});
    EXPECT_EQ(reports, QStringList {u"Encoder Error|Es konnte kein passender Encoder ermittelt werden !"_s});
    EXPECT_FALSE(QFile::exists(m_sandbox.filePath(u"out.xyz"_s)));
}

TEST_F(DrawToFileTest, ASourceBecomesItsOwnTargetWhole)
{
    // Big enough that the decoder reads the file in many pieces while the
    // encoder writes.
    const PixelBuffer source = gradientImage(3000, 2000);
    const QString path = writeWithVips(m_sandbox.filePath(u"photo.jpg"_s), source, u"[Q=95]"_s);
    const PixelBuffer expected = firstChannels(pixelsOf(imaging::drawFile(path, 750, 500)), 3);
    ASSERT_TRUE(imaging::drawFileToFile(path, path, 750, 500, {}, kJpeg, 95));
    int width = 0;
    int height = 0;
    ASSERT_TRUE(imaging::measure(path, width, height));
    EXPECT_EQ(width, 750);
    EXPECT_EQ(height, 500);
    const PixelBuffer written = firstChannels(pixelsOf(imaging::pictureFromFile(path)), 3);
    EXPECT_GT(psnr(written, expected), 38.0);
    EXPECT_EQ(entries(), QStringList {u"photo.jpg"_s});
}

} // namespace
