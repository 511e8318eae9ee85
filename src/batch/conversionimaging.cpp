#include "batch/conversionimaging.h"

#include "imaging/imaging.h"
#include "imaging/jpegheader.h"
#include "imaging/picture.h"

#include <QFile>
#include <QSaveFile>

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

// The imaging layer's JPEG encoder writes no JFIF segment, so its files
// begin FF D8 FF DB and read as header kind 0, which the EXIF copy refuses.
// This puts the standard JFIF APP0 segment (version 1.01, no density) behind
// the start marker, written under a temporary name and renamed into place.
// Only files of kind 0 that begin with a start marker and a table segment
// are touched. Remove once the encoder writes the segment itself.
bool addJfifSegment(const QString &path)
{
    if (imaging::readJpegHeader(path, true).kind != 0)
        return false;
    QFile in(path);
    if (!in.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = in.readAll();
    in.close();
    if (!bytes.startsWith(QByteArrayLiteral("\xFF\xD8\xFF\xDB")))
        return false;
    static const QByteArray jfif = QByteArrayLiteral(
        "\xFF\xE0\x00\x10JFIF\x00\x01\x01\x00\x00\x01\x00\x01\x00\x00");
    QSaveFile out(path);
    if (!out.open(QIODevice::WriteOnly))
        return false;
    out.write(bytes.left(2));
    out.write(jfif);
    out.write(bytes.mid(2));
    return out.commit();
}

} // namespace

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
    const imaging::Picture picture = imaging::drawFile(source, width, height, modes);
    if (picture.isNull())
        return false;
    if (code == u"J"_s)
        return imaging::saveJpeg(picture, target, settings.quality);
    return imaging::savePng(picture, target);
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
    if (imaging::writeExif(target, block))
        return true;
    return addJfifSegment(target) && imaging::writeExif(target, block);
}

} // namespace valtrona
