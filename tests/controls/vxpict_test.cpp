#include <cmath>
#include <limits>
#include <stdexcept>

#include <QApplication>
#include <QBuffer>
#include <QDeadlineTimer>
#include <QClipboard>
#include <QFileDialog>
#include <QFontMetrics>
#include <QImageReader>
#include <QImageWriter>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include "controls/controlsupport.h"
#include "core/base64.h"
#include "controls/vxpict.h"
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
        return make(shownSize);
    }
    LoadedPicture loadFromData(const QByteArray &, const ShownSizeFunction &shownSize) override
    {
        ++dataLoads;
        return make(shownSize);
    }

    QStringList paths;
    int dataLoads = 0;
    QSize ownSize {640, 480};
    bool fail = false;
    bool raise = false;

private:
    LoadedPicture make(const ShownSizeFunction &shownSize)
    {
        if (raise)
            throw std::runtime_error("reader broke");
        if (fail)
            return {};
        const QSize size = shownSize ? shownSize(ownSize).boundedTo(ownSize) : ownSize;
        QImage image(size, QImage::Format_RGB32);
        image.fill(Qt::darkCyan);
        return {image, ownSize};
    }
};

// Catches the messages of the controls instead of showing boxes.
class MessageCatcher
{
public:
    MessageCatcher()
        : m_previous(setControlMessageHandler(
              [this](QWidget *, const QString &text) { messages.append(text); }))
    {
    }
    ~MessageCatcher() { setControlMessageHandler(m_previous); }

    QStringList messages;

private:
    ControlMessageHandler m_previous;
};

// Waits, serving events, until `condition` holds or `ms` have passed.
bool waitFor(const std::function<bool()> &condition, int ms = 3000)
{
    QDeadlineTimer deadline(ms);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QTest::qWait(10);
    }
    return true;
}

QByteArray jpegBytes(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(QColor(200, 120, 40));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    EXPECT_TRUE(image.save(&buffer, "JPEG"));
    return bytes;
}

// A JPEG whose EXIF block says "turn 90 degrees clockwise to view"
// (orientation 6): an APP1 segment right after the start marker.
QByteArray turnedJpegBytes(QSize storedSize)
{
    const QByteArray exif = QByteArray("Exif\0\0", 6)
        + QByteArray("II*\0\x08\0\0\0", 8)              // little-endian TIFF, IFD at 8
        + QByteArray("\x01\0", 2)                          // one entry
        + QByteArray("\x12\x01\x03\0\x01\0\0\0\x06\0\0\0", 12) // Orientation, SHORT, 1, 6
        + QByteArray("\0\0\0\0", 4);                     // no next IFD
    const int length = int(exif.size()) + 2;
    QByteArray segment("\xFF\xE1", 2);
    segment.append(char(length >> 8)).append(char(length & 0xFF)).append(exif);
    QByteArray bytes = jpegBytes(storedSize);
    bytes.insert(2, segment);
    return bytes;
}

TEST(PictureGeometry, ShownSizeBySizeModeAndZoom)
{
    const struct
    {
        QSize own;
        QSize area;
        int mode;
        int thumbnailHeight;
        double zoom;
        QSize expected;
    } cases[] = {
        {{640, 480}, {320, 320}, PreviewSizeMode::Fit, 110, 1.0, {320, 240}},
        {{480, 640}, {320, 320}, PreviewSizeMode::Fit, 110, 1.0, {240, 320}},
        {{100, 50}, {400, 400}, PreviewSizeMode::Fit, 110, 1.0, {400, 200}}, // small pictures are stretched up
        {{640, 480}, {320, 320}, PreviewSizeMode::Fit, 110, 2.0, {640, 480}},
        {{640, 480}, {320, 320}, PreviewSizeMode::Fit, 110, 0.5, {160, 120}},
        {{640, 480}, {320, 320}, PreviewSizeMode::Fit, 110, -1.0, {320, 240}}, // bad zoom counts as 1
        {{640, 480}, {320, 320}, PreviewSizeMode::Original, 110, 1.0, {640, 480}},
        {{640, 480}, {320, 320}, PreviewSizeMode::Thumbnail, 110, 1.0, {147, 110}}, // 146.67 -> 147
        {{640, 480}, {320, 320}, PreviewSizeMode::Thumbnail, 0, 1.0, {320, 240}},  // no height: fit
        {{640, 480}, {300, 100}, PreviewSizeMode::Stretch, 110, 1.0, {300, 100}},
        {{640, 480}, {320, 320}, 9, 110, 1.0, {320, 240}},                         // unknown mode fits
        {{3, 1}, {5, 5}, PreviewSizeMode::Fit, 110, 1.0, {5, 2}},                  // 1.67 -> 2
        {{2, 5}, {5, 1}, PreviewSizeMode::Fit, 110, 1.0, {1, 1}},                  // never below 1 px
        {{0, 0}, {320, 320}, PreviewSizeMode::Fit, 110, 1.0, {}},
        {{640, 480}, {0, 0}, PreviewSizeMode::Fit, 110, 1.0, {}},
    };
    for (const auto &c : cases)
        EXPECT_EQ(pictureShownSize(c.own, c.area, c.mode, c.thumbnailHeight, c.zoom), c.expected)
            << "own " << c.own.width() << "x" << c.own.height() << " mode " << c.mode << " zoom " << c.zoom;
}

