#include "imaging/imaging.h"
#include "imaging/picture.h"
#include "fixtures.h"
#include "support/testsupport.h"

#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;
using namespace valtrona;
using namespace valtrona::test;

namespace {

class DrawTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        ASSERT_TRUE(imaging::start());
        imaging::setQuiet(true);
    }

    Sandbox m_sandbox;
};

PixelBuffer checkerboard(int size)
{
    PixelBuffer image {QByteArray(qsizetype(size) * size, '\0'), size, size, 1};
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
            image.bytes[qsizetype(y) * size + x] = char((x + y) % 2 ? 255 : 0);
    return image;
}

imaging::DrawModes withInterpolation(int code, int quality = 2)
{
    imaging::DrawModes modes;
    modes.interpolation = code;
    modes.compositingQuality = quality;
    return modes;
}

TEST_F(DrawTest, GivesExactlyTheAskedSizeForEveryCode)
{
    const struct
    {
        const char *name;
        int width;
        int height;
    } sources[] = {{"small.png", 300, 200}, {"photo.jpg", 1600, 1200}, {"dot.png", 1, 1}};
    const struct
    {
        int width;
        int height;
    } targets[] = {{150, 100}, {100, 150}, {1, 1},   {1, 200}, {300, 1},  {37, 23},
                   {601, 401}, {-1, -1},  {-1, 50}, {80, -1}, {1024, 3}, {99, 1599}};
    for (const auto &s : sources) {
        const QString path = writeWithVips(m_sandbox.filePath(QString::fromLatin1(s.name)),
                                           gradientImage(s.width, s.height));
        for (const auto &t : targets) {
            const int wantWidth = t.width == -1 ? s.width : t.width;
            const int wantHeight = t.height == -1 ? s.height : t.height;
            // Nearest (no shrink while decoding), the default, and linear
            // light take different roads through the library.
            for (const int code : {5, 7, 3}) {
                const imaging::Picture picture =
                    imaging::drawFile(path, t.width, t.height, withInterpolation(code, code == 3 ? 3 : 2));
                ASSERT_FALSE(picture.isNull()) << s.name << " to " << t.width << "x" << t.height;
                EXPECT_EQ(picture.width(), wantWidth) << s.name << " code " << code;
                EXPECT_EQ(picture.height(), wantHeight) << s.name << " code " << code;
                const imaging::RgbaImage rgba = picture.toRgba();
                EXPECT_FALSE(rgba.isNull());
                EXPECT_EQ(rgba.pixels.size(), qsizetype(wantWidth) * wantHeight * 4);
            }
        }
    }
}

TEST_F(DrawTest, EveryCodeResamplesLikeTheReference)
{
    const PixelBuffer source = gradientImage(640, 480);
    const QString path = writeWithVips(m_sandbox.filePath(u"gradient.png"_s), source);
    const struct
    {
        int width;
        int height;
    } targets[] = {{160, 120}, {200, 90}, {1000, 700}, {641, 479}};
    for (const auto &t : targets) {
        const PixelBuffer expected = referenceResample(source, t.width, t.height);
        for (const int code : {0, 1, 2, 3, 4, 5, 6, 7, 99, -3}) {
            const imaging::Picture picture = imaging::drawFile(path, t.width, t.height, withInterpolation(code));
            ASSERT_FALSE(picture.isNull());
            EXPECT_TRUE(imagesClose(firstChannels(pixelsOf(picture), 3), expected, 8, 1.0))
                << "code " << code << " to " << t.width << "x" << t.height;
        }
    }
}

TEST_F(DrawTest, LargeJpegDownscaleKeepsQuality)
{
    // 2400x1600 to 150x100 lets the decoder shrink by 8 before the kernel.
    const QString path = writeWithVips(m_sandbox.filePath(u"large.jpg"_s), gradientImage(2400, 1600),
                                       u"[Q=95]"_s);
    const PixelBuffer decoded = firstChannels(pixelsOf(imaging::pictureFromFile(path)), 3);
    ASSERT_EQ(decoded.width, 2400);
    const PixelBuffer expected = referenceResample(decoded, 150, 100);
    for (const int code : {7, 2, 4, 0}) {
        const imaging::Picture picture = imaging::drawFile(path, 150, 100, withInterpolation(code));
        EXPECT_TRUE(imagesClose(firstChannels(pixelsOf(picture), 3), expected, 8, 1.0))
            << "code " << code;
    }
}

