#pragma once

#include <QColor>

namespace valtrona {

/// Colour values of the control library are 32-bit numbers laid out as
/// 0x00BBGGRR; a set top bit turns the low bits into an index into the
/// system colours, which follow the widget's palette (colorFromValue() in
/// controlsupport.h), so a dark palette gives dark button faces.
namespace SystemColor {
inline constexpr quint32 ActiveCaption = 0x80000002;
inline constexpr quint32 Window = 0x80000005;
inline constexpr quint32 ButtonFace = 0x8000000F;
inline constexpr quint32 ButtonShadow = 0x80000010;
inline constexpr quint32 ButtonText = 0x80000012;
} // namespace SystemColor

/// The colour value (0x00BBGGRR) of a plain colour; alpha is dropped.
quint32 colorValueFromColor(const QColor &color);

} // namespace valtrona