TEST(PictureGeometry, PlacementReadsLikeAKeypad)
{
    const QRect area(10, 20, 100, 50);
    const QSize shown(40, 20);
    const struct
    {
        int alignment;
        QPoint topLeft;
    } cases[] = {
        {0, {10, 20}}, {1, {40, 20}}, {2, {70, 20}}, {3, {10, 35}}, {4, {40, 35}},
        {5, {70, 35}}, {6, {10, 50}}, {7, {40, 50}}, {8, {70, 50}}, {9, {40, 35}}, {-1, {40, 35}},
    };
    for (const auto &c : cases) {
        const QRect placed = picturePlacement(shown, area, c.alignment);
        EXPECT_EQ(placed.topLeft(), c.topLeft) << "alignment " << c.alignment;
        EXPECT_EQ(placed.size(), shown);
    }
    // A picture larger than the area overhangs it evenly when centred.
    EXPECT_EQ(picturePlacement({140, 90}, area, 4).topLeft(), QPoint(-10, 0));
    EXPECT_EQ(picturePlacement({140, 90}, area, 8).topLeft(), QPoint(-30, -20));
}

class VxPictTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        loader = std::make_shared<FakeLoader>();
        view.setPictureLoader(loader);
        view.resize(320, 240);
        view.setTickCounter([this] { return tick; });
    }

    std::shared_ptr<FakeLoader> loader;
    quint32 tick = 1000;
    VxPict view;
};

TEST_F(VxPictTest, LoadRaisesStartThenDoneWithItsValues)
{
    QStringList order;
    QList<QList<QVariant>> done;
    QObject::connect(&view, &VxPict::loadStart, &view, [&] {
        order.append(u"start"_s);
        tick += 250; // the load takes 250 ms
    });
    QObject::connect(&view, &VxPict::loadDone, &view, [&](bool placed, qint64 ms, bool readOk) {
        order.append(u"done"_s);
        done.append({placed, ms, readOk});
    });

    view.setFileName(u"/bilder/Urlaub/IMG_0001.JPG"_s);
    EXPECT_EQ(order, QStringList({u"start"_s, u"done"_s}));
    ASSERT_EQ(done.size(), 1);
    EXPECT_EQ(done[0], (QList<QVariant> {true, qint64(250), true}));
    EXPECT_EQ(loader->paths.size(), 1);
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr) << "the wait cursor must be restored";

    loader->fail = true;
    tick = 0xFFFFFF00u; // the tick counter wraps during this load
    view.setFileName(u"/bilder/kaputt.jpg"_s);
    ASSERT_EQ(done.size(), 2);
    EXPECT_EQ(done[1], (QList<QVariant> {false, qint64(250), false}));
    EXPECT_FALSE(view.hasPicture()) << "no stale picture for a file that failed";
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST_F(VxPictTest, SameNameInAnotherLetterCaseReusesTheHeldPicture)
{
    QSignalSpy done(&view, &VxPict::loadDone);
    view.setFileName(u"/bilder/a.jpg"_s);
    view.setFileName(u"/BILDER/A.JPG"_s);
    EXPECT_EQ(loader->paths.size(), 1) << "same name read twice";
    ASSERT_EQ(done.size(), 2);
    EXPECT_TRUE(done[1].at(2).toBool()) << "not read again counts as read";
    EXPECT_EQ(view.fileName(), u"/BILDER/A.JPG"_s);

    view.setReloadFileName(true);
    view.setFileName(u"/bilder/a.jpg"_s);
    EXPECT_EQ(loader->paths.size(), 2) << "ReloadFileName reads again";
    view.setReloadFileName(false);

    view.setFileName(u"/bilder/b.jpg"_s);
    EXPECT_EQ(loader->paths.size(), 3);

    // A name whose file could not be read is read again the next time.
    loader->fail = true;
    view.setFileName(u"/bilder/c.jpg"_s);
    loader->fail = false;
    view.setFileName(u"/bilder/C.jpg"_s);
    EXPECT_EQ(loader->paths.size(), 5);
    EXPECT_TRUE(view.hasPicture());

    view.cls();
    EXPECT_FALSE(view.hasPicture());
    EXPECT_TRUE(view.fileName().isEmpty());
    view.setFileName(u"/bilder/C.jpg"_s);
    EXPECT_EQ(loader->paths.size(), 6) << "after CLS the picture is read again";
}

