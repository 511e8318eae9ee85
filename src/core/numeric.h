#pragma once

#include <QString>
#include <QStringView>

#include <optional>

namespace valtrona {

/// Rounds to the nearest integral value, halves to the even neighbour
/// (0.5 -> 0, 1.5 -> 2, 2.5 -> 2, -2.5 -> -2). NaN and infinities pass through.
double roundHalfEven(double value);

/// The one conversion from double to a 32-bit integer used throughout the
/// program: rounds half to even, and fails (nullopt) for NaN, infinities and
/// values whose rounded result lies outside the 32-bit range. A failed
/// conversion stands for a statement that is skipped, so callers keep the
/// value they held before.
std::optional<qint32> toInt32(double value);

/// Like toInt32(), but gives `fallback` when the conversion fails.
qint32 toInt32Or(double value, qint32 fallback);

/// Reads the leading number of a text, by the rules users of the old
/// `Val` know:
/// - blanks, tabs and line feeds are skipped wherever they stand
///   ("1 024" -> 1024; a carriage return is not skipped);
/// - an optional "+" or "-", decimal digits, an optional "." with digits, an
///   optional exponent "e"/"E"/"d"/"D" with optional sign and digits
///   ("1e3" -> 1000, "12.7" -> 12.7, "0800" -> 800, "-5" -> -5);
/// - "&H" reads hexadecimal and "&O" octal digits (letter case ignored); up to
///   0xFFFF the value is a 16-bit signed number ("&HFFFF" -> -1), above it a
///   32-bit one; a trailing "&" makes it 32-bit ("&HFFFF&" -> 65535);
/// - reading stops at the first character that cannot continue the number;
/// - "", letters, a lone sign or point give 0;
/// - a number too large for a double, or a hexadecimal/octal number wider than
///   32 bits, gives 0 (the old function raised an overflow there).
/// Never returns -0, NaN or an infinity.
double val(QStringView text);

/// A number as a user sees it written back into an input: no grouping, no
/// trailing zeros, "." as decimal point, up to 15 significant digits
/// (800 -> "800", 12.5 -> "12.5", -5 -> "-5").
QString plainNumberText(double value);

} // namespace valtrona
