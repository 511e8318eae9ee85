#pragma once

// Target size rules: how the pixel size of one output image follows from the
// source's size and the resize rule on the parameter card, plus the tables
// the parameter card's lists are filled from. No widgets here: the lists fill
// themselves from these tables.

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace valtrona {

/// The change style: how the target size follows from the inputs. The
/// numbers are the item data of the "Änderungsstil" list entries and what
/// the settings file keeps.
enum class ChangeStyle : int {
    WidthAndHeight = 0, ///< width and height, each on its own
    FixedHeight = 1,    ///< height given, width follows the aspect
    FixedWidth = 2,     ///< width given, height follows the aspect
    LongSide = 3,       ///< width input is the long side
    FitRectangle = 4,   ///< fit into width x height
};

/// The style of a list entry's item data or a settings value; none for any
/// number but 0 to 4 (the list then has no selection).
std::optional<ChangeStyle> changeStyleFromNumber(int number);

/// Size units, the item data of the unit lists. The computation takes 0 as
/// pixels and every other value as percent.
namespace sizeunit {
inline constexpr int pixel = 0;
inline constexpr int percent = 1;
} // namespace sizeunit

/// Inputs of one target size computation.
struct SizeRequest
{
    double widthInput = 0;  ///< the width (or long side) input
    double heightInput = 0; ///< the height input
    int widthUnit = sizeunit::pixel;
    int heightUnit = sizeunit::pixel;
    ChangeStyle style = ChangeStyle::WidthAndHeight;
    double sourceWidth = 0; ///< the source's pixel size
    double sourceHeight = 0;
};

/// Result of one computation: 0 x 0 and not usable unless a rule sets them.
struct TargetSize
{
    qint32 width = 0;
    qint32 height = 0;
    bool usable = false;

    bool operator==(const TargetSize &) const = default;
};

/// Computes the target size. Percentages are source size x input / 100;
/// every double is converted with toInt32() (round half to even). A
/// statement that fails (division by zero, a result outside the 32-bit
/// range) is skipped and the value it would have set keeps what it held, so
/// a 0 x 0 source never crashes and gives no garbage; the conversion then
/// fails on the unreadable image anyway.
/// - WidthAndHeight: width and height each from its own input.
/// - FixedHeight: height from its input, width = height x aspect.
/// - FixedWidth: width from its input, height = width / aspect.
/// - LongSide: the width input is the long side. Landscape: as FixedWidth.
///   Portrait or square: height = width input (pixels) or source width x
///   input / 100 (percent of the source *width*, deliberately), width =
///   height / aspect.
/// - FitRectangle: width-led try, then height-led try, each compared
///   against the raw input numbers (also in percent, so percent boxes nearly
///   always fail); neither fits: 0 x 0, not usable.
TargetSize computeTargetSize(const SizeRequest &request);

/// The status row the run appends after every computation:
/// "Bildgröße : " + width + "x" + height (kind: information).
QString targetSizeStatusText(const TargetSize &size);

/// Whether the parameter card's format parameters may start a run; `style`
/// is none when no style is selected. Only emptiness is tested ("0", "-3"
/// or letters pass): no style: never; WidthAndHeight and FitRectangle:
/// neither text empty; FixedHeight: height text not empty; FixedWidth and
/// LongSide: width text not empty.
bool formatParametersValid(std::optional<ChangeStyle> style, const QString &widthText, const QString &heightText);

/// One entry of a choice list: its text and its item data.
struct ChoiceEntry
{
    QString text;
    int itemData = 0;

    bool operator==(const ChoiceEntry &) const = default;
};

/// The change-style list in fill order: "0 - Breite und Höhe" (0) ...
/// "4 - Passend in Rechteck" (4).
QList<ChoiceEntry> changeStyleEntries();

/// A unit list in fill order: "Pixel" (0), "Prozent" (1).
QList<ChoiceEntry> sizeUnitEntries();

/// Label of the width input: "Seitenlänge :" for LongSide, else (also with
/// no style selected) "Breite :".
QString widthLabelText(std::optional<ChangeStyle> style);

/// Label of the height input, whatever the style: "Höhe :".
QString heightLabelText();

/// Which inputs (each with its unit list) a style enables.
struct InputEnabling
{
    bool width = true;
    bool height = true;

    bool operator==(const InputEnabling &) const = default;
};

/// The enabling table: WidthAndHeight and FitRectangle both, FixedHeight
/// height only, FixedWidth and LongSide width only. With no style selected
/// the inputs stay as they are.
InputEnabling inputEnabling(ChangeStyle style);

/// One of the four preset lists.
struct PresetList
{
    QString caption; ///< "Vorgabe 4:3 :"
    QString key;     ///< "43"; its settings section is "FMT_" + key
};

/// The four preset lists in order: 4:3, 3:2, 5:4, 16:9.
QList<PresetList> presetLists();

/// The entries of one preset list: every value of the section "FMT_" + key
/// in file order (read with readIniSectionPairs, so a first start without a
/// file gives none).
QStringList presetEntries(const QString &settingsFile, const QString &presetKey);

/// A picked preset's numbers.
struct PresetSize
{
    double width = 0;
    double height = 0;

    /// The numbers as written back into the inputs (plainNumberText).
    QString widthText() const;
    QString heightText() const;
};

/// Splits a preset entry at the lower-case "x": exactly two pieces give
/// val() of each ("0800x0600" -> 800, 600); anything else gives nullopt
/// (the inputs stay as they are).
std::optional<PresetSize> splitPreset(const QString &entry);

} // namespace valtrona
