#pragma once

// Whole reads and writes on open file descriptors, for core's own writers
// (the target folder and the trash). Each retries after an interruption and
// leaves errno telling why it gave up.

#include <QByteArrayView>

namespace valtrona::files::detail {

/// Writes every byte, however many calls it takes.
[[nodiscard]] bool writeAll(int fd, QByteArrayView bytes);

/// Copies the whole content of `from` into `to` (both open; `from` is read
/// from its start whatever its offset).
[[nodiscard]] bool copyContent(int from, int to);

} // namespace valtrona::files::detail
