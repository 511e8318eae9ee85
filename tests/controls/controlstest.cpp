#include "controlstest.h"

#include <QPalette>
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

void fillWindow(QWidget &window, const QSize &size, const QColor &colour)
{
    window.resize(size);
    window.setAutoFillBackground(true);
    window.setPalette(QPalette(colour));
}

QImage rendered(QWidget &widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace valtrona::test
