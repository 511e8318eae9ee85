#pragma once

// Fuzzy comparison of 8-bit pixel buffers for image tests: geometry must
// match exactly, pixels within a tolerance. A failure names the first pixel
// that is off, so a wrong offset, channel order or colour shows at once.

#include <QByteArray>

#include <gtest/gtest.h>

namespace valtrona::test {

/// Packed 8-bit pixels: rows without padding, `channels` bytes per pixel.
struct PixelBuffer
{
    QByteArray bytes;
    int width = 0;
    int height = 0;
    int channels = 4;
};

/// Succeeds when both buffers have the same geometry, no channel differs by
/// more than maxDifference and the mean absolute difference over all
/// channels is at most maxMean.
::testing::AssertionResult imagesClose(const PixelBuffer &actual, const PixelBuffer &expected,
                                       int maxDifference, double maxMean);

/// Peak signal-to-noise ratio in dB over all channels; +inf when identical,
/// 0 when the geometry differs.
double psnr(const PixelBuffer &a, const PixelBuffer &b);

} // namespace valtrona::test
