#include <QFile>
#include <QHeaderView>
#include <QLocale>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include <gtest/gtest.h>

#include "app/sourcelist.h"
#include "support/testsupport.h"

using namespace Qt::StringLiterals;
using valtrona::SourceList;
using valtrona::test::Sandbox;

namespace {

TEST(SourceListTexts, KilobytesAtLeastOneRoundedAndGroupedCountsAndDimensions)
{
    const struct
    {
        qint64 bytes;
        QLocale::Language language;
        const char *expected;
    } sizes[] = {
        {0, QLocale::German, "1 KB"},    {1600, QLocale::German, "2 KB"},
        {2560, QLocale::German, "2 KB"}, // 2.5 -> 2, halves to even
        {3584, QLocale::German, "4 KB"}, // 3.5 -> 4
        {1048576, QLocale::English, "1,024 KB"}, {10737418240, QLocale::German, "10.485.760 KB"},
    };
    for (const auto &c : sizes)
        EXPECT_EQ(SourceList::sizeText(c.bytes, QLocale(c.language)).toStdString(), c.expected) << c.bytes;
    EXPECT_EQ(SourceList::countText(0), u"Keine Bilder"_s);
    EXPECT_EQ(SourceList::countText(1), u"1 Bild"_s);
    EXPECT_EQ(SourceList::countText(1370), u"1370 Bilder"_s);
}

class SourceListTest : public ::testing::Test
{
protected:
    SourceListTest()
    {
        list.resize(600, 300);
        list.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&list));
        list.setMeasure([this](const QString &path) {
            measured.append(path);
            return path.endsWith(QLatin1String(".jpg"), Qt::CaseInsensitive) ? QSize(40, 30) : QSize();
        });
        list.setRestart([this] { ++restarts; });
    }

    QString file(const QString &name, int bytes = 10)
    {
        return sandbox.writeFile(name, QByteArray(bytes, 'x'));
    }

    // The texts of a column, top to bottom, joined by "|".
    QString column(int c) const
    {
        QStringList texts;
        for (int i = 0; i < list.topLevelItemCount(); ++i)
            texts.append(list.topLevelItem(i)->text(c));
        return texts.join(u'|');
    }

    void clickHeader(int column)
    {
        QHeaderView *header = list.header();
        const int x = header->sectionViewportPosition(column) + header->sectionSize(column) / 2;
        QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(x, header->height() / 2));
    }

    Sandbox sandbox;
    SourceList list;
    QStringList measured;
    int restarts = 0;
};

TEST_F(SourceListTest, RowsCarryNameSizeDimensionsAndDropDuplicatesByExactPath)
{
    const QString a = file(u"a.jpg"_s, 1600);
    const QString b = file(u"sub/B.JPG"_s);
    const QString text = file(u"notes.txt"_s);
    QString upper = a;
    upper.replace(QLatin1String("a.jpg"), QLatin1String("A.jpg"));

    EXPECT_EQ(list.addSourceFiles({a, b, a, text}), 3);
    EXPECT_EQ(list.addSourceFiles({b, upper}), 1); // b known; another case is another key

    EXPECT_EQ(list.paths(), QStringList({a, b, text, upper}));
    EXPECT_EQ(column(SourceList::NameColumn), u"a.jpg|B.JPG|notes.txt|A.jpg"_s);
    EXPECT_EQ(column(SourceList::SizeColumn), SourceList::sizeText(1600, QLocale()) + u"|1 KB|1 KB|1 KB"_s);
    EXPECT_EQ(column(SourceList::DimensionColumn), u"40 x 30|40 x 30|0 x 0|40 x 30"_s);
    EXPECT_EQ(measured.size(), 4); // duplicates are never measured
}

TEST_F(SourceListTest, RowsNameTheirWholePathAndShowWhenTheFileIsGone)
{
    const QString first = file(u"a/IMG_1.jpg"_s);
    const QString second = file(u"b/IMG_1.jpg"_s);
    const QString missing = sandbox.filePath(u"never.jpg"_s);
    list.addSourceFiles({first, second, missing});
    const QColor grey = list.palette().color(QPalette::Disabled, QPalette::Text);
    auto looksGone = [&](int row) {
        const QTreeWidgetItem *item = list.topLevelItem(row);
        return list.isGone(row) && item->foreground(SourceList::NameColumn).color() == grey
            && item->toolTip(SourceList::SizeColumn).contains(u"nicht mehr vorhanden"_s);
    };

    EXPECT_EQ(list.topLevelItem(0)->toolTip(SourceList::NameColumn), first);
    EXPECT_EQ(list.topLevelItem(1)->toolTip(SourceList::DimensionColumn), second);
    EXPECT_FALSE(looksGone(0));
    EXPECT_TRUE(looksGone(2));
    EXPECT_TRUE(list.topLevelItem(2)->toolTip(SourceList::NameColumn).startsWith(missing));

    QFile::remove(second);
    EXPECT_FALSE(looksGone(1)); // until the list looks again
    EXPECT_EQ(list.refreshAvailability(), 1);
    EXPECT_TRUE(looksGone(1));
}

TEST_F(SourceListTest, ImagingIsRestartedPerBatchAndEveryFifteenFiles)
{
    QStringList paths;
    for (int i = 1; i <= 31; ++i)
        paths.append(file(u"p%1.jpg"_s.arg(i)));
    list.addSourceFiles(paths);
    EXPECT_EQ(restarts, 3); // at the start, before file 15 and file 30
    EXPECT_EQ(list.count(), 31);
}

