#include "imaging/picture.h"
#include "imaging/imaging.h"
#include "imaging/imaging_p.h"

#include <QFileInfo>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>
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

// The largest picture drawFile() builds in memory (about 1 GiB as RGBA).
constexpr qint64 kMaxTargetPixels = qint64(1) << 28;

const InterpolationMode &interpolationMode(int code)
{
    for (const InterpolationMode &mode : kInterpolationModes) {
        if (mode.code == code)
            return mode;
    }
    return kInterpolationModes[kDefaultInterpolation];
}

struct Failure
{
    int status;
    QString message;
};

// Runs a block of library calls; a thrown VError becomes a Failure.
template <typename F>
bool guarded(F &&body, Failure &failure)
{
    try {
        body();
        return true;
    } catch (const vips::VError &) {
        failure.message = detail::takeVipsError();
        failure.status = detail::statusFromVipsMessage(failure.message);
        return false;
    } catch (const std::bad_alloc &) {
        failure.message.clear();
        failure.status = OutOfMemory;
        return false;
    }
}

QByteArray loaderName(const vips::VImage &image)
{
    const char *name = nullptr;
    if (vips_image_get_typeof(image.get_image(), "vips-loader") != 0
        && vips_image_get_string(image.get_image(), "vips-loader", &name) == 0 && name != nullptr)
        return QByteArray(name);
    return {};
}

