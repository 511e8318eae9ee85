#pragma once

#include <memory>

#include <QByteArray>
#include <QElapsedTimer>
#include <QImage>
#include <QPixmap>
#include <QString>
#include <QTimer>
#include <QWidget>

#include "controls/controlsupport.h"
#include "controls/pictureloader.h"
#include "controls/vxborder.h"
#include "controls/vxcolor.h"

class QMenu;

namespace valtrona {

class Base64Encoding;

/// A picture view: shows one picture from a file, from memory or set
/// directly, inside a framed area (the border styles of VxCont), fitted,
/// zoomed and aligned, with an optional caption and file-name line, a
/// tooltip and a context menu to copy, save and size the picture.
///
/// Pictures are read through a PictureLoader at the size they are shown,
/// never larger; when the view grows the picture is read again at the
/// better size. Assigning FileName raises loadStart() and loadDone().
///
/// The integer codes of PreviewSize, ShowPictureToolTip, PictureAlignment,
/// BorderStyle and BackStyle are read as the enums below and in
/// controlcodes.h; the properties keep the integers as they were set.
class VxPict : public QWidget, public ControlHooks
{
    Q_OBJECT
    Q_PROPERTY(int BackStyle READ backStyle WRITE setBackStyle)
    Q_PROPERTY(uint BackColor READ backColor WRITE setBackColor)
    Q_PROPERTY(uint ForeColor READ foreColor WRITE setForeColor)
    Q_PROPERTY(QString Caption READ caption WRITE setCaption)
    Q_PROPERTY(bool FrameInner READ frameInner WRITE setFrameInner)
    Q_PROPERTY(bool FrameOuter READ frameOuter WRITE setFrameOuter)
    Q_PROPERTY(int BorderWidth READ borderWidth WRITE setBorderWidth)
    Q_PROPERTY(int FrameWidth READ frameWidth WRITE setFrameWidth)
    Q_PROPERTY(int BorderStyle READ borderStyle WRITE setBorderStyle)
    Q_PROPERTY(int TopOffset READ topOffset WRITE setTopOffset)
    Q_PROPERTY(int WorkHeight READ workHeight WRITE setWorkHeight)
    Q_PROPERTY(bool LightBorders READ lightBorders WRITE setLightBorders)
    Q_PROPERTY(bool ShowBorderShape READ showBorderShape WRITE setShowBorderShape)
    Q_PROPERTY(int PictureOffset READ pictureOffset WRITE setPictureOffset)
    Q_PROPERTY(bool ShowPictureFrame READ showPictureFrame WRITE setShowPictureFrame)
    Q_PROPERTY(int ThumbnailHeight READ thumbnailHeight WRITE setThumbnailHeight)
    Q_PROPERTY(bool UsePopUpMenu READ usePopUpMenu WRITE setUsePopUpMenu)
    Q_PROPERTY(int PictureAlignment READ pictureAlignment WRITE setPictureAlignment)
    Q_PROPERTY(bool DoEventsOnLoadPicture READ doEventsOnLoadPicture WRITE setDoEventsOnLoadPicture)
    Q_PROPERTY(bool UseMaskColor READ useMaskColor WRITE setUseMaskColor)
    Q_PROPERTY(uint MaskColor READ maskColor WRITE setMaskColor)
    Q_PROPERTY(bool SetFocusOnShow READ takesFocusOnShow WRITE setSetFocusOnShow)
    Q_PROPERTY(bool PictureFrameFlat READ pictureFrameFlat WRITE setPictureFrameFlat)
    Q_PROPERTY(uint BorderColor READ borderColor WRITE setBorderColor)
    Q_PROPERTY(bool ShowPictureName READ showPictureName WRITE setShowPictureName)
    Q_PROPERTY(uint PictureNameTextColor READ pictureNameTextColor WRITE setPictureNameTextColor)
    Q_PROPERTY(int CTLUseLng READ ctlUseLng WRITE setCtlUseLng)
    Q_PROPERTY(bool ReloadFileName READ reloadFileName WRITE setReloadFileName)
    Q_PROPERTY(bool DesignMode READ designMode WRITE setDesignMode)
    Q_PROPERTY(int OuterOffset READ outerOffset WRITE setOuterOffset)
    Q_PROPERTY(int PreviewSize READ previewSize WRITE setPreviewSize NOTIFY previewSizeChanged)
    Q_PROPERTY(double Zoomfaktor READ zoomfaktor WRITE setZoomfaktor)
    Q_PROPERTY(int ShowPictureToolTip READ showPictureToolTip WRITE setShowPictureToolTip)
    Q_PROPERTY(QImage Picture READ picture WRITE setPicture)
    Q_PROPERTY(QFont Font READ font WRITE setFont)
    Q_PROPERTY(bool Enabled READ isEnabled WRITE setEnabled)
    Q_PROPERTY(QString FileName READ fileName WRITE setFileName)
    Q_PROPERTY(QString FileNameB64 READ fileNameB64 WRITE setFileNameB64)
    Q_PROPERTY(QByteArray PictureB64Buffer READ pictureB64Buffer WRITE setPictureB64Buffer)
    Q_PROPERTY(QImage PictureOrg READ pictureOrg)
    Q_PROPERTY(int PictureWidth READ pictureWidth)
    Q_PROPERTY(int PictureHeight READ pictureHeight)
    Q_PROPERTY(int DisplayWidth READ displayWidth)
    Q_PROPERTY(int DisplayHeight READ displayHeight)

public:
    /// How large the picture is shown (PreviewSize); unknown codes fit.
    enum class PreviewSize {
        Fit = 0,       ///< as large as fits the work area, aspect kept
        Original = 1,  ///< the picture's own size
        Thumbnail = 2, ///< ThumbnailHeight high, aspect kept
        Stretch = 3,   ///< stretched over the whole work area
    };
    Q_ENUM(PreviewSize)

