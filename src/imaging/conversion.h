#pragma once

// Converting one file for a run: what the run needs to know before it admits
// the work (size, memory), and the drawing itself, written straight into a
// pending output file.
//
// These functions may run on several threads at once (the layer must be
// started; restart() and stop() only while none runs). Every failure comes
// back as an Error value.

#include "core/error.h"
#include "core/expected.h"
#include "imaging/imaging.h"

#include <QString>
#include <QtGlobal>

#include <atomic>
#include <optional>

namespace valtrona::files {
class PendingFile;
}

namespace valtrona::imaging {

/// How a picture is resampled. The numbers are those of the settings keys
/// "INT", "SMT", "PXL" and "CMP" of section "JPG".
///
/// interpolation (INT, default 7):
///   0 Default, 1 LowQuality, 3 Bilinear  -> bilinear kernel
///   4 Bicubic                            -> bicubic kernel
///   5 NearestNeighbor                    -> nearest pixel, no shrink-on-load
///   6 HighQualityBilinear                -> bilinear kernel
///   2 HighQuality, 7 HighQualityBicubic  -> Lanczos-3, the best downscale
///   any other value                      -> as 7
///   Every kernel except nearest is widened by the shrink factor when
///   reducing, so all of them are antialiased; large JPEG downscales first
///   shrink while decoding, never below the target size.
/// smoothing (SMT): has no effect; it governs lines and shapes, not images.
/// pixelOffset (PXL): has no effect; pixel centres are always at +0.5.
/// compositingQuality (CMP): 3 (gamma corrected) resamples in linear light,
///   every other value in sRGB as stored.
/// compositingMode: has no effect; a picture is drawn onto an empty surface
///   (transparency is kept for PNG and flattened onto white for JPEG).
struct DrawModes
{
    int interpolation = 7;
    int smoothing = 4;
    int pixelOffset = 2;
    int compositingQuality = 2;
    int compositingMode = 0;
};

/// Formats a conversion can write. AVIF gives NoEncoder where the image
/// library has no AV1 encoder.
enum class OutputFormat { Jpeg, Png, WebP, Avif };

/// What a conversion needs to know about a source before drawing it.
struct SourceInfo
{
    int width = 0;  ///< pixels, as the drawing shows it (turned when inspected Upright)
    int height = 0; ///< pixels, as the drawing shows it
    /// The EXIF orientation (1 to 8) a drawing turns the stored pixels by:
    /// the one the file records when inspected Upright, 1 when Stored.
    /// 5 to 8 swap the sides: the stored picture is height x width.
    int orientation = 1;
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
    /// The output format the file already is, when it is one of them.
    std::optional<OutputFormat> writtenAs;
};


/// Reads the header only (pixels are never decoded); the size is given as
/// a drawing in `orientation` shows the picture. Errors: SourceMissing,
/// SourceUnreadable, UnknownFormat, Damaged (the header is broken).
[[nodiscard]] Expected<SourceInfo, Error> inspect(const QString &path,
                                                  Orientation orientation = Orientation::Upright);

/// Peak memory of drawing `info` at width x height with `modes` into
/// `format`: decodeBytes plus the streaming buffers of decoder, resampler
/// and encoder (the output goes straight to its file and holds nothing),
/// plus the whole picture at the target size where it is turned upright or
/// its encoder takes it whole (WebP, AVIF). width and height are as shown,
/// like info's. An estimate for admitting work, on the safe side; it grows
/// with the library's thread count (concurrency()).
qint64 drawMemory(const SourceInfo &info, int width, int height, const DrawModes &modes, OutputFormat format);

/// One drawing: a source scaled to an exact size and encoded.
struct DrawRequest
{
    QString source;
    int width = 0;  ///< exact target width, as shown; the aspect may change
    int height = 0; ///< exact target height, as shown
    DrawModes modes;
    OutputFormat format = OutputFormat::Jpeg;
    /// Quality of the lossy encoders (JPEG, WebP, AVIF), clamped to 0..100
    /// (0 encodes as 1).
    int quality = 85;
    /// Carries the EXIF data of an Exif JPEG source over: in front of a JPEG
    /// output as the source's header block (colour-profile and Adobe
    /// segments left out), into the EXIF container of a WebP or AVIF output
    /// (the EXIF data alone). Either way it describes the output: its pixel
    /// dimensions, and orientation 1 once the picture is turned upright.
    /// Skipped without a word when the source has no readable block or the
    /// output is PNG. Without it, outputs carry no metadata at all.
    bool carryExif = false;
    /// Upright turns the picture the way the source's EXIF orientation says
    /// it is to be shown; Stored draws it as stored.
    Orientation orientation = Orientation::Upright;
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
