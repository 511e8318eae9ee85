#include "controls/vxpict.h"

#include <cmath>

#include <QFontMetrics>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>

#include "controls/controlproperties.h"

namespace valtrona {

namespace {

// Above this many device pixels the scaled picture is not cached but drawn
// from the held one, so a deep zoom cannot exhaust memory.
constexpr qint64 displayCacheLimit = 4096LL * 4096LL;

// core's roundHalfEven() gives a double; pixel sizes want int.
int roundToInt(double value)
{
    return static_cast<int>(roundHalfEven(value));
}

QString lastPathPart(const QString &path)
{
    return path.mid(path.lastIndexOf(u'/') + 1);
}

void maskOut(QImage &image, QRgb mask)
{
    image = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if ((line[x] & 0x00FFFFFFu) == (mask & 0x00FFFFFFu))
                line[x] = 0;
        }
    }
}

} // namespace

QSize pictureShownSize(const QSize &ownSize, const QSize &area, int previewSize,
                       int thumbnailHeight, double zoom)
{
    if (ownSize.isEmpty())
        return {};
    using PreviewSize = VxPict::PreviewSize;
    PreviewSize mode = enumFromCode(previewSize, PreviewSize::Fit);
    if (mode == PreviewSize::Thumbnail && thumbnailHeight <= 0)
        mode = PreviewSize::Fit;
    QSize base;
    switch (mode) {
    case PreviewSize::Original:
        base = ownSize;
        break;
    case PreviewSize::Thumbnail:
        base = QSize(qMax(1, roundToInt(double(ownSize.width()) * thumbnailHeight / ownSize.height())),
                     thumbnailHeight);
        break;
    case PreviewSize::Stretch:
        base = area;
        break;
    case PreviewSize::Fit: {
        if (area.isEmpty())
            return {};
        const double scale = qMin(double(area.width()) / ownSize.width(),
                                  double(area.height()) / ownSize.height());
        base = QSize(qMax(1, roundToInt(ownSize.width() * scale)),
                     qMax(1, roundToInt(ownSize.height() * scale)));
        break;
    }
    }
    if (base.isEmpty())
        return {};
    if (!(zoom > 0.0) || !std::isfinite(zoom))
        zoom = 1.0;
    return {qMax(1, roundToInt(base.width() * zoom)), qMax(1, roundToInt(base.height() * zoom))};
}

QRect picturePlacement(const QSize &shown, const QRect &area, int alignment)
{
    const int cell = int(enumFromCode(alignment, VxPict::PictureAlignment::Center));
    const int column = cell % 3;
    const int row = cell / 3;
    const int spareX = area.width() - shown.width();
    const int spareY = area.height() - shown.height();
    const int x = area.left() + (column == 0 ? 0 : column == 1 ? spareX / 2 : spareX);
    const int y = area.top() + (row == 0 ? 0 : row == 1 ? spareY / 2 : spareY);
    return {QPoint(x, y), shown};
}

QRect VxPict::workArea() const
{
    return computeLayout().work;
}

QSize VxPict::sizeHint() const
{
    return {240, 180};
}

VxPict::Layout VxPict::computeLayout() const
{
    Layout layout;
    layout.border = rect().adjusted(m_outerOffset, m_outerOffset, -m_outerOffset, -m_outerOffset);
    const int frame = qMax(0, m_frameWidth);
    QRect inner = layout.border.marginsRemoved(borderMargins(borderOptions()))
                      .adjusted(frame, frame, -frame, -frame);
    inner.setTop(inner.top() + qMax(0, m_topOffset));
    const int lineHeight = QFontMetrics(font()).height() + 4;
    if (!m_caption.isEmpty()) {
        layout.captionLine = QRect(inner.left(), inner.top(), inner.width(), lineHeight);
        inner.setTop(layout.captionLine.bottom() + 1);
    }
    if (m_workHeight > 0)
        inner.setHeight(m_workHeight);
    if (m_showPictureName) {
        layout.nameLine = QRect(inner.left(), inner.bottom() - lineHeight + 1, inner.width(), lineHeight);
        inner.setBottom(layout.nameLine.top() - 1);
    }
    const int offset = qMax(0, m_pictureOffset);
    layout.work = inner.adjusted(offset, offset, -offset, -offset);
    return layout;
}

BorderOptions VxPict::borderOptions() const
{
    return {m_borderStyle, m_borderWidth, m_frameOuter, m_frameInner, m_lightBorders, m_showBorderShape};
}

