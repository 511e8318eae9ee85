#include "controls/vxcont.h"

#include <algorithm>
#include <cmath>

#include <QEvent>
#include <QFontMetrics>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QPaintEvent>

#include "controls/vxborder.h"

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

constexpr int textPadding = 3;
constexpr int frameCaptionIndent = 8;

Qt::Alignment captionAlignment(int horizontal, int vertical)
{
    Qt::Alignment flags;
    switch (horizontal) {
    case 1: flags = Qt::AlignRight; break;
    case 2: flags = Qt::AlignHCenter; break;
    default: flags = Qt::AlignLeft; break;
    }
    switch (vertical) {
    case 0: flags |= Qt::AlignTop; break;
    case 2: flags |= Qt::AlignBottom; break;
    default: flags |= Qt::AlignVCenter; break;
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

struct VxCont::Layout
{
    QRect body;          // inside OuterOffset, without the shadow
    QRect shadow;        // the drop shadow (ControlStyle 1)
    QRect border;        // where the border is drawn
    QRect frameCaption;  // where CaptionFrame interrupts the frame line
    QRect captionArea;   // the caption strip (ControlStyle 2)
    QRect work;          // inside everything: caption, flood, children
};

VxCont::VxCont(QWidget *parent)
    : QWidget(parent)
{
    refreshFrame();
}

VxCont::~VxCont() = default;

void VxCont::refreshFrame()
{
    // Layouts set on the container keep their widgets in the work area.
    const QRect work = computeLayout().work;
    setContentsMargins(qMax(0, work.left()), qMax(0, work.top()), qMax(0, width() - 1 - work.right()),
                       qMax(0, height() - 1 - work.bottom()));
    update();
}

void VxCont::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    refreshFrame();
}

int VxCont::controlStyle() const
{
    return m_controlStyle;
}

void VxCont::setControlStyle(int value)
{
    if (m_controlStyle == value)
        return;
    m_controlStyle = value;
    refreshFrame();
}

bool VxCont::frameOuter() const
{
    return m_frameOuter;
}

void VxCont::setFrameOuter(bool value)
{
    if (m_frameOuter == value)
        return;
    m_frameOuter = value;
    refreshFrame();
}

bool VxCont::frameInner() const
{
    return m_frameInner;
}

void VxCont::setFrameInner(bool value)
{
    if (m_frameInner == value)
        return;
    m_frameInner = value;
    refreshFrame();
}

int VxCont::frameWidth() const
{
    return m_frameWidth;
}

void VxCont::setFrameWidth(int value)
{
    if (m_frameWidth == value)
        return;
    m_frameWidth = value;
    refreshFrame();
}

int VxCont::borderStyle() const
{
    return m_borderStyle;
}

void VxCont::setBorderStyle(int value)
{
    if (m_borderStyle == value)
        return;
    m_borderStyle = value;
    refreshFrame();
}

int VxCont::borderWidth() const
{
    return m_borderWidth;
}

void VxCont::setBorderWidth(int value)
{
    if (m_borderWidth == value)
        return;
    m_borderWidth = value;
    refreshFrame();
}

int VxCont::outerOffset() const
{
    return m_outerOffset;
}

void VxCont::setOuterOffset(int value)
{
    if (m_outerOffset == value)
        return;
    m_outerOffset = value;
    refreshFrame();
}

bool VxCont::lightBorders() const
{
    return m_lightBorders;
}

void VxCont::setLightBorders(bool value)
{
    if (m_lightBorders == value)
        return;
    m_lightBorders = value;
    refreshFrame();
}

int VxCont::alignment() const
{
    return m_alignment;
}

void VxCont::setAlignment(int value)
{
    if (m_alignment == value)
        return;
    m_alignment = value;
    refreshFrame();
}

int VxCont::alignmentVertical() const
{
    return m_alignmentVertical;
}

void VxCont::setAlignmentVertical(int value)
{
    if (m_alignmentVertical == value)
        return;
    m_alignmentVertical = value;
    refreshFrame();
}

uint VxCont::foreColor() const
{
    return m_foreColor;
}

void VxCont::setForeColor(uint value)
{
    if (m_foreColor == value)
        return;
    m_foreColor = value;
    refreshFrame();
}

uint VxCont::floodColor() const
{
    return m_floodColor;
}

void VxCont::setFloodColor(uint value)
{
    if (m_floodColor == value)
        return;
    m_floodColor = value;
    refreshFrame();
}

uint VxCont::backColor() const
{
    return m_backColor;
}

void VxCont::setBackColor(uint value)
{
    if (m_backColor == value)
        return;
    m_backColor = value;
    refreshFrame();
}

bool VxCont::wordWrap() const
{
    return m_wordWrap;
}

void VxCont::setWordWrap(bool value)
{
    if (m_wordWrap == value)
        return;
    m_wordWrap = value;
    refreshFrame();
}

bool VxCont::useMnemonic() const
{
    return m_useMnemonic;
}

void VxCont::setUseMnemonic(bool value)
{
    if (m_useMnemonic == value)
        return;
    m_useMnemonic = value;
    refreshFrame();
}

int VxCont::backStyle() const
{
    return m_backStyle;
}

void VxCont::setBackStyle(int value)
{
    if (m_backStyle == value)
        return;
    m_backStyle = value;
    refreshFrame();
}

QString VxCont::captionFrame() const
{
    return m_captionFrame;
}

void VxCont::setCaptionFrame(const QString &value)
{
    if (m_captionFrame == value)
        return;
    m_captionFrame = value;
    refreshFrame();
}

uint VxCont::frameForeColor() const
{
    return m_frameForeColor;
}

void VxCont::setFrameForeColor(uint value)
{
    if (m_frameForeColor == value)
        return;
    m_frameForeColor = value;
    refreshFrame();
}

bool VxCont::showBorderShape() const
{
    return m_showBorderShape;
}

void VxCont::setShowBorderShape(bool value)
{
    if (m_showBorderShape == value)
        return;
    m_showBorderShape = value;
    refreshFrame();
}

int VxCont::topOffset() const
{
    return m_topOffset;
}

void VxCont::setTopOffset(int value)
{
    if (m_topOffset == value)
        return;
    m_topOffset = value;
    refreshFrame();
}

int VxCont::workHeight() const
{
    return m_workHeight;
}

void VxCont::setWorkHeight(int value)
{
    if (m_workHeight == value)
        return;
    m_workHeight = value;
    refreshFrame();
}

uint VxCont::windowColor() const
{
    return m_windowColor;
}

void VxCont::setWindowColor(uint value)
{
    if (m_windowColor == value)
        return;
    m_windowColor = value;
    refreshFrame();
}

uint VxCont::shadowColor() const
{
    return m_shadowColor;
}

void VxCont::setShadowColor(uint value)
{
    if (m_shadowColor == value)
        return;
    m_shadowColor = value;
    refreshFrame();
}

int VxCont::shadowOffset() const
{
    return m_shadowOffset;
}

void VxCont::setShadowOffset(int value)
{
    if (m_shadowOffset == value)
        return;
    m_shadowOffset = value;
    refreshFrame();
}

int VxCont::shadowSize() const
{
    return m_shadowSize;
}

void VxCont::setShadowSize(int value)
{
    if (m_shadowSize == value)
        return;
    m_shadowSize = value;
    refreshFrame();
}

QString VxCont::captionText() const
{
    return m_captionText;
}

void VxCont::setCaptionText(const QString &value)
{
    if (m_captionText == value)
        return;
    m_captionText = value;
    refreshFrame();
}

uint VxCont::foreColorText() const
{
    return m_foreColorText;
}

void VxCont::setForeColorText(uint value)
{
    if (m_foreColorText == value)
        return;
    m_foreColorText = value;
    refreshFrame();
}

int VxCont::rasterDistance() const
{
    return m_rasterDistance;
}

void VxCont::setRasterDistance(int value)
{
    if (m_rasterDistance == value)
        return;
    m_rasterDistance = value;
    refreshFrame();
}

double VxCont::rasterFaktor() const
{
    return m_rasterFaktor;
}

void VxCont::setRasterFaktor(double value)
{
    if (m_rasterFaktor == value)
        return;
    m_rasterFaktor = value;
    refreshFrame();
}

int VxCont::seperatorOffset() const
{
    return m_seperatorOffset;
}

void VxCont::setSeperatorOffset(int value)
{
    if (m_seperatorOffset == value)
        return;
    m_seperatorOffset = value;
    refreshFrame();
}

bool VxCont::caBorderStyle() const
{
    return m_caBorderStyle;
}

void VxCont::setCaBorderStyle(bool value)
{
    if (m_caBorderStyle == value)
        return;
    m_caBorderStyle = value;
    refreshFrame();
}

uint VxCont::caBorderColor() const
{
    return m_caBorderColor;
}

void VxCont::setCaBorderColor(uint value)
{
    if (m_caBorderColor == value)
        return;
    m_caBorderColor = value;
    refreshFrame();
}

uint VxCont::caColor() const
{
    return m_caColor;
}

void VxCont::setCaColor(uint value)
{
    if (m_caColor == value)
        return;
    m_caColor = value;
    refreshFrame();
}

int VxCont::designIndexDisplayStyle() const
{
    return m_designIndexDisplayStyle;
}

void VxCont::setDesignIndexDisplayStyle(int value)
{
    if (m_designIndexDisplayStyle == value)
        return;
    m_designIndexDisplayStyle = value;
    refreshFrame();
}

int VxCont::floodOffset() const
{
    return m_floodOffset;
}

void VxCont::setFloodOffset(int value)
{
    if (m_floodOffset == value)
        return;
    m_floodOffset = value;
    refreshFrame();
}

bool VxCont::floodShowPercent() const
{
    return m_floodShowPercent;
}

void VxCont::setFloodShowPercent(bool value)
{
    if (m_floodShowPercent == value)
        return;
    m_floodShowPercent = value;
    refreshFrame();
}

int VxCont::ctlUseLng() const
{
    return m_ctlUseLng;
}

void VxCont::setCtlUseLng(int value)
{
    if (m_ctlUseLng == value)
        return;
    m_ctlUseLng = value;
    refreshFrame();
}

QString VxCont::caption() const
{
    return m_caption;
}

void VxCont::setCaption(const QString &value)
{
    if (m_caption == value)
        return;
    m_caption = value;
    refreshFrame();
}

QString VxCont::captionStored() const
{
    return m_captionStored;
}

void VxCont::setCaptionStored(const QString &value)
{
    m_captionStored = value;
}

QFont VxCont::fontFlood() const
{
    return m_fontFlood.value_or(font());
}

void VxCont::setFontFlood(const QFont &value)
{
    m_fontFlood = value;
    refreshFrame();
}

QFont VxCont::fontFrame() const
{
    return m_fontFrame.value_or(font());
}

void VxCont::setFontFrame(const QFont &value)
{
    m_fontFrame = value;
    refreshFrame();
}

QFont VxCont::fontText() const
{
    return m_fontText.value_or(font());
}

void VxCont::setFontText(const QFont &value)
{
    m_fontText = value;
    refreshFrame();
}

QPixmap VxCont::picture() const
{
    return m_picture;
}

void VxCont::setPicture(const QPixmap &value)
{
    m_picture = value;
    refreshFrame();
}

QPixmap VxCont::pictureBack() const
{
    return m_pictureBack;
}

void VxCont::setPictureBack(const QPixmap &value)
{
    m_pictureBack = value;
    refreshFrame();
}

QPixmap VxCont::floodBackImage() const
{
    return m_floodBackImage;
}

void VxCont::setFloodBackImage(const QPixmap &value)
{
    m_floodBackImage = value;
    updateFlood(true);
}

int VxCont::floodType() const
{
    return m_floodType;
}

void VxCont::setFloodType(int value)
{
    if (m_floodType == value)
        return;
    m_floodType = value;
    update();
    updateFlood(true);
}

int VxCont::floodBarType() const
{
    return m_floodBarType;
}

void VxCont::setFloodBarType(int value)
{
    m_floodBarType = value;
    updateFlood(true);
}

int VxCont::floodPercent() const
{
    if (m_floodType == FloodTypeCode::Percent || m_floodType == FloodTypeCode::Range)
        return m_flood.shownPercent();
    return m_floodPercent;
}

void VxCont::setFloodPercent(int value)
{
    m_floodPercent = value;
    updateFlood(false);
}

int VxCont::value() const
{
    return m_value;
}

void VxCont::setValue(int value)
{
    m_value = value;
    updateFlood(false);
}

int VxCont::min() const
{
    return m_min;
}

void VxCont::setMin(int value)
{
    m_min = value;
    updateFlood(true);
}

int VxCont::max() const
{
    return m_max;
}

void VxCont::setMax(int value)
{
    m_max = value;
    updateFlood(true);
}

void VxCont::initFloodStartTime()
{
    m_flood.initStartTime(now());
}

double VxCont::aktualFloodTime() const
{
    return m_flood.elapsed();
}

double VxCont::aktualFloodRemainingTime() const
{
    return m_flood.remaining();
}

void VxCont::refreshFlood()
{
    updateFlood(true);
}

void VxCont::setFloodClock(FloodClock clock)
{
    m_clock = std::move(clock);
}

QRect VxCont::workArea() const
{
    return computeLayout().work;
}

QString VxCont::ctlClassName() const
{
    return u"VxCont"_s;
}

bool VxCont::ctlSetUserControlLanguage(const QString &property, const QString &text)
{
    if (m_ctlUseLng == 0 || ctlGetLngPropertyType(property) == LngPropertyType::None)
        return false;
    if (property == u"Caption" && m_captionStored.isEmpty())
        m_captionStored = m_caption;
    return ControlHooks::ctlSetUserControlLanguage(property, text);
}

QObject *VxCont::hooksObject() const
{
    return const_cast<VxCont *>(this);
}

int VxCont::useLanguage() const
{
    return m_ctlUseLng;
}

QList<QPair<QString, LngPropertyType>> VxCont::lngProperties() const
{
    return {
        {u"Caption"_s, LngPropertyType::Caption},
        {u"CaptionFrame"_s, LngPropertyType::Caption},
        {u"CaptionText"_s, LngPropertyType::Text},
        {u"ToolTip"_s, LngPropertyType::ToolTip},
    };
}

void VxCont::terminateControl()
{
    m_picture = QPixmap();
    m_pictureBack = QPixmap();
    m_floodBackImage = QPixmap();
    m_clock = nullptr;
    update();
}

QSize VxCont::sizeHint() const
{
    return {200, 80};
}

QSize VxCont::minimumSizeHint() const
{
    const QMargins m = borderMargins({m_borderStyle, m_borderWidth, m_frameOuter, m_frameInner,
                                      m_lightBorders, m_showBorderShape});
    const int side = 2 * (qMax(0, m_outerOffset) + qMax(0, m_frameWidth));
    return {m.left() + m.right() + side + 8, m.top() + m.bottom() + side + 8};
}

VxCont::Layout VxCont::computeLayout() const
{
    Layout layout;
    const int outer = qMax(0, m_outerOffset);
    layout.body = rect().adjusted(outer, outer, -outer, -outer);
    if (m_controlStyle == 1) {
        const int offset = qMax(0, m_shadowOffset);
        layout.shadow = layout.body.adjusted(offset, offset, 0, 0);
        layout.body.adjust(0, 0, -offset, -offset);
    }

    const BorderOptions border {m_borderStyle, m_borderWidth, m_frameOuter, m_frameInner,
                                m_lightBorders, m_showBorderShape};
    const QMargins margins = borderMargins(border);
    layout.border = layout.body;
    if (!m_captionFrame.isEmpty()) {
        // The frame line runs through the middle of the frame caption.
        const QFontMetrics metrics(fontFrame());
        const int textHeight = metrics.height();
        layout.border.setTop(layout.body.top() + qMax(0, (textHeight - margins.top()) / 2));
        layout.frameCaption = QRect(layout.body.left() + frameCaptionIndent + margins.left(),
                                    layout.body.top(),
                                    metrics.horizontalAdvance(m_captionFrame) + 2 * textPadding,
                                    textHeight);
    }
    if (m_borderStyle == BorderStyleCode::LineHorizontal)
        layout.border.setTop(layout.border.top() + m_seperatorOffset);

    const int frame = qMax(0, m_frameWidth);
    QRect inner = layout.border.marginsRemoved(margins).adjusted(frame, frame, -frame, -frame);
    if (!layout.frameCaption.isNull())
        inner.setTop(qMax(inner.top(), layout.frameCaption.bottom() + 1 + frame / 2));

    layout.work = inner;
    if (m_controlStyle == 2) {
        const int height = m_topOffset > 0 ? m_topOffset : QFontMetrics(font()).height() + 2 * textPadding + 2;
        layout.captionArea = QRect(inner.left(), inner.top(), inner.width(), height);
        layout.work.setTop(layout.captionArea.bottom() + 1);
    } else {
        layout.work.setTop(layout.work.top() + qMax(0, m_topOffset));
    }
    if (m_workHeight > 0)
        layout.work.setHeight(m_workHeight);
    return layout;
}

void VxCont::updateFlood(bool force)
{
    const int before = m_flood.shownPercent();
    if (!m_flood.update(m_floodType, m_floodPercent, m_value, m_min, m_max, force, now()))
        return;
    const QRect work = computeLayout().work;
    update(work.adjusted(-1, -1, 1, 1));
    if (m_flood.shownPercent() != before)
        Q_EMIT floodPercentChanged(m_flood.shownPercent());
}

double VxCont::now() const
{
    return m_clock ? m_clock() : secondsSinceMidnight();
}

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

    if (m_controlStyle == 1 && !layout.shadow.isEmpty()) {
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

    if (m_backStyle == 1)
        painter.fillRect(layout.body, color(m_backColor));
    const QRect inside = layout.border.marginsRemoved(borderMargins(
        {m_borderStyle, m_borderWidth, m_frameOuter, m_frameInner, m_lightBorders, m_showBorderShape}));
    if (m_backStyle == 1 && m_windowColor != m_backColor)
        painter.fillRect(layout.work, color(m_windowColor));
    if (!m_pictureBack.isNull())
        painter.drawTiledPixmap(inside, m_pictureBack);

    painter.save();
    if (!layout.frameCaption.isNull())
        painter.setClipRegion(QRegion(rect()).subtracted(layout.frameCaption));
    drawBorder(painter, layout.border, palette(),
               {m_borderStyle, m_borderWidth, m_frameOuter, m_frameInner, m_lightBorders, m_showBorderShape});
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

    const bool flood = m_floodType == FloodTypeCode::Percent || m_floodType == FloodTypeCode::Range;
    if (flood) {
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
    int flags = int(captionAlignment(m_alignment, m_alignmentVertical));
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
    if (bar.isEmpty() || m_floodBarType < 0 || m_floodBarType > 3)
        return;
    const int percent = m_flood.shownPercent();
    const int filledWidth = int(std::lround(bar.width() * percent / 100.0));
    const QRect filled(bar.left(), bar.top(), filledWidth, bar.height());
    const QColor floodColor = color(m_floodColor);

    if (filledWidth > 0) {
        switch (m_floodBarType) {
        case 0:
            painter.fillRect(filled, floodColor);
            break;
        case 1: {
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
        case 2: {
            QLinearGradient gradient(filled.topLeft(), filled.bottomLeft());
            gradient.setColorAt(0.0, floodColor.lighter(150));
            gradient.setColorAt(0.45, floodColor);
            gradient.setColorAt(1.0, floodColor.darker(125));
            painter.fillRect(filled, gradient);
            painter.fillRect(QRect(filled.left(), filled.top(), filled.width(), 1), floodColor.lighter(170));
            painter.fillRect(QRect(filled.right(), filled.top(), 1, filled.height()), floodColor.darker(140));
            break;
        }
        case 3:
            if (!m_floodBackImage.isNull())
                painter.drawPixmap(filled, m_floodBackImage);
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

void VxCont::changeEvent(QEvent *event)
{
    switch (event->type()) {
    case QEvent::PaletteChange:
    case QEvent::FontChange:
        refreshFrame();
        break;
    case QEvent::EnabledChange:
        update();
        break;
    default:
        break;
    }
    QWidget::changeEvent(event);
}

} // namespace valtrona
