#include <cmath>
#include <limits>
#include <stdexcept>

#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QDeadlineTimer>
#include <QFileDialog>
#include <QFontMetrics>
#include <QImageReader>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include "controls/controlsupport.h"
#include "controls/vxpict.h"
#include "core/base64.h"
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
        if (raise)
            throw std::runtime_error("reader broke");
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
    bool raise = false;
};

QByteArray encoded(QSize size, const char *format, QColor colour = QColor(200, 120, 40))
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, format));
    return bytes;
}

TEST(PictureGeometry, ShownSizeBySizeModeAndZoom)
{
    const struct
    {
        QSize own, area;
        int mode, thumbnailHeight;
        double zoom;
        QSize expected;
    } cases[] = {
        {{640, 480}, {320, 320}, 0, 110, 1.0, {320, 240}},
        {{480, 640}, {320, 320}, 0, 110, 1.0, {240, 320}},
        {{100, 50}, {400, 400}, 0, 110, 1.0, {400, 200}}, // small pictures are stretched up
        {{640, 480}, {320, 320}, 0, 110, 2.0, {640, 480}},
        {{640, 480}, {320, 320}, 0, 110, -1.0, {320, 240}}, // bad zoom counts as 1
        {{640, 480}, {320, 320}, 1, 110, 1.0, {640, 480}},
        {{640, 480}, {320, 320}, 2, 110, 1.0, {147, 110}}, // 146.67 -> 147
        {{640, 480}, {320, 320}, 2, 0, 1.0, {320, 240}},   // no height: fit
        {{640, 480}, {300, 100}, 3, 110, 0.5, {150, 50}},
        {{640, 480}, {320, 320}, 9, 110, 1.0, {320, 240}}, // unknown mode fits
        {{3, 1}, {5, 5}, 0, 110, 1.0, {5, 2}},             // 1.67 -> 2
        {{2, 5}, {5, 1}, 0, 110, 1.0, {1, 1}},             // never below 1 px
        {{0, 0}, {320, 320}, 0, 110, 1.0, {}},
        {{640, 480}, {0, 0}, 0, 110, 1.0, {}},
    };
    for (const auto &c : cases)
        EXPECT_EQ(pictureShownSize(c.own, c.area, c.mode, c.thumbnailHeight, c.zoom), c.expected)
            << "own " << c.own.width() << "x" << c.own.height() << " mode " << c.mode << " zoom " << c.zoom;
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
        view.setTickCounter([this] { return tick; });
    }

    std::shared_ptr<FakeLoader> loader = std::make_shared<FakeLoader>();
    quint32 tick = 1000;
    VxPict view;
};

TEST_F(VxPictTest, LoadRaisesStartThenDoneWithItsValuesAlsoWhenReadingFails)
{
    QStringList order;
    QObject::connect(&view, &VxPict::loadStart, &view, [&] {
        order.append(u"start"_s);
        tick += 250; // the load takes 250 ms
    });
    QObject::connect(&view, &VxPict::loadDone, &view, [&](bool placed, qint64 ms, bool readOk) {
        order.append(u"done %1 %2 %3"_s.arg(placed).arg(ms).arg(readOk));
        EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << "the wait cursor must be restored";
    });
    view.setFileName(u"/bilder/IMG_0001.JPG"_s);
    loader->fail = true;
    tick = 0xFFFFFF00u; // the tick counter wraps during this load
    view.setFileName(u"/bilder/kaputt.jpg"_s);
    EXPECT_FALSE(view.hasPicture()) << "no stale picture for a file that failed";
    loader->raise = true;
    view.setFileName(u"/bilder/wirft.jpg"_s);
    EXPECT_EQ(order, QStringList({u"start"_s, u"done 1 250 1"_s, u"start"_s, u"done 0 250 0"_s, u"start"_s,
                                  u"done 0 250 0"_s}));
}

