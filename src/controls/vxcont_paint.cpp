#include "controls/vxcont.h"

#include <cmath>

#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

#include "controls/controlproperties.h"

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

Qt::Alignment captionAlignment(HorizontalAlignment horizontal, VerticalAlignment vertical)
{
    Qt::Alignment flags;
    switch (horizontal) {
    case HorizontalAlignment::Left: flags = Qt::AlignLeft; break;
    case HorizontalAlignment::Right: flags = Qt::AlignRight; break;
    case HorizontalAlignment::Center: flags = Qt::AlignHCenter; break;
    }
    switch (vertical) {
    case VerticalAlignment::Top: flags |= Qt::AlignTop; break;
    case VerticalAlignment::Middle: flags |= Qt::AlignVCenter; break;
    case VerticalAlignment::Bottom: flags |= Qt::AlignBottom; break;
    }
    return flags;
}

double luminance(const QColor &color)
{
    return 0.299 * color.redF() + 0.587 * color.greenF() + 0.114 * color.blueF();
}

// Black or white, whichever reads better on `background`.
QColor contrastingText(const QColor &background)
{
    return luminance(background) > 0.55 ? QColor(Qt::black) : QColor(Qt::white);
}

// `text` unless it would all but vanish on `background` (a light system
// text colour of a dark palette on the white caption area, say).
QColor readableOn(const QColor &text, const QColor &background)
{
    return qAbs(luminance(text) - luminance(background)) < 0.35 ? contrastingText(background) : text;
}

QPainterPath ringPath(const QRect &outer, const QRect &inner)
{
    QPainterPath path;
    path.addRect(outer);
    QPainterPath hole;
    hole.addRect(inner);
    return path.subtracted(hole);
}

} // namespace

QColor VxCont::color(quint32 value) const
{
    return colorFromValue(value, palette());
}

QColor VxCont::textColor(quint32 value) const
{
    if (!isEnabled())
        return palette().color(QPalette::Disabled, QPalette::WindowText);
    return color(value);
}

void VxCont::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const Layout layout = computeLayout();

    if (controlStyleKind() == ControlStyle::Shadow && !layout.shadow.isEmpty()) {
        // A soft drop shadow: ShadowSize rings that fade towards the edge.
        const QColor shadow = color(m_shadowColor);
        const int soft = qMax(0, m_shadowSize);
        QRect ring = layout.shadow;
        for (int k = 0; k < soft && ring.width() > 2 && ring.height() > 2; ++k) {
            QColor step = shadow;
            step.setAlphaF(float((k + 1.0) / (soft + 1.0)));
            const QRect next = ring.adjusted(1, 1, -1, -1);
            painter.fillPath(ringPath(ring, next), step);
            ring = next;
        }
        painter.fillRect(ring, shadow);
    }

    const bool opaque = enumFromCode(m_backStyle, BackStyle::Transparent) == BackStyle::Opaque;
    if (opaque)
        painter.fillRect(layout.body, color(m_backColor));
    const QRect inside = layout.border.marginsRemoved(borderMargins(borderOptions()));
    if (opaque && m_windowColor != m_backColor)
        painter.fillRect(layout.work, color(m_windowColor));
    if (!m_pictureBack.isNull())
        painter.drawTiledPixmap(inside, m_pictureBack);

    painter.save();
    if (!layout.frameCaption.isNull())
        painter.setClipRegion(QRegion(rect()).subtracted(layout.frameCaption));
    drawBorder(painter, layout.border, palette(), borderOptions());
    painter.restore();

    if (!layout.frameCaption.isNull()) {
        painter.setFont(fontFrame());
        painter.setPen(textColor(m_frameForeColor));
        painter.drawText(layout.frameCaption, Qt::AlignCenter | Qt::TextSingleLine, m_captionFrame);
    }

    if (!layout.captionArea.isNull()) {
        painter.fillRect(layout.captionArea, color(m_caColor));
        if (m_caBorderStyle) {
            painter.setPen(color(m_caBorderColor));
            painter.drawRect(layout.captionArea.adjusted(0, 0, -1, -1));
        }
        paintCaption(painter, layout.captionArea, color(m_caColor));
    }

    if (!m_picture.isNull()) {
        QRect target(QPoint(), m_picture.deviceIndependentSize().toSize());
        target.moveCenter(layout.work.center());
        painter.drawPixmap(target, m_picture);
    }

    if (hasFlood()) {
        const int inset = qMax(0, m_floodOffset);
        paintFlood(painter, layout.work.adjusted(inset, inset, -inset, -inset));
    }

    if (layout.captionArea.isNull())
        paintCaption(painter, layout.work);

    if (!m_captionText.isEmpty()) {
        painter.setFont(fontText());
        painter.setPen(textColor(m_foreColorText));
        painter.drawText(layout.work.adjusted(textPadding, textPadding, -textPadding, -textPadding),
                         Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, m_captionText);
    }
}

