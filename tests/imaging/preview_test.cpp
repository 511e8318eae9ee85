#include "imaging/imaging.h"
#include "imaging/picture.h"
#include "fixtures.h"
#include "support/testsupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace valtrona;
using namespace valtrona::test;

namespace {

class PreviewTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        ASSERT_TRUE(imaging::start());
        imaging::setQuiet(true);
    }

    Sandbox m_sandbox;
};

TEST_F(PreviewTest, FitsIntoTheBoxKeepingTheAspect)
{
    const QString photo = writeWithVips(m_sandbox.filePath(u"photo.jpg"_s), gradientImage(1200, 800));
    const struct
    {
        int maxWidth;
        int maxHeight;
        int width;
        int height;
    } cases[] = {
        {300, 300, 300, 200}, {600, 100, 150, 100}, {2400, 1600, 1200, 800}, // never enlarged
        {0, 0, 1200, 800},    {0, 80, 120, 80},     {240, -1, 240, 160},     {1, 1, 1, 1},
    };
    for (const auto &c : cases) {
        const imaging::RgbaImage image = imaging::loadPreview(photo, c.maxWidth, c.maxHeight);
        ASSERT_FALSE(image.isNull()) << c.maxWidth << "x" << c.maxHeight;
        EXPECT_EQ(image.width, c.width) << c.maxWidth << "x" << c.maxHeight;
        EXPECT_EQ(image.height, c.height) << c.maxWidth << "x" << c.maxHeight;
        EXPECT_EQ(image.pixels.size(), qsizetype(c.width) * c.height * 4);
    }
}

TEST_F(PreviewTest, ShowsThePictureFromFileOrMemory)
{
    const PixelBuffer source = gradientImage(400, 300);
    const QString png = writeWithVips(m_sandbox.filePath(u"p.png"_s), source);
    const imaging::RgbaImage fromFile = imaging::loadPreview(png, 200, 150);
    const imaging::RgbaImage fromData = imaging::loadPreviewFromData(readAll(png), 200, 150);
    EXPECT_TRUE(imagesClose(pixelsOf(fromData), pixelsOf(fromFile), 0, 0.0));
    EXPECT_TRUE(imagesClose(firstChannels(pixelsOf(fromFile), 3), referenceResample(source, 200, 150), 8, 1.0));
    EXPECT_EQ(channelMean(pixelsOf(fromFile), 3), 255.0); // opaque alpha added

    const QString bmp = m_sandbox.filePath(u"b.bmp"_s);
    const QString ppm = m_sandbox.filePath(u"b.ppm"_s);
    writePnm(ppm, source);
    ASSERT_TRUE(runTool(u"vips"_s, {u"magicksave"_s, ppm, bmp}));
    // BMP is read by a format module, which the layer loads on first need:
    // here from memory, then from a file.
    EXPECT_TRUE(imagesClose(firstChannels(pixelsOf(imaging::loadPreviewFromData(readAll(bmp), 0, 0)), 3), source, 0, 0.0));
    EXPECT_TRUE(imagesClose(firstChannels(pixelsOf(imaging::loadPreview(bmp, 0, 0)), 3), source, 0, 0.0));
}

TEST_F(PreviewTest, BadInputGivesANullImage)
{
    const QByteArray photo = readAll(writeWithVips(m_sandbox.filePath(u"photo.jpg"_s), gradientImage(64, 48)));
    const QByteArray inputs[] = {QByteArray(), QByteArray("kein Bild"), photo.left(30), QByteArray(100, '\xff')};
    for (const QByteArray &bytes : inputs) {
        EXPECT_TRUE(imaging::loadPreviewFromData(bytes, 100, 100).isNull()) << bytes.size();
        EXPECT_TRUE(imaging::loadPreview(m_sandbox.writeFile(u"bad.jpg"_s, bytes), 100, 100).isNull()) << bytes.size();
    }
    EXPECT_TRUE(imaging::loadPreview(m_sandbox.filePath(u"absent.jpg"_s), 100, 100).isNull());
    EXPECT_TRUE(imaging::loadPreview(m_sandbox.path(), 100, 100).isNull());
}

} // namespace
