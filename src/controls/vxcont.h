#pragma once

#include <optional>

#include <QFont>
#include <QPixmap>
#include <QString>
#include <QWidget>

#include "controls/controlcodes.h"
#include "controls/controlsupport.h"
#include "controls/vxborder.h"
#include "controls/vxcolor.h"
#include "controls/vxflood.h"

namespace valtrona {

/// A framed container: draws one of the 21 border styles around a work
/// area that holds other widgets, shows a caption, a caption written into
/// the frame line and a free text, and can turn into a progress bar (the
/// flood) that fills by a percentage, prints it, and estimates the time
/// still needed.
///
/// Colours are colour values (see vxcolor.h), so the default system
/// colours follow the palette. The integer codes of ControlStyle,
/// BorderStyle, Alignment, AlignmentVertical, BackStyle, FloodType and
/// FloodBarType are read as the enums below and in controlcodes.h; an
/// unknown Alignment reads as left, an unknown AlignmentVertical as middle.
class VxCont : public QWidget, public ControlHooks
{
    Q_OBJECT
    Q_PROPERTY(int ControlStyle READ controlStyle WRITE setControlStyle)
    Q_PROPERTY(bool FrameOuter READ frameOuter WRITE setFrameOuter)
    Q_PROPERTY(bool FrameInner READ frameInner WRITE setFrameInner)
    Q_PROPERTY(int FrameWidth READ frameWidth WRITE setFrameWidth)
    Q_PROPERTY(int BorderStyle READ borderStyle WRITE setBorderStyle)
    Q_PROPERTY(int BorderWidth READ borderWidth WRITE setBorderWidth)
    Q_PROPERTY(int OuterOffset READ outerOffset WRITE setOuterOffset)
    Q_PROPERTY(bool LightBorders READ lightBorders WRITE setLightBorders)
    Q_PROPERTY(int Alignment READ alignment WRITE setAlignment)
    Q_PROPERTY(int AlignmentVertical READ alignmentVertical WRITE setAlignmentVertical)
    Q_PROPERTY(uint ForeColor READ foreColor WRITE setForeColor)
    Q_PROPERTY(uint FloodColor READ floodColor WRITE setFloodColor)
    Q_PROPERTY(uint BackColor READ backColor WRITE setBackColor)
    Q_PROPERTY(bool WordWrap READ wordWrap WRITE setWordWrap)
    Q_PROPERTY(bool UseMnemonic READ useMnemonic WRITE setUseMnemonic)
    Q_PROPERTY(int BackStyle READ backStyle WRITE setBackStyle)
    Q_PROPERTY(QString CaptionFrame READ captionFrame WRITE setCaptionFrame)
    Q_PROPERTY(uint FrameForeColor READ frameForeColor WRITE setFrameForeColor)
    Q_PROPERTY(bool ShowBorderShape READ showBorderShape WRITE setShowBorderShape)
    Q_PROPERTY(int TopOffset READ topOffset WRITE setTopOffset)
    Q_PROPERTY(int WorkHeight READ workHeight WRITE setWorkHeight)
    Q_PROPERTY(uint WindowColor READ windowColor WRITE setWindowColor)
    Q_PROPERTY(uint ShadowColor READ shadowColor WRITE setShadowColor)
    Q_PROPERTY(int ShadowOffset READ shadowOffset WRITE setShadowOffset)
    Q_PROPERTY(int ShadowSize READ shadowSize WRITE setShadowSize)
    Q_PROPERTY(QString CaptionText READ captionText WRITE setCaptionText)
    Q_PROPERTY(uint ForeColorText READ foreColorText WRITE setForeColorText)
    Q_PROPERTY(int RasterDistance READ rasterDistance WRITE setRasterDistance)
    Q_PROPERTY(double RasterFaktor READ rasterFaktor WRITE setRasterFaktor)
    Q_PROPERTY(int SeperatorOffset READ seperatorOffset WRITE setSeperatorOffset)
    Q_PROPERTY(bool CABorderStyle READ caBorderStyle WRITE setCaBorderStyle)
    Q_PROPERTY(uint CABorderColor READ caBorderColor WRITE setCaBorderColor)
    Q_PROPERTY(uint CAColor READ caColor WRITE setCaColor)
    Q_PROPERTY(int DesignIndexDisplayStyle READ designIndexDisplayStyle WRITE setDesignIndexDisplayStyle)
    Q_PROPERTY(int FloodOffset READ floodOffset WRITE setFloodOffset)
    Q_PROPERTY(bool FloodShowPercent READ floodShowPercent WRITE setFloodShowPercent)
    Q_PROPERTY(int CTLUseLng READ ctlUseLng WRITE setCtlUseLng)
    Q_PROPERTY(QString Caption READ caption WRITE setCaption)
    Q_PROPERTY(QString CaptionStored READ captionStored WRITE setCaptionStored)
    Q_PROPERTY(QFont Font READ font WRITE setFont)
    Q_PROPERTY(QFont FontFlood READ fontFlood WRITE setFontFlood)
    Q_PROPERTY(QFont FontFrame READ fontFrame WRITE setFontFrame)
    Q_PROPERTY(QFont FontText READ fontText WRITE setFontText)
    Q_PROPERTY(bool Enabled READ isEnabled WRITE setEnabled)
    Q_PROPERTY(QString ToolTip READ toolTip WRITE setToolTip)
    Q_PROPERTY(QPixmap Picture READ picture WRITE setPicture)
    Q_PROPERTY(QPixmap PictureBack READ pictureBack WRITE setPictureBack)
    Q_PROPERTY(QPixmap FloodBackImage READ floodBackImage WRITE setFloodBackImage)
    Q_PROPERTY(int FloodType READ floodType WRITE setFloodType)
    Q_PROPERTY(int FloodBarType READ floodBarType WRITE setFloodBarType)
    Q_PROPERTY(int FloodPercent READ floodPercent WRITE setFloodPercent NOTIFY floodPercentChanged)
    Q_PROPERTY(int Value READ value WRITE setValue)
    Q_PROPERTY(int Min READ min WRITE setMin)
    Q_PROPERTY(int Max READ max WRITE setMax)
    Q_PROPERTY(double AktualFloodTime READ aktualFloodTime)
    Q_PROPERTY(double AktualFloodRemainingTime READ aktualFloodRemainingTime)

public:
    /// What the container adds to its frame (ControlStyle); unknown codes are plain.
    enum class ControlStyle {
        Plain = 0,
        Shadow = 1,      ///< a drop shadow (ShadowColor, ShadowOffset, ShadowSize)
        CaptionArea = 2, ///< a caption strip across the top (CAColor, CABorderStyle,
                         ///< CABorderColor; TopOffset sets its height)
    };
    Q_ENUM(ControlStyle)

