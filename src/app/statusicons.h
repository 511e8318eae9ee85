#pragma once

#include <QIcon>
#include <QString>

#include "batch/conversionhost.h"

namespace valtrona {

/// The drawn symbol of a kind. Filled shapes with a white glyph and a
/// half-transparent dark rim, so they read on light and dark list
/// backgrounds. None and any unknown value ("EPY") give a transparent icon
/// of the same size, so texts stay aligned.
QIcon statusSymbol(StatusKind kind);

} // namespace valtrona
