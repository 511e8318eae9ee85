#pragma once

// Converting one file for a run: what the run needs to know before it admits
// the work (size, memory), and the drawing itself, written straight into a
// pending output file.
//
// These functions may run on several threads at once (the layer must be
// started; restart() and stop() only while none runs). Every failure comes
// back as an Error value; nothing goes through checkStatus(), the reporter or
// lastStatus().

#include "core/error.h"
#include "core/expected.h"
#include "imaging/picture.h"

#include <QString>
#include <QtGlobal>

#include <atomic>

namespace valtrona::files {
class PendingFile;
}

namespace valtrona::imaging {

/// What a conversion needs to know about a source before drawing it.
struct SourceInfo
{
    int width = 0;  ///< pixels
    int height = 0; ///< pixels
    /// Memory the decoder needs for this file beyond streaming, estimated
    /// from the header: whole-image decoders (interlaced PNG, progressive
    /// JPEG, GIF, WebP, TIFF, HEIF/AVIF and the formats of the library's
    /// modules) hold the whole picture, or all of its coefficients, at once.
    qint64 decodeBytes = 0;
    int bands = 3;         ///< channels per pixel as decoded (1 grey ... 4 with alpha or CMYK)
    int sampleBytes = 1;   ///< bytes per channel as decoded (1 for 8 bits, 2 for 16 bits)
    bool hasAlpha = false; ///< transparency, which is resampled in floating point
    /// True for JPEG: the decoder shrinks by 2, 4 or 8 while decoding when
    /// the target is small enough, so fewer pixels stream through.
    bool shrinksWhileDecoding = false;
};

/// Formats a conversion can write. WebP and AVIF give NoEncoder for now.
enum class OutputFormat { Jpeg, Png, WebP, Avif };

/// Reads the header only (pixels are never decoded). Errors: SourceMissing,
/// SourceUnreadable, UnknownFormat, Damaged (the header is broken).
[[nodiscard]] Expected<SourceInfo, Error> inspect(const QString &path);

/// Peak memory of drawing `info` at width x height with `modes` into
/// `format`: decodeBytes plus the streaming buffers of decoder, resampler
/// and encoder (the output goes straight to its file and holds nothing).
/// An estimate for admitting work, on the safe side; it grows with the
/// library's thread count (concurrency()).
qint64 drawMemory(const SourceInfo &info, int width, int height, const DrawModes &modes, OutputFormat format);

/// One drawing: a source scaled to an exact size and encoded.
struct DrawRequest
{
    QString source;
    int width = 0;  ///< exact target width; the aspect may change
    int height = 0; ///< exact target height
    DrawModes modes;
    OutputFormat format = OutputFormat::Jpeg;
    int quality = 85; ///< JPEG quality, clamped to 0..100 (0 encodes as 1)
    /// Puts the EXIF header block of an Exif JPEG source in front of a JPEG
    /// output (colour-profile and Adobe segments left out); skipped without
    /// a word when the source has no readable block or the output is PNG.
    bool carryExif = false;
    /// When this turns true the drawing stops early with Internal "cancelled".
    const std::atomic_bool *cancel = nullptr;
};

/// Decodes, resamples and encodes straight into `output`: pixels stream
/// from the decoder through the resampler into the encoder and the encoded
/// bytes into the file, so no whole picture is held unless the decoder needs
/// one. The output is complete only on success; after a failure the caller
/// discards it. Errors: SourceMissing, SourceUnreadable, UnknownFormat,
/// Damaged (broken, cut-off or lying image data is never drawn as grey or
/// garbled pixels), SizeUnusable, NoEncoder, DiskFull, FileSizeLimit,
/// TargetNotWritable, Internal.
[[nodiscard]] Expected<void, Error> drawInto(const DrawRequest &request, files::PendingFile &output);

/// Copies the source's bytes unchanged into `output` (a source that already
/// has the right size). Errors: SourceMissing, SourceUnreadable and the
/// output's write errors.
[[nodiscard]] Expected<void, Error> copyInto(const QString &source, files::PendingFile &output);

} // namespace valtrona::imaging
