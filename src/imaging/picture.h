#pragma once

// Decoded pictures: drawing an image file at a target size, saving the result
// as JPEG or PNG, and loading pixels for on-screen previews.
//
// drawFile(), drawFileToFile() and pictureFromFile() take the pixels as they
// are stored; the previews turn them as orientation() says.

#include <QByteArray>
#include <QString>

#include <memory>

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

/// Plain 8-bit pixels, four bytes per pixel in the byte order R, G, B, A
/// (not premultiplied), rows packed without padding (stride = width * 4).
/// Wrap with QImage(data, width, height, width * 4, QImage::Format_RGBA8888).
struct RgbaImage
{
    QByteArray pixels;
    int width = 0;
    int height = 0;

    bool isNull() const;
};

/// A decoded picture in sRGB, 8 bits per channel, with or without alpha.
/// Cheap to copy (shared, immutable) and safe to use from several threads.
class Picture
{
public:
    /// A null picture (what failed operations return).
    Picture();
    ~Picture();
    Picture(const Picture &other);
    Picture &operator=(const Picture &other);
    Picture(Picture &&other) noexcept;
    Picture &operator=(Picture &&other) noexcept;

    bool isNull() const;
    int width() const;
    int height() const;
    bool hasAlpha() const;

    /// The pixels as RGBA (alpha 255 where the picture has none).
    RgbaImage toRgba() const;

    class Private;

private:
    explicit Picture(std::shared_ptr<const Private> d);
    std::shared_ptr<const Private> d;

    friend class PictureAccess;
};

/// Draws an image file scaled to exactly width x height pixels (the aspect
/// may change). A width or height of -1 stands for the image's own size.
/// The source is converted to sRGB (embedded colour profiles and CMYK
/// included) and to 8 bits per channel. Returns a null picture on failure,
/// its status passed to checkStatus().
Picture drawFile(const QString &path, int width, int height, const DrawModes &modes = {});

/// Draws an image file as drawFile() does and saves the result straight away
/// with the encoder for a MIME type, as saveImage() does (quality clamped,
/// no metadata, JPEG transparency flattened onto white): the pixels stream
/// from the decoder through the resampler into the encoder without a whole
/// picture ever being held, so it is faster and leaner than drawFile() and
/// saveImage() one after the other. The file is encoded completely before it
/// is written under a temporary name and renamed into place, so a failure
/// (unreadable or truncated source, full disk) leaves no file and a source
/// may be its own target. Returns false on failure, its status passed to
/// checkStatus(); a missing encoder is reported as by saveImage().
bool drawFileToFile(const QString &source, const QString &target, int width, int height,
                    const DrawModes &modes, const QString &mimeType, int quality);

/// Decodes an image file at its own size (sRGB, 8 bits per channel).
/// A missing file gives a null picture without any report.
Picture pictureFromFile(const QString &path);

/// Saves as JPEG with quality clamped to 0..100 (0 encodes as the lowest
/// quality the encoder has). Transparency is flattened onto white. No
/// metadata is written. The file is written under a temporary name in the
/// target directory and renamed into place: a failed save leaves no file.
bool saveJpeg(const Picture &picture, const QString &path, int quality);

/// Saves as PNG (transparency kept, no metadata), written like saveJpeg().
bool savePng(const Picture &picture, const QString &path);

/// Saves with the encoder found for a MIME type (see findEncoder()); quality
/// is used by lossy encoders only. Without an encoder it reports "Es konnte
/// kein passender Encoder ermittelt werden !" titled "Encoder Error" (even
/// when quiet) and returns false.
bool saveImage(const Picture &picture, const QString &path, const QString &mimeType, int quality);

/// Loads pixels for showing an image in a box of at most maxWidth x
/// maxHeight, turned as orientation() says (the box holds the picture as it
/// is shown), keeping the aspect and never enlarging (JPEGs shrink while
/// decoding, so even 40-megapixel photos load quickly). A maxWidth or
/// maxHeight of 0 or less means no limit on that side. Returns a null image
/// on failure; reports nothing.
RgbaImage loadPreview(const QString &path, int maxWidth, int maxHeight);

/// As loadPreview(), from the bytes of an image file held in memory.
RgbaImage loadPreviewFromData(const QByteArray &data, int maxWidth, int maxHeight);

} // namespace valtrona::imaging
