#include "gallerywindow.h"

#include <cmath>

#include <QBuffer>
#include <QCheckBox>
#include <QCoreApplication>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLinearGradient>
#include <QLocale>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QRadialGradient>
#include <QVBoxLayout>

#include "controls/vxactctrl.h"
#include "controls/vxborder.h"
#include "controls/vxcont.h"
#include "controls/vxinvisiblecont.h"
#include "controls/vxlinein.h"
#include "controls/vxpict.h"
#include "core/base64.h"

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

// A made-up landscape, so the gallery needs no picture files of its own.
QImage paintLandscape(QSize size, QColor sky, QColor land)
{
    QImage image(size, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient air(0, 0, 0, size.height());
    air.setColorAt(0.0, sky.darker(130));
    air.setColorAt(0.6, sky.lighter(140));
    painter.fillRect(image.rect(), air);
    QRadialGradient sun(size.width() * 0.72, size.height() * 0.28, size.height() * 0.12);
    sun.setColorAt(0.0, QColor(255, 244, 200));
    sun.setColorAt(1.0, QColor(255, 200, 90, 0));
    painter.fillRect(image.rect(), sun);
    for (int layer = 0; layer < 3; ++layer) {
        QPainterPath hills;
        const double base = size.height() * (0.55 + 0.12 * layer);
        hills.moveTo(0, size.height());
        for (int x = 0; x <= size.width(); x += qMax(1, size.width() / 40))
            hills.lineTo(x, base - size.height() * 0.08 * std::sin(x * (0.004 + 0.003 * layer) + layer));
        hills.lineTo(size.width(), size.height());
        painter.fillPath(hills, land.darker(100 + 35 * layer));
    }
    return image;
}

VxCont *flood(int barType, int percent, bool showPercent)
{
    auto *bar = new VxCont;
    bar->setBorderStyle(BorderStyleCode::PictureBox);
    bar->setFrameWidth(1);
    bar->setBackColor(SystemColor::Window);
    bar->setWindowColor(SystemColor::Window);
    bar->setFloodType(3);
    bar->setFloodBarType(barType);
    bar->setFloodShowPercent(showPercent);
    bar->setFloodPercent(percent);
    bar->setFixedHeight(28);
    return bar;
}

QLabel *note(const QString &text)
{
    auto *label = new QLabel(text);
    label->setWordWrap(true);
    return label;
}

} // namespace

GalleryWindow::GalleryWindow(QWidget *parent)
    : QTabWidget(parent)
{
    setWindowTitle(u"Valtrona – Steuerelemente"_s);
    addTab(createBorderPage(), u"Rahmen (VxCont)"_s);
    addTab(createFloodPage(), u"Fortschritt (VxCont)"_s);
    addTab(createPicturePage(), u"Bild (VxPict)"_s);
    addTab(createCardPage(), u"Karten und Eingaben (VxActCtrl, VxLineIn)"_s);

    m_floodTimer.setInterval(120);
    connect(&m_floodTimer, &QTimer::timeout, this, &GalleryWindow::advanceFlood);
    m_floodTimer.start();
}

bool GalleryWindow::saveScreenshots(const QString &prefix)
{
    bool allSaved = true;
    for (int page = 0; page < count(); ++page) {
        setCurrentIndex(page);
        QCoreApplication::processEvents();
        const QString name = prefix + u'-' + QString::number(page + 1);
        if (widget(page) != m_cardPage) {
            allSaved = grab().save(name + u".png") && allSaved;
            continue;
        }
        for (int card = 1; card <= m_switcher->controlCount(); ++card) {
            m_switcher->setActiveControl(card);
            QCoreApplication::processEvents();
            allSaved = grab().save(name + u'-' + QString::number(card) + u".png") && allSaved;
        }
        m_switcher->firstControl();
    }
    return allSaved;
}