bool isJpegLoader(const vips::VImage &image)
{
    return loaderName(image).startsWith("jpegload");
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

namespace {

// Stripping metadata also drops the JFIF segment; put a plain one back (no
// resolution, square pixels) so the file is an ordinary JFIF file that the
// EXIF copy accepts as a target.
QByteArray withJfifHeader(const QByteArray &jpeg)
{
    if (jpeg.size() < 4 || !jpeg.startsWith("\xff\xd8") || static_cast<unsigned char>(jpeg.at(3)) == 0xE0)
        return jpeg;
    return jpeg.left(2) + detail::jfifSegment() + jpeg.mid(2);
}

Picture fail(const Failure &failure)
{
    detail::fail(failure.status, failure.message);
    return {};
}

RgbaImage toRgbaImage(vips::VImage image)
{
    image = detail::toSrgb8(image);
    if (!image.has_alpha())
        image = image.bandjoin_const({255.0});
    size_t size = 0;
    void *memory = image.write_to_memory(&size);
    RgbaImage result;
    result.pixels = QByteArray(static_cast<const char *>(memory), qsizetype(size));
    g_free(memory);
    result.width = image.width();
    result.height = image.height();
    return result;
}

// open(shrink) opens the image lazily, with a JPEG shrink when shrink > 1.
template <typename Open>
RgbaImage previewImage(Open open, int maxWidth, int maxHeight)
{
    vips::VImage image = open(1);
    const int turn = detail::appliedOrientation(image, orientation());
    const bool swapped = detail::swapsSides(turn);
    // The box holds the picture as it is shown.
    const int sourceWidth = swapped ? image.height() : image.width();
    const int sourceHeight = swapped ? image.width() : image.height();
    if (qint64(sourceWidth) * sourceHeight > maxImagePixels())
        return {};
    double scale = 1.0;
    if (maxWidth > 0)
        scale = std::min(scale, double(maxWidth) / sourceWidth);
    if (maxHeight > 0)
        scale = std::min(scale, double(maxHeight) / sourceHeight);
    const int width = std::max(1, int(std::lround(sourceWidth * scale)));
    const int height = std::max(1, int(std::lround(sourceHeight * scale)));
    if (qint64(width) * height > kMaxTargetPixels)
        return {};
    if (isJpegLoader(image)) {
        const int shrink = detail::jpegShrinkFor(std::min(double(sourceWidth) / width,
                                                          double(sourceHeight) / height));
        if (shrink > 1)
            image = open(shrink);
    }
    image = detail::resample(detail::toSrgb8(image), swapped ? height : width, swapped ? width : height,
                             DrawModes {});
    return toRgbaImage(detail::turnUpright(image, turn));
}

} // namespace

Picture PictureAccess::make(vips::VImage image)
{
    auto d = std::make_shared<Picture::Private>();
    d->image = std::move(image);
    return Picture(std::move(d));
}

const vips::VImage *PictureAccess::image(const Picture &picture)
{
    return picture.d ? &picture.d->image : nullptr;
}

bool RgbaImage::isNull() const
{
    return width <= 0 || height <= 0 || pixels.size() != qsizetype(width) * height * 4;
}

Picture::Picture() = default;
Picture::~Picture() = default;
Picture::Picture(const Picture &other) = default;
Picture &Picture::operator=(const Picture &other) = default;
Picture::Picture(Picture &&other) noexcept = default;
Picture &Picture::operator=(Picture &&other) noexcept = default;

Picture::Picture(std::shared_ptr<const Private> data) : d(std::move(data)) {}

bool Picture::isNull() const
{
    return !d;
}

int Picture::width() const
{
    return d ? d->image.width() : 0;
}

int Picture::height() const
{
    return d ? d->image.height() : 0;
}

bool Picture::hasAlpha() const
{
    return d && d->image.has_alpha();
}

RgbaImage Picture::toRgba() const
{
    if (!d)
        return {};
    RgbaImage result;
    Failure failure;
    guarded([&] { result = toRgbaImage(d->image); }, failure);
    return result;
}

namespace {

// Checks what drawFile() and drawFileToFile() are asked for; Ok when the
// drawing can start.
int checkDrawRequest(const QString &path, int width, int height)
{
    if (!QFileInfo(path).isFile())
        return FileNotFound;
    if (!isStarted())
        return GdiplusNotInitialized;
    if ((width < 1 && width != -1) || (height < 1 && height != -1))
        return InvalidParameter;
    return Ok;
}

// The drawing of an image file at width x height as a lazy pipeline: nothing
// is decoded until its pixels are asked for, and then only once, top to
// bottom. Sets failure.status when the sizes are out of range. Throws
// vips::VError.
vips::VImage drawPipeline(const QString &path, int width, int height, const DrawModes &modes,
                          Failure &failure)
{
    const InterpolationMode &mode = interpolationMode(modes.interpolation);
    const bool linear = modes.compositingQuality == kLinearLightQuality;
    vips::VImage image = detail::openImage(path, true);
    const int sourceWidth = image.width();
    const int sourceHeight = image.height();
    if (qint64(sourceWidth) * sourceHeight > maxImagePixels()) {
        failure.status = ValueOverflow;
        return {};
    }
    const int targetWidth = width == -1 ? sourceWidth : width;
    const int targetHeight = height == -1 ? sourceHeight : height;
    if (qint64(targetWidth) * targetHeight > kMaxTargetPixels) {
        failure.status = ValueOverflow;
        return {};
    }

    if (mode.shrinkOnLoad && !linear && isJpegLoader(image)) {
        const double factor = std::min(double(sourceWidth) / targetWidth,
                                       double(sourceHeight) / targetHeight);
        const int shrink = detail::jpegShrinkFor(factor);
        if (shrink > 1)
            image = detail::openImage(path, true, shrink);
    }
    return detail::resample(detail::toSrgb8(image), targetWidth, targetHeight, modes);
}

// What an encoder found by findEncoder() is written with.
struct EncoderChoice
{
    QString suffix;
    bool jpeg = false;
    bool lossy = false;
};

// Finds the encoder for mimeType; without one, reports "Encoder Error" (even
// when quiet) and gives an empty suffix.
EncoderChoice chooseEncoder(const QString &mimeType)
{
    EncoderChoice choice;
    choice.suffix = findEncoder(mimeType);
    if (choice.suffix.isEmpty()) {
        detail::setLast(InvalidParameter, u"no encoder for "_s % mimeType);
        detail::report(u"Encoder Error"_s, u"Es konnte kein passender Encoder ermittelt werden !"_s);
        return choice;
    }
    choice.jpeg = choice.suffix == u".jpg"_s;
    choice.lossy = choice.jpeg || choice.suffix == u".webp"_s || choice.suffix == u".avif"_s
                   || choice.suffix == u".heic"_s || choice.suffix == u".jxl"_s
                   || choice.suffix == u".tif"_s;
    return choice;
}

// Encodes an image into memory. When the image is a lazy pipeline, its
// pixels are computed while the encoder takes them in, so decoding,
// resampling and encoding overlap. Throws vips::VError.
QByteArray encode(vips::VImage image, const EncoderChoice &encoder, int quality)
{
    image = detail::encoderInput(image, encoder.jpeg);
    vips::VOption *options = detail::encoderOptions(encoder.lossy, quality);
    void *buffer = nullptr;
    size_t size = 0;
    image.write_to_buffer(encoder.suffix.toLatin1().constData(), &buffer, &size, options);
    QByteArray bytes(static_cast<const char *>(buffer), qsizetype(size));
    g_free(buffer);
    return encoder.jpeg ? withJfifHeader(bytes) : bytes;
}

// Writes encoded bytes into place atomically.
bool writeEncoded(const QByteArray &bytes, const QString &path)
{
    const int status = detail::writeFileAtomically(path, bytes.constData(), bytes.size());
    if (status != Ok)
        return detail::fail(status, lastErrorMessage());
    return true;
}

} // namespace

Picture drawFile(const QString &path, int width, int height, const DrawModes &modes)
{
    const int status = checkDrawRequest(path, width, height);
    if (status != Ok)
        return fail({status, {}});

    Picture picture;
    Failure failure {Ok, {}};
    const bool ok = guarded([&] {
        vips::VImage image = drawPipeline(path, width, height, modes, failure);
        if (failure.status != Ok)
            return;
        // Decodes and resamples now, so errors surface here and the picture
        // can be saved any number of times.
        picture = PictureAccess::make(image.copy_memory());
    }, failure);
    if (!ok || failure.status != Ok)
        return fail(failure);
    detail::setLast(Ok);
    return picture;
}

bool drawFileToFile(const QString &source, const QString &target, int width, int height,
                    const DrawModes &modes, const QString &mimeType, int quality)
{
    const EncoderChoice encoder = chooseEncoder(mimeType);
    if (encoder.suffix.isEmpty())
        return false;
    const int status = checkDrawRequest(source, width, height);
    if (status != Ok)
        return detail::fail(status);

    // The whole file is encoded before the target is opened: a source that
    // is its own target is read to the end before its name is taken over.
    QByteArray bytes;
    Failure failure {Ok, {}};
    const bool ok = guarded([&] {
        vips::VImage image = drawPipeline(source, width, height, modes, failure);
        if (failure.status != Ok)
            return;
        bytes = encode(image, encoder, quality);
    }, failure);
    if (!ok || failure.status != Ok)
        return detail::fail(failure.status, failure.message);
    return writeEncoded(bytes, target);
}

Picture pictureFromFile(const QString &path)
{
    if (!QFileInfo(path).isFile()) {
        detail::setLast(FileNotFound);
        return {};
    }
    if (!isStarted())
        return fail({GdiplusNotInitialized, {}});
    Picture picture;
    Failure failure {Ok, {}};
    const bool ok = guarded([&] {
        vips::VImage image = detail::openImage(path, true);
        if (qint64(image.width()) * image.height() > kMaxTargetPixels) {
            failure.status = ValueOverflow;
            return;
        }
        picture = PictureAccess::make(detail::toSrgb8(image).copy_memory());
    }, failure);
    if (!ok || failure.status != Ok)
        return fail(failure);
    detail::setLast(Ok);
    return picture;
}

bool saveImage(const Picture &picture, const QString &path, const QString &mimeType, int quality)
{
    const EncoderChoice encoder = chooseEncoder(mimeType);
    if (encoder.suffix.isEmpty())
        return false;
    const vips::VImage *source = PictureAccess::image(picture);
    if (source == nullptr)
        return detail::fail(InvalidParameter);
    if (!isStarted())
        return detail::fail(GdiplusNotInitialized);

    QByteArray bytes;
    Failure failure {Ok, {}};
    if (!guarded([&] { bytes = encode(*source, encoder, quality); }, failure))
        return detail::fail(failure.status, failure.message);
    return writeEncoded(bytes, path);
}

bool saveJpeg(const Picture &picture, const QString &path, int quality)
{
    return saveImage(picture, path, u"image/jpeg"_s, quality);
}

bool savePng(const Picture &picture, const QString &path)
{
    return saveImage(picture, path, u"image/png"_s, 0);
}

RgbaImage loadPreview(const QString &path, int maxWidth, int maxHeight)
{
    if (!QFileInfo(path).isFile() || !detail::ensureLibrary())
        return {};
    RgbaImage result;
    Failure failure;
    guarded([&] {
        result = previewImage([&](int shrink) { return detail::openImage(path, false, shrink); },
                              maxWidth, maxHeight);
    }, failure);
    return result;
}

RgbaImage loadPreviewFromData(const QByteArray &data, int maxWidth, int maxHeight)
{
    if (data.isEmpty() || !detail::ensureLibrary())
        return {};
    RgbaImage result;
    Failure failure;
    // The image borrows data, which outlives it: the pixels are fully
    // decoded before this returns.
    guarded([&] {
        auto open = [&](int shrink) {
            vips::VOption *options = vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL);
            if (shrink > 1)
                options->set("shrink", shrink);
            const bool allFormats = detail::formatModulesLoaded();
            try {
                return vips::VImage::new_from_buffer(data.constData(), size_t(data.size()), "", options);
            } catch (const vips::VError &) {
                // Perhaps one of the modules' formats.
                if (allFormats)
                    throw;
                vips_error_clear();
                detail::loadFormatModules();
            }
            vips::VOption *again = vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL);
            if (shrink > 1)
                again->set("shrink", shrink);
            return vips::VImage::new_from_buffer(data.constData(), size_t(data.size()), "", again);
        };
        result = previewImage(open, maxWidth, maxHeight);
    }, failure);
    return result;
}

} // namespace valtrona::imaging
