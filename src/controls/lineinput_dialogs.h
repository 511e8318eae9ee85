#pragma once

#include <memory>

#include <QString>
#include <QStringList>

class QWidget;

namespace valtrona {

/// The file and folder dialogs a line input opens from its button. Each call
/// returns the choice, or an empty result when the user cancels. Replaceable
/// so a host or a test can answer without a modal window.
class LineInputDialogs
{
public:
    virtual ~LineInputDialogs();

    /// `start` is a path whose directory the dialog opens and whose file name
    /// it proposes; `filter` is a Qt name filter list ("A (*.a);;B (*.b)").
    virtual QString openFile(QWidget *parent, const QString &caption, const QString &start,
                             const QString &filter) = 0;
    virtual QStringList openFiles(QWidget *parent, const QString &caption, const QString &start,
                                  const QString &filter) = 0;
    virtual QString saveFile(QWidget *parent, const QString &caption, const QString &start,
                             const QString &filter) = 0;
    /// `foldersOnly` hides the files between the folders.
    virtual QString chooseFolder(QWidget *parent, const QString &caption, const QString &start,
                                 bool foldersOnly) = 0;
};

/// Qt's standard file dialogs (in the application's language). They start in
/// the nearest existing folder of the start path, and list every file under
/// the all-files entry, which they show as "(*)".
std::shared_ptr<LineInputDialogs> standardLineInputDialogs();

/// The dialog filter for "|"-separated file type names and extensions: one
/// entry "type (*.ext)" per pair present in both lists, then "Alle Dateien
/// (*.*)". Entries are separated by ";;".
QString lineInputFilter(const QString &fileTypes, const QString &extensions);

/// The path a dialog starts from: the line's text (its first path if it holds
/// several), with `defaultFilename` as the proposed name.
QString lineInputStartPath(const QString &text, const QString &defaultFilename);

} // namespace valtrona
