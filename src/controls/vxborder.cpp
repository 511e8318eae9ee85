#include "controls/vxborder.h"

#include <algorithm>
#include <array>
#include <vector>

#include <QPainter>
#include <QPainterPath>
#include <QPalette>

#include "controls/controlproperties.h"

namespace valtrona {

namespace {

const std::array<const char16_t *, BorderStyleCode::Count> styleNames = {
    u"Threed Inner", u"Threed Outer", u"Threed Out In", u"Single Black", u"Label",
    u"Frame", u"Button", u"Button Down", u"No Border", u"Single Inner",
    u"Single White", u"Single Outer",
    u"Line Horzizontal", // the established spelling; saved forms and hosts rely on it
    u"Threed In Out", u"Menu Lines", u"Single Line", u"PictureBox", u"Single Line Top",
    u"Single Gray Top", u"Form", u"Single Border",
};

enum class Tone { Face, Light, Midlight, Mid, Dark, Shadow, Black, White, Text };

// One closed line around the rectangle: its top/left and bottom/right colours.
struct Ring
{
    Tone topLeft;
    Tone bottomRight;
};

// Which sides a style draws; most draw all four.
enum class Sides { All, TopOnly, TopAndBottom, Separator };

struct StyleShape
{
    Sides sides = Sides::All;
    std::vector<Ring> rings; // outermost first
};

StyleShape shapeOf(int code)
{
    using T = Tone;
    switch (enumFromCode(code, BorderStyle::NoBorder)) {
    case BorderStyle::ThreedInner: return {Sides::All, {{T::Dark, T::Light}}};
    case BorderStyle::ThreedOuter: return {Sides::All, {{T::Light, T::Dark}}};
    case BorderStyle::ThreedOutIn: return {Sides::All, {{T::Light, T::Dark}, {T::Dark, T::Light}}};
    case BorderStyle::SingleBlack: return {Sides::All, {{T::Black, T::Black}}};
    case BorderStyle::Frame:
        return {Sides::All, {{T::Midlight, T::Shadow}, {T::Light, T::Dark}, {T::Face, T::Face}}};
    case BorderStyle::Button: return {Sides::All, {{T::Light, T::Shadow}, {T::Midlight, T::Dark}}};
    case BorderStyle::ButtonDown: return {Sides::All, {{T::Shadow, T::Light}, {T::Dark, T::Midlight}}};
    case BorderStyle::SingleInner: return {Sides::All, {{T::Shadow, T::Light}}};
    case BorderStyle::SingleWhite: return {Sides::All, {{T::White, T::White}}};
    case BorderStyle::SingleOuter: return {Sides::All, {{T::Light, T::Shadow}}};
    case BorderStyle::LineHorizontal: return {Sides::Separator, {{T::Dark, T::Dark}, {T::Light, T::Light}}};
    case BorderStyle::ThreedInOut: return {Sides::All, {{T::Dark, T::Light}, {T::Light, T::Dark}}};
    case BorderStyle::MenuLines: return {Sides::TopAndBottom, {{T::Light, T::Dark}}};
    case BorderStyle::SingleLine: return {Sides::All, {{T::Dark, T::Dark}}};
    case BorderStyle::PictureBox: return {Sides::All, {{T::Dark, T::Light}, {T::Shadow, T::Midlight}}};
    case BorderStyle::SingleLineTop: return {Sides::TopOnly, {{T::Dark, T::Dark}}};
    case BorderStyle::SingleGrayTop: return {Sides::TopOnly, {{T::Mid, T::Mid}}};
    case BorderStyle::Form:
        return {Sides::All, {{T::Face, T::Shadow}, {T::Light, T::Dark}, {T::Face, T::Face}, {T::Face, T::Face}}};
    case BorderStyle::SingleBorder: return {Sides::All, {{T::Text, T::Text}}};
    case BorderStyle::Label:
    case BorderStyle::NoBorder: return {Sides::All, {}};
    }
    return {Sides::All, {}};
}

QColor toneColor(Tone tone, const QPalette &palette, bool lightBorders)
{
    if (lightBorders) {
        if (tone == Tone::Shadow)
            tone = Tone::Dark;
        else if (tone == Tone::Dark)
            tone = Tone::Mid;
    }
    switch (tone) {
    case Tone::Face: return palette.color(QPalette::Button);
    case Tone::Light: return palette.color(QPalette::Light);
    case Tone::Midlight: return palette.color(QPalette::Midlight);
    case Tone::Mid: return palette.color(QPalette::Mid);
    case Tone::Dark: return palette.color(QPalette::Dark);
    case Tone::Shadow: return palette.color(QPalette::Shadow);
    case Tone::Black: return QColor(Qt::black);
    case Tone::White: return QColor(Qt::white);
    case Tone::Text: return palette.color(QPalette::WindowText);
    }
    return palette.color(QPalette::Dark);
}

// The rings that FrameOuter and FrameInner leave switched on.
std::vector<bool> ringsDrawn(const StyleShape &shape, const BorderOptions &options)
{
    std::vector<bool> drawn(shape.rings.size());
    for (std::size_t i = 0; i < drawn.size(); ++i)
        drawn[i] = i == 0 ? options.outerLine : options.innerLine;
    return drawn;
}

void drawSquareRing(QPainter &painter, const QRect &r, int w, const QColor &topLeft,
                    const QColor &bottomRight, Sides sides)
{
    if (r.width() <= 0 || r.height() <= 0)
        return;
    painter.fillRect(QRect(r.left(), r.top(), r.width(), w), topLeft);
    if (sides == Sides::TopOnly)
        return;
    if (sides == Sides::TopAndBottom) {
        painter.fillRect(QRect(r.left(), r.bottom() - w + 1, r.width(), w), bottomRight);
        return;
    }
    painter.fillRect(QRect(r.left(), r.top(), w, r.height()), topLeft);
    painter.fillRect(QRect(r.left() + w, r.bottom() - w + 1, r.width() - w, w), bottomRight);
    painter.fillRect(QRect(r.right() - w + 1, r.top() + w, w, r.height() - w), bottomRight);
}

void drawRoundRing(QPainter &painter, const QRect &r, int w, const QColor &topLeft,
                   const QColor &bottomRight)
{
    if (r.width() <= 2 * w || r.height() <= 2 * w)
        return;
    const QRectF line = QRectF(r).adjusted(w / 2.0, w / 2.0, -w / 2.0, -w / 2.0);
    const qreal radius = qMin<qreal>(6.0 * w, qMin(line.width(), line.height()) / 3.0);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(Qt::NoBrush);
    // The top-left colour above the rising diagonal, the bottom-right one below it.
    QPainterPath upper;
    upper.moveTo(r.bottomLeft());
    upper.lineTo(r.topLeft());
    upper.lineTo(r.topRight());
    upper.closeSubpath();
    painter.setClipPath(upper);
    painter.setPen(QPen(topLeft, w));
    painter.drawRoundedRect(line, radius, radius);
    QPainterPath lower;
    lower.moveTo(r.bottomLeft());
    lower.lineTo(r.topRight());
    lower.lineTo(r.bottomRight() + QPoint(1, 1));
    lower.closeSubpath();
    painter.setClipPath(lower);
    painter.setPen(QPen(bottomRight, w));
    painter.drawRoundedRect(line, radius, radius);
    painter.restore();
}

} // namespace

QString borderStyleName(int code)
{
    if (code < 0 || code >= BorderStyleCode::Count)
        return {};
    return QString::fromUtf16(styleNames[std::size_t(code)]);
}

QString borderStyleDisplayText(int code)
{
    return QString::number(code) + u" - " + borderStyleName(code);
}

QStringList borderStyleDisplayTexts()
{
    QStringList texts;
    for (int code = 0; code < BorderStyleCode::Count; ++code)
        texts.append(borderStyleDisplayText(code));
    return texts;
}

QMargins borderMargins(const BorderOptions &options)
{
    const StyleShape shape = shapeOf(options.style);
    const std::vector<bool> drawn = ringsDrawn(shape, options);
    const int w = qMax(1, options.lineWidth);
    int thickness = 0;
    // A switched-off outer line still takes its place, so the work area
    // does not jump when FrameOuter is toggled.
    if (!shape.rings.empty())
        thickness = int(shape.rings.size()) * w;
    if (std::none_of(drawn.begin(), drawn.end(), [](bool on) { return on; }))
        thickness = 0;
    switch (shape.sides) {
    case Sides::All: return {thickness, thickness, thickness, thickness};
    case Sides::TopOnly:
    case Sides::Separator: return {0, thickness, 0, 0};
    case Sides::TopAndBottom: return {0, thickness, 0, thickness};
    }
    return {};
}

void drawBorder(QPainter &painter, const QRect &rect, const QPalette &palette,
                const BorderOptions &options)
{
    const StyleShape shape = shapeOf(options.style);
    const std::vector<bool> drawn = ringsDrawn(shape, options);
    const int w = qMax(1, options.lineWidth);

    if (shape.sides == Sides::Separator) {
        // An etched line along the top: a dark line over a light one.
        int y = rect.top();
        for (std::size_t i = 0; i < shape.rings.size(); ++i, y += w) {
            if (drawn[i])
                painter.fillRect(QRect(rect.left(), y, rect.width(), w),
                                 toneColor(shape.rings[i].topLeft, palette, options.lightBorders));
        }
        return;
    }

    QRect ring = rect;
    for (std::size_t i = 0; i < shape.rings.size(); ++i) {
        if (drawn[i]) {
            const QColor topLeft = toneColor(shape.rings[i].topLeft, palette, options.lightBorders);
            const QColor bottomRight = toneColor(shape.rings[i].bottomRight, palette, options.lightBorders);
            if (options.shape && shape.sides == Sides::All)
                drawRoundRing(painter, ring, w, topLeft, bottomRight);
            else
                drawSquareRing(painter, ring, w, topLeft, bottomRight, shape.sides);
        }
        if (shape.sides == Sides::All)
            ring.adjust(w, w, -w, -w);
        else
            ring.adjust(0, w, 0, -w);
    }
}

} // namespace valtrona
