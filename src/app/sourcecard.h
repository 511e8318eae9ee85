#pragma once

#include <QString>
#include <QStringList>

#include <memory>

#include "controls/vxinvisiblecont.h"

class QPushButton;

namespace valtrona {

class PictureLoader;
class SourceList;
class UserDialogs;
class VxPict;

/// Card 1, "Quelldateien" (boxSEL): the list of source images with its
/// preview, and the buttons that add files, a folder's photos, or remove
/// rows. The Delete key in the list removes like "Bild(er) entfernen".
class SourceCard : public VxInvisibleCont
{
    Q_OBJECT

public:
    /// `dialogs` answers the open, folder and remove questions; `loader`
    /// reads the preview.
    SourceCard(std::shared_ptr<UserDialogs> dialogs, std::shared_ptr<PictureLoader> loader,
               QWidget *parent = nullptr);

    /// The list view "lv".
    SourceList *list() const;

    /// The message that keeps the user on this card ("Sie haben keine
    /// Quelldateien gewählt !"); empty when the list has rows.
    QString check() const;

    /// Adds the files and folders given: each path made absolute against
    /// the working directory, folders walked as "Verzeichnis laden" walks
    /// them, files taken in the given order. Returns the paths that do not
    /// exist (they are skipped).
    QStringList addStartPaths(const QStringList &paths);

    /// Empties the list without asking and clears the preview ("Reset").
    void clear();

Q_SIGNALS:
    /// Rows were added or removed through the card; the window shows the
    /// count (drops only change the rows, and the count follows those).
    void sourcesChanged();

private:
    void openFiles();
    void openFolder();
    void removeSelected();
    void removeAll();
    void showPreview(const QString &path);

    std::shared_ptr<UserDialogs> m_dialogs;
    QString m_lastSourceFolder;
    SourceList *m_sourceList = nullptr;
    VxPict *m_sourcePreview = nullptr;
    QPushButton *m_openFilesButton = nullptr;
    QPushButton *m_openFolderButton = nullptr;
    QPushButton *m_removeButton = nullptr;
    QPushButton *m_removeAllButton = nullptr;
};

} // namespace valtrona