bool VxPict::placePicture()
{
    m_display = QPixmap();
    m_shownRect = QRect();
    if (m_held.isNull())
        return false;
    const QRect work = computeLayout().work;
    const QSize shown = pictureShownSize(m_ownSize, work.size(), m_previewSize, m_thumbnailHeight, m_zoomfaktor);
    if (shown.isEmpty())
        return false;
    m_shownRect = picturePlacement(shown, work, m_pictureAlignment);

    const qreal ratio = devicePixelRatioF();
    const QSize device = (QSizeF(shown) * ratio).toSize();
    if (qint64(device.width()) * device.height() <= displayCacheLimit) {
        QImage image = m_held;
        if (m_useMaskColor)
            maskOut(image, colorFromValue(m_maskColor, palette()).rgb());
        if (image.size() != device)
            image = image.scaled(device, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        m_display = QPixmap::fromImage(std::move(image));
        m_display.setDevicePixelRatio(ratio);
    }
    readAgainIfTooSmall();
    return true;
}

void VxPict::updateToolTip()
{
    const QString size = hasPicture()
        ? QString::number(pictureWidth()) + u'x' + QString::number(pictureHeight())
        : QString();
    QString text;
    switch (enumFromCode(m_showPictureToolTip, PictureToolTip::None)) {
    case PictureToolTip::None: break;
    case PictureToolTip::Size: text = size; break;
    case PictureToolTip::FileName: text = m_fileName; break;
    case PictureToolTip::SizeAndName:
        if (size.isEmpty() || m_fileName.isEmpty())
            text = size.isEmpty() ? m_fileName : size;
        else
            text = size + u" - " + m_fileName;
        break;
    }
    setToolTip(text);
}

QColor VxPict::color(quint32 value) const
{
    return colorFromValue(value, palette());
}

void VxPict::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const Layout layout = computeLayout();
    if (enumFromCode(m_backStyle, BackStyle::Transparent) == BackStyle::Opaque)
        painter.fillRect(rect(), color(m_backColor));
    drawBorder(painter, layout.border, palette(), borderOptions());

    const QColor text = isEnabled() ? color(m_foreColor) : palette().color(QPalette::Disabled, QPalette::WindowText);
    const QFontMetrics metrics(font());
    if (!layout.captionLine.isNull()) {
        painter.setPen(text);
        const QRect line = layout.captionLine.adjusted(4, 0, -4, 0);
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
                         metrics.elidedText(m_caption, Qt::ElideRight, line.width()));
    }
    if (!layout.nameLine.isNull()) {
        painter.fillRect(layout.nameLine, color(m_pictureNameTextColor));
        painter.setPen(text);
        const QRect line = layout.nameLine.adjusted(4, 0, -4, 0);
        painter.drawText(line, Qt::AlignHCenter | Qt::AlignVCenter,
                         metrics.elidedText(lastPathPart(m_fileName), Qt::ElideMiddle, line.width()));
    }

    if (!m_pictureVisible || m_shownRect.isEmpty())
        return;
    painter.save();
    painter.setClipRect(layout.work.adjusted(-2, -2, 2, 2));
    if (!m_display.isNull()) {
        painter.drawPixmap(m_shownRect.topLeft(), m_display);
    } else {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(m_shownRect, m_held);
    }
    if (m_showPictureFrame) {
        const QRect frame = m_shownRect.adjusted(-1, -1, 1, 1);
        if (m_pictureFrameFlat)
            drawBorder(painter, frame, palette(), {BorderStyleCode::SingleLine});
        else
            drawBorder(painter, frame, palette(), {BorderStyleCode::ThreedInner});
    }
    painter.restore();
}

void VxPict::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placePicture();
}

void VxPict::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    placePicture();
    if (m_setFocusOnShow)
        setFocus(Qt::OtherFocusReason);
}

void VxPict::mousePressEvent(QMouseEvent *event)
{
    Q_EMIT containerMouseDown(event->button(), event->modifiers(), event->position().toPoint());
    QWidget::mousePressEvent(event);
}

void VxPict::mouseMoveEvent(QMouseEvent *event)
{
    Q_EMIT containerMouseMove(event->buttons(), event->modifiers(), event->position().toPoint());
    QWidget::mouseMoveEvent(event);
}

void VxPict::mouseReleaseEvent(QMouseEvent *event)
{
    Q_EMIT containerMouseUp(event->button(), event->modifiers(), event->position().toPoint());
    QWidget::mouseReleaseEvent(event);
}

void VxPict::wheelEvent(QWheelEvent *event)
{
    Q_EMIT wheelMouseScroll(event->angleDelta().y(), event->modifiers());
    event->accept();
}

void VxPict::changeEvent(QEvent *event)
{
    followLookChange(this, event, [this] { relayout(); });
    QWidget::changeEvent(event);
}

} // namespace valtrona