TEST_F(VxPictTest, SameNameInAnotherLetterCaseReusesTheHeldPicture)
{
    QSignalSpy done(&view, &VxPict::loadDone);
    const struct
    {
        const char16_t *name;
        bool reload, fail;
        int reads;
    } steps[] = {
        {u"/bilder/a.jpg", false, false, 1}, {u"/BILDER/A.JPG", false, false, 1},
        {u"/bilder/a.jpg", true, false, 2}, // ReloadFileName reads again
        {u"/bilder/c.jpg", false, true, 3}, {u"/bilder/C.jpg", false, false, 4}, // a failed name is read again
    };
    for (const auto &s : steps) {
        view.setReloadFileName(s.reload);
        loader->fail = s.fail;
        view.setFileName(QString::fromUtf16(s.name));
        EXPECT_EQ(loader->paths.size(), s.reads) << QString::fromUtf16(s.name).toStdString();
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
    const QSize work = view.workArea().size();
    EXPECT_LE(view.pictureOrg().width(), int(std::ceil(work.width() * view.devicePixelRatioF())));
    EXPECT_EQ(view.pictureRect(), picturePlacement(pictureShownSize({4000, 3000}, work, 0, 110, 1.0),
                                                   view.workArea(), 4));
    const int before = view.pictureOrg().width();
    view.resize(600, 450);
    for (QDeadlineTimer deadline(3000); view.pictureOrg().width() <= before && !deadline.hasExpired();)
        QTest::qWait(10);
    EXPECT_GT(view.pictureOrg().width(), before);
    EXPECT_EQ(loader->paths.size(), 2);
    EXPECT_GE(view.pictureOrg().width() + 1, view.displayWidth());
}

TEST_F(VxPictTest, ToolTipByMode)
{
    const struct
    {
        int mode;
        bool withPicture;
        const char16_t *expected;
    } cases[] = {
        {0, true, u""}, {1, true, u"640x480"}, {2, true, u"/bilder/a.jpg"}, {3, true, u"640x480 - /bilder/a.jpg"},
        {4, true, u""}, {-1, true, u""},
        {3, false, u"/bilder/a.jpg"}, // no picture held: only the name, no " - "
        {1, false, u""},
    };
    view.setReloadFileName(true);
    for (const auto &c : cases) {
        loader->fail = !c.withPicture;
        view.setFileName(u"/bilder/a.jpg"_s);
        view.setShowPictureToolTip(c.mode);
        EXPECT_EQ(view.toolTip(), QString::fromUtf16(c.expected)) << c.mode << " " << c.withPicture;
    }
    // The tooltip follows a new picture without setting the mode again.
    loader->fail = false;
    loader->ownSize = QSize(33, 44);
    view.setShowPictureToolTip(1);
    view.setFileName(u"/bilder/b.jpg"_s);
    EXPECT_EQ(view.toolTip(), u"33x44"_s);
}

TEST_F(VxPictTest, OuterOffsetOutsideZeroToSixteenAndRunTimeMembersWhileDesigningAreRefused)
{
    const std::pair<int, int> cases[] = {{16, 16}, {17, 16}, {-1, 16}, {0, 0}, {100, 0}};
    const QStringList messages = test::controlMessages([&] {
        for (const auto &[value, kept] : cases) {
            view.setOuterOffset(value);
            EXPECT_EQ(view.outerOffset(), kept) << value;
        }
    });
    EXPECT_EQ(messages, QStringList(3, u"Die 'OuterOffset' Eigenschaft muß zwischen 0 und 16 liegen !"_s));

    QSignalSpy start(&view, &VxPict::loadStart);
    view.setDesignMode(true);
    EXPECT_EQ(test::controlMessages([&] { view.setFileName(u"/bilder/a.jpg"_s); }),
              QStringList {u"Zur Entwurfszeit nicht gültig !"_s});
    EXPECT_EQ(start.size(), 0);
    view.setDesignMode(false);
    view.setFileName(u"/bilder/a.jpg"_s);
    EXPECT_EQ(start.size(), 1);
}

TEST_F(VxPictTest, ContextMenuSwitchesThePreviewSizeOrTheHostShowsItsOwn)
{
    view.setFileName(u"/bilder/a.jpg"_s);
    QSignalSpy changed(&view, &VxPict::previewSizeChanged);
    const std::unique_ptr<QMenu> menu(view.createContextMenu());
    QMenu *size = nullptr;
    for (QAction *action : menu->actions()) {
        if (action->menu() && action->text() == u"Größe")
            size = action->menu();
    }
    ASSERT_NE(size, nullptr) << "the menu needs its size item";
    ASSERT_EQ(size->actions().size(), 4);
    EXPECT_TRUE(size->actions().at(0)->isChecked());
    size->actions().at(1)->trigger();
    EXPECT_EQ(view.previewSize(), 1);
    EXPECT_EQ(view.displayWidth(), 640);
    view.setPreviewSize(1);
    EXPECT_EQ(changed, QList<QList<QVariant>>({{1}})) << "no change, no signal";

    QSignalSpy popUp(&view, &VxPict::displayUserPopUp);
    view.setUsePopUpMenu(false);
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), QPoint(105, 205));
    QApplication::sendEvent(&view, &event);
    EXPECT_EQ(popUp, QList<QList<QVariant>>({{QPoint(105, 205)}}));
}