QWidget *GalleryWindow::createBorderPage()
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);

    auto *styles = new QGridLayout;
    for (int code = 0; code < BorderStyleCode::Count; ++code) {
        auto *box = new VxCont;
        box->setBorderStyle(code);
        box->setCaption(borderStyleDisplayText(code));
        box->setMinimumSize(150, 62);
        styles->addWidget(box, code / 7, code % 7);
    }
    layout->addLayout(styles);

    auto *variants = new QGridLayout;

    auto *group = new VxCont;
    group->setBorderStyle(BorderStyleCode::ThreedInOut);
    group->setCaptionFrame(u"Zieldateien"_s);
    auto *groupLayout = new QVBoxLayout(group);
    groupLayout->addWidget(new QCheckBox(u"Verzeichnisstruktur beibehalten"_s));
    groupLayout->addWidget(new QCheckBox(u"Dateidatum beibehalten"_s));
    auto *exif = new QCheckBox(u"EXIF-Daten übernehmen"_s);
    exif->setChecked(true);
    groupLayout->addWidget(exif);
    groupLayout->addStretch(1);
    variants->addWidget(group, 0, 0, 2, 1);

    auto *separator = new VxCont;
    separator->setBorderStyle(BorderStyleCode::LineHorizontal);
    separator->setCaptionFrame(u"Optionen"_s);
    separator->setCaptionText(u"Line Horzizontal mit Rahmentitel und freiem Text darunter."_s);
    separator->setFrameWidth(2);
    variants->addWidget(separator, 0, 1);

    auto *shadow = new VxCont;
    shadow->setControlStyle(1);
    shadow->setBorderStyle(BorderStyleCode::SingleBlack);
    shadow->setBackColor(0xE1FFFF); // light yellow
    shadow->setWindowColor(0xE1FFFF);
    shadow->setForeColor(0x000000);
    shadow->setCaption(u"Mit Schatten"_s);
    variants->addWidget(shadow, 0, 2);

    auto *header = new VxCont;
    header->setControlStyle(2);
    header->setBorderStyle(BorderStyleCode::SingleLine);
    header->setFrameWidth(0);
    header->setCaBorderStyle(true);
    header->setCaption(u"Kopfbereich"_s);
    header->setAlignment(0);
    header->setCaptionText(u"Freier Text im Arbeitsbereich, der umbricht, wenn er länger ist als eine Zeile."_s);
    variants->addWidget(header, 0, 3);

    auto *rounded = new VxCont;
    rounded->setBorderStyle(BorderStyleCode::ThreedOutIn);
    rounded->setShowBorderShape(true);
    rounded->setBorderWidth(2);
    rounded->setCaption(u"Abgerundet, Linien 2 px"_s);
    variants->addWidget(rounded, 1, 1);

    auto *light = new VxCont;
    light->setBorderStyle(BorderStyleCode::Button);
    light->setLightBorders(true);
    light->setCaption(u"Helle Ränder (&Button)"_s);
    light->setUseMnemonic(true);
    variants->addWidget(light, 1, 2);

    auto *disabled = new VxCont;
    disabled->setBorderStyle(BorderStyleCode::Frame);
    disabled->setCaption(u"Gesperrt"_s);
    disabled->setAlignmentVertical(0);
    disabled->setEnabled(false);
    variants->addWidget(disabled, 1, 3);

    for (int column = 0; column < 4; ++column)
        variants->setColumnStretch(column, 1);
    layout->addLayout(variants, 1);
    return page;
}

