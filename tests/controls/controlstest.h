#pragma once

// Helpers shared by the control tests.

#include <functional>

#include <QImage>
#include <QStringList>

class QWidget;

namespace valtrona::test {

/// Runs `action` and returns the messages the controls showed meanwhile,
/// instead of letting them open message boxes.
QStringList controlMessages(const std::function<void()> &action);

/// The widget as drawn, in 32-bit RGB.
QImage rendered(QWidget &widget);

} // namespace valtrona::test
