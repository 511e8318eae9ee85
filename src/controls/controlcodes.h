#pragma once

#include <QObject>

namespace valtrona {

/// Codes that the integer properties of several controls share. The
/// properties keep their integers; the controls read them through
/// enumFromCode() and switch on these enums.
namespace ControlCodes {
Q_NAMESPACE

/// The border styles of the framed container and the picture view.
enum class BorderStyle {
    ThreedInner = 0,
    ThreedOuter = 1,
    ThreedOutIn = 2,
    SingleBlack = 3,
    Label = 4,
    Frame = 5,
    Button = 6,
    ButtonDown = 7,
    NoBorder = 8,
    SingleInner = 9,
    SingleWhite = 10,
    SingleOuter = 11,
    LineHorizontal = 12,
    ThreedInOut = 13,
    MenuLines = 14,
    SingleLine = 15,
    PictureBox = 16,
    SingleLineTop = 17,
    SingleGrayTop = 18,
    Form = 19,
    SingleBorder = 20,
};
Q_ENUM_NS(BorderStyle)

/// Horizontal placement of a caption or of a display field's text.
enum class HorizontalAlignment { Left = 0, Right = 1, Center = 2 };
Q_ENUM_NS(HorizontalAlignment)

/// Vertical placement of a caption.
enum class VerticalAlignment { Top = 0, Middle = 1, Bottom = 2 };
Q_ENUM_NS(VerticalAlignment)

/// Whether a control fills its background.
enum class BackStyle { Transparent = 0, Opaque = 1 };
Q_ENUM_NS(BackStyle)

} // namespace ControlCodes

using ControlCodes::BackStyle;
using ControlCodes::BorderStyle;
using ControlCodes::HorizontalAlignment;
using ControlCodes::VerticalAlignment;

} // namespace valtrona
