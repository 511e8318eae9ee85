#include "app/userdialogs.h"

#include <QFileDialog>
#include <QFontMetrics>
#include <QGridLayout>
#include <QHeaderView>
#include <QMessageBox>
#include <QTreeView>

#include <memory>

namespace valtrona {

UserDialogs::~UserDialogs() = default;

int StandardDialogs::titleBarRoom(const QString &title, const QWidget *widget)
{
    // Window frames set the title in bold beside an icon and up to three
    // buttons; Qt's own allowance of 50 pixels leaves short boxes with a
    // title cut in the middle ("GDI Par…terhilfe").
    QFont font = widget->font();
    font.setBold(true);
    const QFontMetrics metrics(font);
    return metrics.horizontalAdvance(title) + 6 * metrics.height();
}

QMessageBox *StandardDialogs::createMessageBox(QWidget *parent, QMessageBox::Icon icon, const QString &title,
                                               const QString &text, QMessageBox::StandardButtons buttons)
{
    auto *box = new QMessageBox(icon, title, text, buttons, parent);
    // The box takes the width its layout needs; an empty row as wide as
    // the title bar needs keeps the title whole.
    if (auto *grid = qobject_cast<QGridLayout *>(box->layout())) {
        grid->addItem(new QSpacerItem(titleBarRoom(title, box), 0, QSizePolicy::Fixed, QSizePolicy::Minimum),
                      grid->rowCount(), 0, 1, grid->columnCount());
    }
    return box;
}

void StandardDialogs::information(QWidget *parent, const QString &title, const QString &text)
{
    const std::unique_ptr<QMessageBox> box(
        createMessageBox(parent, QMessageBox::Information, title, text, QMessageBox::Ok));
    box->exec();
}

bool StandardDialogs::askYesNo(QWidget *parent, const QString &title, const QString &text)
{
    const std::unique_ptr<QMessageBox> box(
        createMessageBox(parent, QMessageBox::Question, title, text, QMessageBox::Yes | QMessageBox::No));
    box->setDefaultButton(QMessageBox::Yes);
    return box->exec() == QMessageBox::Yes;
}

void StandardDialogs::plainMessage(QWidget *parent, const QString &title, const QString &text)
{
    const std::unique_ptr<QMessageBox> box(createMessageBox(parent, QMessageBox::NoIcon, title, text, QMessageBox::Ok));
    box->exec();
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
