#include "app/userdialogs.h"

#include <QFileDialog>
#include <QHeaderView>
#include <QMessageBox>
#include <QTreeView>

#include <memory>

namespace valtrona {

UserDialogs::~UserDialogs() = default;

void StandardDialogs::information(QWidget *parent, const QString &title, const QString &text)
{
    QMessageBox::information(parent, title, text);
}

bool StandardDialogs::askYesNo(QWidget *parent, const QString &title, const QString &text)
{
    return QMessageBox::question(parent, title, text, QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes)
        == QMessageBox::Yes;
}

void StandardDialogs::plainMessage(QWidget *parent, const QString &title, const QString &text)
{
    QMessageBox box(QMessageBox::NoIcon, title, text, QMessageBox::Ok, parent);
    box.exec();
}

QFileDialog *StandardDialogs::createOpenDialog(QWidget *parent, const QString &title, const QStringList &filters)
{
    auto *dialog = new QFileDialog(parent, title);
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setNameFilters(filters);
    // Qt's default size and column widths elide size, type and date.
    dialog->resize(880, 540);
    if (auto *details = dialog->findChild<QTreeView *>(QStringLiteral("treeView"))) {
        const int widths[] = {280, 110, 150, 170};
        for (int column = 0; column < 4; ++column)
            details->header()->resizeSection(column, widths[column]);
    }
    return dialog;
}

QFileDialog *StandardDialogs::createFolderDialog(QWidget *parent, const QString &prompt, const QString &startFolder)
{
    auto *dialog = new QFileDialog(parent, prompt, startFolder);
    dialog->setOption(QFileDialog::DontUseNativeDialog);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    dialog->resize(880, 540);
    return dialog;
}

QStringList StandardDialogs::openFiles(QWidget *parent, const QString &title, const QStringList &filters)
{
    const std::unique_ptr<QFileDialog> dialog(createOpenDialog(parent, title, filters));
    return dialog->exec() == QDialog::Accepted ? dialog->selectedFiles() : QStringList();
}

QString StandardDialogs::chooseFolder(QWidget *parent, const QString &prompt, const QString &startFolder)
{
    const std::unique_ptr<QFileDialog> dialog(createFolderDialog(parent, prompt, startFolder));
    if (dialog->exec() != QDialog::Accepted)
        return QString();
    return dialog->selectedFiles().value(0);
}

} // namespace valtrona