TEST_F(DrawTest, CodesKeepTheirCharacterOnAFinePattern)
{
    // A one-pixel checkerboard halved: nearest keeps picking pure black or
    // white, every other kernel averages to mid grey, and linear light
    // averages the light (50 % light is 188 in sRGB).
    const QString path = m_sandbox.filePath(u"checker.pgm"_s);
    writePnm(path, checkerboard(200));
    const struct
    {
        int code;
        int quality;
        double low;
        double high;
        bool pureOnly;
    } cases[] = {
        {5, 2, 0, 255, true},     {0, 2, 118, 138, false},  {3, 2, 118, 138, false},
        {4, 2, 118, 138, false},  {6, 2, 118, 138, false},  {7, 2, 118, 138, false},
        {2, 2, 118, 138, false},  {7, 3, 180, 196, false},  {3, 3, 180, 196, false},
        {7, 4, 118, 138, false},
    };
    for (const auto &c : cases) {
        const PixelBuffer result = pixelsOf(imaging::drawFile(path, 100, 100, withInterpolation(c.code, c.quality)));
        ASSERT_EQ(result.width, 100) << "code " << c.code;
        for (qsizetype i = 0; i < result.bytes.size(); i += 4) {
            const int value = static_cast<unsigned char>(result.bytes[i]);
            if (c.pureOnly) {
                ASSERT_TRUE(value == 0 || value == 255) << "code " << c.code << " value " << value;
            } else {
                ASSERT_GE(value, c.low) << "code " << c.code << " quality " << c.quality << " at " << i / 4;
                ASSERT_LE(value, c.high) << "code " << c.code << " quality " << c.quality << " at " << i / 4;
            }
        }
    }
}

// Four rows of one colour each, eight pixels wide.
PixelBuffer colourRows(const int (&rgb)[4][3])
{
    PixelBuffer image = solidImage(8, 4, 0, 0, 0);
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 8; ++x)
            for (int c = 0; c < 3; ++c)
                image.bytes[(y * 8 + x) * 3 + c] = char(rgb[y][c]);
    return image;
}

TEST_F(DrawTest, EmbeddedProfileIsConvertedToSrgb)
{
    // Saturated colours stored through a wide-gamut profile: their numbers
    // change a lot, the colours must not.
    const int rgb[4][3] = {{255, 0, 0}, {0, 200, 0}, {30, 60, 220}, {128, 128, 128}};
    const PixelBuffer colours = colourRows(rgb);
    const QString ppm = m_sandbox.filePath(u"colours.ppm"_s);
    writePnm(ppm, colours);
    const QString p3 = m_sandbox.filePath(u"p3.png"_s);
    ASSERT_TRUE(runTool(u"vips"_s, {u"icc_transform"_s, ppm, p3, u"p3"_s, u"--input-profile"_s, u"srgb"_s}));
    const QString p3Jpeg = m_sandbox.filePath(u"p3.jpg"_s);
    ASSERT_TRUE(runTool(u"vips"_s, {u"copy"_s, p3, p3Jpeg + u"[Q=100,subsample-mode=off]"_s}));

    for (const QString &path : {p3, p3Jpeg}) {
        const imaging::Picture picture = imaging::drawFile(path, 8, 4, withInterpolation(5));
        ASSERT_FALSE(picture.isNull()) << path.toStdString();
        // JPEG adds a few steps of its own to saturated colours.
        EXPECT_TRUE(imagesClose(firstChannels(pixelsOf(picture), 3), colours, 8, 1.5)) << path.toStdString();
        EXPECT_TRUE(imagesClose(firstChannels(pixelsOf(imaging::pictureFromFile(path)), 3), colours, 8, 1.5))
            << path.toStdString();
    }
}

TEST_F(DrawTest, CmykJpegsComeOutAsSrgb)
{
    // Colours inside the CMYK gamut, so only the conversion's own rounding
    // remains; an inverted or misread CMYK file is off by far more.
    const int rgb[4][3] = {{180, 120, 90}, {90, 140, 110}, {100, 110, 160}, {128, 128, 128}};
    const PixelBuffer colours = colourRows(rgb);
    const QString ppm = m_sandbox.filePath(u"colours.ppm"_s);
    writePnm(ppm, colours);
    const QString cmyk = m_sandbox.filePath(u"cmyk.jpg"_s);
    ASSERT_TRUE(runTool(u"vips"_s, {u"colourspace"_s, ppm, cmyk + u"[Q=100]"_s, u"cmyk"_s}));
    const QString bareCmyk = m_sandbox.filePath(u"cmyk-without-profile.jpg"_s);
    ASSERT_TRUE(runTool(u"vips"_s, {u"copy"_s, cmyk, bareCmyk + u"[Q=100,strip]"_s}));

    for (const QString &path : {cmyk, bareCmyk}) {
        const imaging::Picture picture = imaging::drawFile(path, -1, -1);
        ASSERT_FALSE(picture.isNull()) << path.toStdString();
        EXPECT_FALSE(picture.hasAlpha());
        EXPECT_TRUE(imagesClose(firstChannels(pixelsOf(picture), 3), colours, 12, 6.0)) << path.toStdString();
        EXPECT_TRUE(imagesClose(firstChannels(pixelsOf(imaging::loadPreview(path, 8, 4)), 3), colours, 12, 6.0))
            << path.toStdString();
    }
}