    /// How the filled part of the flood is drawn (FloodBarType); unknown
    /// codes draw neither bar nor percentage.
    enum class FloodBarType {
        None = -1,
        Solid = 0,
        Blocks = 1,
        Raised = 2, ///< a raised gradient
        Image = 3,  ///< FloodBackImage stretched over the filled part
    };
    Q_ENUM(FloodBarType)

    explicit VxCont(QWidget *parent = nullptr);
    ~VxCont() override;

    int controlStyle() const;
    void setControlStyle(int value);
    bool frameOuter() const;
    void setFrameOuter(bool value);
    bool frameInner() const;
    void setFrameInner(bool value);
    int frameWidth() const;
    void setFrameWidth(int value);
    int borderStyle() const;
    void setBorderStyle(int value);
    int borderWidth() const;
    void setBorderWidth(int value);
    int outerOffset() const;
    void setOuterOffset(int value);
    bool lightBorders() const;
    void setLightBorders(bool value);
    int alignment() const;
    void setAlignment(int value);
    int alignmentVertical() const;
    void setAlignmentVertical(int value);
    uint foreColor() const;
    void setForeColor(uint value);
    uint floodColor() const;
    void setFloodColor(uint value);
    uint backColor() const;
    void setBackColor(uint value);
    bool wordWrap() const;
    void setWordWrap(bool value);
    bool useMnemonic() const;
    void setUseMnemonic(bool value);
    int backStyle() const;
    void setBackStyle(int value);
    QString captionFrame() const;
    void setCaptionFrame(const QString &value);
    uint frameForeColor() const;
    void setFrameForeColor(uint value);
    bool showBorderShape() const;
    void setShowBorderShape(bool value);
    int topOffset() const;
    void setTopOffset(int value);
    int workHeight() const;
    void setWorkHeight(int value);
    uint windowColor() const;
    void setWindowColor(uint value);
    uint shadowColor() const;
    void setShadowColor(uint value);
    int shadowOffset() const;
    void setShadowOffset(int value);
    int shadowSize() const;
    void setShadowSize(int value);
    QString captionText() const;
    void setCaptionText(const QString &value);
    uint foreColorText() const;
    void setForeColorText(uint value);
    int rasterDistance() const;
    void setRasterDistance(int value);
    double rasterFaktor() const;
    void setRasterFaktor(double value);
    int seperatorOffset() const;
    void setSeperatorOffset(int value);
    bool caBorderStyle() const;
    void setCaBorderStyle(bool value);
    uint caBorderColor() const;
    void setCaBorderColor(uint value);
    uint caColor() const;
    void setCaColor(uint value);
    int designIndexDisplayStyle() const;
    void setDesignIndexDisplayStyle(int value);
    int floodOffset() const;
    void setFloodOffset(int value);
    bool floodShowPercent() const;
    void setFloodShowPercent(bool value);
    int ctlUseLng() const;
    void setCtlUseLng(int value);

