#include "app/imagingpictureloader.h"

#include <QImage>

#include "imaging/picture.h"

namespace valtrona {

namespace {

QImage toImage(const imaging::RgbaImage &rgba)
{
    if (rgba.isNull())
        return {};
    return QImage(reinterpret_cast<const uchar *>(rgba.pixels.constData()), rgba.width, rgba.height,
                  rgba.width * 4, QImage::Format_RGBA8888)
        .copy();
}

} // namespace

ImagingPictureLoader::ImagingPictureLoader(std::function<QSize(const QString &)> measure)
    : m_measure(std::move(measure))
{
}

LoadedPicture ImagingPictureLoader::load(const QString &path, const ShownSizeFunction &shownSize)
{
    LoadedPicture picture;
    const QSize own = m_measure ? m_measure(path) : QSize();
    if (own.isEmpty())
        return picture;
    picture.ownSize = own;
    const QSize shown = shownSize ? shownSize(own) : own;
    picture.image = toImage(imaging::loadPreview(path, shown.width(), shown.height()));
    return picture;
}

LoadedPicture ImagingPictureLoader::loadFromData(const QByteArray &data, const ShownSizeFunction &shownSize)
{
    LoadedPicture picture;
    // The own size is only known after decoding; memory pictures are small.
    const QImage full = toImage(imaging::loadPreviewFromData(data, 0, 0));
    if (full.isNull())
        return picture;
    picture.ownSize = full.size();
    const QSize shown = shownSize ? shownSize(full.size()) : full.size();
    picture.image = shown.isValid() && shown != full.size()
        ? full.scaled(shown, Qt::KeepAspectRatio, Qt::SmoothTransformation)
        : full;
    return picture;
}

} // namespace valtrona
