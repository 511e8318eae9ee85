#pragma once

// JPEG header kinds and the EXIF copy from a source photo to its target.
// Plain byte work on the files; no image decoding.

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

/// Reads the header kind of a file. With endCheck, the file must also end
/// with FF D9: as its last two bytes, or the two before a final 0 byte, or,
/// when the last byte is 6C ("l"), the two bytes that begin 20610 bytes
/// before the end; a file that fails this is kind 0.
JpegHeader readJpegHeader(const QString &path, bool endCheck);

/// As readJpegHeader(), on the bytes of a whole file held in memory.
JpegHeader parseJpegHeader(const QByteArray &bytes, bool endCheck);

/// Reads the header block of an Exif JPEG (kind 2, end-checked): its bytes
/// from the start marker up to headerEnd. False for any other file.
bool readExif(const QString &path, QByteArray &block);

/// Makes the EXIF data of a header block describe an output of width x
/// height pixels, in place (lengths and offsets never change): the
/// dimensions of the EXIF directory (PixelXDimension, PixelYDimension) and,
/// when `orientation` is given, the orientation of the main picture, in the
/// EXIF directory and in an XMP packet beside it. Both byte orders of EXIF
/// data are read. Tags the block lacks stay lacking; a damaged structure is
/// patched as far as it reads.
void describeOutput(QByteArray &block, std::optional<int> orientation, int width, int height);

/// Puts a header block in front of a JFIF or plain JPEG (kind 1 or 3,
/// end-checked): the target becomes block + its own bytes after FF D8. The
/// block's colour-profile (APP2 ICC_PROFILE) and colour-transform (APP14
/// Adobe) segments are left out, since they describe the source's encoding,
/// not the target's sRGB pixels. The target is rewritten under a temporary
/// name and renamed into place. False, with the target untouched, when it is
/// missing or of kind 0 or 2, or when the block is not a JPEG header block.
bool writeExif(const QString &path, const QByteArray &block);

} // namespace valtrona::imaging
