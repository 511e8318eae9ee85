#pragma once

#include <QSize>
#include <QString>

namespace valtrona::bench {

/// Writes a JPEG (quality 90) of the given size that a decoder treats like a
/// camera photo: smooth gradients with fine noise, not a flat colour that
/// compresses to nothing. The same size always gives the same bytes.
void makePhoto(const QString &path, QSize size);

} // namespace valtrona::bench
