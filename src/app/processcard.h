#pragma once

#include <QSize>
#include <QString>

#include <memory>

#include "controls/vxinvisiblecont.h"

class QProgressBar;
class QPushButton;

namespace valtrona {

class ImagingPictureLoader;
struct LoadedPicture;
class StatusList;
class VxPict;

/// Card 3, "Bildverarbeitung" (boxDO): the progress bar, the status rows a
/// run writes, the preview of the file in hand and "Abbruch". A click (or
/// Enter) on a row with a path shows that file in the preview.
class ProcessCard : public VxInvisibleCont
{
    Q_OBJECT

public:
    /// `loader` reads the preview and takes pictures read ahead by the run.
    explicit ProcessCard(std::shared_ptr<ImagingPictureLoader> loader, QWidget *parent = nullptr);

    /// The status list "lvStat".
    StatusList *statusList() const;

    /// Empties the rows, sets the bar for `count` files and enables "Abbruch".
    void startRun(int count);
    /// File `index` of the run has started.
    void setProgress(int index);
    /// The bar back to 0 and "Abbruch" off. With `keepFocus` (the card is
    /// shown) the rows take the focus first, so it never falls on a button.
    void endRun(bool keepFocus);

    /// The size, in device pixels, a preview is read for.
    QSize previewBox() const;
    /// Shows a picture read ahead for `path`.
    void showReadPreview(const QString &path, const LoadedPicture &picture);
    void clearPreview();

Q_SIGNALS:
    /// "Abbruch" was pressed.
    void stopClicked();

private:
    std::shared_ptr<ImagingPictureLoader> m_loader;
    QProgressBar *m_progressBar = nullptr;
    StatusList *m_statusList = nullptr;
    VxPict *m_runPreview = nullptr;
    QPushButton *m_stopButton = nullptr;
};

} // namespace valtrona
