#include "controls/vxpict.h"

#include <cmath>

#include <QActionGroup>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFileDialog>
#include <QFile>
#include <QFileInfo>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QSaveFile>
#include <QWheelEvent>

#include "core/base64.h"

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

// core's roundHalfEven() gives a double; pixel sizes and colour channels want int.
int roundToInt(double value)
{
    return static_cast<int>(roundHalfEven(value));
}

} // namespace


namespace {

constexpr double zoomStep = 1.25;
constexpr double zoomMin = 1.0 / 64.0;
constexpr double zoomMax = 64.0;
// Above this many device pixels the scaled picture is not cached but drawn
// from the held one, so a deep zoom cannot exhaust memory.
constexpr qint64 displayCacheLimit = 4096LL * 4096LL;
// The size a picture is read at while the view has no size yet.
constexpr int unplacedReadSize = 512;

QString lastPathPart(const QString &path)
{
    return path.mid(path.lastIndexOf(u'/') + 1);
}

void maskOut(QImage &image, QRgb mask)
{
    image = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if ((line[x] & 0x00FFFFFFu) == (mask & 0x00FFFFFFu))
                line[x] = 0;
        }
    }
}

} // namespace

QSize pictureShownSize(const QSize &ownSize, const QSize &area, int previewSize,
                       int thumbnailHeight, double zoom)
{
    if (ownSize.isEmpty())
        return {};
    QSize base;
    if (previewSize == PreviewSizeMode::Original) {
        base = ownSize;
    } else if (previewSize == PreviewSizeMode::Thumbnail && thumbnailHeight > 0) {
        base = QSize(qMax(1, roundToInt(double(ownSize.width()) * thumbnailHeight / ownSize.height())),
                     thumbnailHeight);
    } else if (previewSize == PreviewSizeMode::Stretch) {
        base = area;
    } else {
        if (area.isEmpty())
            return {};
        const double scale = qMin(double(area.width()) / ownSize.width(),
                                  double(area.height()) / ownSize.height());
        base = QSize(qMax(1, roundToInt(ownSize.width() * scale)),
                     qMax(1, roundToInt(ownSize.height() * scale)));
    }
    if (base.isEmpty())
        return {};
    if (!(zoom > 0.0) || !std::isfinite(zoom))
        zoom = 1.0;
    return {qMax(1, roundToInt(base.width() * zoom)), qMax(1, roundToInt(base.height() * zoom))};
}

QRect picturePlacement(const QSize &shown, const QRect &area, int alignment)
{
    if (alignment < 0 || alignment > 8)
        alignment = 4;
    const int column = alignment % 3;
    const int row = alignment / 3;
    const int spareX = area.width() - shown.width();
    const int spareY = area.height() - shown.height();
    const int x = area.left() + (column == 0 ? 0 : column == 1 ? spareX / 2 : spareX);
    const int y = area.top() + (row == 0 ? 0 : row == 1 ? spareY / 2 : spareY);
    return {QPoint(x, y), shown};
}

VxPict::VxPict(QWidget *parent)
    : QWidget(parent)
{
    m_clock.start();
    m_reloadTimer.setSingleShot(true);
    m_reloadTimer.setInterval(60);
    connect(&m_reloadTimer, &QTimer::timeout, this, &VxPict::readAgain);
}

VxPict::~VxPict() = default;

int VxPict::backStyle() const
{
    return m_backStyle;
}

void VxPict::setBackStyle(int value)
{
    if (m_backStyle == value)
        return;
    m_backStyle = value;
    placePicture();
    update();
}

uint VxPict::backColor() const
{
    return m_backColor;
}

void VxPict::setBackColor(uint value)
{
    if (m_backColor == value)
        return;
    m_backColor = value;
    placePicture();
    update();
}

uint VxPict::foreColor() const
{
    return m_foreColor;
}

void VxPict::setForeColor(uint value)
{
    if (m_foreColor == value)
        return;
    m_foreColor = value;
    placePicture();
    update();
}

QString VxPict::caption() const
{
    return m_caption;
}

void VxPict::setCaption(const QString &value)
{
    if (m_caption == value)
        return;
    m_caption = value;
    placePicture();
    update();
}

bool VxPict::frameInner() const
{
    return m_frameInner;
}

