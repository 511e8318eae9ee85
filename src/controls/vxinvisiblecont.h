#pragma once

#include <QPen>
#include <QWidget>

#include "controls/controlsupport.h"
#include "controls/vxcolor.h"

namespace valtrona {

/// A card container: holds other widgets and draws nothing of its own while
/// the program runs. In design mode it outlines its area so a designer can see
/// the card's bounds.
class VxInvisibleCont : public QWidget, public ControlHooks
{
    Q_OBJECT
    /// Colour of the design-time outline as a stored colour value; the
    /// default 0x80000003 is the system colour with index 3.
    Q_PROPERTY(uint BorderColor READ borderColor WRITE setBorderColor)
    /// Line style of the design-time outline: 0 solid, 1 dashed, 2 dotted
    /// (default), 3 dash-dot, 4 dash-dot-dot, 5 none, 6 solid inside.
    Q_PROPERTY(int DrawStyle READ drawStyle WRITE setDrawStyle)
    /// True while the host is being designed rather than run.
    Q_PROPERTY(bool DesignMode READ designMode WRITE setDesignMode)

public:
    explicit VxInvisibleCont(QWidget *parent = nullptr);

    uint borderColor() const;
    void setBorderColor(uint color);
    int drawStyle() const;
    void setDrawStyle(int style);
    bool designMode() const;
    void setDesignMode(bool on);

    /// The pen the design-time outline is drawn with.
    QPen outlinePen() const;

    QString ctlClassName() const override;
    void terminateControl() override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    QObject *hooksObject() const override;
    int useLanguage() const override;

private:
    uint m_borderColor = 0x80000003u;
    int m_drawStyle = 2;
    bool m_designMode = false;
    bool m_terminated = false;
};

} // namespace valtrona
