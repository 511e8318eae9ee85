#include "core/targetfolder.h"
#include "imaging/conversion.h"
#include "imaging/imaging.h"
#include "imaging/jpegheader.h"
#include "fixtures.h"
#include "support/testsupport.h"

#include <QFile>

#include <gtest/gtest.h>

#include <functional>
#include <map>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace valtrona;
using namespace valtrona::test;
using Format = imaging::OutputFormat;

namespace {

class ConversionTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(imaging::start()); }

    // What `fill` writes into a new pending file.
    Expected<QByteArray, Error> written(const std::function<Expected<void, Error>(files::PendingFile &)> &fill)
    {
        auto folder = files::TargetFolder::open(m_sandbox.filePath(u"out"_s));
        if (!folder)
            return unexpected(folder.error());
        auto pending = folder->createPending();
        if (!pending)
            return unexpected(pending.error());
        if (auto filled = fill(*pending); !filled)
            return unexpected(filled.error());
        return pending->readAll();
    }

    Expected<QByteArray, Error> draw(const imaging::DrawRequest &request)
    {
        return written([&](files::PendingFile &file) { return imaging::drawInto(request, file); });
    }

    // Draws into the sandbox and decodes what was written.
    PixelBuffer drawnPixels(const imaging::DrawRequest &request)
    {
        const auto path = drawToFile(request, m_sandbox.filePath(u"out"_s), u"drawn.png"_s);
        EXPECT_TRUE(path.has_value()) << qPrintable(path ? QString() : path.error().detail);
        return path ? decoded(*path) : PixelBuffer {};
    }

    Sandbox m_sandbox;
};

// The scan of a JPEG with `bytes` put over it at `at` (0..1 of the scan).
QByteArray damagedScan(QByteArray jpeg, double at, const QByteArray &bytes)
{
    qsizetype pos = 2;
    while (pos + 4 <= jpeg.size() && static_cast<unsigned char>(jpeg.at(pos + 1)) != 0xDA)
        pos += 2 + ((static_cast<unsigned char>(jpeg.at(pos + 2)) << 8) | static_cast<unsigned char>(jpeg.at(pos + 3)));
    const qsizetype scan = pos + 2 + ((static_cast<unsigned char>(jpeg.at(pos + 2)) << 8)
                                      | static_cast<unsigned char>(jpeg.at(pos + 3)));
    return jpeg.replace(scan + qsizetype((jpeg.size() - 2 - scan) * at), bytes.size(), bytes);
}