    QString caption() const;
    void setCaption(const QString &value);
    QString captionStored() const;
    void setCaptionStored(const QString &value);
    /// The fonts of the percentage, the frame caption and the free text
    /// follow the widget's font until they are set.
    QFont fontFlood() const;
    void setFontFlood(const QFont &value);
    QFont fontFrame() const;
    void setFontFrame(const QFont &value);
    QFont fontText() const;
    void setFontText(const QFont &value);
    QPixmap picture() const;
    void setPicture(const QPixmap &value);
    QPixmap pictureBack() const;
    void setPictureBack(const QPixmap &value);
    QPixmap floodBackImage() const;
    void setFloodBackImage(const QPixmap &value);

    /// Source of the percentage: 3 FloodPercent, 4 Value within Min..Max,
    /// anything else (default -1) no flood.
    int floodType() const;
    void setFloodType(int value);
    int floodBarType() const;
    void setFloodBarType(int value);
    /// While a flood is on, the percentage shown last (rounded and
    /// clamped); otherwise the percentage last given.
    int floodPercent() const;
    void setFloodPercent(int value);
    int value() const;
    void setValue(int value);
    int min() const;
    void setMin(int value);
    int max() const;
    void setMax(int value);

    /// Starts timing a long operation: start time now, last update time 0.
    void initFloodStartTime();
    /// Seconds from InitFloodStartTime to the last flood update.
    double aktualFloodTime() const;
    /// Seconds still needed at the pace so far; 0 while the flood is at 0 %.
    double aktualFloodRemainingTime() const;
    /// Recomputes and redraws the flood even when its percentage is unchanged.
    void refreshFlood();
    /// Replaces the clock of the flood times (seconds since midnight); an
    /// empty clock restores the system clock.
    void setFloodClock(FloodClock clock);

    /// The rectangle inside border, frame, TopOffset and WorkHeight in
    /// which the caption, the flood and child widgets belong. The contents
    /// margins follow it, so a layout set on the container fills it.
    QRect workArea() const;

