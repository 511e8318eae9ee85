#pragma once

#include <QMargins>
#include <QRect>
#include <QString>
#include <QStringList>

#include "controls/controlcodes.h"

class QPainter;
class QPalette;

namespace valtrona {

/// The border styles as the integer codes a BorderStyle property holds.
/// Codes outside 0..20 draw nothing and have an empty name.
namespace BorderStyleCode {
inline constexpr int ThreedInner = int(BorderStyle::ThreedInner);
inline constexpr int ThreedOuter = int(BorderStyle::ThreedOuter);
inline constexpr int ThreedOutIn = int(BorderStyle::ThreedOutIn);
inline constexpr int SingleBlack = int(BorderStyle::SingleBlack);
inline constexpr int Label = int(BorderStyle::Label);
inline constexpr int Frame = int(BorderStyle::Frame);
inline constexpr int Button = int(BorderStyle::Button);
inline constexpr int ButtonDown = int(BorderStyle::ButtonDown);
inline constexpr int NoBorder = int(BorderStyle::NoBorder);
inline constexpr int SingleInner = int(BorderStyle::SingleInner);
inline constexpr int SingleWhite = int(BorderStyle::SingleWhite);
inline constexpr int SingleOuter = int(BorderStyle::SingleOuter);
inline constexpr int LineHorizontal = int(BorderStyle::LineHorizontal);
inline constexpr int ThreedInOut = int(BorderStyle::ThreedInOut);
inline constexpr int MenuLines = int(BorderStyle::MenuLines);
inline constexpr int SingleLine = int(BorderStyle::SingleLine);
inline constexpr int PictureBox = int(BorderStyle::PictureBox);
inline constexpr int SingleLineTop = int(BorderStyle::SingleLineTop);
inline constexpr int SingleGrayTop = int(BorderStyle::SingleGrayTop);
inline constexpr int Form = int(BorderStyle::Form);
inline constexpr int SingleBorder = int(BorderStyle::SingleBorder);
inline constexpr int Count = 21;
} // namespace BorderStyleCode

/// Name of a border style ("Threed Inner"); empty outside the table.
QString borderStyleName(int code);

/// Display text of a border style: the code, " - " and the name
/// ("12 - Line Horzizontal"; "25 - " for an unknown code).
QString borderStyleDisplayText(int code);

/// The display texts of all 21 styles in code order, for choice lists.
QStringList borderStyleDisplayTexts();

/// How a border is drawn.
struct BorderOptions
{
    /// A BorderStyle code; codes outside the table draw nothing.
    int style = BorderStyleCode::ThreedInner;
    /// Thickness of each line of the style in pixels (BorderWidth; below 1 counts as 1).
    int lineWidth = 1;
    /// Draw the outermost line (FrameOuter).
    bool outerLine = true;
    /// Draw the lines inside the outermost one (FrameInner).
    bool innerLine = true;
    /// Softer 3-D colours (LightBorders).
    bool lightBorders = false;
    /// Rounded corners instead of square ones (ShowBorderShape).
    bool shape = false;
};

/// Space the border of `options` takes from each side of its rectangle.
QMargins borderMargins(const BorderOptions &options);

/// Draws the border inside `rect` with the 3-D colours of `palette`.
void drawBorder(QPainter &painter, const QRect &rect, const QPalette &palette,
                const BorderOptions &options);

} // namespace valtrona
