#pragma once

#include <QIcon>
#include <QString>

namespace valtrona {

/// Key of a status row kind as the run reports it: 1 "PIC", 2 "POK",
/// 3 "ERR", 4 "INF", any other number "EPY".
QString statusSymbolKey(int kind);

/// The drawn symbol of a kind. Filled shapes with a white glyph and a
/// half-transparent dark rim, so they read on light and dark list
/// backgrounds. Any unknown kind ("EPY") gives a transparent icon of the
/// same size, so texts stay aligned.
QIcon statusSymbol(int kind);

} // namespace valtrona