    /// Language texts: Caption and CaptionFrame (captions), CaptionText
    /// (free text) and ToolTip.
    QString ctlClassName() const override;
    /// Sets a language text; refused (false) while CTLUseLng is 0 or for a
    /// property that holds no language text. The first language caption
    /// keeps the designed one in CaptionStored.
    bool ctlSetUserControlLanguage(const QString &property, const QString &text) override;
    /// Releases the pictures; the host calls it when its window closes.
    void terminateControl() override;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    /// The flood shows a new percentage (after rounding and clamping).
    void floodPercentChanged(int percent);

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    QObject *hooksObject() const override;
    int useLanguage() const override;
    QList<QPair<QString, LngPropertyType>> lngProperties() const override;

private:
    struct Layout
    {
        QRect body;         // inside OuterOffset, without the shadow
        QRect shadow;       // the drop shadow (ControlStyle 1)
        QRect border;       // where the border is drawn
        QRect frameCaption; // where CaptionFrame interrupts the frame line
        QRect captionArea;  // the caption strip (ControlStyle 2)
        QRect work;         // inside everything: caption, flood, children
    };
    /// Space between a text and the edge of its area.
    static constexpr int textPadding = 3;

    ControlStyle controlStyleKind() const;
    FloodBarType floodBarKind() const;
    bool hasFlood() const;
    BorderOptions borderOptions() const;
    void refreshFrame();
    Layout computeLayout() const;
    /// Follows a new percentage or value: redraws only when the shown percentage changes.
    void followFlood();
    /// Recomputes and redraws the flood after a change of its range or look.
    void redrawFlood();
    void updateFlood(bool force);
    double now() const;
    QColor color(quint32 value) const;
    QColor textColor(quint32 value) const;
    void paintFlood(QPainter &painter, const QRect &bar) const;
    void paintCaption(QPainter &painter, const QRect &area,
                      std::optional<QColor> background = std::nullopt) const;

    int m_controlStyle = 0;
    bool m_frameOuter = true;
    bool m_frameInner = true;
    int m_frameWidth = 4;
    int m_borderStyle = 0;
    int m_borderWidth = 0;
    int m_outerOffset = 0;
    bool m_lightBorders = false;
    int m_alignment = 2;
    int m_alignmentVertical = 1;
    uint m_foreColor = SystemColor::ButtonText;
    uint m_floodColor = SystemColor::ActiveCaption;
    uint m_backColor = SystemColor::ButtonFace;
    bool m_wordWrap = true;
    bool m_useMnemonic = false;
    int m_backStyle = 1;
    QString m_captionFrame = {};
    uint m_frameForeColor = SystemColor::ButtonText;
    bool m_showBorderShape = false;
    int m_topOffset = 0;
    int m_workHeight = 0;
    uint m_windowColor = SystemColor::ButtonFace;
    uint m_shadowColor = SystemColor::ButtonShadow;
    int m_shadowOffset = 6;
    int m_shadowSize = 6;
    QString m_captionText = {};
    uint m_foreColorText = SystemColor::ButtonText;
    int m_rasterDistance = 2;
    double m_rasterFaktor = 1.7;
    int m_seperatorOffset = 0;
    bool m_caBorderStyle = false;
    uint m_caBorderColor = SystemColor::ButtonText;
    uint m_caColor = FixedColor::White;
    int m_designIndexDisplayStyle = 1;
    int m_floodOffset = 0;
    bool m_floodShowPercent = false;
    int m_ctlUseLng = 1;
    QString m_caption;
    QString m_captionStored;
    std::optional<QFont> m_fontFlood;
    std::optional<QFont> m_fontFrame;
    std::optional<QFont> m_fontText;
    QPixmap m_picture;
    QPixmap m_pictureBack;
    QPixmap m_floodBackImage;
    int m_floodType = int(FloodState::Type::None);
    int m_floodBarType = 0;
    int m_floodPercent = 0;
    int m_value = 0;
    int m_min = 0;
    int m_max = 0;
    FloodState m_flood;
    FloodClock m_clock;
};

} // namespace valtrona