    /// What the tooltip shows (ShowPictureToolTip); unknown codes show none.
    enum class PictureToolTip {
        None = 0,
        Size = 1,        ///< "640x480"
        FileName = 2,    ///< the file name
        SizeAndName = 3, ///< "640x480 - file name"; only the name while no picture is held
    };
    Q_ENUM(PictureToolTip)

    /// Where the picture sits in the work area (PictureAlignment), read like
    /// a keypad from the top left; unknown codes centre.
    enum class PictureAlignment {
        TopLeft = 0,
        TopCenter = 1,
        TopRight = 2,
        MiddleLeft = 3,
        Center = 4,
        MiddleRight = 5,
        BottomLeft = 6,
        BottomCenter = 7,
        BottomRight = 8,
    };
    Q_ENUM(PictureAlignment)

    explicit VxPict(QWidget *parent = nullptr);
    ~VxPict() override;

    int backStyle() const;
    void setBackStyle(int value);
    uint backColor() const;
    void setBackColor(uint value);
    uint foreColor() const;
    void setForeColor(uint value);
    QString caption() const;
    void setCaption(const QString &value);
    bool frameInner() const;
    void setFrameInner(bool value);
    bool frameOuter() const;
    void setFrameOuter(bool value);
    int borderWidth() const;
    void setBorderWidth(int value);
    int frameWidth() const;
    void setFrameWidth(int value);
    int borderStyle() const;
    void setBorderStyle(int value);
    int topOffset() const;
    void setTopOffset(int value);
    int workHeight() const;
    void setWorkHeight(int value);
    bool lightBorders() const;
    void setLightBorders(bool value);
    bool showBorderShape() const;
    void setShowBorderShape(bool value);
    int pictureOffset() const;
    void setPictureOffset(int value);
    bool showPictureFrame() const;
    void setShowPictureFrame(bool value);
    int thumbnailHeight() const;
    void setThumbnailHeight(int value);
    bool usePopUpMenu() const;
    void setUsePopUpMenu(bool value);
    int pictureAlignment() const;
    void setPictureAlignment(int value);
    bool doEventsOnLoadPicture() const;
    void setDoEventsOnLoadPicture(bool value);
    bool useMaskColor() const;
    void setUseMaskColor(bool value);
    uint maskColor() const;
    void setMaskColor(uint value);
    bool takesFocusOnShow() const;
    void setSetFocusOnShow(bool value);
    bool pictureFrameFlat() const;
    void setPictureFrameFlat(bool value);
    uint borderColor() const;
    void setBorderColor(uint value);
    bool showPictureName() const;
    void setShowPictureName(bool value);
    uint pictureNameTextColor() const;
    void setPictureNameTextColor(uint value);
    int ctlUseLng() const;
    void setCtlUseLng(int value);
    /// Run-time switch: when set, assigning the name already shown reads
    /// the file again instead of keeping the held picture.
    bool reloadFileName() const;
    void setReloadFileName(bool value);
    /// Set by a host that designs forms: run-time members (FileName,
    /// the base64 pictures, CLS, CopyToClip, SaveBitmapFile) then report
    /// "Zur Entwurfszeit nicht gültig !" and do nothing.
    bool designMode() const;
    void setDesignMode(bool value);