TEST_F(VxPictTest, ZoomStepsCapsAndRefusedFactors)
{
    view.setFileName(u"/bilder/a.jpg"_s);
    const int fitted = view.displayWidth();
    view.zoomIncrease();
    EXPECT_DOUBLE_EQ(view.zoomfaktor(), 1.25);
    EXPECT_EQ(view.displayWidth(), int(std::nearbyint(fitted * 1.25)));
    view.zoomIncrease(-2);
    EXPECT_DOUBLE_EQ(view.zoomfaktor(), 0.8);
    for (const double bad : {0.0, -2.0, std::nan(""), std::numeric_limits<double>::infinity()})
        view.setZoomfaktor(bad);
    EXPECT_DOUBLE_EQ(view.zoomfaktor(), 0.8);
    view.setZoomfaktor(1e9);
    EXPECT_DOUBLE_EQ(view.zoomfaktor(), 64.0) << "deep zoom is capped";
}

TEST_F(VxPictTest, CaptionNameLineAndOffsetsShrinkTheWorkArea)
{
    view.setBorderStyle(BorderStyleCode::NoBorder);
    view.setPictureOffset(0);
    EXPECT_EQ(view.workArea(), view.rect());
    view.setPictureOffset(6);
    view.setTopOffset(10);
    const int line = QFontMetrics(view.font()).height() + 4;
    view.setCaption(u"Vorschau"_s);
    view.setShowPictureName(true);
    EXPECT_EQ(view.workArea(), view.rect().adjusted(6, 16 + line, -6, -6 - line));
    view.setFileName(u"/bilder/a.jpg"_s);
    EXPECT_TRUE(view.workArea().contains(view.pictureRect()));
}

TEST_F(VxPictTest, DirectPictureLanguageAndTermination)
{
    QImage image(20, 10, QImage::Format_RGB32);
    image.fill(Qt::blue);
    view.setShowPictureToolTip(1);
    view.setPicture(image);
    EXPECT_EQ(view.toolTip(), u"20x10"_s);
    EXPECT_EQ(view.getColorAverage(), 0xFF0000u) << "blue as a colour value";
    EXPECT_TRUE(loader->paths.isEmpty());

    EXPECT_TRUE(view.ctlSetUserControlLanguage(u"Caption"_s, u"Preview"_s));
    EXPECT_EQ(view.caption(), u"Preview"_s);
    EXPECT_FALSE(view.ctlSetUserControlLanguage(u"FileName"_s, u"x"_s));
    view.setCtlUseLng(0);
    EXPECT_FALSE(view.ctlSetUserControlLanguage(u"Caption"_s, u"Vorschau"_s));

    view.terminateControl();
    EXPECT_FALSE(view.hasPicture());
    EXPECT_TRUE(view.toolTip().isEmpty());
    view.setPicture(image); // a new picture still shows, with the default loader
    EXPECT_TRUE(view.hasPicture());
}

