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

using valtrona::SourceList;
using valtrona::test::Sandbox;

namespace {

struct SizeCase
{
    qint64 bytes;
    QLocale::Language language;
    const char *expected;
};

class SizeTextTest : public ::testing::TestWithParam<SizeCase>
{
};

TEST_P(SizeTextTest, KilobytesAtLeastOneRoundedAndGrouped)
{
    const SizeCase &c = GetParam();
    EXPECT_EQ(SourceList::sizeText(c.bytes, QLocale(c.language)).toStdString(), c.expected);
}

INSTANTIATE_TEST_SUITE_P(Sizes, SizeTextTest,
                         ::testing::Values(SizeCase{0, QLocale::German, "1 KB"}, SizeCase{300, QLocale::German, "1 KB"},
                                           SizeCase{1024, QLocale::German, "1 KB"},
                                           SizeCase{1600, QLocale::German, "2 KB"},
                                           SizeCase{2560, QLocale::German, "2 KB"}, // 2.5 -> 2, halves to even
                                           SizeCase{3584, QLocale::German, "4 KB"}, // 3.5 -> 4
                                           SizeCase{1048576, QLocale::German, "1.024 KB"},
                                           SizeCase{1048576, QLocale::English, "1,024 KB"},
                                           SizeCase{10737418240, QLocale::German, "10.485.760 KB"}));

TEST(SourceListTexts, CountAndDimensions)
{
    EXPECT_EQ(SourceList::countText(0), QStringLiteral("Keine Bilder"));
    EXPECT_EQ(SourceList::countText(1), QStringLiteral("1 Bild"));
    EXPECT_EQ(SourceList::countText(2), QStringLiteral("2 Bilder"));
    EXPECT_EQ(SourceList::countText(1370), QStringLiteral("1370 Bilder"));
    EXPECT_EQ(SourceList::dimensionText(QSize(10240, 7680)), QStringLiteral("10240 x 7680"));
    EXPECT_EQ(SourceList::dimensionText(QSize()), QStringLiteral("0 x 0"));
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

    QStringList column(int c) const
    {
        QStringList texts;
        for (int i = 0; i < list.topLevelItemCount(); ++i)
            texts.append(list.topLevelItem(i)->text(c));
        return texts;
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
    const QString a = file(QStringLiteral("a.jpg"), 1600);
    const QString b = file(QStringLiteral("sub/B.JPG"));
    const QString text = file(QStringLiteral("notes.txt"));
    QString upper = a;
    upper.replace(QLatin1String("a.jpg"), QLatin1String("A.jpg"));

    EXPECT_EQ(list.addSourceFiles({a, b, a, text}), 3);
    EXPECT_EQ(list.addSourceFiles({b, upper}), 1); // b known; another case is another key

    EXPECT_EQ(list.paths(), QStringList({a, b, text, upper}));
    EXPECT_EQ(column(SourceList::NameColumn),
              QStringList({QStringLiteral("a.jpg"), QStringLiteral("B.JPG"), QStringLiteral("notes.txt"),
                           QStringLiteral("A.jpg")}));
    EXPECT_EQ(list.topLevelItem(0)->text(SourceList::SizeColumn), SourceList::sizeText(1600, QLocale()));
    EXPECT_EQ(list.topLevelItem(0)->text(SourceList::DimensionColumn), QStringLiteral("40 x 30"));
    EXPECT_EQ(list.topLevelItem(2)->text(SourceList::DimensionColumn), QStringLiteral("0 x 0"));
    EXPECT_EQ(list.topLevelItem(3)->text(SourceList::SizeColumn), QStringLiteral("1 KB")); // missing file
    EXPECT_TRUE(list.topLevelItem(3)->text(SourceList::TrailingColumn).isEmpty());
    EXPECT_EQ(measured.size(), 4); // duplicates are never measured
}

TEST_F(SourceListTest, RowsNameTheirWholePathAndShowWhenTheFileIsGone)
{
    const QString first = file(QStringLiteral("a/IMG_1.jpg"));
    const QString second = file(QStringLiteral("b/IMG_1.jpg"));
    const QString missing = sandbox.filePath(QStringLiteral("never.jpg"));
    list.addSourceFiles({first, second, missing});
    const QColor grey = list.palette().color(QPalette::Disabled, QPalette::Text);
    auto looksGone = [&](int row) {
        const QTreeWidgetItem *item = list.topLevelItem(row);
        return list.isGone(row) && item->foreground(SourceList::NameColumn).color() == grey
            && item->toolTip(SourceList::SizeColumn).contains(QStringLiteral("nicht mehr vorhanden"));
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
    file(QStringLiteral("b/IMG_1.jpg")); // back again
    EXPECT_EQ(list.refreshAvailability(), 1);
    EXPECT_FALSE(looksGone(1));
}

TEST_F(SourceListTest, ImagingIsRestartedPerBatchAndEveryFifteenFiles)
{
    QStringList paths;
    for (int i = 1; i <= 31; ++i)
        paths.append(file(QStringLiteral("p%1.jpg").arg(i)));
    list.addSourceFiles(paths);
    EXPECT_EQ(restarts, 3); // at the start, before file 15 and file 30
    EXPECT_EQ(list.count(), 31);
}

TEST_F(SourceListTest, HeaderClicksAlternatePerColumnAndCompareText)
{
    list.addSourceFiles({file(QStringLiteral("b.jpg"), 9 * 1024), file(QStringLiteral("a.jpg"), 10 * 1024),
                         file(QStringLiteral("C.jpg"), 100 * 1024)});

    clickHeader(SourceList::NameColumn);
    EXPECT_EQ(column(0), QStringList({QStringLiteral("a.jpg"), QStringLiteral("b.jpg"), QStringLiteral("C.jpg")}));
    // Every caption keeps its room once the sort arrow shows.
    for (const int c : {SourceList::NameColumn, SourceList::SizeColumn, SourceList::DimensionColumn})
        EXPECT_GE(list.header()->sectionSize(c), list.header()->sectionSizeHint(c)) << c;
    clickHeader(SourceList::NameColumn);
    EXPECT_EQ(column(0), QStringList({QStringLiteral("C.jpg"), QStringLiteral("b.jpg"), QStringLiteral("a.jpg")}));

    // The size column keeps its own alternation: its first click ascends,
    // and it compares text, so "10 KB" < "100 KB" < "9 KB".
    clickHeader(SourceList::SizeColumn);
    EXPECT_EQ(column(1), QStringList({QStringLiteral("10 KB"), QStringLiteral("100 KB"), QStringLiteral("9 KB")}));
    clickHeader(SourceList::SizeColumn);
    EXPECT_EQ(column(1), QStringList({QStringLiteral("9 KB"), QStringLiteral("100 KB"), QStringLiteral("10 KB")}));

    clickHeader(SourceList::NameColumn); // third click on names: ascending again
    EXPECT_EQ(column(0), QStringList({QStringLiteral("a.jpg"), QStringLiteral("b.jpg"), QStringLiteral("C.jpg")}));

    // Rows added later are placed by the active sorting.
    list.addSourceFiles({file(QStringLiteral("B0.jpg"))});
    EXPECT_EQ(column(0), QStringList({QStringLiteral("a.jpg"), QStringLiteral("b.jpg"), QStringLiteral("B0.jpg"),
                                      QStringLiteral("C.jpg")}));
}

TEST_F(SourceListTest, PreviewFollowsClicksUnlessSeveralRowsAreSelected)
{
    const QString a = file(QStringLiteral("a.jpg"));
    const QString b = file(QStringLiteral("b.jpg"));
    list.addSourceFiles({a, b});
    QSignalSpy preview(&list, &SourceList::previewRequested);

    auto rowCentre = [this](int row) { return list.visualItemRect(list.topLevelItem(row)).center(); };
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, rowCentre(1));
    ASSERT_EQ(preview.size(), 1);
    EXPECT_EQ(preview.takeFirst().at(0).toString(), b);

    QTest::mouseClick(list.viewport(), Qt::LeftButton, Qt::ControlModifier, rowCentre(0));
    EXPECT_EQ(list.selectedItems().size(), 2);
    EXPECT_TRUE(preview.isEmpty()); // two rows selected: the preview keeps its picture

    QTest::mousePress(list.viewport(), Qt::LeftButton, {}, QPoint(10, list.viewport()->height() - 5));
    ASSERT_EQ(preview.size(), 1); // press on empty space clears at once
    EXPECT_TRUE(preview.takeFirst().at(0).toString().isEmpty());
    EXPECT_EQ(list.previewItem(), nullptr);
}

TEST_F(SourceListTest, KeyboardMovesThePreviewLikeClicks)
{
    const QString a = file(QStringLiteral("a.jpg"));
    const QString b = file(QStringLiteral("b.jpg"));
    list.addSourceFiles({a, b});
    list.setFocus();
    list.setCurrentItem(list.topLevelItem(0));
    QSignalSpy preview(&list, &SourceList::previewRequested);

    QTest::keyClick(&list, Qt::Key_Down);
    ASSERT_EQ(preview.size(), 1);
    EXPECT_EQ(preview.takeFirst().at(0).toString(), b);
    QTest::keyClick(&list, Qt::Key_Up, Qt::ShiftModifier); // extends the selection: two rows
    EXPECT_TRUE(preview.isEmpty());
}

TEST_F(SourceListTest, RemoveSelectedWalksAllRowsAndClearsThePreview)
{
    list.addSourceFiles({file(QStringLiteral("a.jpg")), file(QStringLiteral("b.jpg")), file(QStringLiteral("c.jpg")),
                         file(QStringLiteral("d.jpg"))});
    list.topLevelItem(0)->setSelected(true);
    list.topLevelItem(2)->setSelected(true);
    list.topLevelItem(3)->setSelected(true);
    QSignalSpy preview(&list, &SourceList::previewRequested);

    list.removeSelected();
    EXPECT_EQ(column(0), QStringList({QStringLiteral("b.jpg")}));
    ASSERT_EQ(preview.size(), 1);
    EXPECT_TRUE(preview.at(0).at(0).toString().isEmpty());

    list.removeSelected(); // nothing selected: rows stay, preview cleared again
    EXPECT_EQ(list.count(), 1);
    EXPECT_EQ(preview.size(), 2);

    // A removed path may be added again.
    list.addSourceFiles({sandbox.filePath(QStringLiteral("a.jpg"))});
    EXPECT_EQ(list.count(), 2);
}

TEST_F(SourceListTest, DroppedFilesAreAddedInDropOrderUnfilteredAndFoldersBringTheirPhotos)
{
    const QString z = file(QStringLiteral("z.png"));
    const QString text = file(QStringLiteral("readme.txt"));
    const QString photo = file(QStringLiteral("album/p.jpg"));
    file(QStringLiteral("album/.thumbnails/t.jpg"));
    file(QStringLiteral("album/notes.txt"));
    // Latin-1 names: each keeps a text of its own.
    sandbox.writeNativeFile("\xe4.jpg", "x");
    sandbox.writeNativeFile("\xf6.jpg", "x");
    const QString base = QUrl::fromLocalFile(sandbox.path()).toString(QUrl::FullyEncoded);
    // A file manager's drop reaches the widget under the pointer that accepts drops.
    EXPECT_TRUE(list.viewport()->acceptDrops());
    QMimeData mime;
    mime.setUrls({QUrl::fromLocalFile(z), QUrl::fromLocalFile(sandbox.filePath(QStringLiteral("album"))),
                  QUrl::fromLocalFile(text), QUrl(QStringLiteral("https://example.org/x.jpg")),
                  QUrl::fromEncoded((base + QStringLiteral("/%E4.jpg")).toLatin1()),
                  QUrl::fromEncoded((base + QStringLiteral("/%F6.jpg")).toLatin1())});
    QDropEvent drop(QPointF(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, {});
    QDragEnterEvent enter(QPoint(20, 20), Qt::CopyAction, &mime, Qt::LeftButton, {});
    QCoreApplication::sendEvent(list.viewport(), &enter);
    QCoreApplication::sendEvent(list.viewport(), &drop);

    const auto latin1 = [&](char16_t lone) { return sandbox.filePath(QString(QChar(lone)) + QStringLiteral(".jpg")); };
    EXPECT_EQ(list.paths(), QStringList({z, photo, text, latin1(0xDCE4), latin1(0xDCF6)}));

    QMimeData plain;
    plain.setText(QStringLiteral("/etc/hostname"));
    QDropEvent textDrop(QPointF(20, 20), Qt::CopyAction, &plain, Qt::LeftButton, {});
    QCoreApplication::sendEvent(list.viewport(), &textDrop);
    EXPECT_EQ(list.count(), 5);
}

} // namespace
