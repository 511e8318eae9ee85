#pragma once

// Helpers shared by the control tests.

#include <functional>

#include <QColor>
#include <QImage>
#include <QSize>
#include <QStringList>

class QWidget;

namespace valtrona::test {

/// Runs `action` and returns the messages the controls showed meanwhile,
/// instead of letting them open message boxes.
QStringList controlMessages(const std::function<void()> &action);

/// Sizes `window` and fills it with `colour`, to show through the parts a
/// control leaves unpainted.
void fillWindow(QWidget &window, const QSize &size, const QColor &colour);

/// The widget as drawn, in 32-bit RGB.
QImage rendered(QWidget &widget);

} // namespace valtrona::test
