#pragma once

#include <QMargins>
#include <QRect>
#include <QString>
#include <QStringList>

class QPainter;
class QPalette;

namespace valtrona {

/// The border styles shared by the framed container and the picture view.
/// Codes outside 0..20 draw nothing and have an empty name.
namespace BorderStyleCode {
inline constexpr int ThreedInner = 0;
inline constexpr int ThreedOuter = 1;
inline constexpr int ThreedOutIn = 2;
inline constexpr int SingleBlack = 3;
inline constexpr int Label = 4;
inline constexpr int Frame = 5;
inline constexpr int Button = 6;
inline constexpr int ButtonDown = 7;
inline constexpr int NoBorder = 8;
inline constexpr int SingleInner = 9;
inline constexpr int SingleWhite = 10;
inline constexpr int SingleOuter = 11;
inline constexpr int LineHorizontal = 12;
inline constexpr int ThreedInOut = 13;
inline constexpr int MenuLines = 14;
inline constexpr int SingleLine = 15;
inline constexpr int PictureBox = 16;
inline constexpr int SingleLineTop = 17;
inline constexpr int SingleGrayTop = 18;
inline constexpr int Form = 19;
inline constexpr int SingleBorder = 20;
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
