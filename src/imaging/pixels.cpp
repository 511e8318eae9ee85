#include "imaging/imaging_p.h"

#include <algorithm>
#include <optional>

#include <vips/vips8>

using namespace Qt::StringLiterals;

namespace valtrona::imaging {

namespace {

// What the drawing-mode codes of the settings mean here.
//
// Interpolation ("INT") picks the resampling kernel; the numbers and names
// are those the settings dialog lists. libvips widens every kernel but
// nearest by the reduction factor, so all of them average over the source
// pixels they cover. shrinkOnLoad lets the JPEG decoder do a first
// reduction (never below the target size); nearest skips it so that it keeps
// picking real source pixels.
//
// Smoothing ("SMT"), pixel offset ("PXL") and the compositing mode have no
// effect on scaling an image: smoothing governs lines and shapes, pixel
// centres always sit at +0.5, and a picture is drawn onto an empty surface.
// Compositing quality ("CMP") kLinearLightQuality resamples in linear light;
// every other value resamples the sRGB values as stored.
struct InterpolationMode
{
    int code;
    const char *name;
    VipsKernel kernel;
    bool shrinkOnLoad;
};

constexpr InterpolationMode kInterpolationModes[] = {
    {0, "Default", VIPS_KERNEL_LINEAR, true},
    {1, "LowQuality", VIPS_KERNEL_LINEAR, true},
    {2, "HighQuality", VIPS_KERNEL_LANCZOS3, true},
    {3, "Bilinear", VIPS_KERNEL_LINEAR, true},
    {4, "Bicubic", VIPS_KERNEL_CUBIC, true},
    {5, "NearestNeighbor", VIPS_KERNEL_NEAREST, false},
    {6, "HighQualityBilinear", VIPS_KERNEL_LINEAR, true},
    {7, "HighQualityBicubic", VIPS_KERNEL_LANCZOS3, true},
};
constexpr int kDefaultInterpolation = 7;
constexpr int kLinearLightQuality = 3;

const InterpolationMode &interpolationMode(int code)
{
    for (const InterpolationMode &mode : kInterpolationModes) {
        if (mode.code == code)
            return mode;
    }
    return kInterpolationModes[kDefaultInterpolation];
}

bool hasIccProfile(const vips::VImage &image)
{
    return vips_image_get_typeof(image.get_image(), VIPS_META_ICC_NAME) != 0;
}

vips::VImage toUchar(const vips::VImage &image)
{
    if (image.format() == VIPS_FORMAT_UCHAR)
        return image;
    return image.rint().cast(VIPS_FORMAT_UCHAR);
}

// Makes the image exactly width x height; resize can be a pixel off when the
// scale cannot be represented exactly.
vips::VImage exactSize(const vips::VImage &image, int width, int height)
{
    if (image.width() == width && image.height() == height)
        return image;
    vips::VImage fitted = image;
    if (fitted.width() > width || fitted.height() > height)
        fitted = fitted.crop(0, 0, std::min(width, fitted.width()), std::min(height, fitted.height()));
    if (fitted.width() < width || fitted.height() < height)
        fitted = fitted.embed(0, 0, width, height,
                              vips::VImage::option()->set("extend", VIPS_EXTEND_COPY));
    return fitted;
}

} // namespace

namespace detail {

int jpegShrinkFor(double factor)
{
    for (const int shrink : {8, 4, 2}) {
        if (factor >= shrink)
            return shrink;
    }
    return 1;
}

bool shrinksOnLoad(const DrawModes &modes)
{
    return interpolationMode(modes.interpolation).shrinkOnLoad
           && modes.compositingQuality != kLinearLightQuality;
}

vips::VImage toSrgb8(vips::VImage image)
{
    const bool cmyk = image.interpretation() == VIPS_INTERPRETATION_CMYK;
    if (hasIccProfile(image) || cmyk) {
        try {
            image = image.icc_transform("srgb", vips::VImage::option()
                                                    ->set("embedded", true)
                                                    ->set("input_profile", cmyk ? "cmyk" : "srgb")
                                                    ->set("intent", VIPS_INTENT_RELATIVE)
                                                    ->set("depth", 8));
        } catch (const vips::VError &) {
            // A damaged profile: take the numbers as they are.
            vips_error_clear();
            image.remove(VIPS_META_ICC_NAME);
        }
    }
    const VipsInterpretation space = vips_image_guess_interpretation(image.get_image());
    if (space != VIPS_INTERPRETATION_sRGB || image.bands() < 3)
        image = image.colourspace(VIPS_INTERPRETATION_sRGB,
                                  vips::VImage::option()->set("source_space", space));

    if (image.bands() > 4 || (image.bands() == 4 && !image.has_alpha())) {
        // Extra bands beyond RGB (alpha, when present, is the last band).
        vips::VImage rgb = image.extract_band(0, vips::VImage::option()->set("n", 3));
        image = image.has_alpha() ? rgb.bandjoin(image.extract_band(image.bands() - 1)) : rgb;
    }
    if (image.format() == VIPS_FORMAT_USHORT)
        image = (image >> 8).cast(VIPS_FORMAT_UCHAR);
    else if (image.format() != VIPS_FORMAT_UCHAR)
        image = image.cast(VIPS_FORMAT_UCHAR);
    image.remove(VIPS_META_ICC_NAME);
    return image;
}

vips::VImage resample(vips::VImage image, int width, int height, const DrawModes &modes)
{
    const InterpolationMode &mode = interpolationMode(modes.interpolation);
    const bool linear = modes.compositingQuality == kLinearLightQuality;
    if (linear)
        image = image.colourspace(VIPS_INTERPRETATION_scRGB);
    const bool alpha = image.has_alpha();
    if (alpha)
        image = image.premultiply();

    const double hscale = double(width) / image.width();
    const double vscale = double(height) / image.height();
    if (hscale != 1.0 || vscale != 1.0) {
        image = image.resize(hscale, vips::VImage::option()
                                         ->set("vscale", vscale)
                                         ->set("kernel", mode.kernel));
    }
    image = exactSize(image, width, height);

    if (alpha)
        image = image.unpremultiply();
    if (linear)
        image = image.colourspace(VIPS_INTERPRETATION_sRGB);
    return toUchar(image);
}

int recordedOrientation(const vips::VImage &image)
{
    return vips_image_get_orientation(image.get_image());
}

int appliedOrientation(const vips::VImage &image, Orientation orientation)
{
    return orientation == Orientation::Upright ? recordedOrientation(image) : 1;
}

bool swapsSides(int exifOrientation)
{
    return exifOrientation >= 5 && exifOrientation <= 8;
}

vips::VImage turnUpright(const vips::VImage &image, int exifOrientation)
{
    if (exifOrientation < 2 || exifOrientation > 8)
        return image;
    // How the stored pixels become the shown ones: a quarter turn clockwise
    // or anticlockwise (or a half turn), then perhaps a mirror image.
    struct Turn
    {
        std::optional<VipsAngle> angle;
        std::optional<VipsDirection> mirror;
    };
    static constexpr Turn kTurns[9] = {
        {},
        {},
        {std::nullopt, VIPS_DIRECTION_HORIZONTAL},
        {VIPS_ANGLE_D180, std::nullopt},
        {std::nullopt, VIPS_DIRECTION_VERTICAL},
        {VIPS_ANGLE_D90, VIPS_DIRECTION_HORIZONTAL},
        {VIPS_ANGLE_D90, std::nullopt},
        {VIPS_ANGLE_D270, VIPS_DIRECTION_HORIZONTAL},
        {VIPS_ANGLE_D270, std::nullopt},
    };
    const Turn &turn = kTurns[exifOrientation];
    vips::VImage turned = image.copy_memory();
    if (turn.angle)
        turned = turned.rot(*turn.angle);
    if (turn.mirror)
        turned = turned.flip(*turn.mirror);
    return turned;
}

QByteArray jfifSegment()
{
    return QByteArray::fromHex("ffe000104a46494600010100000100010000");
}

vips::VImage encoderInput(vips::VImage image, bool jpeg)
{
    if (jpeg && image.has_alpha())
        image = image.flatten(vips::VImage::option()->set("background", std::vector<double> {255.0}));
    return toUchar(image);
}

vips::VOption *encoderOptions(bool lossy, int quality, bool strip)
{
    // libjpeg treats quality 0 as 1; the encoders here start at 1.
    const int q = std::max(1, std::clamp(quality, 0, 100));
    // JPEGs use the standard Huffman tables: optimised ones would save a
    // few percent of the file but make the encoder hold every coefficient
    // of the picture (about 2.4 MB at 1024 x 768) and take a second pass.
    vips::VOption *options = vips::VImage::option()->set("strip", strip);
    if (lossy)
        options->set("Q", q);
    return options;
}

} // namespace detail

} // namespace valtrona::imaging
