#include "controls/vxcolor.h"

namespace valtrona {

namespace {

QColor systemColor(int index, const QPalette &palette)
{
    switch (index) {
    case 0: return palette.color(QPalette::Mid);                 // scroll bar
    case 1: return palette.color(QPalette::Dark);                // desktop
    case 2: return palette.color(QPalette::Highlight);           // active caption
    case 3: return palette.color(QPalette::Mid);                 // inactive caption
    case 4: return palette.color(QPalette::Window);              // menu
    case 5: return palette.color(QPalette::Base);                // window background
    case 6: return palette.color(QPalette::Shadow);              // window frame
    case 7: return palette.color(QPalette::WindowText);          // menu text
    case 8: return palette.color(QPalette::Text);                // window text
    case 9: return palette.color(QPalette::HighlightedText);     // caption text
    case 10: return palette.color(QPalette::Button);             // active border
    case 11: return palette.color(QPalette::Button);             // inactive border
    case 12: return palette.color(QPalette::Dark);               // application work space
    case 13: return palette.color(QPalette::Highlight);
    case 14: return palette.color(QPalette::HighlightedText);
    case 15: return palette.color(QPalette::Button);             // button face
    case 16: return palette.color(QPalette::Dark);               // button shadow
    case 17: return palette.color(QPalette::Disabled, QPalette::Text); // grey text
    case 18: return palette.color(QPalette::ButtonText);
    case 19: return palette.color(QPalette::Disabled, QPalette::WindowText); // inactive caption text
    case 20: return palette.color(QPalette::Light);              // button highlight
    case 21: return palette.color(QPalette::Shadow);             // 3-D dark shadow
    case 22: return palette.color(QPalette::Midlight);           // 3-D light
    case 23: return palette.color(QPalette::ToolTipText);
    case 24: return palette.color(QPalette::ToolTipBase);
    default: return palette.color(QPalette::Button);
    }
}

} // namespace

QColor resolveColorValue(quint32 value, const QPalette &palette)
{
    if (value & 0x80000000u)
        return systemColor(int(value & 0xFFu), palette);
    return QColor(int(value & 0xFFu), int((value >> 8) & 0xFFu), int((value >> 16) & 0xFFu));
}

quint32 colorValueFromColor(const QColor &color)
{
    const QColor rgb = color.toRgb();
    return quint32(rgb.red()) | (quint32(rgb.green()) << 8) | (quint32(rgb.blue()) << 16);
}

} // namespace valtrona
