#include <QImage>
#include <QPainter>
#include <QPixmap>

#include <gtest/gtest.h>

#include <cmath>

#include "app/statusicons.h"
#include "app/statuslist.h"

using namespace valtrona;

namespace {

double luminance(QColor c)
{
    return 0.2126 * c.redF() + 0.7152 * c.greenF() + 0.0722 * c.blueF();
}

// Share of the icon's area that stands out from a background by a clear
// luminance step once composed onto it.
double visibleShare(const QIcon &icon, const QColor &background)
{
    QImage canvas(16, 16, QImage::Format_ARGB32);
    canvas.fill(background);
    QPainter p(&canvas);
    icon.paint(&p, QRect(0, 0, 16, 16));
    p.end();
    const double base = luminance(background);
    int visible = 0;
    for (int y = 0; y < 16; ++y) {
        for (int x = 0; x < 16; ++x) {
            if (std::abs(luminance(canvas.pixelColor(x, y)) - base) > 0.25)
                ++visible;
        }
    }
    return visible / 256.0;
}

// Every kind has a symbol of its own that reads on light and dark rows; an
// empty or unknown kind keeps the room of a symbol, transparent.
TEST(StatusSymbols, EveryKindReadsOnLightAndDarkBackgroundsAndLooksItsOwn)
{
    QList<QImage> images;
    for (const StatusKind kind : {StatusKind::Picture, StatusKind::Written, StatusKind::Error, StatusKind::Info}) {
        const QIcon icon = statusSymbol(kind);
        for (const QColor &background : {QColor(Qt::white), QColor(0x23, 0x26, 0x29), QColor(0x30, 0x8c, 0xc6)}) {
            EXPECT_GT(visibleShare(icon, background), 0.15)
                << "kind " << int(kind) << " on " << background.name().toStdString();
        }
        EXPECT_FALSE(images.contains(icon.pixmap(16, 16).toImage())) << int(kind);
        images.append(icon.pixmap(16, 16).toImage());
    }
    EXPECT_FALSE(statusSymbol(StatusKind::None).isNull());
    EXPECT_EQ(visibleShare(statusSymbol(StatusKind::None), Qt::white), 0.0);
    EXPECT_EQ(visibleShare(statusSymbol(StatusKind(99)), Qt::black), 0.0);
}

TEST(StatusListRows, NewestRowIsSelectedAndCarriesKeyAndTag)
{
    StatusList list;
    const std::pair<int, const char *> rows[] = {{4, "INF"}, {1, "PIC"}, {2, "POK"}, {3, "ERR"},
                                                 {0, "EPY"}, {7, "EPY"}, {-1, "EPY"}};
    for (const auto &[kind, key] : rows)
        list.addStatusRow(QStringLiteral("Zeile"), StatusKind(kind),
                          kind == 1 ? QStringLiteral("/x/a.jpg") : QString());
    ASSERT_EQ(list.topLevelItemCount(), 7);
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(list.rowKey(i).toStdString(), rows[i].second) << rows[i].first;
    EXPECT_EQ(list.rowPath(1), QStringLiteral("/x/a.jpg"));
    ASSERT_EQ(list.selectedItems().size(), 1);
    EXPECT_EQ(list.selectedItems().first(), list.topLevelItem(6));
}

} // namespace
