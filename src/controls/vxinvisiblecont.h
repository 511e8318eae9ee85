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
    /// default is the system colour with index 3 (inactive caption).
    Q_PROPERTY(uint BorderColor READ borderColor WRITE setBorderColor)
    /// Line style of the design-time outline (see the enum); default 2, dotted.
    Q_PROPERTY(int DrawStyle READ drawStyle WRITE setDrawStyle)
    /// True while the host is being designed rather than run.
    Q_PROPERTY(bool DesignMode READ designMode WRITE setDesignMode)

public:
    /// Line style of the design-time outline (DrawStyle); unknown codes draw solid.
    enum class DrawStyle {
        Solid = 0,
        Dash = 1,
        Dot = 2,
        DashDot = 3,
        DashDotDot = 4,
        Transparent = 5, ///< no outline
        InsideSolid = 6, ///< solid, inside the area
    };
    Q_ENUM(DrawStyle)

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
    /// Redraws the outline when there is one to see.
    void redrawOutline();

    uint m_borderColor = SystemColor::InactiveCaption;
    int m_drawStyle = int(DrawStyle::Dot);
    bool m_designMode = false;
    bool m_terminated = false;
};

} // namespace valtrona