TEST(VxPictBase64, PicturesAreDecodedInMemoryFromBufferOrTextFile)
{
    const QByteArray png = encoded({48, 32}, "PNG", QColor(10, 200, 30));
    Base64Encoding standard;
    Base64Encoding own;
    own.setActiveCodingTable(1);
    const std::tuple<const char *, int, QByteArray, bool> cases[] = {
        {"plain", 0, standard.encodeB64(png), true},
        {"in lines of 76", 0, Base64Encoding::span(76, standard.encodeB64(png)), true},
        {"coding table 1", 1, own.encodeB64(png), true},
        {"no picture", 0, QByteArray("kein Bild!"), false},
        {"cut off", 0, standard.encodeB64(png).left(40), false},
    };
    test::Sandbox sandbox;
    for (const auto &[what, table, text, picture] : cases) {
        VxPict view;
        view.setFileName(sandbox.writeFile(u"vorher.png"_s, png));
        view.base64Codec().setActiveCodingTable(table);
        view.setPictureB64Buffer(text);
        EXPECT_TRUE(view.fileName().isEmpty()) << what;
        EXPECT_EQ(QSize(view.pictureWidth(), view.pictureHeight()), picture ? QSize(48, 32) : QSize(0, 0)) << what;
        EXPECT_EQ(view.hasPicture() && view.pictureOrg().pixelColor(5, 5) == QColor(10, 200, 30), picture) << what;

        VxPict fromFile;
        fromFile.base64Codec().setActiveCodingTable(table);
        fromFile.setFileNameB64(sandbox.writeFile(u"bild.b64"_s, text));
        EXPECT_EQ(fromFile.pictureWidth(), picture ? 48 : 0) << what;
    }
    VxPict view;
    view.setFileNameB64(sandbox.filePath(u"fehlt.b64"_s));
    EXPECT_FALSE(view.hasPicture());
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST(VxPictFiles, RealJpegIsReadSmallAndSavedOrCopiedFull)
{
    test::Sandbox sandbox;
    VxPict view;
    view.resize(220, 170);
    view.setFileName(sandbox.writeFile(u"foto.jpg"_s, encoded({1600, 1200}, "JPEG")));
    ASSERT_TRUE(view.hasPicture());
    EXPECT_EQ(view.pictureWidth(), 1600);
    EXPECT_LE(view.pictureOrg().width(), 220) << "decoded larger than shown";

    const QString target = sandbox.filePath(u"kopie.bmp"_s);
    ASSERT_TRUE(view.saveBitmapTo(target));
    EXPECT_EQ(QImageReader(target).format(), "bmp");
    EXPECT_EQ(QImageReader(target).size(), QSize(1600, 1200)) << "saved at full size";
    ASSERT_TRUE(view.copyToClip());
    EXPECT_EQ(QGuiApplication::clipboard()->image().size(), QSize(1600, 1200));

    QSignalSpy done(&view, &VxPict::loadDone);
    view.setFileName(sandbox.filePath(u"fehlt.jpg"_s));
    view.setFileName(sandbox.writeFile(u"leer.jpg"_s, {}));
    view.setFileName(sandbox.writeFile(u"text.jpg"_s, "kein Bild"));
    ASSERT_EQ(done.size(), 3);
    for (const QList<QVariant> &values : done)
        EXPECT_FALSE(values.at(2).toBool());
    EXPECT_FALSE(view.saveBitmapTo(target)) << "nothing held, nothing saved";
}

TEST(VxPictFiles, ReadsEveryFormatTheConversionTakesAndTurnsByExif)
{
    test::Sandbox sandbox;
    QStringList paths;
    for (const char *format : {"jpg", "png", "bmp", "tif"})
        paths.append(sandbox.writeFile(u"bild."_s + QLatin1String(format), encoded({36, 24}, format)));
    // Qt writes no GIF; this is a complete 1 x 1 GIF file.
    paths.append(sandbox.writeFile(u"bild.gif"_s, QByteArray::fromHex("47494638396101000100800000ffffff00000021f9"
                                                                      "0401000000002c00000000010001000002024401003b")));
    for (const QString &path : paths) {
        VxPict view;
        view.resize(100, 80);
        view.setFileName(path);
        EXPECT_EQ(view.pictureWidth(), path.endsWith(u".gif") ? 1 : 36) << path.toStdString();
    }

    // A JPEG whose EXIF block says "turn 90 degrees clockwise to view" (orientation 6).
    const QByteArray exif = QByteArray("Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0\x06\0\0\0\0\0\0\0", 32);
    QByteArray turned = encoded({400, 200}, "JPEG");
    turned.insert(2, QByteArray("\xFF\xE1\0", 3) + char(exif.size() + 2) + exif);
    VxPict view;
    view.resize(220, 220);
    view.setFileName(sandbox.writeFile(u"hoch.jpg"_s, turned));
    EXPECT_EQ(QSize(view.pictureWidth(), view.pictureHeight()), QSize(200, 400));
    EXPECT_LT(view.pictureOrg().width(), view.pictureOrg().height());
}

TEST(VxPictFiles, HugeAndOddlyNamedFilesNeitherCrashNorHang)
{
    test::Sandbox sandbox;
    VxPict view;
    view.resize(160, 120);
    QSignalSpy done(&view, &VxPict::loadDone);
    const QString huge = test::dataPath(u"run/huge.png"_s);
    ASSERT_EQ(QImageReader(huge).size(), QSize(100000, 100000)) << "the header must be valid";
    view.setFileName(huge);
    ASSERT_EQ(done.size(), 1);
    EXPECT_FALSE(done[0].at(2).toBool()) << "a 40-gigabyte picture must be refused";
    EXPECT_FALSE(view.hasPicture());

    const QString odd = sandbox.writeFile(u"Ferien Über #1 (Kopie) 'ä'.jpg"_s, encoded({64, 48}, "JPEG"));
    view.setShowPictureToolTip(3);
    view.setFileName(odd);
    EXPECT_EQ(view.toolTip(), u"64x48 - "_s + odd);
}

TEST(VxPictFiles, SaveDialogAsksForABitmap)
{
    test::Sandbox sandbox;
    VxPict view;
    QImage image(30, 20, QImage::Format_RGB32);
    image.fill(Qt::red);
    view.setPicture(image);
    const QString target = sandbox.filePath(u"gespeichert"_s);
    QStringList seen;
    QTimer::singleShot(0, &view, [&] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        seen = QStringList {dialog->windowTitle(), dialog->nameFilters().join(u'|'), dialog->defaultSuffix()};
        dialog->selectFile(target);
        QMetaObject::invokeMethod(dialog, "accept");
    });
    EXPECT_TRUE(view.saveBitmapFile());
    EXPECT_EQ(seen, QStringList({u"Bitmap speichern unter :"_s, u"Bitmap (*.bmp)"_s, u"bmp"_s}));
    EXPECT_EQ(QImage(target + u".bmp").size(), QSize(30, 20)) << "the default extension is added";
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
    for (const auto &[backStyle, colour] : {std::pair(0, QColor(Qt::blue)), std::pair(3, QColor(Qt::blue))}) {
        view->setBackStyle(backStyle);
        EXPECT_EQ(at(centre), colour) << "BackStyle " << backStyle << " leaves the background to the host";
    }
}

} // namespace
} // namespace valtrona
