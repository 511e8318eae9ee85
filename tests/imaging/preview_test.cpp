#include "imaging/imaging.h"
#include "imaging/preview.h"
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
        const auto image = imaging::loadPreview(photo, c.maxWidth, c.maxHeight);
        ASSERT_TRUE(image.has_value()) << c.maxWidth << "x" << c.maxHeight;
        EXPECT_EQ(image->width, c.width) << c.maxWidth << "x" << c.maxHeight;
        EXPECT_EQ(image->height, c.height) << c.maxWidth << "x" << c.maxHeight;
        EXPECT_FALSE(image->isNull());
    }
}

TEST_F(PreviewTest, ShowsThePictureFromFileOrMemory)
{
    const PixelBuffer source = gradientImage(400, 300);
    const QString png = writeWithVips(m_sandbox.filePath(u"p.png"_s), source);
    const PixelBuffer fromFile = pixelsOf(imaging::loadPreview(png, 200, 150).value_or({}));
    const PixelBuffer fromData = pixelsOf(imaging::loadPreviewFromData(readAll(png), 200, 150).value_or({}));
    EXPECT_TRUE(imagesClose(fromData, fromFile, 0, 0.0));
    EXPECT_TRUE(imagesClose(firstChannels(fromFile, 3), referenceResample(source, 200, 150), 8, 1.0));
    EXPECT_EQ(channelMean(fromFile, 3), 255.0); // opaque alpha added

    const QString bmp = m_sandbox.filePath(u"b.bmp"_s);
    const QString ppm = m_sandbox.filePath(u"b.ppm"_s);
    writePnm(ppm, source);
    ASSERT_TRUE(runTool(u"vips"_s, {u"magicksave"_s, ppm, bmp}));
    // BMP is read by a format module, which the layer loads on first need:
    // here from memory, then from a file.
    const auto bmpFromData = imaging::loadPreviewFromData(readAll(bmp), 0, 0);
    ASSERT_TRUE(bmpFromData.has_value()) << qPrintable(bmpFromData.error().detail);
    EXPECT_TRUE(imagesClose(firstChannels(pixelsOf(*bmpFromData), 3), source, 0, 0.0));
    EXPECT_TRUE(imagesClose(firstChannels(decoded(bmp), 3), source, 0, 0.0));
}

// From a file a preview fails as measuring does (the conversion test);
// from memory it says the same.
TEST_F(PreviewTest, BadDataInMemorySaysWhatIsWrong)
{
    const QByteArray photo = readAll(writeWithVips(m_sandbox.filePath(u"photo.jpg"_s), gradientImage(64, 48)));
    const std::pair<QByteArray, ErrorCode> cases[] = {
        {QByteArray(), ErrorCode::UnknownFormat},
        {QByteArray(100, '\xff'), ErrorCode::UnknownFormat},
        {photo.left(30), ErrorCode::Damaged},
        {pngClaiming(100000, 100000), ErrorCode::TooLarge},
    };
    for (const auto &[bytes, code] : cases) {
        const auto preview = imaging::loadPreviewFromData(bytes, 100, 100);
        ASSERT_FALSE(preview.has_value()) << bytes.size();
        EXPECT_EQ(int(preview.error().code), int(code)) << bytes.size();
    }
}

} // namespace
