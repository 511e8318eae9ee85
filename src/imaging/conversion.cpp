#include "imaging/conversion.h"
#include "imaging/imaging.h"
#include "imaging/imaging_p.h"
#include "imaging/jpegheader.h"
#include "imaging/outputwriter_p.h"
#include "imaging/sourcefile_p.h"

#include "core/targetfolder.h"

#include <QSize>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <optional>

#include <unistd.h>

#include <vips/vips8>

using namespace Qt::StringLiterals;

namespace valtrona::imaging {

using detail::cancelledError;
using detail::isRequested;
using detail::libraryMessage;
using detail::Loader;
using detail::OutputWriter;
using detail::SourceFile;

namespace {

// How strictly the decoders treat damaged data. libjpeg reports corrupt
// entropy data (a bad Huffman code, a scan that ends early) and a frame
// header that claims more lines than the data holds only as warnings, so
// JPEGs are decoded failing on warnings. That also refuses files with stray
// bytes between header segments or between progressive scans, which the
// library does not tell apart from real damage (stray bytes before the end
// marker of a baseline JPEG are never read). The other decoders (PNG, GIF,
// TIFF, WebP) report damaged data as errors, so they fail on errors and
// cut-off files and let mere warnings pass.
constexpr VipsFailOn kJpegFailOn = VIPS_FAIL_ON_WARNING;
constexpr VipsFailOn kFailOn = VIPS_FAIL_ON_ERROR;

// libjpeg's largest frame side.
constexpr int kMaxJpegSide = 65500;

// "Exif" and two zero bytes, in front of the TIFF structure in a JPEG's
// EXIF segment.
constexpr qsizetype kExifIdentifierLength = 6;

bool headerFlag(const vips::VImage &image, const char *name)
{
    int value = 0;
    return vips_image_get_typeof(image.get_image(), name) != 0
           && vips_image_get_int(image.get_image(), name, &value) == 0 && value != 0;
}

QByteArray headerString(const vips::VImage &image, const char *name)
{
    const char *value = nullptr;
    if (vips_image_get_typeof(image.get_image(), name) == 0
        || vips_image_get_string(image.get_image(), name, &value) != 0 || value == nullptr)
        return {};
    return QByteArray(value);
}

qint64 roundUp(qint64 value, qint64 step)
{
    return (value + step - 1) / step * step;
}

// The output format a file already is, judged by the loader that reads it.
std::optional<OutputFormat> writtenAs(const vips::VImage &image, const Loader &loader)
{
    if (loader.isJpeg())
        return OutputFormat::Jpeg;
    if (loader.isPng())
        return OutputFormat::Png;
    if (loader.name.startsWith("webpload"))
        return OutputFormat::WebP;
    const char *compression = nullptr;
    if (loader.name.startsWith("heifload") && vips_image_get_typeof(image.get_image(), "heif-compression") != 0
        && vips_image_get_string(image.get_image(), "heif-compression", &compression) == 0 && compression != nullptr
        && qstrcmp(compression, "av1") == 0)
        return OutputFormat::Avif;
    return std::nullopt;
}

// What the decoder of `loader` holds beyond its streaming buffers, from the
// header alone.
qint64 wholeImageBytes(const vips::VImage &image, const Loader &loader, qint64 fileSize)
{
    const qint64 width = image.width();
    const qint64 height = image.height();
    const qint64 bands = image.bands();
    const qint64 pixelBytes = width * height * bands * qint64(vips_format_sizeof(image.format()));
    if (loader.isJpeg()) {
        // Baseline JPEGs stream. A progressive (multi-scan) one keeps every
        // DCT coefficient of the picture until its last scan is read: 64
        // two-byte values per 8 x 8 block and component, chroma at a quarter
        // (4:2:0) or half (4:2:2) of the luma blocks unless it is 4:4:4.
        if (!headerFlag(image, "jpeg-multiscan"))
            return 0;
        const qint64 lumaBytes = roundUp(width, 16) * roundUp(height, 16) * 2;
        const bool fullChroma = headerString(image, "jpeg-chroma-subsample") == "4:4:4";
        return lumaBytes + (bands - 1) * (fullChroma ? lumaBytes : lumaBytes / 2);
    }
    if (loader.isPng()) {
        // Interlaced (Adam7) PNGs are decoded whole, then handed out.
        return headerFlag(image, "interlaced") ? pixelBytes + height * qint64(sizeof(void *)) : 0;
    }
    if (loader.name.startsWith("gifload") || loader.name.startsWith("webpload")) {
        // The whole file in memory, the decoder's RGBA frame and the
        // library's copy of it.
        return fileSize + 2 * width * height * 4;
    }
    if (loader.name.startsWith("tiffload")) {
        // A TIFF may hold its picture in a single strip, which is read
        // (compressed) and decoded whole.
        return fileSize + pixelBytes;
    }
    if (loader.name.startsWith("heifload")) {
        // The whole file, the decoded planes and their RGB conversion.
        return fileSize + 4 * width * height * std::max<qint64>(bands, 3) * qint64(vips_format_sizeof(image.format()));
    }
    if (loader.name.startsWith("magickload")) {
        // The module's own picture (four 16-bit channels, or floats) besides ours.
        return fileSize + width * height * 16 + pixelBytes;
    }
    // Anything else is assumed to decode whole, from a file held whole.
    return fileSize + pixelBytes;
}

// Stops the pipeline computing `image` once a stop is requested.
void stopOnCancel(const vips::VImage &image, const std::atomic_bool *cancel)
{
    if (cancel == nullptr)
        return;
    vips_image_set_progress(image.get_image(), TRUE);
    auto onEval = [](VipsImage *evaluated, VipsProgress *, gpointer flag) {
        if (isRequested(static_cast<const std::atomic_bool *>(flag)))
            vips_image_set_kill(evaluated, TRUE);
    };
    g_signal_connect(image.get_image(), "eval", G_CALLBACK(+onEval), const_cast<std::atomic_bool *>(cancel));
}

// The source drawn at the request's size as it is stored (width and height
// swapped when it is turned a quarter), as a lazy pipeline, and the turn
// that makes it the requested picture.
struct Drawing
{
    vips::VImage image;
    int turn = 1; ///< EXIF orientation still to apply
};

Expected<Drawing, Error> drawingPipeline(SourceFile &file, const DrawRequest &request)
{
    auto loader = detail::findLoader(file);
    if (!loader)
        return unexpected(loader.error());
    auto image = detail::openImage(file, *loader, kFailOn);
    if (!image)
        return unexpected(image.error());
    Drawing drawing;
    drawing.turn = detail::appliedOrientation(*image, request.orientation);
    const bool swapped = detail::swapsSides(drawing.turn);
    const int width = swapped ? request.height : request.width;
    const int height = swapped ? request.width : request.height;
    if (loader->isJpeg()) {
        // Reopened, failing on warnings and shrinking while decoding as far
        // as the target allows.
        int shrink = 1;
        if (detail::shrinksOnLoad(request.modes)) {
            shrink = detail::jpegShrinkFor(std::min(double(image->width()) / width,
                                                    double(image->height()) / height));
        }
        image = detail::openImage(file, *loader, kJpegFailOn, shrink);
        if (!image)
            return unexpected(image.error());
    }
    try {
        drawing.image = detail::resample(detail::toSrgb8(*image), width, height, request.modes);
        return drawing;
    } catch (const vips::VError &error) {
        return unexpected(Error {ErrorCode::Internal, libraryMessage(error)});
    }
}

// ---- The encoders -------------------------------------------------------------

// Encoder efforts, chosen for batch speed (bench/formats.sh measures the
// whole conversion). Encoding alone takes JPEG about 10 ms of CPU per
// megapixel. WebP's effort 2 takes some 35 ms; the library's default 4
// doubles that for 0.3 dB at the same file size. AVIF's effort 0 takes some
// 45 ms; effort 2 takes four times as long for 0.2 dB, the default 4 forty
// times as long.
constexpr int kWebpEffort = 2;
constexpr int kAvifEffort = 0;

struct Encoder
{
    OutputFormat format;
    const char *suffix;
    int maxSide;       ///< the largest width or height the format holds
    bool wholePicture; ///< takes the whole picture at once instead of rows as they come
};

constexpr Encoder kEncoders[] = {
    {OutputFormat::Jpeg, ".jpg", kMaxJpegSide, false},
    {OutputFormat::Png, ".png", std::numeric_limits<int>::max(), false},
    {OutputFormat::WebP, ".webp", 16383, true},
    // Larger AVIF files are written, but refused by their own readers.
    {OutputFormat::Avif, ".avif", 16384, true},
};

// AVIF is written by one of the library's format modules, which needs an
// AV1 encoder in its HEIF library; a tiny picture tells whether there is one.
bool avifEncoderPresent()
{
    static const bool present = [] {
        detail::loadFormatModules();
        try {
            const vips::VImage probe = vips::VImage::black(16, 16, vips::VImage::option()->set("bands", 3))
                                           .cast(VIPS_FORMAT_UCHAR);
            VipsBlob *blob = probe.heifsave_buffer(vips::VImage::option()
                                                       ->set("compression", VIPS_FOREIGN_HEIF_COMPRESSION_AV1)
                                                       ->set("effort", kAvifEffort)
                                                       ->set("strip", true));
            const bool written = blob != nullptr && VIPS_AREA(blob)->length > 0;
            vips_area_unref(VIPS_AREA(blob));
            return written;
        } catch (const vips::VError &) {
            vips_error_clear();
            return false;
        }
    }();
    return present;
}

const Encoder *findEncoder(OutputFormat format)
{
    for (const Encoder &encoder : kEncoders) {
        if (encoder.format != format)
            continue;
        const bool present = format == OutputFormat::Avif
                                 ? avifEncoderPresent()
                                 : vips_foreign_find_save_target(encoder.suffix) != nullptr;
        vips_error_clear();
        return present ? &encoder : nullptr;
    }
    return nullptr;
}

// The image with the source's EXIF data alone for an AVIF encoder, which
// rebuilds that data from the image's own fields (parsed from the source
// when it was opened), its dimensions and its orientation, so those must
// agree with the data.
vips::VImage withExifOnly(const vips::VImage &image, const QByteArray &exif, std::optional<int> orientation)
{
    vips::VImage copy = image.copy();
    for (const char *name : {VIPS_META_EXIF_NAME, VIPS_META_XMP_NAME, VIPS_META_IPTC_NAME, VIPS_META_ICC_NAME,
                             VIPS_META_PHOTOSHOP_NAME})
        copy.remove(name);
    vips_image_set_blob_copy(copy.get_image(), VIPS_META_EXIF_NAME, exif.constData(), size_t(exif.size()));
    if (orientation)
        copy.set(VIPS_META_ORIENTATION, *orientation);
    return copy;
}

// Encodes into target. avifExif, when not empty, is the EXIF payload for an
// AVIF output. Throws vips::VError.
void encode(const vips::VImage &image, const Encoder &encoder, const DrawRequest &request,
            const QByteArray &avifExif, vips::VTarget target)
{
    const bool lossy = encoder.format != OutputFormat::Png;
    switch (encoder.format) {
    case OutputFormat::Jpeg:
    case OutputFormat::Png:
        image.write_to_target(encoder.suffix, target, detail::encoderOptions(lossy, request.quality));
        return;
    case OutputFormat::WebP:
        // This version of the library's WebP encoder writes metadata even
        // when told to strip it; the writer takes it out again.
        image.webpsave_target(target, detail::encoderOptions(lossy, request.quality)->set("effort", kWebpEffort));
        return;
    case OutputFormat::Avif:
        break;
    }
    const bool carry = !avifExif.isEmpty();
    const std::optional<int> orientation =
        request.orientation == Orientation::Upright ? std::optional<int>(1) : std::nullopt;
    (carry ? withExifOnly(image, avifExif, orientation) : image)
        .heifsave_target(target, detail::encoderOptions(lossy, request.quality, !carry)
                                     ->set("compression", VIPS_FOREIGN_HEIF_COMPRESSION_AV1)
                                     ->set("effort", kAvifEffort)
                                     ->set("bitdepth", 8));
}

} // namespace

Expected<SourceInfo, Error> inspect(const QString &path, Orientation orientation)
{
    if (!isStarted())
        return unexpected(detail::notStartedError());
    SourceFile file(nullptr);
    auto loader = detail::openSource(file, path);
    if (!loader)
        return unexpected(loader.error());
    auto image = detail::openImage(file, *loader, kFailOn);
    if (!image)
        return unexpected(image.error());
    SourceInfo info;
    info.orientation = detail::appliedOrientation(*image, orientation);
    const bool swapped = detail::swapsSides(info.orientation);
    info.width = swapped ? image->height() : image->width();
    info.height = swapped ? image->width() : image->height();
    info.bands = image->bands();
    info.sampleBytes = int(vips_format_sizeof(image->format()));
    info.hasAlpha = image->has_alpha();
    info.shrinksWhileDecoding = loader->isJpeg();
    info.decodeBytes = wholeImageBytes(*image, *loader, file.size());
    info.writtenAs = writtenAs(*image, *loader);
    return info;
}

qint64 drawMemory(const SourceInfo &info, int width, int height, const DrawModes &modes, OutputFormat format)
{
    // Decoding and resampling work on the picture as it is stored.
    const bool swapped = detail::swapsSides(info.orientation);
    const qint64 sourceWidth = std::max(swapped ? info.height : info.width, 1);
    const qint64 sourceHeight = std::max(swapped ? info.width : info.height, 1);
    const qint64 targetWidth = std::max(swapped ? height : width, 1);
    const qint64 targetHeight = std::max(swapped ? width : height, 1);
    int shrink = 1;
    if (info.shrinksWhileDecoding && detail::shrinksOnLoad(modes))
        shrink = detail::jpegShrinkFor(std::min(double(sourceWidth) / targetWidth,
                                                double(sourceHeight) / targetHeight));
    const qint64 decodedWidth = (sourceWidth + shrink - 1) / shrink;
    const qint64 workWidth = std::max(decodedWidth, targetWidth);
    const qint64 threads = std::max(concurrency(), 1);

    // The figures below hold for what tests/imaging/drawprobe.cpp measures
    // with 1 to 16 threads and the default allocator, with room to spare.

    // The decoder's side: the library's line cache in front of a
    // sequential decoder, in lines as decoded.
    constexpr qint64 kDecodedLines = 256;
    // Each worker thread holds strips in every stage of colour conversion
    // and resampling (the box shrink, the kernel's window, the buffers it
    // keeps for reuse), about this many lines of the widest stage in all.
    // The stages work on 8-bit RGB, or on floats with transparency
    // (premultiplied) or in linear light.
    constexpr qint64 kWorkLinesPerThread = 640;
    const bool floating = info.hasAlpha || modes.compositingQuality == 3;
    const qint64 workPixelBytes = floating ? 4 * (info.hasAlpha ? 4 : 3) : 3;
    // JPEG and PNG encoders take rows as they come (the write-behind
    // buffers hold a few strips). A picture to be turned is held whole at
    // the target size first, and so is one for WebP or AVIF, whose encoders
    // then take it whole: each keeps its own copy, the picture converted to
    // YUV, its analysis and the encoded file. The probe measures some 8
    // bytes a pixel for WebP and 18 to 24 for AVIF, this copy included.
    constexpr qint64 kOutputLines = 128;
    constexpr qint64 kWebpBytesPerPixel = 16;
    constexpr qint64 kAvifBytesPerPixel = 40;
    const qint64 targetPixels = targetWidth * targetHeight;
    const qint64 encoderBytes = format == OutputFormat::WebP   ? targetPixels * kWebpBytesPerPixel
                                : format == OutputFormat::Avif ? targetPixels * kAvifBytesPerPixel
                                                               : targetWidth * kOutputLines * 4;
    const bool heldWhole = info.orientation != 1 || format == OutputFormat::WebP || format == OutputFormat::Avif;
    const qint64 heldBytes = heldWhole ? targetPixels * (info.hasAlpha ? 4 : 3) : 0;
    // The decoder's and encoder's state, colour transforms, thread stacks
    // and the code a drawing touches for the first time.
    constexpr qint64 kFixedBytes = 16 * 1024 * 1024;

    return info.decodeBytes + kFixedBytes + decodedWidth * kDecodedLines * info.bands * info.sampleBytes
           + workWidth * threads * kWorkLinesPerThread * workPixelBytes + heldBytes + encoderBytes;
}

Expected<void, Error> drawInto(const DrawRequest &request, files::PendingFile &output)
{
    if (isRequested(request.cancel))
        return unexpected(cancelledError());
    if (!isStarted())
        return unexpected(detail::notStartedError());
    const Encoder *encoder = findEncoder(request.format);
    if (encoder == nullptr)
        return unexpected(Error {ErrorCode::NoEncoder, {}});
    const bool jpeg = encoder->format == OutputFormat::Jpeg;
    if (request.width < 1 || request.height < 1 || request.width > encoder->maxSide
        || request.height > encoder->maxSide)
        return unexpected(Error {ErrorCode::SizeUnusable,
                                 u"%1 x %2"_s.arg(request.width).arg(request.height)});
    if (!output.isOpen())
        return unexpected(Error {ErrorCode::Internal, u"pending file is closed"_s});

    SourceFile file(request.cancel);
    if (auto opened = file.open(request.source); !opened)
        return opened;
    // Taken before the pixels: the source's header block as it would be put
    // in front of a JPEG output, or its EXIF data for a WebP or AVIF one,
    // describing the output.
    QByteArray exif;
    if (request.carryExif && encoder->format != OutputFormat::Png) {
        if (std::optional<QByteArray> block = detail::readExifBlock(file.descriptor())) {
            const std::optional<int> orientation =
                request.orientation == Orientation::Upright ? std::optional<int>(1) : std::nullopt;
            describeOutput(*block, orientation, request.width, request.height);
            exif = jpeg ? detail::portableHeaderBlock(*block) : detail::exifPayload(*block);
        }
    }
    // WebP takes the TIFF structure alone, AVIF the whole payload.
    const bool webp = encoder->format == OutputFormat::WebP;
    const OutputWriter::Kind kind = jpeg   ? OutputWriter::Kind::Jpeg
                                    : webp ? OutputWriter::Kind::Webp
                                           : OutputWriter::Kind::Plain;
    OutputWriter writer(output, kind, webp ? exif.mid(kExifIdentifierLength) : exif,
                        QSize(request.width, request.height), request.cancel);
    quint64 warningsBeforeClose = 0;
    {
        auto drawing = drawingPipeline(file, request);
        if (!drawing)
            return unexpected(drawing.error());
        stopOnCancel(drawing->image, request.cancel);
        // A picture to be turned, or for an encoder that takes it whole, is
        // decoded into memory first; otherwise the pixels stream from the
        // decoder into the encoder. Either way a failure while decoding
        // means damaged data, after it a failing encoder.
        const bool decodedFirst = drawing->turn != 1 || encoder->wholePicture;
        bool decoded = false;
        try {
            vips::VImage image = drawing->turn != 1 ? detail::turnUpright(drawing->image, drawing->turn)
                                 : decodedFirst     ? drawing->image.copy_memory()
                                                    : drawing->image;
            decoded = decodedFirst;
            encode(detail::encoderInput(image, jpeg), *encoder, request,
                   encoder->format == OutputFormat::Avif ? exif : QByteArray(), writer.newTarget());
        } catch (const vips::VError &error) {
            const QString message = libraryMessage(error);
            if (writer.cancelled() || file.cancelRequested())
                return unexpected(cancelledError());
            if (writer.error())
                return unexpected(*writer.error());
            if (!decoded && file.readErrno() != 0)
                return unexpected(file.readError());
            // The output's own failures are accounted for above.
            return unexpected(Error {decoded ? ErrorCode::Internal : ErrorCode::Damaged, message});
        }
        warningsBeforeClose = detail::libraryWarningCount();
        // The pipeline closes here, on this thread.
    }
    // A JPEG decoder that met damaged data in its last strip has no later
    // strip to fail in; it can only warn when it is closed.
    if (detail::libraryWarningCount() != warningsBeforeClose)
        return unexpected(Error {ErrorCode::Damaged, u"the decoder reported damaged data at the end of the image"_s});
    return writer.finish();
}

Expected<void, Error> copyInto(const QString &source, files::PendingFile &output)
{
    SourceFile file(nullptr);
    if (auto opened = file.open(source); !opened)
        return opened;
    if (!output.isOpen())
        return unexpected(Error {ErrorCode::Internal, u"pending file is closed"_s});
    QByteArray buffer(1 << 20, Qt::Uninitialized);
    for (;;) {
        const ssize_t got = ::read(file.descriptor(), buffer.data(), size_t(buffer.size()));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return unexpected(sourceError(errno, source));
        if (got == 0)
            return {};
        if (auto written = output.write(QByteArrayView(buffer.constData(), got)); !written)
            return written;
    }
}

} // namespace valtrona::imaging
