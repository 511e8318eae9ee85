#include "controls/vxlinein.h"

#include <QComboBox>
#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QPushButton>
#include <QUrl>

namespace valtrona {

namespace {

QStringList localFiles(const QMimeData *mime)
{
    QStringList files;
    if (!mime || !mime->hasUrls())
        return files;
    const QList<QUrl> urls = mime->urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile() && !url.toLocalFile().isEmpty())
            files.append(url.toLocalFile());
    }
    return files;
}

} // namespace

bool VxLineIn::isTextElement(const QObject *object) const
{
    return object == m_txt || object == m_txi || object == m_mem || object == m_mem->viewport();
}

bool VxLineIn::eventFilter(QObject *watched, QEvent *event)
{
    if (m_terminated)
        return QWidget::eventFilter(watched, event);
    const bool textElement = isTextElement(watched);
    const bool combo = watched == m_cmb || (m_cmb->lineEdit() && watched == m_cmb->lineEdit());
    switch (event->type()) {
    case QEvent::KeyPress: {
        auto *key = static_cast<QKeyEvent *>(event);
        const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (combo)
            Q_EMIT comboKeyPress(key->key());
        if (enter && m_buttonClickOnEnter && (combo || (textElement && watched != m_mem))) {
            clickButton();
            return true;
        }
        if (combo && m_locked)
            return true;
        if (textElement && !m_retyping && key->text().size() == 1 && key->text().at(0).isPrint()) {
            QChar character = key->text().at(0);
            Q_EMIT keyPressBeforeCheck(&character);
            if (character.isNull())
                return true;
            if (character != key->text().at(0)) {
                // Hand the element the character the host asked for instead.
                QKeyEvent replaced(QEvent::KeyPress, 0, key->modifiers(), QString(character));
                m_retyping = true;
                QCoreApplication::sendEvent(watched, &replaced);
                m_retyping = false;
                return true;
            }
        }
        break;
    }
    case QEvent::MouseButtonPress:
    case QEvent::Wheel:
        if (combo && m_locked)
            return true;
        if (watched == m_lbl && event->type() == QEvent::MouseButtonPress) {
            auto *mouse = static_cast<QMouseEvent *>(event);
            Q_EMIT labelMouseDown(mouse->button(), mouse->position().toPoint());
        }
        break;
    case QEvent::MouseButtonRelease: {
        auto *mouse = static_cast<QMouseEvent *>(event);
        if (watched == m_lbl) {
            Q_EMIT labelMouseUp(mouse->button(), mouse->position().toPoint());
            if (mouse->button() == Qt::LeftButton && m_lbl->rect().contains(mouse->position().toPoint()))
                Q_EMIT labelClick();
        } else if (watched == m_cmd && mouse->button() == Qt::RightButton) {
            Q_EMIT buttonRightClick();
        }
        break;
    }
    case QEvent::MouseButtonDblClick:
        if (watched == m_lbl)
            Q_EMIT labelDblClick();
        break;
    case QEvent::ContextMenu:
        if (watched == m_lbl) {
            Q_EMIT labelPopMenu(static_cast<QContextMenuEvent *>(event)->globalPos());
            return true;
        }
        break;
    case QEvent::FocusIn:
        if (textElement)
            Q_EMIT gotFocusText();
        else if (watched == m_cmb)
            Q_EMIT gotFocusCombo();
        break;
    case QEvent::FocusOut:
        if (textElement)
            Q_EMIT lostFocusText();
        else if (watched == m_cmb)
            Q_EMIT lostFocusCombo();
        break;
    case QEvent::DragEnter:
    case QEvent::DragMove:
        if ((textElement || watched == m_anz) && acceptsFileDrop(static_cast<QDropEvent *>(event)->mimeData())) {
            static_cast<QDropEvent *>(event)->acceptProposedAction();
            return true;
        }
        break;
    case QEvent::Drop:
        if ((textElement || watched == m_anz) && dropFiles(static_cast<QDropEvent *>(event)->mimeData())) {
            static_cast<QDropEvent *>(event)->acceptProposedAction();
            return true;
        }
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void VxLineIn::dragEnterEvent(QDragEnterEvent *event)
{
    if (!m_terminated && acceptsFileDrop(event->mimeData()))
        event->acceptProposedAction();
    else
        QWidget::dragEnterEvent(event);
}

void VxLineIn::dropEvent(QDropEvent *event)
{
    if (!m_terminated && dropFiles(event->mimeData()))
        event->acceptProposedAction();
    else
        QWidget::dropEvent(event);
}

bool VxLineIn::acceptsFileDrop(const QMimeData *mime) const
{
    return controlStyleKind() != ControlStyle::Combo && !m_locked && m_textEnabled && !m_greyControl && !localFiles(mime).isEmpty();
}

bool VxLineIn::dropFiles(const QMimeData *mime)
{
    if (!acceptsFileDrop(mime))
        return false;
    QStringList files = localFiles(mime);
    if (!m_allowDDMultiFiles)
        files = files.mid(0, 1);
    QString joined = files.join(pathSeparator());
    if (m_appendOleDDFiles && !m_text.isEmpty())
        joined = m_text % pathSeparator() % joined;
    if (joined != m_text) {
        m_text = joined;
        m_edited = true;
        syncElements(nullptr);
        Q_EMIT change();
    }
    Q_EMIT oleDragDropDone();
    return true;
}

} // namespace valtrona
