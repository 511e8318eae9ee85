#include "controls/vxpict.h"

#include <QActionGroup>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMenu>
#include <QSaveFile>

using namespace Qt::StringLiterals;

namespace valtrona {

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
    const auto mean = [count](quint64 sum) { return static_cast<int>(roundHalfEven(double(sum) / count)); };
    return colorValueFromColor(QColor(mean(red), mean(green), mean(blue)));
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
    const std::pair<PreviewSize, QString> sizes[] = {{PreviewSize::Fit, u"Einpassen"_s},
                                                     {PreviewSize::Original, u"Originalgröße"_s},
                                                     {PreviewSize::Thumbnail, u"Miniatur"_s},
                                                     {PreviewSize::Stretch, u"Strecken"_s}};
    for (const auto &[mode, text] : sizes) {
        const int code = int(mode);
        QAction *action = size->addAction(text, this, [this, code] { setPreviewSize(code); });
        action->setCheckable(true);
        action->setChecked(code == m_previewSize);
        modes->addAction(action);
    }
    menu->addSeparator();
    menu->addAction(u"Vergrößern"_s, this, [this] { zoomIncrease(1); });
    menu->addAction(u"Verkleinern"_s, this, [this] { zoomIncrease(-1); });
    QAction *reset = menu->addAction(u"Zoom 100 %"_s, this, [this] { setZoomfaktor(1.0); });
    reset->setEnabled(m_zoomfaktor != 1.0);
    return menu;
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

} // namespace valtrona