    /// Margin between the control's edge and its frame; values outside
    /// 0..16 are refused with a message and the old value stays.
    int outerOffset() const;
    void setOuterOffset(int value);
    int previewSize() const;
    void setPreviewSize(int value);
    double zoomfaktor() const;
    /// Zero, negative and non-finite factors are ignored.
    void setZoomfaktor(double value);
    /// Multiplies the zoom by 1.25 per step; negative steps zoom out.
    void zoomIncrease(int steps = 1);
    /// 0 none, 1 "640x480", 2 the file name, 3 "640x480 - file name"
    /// (only the file name while no picture is held), other values none.
    int showPictureToolTip() const;
    void setShowPictureToolTip(int value);

    QString fileName() const;
    /// Shows the picture file `path`: raises loadStart(), reads the file
    /// (unless it is the one already held, compared ignoring letter case),
    /// places it, and raises loadDone(). Errors are passed over; loadDone()
    /// is always raised.
    void setFileName(const QString &path);

    /// A picture set directly, shown as a file would be; a null image clears.
    QImage picture() const;
    void setPicture(const QImage &image);
    /// Shows a picture from encoded file bytes (JPEG, PNG, ...) held in memory.
    bool setPictureData(const QByteArray &encoded);
    /// A picture given as base64 text: FileNameB64 names a text file that
    /// holds it, PictureB64Buffer holds the text itself. The text is
    /// decoded in memory (line breaks allowed) with base64Codec()'s coding
    /// table, never through a temporary file. The picture replaces the one
    /// shown and FileName becomes empty; without a readable picture the
    /// view is empty.
    QString fileNameB64() const;
    void setFileNameB64(const QString &path);
    QByteArray pictureB64Buffer() const;
    void setPictureB64Buffer(const QByteArray &text);
    /// The codec for base64 pictures, made on first use and kept; choose
    /// its coding table here (0, standard base64, unless changed).
    Base64Encoding &base64Codec();

    /// The picture as it was read (at the size it was read at).
    QImage pictureOrg() const;
    /// The held picture's own size, 0 when none is held.
    int pictureWidth() const;
    int pictureHeight() const;
    /// The size the picture is shown at, 0 when none is shown.
    int displayWidth() const;
    int displayHeight() const;
    /// Where the picture is drawn, in widget coordinates.
    QRect pictureRect() const;
    /// The area inside border, frame, caption, name line and PictureOffset.
    QRect workArea() const;
    /// True while a picture is held.
    bool hasPicture() const;

    /// Clears the picture and the file name.
    void cls();
    /// Places and scales the held picture again.
    void resizeCurrentImage();
    void redrawControl();
    void setFocusCont();
    /// The mean colour of the held picture as a colour value; 0 with none.
    quint32 getColorAverage() const;

    /// Puts the picture, at its full size, on the clipboard.
    bool copyToClip();
    /// Asks for a target with a save dialog ("Bitmap speichern unter :")
    /// and writes the picture there as a BMP file. False when cancelled or
    /// when writing failed.
    bool saveBitmapFile();
    /// Writes the picture at its full size as a BMP file to `path`.
    bool saveBitmapTo(const QString &path);
    /// The context menu the view offers (the caller owns it).
    QMenu *createContextMenu();

    /// Replaces the loader; an empty pointer restores the Qt-based one.
    void setPictureLoader(std::shared_ptr<PictureLoader> loader);
    /// Replaces the millisecond tick counter that times loads (for tests);
    /// an empty function restores the system's monotonic clock.
    void setTickCounter(std::function<quint32()> ticks);

    /// The one language text is the Caption; refused while CTLUseLng is 0.
    QString ctlClassName() const override;
    bool ctlSetUserControlLanguage(const QString &property, const QString &text) override;
    /// Releases the picture and the loader; the host calls it when its
    /// window closes.
    void terminateControl() override;

    QSize sizeHint() const override;

Q_SIGNALS:
    void loadStart();
    /// `placed`: the picture could be placed in the view; `elapsedMs`: the
    /// load's duration; `readOk`: the file was read, or was not read again.
    void loadDone(bool placed, qint64 elapsedMs, bool readOk);
    void previewSizeChanged(int previewSize);
    void containerMouseDown(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, const QPoint &pos);
    void containerMouseMove(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers, const QPoint &pos);
    void containerMouseUp(Qt::MouseButton button, Qt::KeyboardModifiers modifiers, const QPoint &pos);
    void wheelMouseScroll(int delta, Qt::KeyboardModifiers modifiers);
    /// The user asked for a context menu while UsePopUpMenu is off.
    void displayUserPopUp(const QPoint &globalPos);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void changeEvent(QEvent *event) override;
    QObject *hooksObject() const override;
    int useLanguage() const override;
    QList<QPair<QString, LngPropertyType>> lngProperties() const override;

private:
    enum class Source { None, File, Data, Direct };
    struct Layout
    {
        QRect border;
        QRect captionLine;
        QRect nameLine;
        QRect work;
    };