TEST_F(VxPictTest, AReaderThatThrowsIsPassedOverAndLoadDoneStillComes)
{
    QSignalSpy done(&view, &VxPict::loadDone);
    loader->raise = true;
    view.setFileName(u"/bilder/a.jpg"_s);
    ASSERT_EQ(done.size(), 1);
    EXPECT_FALSE(done[0].at(2).toBool());
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST_F(VxPictTest, PictureIsReadAtTheSizeShownNotLarger)
{
    loader->ownSize = QSize(8000, 6000);
    view.setFileName(u"/bilder/gross.jpg"_s);
    EXPECT_EQ(view.pictureWidth(), 8000);
    EXPECT_EQ(view.pictureHeight(), 6000);
    const QSize work = view.workArea().size();
    const qreal ratio = view.devicePixelRatioF();
    EXPECT_LE(view.pictureOrg().width(), int(std::ceil(work.width() * ratio)));
    EXPECT_LE(view.pictureOrg().height(), int(std::ceil(work.height() * ratio)));
    EXPECT_EQ(view.pictureRect(), picturePlacement(pictureShownSize({8000, 6000}, work, 0, 110, 1.0),
                                                   view.workArea(), 4));
    EXPECT_EQ(view.displayWidth(), view.pictureRect().width());
}

TEST_F(VxPictTest, GrowingTheViewReadsThePictureAgainAtTheBetterSize)
{
    loader->ownSize = QSize(4000, 3000);
    view.resize(120, 90);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    view.setFileName(u"/bilder/gross.jpg"_s);
    const int before = view.pictureOrg().width();
    view.resize(600, 450);
    EXPECT_TRUE(waitFor([&] { return view.pictureOrg().width() > before; }));
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
        {0, true, u""},
        {1, true, u"640x480"},
        {2, true, u"/bilder/a.jpg"},
        {3, true, u"640x480 - /bilder/a.jpg"},
        {4, true, u""},
        {-1, true, u""},
        {3, false, u"/bilder/a.jpg"}, // no picture held: only the name, no " - "
        {1, false, u""},
    };
    for (const auto &c : cases) {
        loader->fail = !c.withPicture;
        view.setReloadFileName(true);
        view.setFileName(u"/bilder/a.jpg"_s);
        view.setShowPictureToolTip(c.mode);
        EXPECT_EQ(view.toolTip(), QString::fromUtf16(c.expected))
            << "mode " << c.mode << (c.withPicture ? " with" : " without") << " picture";
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
    MessageCatcher catcher;
    const struct
    {
        int value;
        int kept;
    } cases[] = {{16, 16}, {17, 16}, {-1, 16}, {0, 0}, {100, 0}, {5, 5}};
    for (const auto &c : cases) {
        view.setOuterOffset(c.value);
        EXPECT_EQ(view.outerOffset(), c.kept) << c.value;
    }
    EXPECT_EQ(catcher.messages,
              QStringList(3, u"Die 'OuterOffset' Eigenschaft muß zwischen 0 und 16 liegen !"_s));
}

TEST_F(VxPictTest, RunTimeMembersAreRefusedWhileDesigning)
{
    MessageCatcher catcher;
    QSignalSpy start(&view, &VxPict::loadStart);
    view.setDesignMode(true);
    view.setFileName(u"/bilder/a.jpg"_s);
    EXPECT_EQ(start.size(), 0);
    EXPECT_TRUE(loader->paths.isEmpty());
    EXPECT_EQ(catcher.messages, QStringList {u"Zur Entwurfszeit nicht gültig !"_s});

    view.setDesignMode(false);
    view.setFileName(u"/bilder/a.jpg"_s);
    EXPECT_EQ(start.size(), 1);
    EXPECT_EQ(catcher.messages.size(), 1);
}

TEST_F(VxPictTest, ContextMenuSizeItemSwitchesThePreviewSize)
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
    ASSERT_EQ(size->actions().size(), PreviewSizeMode::Count);
    EXPECT_TRUE(size->actions().at(PreviewSizeMode::Fit)->isChecked());

    size->actions().at(PreviewSizeMode::Original)->trigger();
    EXPECT_EQ(view.previewSize(), PreviewSizeMode::Original);
    ASSERT_EQ(changed.size(), 1);
    EXPECT_EQ(changed[0].at(0).toInt(), PreviewSizeMode::Original);
    EXPECT_EQ(view.displayWidth(), 640);

    view.setPreviewSize(PreviewSizeMode::Original);
    EXPECT_EQ(changed.size(), 1) << "no change, no signal";
}

