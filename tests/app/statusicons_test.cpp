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

TEST(StatusSymbols, KeysFollowTheKindNumbers)
{
    const struct
    {
        int kind;
        const char *key;
    } cases[] = {{1, "PIC"}, {2, "POK"}, {3, "ERR"}, {4, "INF"}, {0, "EPY"}, {5, "EPY"}, {-1, "EPY"}};
    for (const auto &c : cases)
        EXPECT_EQ(statusSymbolKey(c.kind).toStdString(), c.key) << c.kind;
}

TEST(StatusSymbols, EverySymbolReadsOnLightAndDarkBackgrounds)
{
    for (const int kind : {1, 2, 3, 4}) {
        const QIcon icon = statusSymbol(kind);
        for (const QColor &background : {QColor(Qt::white), QColor(0x23, 0x26, 0x29), QColor(0x30, 0x8c, 0xc6)}) {
            EXPECT_GT(visibleShare(icon, background), 0.15)
                << "kind " << kind << " on " << background.name().toStdString();
        }
    }
}

TEST(StatusSymbols, EmptySymbolIsTransparentButSized)
{
    const QIcon empty = statusSymbol(0);
    EXPECT_FALSE(empty.isNull());
    EXPECT_EQ(visibleShare(empty, Qt::white), 0.0);
    EXPECT_EQ(visibleShare(statusSymbol(99), Qt::black), 0.0);
}

TEST(StatusSymbols, KindsLookDifferent)
{
    QList<QImage> images;
    for (const int kind : {1, 2, 3, 4})
        images.append(statusSymbol(kind).pixmap(16, 16).toImage());
    for (int i = 0; i < images.size(); ++i) {
        for (int j = i + 1; j < images.size(); ++j)
            EXPECT_NE(images.at(i), images.at(j)) << i << " and " << j;
    }
}

TEST(StatusListRows, NewestRowIsSelectedAndCarriesKeyAndTag)
{
    StatusList list;
    list.addStatusRow(QStringLiteral("Bearbeite 2 Bilder"), 4, QString());
    list.addStatusRow(QStringLiteral("Bearbeite Bild : a.jpg"), 1, QStringLiteral("/x/a.jpg"));
    list.addStatusRow(QStringLiteral("weird"), 7, QString());

    ASSERT_EQ(list.topLevelItemCount(), 3);
    EXPECT_EQ(list.rowKey(0), QStringLiteral("INF"));
    EXPECT_EQ(list.rowKey(1), QStringLiteral("PIC"));
    EXPECT_EQ(list.rowPath(1), QStringLiteral("/x/a.jpg"));
    EXPECT_EQ(list.rowKey(2), QStringLiteral("EPY"));
    ASSERT_EQ(list.selectedItems().size(), 1);
    EXPECT_EQ(list.selectedItems().first(), list.topLevelItem(2));
    EXPECT_EQ(list.headerItem()->text(0), QStringLiteral("Status"));
}

} // namespace
