#include "controlstest.h"

#include <QWidget>

#include "controls/controlsupport.h"

namespace valtrona::test {

QStringList controlMessages(const std::function<void()> &action)
{
    QStringList messages;
    const ControlMessageHandler previous =
        setControlMessageHandler([&messages](QWidget *, const QString &text) { messages.append(text); });
    action();
    setControlMessageHandler(previous);
    return messages;
}

QImage rendered(QWidget &widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace valtrona::test
