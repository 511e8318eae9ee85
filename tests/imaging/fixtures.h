#pragma once

// Test images for the imaging tests: synthetic pixels, files written without
// the layer under test (plain PPM, or the libvips command-line tools), a
// plain reference resample, and drawings and decoded files as comparable
// buffers.

#include "core/error.h"
#include "core/expected.h"
#include "imaging/conversion.h"
#include "imaging/preview.h"
#include "support/imagecompare.h"
#include "support/testsupport.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

namespace valtrona::test {

/// A smooth, colourful image without flat areas: red grows to the right,
/// green downwards, blue in soft waves.
PixelBuffer gradientImage(int width, int height);

/// One colour everywhere.
PixelBuffer solidImage(int width, int height, int red, int green, int blue);

/// Writes 1 (grey) or 3 (RGB) channel pixels as a binary PGM/PPM file.
void writePnm(const QString &path, const PixelBuffer &image);

/// Writes image to path through a PPM and `vips copy` (the suffix and
/// "[options]" on path choose the format), returns path.
QString writeWithVips(const QString &path, const PixelBuffer &image, const QString &saveOptions = {});

/// The image resampled to width x height by the image library's own
/// thumbnail tool, run apart from the layer under test.
PixelBuffer referenceResample(const PixelBuffer &image, int width, int height);

/// The image's pixels as 4-channel RGBA.
PixelBuffer pixelsOf(const imaging::RgbaImage &image);

/// The pixels of an image file as they are stored (not turned), as 4-channel
/// RGBA; an empty buffer when it cannot be read.
PixelBuffer decoded(const QString &path);

/// A drawing of `source` at width x height into `format`, in the default modes.
imaging::DrawRequest drawRequest(const QString &source, int width, int height,
                                 imaging::OutputFormat format = imaging::OutputFormat::Png);

/// Draws into the file `name` of `folder` (created when missing): its path.
Expected<QString, Error> drawToFile(const imaging::DrawRequest &request, const QString &folder,
                                    const QString &name);

/// Keeps only the first `channels` channels of every pixel.
PixelBuffer firstChannels(const PixelBuffer &image, int channels);

/// An RGB PNG whose header claims width x height (interlaced or not),
/// followed by an image data chunk that holds a single byte.
QByteArray pngClaiming(quint32 width, quint32 height, bool interlaced = false);

/// A baseline JPEG with the frame size in its start-of-frame segment set.
QByteArray withFrameSize(QByteArray jpegBytes, int width, int height);

} // namespace valtrona::test
