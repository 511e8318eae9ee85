#include <cmath>

#include <QApplication>
#include <QClipboard>
#include <QImageReader>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include "controls/controlsupport.h"
#include "controls/vxpict.h"
#include "controlstest.h"
#include "support/testsupport.h"

using namespace Qt::StringLiterals;

namespace valtrona {
namespace {

// A loader that makes pictures up: it counts its calls and answers with a
// picture of `ownSize`, decoded at the size the view asks for.
class FakeLoader : public PictureLoader
{
public:
    LoadedPicture load(const QString &path, const ShownSizeFunction &shownSize) override
    {
        paths.append(path);
        if (fail)
            return {};
        QImage image(shownSize ? shownSize(ownSize).boundedTo(ownSize) : ownSize, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        return {image, ownSize};
    }
    LoadedPicture loadFromData(const QByteArray &, const ShownSizeFunction &) override { return {}; }

    QStringList paths;
    QSize ownSize {640, 480};
    bool fail = false;
};

TEST(PictureGeometry, ShownSizeBySizeModeAndZoom)
{
    // Picture, area, size mode, thumbnail height, zoom; the size shown.
    const std::tuple<QSize, QSize, int, int, double, QSize> cases[] = {
        {{640, 480}, {320, 320}, 0, 110, 1.0, {320, 240}},
        {{480, 640}, {320, 320}, 0, 110, 1.0, {240, 320}},
        {{100, 50}, {400, 400}, 0, 110, 1.0, {400, 200}}, // small pictures are stretched up
        {{640, 480}, {320, 320}, 1, 110, 1.0, {640, 480}},
        {{640, 480}, {320, 320}, 2, 110, 1.0, {147, 110}}, // 146.67 -> 147
        {{640, 480}, {320, 320}, 2, 0, 1.0, {320, 240}},   // no height: fit
        {{640, 480}, {300, 100}, 3, 110, 0.5, {150, 50}},
        {{3, 1}, {5, 5}, 0, 110, 1.0, {5, 2}},             // 1.67 -> 2
        {{2, 5}, {5, 1}, 0, 110, 1.0, {1, 1}},             // never below 1 px
        {{0, 0}, {320, 320}, 0, 110, 1.0, {}},
    };
    for (const auto &[own, area, mode, thumbnailHeight, zoom, expected] : cases)
        EXPECT_EQ(pictureShownSize(own, area, mode, thumbnailHeight, zoom), expected)
            << "own " << own.width() << "x" << own.height() << " mode " << mode << " zoom " << zoom;
}

TEST(PictureGeometry, PlacementReadsLikeAKeypad)
{
    const QRect area(10, 20, 100, 50);
    const QPoint expected[] = {{10, 20}, {40, 20}, {70, 20}, {10, 35}, {40, 35},
                               {70, 35}, {10, 50}, {40, 50}, {70, 50}};
    for (int alignment = -1; alignment <= 9; ++alignment) {
        const QPoint topLeft = alignment >= 0 && alignment <= 8 ? expected[alignment] : QPoint(40, 35);
        EXPECT_EQ(picturePlacement({40, 20}, area, alignment), QRect(topLeft, QSize(40, 20))) << alignment;
    }
    // A picture larger than the area overhangs it the same way.
    EXPECT_EQ(picturePlacement({140, 90}, area, 4).topLeft(), QPoint(-10, 0));
    EXPECT_EQ(picturePlacement({140, 90}, area, 8).topLeft(), QPoint(-30, -20));
}

class VxPictTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        view.setPictureLoader(loader);
        view.resize(320, 240);
    }

    std::shared_ptr<FakeLoader> loader = std::make_shared<FakeLoader>();
    VxPict view;
};

TEST_F(VxPictTest, SameNameInAnotherLetterCaseReusesTheHeldPicture)
{
    QSignalSpy done(&view, &VxPict::loadDone);
    // Name, ReloadFileName, whether reading fails, reads so far.
    const std::tuple<const char16_t *, bool, bool, int> steps[] = {
        {u"/bilder/a.jpg", false, false, 1}, {u"/BILDER/A.JPG", false, false, 1},
        {u"/bilder/a.jpg", true, false, 2}, // ReloadFileName reads again
        {u"/bilder/c.jpg", false, true, 3}, {u"/bilder/C.jpg", false, false, 4}, // a failed name is read again
    };
    for (const auto &[name, reload, fail, reads] : steps) {
        view.setReloadFileName(reload);
        loader->fail = fail;
        view.setFileName(QString::fromUtf16(name));
        EXPECT_EQ(loader->paths.size(), reads) << QString::fromUtf16(name).toStdString();
    }
    EXPECT_TRUE(done.value(1).value(2).toBool()) << "not read again counts as read";
    view.cls();
    EXPECT_FALSE(view.hasPicture());
    EXPECT_TRUE(view.fileName().isEmpty());
    view.setFileName(u"/bilder/C.jpg"_s);
    EXPECT_EQ(loader->paths.size(), 5) << "after CLS the picture is read again";
}

TEST_F(VxPictTest, PictureIsReadAtTheSizeShownAndAgainWhenTheViewGrows)
{
    loader->ownSize = QSize(4000, 3000);
    view.resize(120, 90);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    view.setFileName(u"/bilder/gross.jpg"_s);
    EXPECT_EQ(QSize(view.pictureWidth(), view.pictureHeight()), QSize(4000, 3000));
    EXPECT_LE(view.pictureOrg().width(), int(std::ceil(view.workArea().width() * view.devicePixelRatioF())));
    const int before = view.pictureOrg().width();
    view.resize(600, 450);
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.pictureOrg().width() > before; }, 3000));
    EXPECT_EQ(loader->paths.size(), 2);
    EXPECT_GE(view.pictureOrg().width() + 1, view.displayWidth());
}

