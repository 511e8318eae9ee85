#include "app/imagingpictureloader.h"

#include <QImage>

#include <algorithm>
#include <utility>

#include "imaging/imaging.h"
#include "imaging/preview.h"

namespace valtrona {

namespace {

// A picture that cannot be read shows as an empty view.
QImage toImage(const Expected<imaging::RgbaImage, Error> &preview)
{
    if (!preview || preview->isNull())
        return {};
    const imaging::RgbaImage &rgba = *preview;
    return QImage(reinterpret_cast<const uchar *>(rgba.pixels.constData()), rgba.width, rgba.height,
                  rgba.width * 4, QImage::Format_RGBA8888)
        .copy();
}

} // namespace

ImagingPictureLoader::ImagingPictureLoader(std::function<QSize(const QString &)> measure)
    : m_measure(std::move(measure))
{
}

void ImagingPictureLoader::prime(const QString &path, const LoadedPicture &picture)
{
    m_primedPath = path;
    m_primed = picture;
}

LoadedPicture ImagingPictureLoader::load(const QString &path, const ShownSizeFunction &shownSize)
{
    if (!m_primedPath.isEmpty() && path == m_primedPath) {
        LoadedPicture primed = std::exchange(m_primed, {});
        m_primedPath.clear();
        const QSize shown = shownSize && primed.ownSize.isValid() ? shownSize(primed.ownSize) : primed.ownSize;
        const bool largeEnough = primed.image.width() >= std::min(shown.width(), primed.ownSize.width())
            && primed.image.height() >= std::min(shown.height(), primed.ownSize.height());
        if (!primed.image.isNull() && largeEnough)
            return primed;
    }

    LoadedPicture picture;
    const QSize own = m_measure ? m_measure(path) : QSize();
    if (own.isEmpty())
        return picture;
    picture.ownSize = own;
    const QSize shown = shownSize ? shownSize(own) : own;
    picture.image = toImage(imaging::loadPreview(path, shown.width(), shown.height()));
    return picture;
}

LoadedPicture ImagingPictureLoader::readPreview(const QString &path, const QSize &box)
{
    LoadedPicture picture;
    const auto size = imaging::measure(path);
    if (!size)
        return picture;
    picture.ownSize = *size;
    picture.image = toImage(imaging::loadPreview(path, box.width(), box.height()));
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
