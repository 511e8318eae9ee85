#include "app/userdialogs.h"

#include <QFileDialog>
#include <QMessageBox>

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

QStringList StandardDialogs::openFiles(QWidget *parent, const QString &title, const QStringList &filters)
{
    return QFileDialog::getOpenFileNames(parent, title, QString(), filters.join(QStringLiteral(";;")));
}

QString StandardDialogs::chooseFolder(QWidget *parent, const QString &prompt, const QString &startFolder)
{
    return QFileDialog::getExistingDirectory(parent, prompt, startFolder);
}

} // namespace valtrona
