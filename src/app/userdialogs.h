#pragma once

#include <QMessageBox>
#include <QString>
#include <QStringList>

class QFileDialog;
class QWidget;

namespace valtrona {

/// Every modal question and message the windows show goes through this
/// interface, so a test can answer them without a blocking dialog.
class UserDialogs
{
public:
    virtual ~UserDialogs();

    /// Message with the information icon and an OK button.
    virtual void information(QWidget *parent, const QString &title, const QString &text) = 0;
    /// Yes/No question with the question icon; true for Yes.
    virtual bool askYesNo(QWidget *parent, const QString &title, const QString &text) = 0;
    /// Message with only an OK button and no icon; an empty title leaves
    /// the box without a title of its own.
    virtual void plainMessage(QWidget *parent, const QString &title, const QString &text) = 0;
    /// Open dialog with multiple selection; empty when cancelled.
    virtual QStringList openFiles(QWidget *parent, const QString &title, const QStringList &filters) = 0;
    /// Folder dialog starting at startFolder; empty when cancelled.
    virtual QString chooseFolder(QWidget *parent, const QString &prompt, const QString &startFolder) = 0;
};

/// The real dialogs: QMessageBox and Qt's own QFileDialog (not the
/// desktop's), so they read German with the program and match file
/// extensions in any letter case.
class StandardDialogs : public UserDialogs
{
public:
    /// The open dialog as openFiles() shows it: multiple existing files,
    /// the given filter rows, no start folder. The caller owns it.
    static QFileDialog *createOpenDialog(QWidget *parent, const QString &title, const QStringList &filters);
    /// The folder dialog as chooseFolder() shows it. The caller owns it.
    static QFileDialog *createFolderDialog(QWidget *parent, const QString &prompt, const QString &startFolder);
    /// A message box as the methods below show it, wide enough that the
    /// window frame can show its whole title. The caller owns it.
    static QMessageBox *createMessageBox(QWidget *parent, QMessageBox::Icon icon, const QString &title,
                                         const QString &text, QMessageBox::StandardButtons buttons);
    /// The width a window needs for its title in the frame's bold font
    /// beside the frame's icon and buttons.
    static int titleBarRoom(const QString &title, const QWidget *widget);

    void information(QWidget *parent, const QString &title, const QString &text) override;
    bool askYesNo(QWidget *parent, const QString &title, const QString &text) override;
    void plainMessage(QWidget *parent, const QString &title, const QString &text) override;
    QStringList openFiles(QWidget *parent, const QString &title, const QStringList &filters) override;
    QString chooseFolder(QWidget *parent, const QString &prompt, const QString &startFolder) override;
};

} // namespace valtrona
