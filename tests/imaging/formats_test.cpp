// Every format the open dialog offers, and every colour encoding: measured
// from its header and drawn into every output format a run writes, with the
// colours of the source.

#include "imaging/conversion.h"
#include "imaging/imaging.h"
#include "fixtures.h"
#include "support/testsupport.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace valtrona;
using namespace valtrona::test;

namespace {

struct InputFormat
{
    const char *suffix;
    const char *saveOptions;  ///< for `vips copy`, which writes the source
    double minPsnr;           ///< against a plain resample; lossy and palette formats lose a little
};

struct OutputFormat
{
    imaging::OutputFormat format;
    const char *suffix;
    double psnrLoss; ///< what the format may lose beyond the input's allowance
};

// The formats read here, the lazily loaded modules' ones (BMP, HEIF/AVIF,
// JPEG XL) included.
constexpr InputFormat kInputs[] = {
    {"jpg", "[Q=95]", 40.0},  {"png", "", 45.0},        {"gif", "", 38.0},        {"bmp", "", 45.0},
    {"tif", "", 45.0},        {"webp", "[Q=95]", 40.0}, {"heic", "[Q=90]", 40.0}, {"avif", "[Q=90]", 40.0},
    {"jxl", "[Q=95]", 40.0},
};

constexpr OutputFormat kOutputs[] = {
    {imaging::OutputFormat::Jpeg, ".jpg", 0.0},
    {imaging::OutputFormat::Png, ".png", 0.0},
    {imaging::OutputFormat::WebP, ".webp", 5.0}, // chroma at half resolution, even at quality 95
    {imaging::OutputFormat::Avif, ".avif", 0.0},
};

TEST(InputFormats, EachIsMeasuredAndDrawnIntoEveryOutputFormat)
{
    ASSERT_TRUE(imaging::start());
    Sandbox sandbox;
    const PixelBuffer source = gradientImage(96, 64);
    const PixelBuffer expected = referenceResample(source, 48, 32);

    for (const InputFormat &in : kInputs) {
        const QString suffix = QString::fromLatin1(in.suffix);
        const QString path = writeWithVips(sandbox.filePath(u"source."_s + suffix), source,
                                           QString::fromLatin1(in.saveOptions));
        EXPECT_EQ(imaging::measure(path).value_or({}), QSize(96, 64)) << in.suffix;

        for (const OutputFormat &out : kOutputs) {
            imaging::DrawRequest request = drawRequest(path, 48, 32, out.format);
            request.quality = 95;
            const auto drawn = drawToFile(request, sandbox.filePath(u"out"_s), suffix + QString::fromLatin1(out.suffix));
            ASSERT_TRUE(drawn.has_value()) << in.suffix << " to " << out.suffix << ": " << qPrintable(drawn.error().detail);
            const PixelBuffer pixels = firstChannels(decoded(*drawn), 3);
            EXPECT_GT(psnr(pixels, expected), in.minPsnr - out.psnrLoss) << in.suffix << " to " << out.suffix;
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

// Whatever colour encoding a source has (a wide-gamut profile, CMYK with or
// without a profile, 16 bits, grey), the output holds its colours as 8-bit
// sRGB. The CMYK colours lie inside the CMYK gamut, so only the conversion's
// own rounding remains; an inverted or misread CMYK file is off by far more.
TEST(ColourEncodings, ComeOutAsEightBitSrgb)
{
    ASSERT_TRUE(imaging::start());
    Sandbox sandbox;
    const int saturated[4][3] = {{255, 0, 0}, {0, 200, 0}, {30, 60, 220}, {128, 128, 128}};
    const int inCmykGamut[4][3] = {{180, 120, 90}, {90, 140, 110}, {100, 110, 160}, {128, 128, 128}};
    const PixelBuffer bright = colourRows(saturated);
    const PixelBuffer muted = colourRows(inCmykGamut);
    const QString brightPpm = sandbox.filePath(u"bright.ppm"_s);
    const QString mutedPpm = sandbox.filePath(u"muted.ppm"_s);
    const QString greyPgm = sandbox.filePath(u"grey.pgm"_s);
    writePnm(brightPpm, bright);
    writePnm(mutedPpm, muted);
    writePnm(greyPgm, firstChannels(muted, 1));
    PixelBuffer grey {QByteArray(), 8, 4, 3};
    for (const char value : firstChannels(muted, 1).bytes)
        grey.bytes.append(value).append(value).append(value);

    auto made = [&](const QString &name, const QStringList &arguments) {
        const QString path = sandbox.filePath(name);
        EXPECT_TRUE(runTool(u"vips"_s, QStringList(arguments).replaceInStrings(u"@"_s, path))) << qPrintable(name);
        return path;
    };
    const QString p3 = made(u"p3.png"_s, {u"icc_transform"_s, brightPpm, u"@"_s, u"p3"_s, u"--input-profile"_s, u"srgb"_s});
    const QString cmyk = made(u"cmyk.jpg"_s, {u"colourspace"_s, mutedPpm, u"@[Q=100]"_s, u"cmyk"_s});
    const struct
    {
        QString source;
        const PixelBuffer &colours;
        int maxDifference;
        double meanDifference;
    } cases[] = {
        {p3, bright, 8, 1.5},
        {made(u"p3.jpg"_s, {u"copy"_s, p3, u"@[Q=100,subsample-mode=off]"_s}), bright, 8, 1.5},
        {cmyk, muted, 12, 6.0},
        {made(u"bare-cmyk.jpg"_s, {u"copy"_s, cmyk, u"@[Q=100,strip]"_s}), muted, 12, 6.0},
        {made(u"deep.png"_s, {u"colourspace"_s, mutedPpm, u"@"_s, u"rgb16"_s}), muted, 1, 0.5},
        {greyPgm, grey, 1, 0.1},
    };
    for (const auto &c : cases) {
        imaging::DrawRequest request = drawRequest(c.source, 8, 4);
        request.modes.interpolation = 5;
        const auto drawn = drawToFile(request, sandbox.filePath(u"out"_s), QFileInfo(c.source).fileName() + u".png"_s);
        ASSERT_TRUE(drawn.has_value()) << qPrintable(c.source);
        EXPECT_TRUE(imagesClose(firstChannels(decoded(*drawn), 3), c.colours, c.maxDifference, c.meanDifference))
            << qPrintable(c.source);
    }
}

} // namespace
