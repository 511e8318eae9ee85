#include "batch/conversionimaging.h"

#include "imaging/imaging.h"
#include "imaging/jpegheader.h"
#include "imaging/picture.h"

using namespace Qt::StringLiterals;

namespace valtrona {

ConversionImaging::~ConversionImaging() = default;

bool LibraryImaging::restart()
{
    return imaging::restart();
}

SourceSize LibraryImaging::measure(const QString &path)
{
    // An unreadable or missing file measures 0 x 0; the size rules and the
    // failed draw then report it.
    SourceSize size;
    imaging::measure(path, size.width, size.height);
    return size;
}

bool LibraryImaging::drawAndSave(const QString &source, const QString &target, int width,
                                 int height, const DrawingSettings &settings,
                                 const QString &formatCode)
{
    const QString code = formatCode.toUpper();
    if (code != u"J"_s && code != u"P"_s)
        return false;

    imaging::DrawModes modes;
    modes.interpolation = settings.interpolation;
    modes.smoothing = settings.smoothing;
    modes.pixelOffset = settings.pixelOffset;
    modes.compositingQuality = settings.compositing;
    modes.compositingMode = 0;
    const QString mimeType = code == u"J"_s ? u"image/jpeg"_s : u"image/png"_s;
    return imaging::drawFileToFile(source, target, width, height, modes, mimeType,
                                   settings.quality);
}

bool LibraryImaging::copyFile(const QString &source, const QString &target)
{
    return imaging::copyFile(source, target);
}

std::optional<QByteArray> LibraryImaging::readExif(const QString &source)
{
    QByteArray block;
    if (!imaging::readExif(source, block))
        return std::nullopt;
    return block;
}

bool LibraryImaging::writeExif(const QString &target, const QByteArray &block)
{
    return imaging::writeExif(target, block);
}

Error LibraryImaging::lastError()
{
    const QString message = imaging::lastErrorMessage();
    switch (imaging::lastStatus()) {
    case imaging::FileNotFound:
        return {ErrorCode::SourceMissing, message};
    case imaging::UnknownImageFormat:
        return {ErrorCode::UnknownFormat, message};
    case imaging::ValueOverflow:
    case imaging::OutOfMemory:
        return {ErrorCode::TooLarge, message};
    case imaging::AccessDenied:
        return {ErrorCode::TargetNotWritable, message};
    default:
        return {ErrorCode::Internal, message};
    }
}

} // namespace valtrona
