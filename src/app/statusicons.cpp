#include "app/statusicons.h"

#include <QHash>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

namespace valtrona {

namespace {

// Drawn in a 16-unit box and scaled, so every size stays crisp.
void drawSymbol(QPainter &p, StatusKind kind)
{
    // A dark rim separates the shape from light and mid-tone rows (also a
    // selected one); the white glyph carries it on dark ones.
    const QPen rim(QColor(0, 0, 0, 170), 1.4);
    const QPen glyph(Qt::white, 2.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);

    switch (kind) {
    case StatusKind::Picture: {
        p.setPen(rim);
        p.setBrush(QColor(0x2f, 0x6f, 0xb3));
        p.drawRoundedRect(QRectF(1.0, 2.0, 14.0, 12.0), 2.0, 2.0);
        p.setPen(Qt::NoPen);
        p.setBrush(QColor(0xf5, 0xc2, 0x42));
        p.drawEllipse(QPointF(11.0, 5.8), 1.6, 1.6);
        p.setBrush(Qt::white);
        QPainterPath hills;
        hills.moveTo(2.2, 12.8);
        hills.lineTo(6.0, 6.8);
        hills.lineTo(8.6, 10.0);
        hills.lineTo(10.6, 8.2);
        hills.lineTo(13.8, 12.8);
        hills.closeSubpath();
        p.drawPath(hills);
        break;
    }
    case StatusKind::Written:
        p.setPen(rim);
        p.setBrush(QColor(0x23, 0x8b, 0x45));
        p.drawEllipse(QRectF(1.0, 1.0, 14.0, 14.0));
        p.setPen(glyph);
        p.drawPolyline(QPolygonF({QPointF(4.5, 8.3), QPointF(7.0, 10.8), QPointF(11.5, 5.5)}));
        break;
    case StatusKind::Error:
        p.setPen(rim);
        p.setBrush(QColor(0xc9, 0x2a, 0x2a));
        p.drawEllipse(QRectF(1.0, 1.0, 14.0, 14.0));
        p.setPen(glyph);
        p.drawLine(QPointF(5.3, 5.3), QPointF(10.7, 10.7));
        p.drawLine(QPointF(10.7, 5.3), QPointF(5.3, 10.7));
        break;
    case StatusKind::Info:
        p.setPen(rim);
        p.setBrush(QColor(0x1f, 0x78, 0xc8));
        p.drawEllipse(QRectF(1.0, 1.0, 14.0, 14.0));
        p.setPen(Qt::NoPen);
        p.setBrush(Qt::white);
        p.drawEllipse(QPointF(8.0, 4.6), 1.5, 1.5);
        p.drawRoundedRect(QRectF(6.7, 6.8, 2.6, 5.8), 0.9, 0.9);
        break;
    case StatusKind::None:
        break;
    }
}

QIcon buildIcon(StatusKind kind)
{
    QIcon icon;
    for (const int size : {16, 20, 24, 32, 48}) {
        QPixmap pixmap(size, size);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        p.scale(size / 16.0, size / 16.0);
        drawSymbol(p, kind);
        p.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace

QIcon statusSymbol(StatusKind kind)
{
    // Values outside the enumeration share the empty symbol.
    if (kind < StatusKind::None || kind > StatusKind::Info)
        kind = StatusKind::None;
    static QHash<StatusKind, QIcon> cache;
    auto it = cache.find(kind);
    if (it == cache.end())
        it = cache.insert(kind, buildIcon(kind));
    return it.value();
}

} // namespace valtrona