void VxPict::setFrameInner(bool value)
{
    if (m_frameInner == value)
        return;
    m_frameInner = value;
    placePicture();
    update();
}

bool VxPict::frameOuter() const
{
    return m_frameOuter;
}

void VxPict::setFrameOuter(bool value)
{
    if (m_frameOuter == value)
        return;
    m_frameOuter = value;
    placePicture();
    update();
}

int VxPict::borderWidth() const
{
    return m_borderWidth;
}

void VxPict::setBorderWidth(int value)
{
    if (m_borderWidth == value)
        return;
    m_borderWidth = value;
    placePicture();
    update();
}

int VxPict::frameWidth() const
{
    return m_frameWidth;
}

void VxPict::setFrameWidth(int value)
{
    if (m_frameWidth == value)
        return;
    m_frameWidth = value;
    placePicture();
    update();
}

int VxPict::borderStyle() const
{
    return m_borderStyle;
}

void VxPict::setBorderStyle(int value)
{
    if (m_borderStyle == value)
        return;
    m_borderStyle = value;
    placePicture();
    update();
}

int VxPict::topOffset() const
{
    return m_topOffset;
}

void VxPict::setTopOffset(int value)
{
    if (m_topOffset == value)
        return;
    m_topOffset = value;
    placePicture();
    update();
}

int VxPict::workHeight() const
{
    return m_workHeight;
}

void VxPict::setWorkHeight(int value)
{
    if (m_workHeight == value)
        return;
    m_workHeight = value;
    placePicture();
    update();
}

bool VxPict::lightBorders() const
{
    return m_lightBorders;
}

void VxPict::setLightBorders(bool value)
{
    if (m_lightBorders == value)
        return;
    m_lightBorders = value;
    placePicture();
    update();
}

bool VxPict::showBorderShape() const
{
    return m_showBorderShape;
}

void VxPict::setShowBorderShape(bool value)
{
    if (m_showBorderShape == value)
        return;
    m_showBorderShape = value;
    placePicture();
    update();
}

int VxPict::pictureOffset() const
{
    return m_pictureOffset;
}

void VxPict::setPictureOffset(int value)
{
    if (m_pictureOffset == value)
        return;
    m_pictureOffset = value;
    placePicture();
    update();
}

bool VxPict::showPictureFrame() const
{
    return m_showPictureFrame;
}

void VxPict::setShowPictureFrame(bool value)
{
    if (m_showPictureFrame == value)
        return;
    m_showPictureFrame = value;
    placePicture();
    update();
}

int VxPict::thumbnailHeight() const
{
    return m_thumbnailHeight;
}

void VxPict::setThumbnailHeight(int value)
{
    if (m_thumbnailHeight == value)
        return;
    m_thumbnailHeight = value;
    placePicture();
    update();
}

bool VxPict::usePopUpMenu() const
{
    return m_usePopUpMenu;
}

void VxPict::setUsePopUpMenu(bool value)
{
    if (m_usePopUpMenu == value)
        return;
    m_usePopUpMenu = value;
    placePicture();
    update();
}

int VxPict::pictureAlignment() const
{
    return m_pictureAlignment;
}

void VxPict::setPictureAlignment(int value)
{
    if (m_pictureAlignment == value)
        return;
    m_pictureAlignment = value;
    placePicture();
    update();
}

bool VxPict::doEventsOnLoadPicture() const
{
    return m_doEventsOnLoadPicture;
}

void VxPict::setDoEventsOnLoadPicture(bool value)
{
    if (m_doEventsOnLoadPicture == value)
        return;
    m_doEventsOnLoadPicture = value;
    placePicture();
    update();
}

bool VxPict::useMaskColor() const
{
    return m_useMaskColor;
}

void VxPict::setUseMaskColor(bool value)
{
    if (m_useMaskColor == value)
        return;
    m_useMaskColor = value;
    placePicture();
    update();
}

uint VxPict::maskColor() const
{
    return m_maskColor;
}

void VxPict::setMaskColor(uint value)
{
    if (m_maskColor == value)
        return;
    m_maskColor = value;
    placePicture();
    update();
}

bool VxPict::takesFocusOnShow() const
{
    return m_setFocusOnShow;
}

