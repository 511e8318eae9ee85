#include "controls/vxpict.h"

#include <cmath>

#include <QFile>
#include <QGuiApplication>

#include "controls/controlproperties.h"
#include "core/base64.h"

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

constexpr double zoomStep = 1.25;
constexpr double zoomMin = 1.0 / 64.0;
constexpr double zoomMax = 64.0;
// The size a picture is read at while the view has no size yet.
constexpr int unplacedReadSize = 512;

} // namespace

VxPict::VxPict(QWidget *parent)
    : QWidget(parent)
{
    m_clock.start();
    m_reloadTimer.setSingleShot(true);
    m_reloadTimer.setInterval(60);
    connect(&m_reloadTimer, &QTimer::timeout, this, &VxPict::readAgain);
}

VxPict::~VxPict() = default;

// --- Settings with a rule of their own -------------------------------------

void VxPict::setOuterOffset(int value)
{
    if (value < 0 || value > 16) {
        showControlMessage(this, u"Die 'OuterOffset' Eigenschaft muß zwischen 0 und 16 liegen !"_s);
        return;
    }
    assign(this, m_outerOffset, value, &VxPict::relayout);
}

void VxPict::setPreviewSize(int value)
{
    if (assign(this, m_previewSize, value, &VxPict::relayout))
        Q_EMIT previewSizeChanged(value);
}

void VxPict::setZoomfaktor(double value)
{
    if (!(value > 0.0) || !std::isfinite(value) || value == m_zoomfaktor)
        return;
    m_zoomfaktor = qBound(zoomMin, value, zoomMax);
    relayout();
}

void VxPict::zoomIncrease(int steps)
{
    setZoomfaktor(m_zoomfaktor * std::pow(zoomStep, steps));
}

// --- Loading ---------------------------------------------------------------

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

void VxPict::cls()
{
    if (!refusedAtDesignTime())
        forgetPicture();
}

void VxPict::forgetPicture()
{
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
    relayout();
}

void VxPict::relayout()
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

bool VxPict::refusedAtDesignTime()
{
    if (!m_designMode)
        return false;
    showControlMessage(this, controlText(ControlText::NotAtDesignTime));
    return true;
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

PictureLoader &VxPict::loader()
{
    if (!m_loader)
        m_loader = std::make_shared<QtPictureLoader>();
    return *m_loader;
}

// --- Control hooks ---------------------------------------------------------

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
    m_loader.reset();
    forgetPicture();
}

} // namespace valtrona
