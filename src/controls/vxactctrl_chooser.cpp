#include "controls/vxactctrl.h"

#include <QDialogButtonBox>
#include <QListWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace valtrona {

QList<CardChoice> VxActCtrl::chooserChoices() const
{
    QList<CardChoice> choices;
    for (int number = 1; number <= m_controlCount; ++number)
        choices.append({u"%1 - "_s.arg(number, 2, 10, QLatin1Char('0')) % getControlDisplay(number), number});
    return choices;
}

int VxActCtrl::activeControlDlg()
{
    if (m_terminated)
        return 0;
    if (m_designMode) {
        showControlMessage(this, controlText(ControlText::NotAtDesignTime));
        return 0;
    }
    const QList<CardChoice> choices = chooserChoices();
    int chosen = 0;
    if (m_chooser) {
        chosen = m_chooser(window(), choices, m_activeControl);
    } else {
        VxActCtrlChooser dialog(choices, m_activeControl, window());
        if (dialog.exec() == QDialog::Accepted)
            chosen = dialog.chosenNumber();
    }
    if (chosen < 1 || chosen > m_controlCount)
        return 0;
    setActiveControl(chosen);
    return chosen;
}

void VxActCtrl::setChooser(ChooserFunction chooser)
{
    m_chooser = std::move(chooser);
}

VxActCtrlChooser::VxActCtrlChooser(const QList<CardChoice> &choices, int current, QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(controlText(ControlText::ChooserCaption));
    m_list = new QListWidget(this);
    for (const CardChoice &choice : choices) {
        auto *item = new QListWidgetItem(choice.text, m_list);
        item->setData(Qt::UserRole, choice.number);
        if (choice.number == current)
            m_list->setCurrentItem(item);
    }
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_list, &QListWidget::itemDoubleClicked, this, &QDialog::accept);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_list);
    layout->addWidget(buttons);
}

int VxActCtrlChooser::chosenNumber() const
{
    const QListWidgetItem *item = m_list->currentItem();
    return item && item->isSelected() ? item->data(Qt::UserRole).toInt() : 0;
}

QListWidget *VxActCtrlChooser::list() const
{
    return m_list;
}

} // namespace valtrona