void VxPict::setSetFocusOnShow(bool value)
{
    if (m_setFocusOnShow == value)
        return;
    m_setFocusOnShow = value;
    placePicture();
    update();
}

bool VxPict::pictureFrameFlat() const
{
    return m_pictureFrameFlat;
}

void VxPict::setPictureFrameFlat(bool value)
{
    if (m_pictureFrameFlat == value)
        return;
    m_pictureFrameFlat = value;
    placePicture();
    update();
}

uint VxPict::borderColor() const
{
    return m_borderColor;
}

void VxPict::setBorderColor(uint value)
{
    if (m_borderColor == value)
        return;
    m_borderColor = value;
    placePicture();
    update();
}

bool VxPict::showPictureName() const
{
    return m_showPictureName;
}

void VxPict::setShowPictureName(bool value)
{
    if (m_showPictureName == value)
        return;
    m_showPictureName = value;
    placePicture();
    update();
}

uint VxPict::pictureNameTextColor() const
{
    return m_pictureNameTextColor;
}

void VxPict::setPictureNameTextColor(uint value)
{
    if (m_pictureNameTextColor == value)
        return;
    m_pictureNameTextColor = value;
    placePicture();
    update();
}

int VxPict::ctlUseLng() const
{
    return m_ctlUseLng;
}

void VxPict::setCtlUseLng(int value)
{
    if (m_ctlUseLng == value)
        return;
    m_ctlUseLng = value;
    placePicture();
    update();
}

bool VxPict::reloadFileName() const
{
    return m_reloadFileName;
}

void VxPict::setReloadFileName(bool value)
{
    if (m_reloadFileName == value)
        return;
    m_reloadFileName = value;
    placePicture();
    update();
}

bool VxPict::designMode() const
{
    return m_designMode;
}

void VxPict::setDesignMode(bool value)
{
    if (m_designMode == value)
        return;
    m_designMode = value;
    placePicture();
    update();
}

int VxPict::outerOffset() const
{
    return m_outerOffset;
}

void VxPict::setOuterOffset(int value)
{
    if (value < 0 || value > 16) {
        showControlMessage(this, u"Die 'OuterOffset' Eigenschaft muß zwischen 0 und 16 liegen !"_s);
        return;
    }
    if (m_outerOffset == value)
        return;
    m_outerOffset = value;
    placePicture();
    update();
}

int VxPict::previewSize() const
{
    return m_previewSize;
}

void VxPict::setPreviewSize(int value)
{
    if (m_previewSize == value)
        return;
    m_previewSize = value;
    placePicture();
    update();
    Q_EMIT previewSizeChanged(value);
}

double VxPict::zoomfaktor() const
{
    return m_zoomfaktor;
}

void VxPict::setZoomfaktor(double value)
{
    if (!(value > 0.0) || !std::isfinite(value) || value == m_zoomfaktor)
        return;
    m_zoomfaktor = qBound(zoomMin, value, zoomMax);
    placePicture();
    update();
}

void VxPict::zoomIncrease(int steps)
{
    setZoomfaktor(m_zoomfaktor * std::pow(zoomStep, steps));
}

int VxPict::showPictureToolTip() const
{
    return m_showPictureToolTip;
}

void VxPict::setShowPictureToolTip(int value)
{
    m_showPictureToolTip = value;
    updateToolTip();
}

QString VxPict::fileName() const
{
    return m_fileName;
}

void VxPict::setFileName(const QString &path)
{
    if (refusedAtDesignTime())
        return;
    const bool sameName = path.toUpper() == m_fileName.toUpper();
    m_fileName = path;
    const quint32 start = ticks();
    Q_EMIT loadStart();
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    m_pictureVisible = false;

    bool readOk = true;
    const bool reuse = sameName && !m_reloadFileName && m_source == Source::File && !m_held.isNull();
    if (!reuse) {
        m_source = Source::File;
        m_sourceData.clear();
        m_direct = QImage();
        m_reloadTimer.stop();
        LoadedPicture loaded = readSource(shownSizeFunction());
        readOk = !loaded.image.isNull();
        m_held = std::move(loaded.image);
        m_ownSize = readOk ? loaded.ownSize : QSize();
        if (!readOk)
            m_source = Source::None;
    }

    const bool placed = placePicture();
    updateToolTip();
    m_pictureVisible = true;
    update();
    QGuiApplication::restoreOverrideCursor();
    if (m_doEventsOnLoadPicture)
        QCoreApplication::processEvents();
    const quint32 end = ticks();
    Q_EMIT loadDone(placed, qint64(quint32(end - start)), readOk);
}

