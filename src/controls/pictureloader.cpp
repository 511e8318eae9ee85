#include "controls/pictureloader.h"

#include <QBuffer>
#include <QImageReader>

namespace valtrona {

namespace {

// Qt refuses pictures above 128 MB by default, which a 40-megapixel photo
// read whole (for the clipboard or a save) already exceeds. Reads of this
// loader may take up to 1 GB; larger pictures stay refused.
constexpr int readLimitMegabytes = 1024;

// Raises Qt's process-wide image allocation limit for one read.
class AllocationLimitScope
{
public:
    AllocationLimitScope()
        : m_previous(QImageReader::allocationLimit())
    {
        if (m_previous != 0 && m_previous < readLimitMegabytes)
            QImageReader::setAllocationLimit(readLimitMegabytes);
    }
    ~AllocationLimitScope() { QImageReader::setAllocationLimit(m_previous); }
    AllocationLimitScope(const AllocationLimitScope &) = delete;
    AllocationLimitScope &operator=(const AllocationLimitScope &) = delete;

private:
    int m_previous;
};

} // namespace

PictureLoader::~PictureLoader() = default;

LoadedPicture QtPictureLoader::load(const QString &path, const ShownSizeFunction &shownSize)
{
    if (path.isEmpty())
        return {};
    QImageReader reader(path);
    return read(reader, shownSize);
}

LoadedPicture QtPictureLoader::loadFromData(const QByteArray &data, const ShownSizeFunction &shownSize)
{
    if (data.isEmpty())
        return {};
    QBuffer buffer;
    buffer.setData(data);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    return read(reader, shownSize);
}

LoadedPicture QtPictureLoader::read(QImageReader &reader, const ShownSizeFunction &shownSize)
{
    reader.setAutoTransform(true);
    const QSize stored = reader.size();
    const bool turned = reader.transformation().testFlag(QImageIOHandler::TransformationRotate90);
    const QSize upright = turned ? stored.transposed() : stored;

    if (shownSize && upright.isValid() && !upright.isEmpty()) {
        // Decode no larger than shown: the JPEG reader then scales inside
        // the decoder instead of building the full picture first.
        const QSize wanted = shownSize(upright).boundedTo(upright);
        if (wanted.isValid() && !wanted.isEmpty() && wanted != upright)
            reader.setScaledSize(turned ? wanted.transposed() : wanted);
    }

    LoadedPicture picture;
    {
        const AllocationLimitScope limit;
        picture.image = reader.read();
    }
    if (picture.image.isNull())
        return {};
    picture.ownSize = upright.isValid() ? upright : picture.image.size();
    return picture;
}

} // namespace valtrona