TEST_F(SourceListTest, HeaderClicksAlternatePerColumnAndCompareText)
{
    list.addSourceFiles({file(u"b.jpg"_s, 9 * 1024), file(u"a.jpg"_s, 10 * 1024),
                         file(u"C.jpg"_s, 100 * 1024)});

    clickHeader(SourceList::NameColumn);
    EXPECT_EQ(column(0), u"a.jpg|b.jpg|C.jpg"_s);
    // Every caption keeps its room once the sort arrow shows.
    for (const int c : {SourceList::NameColumn, SourceList::SizeColumn, SourceList::DimensionColumn})
        EXPECT_GE(list.header()->sectionSize(c), list.header()->sectionSizeHint(c)) << c;
    clickHeader(SourceList::NameColumn);
    EXPECT_EQ(column(0), u"C.jpg|b.jpg|a.jpg"_s);

    // The size column keeps its own alternation: its first click ascends,
    // and it compares text, so "10 KB" < "100 KB" < "9 KB".
    clickHeader(SourceList::SizeColumn);
    EXPECT_EQ(column(1), u"10 KB|100 KB|9 KB"_s);
    clickHeader(SourceList::SizeColumn);
    EXPECT_EQ(column(1), u"9 KB|100 KB|10 KB"_s);

    // A third click on names ascends again; rows added later are placed by
    // the active sorting.
    clickHeader(SourceList::NameColumn);
    list.addSourceFiles({file(u"B0.jpg"_s)});
    EXPECT_EQ(column(0), u"a.jpg|b.jpg|B0.jpg|C.jpg"_s);
}

// The preview follows clicks and keys unless several rows are selected;
// removing the selected rows, wherever they are, clears it.
TEST_F(SourceListTest, PreviewFollowsTheCurrentRowUntilRowsAreRemoved)
{
    const QString b = file(u"b.jpg"_s);
    list.addSourceFiles({file(u"a.jpg"_s), b, file(u"c.jpg"_s), file(u"d.jpg"_s)});
    QSignalSpy preview(&list, &SourceList::previewRequested);
    auto rowCentre = [this](int row) { return list.visualItemRect(list.topLevelItem(row)).center(); };
    auto shown = [&preview] { return preview.size() == 1 ? preview.takeFirst().at(0).toString() : u"?"_s; };

    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, rowCentre(1));
    EXPECT_EQ(shown(), b);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, Qt::ControlModifier, rowCentre(0));
    EXPECT_TRUE(preview.isEmpty()); // two rows selected: the preview keeps its picture
    QTest::mousePress(list.viewport(), Qt::LeftButton, {}, QPoint(10, list.viewport()->height() - 5));
    EXPECT_EQ(shown(), QString()); // a press on empty space clears at once
    EXPECT_EQ(list.previewItem(), nullptr);

    list.setFocus();
    list.setCurrentItem(list.topLevelItem(0));
    preview.clear();
    QTest::keyClick(&list, Qt::Key_Down);
    EXPECT_EQ(shown(), b);
    QTest::keyClick(&list, Qt::Key_Up, Qt::ShiftModifier); // extends the selection: two rows
    EXPECT_TRUE(preview.isEmpty());

    QTest::mouseClick(list.viewport(), Qt::LeftButton, Qt::ControlModifier, rowCentre(3));
    list.removeSelected();
    EXPECT_EQ(column(0), u"c.jpg"_s);
    EXPECT_EQ(shown(), QString());
    list.addSourceFiles({b}); // a removed path may be added again
    EXPECT_EQ(list.count(), 2);
}

TEST_F(SourceListTest, DroppedFilesAreAddedInDropOrderUnfilteredAndFoldersBringTheirPhotos)
{
    const QString z = file(u"z.png"_s);
    const QString text = file(u"readme.txt"_s);
    const QString photo = file(u"album/p.jpg"_s);
    file(u"album/.thumbnails/t.jpg"_s);
    file(u"album/notes.txt"_s);
    // Latin-1 names: each keeps a text of its own.
    sandbox.writeNativeFile("\xe4.jpg", "x");
    sandbox.writeNativeFile("\xf6.jpg", "x");
    const QString base = QUrl::fromLocalFile(sandbox.path()).toString(QUrl::FullyEncoded);
    // A file manager's drop reaches the widget under the pointer that accepts drops.
    EXPECT_TRUE(list.viewport()->acceptDrops());
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(z), QUrl::fromLocalFile(sandbox.filePath(u"album"_s)),
                  QUrl::fromLocalFile(text), QUrl(u"https://example.org/x.jpg"_s),
                  QUrl::fromEncoded((base + u"/%E4.jpg"_s).toLatin1()),
                  QUrl::fromEncoded((base + u"/%F6.jpg"_s).toLatin1())});
    QDropEvent drop(QPointF(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, {});
    QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(list.viewport(), &enter);
    QCoreApplication::sendEvent(list.viewport(), &drop);

    const auto latin1 = [&](char16_t lone) { return sandbox.filePath(QString(QChar(lone)) + u".jpg"_s); };
    EXPECT_EQ(list.paths(), QStringList({z, photo, text, latin1(0xDCE4), latin1(0xDCF6)}));
}

} // namespace
