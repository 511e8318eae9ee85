#pragma once

// Internals shared by the imaging sources; never included by public headers.

#include "imaging/conversion.h"
#include "imaging/imaging.h"

#include <QByteArray>
#include <QString>

#include <optional>

#include <vips/vips8>

namespace valtrona::imaging::detail {

/// Initialises the image library once per process; false when it cannot.
bool ensureLibrary();

/// The error of a call that needs the layer started while it is not.
Error notStartedError();

/// True once the library's format modules are loaded (or were loaded by the
/// library itself at start).
bool formatModulesLoaded();

/// Loads the library's format modules (ImageMagick, PDF, HEIF, ...), once per
/// process; the library starts without them.
void loadFormatModules();

/// Warnings the image library has logged on the calling thread so far. A
/// JPEG decoder that meets damaged data in its last strip can only say so
/// this way, when its image is closed.
quint64 libraryWarningCount();

// ---- Drawing, shared by the previews and the conversion --------------------

/// The block shrink a JPEG decoder applies for a reduction by `factor`: as
/// far as the target allows (never below it). The decoder's scaled transform
/// averages each block properly, so the kernel that finishes the job may be
/// left with less than a factor of two at no visible cost, and a 24-megapixel
/// photo bound for 1024 pixels decodes only a sixteenth of its pixels.
int jpegShrinkFor(double factor);

/// True when the modes let a JPEG decoder shrink while decoding (every
/// kernel but nearest, and not in linear light).
bool shrinksOnLoad(const DrawModes &modes);

/// Any colour space, profile, depth and band layout -> sRGB, 8 bits, three
/// bands plus alpha when the source has one.
vips::VImage toSrgb8(vips::VImage image);

/// Resamples an sRGB 8-bit image to exactly width x height with the modes.
vips::VImage resample(vips::VImage image, int width, int height, const DrawModes &modes);

/// The orientation an image's header records (1 to 8, as EXIF numbers
/// them: 1 as stored, 6 stored turned a quarter to the left, ...); 1 when
/// it records none.
int recordedOrientation(const vips::VImage &image);

/// The orientation a drawing in `orientation` turns an image by: its
/// recorded one when Upright, 1 when Stored.
int appliedOrientation(const vips::VImage &image, Orientation orientation);

/// True when turning by an EXIF orientation swaps width and height (5 to 8).
bool swapsSides(int exifOrientation);

/// Turns an image the way an EXIF orientation says it is to be shown. The
/// image is held in memory first unless the orientation is 1, since turning
/// reads it out of order.
vips::VImage turnUpright(const vips::VImage &image, int exifOrientation);

/// What an encoder is given: 8-bit bands, JPEG transparency flattened onto white.
vips::VImage encoderInput(vips::VImage image, bool jpeg);

/// Options every save uses: no metadata (unless `strip` is false), quality
/// clamped (lossy encoders only).
vips::VOption *encoderOptions(bool lossy, int quality, bool strip = true);

/// The plain JFIF segment (no resolution, square pixels) put after the start
/// marker of every JPEG written.
QByteArray jfifSegment();

// ---- EXIF, for the conversion ------------------------------------------------

/// The header block of an Exif JPEG (kind 2, end-checked) read from an open
/// file with positioned reads; nothing for any other file.
std::optional<QByteArray> readExifBlock(int descriptor);

/// A header block without the segments that describe the source's colour
/// encoding (ICC profile, Adobe transform); empty when it is not FF D8
/// followed by whole APPn/COM segments.
QByteArray portableHeaderBlock(const QByteArray &block);

/// The payload of a header block's EXIF segment: "Exif", two zero bytes and
/// the TIFF structure; empty when the block has none.
QByteArray exifPayload(const QByteArray &block);

/// A WebP file without the metadata chunks (EXIF, XMP, ICC profile) it was
/// written with, and with an EXIF chunk that holds `tiff` (the TIFF
/// structure of EXIF data) when that is not empty; a simple file then
/// becomes an extended one with a canvas of width x height. Empty when
/// `webp` is not a WebP file as the encoder writes them.
QByteArray webpWithExifOnly(const QByteArray &webp, const QByteArray &tiff, int width, int height);

} // namespace valtrona::imaging::detail
