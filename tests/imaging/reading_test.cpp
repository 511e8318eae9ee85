// Reading a source without drawing it: its size from the header, and the
// pixels for showing it on screen.

#include "imaging/imaging.h"
#include "imaging/preview.h"
#include "fixtures.h"
#include "support/testsupport.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace valtrona;
using namespace valtrona::test;

namespace {

class ReadingTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(imaging::start()); }

    Sandbox m_sandbox;
};

// Every format is measured in the formats test, every failure in the
// conversion test; here the names the image library might misread.
TEST_F(ReadingTest, MeasuresSizesBehindOddNames)
{
    const QString jpeg = writeWithVips(m_sandbox.filePath(u"plain.jpg"_s), gradientImage(50, 40), u"[Q=90]"_s);
    const struct
    {
        const char *name;
        int width;
        int height;
    } cases[] = {
        {"pixel.png", 1, 1}, {"Bild [1] äöü ß.jpg", 64, 48}, {"ends in bracket[Q=5]", 50, 40},
        {"no-suffix", 50, 40}, {"wrong suffix.png", 50, 40}, // JPEG bytes: the content decides
    };
    for (const auto &c : cases) {
        const QString path = m_sandbox.filePath(QString::fromUtf8(c.name));
        if (c.width == 50)
            QFile::copy(jpeg, path);
        else
            writeWithVips(path, gradientImage(c.width, c.height));
        const auto size = imaging::measure(path);
        ASSERT_TRUE(size.has_value()) << c.name << ": " << qPrintable(size.error().detail);
        EXPECT_EQ(*size, QSize(c.width, c.height)) << c.name;
    }
}

// A header may claim any size: beyond what the layer accepts it is refused
// before anything is decoded, by measuring and by the previews alike.
TEST_F(ReadingTest, RefusesImplausibleSizes)
{
    const QByteArray good = readAll(writeWithVips(m_sandbox.filePath(u"good.jpg"_s), gradientImage(120, 80)));
    const struct
    {
        const char *name;
        QByteArray bytes;
        ErrorCode code;
    } cases[] = {
        {"huge JPEG frame", withFrameSize(good, 60000, 60000), ErrorCode::TooLarge},
        {"huge PNG claim", pngClaiming(100000, 100000), ErrorCode::TooLarge},
        {"zero-size frame", withFrameSize(good, 0, 0), ErrorCode::Damaged},
    };
    for (const auto &c : cases) {
        const auto size = imaging::measure(m_sandbox.writeFile(u"claim"_s, c.bytes));
        const auto preview = imaging::loadPreview(m_sandbox.filePath(u"claim"_s), 100, 100);
        const auto fromData = imaging::loadPreviewFromData(c.bytes, 100, 100);
        ASSERT_FALSE(size.has_value() || preview.has_value() || fromData.has_value()) << c.name;
        for (const Error &error : {size.error(), preview.error(), fromData.error()})
            EXPECT_EQ(int(error.code), int(c.code)) << c.name << ": " << qPrintable(error.detail);
    }
}

// A preview fits into its box keeping the aspect and is never enlarged; a
// limit of 0 or less is none. From a file or from memory it is the same
// picture, opaque where the source has no transparency.
TEST_F(ReadingTest, PreviewsFitTheBoxAndShowThePicture)
{
    const PixelBuffer source = gradientImage(1200, 800);
    const QString png = writeWithVips(m_sandbox.filePath(u"photo.png"_s), source);
    const struct
    {
        int maxWidth;
        int maxHeight;
        int width;
        int height;
    } cases[] = {
        {300, 300, 300, 200}, {600, 100, 150, 100}, {2400, 1600, 1200, 800},
        {0, 0, 1200, 800},    {0, 80, 120, 80},     {240, -1, 240, 160},     {1, 1, 1, 1},
    };
    for (const auto &c : cases) {
        const auto image = imaging::loadPreview(png, c.maxWidth, c.maxHeight);
        ASSERT_TRUE(image.has_value()) << c.maxWidth << "x" << c.maxHeight;
        EXPECT_EQ(QSize(image->width, image->height), QSize(c.width, c.height)) << c.maxWidth << "x" << c.maxHeight;
    }

    const PixelBuffer fromFile = pixelsOf(imaging::loadPreview(png, 300, 200).value_or({}));
    const PixelBuffer fromData = pixelsOf(imaging::loadPreviewFromData(readAll(png), 300, 200).value_or({}));
    EXPECT_TRUE(imagesClose(fromData, fromFile, 0, 0.0));
    EXPECT_TRUE(imagesClose(firstChannels(fromFile, 3), referenceResample(source, 300, 200), 8, 1.0));
    for (qsizetype alpha = 3; alpha < fromFile.bytes.size(); alpha += 4)
        ASSERT_EQ(fromFile.bytes.at(alpha), char(255)) << "pixel " << alpha / 4;
}

} // namespace
