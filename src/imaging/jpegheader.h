#pragma once

// JPEG header kinds, and the EXIF data a copied header block carries.
// Plain byte work; no image decoding.

#include <QByteArray>
#include <QString>

#include <optional>

namespace valtrona::imaging {

/// What the first bytes of a JPEG file say about it.
struct JpegHeader
{
    /// 0 not recognised, 1 JFIF, 2 Exif, 3 a plain frame marker (SOF0..SOF3).
    int kind = 0;
    /// "JFIF JPEG-Format", "JEIDA Exif JPEG-Format", "JPEG-Format" or "".
    QString description;
    /// Byte offset at which the leading header segments end: just after the
    /// run of application (APPn) and comment (COM) segments that follows the
    /// start marker. 0 when the file is not recognised.
    qint64 headerEnd = 0;
};

/// The header kind of a whole file held in memory. With endCheck, the file
/// must also end with FF D9: as its last two bytes, or the two before a
/// final 0 byte, or, when the last byte is 6C ("l"), the two bytes that
/// begin 20610 bytes before the end; a file that fails this is kind 0.
JpegHeader parseJpegHeader(const QByteArray &bytes, bool endCheck);

/// Makes the EXIF data of a header block describe an output of width x
/// height pixels, in place (lengths and offsets never change): the
/// dimensions of the EXIF directory (PixelXDimension, PixelYDimension) and,
/// when `orientation` is given, the orientation of the main picture, in the
/// EXIF directory and in an XMP packet beside it. Both byte orders of EXIF
/// data are read. Tags the block lacks stay lacking; a damaged structure is
/// patched as far as it reads.
void describeOutput(QByteArray &block, std::optional<int> orientation, int width, int height);

} // namespace valtrona::imaging