// Drawing, inspecting and measuring say what went wrong, never by a message
// to read: broken data is Damaged wherever the decoder meets it.
TEST_F(ConversionTest, FailuresCarryTheirCode)
{
    const QByteArray photo = readAll(dataPath(u"run/photo.jpg"_s));
    const QByteArray png = readAll(dataPath(u"run/alpha.png"_s));
    const QByteArray small = readAll(dataPath(u"run/small.jpg"_s));
    const QString lyingJpeg = m_sandbox.writeFile(u"lying.jpg"_s, withFrameSize(small, 640, 480));
    ASSERT_EQ(imaging::inspect(lyingJpeg).value_or({}).width, 640);
    const QString unreadable = m_sandbox.writeFile(u"unreadable.jpg"_s, photo);
    QFile::setPermissions(unreadable, {});
    const std::atomic_bool cancelled {true};
    using Code = ErrorCode;
    const std::optional<Code> readable;

    const struct
    {
        const char *name;
        QString source;
        Code code;
        std::optional<Code> inspectCode; ///< nothing: the header reads fine
        Format format = Format::Jpeg;
        int width = 300;
        bool cancel = false;
        bool fullDisk = false;
    } cases[] = {
        {"missing", m_sandbox.filePath(u"absent.jpg"_s), Code::SourceMissing, Code::SourceMissing},
        {"unreadable", unreadable, Code::SourceUnreadable, Code::SourceUnreadable},
        {"folder", m_sandbox.path(), Code::SourceUnreadable, Code::SourceUnreadable},
        {"not an image", dataPath(u"run/notimage.jpg"_s), Code::UnknownFormat, Code::UnknownFormat},
        {"empty", m_sandbox.writeFile(u"empty.jpg"_s, {}), Code::UnknownFormat, Code::UnknownFormat},
        {"cut in the header", m_sandbox.writeFile(u"header.jpg"_s, photo.left(300)), Code::Damaged, Code::Damaged},
        {"truncated JPEG", m_sandbox.writeFile(u"half.jpg"_s, photo.left(photo.size() / 2)), Code::Damaged, readable},
        {"truncated PNG", m_sandbox.writeFile(u"half.png"_s, png.left(png.size() / 2)), Code::Damaged, readable},
        // Damage the decoder meets early, and damage it meets only in the
        // last rows of the picture.
        {"stray marker in the scan", m_sandbox.writeFile(u"marker.jpg"_s, damagedScan(photo, 0.1, "\xff\xd0")),
         Code::Damaged, readable},
        {"zeroed scan", m_sandbox.writeFile(u"zeroed.jpg"_s, damagedScan(photo, 0.5, QByteArray(200, '\0'))),
         Code::Damaged, readable},
        {"JPEG claiming more lines", lyingJpeg, Code::Damaged, readable},
        {"PNG claiming more rows", m_sandbox.writeFile(u"lying.png"_s, pngClaiming(2000, 2000)), Code::Damaged, readable},
        {"no encoder", dataPath(u"run/photo.jpg"_s), Code::NoEncoder, readable, Format(99)},
        {"no size", dataPath(u"run/photo.jpg"_s), Code::SizeUnusable, readable, Format::Jpeg, 0},
        {"too wide for JPEG", dataPath(u"run/photo.jpg"_s), Code::SizeUnusable, readable, Format::Jpeg, 65501},
        {"cancelled", dataPath(u"run/photo.jpg"_s), Code::Internal, readable, Format::Jpeg, 300, true},
        {"full disk", dataPath(u"run/photo.jpg"_s), Code::FileSizeLimit, readable, Format::Png, 300, false, true},
    };
    for (const auto &c : cases) {
        if (c.source == unreadable && ::geteuid() == 0)
            continue; // root reads everything
        imaging::DrawRequest r = drawRequest(c.source, c.width, 225, c.format);
        r.cancel = c.cancel ? &cancelled : nullptr;
        std::optional<FileSizeLimit> limit;
        if (c.fullDisk)
            limit.emplace(64);
        const auto drawn = draw(r);
        limit.reset();
        ASSERT_FALSE(drawn.has_value()) << c.name;
        EXPECT_EQ(int(drawn.error().code), int(c.code)) << c.name << ": " << qPrintable(drawn.error().detail);

        // Measuring and previews open a source as inspecting does.
        const auto inspected = imaging::inspect(c.source);
        const auto measured = imaging::measure(c.source);
        EXPECT_EQ(inspected.has_value(), !c.inspectCode.has_value()) << c.name;
        EXPECT_EQ(measured.has_value(), !c.inspectCode.has_value()) << c.name;
        if (c.inspectCode && !inspected && !measured) {
            const auto preview = imaging::loadPreview(c.source, 100, 100);
            ASSERT_FALSE(preview.has_value()) << c.name;
            for (const Error &error : {inspected.error(), measured.error(), preview.error()})
                EXPECT_EQ(int(error.code), int(*c.inspectCode)) << c.name;
        }
    }
}

PixelBuffer checkerboard(int size)
{
    PixelBuffer image {QByteArray(qsizetype(size) * size, '\0'), size, size, 1};
    for (int y = 0; y < size; ++y)
        for (int x = 0; x < size; ++x)
            image.bytes[qsizetype(y) * size + x] = char((x + y) % 2 ? 255 : 0);
    return image;
}