QImage VxPict::picture() const
{
    return m_direct;
}

void VxPict::setPicture(const QImage &image)
{
    m_reloadTimer.stop();
    m_sourceData.clear();
    m_direct = image;
    m_held = image;
    m_ownSize = image.size();
    m_source = image.isNull() ? Source::None : Source::Direct;
    placePicture();
    updateToolTip();
    update();
}

bool VxPict::setPictureData(const QByteArray &encoded)
{
    m_reloadTimer.stop();
    m_direct = QImage();
    m_held = QImage();
    m_sourceData = encoded;
    m_source = Source::Data;
    LoadedPicture loaded = readSource(shownSizeFunction());
    const bool readOk = !loaded.image.isNull();
    m_held = std::move(loaded.image);
    m_ownSize = readOk ? loaded.ownSize : QSize();
    if (!readOk) {
        m_source = Source::None;
        m_sourceData.clear();
    }
    placePicture();
    updateToolTip();
    update();
    return readOk;
}

QString VxPict::fileNameB64() const
{
    return m_fileNameB64;
}

void VxPict::setFileNameB64(const QString &path)
{
    if (refusedAtDesignTime())
        return;
    m_fileNameB64 = path;
    QByteArray text;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly))
        text = file.readAll();
    showBase64(text);
}

QByteArray VxPict::pictureB64Buffer() const
{
    return m_pictureB64Buffer;
}

void VxPict::setPictureB64Buffer(const QByteArray &text)
{
    if (refusedAtDesignTime())
        return;
    m_pictureB64Buffer = text;
    showBase64(text);
}

Base64Encoding &VxPict::base64Codec()
{
    if (!m_codec)
        m_codec = std::make_unique<Base64Encoding>();
    return *m_codec;
}

void VxPict::showBase64(const QByteArray &text)
{
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    const QByteArray bytes = base64Codec().decodeB64(text);
    m_fileName.clear();
    m_held = QImage();
    m_display = QPixmap();
    setPictureData(bytes);
    QGuiApplication::restoreOverrideCursor();
}

QImage VxPict::pictureOrg() const
{
    return m_held;
}

int VxPict::pictureWidth() const
{
    return m_held.isNull() ? 0 : m_ownSize.width();
}

int VxPict::pictureHeight() const
{
    return m_held.isNull() ? 0 : m_ownSize.height();
}

int VxPict::displayWidth() const
{
    return m_shownRect.width();
}

int VxPict::displayHeight() const
{
    return m_shownRect.height();
}

QRect VxPict::pictureRect() const
{
    return m_shownRect;
}

QRect VxPict::workArea() const
{
    return computeLayout().work;
}

bool VxPict::hasPicture() const
{
    return !m_held.isNull();
}

void VxPict::cls()
{
    if (refusedAtDesignTime())
        return;
    m_reloadTimer.stop();
    m_fileName.clear();
    m_source = Source::None;
    m_sourceData.clear();
    m_direct = QImage();
    m_held = QImage();
    m_ownSize = QSize();
    placePicture();
    updateToolTip();
    update();
}

void VxPict::resizeCurrentImage()
{
    placePicture();
    update();
}

void VxPict::redrawControl()
{
    update();
}

void VxPict::setFocusCont()
{
    setFocus(Qt::OtherFocusReason);
}

quint32 VxPict::getColorAverage() const
{
    if (m_held.isNull())
        return 0;
    const QImage image = m_held.convertToFormat(QImage::Format_RGB32);
    quint64 red = 0, green = 0, blue = 0;
    for (int y = 0; y < image.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            red += quint64(qRed(line[x]));
            green += quint64(qGreen(line[x]));
            blue += quint64(qBlue(line[x]));
        }
    }
    const double count = double(image.width()) * image.height();
    return colorValueFromColor(QColor(roundToInt(red / count), roundToInt(green / count),
                                      roundToInt(blue / count)));
}