TEST_F(VxPictTest, UserPopUpInsteadOfTheOwnMenu)
{
    QSignalSpy popUp(&view, &VxPict::displayUserPopUp);
    view.setUsePopUpMenu(false);
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5), QPoint(105, 205));
    QApplication::sendEvent(&view, &event);
    ASSERT_EQ(popUp.size(), 1);
    EXPECT_EQ(popUp[0].at(0).toPoint(), QPoint(105, 205));
}

TEST_F(VxPictTest, Base64PicturesAreDecodedInMemory)
{
    Base64Encoding codec;
    const QByteArray text = codec.encodeB64(QByteArray("any picture bytes"));

    view.setFileName(u"/bilder/vorher.jpg"_s);
    view.setPictureB64Buffer(text);
    EXPECT_EQ(loader->dataLoads, 1) << "decoded bytes go to the loader as data";
    EXPECT_EQ(loader->paths.size(), 1) << "no file is read for a buffer";
    EXPECT_TRUE(view.hasPicture());
    EXPECT_TRUE(view.fileName().isEmpty());
    EXPECT_EQ(view.pictureB64Buffer(), text);
}

TEST(VxPictBase64, RealPicturesFromBufferAndTextFile)
{
    QImage image(48, 32, QImage::Format_RGB32);
    image.fill(QColor(10, 200, 30));
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    ASSERT_TRUE(image.save(&buffer, "PNG"));

    Base64Encoding standard;
    Base64Encoding own;
    own.setActiveCodingTable(1);
    const struct
    {
        const char *what;
        int table;
        QByteArray text;
    } cases[] = {
        {"plain", 0, standard.encodeB64(png)},
        {"in lines of 76", 0, Base64Encoding::span(76, standard.encodeB64(png))},
        {"coding table 1", 1, own.encodeB64(png)},
    };
    test::Sandbox sandbox;
    for (const auto &c : cases) {
        VxPict view;
        view.resize(120, 90);
        view.base64Codec().setActiveCodingTable(c.table);
        view.setPictureB64Buffer(c.text);
        EXPECT_EQ(QSize(view.pictureWidth(), view.pictureHeight()), QSize(48, 32)) << c.what;
        EXPECT_EQ(view.pictureOrg().pixelColor(5, 5), QColor(10, 200, 30)) << c.what;

        VxPict fromFile;
        fromFile.base64Codec().setActiveCodingTable(c.table);
        fromFile.setFileNameB64(sandbox.writeFile(u"bild.b64"_s, c.text));
        EXPECT_EQ(fromFile.pictureWidth(), 48) << c.what;
    }

    VxPict view;
    view.setPictureB64Buffer(standard.encodeB64(png));
    ASSERT_TRUE(view.hasPicture());
    view.setPictureB64Buffer("kein Bild!");
    EXPECT_FALSE(view.hasPicture()) << "text that is no picture leaves the view empty";
    view.setPictureB64Buffer(standard.encodeB64(png).left(40));
    EXPECT_FALSE(view.hasPicture()) << "a cut-off picture";
    view.setFileNameB64(sandbox.filePath(u"fehlt.b64"_s));
    EXPECT_FALSE(view.hasPicture());
    EXPECT_EQ(QGuiApplication::overrideCursor(), nullptr);
}

