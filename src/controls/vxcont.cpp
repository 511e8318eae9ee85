#include "controls/vxcont.h"

#include <QEvent>
#include <QFontMetrics>

#include "controls/controlproperties.h"

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

constexpr int frameCaptionIndent = 8;

} // namespace

VxCont::VxCont(QWidget *parent)
    : QWidget(parent)
{
    refreshFrame();
}

VxCont::~VxCont() = default;

VxCont::ControlStyle VxCont::controlStyleKind() const
{
    return enumFromCode(m_controlStyle, ControlStyle::Plain);
}

VxCont::FloodBarType VxCont::floodBarKind() const
{
    return enumFromCode(m_floodBarType, FloodBarType::None);
}

bool VxCont::hasFlood() const
{
    return FloodState::typeOf(m_floodType) != FloodState::Type::None;
}

BorderOptions VxCont::borderOptions() const
{
    return {m_borderStyle, m_borderWidth, m_frameOuter, m_frameInner, m_lightBorders, m_showBorderShape};
}

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

QRect VxCont::workArea() const
{
    return computeLayout().work;
}

QSize VxCont::sizeHint() const
{
    return {200, 80};
}

QSize VxCont::minimumSizeHint() const
{
    const QMargins m = borderMargins(borderOptions());
    const int side = 2 * (qMax(0, m_outerOffset) + qMax(0, m_frameWidth));
    return {m.left() + m.right() + side + 8, m.top() + m.bottom() + side + 8};
}

VxCont::Layout VxCont::computeLayout() const
{
    Layout layout;
    const int outer = qMax(0, m_outerOffset);
    layout.body = rect().adjusted(outer, outer, -outer, -outer);
    const ControlStyle style = controlStyleKind();
    if (style == ControlStyle::Shadow) {
        const int offset = qMax(0, m_shadowOffset);
        layout.shadow = layout.body.adjusted(offset, offset, 0, 0);
        layout.body.adjust(0, 0, -offset, -offset);
    }

    const QMargins margins = borderMargins(borderOptions());
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
    if (enumFromCode(m_borderStyle, BorderStyle::NoBorder) == BorderStyle::LineHorizontal)
        layout.border.setTop(layout.border.top() + m_seperatorOffset);

    const int frame = qMax(0, m_frameWidth);
    QRect inner = layout.border.marginsRemoved(margins).adjusted(frame, frame, -frame, -frame);
    if (!layout.frameCaption.isNull())
        inner.setTop(qMax(inner.top(), layout.frameCaption.bottom() + 1 + frame / 2));

    layout.work = inner;
    if (style == ControlStyle::CaptionArea) {
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

// --- Flood -----------------------------------------------------------------

void VxCont::setFloodType(int value)
{
    if (!assign(m_floodType, value))
        return;
    update();
    redrawFlood();
}

int VxCont::floodPercent() const
{
    return hasFlood() ? m_flood.shownPercent() : m_floodPercent;
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
    redrawFlood();
}

void VxCont::followFlood()
{
    updateFlood(false);
}

void VxCont::redrawFlood()
{
    updateFlood(true);
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

// --- Control hooks ---------------------------------------------------------

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

void VxCont::changeEvent(QEvent *event)
{
    followLookChange(this, event, [this] { refreshFrame(); });
    QWidget::changeEvent(event);
}

} // namespace valtrona
