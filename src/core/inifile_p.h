#pragma once

// Internals of the INI engine shared by its sources; not part of the API.

#include <QByteArray>
#include <QStringList>

namespace valtrona::detail {

/// The text trimmed of bytes 0 to 32 at both ends.
QByteArray trimmedControl(const QByteArray &text);

/// The lines of an INI text (CR LF, LF or CR ended; a leading BOM skipped),
/// decoded as the document reads them: UTF-8, or Latin-1 for a text that is
/// not valid UTF-8.
QStringList decodedLines(const QByteArray &bytes);

} // namespace valtrona::detail
