#include "app/previewbox.h"

#include <QPainter>

#include "imaging/picture.h"

namespace valtrona {

PreviewBox::PreviewBox(QWidget *parent)
    : QFrame(parent)
{
    setFrameShape(QFrame::StyledPanel);
    setFrameShadow(QFrame::Sunken);
}

QString PreviewBox::fileName() const
{
    return m_fileName;
}

void PreviewBox::setFileName(const QString &path)
{
    const bool same = path.compare(m_fileName, Qt::CaseInsensitive) == 0 && !m_image.isNull();
    m_fileName = path;
    if (!same) {
        const imaging::RgbaImage rgba = imaging::loadPreview(path, 640, 640);
        m_image = rgba.isNull() ? QImage()
                                : QImage(reinterpret_cast<const uchar *>(rgba.pixels.constData()), rgba.width,
                                         rgba.height, rgba.width * 4, QImage::Format_RGBA8888)
                                      .copy();
    }
    update();
}

void PreviewBox::cls()
{
    m_fileName.clear();
    m_image = QImage();
    update();
}

bool PreviewBox::hasPicture() const
{
    return !m_image.isNull();
}

void PreviewBox::paintEvent(QPaintEvent *event)
{
    QFrame::paintEvent(event);
    if (m_image.isNull())
        return;
    QPainter p(this);
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    const QRect area = contentsRect().adjusted(6, 6, -6, -6);
    QSize size = m_image.size();
    size.scale(area.size(), Qt::KeepAspectRatio);
    if (size.width() > m_image.width())
        size = m_image.size();
    const QRect target(area.x() + (area.width() - size.width()) / 2, area.y() + (area.height() - size.height()) / 2,
                       size.width(), size.height());
    p.drawImage(target, m_image);
}

} // namespace valtrona