TEST_F(VxPictTest, ZoomStepsAndRefusedFactors)
{
    view.setFileName(u"/bilder/a.jpg"_s);
    const int fitted = view.displayWidth();
    view.zoomIncrease();
    EXPECT_DOUBLE_EQ(view.zoomfaktor(), 1.25);
    EXPECT_EQ(view.displayWidth(), int(std::nearbyint(fitted * 1.25)));
    view.zoomIncrease(-2);
    EXPECT_DOUBLE_EQ(view.zoomfaktor(), 0.8);
    for (const double bad : {0.0, -2.0, std::nan(""), std::numeric_limits<double>::infinity()}) {
        view.setZoomfaktor(bad);
        EXPECT_DOUBLE_EQ(view.zoomfaktor(), 0.8) << bad;
    }
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
    EXPECT_EQ(view.workArea(), view.rect().adjusted(6, 16, -6, -6));

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
    // After termination a new picture still loads (with the default loader).
    view.setPicture(image);
    EXPECT_TRUE(view.hasPicture());
}

TEST(VxPictFiles, RealJpegIsReadSmallAndSavedFull)
{
    test::Sandbox sandbox;
    const QString source = sandbox.writeFile(u"foto.jpg"_s, jpegBytes({1600, 1200}));
    VxPict view;
    view.resize(220, 170);
    view.setFileName(source);
    ASSERT_TRUE(view.hasPicture());
    EXPECT_EQ(view.pictureWidth(), 1600);
    EXPECT_LE(view.pictureOrg().width(), 220) << "decoded larger than shown";

    const QString target = sandbox.filePath(u"kopie.bmp"_s);
    ASSERT_TRUE(view.saveBitmapTo(target));
    QImageReader written(target);
    EXPECT_EQ(written.format(), "bmp");
    EXPECT_EQ(written.size(), QSize(1600, 1200)) << "saved at full size";

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

TEST(VxPictFiles, ReadsEveryFormatTheConversionTakes)
{
    test::Sandbox sandbox;
    QImage image(36, 24, QImage::Format_RGB32);
    image.fill(QColor(30, 60, 200));
    const char *written[] = {"jpg", "png", "bmp", "tif"};
    QStringList paths;
    for (const char *format : written) {
        const QString path = sandbox.filePath(u"bild."_s + QString::fromLatin1(format));
        ASSERT_TRUE(image.save(path, format)) << format << ": no writer for the test picture";
        paths.append(path);
    }
    // Qt writes no GIF; this is a complete 1 x 1 GIF file.
    const QByteArray gif = QByteArray::fromHex(
        "47494638396101000100800000ffffff00000021f90401000000002c00000000010001000002024401003b");
    paths.append(sandbox.writeFile(u"bild.gif"_s, gif));

    for (const QString &path : paths) {
        VxPict view;
        view.resize(100, 80);
        view.setFileName(path);
        EXPECT_TRUE(view.hasPicture()) << path.toStdString();
        EXPECT_EQ(view.pictureWidth(), path.endsWith(u".gif") ? 1 : 36) << path.toStdString();
    }
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

    const QString odd = sandbox.writeFile(u"Ferien Über #1 (Kopie) 'ä'.jpg"_s, jpegBytes({64, 48}));
    view.setShowPictureToolTip(3);
    view.setFileName(odd);
    EXPECT_TRUE(view.hasPicture());
    EXPECT_EQ(view.toolTip(), u"64x48 - "_s + odd);
}

TEST(VxPictFiles, ExifOrientationIsAppliedLikeAnImageViewer)
{
    test::Sandbox sandbox;
    const QString source = sandbox.writeFile(u"hoch.jpg"_s, turnedJpegBytes({400, 200}));
    VxPict view;
    view.resize(220, 220);
    view.setFileName(source);
    EXPECT_EQ(view.pictureWidth(), 200);
    EXPECT_EQ(view.pictureHeight(), 400);
    EXPECT_LT(view.pictureOrg().width(), view.pictureOrg().height());
}

TEST(VxPictFiles, SaveDialogAsksForABitmap)
{
    test::Sandbox sandbox;
    VxPict view;
    view.resize(200, 150);
    QImage image(30, 20, QImage::Format_RGB32);
    image.fill(Qt::red);
    view.setPicture(image);

    const QString target = sandbox.filePath(u"gespeichert"_s);
    QString title, filter, suffix;
    QTimer::singleShot(0, &view, [&] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        title = dialog->windowTitle();
        filter = dialog->nameFilters().join(u'|');
        suffix = dialog->defaultSuffix();
        dialog->selectFile(target);
        QMetaObject::invokeMethod(dialog, "accept");
    });
    const bool saved = view.saveBitmapFile();
    EXPECT_EQ(title, u"Bitmap speichern unter :"_s);
    EXPECT_EQ(filter, u"Bitmap (*.bmp)"_s);
    EXPECT_EQ(suffix, u"bmp"_s);
    EXPECT_TRUE(saved);
    EXPECT_EQ(QImage(target + u".bmp").size(), QSize(30, 20)) << "the default extension is added";
}

