#pragma once

#include <QColor>

class QPalette;

namespace valtrona {

/// The colours of the control library, in one place.
///
/// A colour value is a 32-bit number laid out as 0x00BBGGRR. A set top bit
/// turns the low bits into an index into the system colours, which follow
/// the widget's palette (see colorFromValue()), so a dark palette gives dark
/// button faces. Settings hold such values; code names them from here.
namespace SystemColor {
inline constexpr quint32 ActiveCaption = 0x80000002;
inline constexpr quint32 InactiveCaption = 0x80000003;
inline constexpr quint32 Window = 0x80000005;
inline constexpr quint32 WindowText = 0x80000008;
inline constexpr quint32 ButtonFace = 0x8000000F;
inline constexpr quint32 ButtonShadow = 0x80000010;
inline constexpr quint32 ButtonText = 0x80000012;
} // namespace SystemColor

/// The few plain colours the controls prescribe as defaults.
namespace FixedColor {
inline constexpr quint32 White = 0xFFFFFF;   ///< the caption area of a framed container
inline constexpr quint32 Magenta = 0xFF00FF; ///< the transparent colour of the picture view
inline constexpr quint32 Silver = 0xC0C0C0;  ///< the transparent colour of a button picture
} // namespace FixedColor

/// The colour a colour value stands for: the plain colour, or for a system
/// colour the nearest entry of `palette`.
QColor colorFromValue(quint32 value, const QPalette &palette);

/// The colour value (0x00BBGGRR) of a plain colour; alpha is dropped.
quint32 colorValueFromColor(const QColor &color);

} // namespace valtrona