QWidget *GalleryWindow::createFloodPage()
{
    auto *page = new QWidget;
    auto *layout = new QGridLayout(page);
    int row = 0;
    const auto addRow = [&](const QString &text, QWidget *widget) {
        layout->addWidget(note(text), row, 0);
        layout->addWidget(widget, row, 1);
        ++row;
    };

    const QString types[] = {u"FloodBarType 0 – gefüllt"_s, u"FloodBarType 1 – Blöcke"_s,
                             u"FloodBarType 2 – plastisch"_s};
    for (int type = 0; type < 3; ++type) {
        VxCont *running = flood(type, 0, true);
        m_runningFloods.append(running);
        addRow(types[type] + u", laufend"_s, running);
    }

    QImage stripes(64, 16, QImage::Format_RGB32);
    QPainter painter(&stripes);
    QLinearGradient gradient(0, 0, 64, 0);
    gradient.setColorAt(0.0, QColor(40, 160, 70));
    gradient.setColorAt(0.5, QColor(230, 200, 40));
    gradient.setColorAt(1.0, QColor(220, 60, 40));
    painter.fillRect(stripes.rect(), gradient);
    painter.end();
    VxCont *image = flood(3, 0, true);
    image->setFloodBackImage(QPixmap::fromImage(stripes));
    m_runningFloods.append(image);
    addRow(u"FloodBarType 3 – FloodBackImage gestreckt"_s, image);

    addRow(u"Fester Stand 0 %"_s, flood(0, 0, true));
    addRow(u"Fester Stand 37 %, ohne Zahl"_s, flood(2, 37, false));
    addRow(u"Fester Stand 100 %"_s, flood(0, 100, true));

    auto *range = flood(1, 0, true);
    range->setFloodType(4);
    range->setMin(-50);
    range->setMax(50);
    range->setValue(25);
    addRow(u"FloodType 4: Value 25 in -50..50"_s, range);

    m_timedFlood = flood(2, 0, true);
    m_timedFlood->setFloodType(4);
    m_timedFlood->setMin(0);
    m_timedFlood->setMax(400);
    m_timedFlood->setFloodColor(0x3C9628); // green
    m_timedFlood->initFloodStartTime();
    addRow(u"Mit Restzeit (Value 0..400)"_s, m_timedFlood);
    m_timeLabel = new QLabel;
    addRow(QString(), m_timeLabel);

    auto *framed = new VxCont;
    framed->setBorderStyle(BorderStyleCode::ThreedInOut);
    framed->setCaptionFrame(u"Bildverarbeitung"_s);
    framed->setFloodType(3);
    framed->setFloodPercent(64);
    framed->setFloodOffset(6);
    framed->setFloodShowPercent(true);
    framed->setFloodBarType(2);
    framed->setFixedHeight(64);
    addRow(u"Im Rahmen mit Titel, FloodOffset 6"_s, framed);

    layout->setColumnStretch(1, 1);
    layout->setRowStretch(row, 1);
    return page;
}

QWidget *GalleryWindow::createPicturePage()
{
    const QString landscape = m_pictures.filePath(u"Landschaft.jpg"_s);
    paintLandscape({1600, 1000}, QColor(70, 130, 200), QColor(60, 140, 70)).save(landscape, "JPEG", 90);
    const QString portrait = m_pictures.filePath(u"Hochformat.png"_s);
    paintLandscape({700, 1050}, QColor(200, 110, 80), QColor(90, 70, 120)).save(portrait, "PNG");

    auto *page = new QWidget;
    auto *layout = new QGridLayout(page);
    const auto addView = [&](int row, int column, const QString &text, VxPict *view, const QString &file) {
        auto *cell = new QVBoxLayout;
        cell->addWidget(view, 1);
        cell->addWidget(note(text));
        layout->addLayout(cell, row, column);
        view->setFileName(file);
    };

    auto *fit = new VxPict;
    fit->setShowPictureToolTip(3);
    fit->setCaption(u"Vorschau"_s);
    addView(0, 0, u"Einpassen (PreviewSize 0), Titel, Tooltip 3"_s, fit, landscape);

    auto *named = new VxPict;
    named->setShowPictureName(true);
    named->setPictureFrameFlat(true);
    named->setShowPictureToolTip(1);
    addView(0, 1, u"Dateiname darunter, flacher Bildrahmen"_s, named, portrait);

    auto *thumbnail = new VxPict;
    thumbnail->setPreviewSize(PreviewSizeMode::Thumbnail);
    thumbnail->setPictureAlignment(0);
    thumbnail->setBorderStyle(BorderStyleCode::SingleLine);
    addView(0, 2, u"Miniatur (ThumbnailHeight 110), oben links"_s, thumbnail, landscape);

    auto *corner = new VxPict;
    corner->setZoomfaktor(0.5);
    corner->setPictureAlignment(8);
    corner->setBorderStyle(BorderStyleCode::Button);
    addView(1, 0, u"Zoomfaktor 0,5, unten rechts, Rahmen Button"_s, corner, portrait);

    auto *zoomed = new VxPict;
    zoomed->setZoomfaktor(2.5);
    zoomed->setOuterOffset(8);
    zoomed->setBorderStyle(BorderStyleCode::ThreedInOut);
    addView(1, 1, u"Zoomfaktor 2,5, mittig, OuterOffset 8"_s, zoomed, landscape);

    auto *missing = new VxPict;
    missing->setShowPictureToolTip(3);
    missing->setCaption(u"Nicht lesbar"_s);
    addView(1, 2, u"Datei fehlt: leere Fläche, kein Absturz"_s, missing, m_pictures.filePath(u"fehlt.jpg"_s));

    // A picture that arrives as base64 text, decoded in memory.
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    paintLandscape({480, 320}, QColor(120, 90, 200), QColor(200, 150, 60)).save(&buffer, "PNG");
    Base64Encoding codec;
    auto *encoded = new VxPict;
    encoded->setShowPictureToolTip(1);
    encoded->setBorderStyle(BorderStyleCode::ThreedOutIn);
    encoded->setPictureB64Buffer(Base64Encoding::span(76, codec.encodeB64(png)));
    auto *encodedCell = new QVBoxLayout;
    encodedCell->addWidget(encoded, 1);
    encodedCell->addWidget(note(u"PictureB64Buffer: Base64-Text, in Zeilen zu 76 Zeichen"_s));
    layout->addLayout(encodedCell, 0, 3);

    auto *stretched = new VxPict;
    stretched->setPreviewSize(PreviewSizeMode::Stretch);
    stretched->setPictureOffset(0);
    stretched->setShowPictureFrame(false);
    stretched->setBorderStyle(BorderStyleCode::SingleBorder);
    addView(1, 3, u"Strecken (PreviewSize 3), ohne Bildrahmen"_s, stretched, portrait);

    for (int column = 0; column < 4; ++column)
        layout->setColumnStretch(column, 1);
    return page;
}