bool VxPict::copyToClip()
{
    if (refusedAtDesignTime())
        return false;
    const QImage image = fullPicture();
    if (image.isNull())
        return false;
    QGuiApplication::clipboard()->setImage(image);
    return true;
}

bool VxPict::saveBitmapFile()
{
    if (refusedAtDesignTime() || !hasPicture())
        return false;
    QFileDialog dialog(this, u"Bitmap speichern unter :"_s);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    dialog.setFileMode(QFileDialog::AnyFile);
    dialog.setNameFilter(u"Bitmap (*.bmp)"_s);
    dialog.setDefaultSuffix(u"bmp"_s);
    if (m_source == Source::File) {
        const QFileInfo info(m_fileName);
        dialog.setDirectory(info.absolutePath());
        dialog.selectFile(info.completeBaseName() + u".bmp");
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return false;
    return saveBitmapTo(dialog.selectedFiles().constFirst());
}

bool VxPict::saveBitmapTo(const QString &path)
{
    const QImage image = fullPicture();
    if (image.isNull())
        return false;
    // Written under a temporary name and renamed, so a failure never
    // leaves half a file behind.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    if (!image.save(&file, "BMP")) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

QMenu *VxPict::createContextMenu()
{
    auto *menu = new QMenu(this);
    QAction *copy = menu->addAction(u"Kopieren"_s, this, [this] { copyToClip(); });
    copy->setEnabled(hasPicture());
    QAction *save = menu->addAction(u"Speichern unter ..."_s, this, [this] { saveBitmapFile(); });
    save->setEnabled(hasPicture());
    menu->addSeparator();

    QMenu *size = menu->addMenu(u"Größe"_s);
    auto *modes = new QActionGroup(size);
    const QString texts[PreviewSizeMode::Count] = {u"Einpassen"_s, u"Originalgröße"_s, u"Miniatur"_s,
                                                   u"Strecken"_s};
    for (int mode = 0; mode < PreviewSizeMode::Count; ++mode) {
        QAction *action = size->addAction(texts[mode], this, [this, mode] { setPreviewSize(mode); });
        action->setCheckable(true);
        action->setChecked(mode == m_previewSize);
        modes->addAction(action);
    }
    menu->addSeparator();
    menu->addAction(u"Vergrößern"_s, this, [this] { zoomIncrease(1); });
    menu->addAction(u"Verkleinern"_s, this, [this] { zoomIncrease(-1); });
    QAction *reset = menu->addAction(u"Zoom 100 %"_s, this, [this] { setZoomfaktor(1.0); });
    reset->setEnabled(m_zoomfaktor != 1.0);
    return menu;
}

void VxPict::setPictureLoader(std::shared_ptr<PictureLoader> loader)
{
    m_loader = std::move(loader);
}

void VxPict::setTickCounter(std::function<quint32()> ticks)
{
    m_ticks = std::move(ticks);
}

QString VxPict::ctlClassName() const
{
    return u"VxPict"_s;
}

bool VxPict::ctlSetUserControlLanguage(const QString &property, const QString &text)
{
    if (m_ctlUseLng == 0)
        return false;
    return ControlHooks::ctlSetUserControlLanguage(property, text);
}

QObject *VxPict::hooksObject() const
{
    return const_cast<VxPict *>(this);
}

int VxPict::useLanguage() const
{
    return m_ctlUseLng;
}

QList<QPair<QString, LngPropertyType>> VxPict::lngProperties() const
{
    return {{u"Caption"_s, LngPropertyType::Caption}};
}

void VxPict::terminateControl()
{
    m_reloadTimer.stop();
    m_fileName.clear();
    m_source = Source::None;
    m_sourceData.clear();
    m_direct = QImage();
    m_held = QImage();
    m_ownSize = QSize();
    m_display = QPixmap();
    m_shownRect = QRect();
    m_loader.reset();
    updateToolTip();
    update();
}

QSize VxPict::sizeHint() const
{
    return {240, 180};
}

VxPict::Layout VxPict::computeLayout() const
{
    Layout layout;
    layout.border = rect().adjusted(m_outerOffset, m_outerOffset, -m_outerOffset, -m_outerOffset);
    const int frame = qMax(0, m_frameWidth);
    QRect inner = layout.border.marginsRemoved(borderMargins(borderOptions()))
                      .adjusted(frame, frame, -frame, -frame);
    inner.setTop(inner.top() + qMax(0, m_topOffset));
    const int lineHeight = QFontMetrics(font()).height() + 4;
    if (!m_caption.isEmpty()) {
        layout.captionLine = QRect(inner.left(), inner.top(), inner.width(), lineHeight);
        inner.setTop(layout.captionLine.bottom() + 1);
    }
    if (m_workHeight > 0)
        inner.setHeight(m_workHeight);
    if (m_showPictureName) {
        layout.nameLine = QRect(inner.left(), inner.bottom() - lineHeight + 1, inner.width(), lineHeight);
        inner.setBottom(layout.nameLine.top() - 1);
    }
    const int offset = qMax(0, m_pictureOffset);
    layout.work = inner.adjusted(offset, offset, -offset, -offset);
    return layout;
}

BorderOptions VxPict::borderOptions() const
{
    return {m_borderStyle, m_borderWidth, m_frameOuter, m_frameInner, m_lightBorders, m_showBorderShape};
}

bool VxPict::refusedAtDesignTime()
{
    if (!m_designMode)
        return false;
    showControlMessage(this, controlText(ControlText::NotAtDesignTime));
    return true;
}

bool VxPict::placePicture()
{
    m_display = QPixmap();
    m_shownRect = QRect();
    if (m_held.isNull())
        return false;
    const QRect work = computeLayout().work;
    const QSize shown = pictureShownSize(m_ownSize, work.size(), m_previewSize, m_thumbnailHeight, m_zoomfaktor);
    if (shown.isEmpty())
        return false;
    m_shownRect = picturePlacement(shown, work, m_pictureAlignment);

    const qreal ratio = devicePixelRatioF();
    const QSize device = (QSizeF(shown) * ratio).toSize();
    if (qint64(device.width()) * device.height() <= displayCacheLimit) {
        QImage image = m_held;
        if (m_useMaskColor)
            maskOut(image, colorFromValue(m_maskColor, palette()).rgb());
        if (image.size() != device)
            image = image.scaled(device, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        m_display = QPixmap::fromImage(std::move(image));
        m_display.setDevicePixelRatio(ratio);
    }
    readAgainIfTooSmall();
    return true;
}

void VxPict::updateToolTip()
{
    const QString size = hasPicture()
        ? QString::number(pictureWidth()) + u'x' + QString::number(pictureHeight())
        : QString();
    QString text;
    switch (m_showPictureToolTip) {
    case 1: text = size; break;
    case 2: text = m_fileName; break;
    case 3:
        if (size.isEmpty() || m_fileName.isEmpty())
            text = size.isEmpty() ? m_fileName : size;
        else
            text = size + u" - " + m_fileName;
        break;
    default: break;
    }
    setToolTip(text);
}

void VxPict::readAgainIfTooSmall()
{
    if (m_source != Source::File && m_source != Source::Data)
        return;
    const QSize needed = (QSizeF(m_shownRect.size()) * devicePixelRatioF()).toSize().boundedTo(m_ownSize);
    if (m_held.width() + 1 < needed.width() || m_held.height() + 1 < needed.height())
        m_reloadTimer.start();
}

void VxPict::readAgain()
{
    LoadedPicture loaded = readSource(shownSizeFunction());
    if (loaded.image.isNull())
        return;
    // Only ever trade up, so a reader that cannot deliver the size asked
    // for does not read again and again.
    if (loaded.image.width() <= m_held.width() && loaded.image.height() <= m_held.height())
        return;
    m_held = std::move(loaded.image);
    m_ownSize = loaded.ownSize;
    placePicture();
    update();
}

LoadedPicture VxPict::readSource(const ShownSizeFunction &shownSize)
{
    try {
        if (m_source == Source::File)
            return loader().load(m_fileName, shownSize);
        if (m_source == Source::Data)
            return loader().loadFromData(m_sourceData, shownSize);
    } catch (...) {
        // A failing reader is passed over like an unreadable file.
    }
    return {};
}

ShownSizeFunction VxPict::shownSizeFunction() const
{
    return [this](const QSize &ownSize) {
        QSize area = computeLayout().work.size();
        if (area.isEmpty())
            area = QSize(unplacedReadSize, unplacedReadSize);
        const QSize shown = pictureShownSize(ownSize, area, m_previewSize, m_thumbnailHeight, m_zoomfaktor);
        const qreal ratio = devicePixelRatioF();
        return QSize(int(std::ceil(shown.width() * ratio)), int(std::ceil(shown.height() * ratio)));
    };
}

QImage VxPict::fullPicture()
{
    if (m_source == Source::Direct)
        return m_direct;
    if (m_source == Source::File || m_source == Source::Data) {
        const LoadedPicture full = readSource({});
        if (!full.image.isNull())
            return full.image;
    }
    return m_held;
}

quint32 VxPict::ticks() const
{
    return m_ticks ? m_ticks() : quint32(m_clock.elapsed());
}

QColor VxPict::color(quint32 value) const
{
    return colorFromValue(value, palette());
}

PictureLoader &VxPict::loader()
{
    if (!m_loader)
        m_loader = std::make_shared<QtPictureLoader>();
    return *m_loader;
}

void VxPict::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const Layout layout = computeLayout();
    if (m_backStyle == 1)
        painter.fillRect(rect(), color(m_backColor));
    drawBorder(painter, layout.border, palette(), borderOptions());

    const QColor text = isEnabled() ? color(m_foreColor) : palette().color(QPalette::Disabled, QPalette::WindowText);
    const QFontMetrics metrics(font());
    if (!layout.captionLine.isNull()) {
        painter.setPen(text);
        const QRect line = layout.captionLine.adjusted(4, 0, -4, 0);
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
                         metrics.elidedText(m_caption, Qt::ElideRight, line.width()));
    }
    if (!layout.nameLine.isNull()) {
        painter.fillRect(layout.nameLine, color(m_pictureNameTextColor));
        painter.setPen(text);
        const QRect line = layout.nameLine.adjusted(4, 0, -4, 0);
        painter.drawText(line, Qt::AlignHCenter | Qt::AlignVCenter,
                         metrics.elidedText(lastPathPart(m_fileName), Qt::ElideMiddle, line.width()));
    }

    if (!m_pictureVisible || m_shownRect.isEmpty())
        return;
    painter.save();
    painter.setClipRect(layout.work.adjusted(-2, -2, 2, 2));
    if (!m_display.isNull()) {
        painter.drawPixmap(m_shownRect.topLeft(), m_display);
    } else {
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(m_shownRect, m_held);
    }
    if (m_showPictureFrame) {
        const QRect frame = m_shownRect.adjusted(-1, -1, 1, 1);
        if (m_pictureFrameFlat)
            drawBorder(painter, frame, palette(), {BorderStyleCode::SingleLine});
        else
            drawBorder(painter, frame, palette(), {BorderStyleCode::ThreedInner});
    }
    painter.restore();
}

void VxPict::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    placePicture();
}