TEST_F(DrawTest, DeepAndGreyImagesComeOutAsEightBitRgb)
{
    const PixelBuffer source = gradientImage(60, 40);
    const QString ppm = m_sandbox.filePath(u"source.ppm"_s);
    writePnm(ppm, source);
    const QString deep = m_sandbox.filePath(u"deep.png"_s);
    ASSERT_TRUE(runTool(u"vips"_s, {u"colourspace"_s, ppm, deep, u"rgb16"_s}));
    const imaging::Picture picture = imaging::drawFile(deep, -1, -1);
    EXPECT_TRUE(imagesClose(firstChannels(pixelsOf(picture), 3), source, 1, 0.5));

    PixelBuffer grey = firstChannels(source, 1);
    const QString pgm = m_sandbox.filePath(u"grey.pgm"_s);
    writePnm(pgm, grey);
    const PixelBuffer drawn = firstChannels(pixelsOf(imaging::drawFile(pgm, -1, -1)), 3);
    PixelBuffer expected {QByteArray(), grey.width, grey.height, 3};
    for (const char value : std::as_const(grey.bytes))
        expected.bytes.append(value).append(value).append(value);
    EXPECT_TRUE(imagesClose(drawn, expected, 1, 0.1));
}

TEST_F(DrawTest, FailuresGiveANullPictureAndAStatus)
{
    const QString path = writeWithVips(m_sandbox.filePath(u"ok.png"_s), gradientImage(20, 20));
    const struct
    {
        QString path;
        int width;
        int height;
        int status;
    } cases[] = {
        {m_sandbox.filePath(u"absent.png"_s), 10, 10, imaging::FileNotFound},
        {path, 0, 10, imaging::InvalidParameter},
        {path, 10, -2, imaging::InvalidParameter},
        {path, 100000, 100000, imaging::ValueOverflow},
        {m_sandbox.writeFile(u"text.png"_s, "kein Bild"), 10, 10, imaging::UnknownImageFormat},
    };
    for (const auto &c : cases) {
        EXPECT_TRUE(imaging::drawFile(c.path, c.width, c.height).isNull()) << c.width << "x" << c.height;
        EXPECT_EQ(imaging::lastStatus(), c.status) << c.width << "x" << c.height;
    }
}

TEST_F(DrawTest, ParallelConversionsGiveTheSameFilesAsSequentialOnes)
{
    constexpr int kFiles = 12;
    std::vector<QString> sources;
    for (int i = 0; i < kFiles; ++i) {
        sources.push_back(writeWithVips(m_sandbox.filePath(u"in%1.jpg"_s.arg(i)),
                                        gradientImage(400 + 37 * i, 300 + 11 * i)));
    }
    auto convert = [&](int i, const QString &suffix) {
        const imaging::Picture picture = imaging::drawFile(sources[size_t(i)], 120 + i, 90);
        return !picture.isNull()
               && imaging::saveJpeg(picture, m_sandbox.filePath(u"out%1-%2.jpg"_s.arg(i).arg(suffix)), 85)
               && imaging::lastStatus() == 0;
    };
    for (int i = 0; i < kFiles; ++i)
        ASSERT_TRUE(convert(i, u"seq"_s));

    std::vector<int> ok(kFiles, 0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = t; i < kFiles; i += 4)
                ok[size_t(i)] = convert(i, u"par"_s) ? 1 : 0;
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    for (int i = 0; i < kFiles; ++i) {
        EXPECT_EQ(ok[size_t(i)], 1) << i;
        EXPECT_EQ(readAll(m_sandbox.filePath(u"out%1-par.jpg"_s.arg(i))),
                  readAll(m_sandbox.filePath(u"out%1-seq.jpg"_s.arg(i))))
            << i;
    }
}

} // namespace
