#include "controls/vxlinein.h"

#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QGuiApplication>
#include <QLineEdit>
#include <QTimer>

#include "controls/controlproperties.h"
#include "controls/lineinput_dialogs.h"

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

constexpr int itemDataRole = Qt::UserRole;
constexpr int itemTagRole = Qt::UserRole + 1;

} // namespace

// --- The click sequence ----------------------------------------------------

void VxLineIn::clickButton()
{
    if (m_terminated)
        return;
    if (m_designMode) {
        showControlMessage(this, controlText(ControlText::NotAtDesignTime));
        return;
    }
    const QString before = m_text;
    Q_EMIT beforeButtonClicked();
    // A host slot may have terminated the control.
    if (!m_terminated) {
        if (controlStyleKind() == ControlStyle::Combo) {
            if (commandStyleKind() == CommandStyle::Clear)
                clearCombo();
            else
                Q_EMIT buttonClicked();
        } else {
            runCommand();
        }
    }
    if (!m_suppressFocus && !m_terminated) {
        setActive();
        QCoreApplication::processEvents();
    }
    Q_EMIT afterButtonClicked();
    if (m_text != before) {
        m_edited = true;
        Q_EMIT change();
    }
    Q_EMIT afterButtonClickedFinished();
}

void VxLineIn::runCommand()
{
    LineInputDialogs &dialogs = m_dialogs ? *m_dialogs : *standardLineInputDialogs();
    const QString start = lineInputStartPath(m_text, m_defaultFilename);
    QString result;
    bool chosen = false;
    switch (commandStyleKind()) {
    case CommandStyle::Clear:
        result.clear();
        chosen = true;
        break;
    case CommandStyle::OpenFile: {
        const QString caption = m_dlgOpenCaption.isEmpty() ? controlText(ControlText::OpenCaption) : m_dlgOpenCaption;
        result = dialogs.openFile(dialogOwner(), caption, start, dialogFilter());
        chosen = !result.isEmpty();
        break;
    }
    case CommandStyle::SaveFile: {
        const QString caption = m_dlgSaveCaption.isEmpty() ? controlText(ControlText::SaveCaption) : m_dlgSaveCaption;
        result = dialogs.saveFile(dialogOwner(), caption, start, dialogFilter());
        chosen = !result.isEmpty();
        break;
    }
    case CommandStyle::ChooseFolder: {
        const QString caption = m_dlgPathCaption.isEmpty() ? controlText(ControlText::PathCaption) : m_dlgPathCaption;
        const QString startDir = m_text.section(QLatin1Char('|'), 0, 0).trimmed();
        const bool foldersOnly =
            enumFromCode(m_dlgFolderStyle, FolderStyle::FilesAndFolders) == FolderStyle::FoldersOnly;
        result = dialogs.chooseFolder(dialogOwner(), caption, startDir, foldersOnly);
        chosen = !result.isEmpty();
        if (chosen && !m_dlgFolderNamesAsis)
            result = QDir::cleanPath(result);
        break;
    }
    case CommandStyle::ReportClick:
        Q_EMIT buttonClicked();
        return;
    case CommandStyle::CopyText:
        if (QClipboard *clipboard = QGuiApplication::clipboard()) {
            clipboard->clear();
            clipboard->setText(m_text);
        }
        return;
    case CommandStyle::OpenFiles: {
        const QString caption = m_dlgOpenCaption.isEmpty() ? controlText(ControlText::OpenCaption) : m_dlgOpenCaption;
        const QStringList files = dialogs.openFiles(dialogOwner(), caption, start, dialogFilter());
        result = files.join(pathSeparator());
        chosen = !files.isEmpty();
        break;
    }
    case CommandStyle::None:
        return;
    }
    if (!chosen || m_terminated)
        return; // a cancelled dialog leaves the text as it was
    // The change is reported once, at the end of the click sequence.
    m_quiet = true;
    setText(result);
    m_quiet = false;
}

void VxLineIn::clearCombo()
{
    m_cmb->setCurrentIndex(-1);
    if (m_cmb->isEditable())
        m_cmb->clearEditText();
}

QWidget *VxLineIn::dialogOwner()
{
    QWidget *owner = window();
    Q_EMIT requestMainForm(&owner);
    return owner;
}

QString VxLineIn::dialogFilter() const
{
    return lineInputFilter(m_dlgFileType, m_dlgFileExtension);
}

void VxLineIn::setActive()
{
    if (QWidget *element = focusElement())
        element->setFocus(Qt::OtherFocusReason);
}

void VxLineIn::fireEventChange()
{
    if (!m_terminated)
        Q_EMIT change();
}

void VxLineIn::sendChangeMsg()
{
    QTimer::singleShot(0, this, &VxLineIn::fireEventChange);
}

// --- Combo list ------------------------------------------------------------

int VxLineIn::addItem(const QString &text, int itemData, const QString &itemTag)
{
    const int index = m_cmb->count();
    const QSignalBlocker blocker(m_cmb); // adding never selects anything by itself
    m_cmb->addItem(text);
    m_cmb->setItemData(index, itemData, itemDataRole);
    m_cmb->setItemData(index, itemTag, itemTagRole);
    if (m_cmb->currentIndex() != -1 && m_cmb->count() == 1) {
        m_cmb->setCurrentIndex(-1);
        if (m_cmb->isEditable())
            m_cmb->setEditText(QString());
    }
    return index;
}

void VxLineIn::removeItem(int index)
{
    if (index >= 0 && index < m_cmb->count())
        m_cmb->removeItem(index);
}

void VxLineIn::clearList()
{
    m_cmb->clear();
}

int VxLineIn::listCount() const
{
    return m_cmb->count();
}

int VxLineIn::listIndex() const
{
    return m_cmb->currentIndex();
}

void VxLineIn::setListIndex(int index)
{
    m_cmb->setCurrentIndex(index >= 0 && index < m_cmb->count() ? index : -1);
}

QString VxLineIn::itemText(int index) const
{
    return m_cmb->itemText(index);
}

int VxLineIn::itemData(int index) const
{
    if (index < 0 || index >= m_cmb->count())
        return 0;
    return m_cmb->itemData(index, itemDataRole).toInt();
}

void VxLineIn::setItemData(int index, int number)
{
    if (index >= 0 && index < m_cmb->count())
        m_cmb->setItemData(index, number, itemDataRole);
}

QString VxLineIn::itemTag(int index) const
{
    if (index < 0 || index >= m_cmb->count())
        return {};
    return m_cmb->itemData(index, itemTagRole).toString();
}

void VxLineIn::setItemTag(int index, const QString &tag)
{
    if (index >= 0 && index < m_cmb->count())
        m_cmb->setItemData(index, tag, itemTagRole);
}

bool VxLineIn::selectByItemTag(const QString &tag)
{
    for (int i = 0; i < m_cmb->count(); ++i) {
        if (itemTag(i) == tag) {
            setListIndex(i);
            return true;
        }
    }
    return false;
}

bool VxLineIn::selectByItemData(int number)
{
    for (int i = 0; i < m_cmb->count(); ++i) {
        if (itemData(i) == number) {
            setListIndex(i);
            return true;
        }
    }
    return false;
}

QString VxLineIn::listFocusItemTag() const
{
    return itemTag(m_cmb->currentIndex());
}

QString VxLineIn::comboText() const
{
    return m_cmb->currentText();
}

} // namespace valtrona
