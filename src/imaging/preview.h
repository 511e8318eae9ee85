#pragma once

// Pixels for showing images on screen, decoded no larger than they are shown.

#include "core/error.h"
#include "core/expected.h"

#include <QByteArray>
#include <QString>

namespace valtrona::imaging {

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

/// Loads pixels for showing an image in a box of at most maxWidth x
/// maxHeight, turned as orientation() says (the box holds the picture as it
/// is shown), keeping the aspect and never enlarging (JPEGs shrink while
/// decoding, so even 40-megapixel photos load quickly). A maxWidth or
/// maxHeight of 0 or less means no limit on that side. Works whether or not
/// the layer is started. Errors: SourceMissing, SourceUnreadable,
/// UnknownFormat, Damaged, TooLarge, Internal (no image library).
[[nodiscard]] Expected<RgbaImage, Error> loadPreview(const QString &path, int maxWidth, int maxHeight);

/// As loadPreview(), from the bytes of an image file held in memory.
[[nodiscard]] Expected<RgbaImage, Error> loadPreviewFromData(const QByteArray &data, int maxWidth, int maxHeight);

} // namespace valtrona::imaging