QWidget *GalleryWindow::createCardPage()
{
    // The cards are siblings of the switcher, found by their object names;
    // positions are in twips (1440 per inch).
    auto *page = new QWidget;
    m_cardPage = page;
    auto *back = new QPushButton(u"< Zurück"_s, page);
    auto *next = new QPushButton(u"Weiter >"_s, page);
    auto *title = new QLabel(page);
    back->move(10, 8);
    next->move(10 + back->sizeHint().width() + 8, 8);
    title->move(next->x() + next->sizeHint().width() + 16, 14);
    title->resize(600, title->sizeHint().height());

    const auto card = [page](const QString &name) {
        auto *box = new VxInvisibleCont(page);
        box->setObjectName(name);
        auto *layout = new QVBoxLayout(box);
        layout->setContentsMargins(0, 0, 0, 0);
        return std::make_pair(box, layout);
    };

    auto [sources, sourceLayout] = card(u"boxSEL"_s);
    auto *file = new VxLineIn;
    file->setCaption(u"Quelldatei :"_s);
    file->setCommandStyle(1);
    file->setDlgFileType(u"JPEG-Dateien"_s);
    file->setDlgFileExtension(u"*.jpg;*.jpeg"_s);
    file->setText(u"/home/anna/Bilder/Urlaub/IMG_0001.JPG"_s);
    sourceLayout->addWidget(file);
    auto *shown = new VxLineIn;
    shown->setCaption(u"Anzeige :"_s);
    shown->setControlStyle(3);
    shown->setButtonShow(false);
    shown->setText(u"412 Dateien, 2,3 GB"_s);
    sourceLayout->addWidget(shown);
    auto *keep = new VxLineIn;
    keep->setCaption(u"Datum :"_s);
    keep->setCheckboxShow(true);
    keep->setValue(true);
    keep->setButtonShow(false);
    keep->setText(u"Dateidatum beibehalten"_s);
    sourceLayout->addWidget(keep);
    sourceLayout->addStretch(1);

    auto [parameters, parameterLayout] = card(u"boxPRM"_s);
    auto *format = new VxLineIn;
    format->setCaption(u"Format :"_s);
    format->setControlStyle(1);
    format->setComboStyle(2);
    format->setButtonShow(false);
    format->addItem(u"JPEG"_s, 0, u"JPG"_s);
    format->addItem(u"PNG"_s, 1, u"PNG"_s);
    format->setListIndex(0);
    parameterLayout->addWidget(format);
    auto *width = new VxLineIn;
    width->setCaption(u"Breite :"_s);
    width->setControlStyle(4);
    width->setTextMask(u"0123456789"_s);
    width->setButtonShow(false);
    width->setText(u"1024"_s);
    parameterLayout->addWidget(width);
    auto *target = new VxLineIn;
    target->setCaption(u"Zielverzeichnis :"_s);
    target->setCommandStyle(3);
    target->setText(u"/home/anna/Bilder/klein"_s);
    parameterLayout->addWidget(target);
    auto *notes = new VxLineIn;
    notes->setCaption(u"Notiz :"_s);
    notes->setControlStyle(2);
    notes->setText(u"Mehrzeilige Eingabe\nmit zweiter Zeile"_s);
    notes->setMinimumHeight(60);
    parameterLayout->addWidget(notes);
    parameterLayout->addStretch(1);

    auto [run, runLayout] = card(u"boxDO"_s);
    auto *status = new VxCont;
    status->setBorderStyle(BorderStyleCode::PictureBox);
    status->setFrameWidth(1);
    status->setBackColor(SystemColor::Window);
    status->setWindowColor(SystemColor::Window);
    status->setFloodType(3);
    status->setFloodBarType(2);
    status->setFloodShowPercent(true);
    status->setFloodPercent(42);
    status->setFixedHeight(28);
    runLayout->addWidget(status);
    auto *preview = new VxPict;
    preview->setPicture(paintLandscape({640, 400}, QColor(60, 120, 190), QColor(80, 130, 60)));
    runLayout->addWidget(preview, 1);

    auto *switcher = new VxActCtrl(page);
    switcher->setCtlNames(u"boxSEL;boxPRM;boxDO"_s);
    switcher->setCtlDisplays(u"Quelldateien;Parameter;Bildverarbeitung"_s);
    switcher->setCtlWidth(u"0;0;"_s);
    switcher->setCtlHeight(u"0;0;"_s);
    switcher->setContainerLeft(150);
    switcher->setContainerTop(750);
    switcher->setContainerWidth(10500);
    switcher->setContainerHeight(5400);
    switcher->setActiveControl(1);
    m_switcher = switcher;

    const auto showTitle = [switcher, title] {
        title->setText(u"Karte %1 von 3: %2"_s.arg(switcher->activeControl())
                           .arg(switcher->getControlDisplay(switcher->activeControl())));
    };
    showTitle();
    connect(switcher, &VxActCtrl::activeControlChanged, title, showTitle);
    connect(back, &QPushButton::clicked, switcher, &VxActCtrl::prevControlX);
    connect(next, &QPushButton::clicked, switcher, &VxActCtrl::nextControlX);
    return page;
}

void GalleryWindow::freezeFloods(int steps)
{
    m_floodTimer.stop();
    m_timedFlood->setFloodClock([this] { return m_step * 0.12; });
    m_timedFlood->initFloodStartTime();
    while (m_step < steps)
        advanceFlood();
}

void GalleryWindow::advanceFlood()
{
    ++m_step;
    for (qsizetype i = 0; i < m_runningFloods.size(); ++i)
        m_runningFloods[i]->setFloodPercent(int((m_step * (2 + i) + 20 * i) % 101));
    if (m_timedFlood->value() >= m_timedFlood->max()) {
        m_timedFlood->setValue(0);
        m_timedFlood->initFloodStartTime();
    }
    m_timedFlood->setValue(m_timedFlood->value() + 3);
    const QLocale german(QLocale::German);
    m_timeLabel->setText(u"Verstrichen: %1 s, verbleibend: %2 s"_s.arg(
        german.toString(m_timedFlood->aktualFloodTime(), 'f', 1),
        german.toString(m_timedFlood->aktualFloodRemainingTime(), 'f', 1)));
}

} // namespace valtrona
