#include "controls/vxinvisiblecont.h"

#include <QPainter>
#include <QPen>

#include "controls/controlproperties.h"

using namespace Qt::StringLiterals;

namespace valtrona {

VxInvisibleCont::VxInvisibleCont(QWidget *parent)
    : QWidget(parent)
{
    // Nothing of its own is painted at run time, so the parent shows through.
    setAttribute(Qt::WA_NoSystemBackground);
    setAutoFillBackground(false);
}

uint VxInvisibleCont::borderColor() const { return m_borderColor; }
void VxInvisibleCont::setBorderColor(uint color) { store(this, m_borderColor, color, &VxInvisibleCont::redrawOutline); }
int VxInvisibleCont::drawStyle() const { return m_drawStyle; }
void VxInvisibleCont::setDrawStyle(int style) { store(this, m_drawStyle, style, &VxInvisibleCont::redrawOutline); }
bool VxInvisibleCont::designMode() const { return m_designMode; }

void VxInvisibleCont::setDesignMode(bool on)
{
    if (assign(m_designMode, on))
        update();
}

QPen VxInvisibleCont::outlinePen() const
{
    QPen pen(colorFromValue(m_borderColor, palette()));
    pen.setWidth(1);
    pen.setCosmetic(true);
    switch (enumFromCode(m_drawStyle, DrawStyle::Solid)) {
    case DrawStyle::Solid:
    case DrawStyle::InsideSolid: pen.setStyle(Qt::SolidLine); break;
    case DrawStyle::Dash: pen.setStyle(Qt::DashLine); break;
    case DrawStyle::Dot: pen.setStyle(Qt::DotLine); break;
    case DrawStyle::DashDot: pen.setStyle(Qt::DashDotLine); break;
    case DrawStyle::DashDotDot: pen.setStyle(Qt::DashDotDotLine); break;
    case DrawStyle::Transparent: pen.setStyle(Qt::NoPen); break;
    }
    return pen;
}

QString VxInvisibleCont::ctlClassName() const
{
    return u"VxInvisibleCont"_s;
}

void VxInvisibleCont::terminateControl()
{
    m_terminated = true;
}

void VxInvisibleCont::redrawOutline()
{
    if (m_designMode)
        update();
}

void VxInvisibleCont::paintEvent(QPaintEvent *)
{
    if (!m_designMode || m_terminated)
        return;
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(backgroundRole()));
    painter.setPen(outlinePen());
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void VxInvisibleCont::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    redrawOutline();
}

QObject *VxInvisibleCont::hooksObject() const
{
    return const_cast<VxInvisibleCont *>(this);
}

int VxInvisibleCont::useLanguage() const
{
    return 0;
}

} // namespace valtrona
