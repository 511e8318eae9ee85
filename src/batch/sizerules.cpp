#include "batch/sizerules.h"

#include "core/inifile.h"
#include "core/numeric.h"
#include "core/settings.h"

#include <optional>

namespace valtrona {

using namespace Qt::StringLiterals;

namespace {

// Each computing statement below yields a value or nothing; nothing means
// the statement failed (division by zero, overflow) and is skipped, so the
// variable it would have set keeps what it held.
std::optional<double> quotient(double dividend, double divisor)
{
    if (divisor == 0)
        return std::nullopt;
    return dividend / divisor;
}

std::optional<double> quotient(std::optional<double> dividend, std::optional<double> divisor)
{
    if (!dividend || !divisor)
        return std::nullopt;
    return quotient(*dividend, *divisor);
}

std::optional<double> product(std::optional<double> a, double b)
{
    if (!a)
        return std::nullopt;
    return *a * b;
}

void assign(qint32 &target, std::optional<double> value)
{
    if (!value)
        return;
    if (const std::optional<qint32> converted = toInt32(*value))
        target = *converted;
}

bool isPixel(int unit)
{
    return unit == sizeunit::pixel;
}

double side(double input, int unit, double sourceSide)
{
    return isPixel(unit) ? input : sourceSide * input / 100;
}

} // namespace

TargetSize computeTargetSize(const SizeRequest &r)
{
    TargetSize size;
    const double sw = r.sourceWidth;
    const double sh = r.sourceHeight;
    const std::optional<double> ratio = quotient(sw, sh);

    switch (r.style) {
    case ChangeStyle::WidthAndHeight:
        assign(size.width, side(r.widthInput, r.widthUnit, sw));
        assign(size.height, side(r.heightInput, r.heightUnit, sh));
        size.usable = true;
        break;
    case ChangeStyle::FixedHeight:
        assign(size.height, side(r.heightInput, r.heightUnit, sh));
        assign(size.width, product(ratio, size.height));
        size.usable = true;
        break;
    case ChangeStyle::FixedWidth:
        assign(size.width, side(r.widthInput, r.widthUnit, sw));
        assign(size.height, quotient(size.width, ratio));
        size.usable = true;
        break;
    case ChangeStyle::LongSide:
        if (sw > sh) {
            assign(size.width, side(r.widthInput, r.widthUnit, sw));
            assign(size.height, quotient(size.width, ratio));
        } else {
            // The percentage is taken of the source width here, not of the
            // long side: a portrait image at 50 % gets a long side of half
            // its short side. Users' presets rely on this.
            assign(size.height, side(r.widthInput, r.widthUnit, sw));
            assign(size.width, quotient(double(size.height), quotient(sh, sw)));
        }
        size.usable = true;
        break;
    case ChangeStyle::FitRectangle: {
        // Both tries compare against the raw inputs, also in percent mode.
        qint32 w = 0;
        qint32 h = 0;
        assign(w, side(r.widthInput, r.widthUnit, sw));
        assign(h, quotient(w, ratio));
        if (h <= r.heightInput) {
            size = {w, h, true};
            break;
        }
        w = 0;
        h = 0;
        assign(h, side(r.heightInput, r.heightUnit, sh));
        assign(w, quotient(double(h), quotient(sh, sw)));
        if (w <= r.widthInput)
            size = {w, h, true};
        break;
    }
    }
    return size;
}

QString targetSizeStatusText(const TargetSize &size)
{
    return u"Bildgröße : "_s + QString::number(size.width) + u'x' + QString::number(size.height);
}

std::optional<ChangeStyle> changeStyleFromNumber(int number)
{
    if (number < int(ChangeStyle::WidthAndHeight) || number > int(ChangeStyle::FitRectangle))
        return std::nullopt;
    return ChangeStyle(number);
}

bool formatParametersValid(std::optional<ChangeStyle> style, const QString &widthText, const QString &heightText)
{
    if (!style)
        return false;
    switch (*style) {
    case ChangeStyle::WidthAndHeight:
    case ChangeStyle::FitRectangle:
        return !widthText.isEmpty() && !heightText.isEmpty();
    case ChangeStyle::FixedHeight:
        return !heightText.isEmpty();
    case ChangeStyle::FixedWidth:
    case ChangeStyle::LongSide:
        return !widthText.isEmpty();
    }
    return true;
}

QList<ChoiceEntry> changeStyleEntries()
{
    return {
        {u"0 - Breite und Höhe"_s, int(ChangeStyle::WidthAndHeight)},
        {u"1 - Konstante Höhe"_s, int(ChangeStyle::FixedHeight)},
        {u"2 - Konstante Breite"_s, int(ChangeStyle::FixedWidth)},
        {u"3 - Quadratisch lange Seite"_s, int(ChangeStyle::LongSide)},
        {u"4 - Passend in Rechteck"_s, int(ChangeStyle::FitRectangle)},
    };
}

QList<ChoiceEntry> sizeUnitEntries()
{
    return {
        {u"Pixel"_s, sizeunit::pixel},
        {u"Prozent"_s, sizeunit::percent},
    };
}

QString widthLabelText(std::optional<ChangeStyle> style)
{
    return style == ChangeStyle::LongSide ? u"Seitenlänge :"_s : u"Breite :"_s;
}

QString heightLabelText()
{
    return u"Höhe :"_s;
}

InputEnabling inputEnabling(ChangeStyle style)
{
    switch (style) {
    case ChangeStyle::WidthAndHeight:
    case ChangeStyle::FitRectangle:
        return InputEnabling {true, true};
    case ChangeStyle::FixedHeight:
        return InputEnabling {false, true};
    case ChangeStyle::FixedWidth:
    case ChangeStyle::LongSide:
        return InputEnabling {true, false};
    }
    return InputEnabling {true, true};
}

QList<PresetList> presetLists()
{
    return {
        {u"Vorgabe 4:3 :"_s, u"43"_s},
        {u"Vorgabe 3:2 :"_s, u"32"_s},
        {u"Vorgabe 5:4 :"_s, u"54"_s},
        {u"Vorgabe 16:9 :"_s, u"169"_s},
    };
}

QStringList presetEntries(const QString &settingsFile, const QString &presetKey)
{
    QStringList names;
    QStringList values;
    readIniSectionPairs(settingsFile, presetSection(presetKey), names, values);
    return values;
}

QString PresetSize::widthText() const
{
    return plainNumberText(width);
}

QString PresetSize::heightText() const
{
    return plainNumberText(height);
}

std::optional<PresetSize> splitPreset(const QString &entry)
{
    const QStringList pieces = entry.split(u'x');
    if (pieces.size() != 2)
        return std::nullopt;
    return PresetSize {val(pieces.at(0)), val(pieces.at(1))};
}

} // namespace valtrona
