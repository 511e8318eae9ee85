#pragma once

#include <functional>

#include <QString>

class QWidget;

namespace valtrona {

/// Shows a message of a control to the user. The default shows an
/// information box over the control's window; a host (or a test) can
/// route the messages elsewhere with setControlMessageHandler().
using ControlMessageHandler = std::function<void(QWidget *control, const QString &text)>;

/// Installs `handler` for every control of the library; an empty handler
/// restores the message box.
void setControlMessageHandler(ControlMessageHandler handler);

/// Reports `text` for `control` through the installed handler.
void showControlMessage(QWidget *control, const QString &text);

/// The message for a run-time member used while the control is designed.
QString designTimeMessage();

} // namespace valtrona
