#pragma once

#include <QList>

namespace valtrona {

class VxLineIn;

/// Gives every line the same label column, at least minimumWidth (pixels
/// of a 96-DPI screen) and wide enough for the longest caption in the
/// labels' font, so no caption is clipped and the inputs stay aligned.
void fitLabelColumn(const QList<VxLineIn *> &lines, int minimumWidth);

} // namespace valtrona
