#include "controls/vxnotice.h"

#include <QApplication>
#include <QMessageBox>
#include <QWidget>

namespace valtrona {

namespace {

ControlMessageHandler &installedHandler()
{
    static ControlMessageHandler handler;
    return handler;
}

} // namespace

void setControlMessageHandler(ControlMessageHandler handler)
{
    installedHandler() = std::move(handler);
}

void showControlMessage(QWidget *control, const QString &text)
{
    if (installedHandler()) {
        installedHandler()(control, text);
        return;
    }
    QWidget *parent = control ? control->window() : nullptr;
    QMessageBox::information(parent, QApplication::applicationDisplayName(), text);
}

QString designTimeMessage()
{
    return QStringLiteral("Zur Entwurfszeit nicht gültig !");
}

} // namespace valtrona
