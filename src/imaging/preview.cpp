#include "imaging/preview.h"
#include "imaging/imaging_p.h"
#include "imaging/sourcefile_p.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <new>

#include <vips/vips8>

using namespace Qt::StringLiterals;

namespace valtrona::imaging {

namespace {

// The largest preview built in memory (about 1 GiB as RGBA).
constexpr qint64 kMaxPreviewPixels = qint64(1) << 28;

Error tooLarge(qint64 width, qint64 height)
{
    return {ErrorCode::TooLarge, u"%1 x %2"_s.arg(width).arg(height)};
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

// Where a preview's pixels come from: open(shrink) opens the image lazily,
// with a JPEG shrink when shrink > 1; damaged(message) is the error of a
// decoding that failed with the library's message.
struct PreviewSource
{
    std::function<Expected<vips::VImage, Error>(int shrink)> open;
    std::function<Error(const QString &message)> damaged;
    bool jpeg = false;
};

Expected<RgbaImage, Error> previewImage(const PreviewSource &source, int maxWidth, int maxHeight)
{
    auto opened = source.open(1);
    if (!opened)
        return unexpected(opened.error());
    vips::VImage image = *opened;
    const int turn = detail::appliedOrientation(image, orientation());
    const bool swapped = detail::swapsSides(turn);
    // The box holds the picture as it is shown.
    const int sourceWidth = swapped ? image.height() : image.width();
    const int sourceHeight = swapped ? image.width() : image.height();
    if (qint64(sourceWidth) * sourceHeight > maxImagePixels())
        return unexpected(tooLarge(sourceWidth, sourceHeight));
    double scale = 1.0;
    if (maxWidth > 0)
        scale = std::min(scale, double(maxWidth) / sourceWidth);
    if (maxHeight > 0)
        scale = std::min(scale, double(maxHeight) / sourceHeight);
    const int width = std::max(1, int(std::lround(sourceWidth * scale)));
    const int height = std::max(1, int(std::lround(sourceHeight * scale)));
    if (qint64(width) * height > kMaxPreviewPixels)
        return unexpected(tooLarge(width, height));
    if (source.jpeg) {
        const int shrink = detail::jpegShrinkFor(std::min(double(sourceWidth) / width,
                                                          double(sourceHeight) / height));
        if (shrink > 1) {
            opened = source.open(shrink);
            if (!opened)
                return unexpected(opened.error());
            image = *opened;
        }
    }
    try {
        image = detail::resample(detail::toSrgb8(image), swapped ? height : width, swapped ? width : height,
                                 DrawModes {});
        return toRgbaImage(detail::turnUpright(image, turn));
    } catch (const vips::VError &error) {
        return unexpected(source.damaged(detail::libraryMessage(error)));
    } catch (const std::bad_alloc &) {
        return unexpected(tooLarge(width, height));
    }
}

Error noLibraryError()
{
    return {ErrorCode::Internal, u"the image library cannot start"_s};
}

} // namespace

bool RgbaImage::isNull() const
{
    return width <= 0 || height <= 0 || pixels.size() != qsizetype(width) * height * 4;
}

Expected<RgbaImage, Error> loadPreview(const QString &path, int maxWidth, int maxHeight)
{
    if (!detail::ensureLibrary())
        return unexpected(noLibraryError());
    detail::SourceFile file;
    auto loader = detail::openSource(file, path);
    if (!loader)
        return unexpected(loader.error());
    PreviewSource source;
    source.open = [&](int shrink) { return detail::openImage(file, *loader, VIPS_FAIL_ON_NONE, shrink); };
    source.damaged = [&](const QString &message) {
        return file.readErrno() != 0 ? file.readError() : Error {ErrorCode::Damaged, message};
    };
    source.jpeg = loader->isJpeg();
    return previewImage(source, maxWidth, maxHeight);
}

Expected<RgbaImage, Error> loadPreviewFromData(const QByteArray &data, int maxWidth, int maxHeight)
{
    if (!detail::ensureLibrary())
        return unexpected(noLibraryError());
    const char *loader = nullptr;
    for (;;) {
        const bool allFormats = detail::formatModulesLoaded();
        loader = data.isEmpty() ? nullptr : vips_foreign_find_load_buffer(data.constData(), size_t(data.size()));
        vips_error_clear();
        if (loader != nullptr || allFormats)
            break;
        // Perhaps one of the modules' formats.
        detail::loadFormatModules();
    }
    if (loader == nullptr)
        return unexpected(Error {ErrorCode::UnknownFormat, {}});
    PreviewSource source;
    // The image borrows data, which outlives it: the pixels are fully
    // decoded before this returns.
    source.open = [&](int shrink) -> Expected<vips::VImage, Error> {
        vips::VOption *options = vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL);
        if (shrink > 1)
            options->set("shrink", shrink);
        try {
            return vips::VImage::new_from_buffer(data.constData(), size_t(data.size()), "", options);
        } catch (const vips::VError &error) {
            return unexpected(Error {ErrorCode::Damaged, detail::libraryMessage(error)});
        }
    };
    source.damaged = [](const QString &message) { return Error {ErrorCode::Damaged, message}; };
    source.jpeg = QByteArrayView(loader).startsWith("VipsForeignLoadJpeg");
    return previewImage(source, maxWidth, maxHeight);
}

} // namespace valtrona::imaging