// Each interpolation code draws with its kernel: a smooth picture comes out
// as a plain resample would give it (after a JPEG shrank while decoding), a
// one-pixel checkerboard halved shows the kernel's character
// (nearest keeps pure black and white, every other kernel averages to mid
// grey, linear light averages the light: 50 % is 188 in sRGB), codes of one
// kernel give the same file, and any size asked for comes out exactly.
TEST_F(ConversionTest, EachModeDrawsWithItsKernel)
{
    const QString smooth = writeWithVips(m_sandbox.filePath(u"gradient.png"_s), gradientImage(640, 480));
    const QString large = writeWithVips(m_sandbox.filePath(u"large.jpg"_s), gradientImage(2400, 1600), u"[Q=95]"_s);
    const PixelBuffer largeExpected = referenceResample(firstChannels(decoded(large), 3), 150, 100);
    const QString checker = m_sandbox.filePath(u"checker.pgm"_s);
    writePnm(checker, checkerboard(200));

    const struct
    {
        int code;
        int compositing;
        char kernel; ///< codes of one kernel draw the same file
        int low;     ///< range of the halved checkerboard
        int high;
        QSize odd;   ///< a size the large JPEG is also drawn at
    } cases[] = {
        {0, 2, 'l', 118, 138, {601, 401}}, {1, 2, 'l', 118, 138, {1, 200}},  {3, 2, 'l', 118, 138, {300, 1}},
        {6, 2, 'l', 118, 138, {37, 23}},   {2, 2, 'z', 118, 138, {99, 1599}}, {7, 2, 'z', 118, 138, {2400, 1600}},
        {99, 2, 'z', 118, 138, {1, 1}},    {-3, 2, 'z', 118, 138, {1024, 3}}, {7, 4, 'z', 118, 138, {641, 479}},
        {4, 2, 'c', 118, 138, {37, 23}},   {5, 2, 'n', 0, 255, {601, 401}},  {7, 3, 'L', 180, 196, {99, 1599}},
        {3, 3, 'M', 180, 196, {1, 200}},
    };
    std::map<char, QByteArray> kernelFiles;
    for (const auto &c : cases) {
        imaging::DrawRequest r = drawRequest(smooth, 200, 90);
        r.modes.interpolation = c.code;
        r.modes.compositingQuality = c.compositing;
        const auto bytes = draw(r);
        ASSERT_TRUE(bytes.has_value()) << c.code;
        for (const auto &[kernel, file] : kernelFiles)
            EXPECT_EQ(file == *bytes, kernel == c.kernel) << "code " << c.code << " against kernel " << kernel;
        kernelFiles.emplace(c.kernel, *bytes);

        r.source = large;
        r.width = 150;
        r.height = 100;
        EXPECT_TRUE(imagesClose(firstChannels(drawnPixels(r), 3), largeExpected, 8, 1.0)) << "JPEG, code " << c.code;
        r.width = c.odd.width();
        r.height = c.odd.height();
        const PixelBuffer odd = drawnPixels(r);
        EXPECT_EQ(QSize(odd.width, odd.height), c.odd) << "code " << c.code;

        r.source = checker;
        r.width = 100;
        r.height = 100;
        const PixelBuffer halved = drawnPixels(r);
        ASSERT_EQ(halved.width, 100) << "code " << c.code;
        for (qsizetype i = 0; i < halved.bytes.size(); i += 4) {
            const int value = static_cast<unsigned char>(halved.bytes[i]);
            if (c.kernel == 'n') {
                ASSERT_TRUE(value == 0 || value == 255) << "code " << c.code << " value " << value;
            } else {
                ASSERT_GE(value, c.low) << "code " << c.code << "/" << c.compositing << " at " << i / 4;
                ASSERT_LE(value, c.high) << "code " << c.code << "/" << c.compositing << " at " << i / 4;
            }
        }
    }
}

