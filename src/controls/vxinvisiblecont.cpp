#include "controls/vxinvisiblecont.h"

#include <QPainter>
#include <QPen>

using namespace Qt::StringLiterals;

namespace valtrona {

VxInvisibleCont::VxInvisibleCont(QWidget *parent)
    : QWidget(parent)
{
    // Nothing of its own is painted at run time, so the parent shows through.
    setAttribute(Qt::WA_NoSystemBackground);
    setAutoFillBackground(false);
}

uint VxInvisibleCont::borderColor() const
{
    return m_borderColor;
}

void VxInvisibleCont::setBorderColor(uint color)
{
    m_borderColor = color;
    if (m_designMode)
        update();
}

int VxInvisibleCont::drawStyle() const
{
    return m_drawStyle;
}

void VxInvisibleCont::setDrawStyle(int style)
{
    m_drawStyle = style;
    if (m_designMode)
        update();
}

bool VxInvisibleCont::designMode() const
{
    return m_designMode;
}

void VxInvisibleCont::setDesignMode(bool on)
{
    if (m_designMode == on)
        return;
    m_designMode = on;
    update();
}

QPen VxInvisibleCont::outlinePen() const
{
    QPen pen(colorFromValue(m_borderColor, palette()));
    pen.setWidth(1);
    pen.setCosmetic(true);
    switch (m_drawStyle) {
    case 1:
        pen.setStyle(Qt::DashLine);
        break;
    case 2:
        pen.setStyle(Qt::DotLine);
        break;
    case 3:
        pen.setStyle(Qt::DashDotLine);
        break;
    case 4:
        pen.setStyle(Qt::DashDotDotLine);
        break;
    case 5:
        pen.setStyle(Qt::NoPen);
        break;
    default:
        pen.setStyle(Qt::SolidLine);
        break;
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
    if (m_designMode)
        update();
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