    Layout computeLayout() const;
    BorderOptions borderOptions() const;
    /// Places the held picture again and redraws the view.
    void relayout();
    bool refusedAtDesignTime();
    /// Drops the picture, its source and the file name, and redraws.
    void forgetPicture();
    bool placePicture();
    void updateToolTip();
    void readAgainIfTooSmall();
    void readAgain();
    LoadedPicture readSource(const ShownSizeFunction &shownSize);
    ShownSizeFunction shownSizeFunction() const;
    QImage fullPicture();
    void showBase64(const QByteArray &text);
    quint32 ticks() const;
    QColor color(quint32 value) const;
    PictureLoader &loader();

    int m_backStyle = 1;
    uint m_backColor = SystemColor::ButtonFace;
    uint m_foreColor = SystemColor::ButtonText;
    QString m_caption = {};
    bool m_frameInner = true;
    bool m_frameOuter = true;
    int m_borderWidth = 0;
    int m_frameWidth = 0;
    int m_borderStyle = BorderStyleCode::PictureBox;
    int m_topOffset = 0;
    int m_workHeight = 0;
    bool m_lightBorders = false;
    bool m_showBorderShape = false;
    int m_pictureOffset = 6;
    bool m_showPictureFrame = true;
    int m_thumbnailHeight = 110;
    bool m_usePopUpMenu = true;
    int m_pictureAlignment = 4;
    bool m_doEventsOnLoadPicture = true;
    bool m_useMaskColor = false;
    uint m_maskColor = FixedColor::Magenta;
    bool m_setFocusOnShow = false;
    bool m_pictureFrameFlat = false;
    uint m_borderColor = SystemColor::ButtonFace;
    bool m_showPictureName = false;
    uint m_pictureNameTextColor = SystemColor::ButtonFace;
    int m_ctlUseLng = 1;
    bool m_reloadFileName = false;
    bool m_designMode = false;
    int m_outerOffset = 0;
    int m_previewSize = int(PreviewSize::Fit);
    double m_zoomfaktor = 1.0;
    int m_showPictureToolTip = 0;

    QString m_fileName;
    QString m_fileNameB64;
    QByteArray m_pictureB64Buffer;
    std::unique_ptr<Base64Encoding> m_codec;
    Source m_source = Source::None;
    QByteArray m_sourceData;
    QImage m_direct;
    QImage m_held;      // as read; may be smaller than the picture itself
    QSize m_ownSize;    // the picture's own upright size
    QPixmap m_display;  // scaled to the shown size, in device pixels
    QRect m_shownRect;
    bool m_pictureVisible = true;
    QTimer m_reloadTimer;
    std::shared_ptr<PictureLoader> m_loader;
    std::function<quint32()> m_ticks;
    QElapsedTimer m_clock;
};

/// The size modes of the picture view as the integer codes PreviewSize holds.
namespace PreviewSizeMode {
inline constexpr int Fit = int(VxPict::PreviewSize::Fit);
inline constexpr int Original = int(VxPict::PreviewSize::Original);
inline constexpr int Thumbnail = int(VxPict::PreviewSize::Thumbnail);
inline constexpr int Stretch = int(VxPict::PreviewSize::Stretch);
inline constexpr int Count = 4;
} // namespace PreviewSizeMode

/// The size at which a picture of `ownSize` is shown in an area of
/// `area` by the size mode `previewSize` (unknown modes fit), then scaled
/// by `zoom`. Empty when there is nothing to show.
QSize pictureShownSize(const QSize &ownSize, const QSize &area, int previewSize,
                       int thumbnailHeight, double zoom);

/// Where a picture of `shown` size goes in `area` by PictureAlignment:
/// 0..8 read like a keypad from the top left (0 top left, 1 top centre,
/// 2 top right, 3 middle left, 4 centre, ... 8 bottom right); any other
/// code centres. A picture larger than the area overhangs it the same way.
QRect picturePlacement(const QSize &shown, const QRect &area, int alignment);

} // namespace valtrona