void VxPict::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    placePicture();
    if (m_setFocusOnShow)
        setFocus(Qt::OtherFocusReason);
}

void VxPict::contextMenuEvent(QContextMenuEvent *event)
{
    if (!m_usePopUpMenu) {
        Q_EMIT displayUserPopUp(event->globalPos());
        return;
    }
    const std::unique_ptr<QMenu> menu(createContextMenu());
    menu->exec(event->globalPos());
}

void VxPict::mousePressEvent(QMouseEvent *event)
{
    Q_EMIT containerMouseDown(event->button(), event->modifiers(), event->position().toPoint());
    QWidget::mousePressEvent(event);
}

void VxPict::mouseMoveEvent(QMouseEvent *event)
{
    Q_EMIT containerMouseMove(event->buttons(), event->modifiers(), event->position().toPoint());
    QWidget::mouseMoveEvent(event);
}

void VxPict::mouseReleaseEvent(QMouseEvent *event)
{
    Q_EMIT containerMouseUp(event->button(), event->modifiers(), event->position().toPoint());
    QWidget::mouseReleaseEvent(event);
}

void VxPict::wheelEvent(QWheelEvent *event)
{
    Q_EMIT wheelMouseScroll(event->angleDelta().y(), event->modifiers());
    event->accept();
}

void VxPict::changeEvent(QEvent *event)
{
    switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::PaletteChange:
        placePicture();
        update();
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
