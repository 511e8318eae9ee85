#pragma once

#include <QList>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTimer>

class QLabel;

namespace valtrona {

class VxActCtrl;
class VxCont;
class VxPict;

/// The gallery: one page per kind of control, each showing its variants.
class GalleryWindow : public QTabWidget
{
    Q_OBJECT

public:
    explicit GalleryWindow(QWidget *parent = nullptr);

    /// Saves every page as `<prefix>-<n>.png`, each card of the card page as
    /// `<prefix>-<n>-<card>.png`; false when one could not be written.
    bool saveScreenshots(const QString &prefix);
    /// Stops the running floods after `steps` steps of a clock that moves
    /// 0.12 s a step, so screenshots of two builds can be compared pixel
    /// by pixel.
    void freezeFloods(int steps);

private:
    QWidget *createBorderPage();
    QWidget *createFloodPage();
    QWidget *createPicturePage();
    QWidget *createCardPage();
    void advanceFlood();

    QTemporaryDir m_pictures;
    QList<VxCont *> m_runningFloods;
    VxActCtrl *m_switcher = nullptr;
    QWidget *m_cardPage = nullptr;
    VxCont *m_timedFlood = nullptr;
    QLabel *m_timeLabel = nullptr;
    QTimer m_floodTimer;
    int m_step = 0;
};

} // namespace valtrona