TEST(VxPictPixels, MaskColourOnlyWithUseMaskColor)
{
    VxPict view;
    view.resize(100, 100);
    view.setBackColor(0x00FF00); // green behind the picture
    view.setShowPictureFrame(false);
    QImage image(10, 10, QImage::Format_RGB32);
    image.fill(QColor(255, 0, 255));
    view.setPicture(image);
    const QPoint centre = view.pictureRect().center();

    EXPECT_EQ(view.maskColor(), 0xFF00FFu);
    EXPECT_EQ(view.grab().toImage().pixelColor(centre), QColor(255, 0, 255)) << "no effect while off";
    view.setUseMaskColor(true);
    EXPECT_EQ(view.grab().toImage().pixelColor(centre), QColor(0, 255, 0)) << "magenta is transparent";
}

TEST(VxPictProperties, DefaultsAsDesigned)
{
    VxPict view;
    const struct
    {
        const char *name;
        QVariant value;
    } defaults[] = {
        {"BackStyle", 1},           {"Enabled", true},
        {"Caption", QString()},     {"FrameInner", true},
        {"FrameOuter", true},       {"BorderWidth", 0},
        {"FrameWidth", 0},          {"BorderStyle", 16},
        {"TopOffset", 0},           {"WorkHeight", 0},
        {"OuterOffset", 0},         {"LightBorders", false},
        {"ShowBorderShape", false}, {"PictureOffset", 6},
        {"ShowPictureFrame", true}, {"PreviewSize", 0},
        {"ThumbnailHeight", 110},   {"Zoomfaktor", 1.0},
        {"UsePopUpMenu", true},     {"ShowPictureToolTip", 0},
        {"PictureAlignment", 4},    {"DoEventsOnLoadPicture", true},
        {"UseMaskColor", false},    {"MaskColor", 0xFF00FFu},
        {"SetFocusOnShow", false},  {"PictureFrameFlat", false},
        {"BorderColor", 0x8000000Fu}, {"ShowPictureName", false},
        {"PictureNameTextColor", 0x8000000Fu}, {"CTLUseLng", 1},
        {"FileName", QString()},
    };
    for (const auto &d : defaults) {
        const QVariant actual = view.property(d.name);
        ASSERT_TRUE(actual.isValid()) << d.name << " is not a property";
        EXPECT_EQ(actual, d.value) << d.name;
    }
    EXPECT_EQ(view.ctlClassName(), u"VxPict"_s);
}

} // namespace
} // namespace valtrona
