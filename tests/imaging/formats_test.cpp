// Every format the open dialog offers: measured from its header and drawn
// into every output format a run writes, with the pixels of the source.

#include "core/targetfolder.h"
#include "imaging/conversion.h"
#include "imaging/imaging.h"
#include "imaging/picture.h"
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
    {"jpg", "[Q=95]", 40.0},  {"jpeg", "[Q=95]", 40.0}, {"jpe", "[Q=95]", 40.0},  {"png", "", 45.0},
    {"gif", "", 38.0},        {"bmp", "", 45.0},        {"tif", "", 45.0},        {"tiff", "", 45.0},
    {"webp", "[Q=95]", 40.0}, {"heic", "[Q=90]", 40.0}, {"heif", "[Q=90]", 40.0}, {"avif", "[Q=90]", 40.0},
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
    imaging::setQuiet(true);
    Sandbox sandbox;
    auto folder = files::TargetFolder::open(sandbox.filePath(u"out"_s));
    ASSERT_TRUE(folder.has_value());
    const PixelBuffer source = gradientImage(96, 64);
    const PixelBuffer expected = referenceResample(source, 48, 32);

    for (const InputFormat &in : kInputs) {
        const QString suffix = QString::fromLatin1(in.suffix);
        const QString path = writeWithVips(sandbox.filePath(u"source."_s + suffix), source,
                                           QString::fromLatin1(in.saveOptions));
        int width = 0;
        int height = 0;
        EXPECT_TRUE(imaging::measure(path, width, height)) << in.suffix;
        EXPECT_EQ(width, 96) << in.suffix;
        EXPECT_EQ(height, 64) << in.suffix;

        for (const OutputFormat &out : kOutputs) {
            const QString name = suffix + QString::fromLatin1(out.suffix);
            imaging::DrawRequest request;
            request.source = path;
            request.width = 48;
            request.height = 32;
            request.format = out.format;
            request.quality = 95;
            auto pending = folder->createPending();
            ASSERT_TRUE(pending.has_value());
            const auto drawn = imaging::drawInto(request, *pending);
            ASSERT_TRUE(drawn.has_value()) << in.suffix << " to " << out.suffix << ": " << qPrintable(drawn.error().detail);
            ASSERT_TRUE(folder->commit(*pending, name, {}).has_value());
            const PixelBuffer pixels = firstChannels(pixelsOf(imaging::pictureFromFile(folder->path() + u'/' + name)), 3);
            EXPECT_GT(psnr(pixels, expected), in.minPsnr - out.psnrLoss) << in.suffix << " to " << out.suffix;
        }
    }
}

} // namespace
