#include "app/sourcecard.h"

#include <QApplication>
#include <QDir>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>

#include "app/sourcelist.h"
#include "app/userdialogs.h"
#include "app/widgetfactory.h"
#include "controls/vxcont.h"
#include "controls/vxpict.h"
#include "core/fileservices.h"

namespace valtrona {

namespace {

// Every format the imaging library here reads well. Qt's own file dialog
// matches the patterns ignoring letter case, so "*.jpg" also shows "A.JPG".
QString imageFileFilter()
{
    return QStringLiteral("Bilddateien (*.jpg *.jpeg *.jpe *.gif *.bmp *.png *.tif *.tiff *.webp *.heic *.heif "
                          "*.avif *.jxl)");
}

} // namespace

SourceCard::SourceCard(std::shared_ptr<UserDialogs> dialogs, std::shared_ptr<PictureLoader> loader, QWidget *parent)
    : VxInvisibleCont(parent)
    , m_dialogs(std::move(dialogs))
{
    setObjectName(QStringLiteral("boxSEL"));
    VxCont *frame = makeCardFrame(this, QStringLiteral("Quelldateien wählen"));

    auto *grid = new QGridLayout(frame);
    m_sourceList = new SourceList(frame);
    m_sourceList->setObjectName(QStringLiteral("lv"));
    grid->addWidget(makeBuddyLabel(QStringLiteral("&Quelldateien wählen :"), m_sourceList, frame), 0, 0);
    grid->addWidget(m_sourceList, 1, 0);

    m_sourcePreview = makePreview(QStringLiteral("PRV"), std::move(loader), frame);
    grid->addWidget(m_sourcePreview, 1, 1);
    grid->setColumnStretch(0, 1);

    auto *buttons = new QHBoxLayout;
    m_openFilesButton = makeButton(QStringLiteral("cmdOpen"), QStringLiteral("&Bilder laden"), frame);
    m_openFilesButton->setToolTip(QStringLiteral("Bilder zur Verarbeitung laden"));
    m_openFolderButton = makeButton(QStringLiteral("cmdOpenF"), QStringLiteral("&Verzeichnis laden"), frame);
    m_openFolderButton->setToolTip(QStringLiteral("Bilder zur Verarbeitung laden"));
    m_removeButton = makeButton(QStringLiteral("cmdRemove"), QStringLiteral("Bild(er) &entfernen"), frame);
    m_removeButton->setToolTip(QStringLiteral("Bild aus Auswahl entfernen"));
    m_removeAllButton = makeButton(QStringLiteral("cmdRemoveAll"), QStringLiteral("&Alle entfernen"), frame);
    m_removeAllButton->setToolTip(QStringLiteral("Alle Bilder entfernen..."));
    for (QPushButton *button : {m_openFilesButton, m_openFolderButton, m_removeButton, m_removeAllButton})
        buttons->addWidget(button);
    buttons->addStretch(1);
    grid->addLayout(buttons, 2, 0, 1, 2);

    connect(m_openFilesButton, &QPushButton::clicked, this, &SourceCard::openFiles);
    connect(m_openFolderButton, &QPushButton::clicked, this, &SourceCard::openFolder);
    connect(m_removeButton, &QPushButton::clicked, this, &SourceCard::removeSelected);
    connect(m_removeAllButton, &QPushButton::clicked, this, &SourceCard::removeAll);
    connect(m_sourceList, &SourceList::previewRequested, this, &SourceCard::showPreview);
    auto *removeKey = new QShortcut(QKeySequence::Delete, m_sourceList);
    removeKey->setContext(Qt::WidgetShortcut);
    connect(removeKey, &QShortcut::activated, m_removeButton, &QPushButton::click);
}

SourceList *SourceCard::list() const
{
    return m_sourceList;
}

QString SourceCard::check() const
{
    if (m_sourceList->count() == 0)
        return QStringLiteral("Sie haben keine Quelldateien gewählt !");
    return QString();
}

QStringList SourceCard::addStartPaths(const QStringList &paths)
{
    QStringList existing;
    QStringList missing;
    for (const QString &path : paths) {
        const QString absolute = path.isEmpty() ? QString() : QDir::cleanPath(QDir::current().absoluteFilePath(path));
        if (files::pathExists(absolute))
            existing.append(absolute);
        else
            missing.append(path);
    }
    const QStringList sources = files::expandFolders(existing, false);
    if (!sources.isEmpty()) {
        m_sourceList->addSourceFiles(sources);
        Q_EMIT sourcesChanged();
    }
    return missing;
}

void SourceCard::clear()
{
    m_sourceList->removeAll();
    m_sourceList->showPreview();
    Q_EMIT sourcesChanged();
}

void SourceCard::openFiles()
{
    const QStringList filters = {
        imageFileFilter(),
        QStringLiteral("Alle Dateien (*.*)"),
    };
    const QStringList files = m_dialogs->openFiles(window(), QStringLiteral("Dateien wählen :"), filters);
    if (files.isEmpty())
        return;
    m_sourceList->addSourceFiles(files);
    Q_EMIT sourcesChanged();
}

void SourceCard::openFolder()
{
    const QString folder = m_dialogs->chooseFolder(
        window(), QStringLiteral("Verzeichnis für Konvertierung wählen (JPG) : "), m_lastSourceFolder);
    if (folder.isEmpty())
        return;
    m_lastSourceFolder = folder;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const auto photos = files::listJpegFiles(folder);
    QApplication::restoreOverrideCursor();
    if (!photos || photos->isEmpty())
        return;
    m_sourceList->addSourceFiles(*photos);
    Q_EMIT sourcesChanged();
}

void SourceCard::removeSelected()
{
    m_sourceList->removeSelected();
    Q_EMIT sourcesChanged();
}

void SourceCard::removeAll()
{
    if (m_sourceList->count() > 0
        && m_dialogs->askYesNo(window(), QStringLiteral("Entfernen"),
                               QStringLiteral("Wollen Sie alle Bilder aus der Auswahl entfernen ?"))) {
        m_sourceList->removeAll();
    }
    m_sourceList->forgetPreviewItem();
    m_sourceList->showPreview();
    Q_EMIT sourcesChanged();
}

void SourceCard::showPreview(const QString &path)
{
    if (path.isEmpty()) {
        m_sourcePreview->cls();
        return;
    }
    if (path != m_sourcePreview->fileName())
        m_sourcePreview->setFileName(path);
}

} // namespace valtrona
