#include "controls/vxlinein.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace valtrona {

void VxLineIn::relayout()
{
    m_con->setGeometry(rect());
    m_gry->setGeometry(rect());
    const int gap = scaledPixels(m_controlDistance, this);
    const int top = scaledPixels(m_topDistance, this);
    const int rowHeight = qMax(0, height() - top);
    int x = scaledPixels(m_leftOffset, this);
    const int blockStart = x;

    if (m_showImage) {
        const int side = qMin(rowHeight, scaledPixels(16, this));
        m_img->setGeometry(x, top + (rowHeight - side) / 2, side, side);
        if (!m_linePicture.isNull())
            m_img->setPixmap(m_linePicture.scaled(QSize(side, side) * devicePixelRatioF(), Qt::KeepAspectRatio,
                                                  Qt::SmoothTransformation));
        else
            m_img->clear();
        x += side + gap;
    }
    // Beside a multi-line box, label, check box and button keep to its first line.
    const bool memo = controlStyleKind() == ControlStyle::Memo;
    const int sideHeight = memo ? qMin(rowHeight, m_txt->sizeHint().height()) : rowHeight;
    if (m_checkboxShow) {
        const int width = m_chk->sizeHint().width();
        m_chk->setGeometry(x, top, width, sideHeight);
        x += width + gap;
    }
    int labelWidth = scaledPixels(m_labelWidth, this);
    if (m_fixedBlockWidth > 0)
        labelWidth = qMax(0, scaledPixels(m_fixedBlockWidth, this) - (x - blockStart));
    m_lbl->setVisible(labelWidth > 0);
    if (labelWidth > 0) {
        m_lbl->setGeometry(x, top, labelWidth, sideHeight);
        updateLabelText();
        x += labelWidth + gap;
    }

    int right = width();
    if (m_buttonShow) {
        const int buttonWidth = scaledPixels(m_buttonWidth, this);
        m_cmd->setGeometry(right - buttonWidth, top, buttonWidth, sideHeight);
        right -= buttonWidth + gap;
    }
    const QRect element(x, top, qMax(0, right - x), rowHeight);
    for (QWidget *widget : inputElements())
        widget->setGeometry(element);
}

void VxLineIn::resizeRow()
{
    updateGeometry();
    relayout();
}

void VxLineIn::updateLabelText()
{
    // A caption wider than its column is cut with "…" rather than in the middle
    // of a letter, and shown whole in the tooltip.
    const QFontMetrics metrics(m_lbl->font());
    const int room = m_lbl->width();
    const bool fits = room <= 0 || metrics.horizontalAdvance(m_caption) <= room;
    m_lbl->setText(fits ? m_caption : metrics.elidedText(m_caption, Qt::ElideRight, room));
    m_lbl->setToolTip(m_labelToolTip.isEmpty() && !fits ? m_caption : m_labelToolTip);
}

void VxLineIn::autoSizeLabel()
{
    const int needed = m_lbl->fontMetrics().horizontalAdvance(m_caption) + 2;
    // Back to 96-DPI pixels, the unit LabelWidth is kept in.
    setLabelWidth(qRound(needed * 96.0 / qMax(1, logicalDpiX())));
}

int VxLineIn::ctlLeft() const
{
    const QWidget *element = inputElement();
    return element ? element->x() : 0;
}

int VxLineIn::ctlWidth() const
{
    const QWidget *element = inputElement();
    return element ? element->width() : 0;
}

QSize VxLineIn::sizeHint() const
{
    const int gap = scaledPixels(m_controlDistance, this);
    int lineHeight = qMax(m_txt->sizeHint().height(), m_cmb->sizeHint().height());
    if (controlStyleKind() == ControlStyle::Memo)
        lineHeight = m_mem->fontMetrics().lineSpacing() * 3 + 2 * m_mem->frameWidth() + 8;
    int width = scaledPixels(m_leftOffset, this)
        + scaledPixels(m_fixedBlockWidth > 0 ? m_fixedBlockWidth : m_labelWidth, this) + gap
        + scaledPixels(160, this);
    if (m_buttonShow)
        width += gap + scaledPixels(m_buttonWidth, this);
    return {width, scaledPixels(m_topDistance, this) + lineHeight};
}

QSize VxLineIn::minimumSizeHint() const
{
    return {scaledPixels(m_leftOffset + 40, this), scaledPixels(m_topDistance, this) + m_txt->minimumSizeHint().height()};
}

void VxLineIn::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    relayout();
}

void VxLineIn::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    switch (event->type()) {
    case QEvent::PaletteChange:
        if (m_autoAmbientChanges)
            updateColors();
        break;
    case QEvent::StyleChange:
        updateButtonFace();
        relayout();
        break;
    case QEvent::FontChange:
        resizeRow();
        break;
    default:
        break;
    }
}

} // namespace valtrona
