#include "app/lineinputs.h"

#include <QFontMetrics>

#include <algorithm>
#include <cmath>

#include "controls/vxlinein.h"

namespace valtrona {

void fitLabelColumn(const QList<VxLineIn *> &lines, int minimumWidth)
{
    int width = minimumWidth;
    for (const VxLineIn *line : lines) {
        const QFontMetrics metrics(line->labelFont());
        const int needed = metrics.horizontalAdvance(line->caption()) + metrics.averageCharWidth();
        // The control scales its widths by the screen's DPI; the font
        // already is, so take the needed width back to 96 DPI.
        const int dpi = std::max(1, line->logicalDpiX());
        width = std::max(width, static_cast<int>(std::ceil(needed * 96.0 / dpi)));
    }
    for (VxLineIn *line : lines)
        line->setLabelWidth(width);
}

} // namespace valtrona