// JPEG quality is clamped to 0..100; transparency is kept in PNG and
// flattened onto white in JPEG, resampled premultiplied so that an edge
// keeps its colour.
TEST_F(ConversionTest, QualityIsClampedAndTransparencyFlattened)
{
    const QString ppm = m_sandbox.filePath(u"blue.ppm"_s);
    writePnm(ppm, solidImage(20, 20, 0, 0, 255));
    const PixelBuffer alpha {QByteArray(200, char(255)) + QByteArray(200, '\0'), 20, 20, 1};
    const QString pgm = m_sandbox.filePath(u"alpha.pgm"_s);
    writePnm(pgm, alpha);
    const QString source = m_sandbox.filePath(u"half-clear.png"_s);
    ASSERT_TRUE(runTool(u"vips"_s, {u"bandjoin"_s, ppm + u" "_s + pgm, source}));

    auto jpeg = [&](int quality) {
        imaging::DrawRequest r = drawRequest(source, 10, 10, Format::Jpeg);
        r.quality = quality;
        return draw(r).value_or({});
    };
    const QByteArray q100 = jpeg(100);
    ASSERT_FALSE(q100.isEmpty());
    EXPECT_EQ(jpeg(150), q100);
    EXPECT_NE(jpeg(99), q100);
    EXPECT_EQ(jpeg(-5), jpeg(0));
    EXPECT_LT(jpeg(0).size(), q100.size());

    imaging::DrawRequest r = drawRequest(source, 10, 10, Format::Jpeg);
    r.quality = 95;
    const PixelBuffer flat = drawnPixels(r);
    auto at = [](const PixelBuffer &image, int x, int y, int c) {
        return int(static_cast<unsigned char>(image.bytes[(y * image.width + x) * 4 + c]));
    };
    ASSERT_EQ(flat.width, 10);
    EXPECT_LE(at(flat, 5, 1, 0), 8); // opaque blue stays blue
    EXPECT_GE(at(flat, 5, 1, 2), 245);
    EXPECT_GE(at(flat, 5, 8, 0), 245); // clear turns white, not black
    EXPECT_GE(at(flat, 5, 8, 1), 245);

    const PixelBuffer kept = drawnPixels(drawRequest(source, 10, 10));
    ASSERT_EQ(kept.width, 10);
    EXPECT_EQ(at(kept, 5, 1, 3), 255);
    EXPECT_EQ(at(kept, 5, 8, 3), 0);
    EXPECT_GT(at(kept, 5, 5, 3), 0); // the edge row: partly covered, still blue
    EXPECT_EQ(at(kept, 5, 5, 0), 0);
    EXPECT_GE(at(kept, 5, 5, 2), 250);
}

// An output carries no metadata unless asked; asked, a JPEG carries the
// source's header block in front of what it would be without it, without
// the segments that describe the source's colour encoding; a PNG, or a
// source without EXIF data, gives the same file as without. A source that is
// its own target keeps its EXIF data too.
TEST_F(ConversionTest, ExifIsCarriedOnlyWhenAskedAndItsColourSegmentsLeftOut)
{
    const QString photo = dataPath(u"run/photo.jpg"_s); // Exif, 320 x 240
    const QString profiled = m_sandbox.filePath(u"profiled.jpg"_s);
    ASSERT_TRUE(runTool(u"vips"_s, {u"icc_transform"_s, photo, profiled + u"[Q=90]"_s, u"p3"_s,
                                    u"--input-profile"_s, u"srgb"_s}));
    ASSERT_TRUE(runTool(u"exiftool"_s, {u"-q"_s, u"-overwrite_original"_s, u"-Make=Testkamera"_s, profiled}));
    ASSERT_TRUE(readAll(profiled).contains("ICC_PROFILE"));

    const struct
    {
        QString source;
        Format format;
        bool carried; ///< an EXIF block goes in front
    } cases[] = {
        {profiled, Format::Jpeg, true},
        {profiled, Format::Png, false},
        {dataPath(u"run/small.jpg"_s), Format::Jpeg, false},
        {dataPath(u"run/alpha.png"_s), Format::Jpeg, false},
    };
    for (const auto &c : cases) {
        const QString name = QFileInfo(c.source).fileName();
        imaging::DrawRequest r = drawRequest(c.source, 160, 120, c.format);
        const auto plain = draw(r);
        ASSERT_TRUE(plain.has_value()) << qPrintable(name);
        for (const char *metadata : {"Exif", "ICC_PROFILE", "Testkamera", "iCCP", "eXIf", "tEXt", "iTXt"})
            EXPECT_FALSE(plain->contains(metadata)) << qPrintable(name) << " " << metadata;
        if (c.format == Format::Jpeg) {
            EXPECT_EQ(imaging::parseJpegHeader(*plain, true).kind, 1) << qPrintable(name);
        }

        r.carryExif = true;
        const auto withExif = draw(r);
        ASSERT_TRUE(withExif.has_value()) << qPrintable(name);
        if (!c.carried) {
            EXPECT_EQ(*withExif, *plain) << qPrintable(name);
            continue;
        }
        ASSERT_TRUE(withExif->endsWith(plain->mid(2))) << qPrintable(name);
        const QByteArray block = withExif->left(withExif->size() - plain->size() + 2);
        EXPECT_EQ(imaging::parseJpegHeader(*withExif, true).kind, 2) << qPrintable(name);
        EXPECT_TRUE(block.contains("Testkamera")) << qPrintable(name);
        EXPECT_FALSE(block.contains("ICC_PROFILE")) << qPrintable(name);
        EXPECT_EQ(imaging::parseJpegHeader(block + "\xff\xc0", false).headerEnd, block.size()) << qPrintable(name);
    }

    // A source that is its own target is read whole, its EXIF block
    // included, before its name is taken over.
    const QString self = m_sandbox.filePath(u"out/self.jpg"_s);
    ASSERT_TRUE(QFile::copy(profiled, self));
    imaging::DrawRequest r = drawRequest(self, 160, 120, Format::Jpeg);
    r.carryExif = true;
    const auto expected = draw(r);
    ASSERT_TRUE(expected.has_value());
    ASSERT_TRUE(drawToFile(r, m_sandbox.filePath(u"out"_s), u"self.jpg"_s).has_value());
    EXPECT_EQ(readAll(self), *expected);

    // The right-size case: the bytes unchanged.
    const auto copied = written([&](files::PendingFile &file) { return imaging::copyInto(photo, file); });
    ASSERT_TRUE(copied.has_value());
    EXPECT_EQ(*copied, readAll(photo));
}