void VxCont::paintCaption(QPainter &painter, const QRect &area, std::optional<QColor> background) const
{
    if (m_caption.isEmpty())
        return;
    int flags = int(captionAlignment(enumFromCode(m_alignment, HorizontalAlignment::Left),
                                     enumFromCode(m_alignmentVertical, VerticalAlignment::Middle)));
    if (m_wordWrap)
        flags |= Qt::TextWordWrap;
    if (m_useMnemonic)
        flags |= Qt::TextShowMnemonic;
    painter.setFont(font());
    const QColor text = textColor(m_foreColor);
    painter.setPen(background && isEnabled() ? readableOn(text, *background) : text);
    painter.drawText(area.adjusted(textPadding, textPadding, -textPadding, -textPadding), flags, m_caption);
}

void VxCont::paintFlood(QPainter &painter, const QRect &bar) const
{
    const FloodBarType barType = floodBarKind();
    if (bar.isEmpty() || barType == FloodBarType::None)
        return;
    const int percent = m_flood.shownPercent();
    const int filledWidth = int(std::lround(bar.width() * percent / 100.0));
    const QRect filled(bar.left(), bar.top(), filledWidth, bar.height());
    const QColor floodColor = color(m_floodColor);

    if (filledWidth > 0) {
        switch (barType) {
        case FloodBarType::Solid:
            painter.fillRect(filled, floodColor);
            break;
        case FloodBarType::Blocks: {
            // Blocks of two thirds of the bar height with a small gap.
            const int block = qMax(4, bar.height() * 2 / 3);
            const int gap = qMax(1, bar.height() / 8);
            painter.save();
            painter.setClipRect(filled);
            for (int x = bar.left() + 1; x < filled.right(); x += block + gap)
                painter.fillRect(QRect(x, bar.top() + 1, block, bar.height() - 2), floodColor);
            painter.restore();
            break;
        }
        case FloodBarType::Raised: {
            QLinearGradient gradient(filled.topLeft(), filled.bottomLeft());
            gradient.setColorAt(0.0, floodColor.lighter(150));
            gradient.setColorAt(0.45, floodColor);
            gradient.setColorAt(1.0, floodColor.darker(125));
            painter.fillRect(filled, gradient);
            painter.fillRect(QRect(filled.left(), filled.top(), filled.width(), 1), floodColor.lighter(170));
            painter.fillRect(QRect(filled.right(), filled.top(), 1, filled.height()), floodColor.darker(140));
            break;
        }
        case FloodBarType::Image:
            if (!m_floodBackImage.isNull())
                painter.drawPixmap(filled, m_floodBackImage);
            break;
        case FloodBarType::None:
            break;
        }
    }

    if (!m_floodShowPercent)
        return;
    // The number reads in the caption colour over the empty part and in a
    // contrasting colour over the filled part.
    const QString text = QString::number(percent) + u" %";
    painter.save();
    painter.setFont(fontFlood());
    painter.setClipRect(bar.adjusted(filledWidth, 0, 0, 0));
    painter.setPen(textColor(m_foreColor));
    painter.drawText(bar, Qt::AlignCenter | Qt::TextSingleLine, text);
    if (filledWidth > 0) {
        painter.setClipRect(filled);
        painter.setPen(isEnabled() ? contrastingText(floodColor) : textColor(m_foreColor));
        painter.drawText(bar, Qt::AlignCenter | Qt::TextSingleLine, text);
    }
    painter.restore();
}

} // namespace valtrona
