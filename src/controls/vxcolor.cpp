#include "controls/vxcolor.h"

namespace valtrona {

quint32 colorValueFromColor(const QColor &color)
{
    const QColor rgb = color.toRgb();
    return quint32(rgb.red()) | (quint32(rgb.green()) << 8) | (quint32(rgb.blue()) << 16);
}

} // namespace valtrona
