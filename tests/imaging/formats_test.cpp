// Every format the open dialog offers: measured from its header and drawn
// into every output format, with the pixels of the source.

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
    const char *mimeType;
    const char *suffix;
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
    {"image/jpeg", ".jpg"},
    {"image/png", ".png"},
};

TEST(InputFormats, EachIsMeasuredAndDrawnIntoEveryOutputFormat)
{
    ASSERT_TRUE(imaging::start());
    imaging::setQuiet(true);
    Sandbox sandbox;
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
            const QString target = sandbox.filePath(suffix + QString::fromLatin1(out.suffix));
            ASSERT_TRUE(imaging::drawFileToFile(path, target, 48, 32, {}, QString::fromLatin1(out.mimeType), 95))
                << in.suffix << " to " << out.mimeType;
            const PixelBuffer drawn = firstChannels(pixelsOf(imaging::pictureFromFile(target)), 3);
            EXPECT_GT(psnr(drawn, expected), in.minPsnr) << in.suffix << " to " << out.mimeType;
        }
    }
}

} // namespace