TEST_F(VxPictTest, ToolTipByMode)
{
    // ShowPictureToolTip, whether a picture is held; the tooltip.
    const std::tuple<int, bool, const char16_t *> cases[] = {
        {0, true, u""}, {1, true, u"640x480"}, {2, true, u"/bilder/a.jpg"}, {3, true, u"640x480 - /bilder/a.jpg"},
        {4, true, u""}, {3, false, u"/bilder/a.jpg"}, // no picture held: only the name, no " - "
    };
    view.setReloadFileName(true);
    for (const auto &[mode, withPicture, expected] : cases) {
        loader->fail = !withPicture;
        view.setFileName(u"/bilder/a.jpg"_s);
        view.setShowPictureToolTip(mode);
        EXPECT_EQ(view.toolTip(), QString::fromUtf16(expected)) << mode << " " << withPicture;
    }
    // The tooltip follows a new picture without setting the mode again.
    loader->fail = false;
    loader->ownSize = QSize(33, 44);
    view.setShowPictureToolTip(1);
    view.setFileName(u"/bilder/b.jpg"_s);
    EXPECT_EQ(view.toolTip(), u"33x44"_s);
}

TEST_F(VxPictTest, OuterOffsetOutsideZeroToSixteenIsRefused)
{
    const std::pair<int, int> cases[] = {{16, 16}, {17, 16}, {-1, 16}, {0, 0}, {100, 0}};
    const QStringList messages = test::controlMessages([&] {
        for (const auto &[value, kept] : cases) {
            view.setOuterOffset(value);
            EXPECT_EQ(view.outerOffset(), kept) << value;
        }
    });
    EXPECT_EQ(messages, QStringList(3, u"Die 'OuterOffset' Eigenschaft muß zwischen 0 und 16 liegen !"_s));
}

TEST_F(VxPictTest, ContextMenuSwitchesThePreviewSizeAndCopiesOrSavesTheWholePicture)
{
    loader->ownSize = QSize(1600, 1200);
    view.setFileName(u"/bilder/a.jpg"_s);
    EXPECT_LE(view.pictureOrg().width(), 320) << "decoded larger than shown";
    QSignalSpy changed(&view, &VxPict::previewSizeChanged);
    const std::unique_ptr<QMenu> menu(view.createContextMenu());
    QMenu *size = nullptr;
    for (QAction *action : menu->actions()) {
        if (action->menu() && action->text() == u"Größe")
            size = action->menu();
    }
    ASSERT_NE(size, nullptr) << "the menu needs its size item";
    size->actions().at(1)->trigger();
    EXPECT_EQ(view.previewSize(), 1);
    EXPECT_EQ(view.displayWidth(), 1600);
    view.setPreviewSize(1);
    EXPECT_EQ(changed, QList<QList<QVariant>>({{1}})) << "no change, no signal";

    test::Sandbox sandbox;
    const QString target = sandbox.filePath(u"kopie.bmp"_s);
    ASSERT_TRUE(view.saveBitmapTo(target));
    EXPECT_EQ(QImageReader(target).format(), "bmp");
    EXPECT_EQ(QImageReader(target).size(), QSize(1600, 1200)) << "saved at full size";
    ASSERT_TRUE(view.copyToClip());
    EXPECT_EQ(QGuiApplication::clipboard()->image().size(), QSize(1600, 1200));
}

TEST(VxPictPixels, MaskColourOnlyWithUseMaskColorAndBackgroundByBackStyle)
{
    QWidget window;
    test::fillWindow(window, {100, 100}, Qt::blue);
    auto *view = new VxPict(&window);
    view->resize(100, 100);
    view->setBackColor(0x00FF00); // green behind the picture
    view->setShowPictureFrame(false);
    QImage image(10, 10, QImage::Format_RGB32);
    image.fill(QColor(255, 0, 255));
    view->setPicture(image);
    const QPoint centre = view->pictureRect().center();
    const auto at = [&](QPoint point) { return window.grab().toImage().pixelColor(point); };

    EXPECT_EQ(at(centre), QColor(255, 0, 255)) << "the default magenta has no effect while UseMaskColor is off";
    view->setUseMaskColor(true);
    EXPECT_EQ(at(centre), QColor(0, 255, 0)) << "magenta is transparent";
    view->setBackStyle(3); // unknown: transparent like 0, the host's background shows
    EXPECT_EQ(at(centre), QColor(Qt::blue));
}

} // namespace
} // namespace valtrona
