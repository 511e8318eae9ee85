#pragma once

// Helpers shared by the control tests.

#include <functional>

#include <QImage>
#include <QPalette>
#include <QStringList>
#include <QWidget>

#include "controls/controlsupport.h"

namespace valtrona::test {

/// Runs `action` and returns the messages the controls showed meanwhile,
/// instead of letting them open message boxes.
inline QStringList controlMessages(const std::function<void()> &action)
{
    QStringList messages;
    const ControlMessageHandler previous =
        setControlMessageHandler([&messages](QWidget *, const QString &text) { messages.append(text); });
    action();
    setControlMessageHandler(previous);
    return messages;
}

/// Sizes `window` and fills it with `colour`, to show through the parts a
/// control leaves unpainted.
inline void fillWindow(QWidget &window, const QSize &size, const QColor &colour)
{
    window.resize(size);
    window.setAutoFillBackground(true);
    window.setPalette(QPalette(colour));
}

/// The widget as drawn, in 32-bit RGB.
inline QImage rendered(QWidget &widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

} // namespace valtrona::test