// What a drawing will take is reckoned from the header alone: a decoder
// that holds the whole picture (a progressive JPEG's coefficients, an
// interlaced PNG, GIF, TIFF, WebP) says so, a streaming one (baseline JPEG,
// plain PNG) holds nothing beyond its buffers, and an encoder that takes the
// whole picture (WebP, AVIF) adds it. bench/memory.sh measures real drawings
// against these estimates.
TEST_F(ConversionTest, WholePicturesAreReckonedFromTheHeader)
{
    const QString base = m_sandbox.filePath(u"base.v"_s);
    ASSERT_TRUE(runTool(u"vips"_s, {u"black"_s, base, u"200"_s, u"300"_s, u"--bands"_s, u"3"_s}));
    constexpr qint64 pixels = 200 * 300;
    const std::pair<const char *, qint64> cases[] = {
        {"baseline.jpg", 0},          {"plain.png", 0},           {"progressive.jpg[interlace]", 2 * pixels},
        {"interlaced.png[interlace]", 3 * pixels}, {"frame.gif", 4 * pixels}, {"strips.tif", 3 * pixels},
        {"lossy.webp", 4 * pixels},
    };
    for (const auto &[name, least] : cases) {
        const QString file = m_sandbox.filePath(QString::fromLatin1(name));
        ASSERT_TRUE(runTool(u"vips"_s, {u"copy"_s, base, file}));
        const auto info = imaging::inspect(file.section(u'[', 0, 0));
        ASSERT_TRUE(info.has_value()) << name;
        EXPECT_TRUE(least == 0 ? info->decodeBytes == 0 : info->decodeBytes >= least) << name << ": " << info->decodeBytes;
        const qint64 streamed = imaging::drawMemory(*info, 200, 300, {}, Format::Jpeg);
        EXPECT_GE(imaging::drawMemory(*info, 200, 300, {}, Format::WebP), streamed + 3 * pixels) << name;
    }

    // An interlaced PNG decodes whole: 30000 x 30000 pixels take 2.7 GB,
    // whatever the size of the file. Only its header is read.
    const QString bomb = m_sandbox.writeFile(u"bomb.png"_s, pngClaiming(30000, 30000, true));
    const auto info = imaging::inspect(bomb);
    ASSERT_TRUE(info.has_value());
    EXPECT_GE(info->decodeBytes, qint64(30000) * 30000 * 3);
    EXPECT_GE(imaging::drawMemory(*info, 1024, 1024, {}, Format::Jpeg), info->decodeBytes);
}

} // namespace
