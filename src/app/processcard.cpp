#include "app/processcard.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QProgressBar>
#include <QPushButton>

#include <algorithm>

#include "app/imagingpictureloader.h"
#include "app/statuslist.h"
#include "app/widgetfactory.h"
#include "controls/vxcont.h"
#include "controls/vxpict.h"

namespace valtrona {

ProcessCard::ProcessCard(std::shared_ptr<ImagingPictureLoader> loader, QWidget *parent)
    : VxInvisibleCont(parent)
    , m_loader(std::move(loader))
{
    setObjectName(QStringLiteral("boxDO"));
    VxCont *frame = makeCardFrame(this, QStringLiteral("Bilder verarbeiten"));
    auto *grid = new QGridLayout(frame);

    m_progressBar = new QProgressBar(frame);
    m_progressBar->setObjectName(QStringLiteral("prog"));
    m_progressBar->setRange(0, 1);
    m_progressBar->setValue(0);
    grid->addWidget(m_progressBar, 0, 0, 1, 2);

    m_statusList = new StatusList(frame);
    m_statusList->setObjectName(QStringLiteral("lvStat"));
    grid->addWidget(m_statusList, 1, 0);

    m_runPreview = makePreview(QStringLiteral("picPrev"), m_loader, frame);
    grid->addWidget(m_runPreview, 1, 1);
    grid->setColumnStretch(0, 1);

    m_stopButton = makeButton(QStringLiteral("cmdStop"), QStringLiteral("Abbruch"), frame);
    m_stopButton->setToolTip(QStringLiteral("Esc"));
    m_stopButton->setEnabled(false);
    auto *stopRow = new QHBoxLayout;
    stopRow->addStretch(1);
    stopRow->addWidget(m_stopButton);
    grid->addLayout(stopRow, 2, 0, 1, 2);

    connect(m_stopButton, &QPushButton::clicked, this, &ProcessCard::stopClicked);
    connect(m_statusList, &StatusList::rowClicked, this, [this](const QString &path) {
        if (path != m_runPreview->fileName())
            m_runPreview->setFileName(path);
    });
}

StatusList *ProcessCard::statusList() const
{
    return m_statusList;
}

void ProcessCard::startRun(int count)
{
    m_statusList->clear();
    m_progressBar->setRange(0, std::max(1, count));
    m_progressBar->setValue(0);
    m_stopButton->setEnabled(true);
}

void ProcessCard::setProgress(int index)
{
    m_progressBar->setValue(index);
}

void ProcessCard::endRun(bool keepFocus)
{
    m_progressBar->setValue(0);
    if (keepFocus)
        m_statusList->setFocus(Qt::OtherFocusReason); // before "Abbruch" goes grey
    m_stopButton->setEnabled(false);
}

QSize ProcessCard::previewBox() const
{
    return m_runPreview->size() * m_runPreview->devicePixelRatioF();
}

void ProcessCard::showReadPreview(const QString &path, const LoadedPicture &picture)
{
    m_loader->prime(path, picture);
    m_runPreview->setFileName(path);
}

void ProcessCard::clearPreview()
{
    m_runPreview->cls();
}

} // namespace valtrona
