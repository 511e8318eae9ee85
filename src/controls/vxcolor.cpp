#include "controls/vxcolor.h"

#include <array>

#include <QPalette>

namespace valtrona {

namespace {

struct PaletteEntry
{
    QPalette::ColorGroup group;
    QPalette::ColorRole role;
};

constexpr QPalette::ColorGroup current = QPalette::Current;

// The system colours by index, each with the palette entry nearest to it.
constexpr std::array<PaletteEntry, 31> systemColors = {{
    {current, QPalette::Button},                  // 0 scroll bar
    {current, QPalette::Dark},                    // 1 desktop
    {current, QPalette::Highlight},               // 2 active caption
    {current, QPalette::Mid},                     // 3 inactive caption
    {current, QPalette::Window},                  // 4 menu
    {current, QPalette::Base},                    // 5 window background
    {current, QPalette::Shadow},                  // 6 window frame
    {current, QPalette::WindowText},              // 7 menu text
    {current, QPalette::Text},                    // 8 window text
    {current, QPalette::WindowText},              // 9 caption text
    {current, QPalette::Mid},                     // 10 active border
    {current, QPalette::Mid},                     // 11 inactive border
    {current, QPalette::Dark},                    // 12 application workspace
    {current, QPalette::Highlight},               // 13 highlight
    {current, QPalette::HighlightedText},         // 14 highlighted text
    {current, QPalette::Button},                  // 15 button face
    {current, QPalette::Dark},                    // 16 button shadow
    {QPalette::Disabled, QPalette::Text},         // 17 grey text
    {current, QPalette::ButtonText},              // 18 button text
    {QPalette::Disabled, QPalette::Text},         // 19 inactive caption text
    {current, QPalette::Light},                   // 20 3D highlight
    {current, QPalette::Shadow},                  // 21 3D dark shadow
    {current, QPalette::Button},                  // 22 3D light
    {current, QPalette::ToolTipText},             // 23 tooltip text
    {current, QPalette::ToolTipBase},             // 24 tooltip background
    {current, QPalette::Window},                  // 25 (unused)
    {current, QPalette::Highlight},               // 26 hot-tracked item
    {current, QPalette::Highlight},               // 27 active caption gradient
    {current, QPalette::Mid},                     // 28 inactive caption gradient
    {current, QPalette::Highlight},               // 29 menu highlight
    {current, QPalette::Window},                  // 30 menu bar
}};

constexpr quint32 systemColorFlag = 0x80000000u;

} // namespace

QColor colorFromValue(quint32 value, const QPalette &palette)
{
    if (value & systemColorFlag) {
        const quint32 index = value & 0xFFFFu;
        if (index >= systemColors.size())
            return palette.color(QPalette::Window);
        const PaletteEntry entry = systemColors[index];
        return palette.color(entry.group, entry.role);
    }
    return QColor(static_cast<int>(value & 0xFFu), static_cast<int>((value >> 8) & 0xFFu),
                  static_cast<int>((value >> 16) & 0xFFu));
}

quint32 colorValueFromColor(const QColor &color)
{
    const QColor rgb = color.toRgb();
    return quint32(rgb.red()) | (quint32(rgb.green()) << 8) | (quint32(rgb.blue()) << 16);
}

} // namespace valtrona
