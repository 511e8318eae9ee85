#pragma once

#include <functional>

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

class QImageReader;

namespace valtrona {

/// A picture as a loader delivers it.
struct LoadedPicture
{
    /// The decoded picture, at most as large as the picture itself; null
    /// when the source could not be read.
    QImage image;
    /// The picture's own size, upright (after its orientation is applied);
    /// invalid when unknown.
    QSize ownSize;
};

/// Tells a loader, for the picture's own upright size, the size in device
/// pixels at which the picture will be shown. The loader may decode at
/// that size instead of the full one.
using ShownSizeFunction = std::function<QSize(const QSize &ownSize)>;

/// Reads pictures for the picture view. A host can hand the view its own
/// loader (the imaging layer, for instance); the view calls it on the GUI
/// thread. Loaders never show messages.
class PictureLoader
{
public:
    virtual ~PictureLoader();

    /// Reads the picture file at `path`. Without a `shownSize` function
    /// the picture is decoded at its full size.
    virtual LoadedPicture load(const QString &path, const ShownSizeFunction &shownSize) = 0;
    /// Reads a picture held in memory, as load() does for files.
    virtual LoadedPicture loadFromData(const QByteArray &data, const ShownSizeFunction &shownSize) = 0;
};

/// The loader built on Qt's image readers: it asks the reader for the shown
/// size, so JPEG files are decoded at a reduced scale (a 40-megapixel photo
/// previews in a fraction of a second), and turns pictures upright by their
/// EXIF orientation, as image viewers do.
class QtPictureLoader : public PictureLoader
{
public:
    LoadedPicture load(const QString &path, const ShownSizeFunction &shownSize) override;
    LoadedPicture loadFromData(const QByteArray &data, const ShownSizeFunction &shownSize) override;

private:
    static LoadedPicture read(QImageReader &reader, const ShownSizeFunction &shownSize);
};

} // namespace valtrona
