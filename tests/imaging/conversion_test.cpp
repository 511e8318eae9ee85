#include "core/targetfolder.h"
#include "imaging/conversion.h"
#include "imaging/imaging.h"
#include "imaging/jpegheader.h"
#include "fixtures.h"
#include "support/testsupport.h"

#include <QFile>
#include <QProcess>

#include <gtest/gtest.h>

#include <functional>
#include <thread>
#include <vector>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace valtrona;
using namespace valtrona::test;

namespace {

class ConversionTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        ASSERT_TRUE(imaging::start());
        imaging::setQuiet(true);
    }

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
        imaging::OutputFormat format = imaging::OutputFormat::Jpeg;
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
        {"no encoder", dataPath(u"run/photo.jpg"_s), Code::NoEncoder, readable, imaging::OutputFormat(99)},
        {"no size", dataPath(u"run/photo.jpg"_s), Code::SizeUnusable, readable, imaging::OutputFormat::Jpeg, 0},
        {"cancelled", dataPath(u"run/photo.jpg"_s), Code::Internal, readable, imaging::OutputFormat::Jpeg, 300, true},
        {"full disk", dataPath(u"run/photo.jpg"_s), Code::FileSizeLimit, readable, imaging::OutputFormat::Png, 300,
         false, true},
    };
    for (const auto &c : cases) {
        if (c.source == unreadable && ::geteuid() == 0)
            continue; // root reads everything
        imaging::DrawRequest request;
        request.source = c.source;
        request.width = c.width;
        request.height = 225;
        request.format = c.format;
        request.cancel = c.cancel ? &cancelled : nullptr;
        std::optional<FileSizeLimit> limit;
        if (c.fullDisk)
            limit.emplace(64);
        const auto drawn = draw(request);
        limit.reset();
        ASSERT_FALSE(drawn.has_value()) << c.name;
        EXPECT_EQ(int(drawn.error().code), int(c.code)) << c.name << ": " << qPrintable(drawn.error().detail);

        const auto inspected = imaging::inspect(c.source);
        EXPECT_EQ(inspected.has_value(), !c.inspectCode.has_value()) << c.name;
        if (c.inspectCode && !inspected) {
            EXPECT_EQ(int(inspected.error().code), int(*c.inspectCode)) << c.name;
        }
    }
}

// A conversion writes exactly what drawing to a file and then copying the
// EXIF block wrote before.
TEST_F(ConversionTest, WritesWhatDrawingToAFileAndCopyingExifWrote)
{
    const QString photo = dataPath(u"run/photo.jpg"_s); // Exif, 320 x 240
    // Large enough to shrink while decoding, with a colour profile and an
    // EXIF block.
    const QString big = writeWithVips(m_sandbox.filePath(u"big.png"_s), gradientImage(1600, 1200));
    const QString profiled = m_sandbox.filePath(u"profiled.jpg"_s);
    ASSERT_TRUE(runTool(u"vips"_s, {u"icc_transform"_s, big, profiled + u"[Q=90]"_s, u"p3"_s,
                                    u"--input-profile"_s, u"srgb"_s}));
    // Without pixel dimensions in its EXIF block, which a conversion sets to
    // the output's.
    ASSERT_TRUE(runTool(u"exiftool"_s, {u"-q"_s, u"-overwrite_original"_s, u"-Make=Testkamera"_s,
                                        u"-ExifImageWidth="_s, u"-ExifImageHeight="_s, profiled}));
    using Format = imaging::OutputFormat;
    const struct
    {
        QString source;
        int width;
        int height;
        int interpolation;
        int compositing;
        Format format;
        int quality;
        bool carryExif;
    } cases[] = {
        {photo, 160, 120, 7, 2, Format::Jpeg, 85, true},
        {photo, 640, 300, 4, 3, Format::Png, 85, true},
        {profiled, 200, 150, 7, 2, Format::Jpeg, 150, true},
        {profiled, 601, 450, 5, 2, Format::Jpeg, 70, false},
        {dataPath(u"run/alpha.png"_s), 50, 33, 0, 2, Format::Jpeg, 90, true},
        {dataPath(u"run/small.jpg"_s), 90, 70, 7, 2, Format::Jpeg, 85, true},
    };
    // Today's path, one file after the other.
    std::vector<QByteArray> expected;
    std::vector<imaging::DrawRequest> requests;
    for (const auto &c : cases) {
        imaging::DrawModes modes;
        modes.interpolation = c.interpolation;
        modes.compositingQuality = c.compositing;
        const bool jpeg = c.format == Format::Jpeg;
        const QString target = m_sandbox.filePath(u"old%1"_s.arg(requests.size()) + (jpeg ? u".jpg"_s : u".png"_s));
        ASSERT_TRUE(imaging::drawFileToFile(c.source, target, c.width, c.height, modes,
                                            jpeg ? u"image/jpeg"_s : u"image/png"_s, c.quality));
        QByteArray block;
        if (c.carryExif && imaging::readExif(c.source, block))
            imaging::writeExif(target, block);
        expected.push_back(readAll(target));
        requests.push_back({c.source, c.width, c.height, modes, c.format, c.quality, c.carryExif});
    }
    // The conversions all at once, beside one of a damaged file, as a run's
    // workers do.
    requests.push_back({m_sandbox.writeFile(u"damaged.jpg"_s, damagedScan(readAll(photo), 0.5, QByteArray(200, '\0'))),
                        300, 225, {}});
    std::vector<std::optional<Expected<QByteArray, Error>>> results(requests.size());
    {
        std::vector<std::thread> workers;
        for (size_t i = 0; i < requests.size(); ++i)
            workers.emplace_back([&, i] { results[i] = draw(requests[i]); });
        for (std::thread &worker : workers)
            worker.join();
    }
    for (size_t i = 0; i < expected.size(); ++i) {
        const imaging::DrawRequest &r = requests[i];
        const QString where = u"%1 to %2x%3"_s.arg(QFileInfo(r.source).fileName()).arg(r.width).arg(r.height);
        ASSERT_TRUE(results[i]->has_value()) << qPrintable(where) << qPrintable(results[i]->error().detail);
        EXPECT_EQ(results[i]->value(), expected[i]) << qPrintable(where);
    }
    ASSERT_FALSE(results.back()->has_value());
    EXPECT_EQ(int(results.back()->error().code), int(ErrorCode::Damaged));

    // The right-size case: the bytes unchanged.
    const auto copied = written([&](files::PendingFile &file) { return imaging::copyInto(photo, file); });
    ASSERT_TRUE(copied.has_value());
    EXPECT_EQ(*copied, readAll(photo));
}

// The memory a drawing takes, measured in a process of its own, never
// exceeds the estimate, for every kind of decoder, for the encoders that
// take the whole picture and for a picture that is turned. The pictures for
// the decoders are tall and narrow, so that what a whole-image decoder holds
// outweighs the streaming buffers, which grow with the width.
TEST_F(ConversionTest, DrawingStaysWithinItsEstimate)
{
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the address sanitizer's shadow memory and quarantine inflate every peak";
#endif
    const QString tall = m_sandbox.filePath(u"tall.v"_s);
    const QString wide = m_sandbox.filePath(u"wide.v"_s);
    const QString tiny = m_sandbox.filePath(u"tiny.v"_s);
    const QString photo = m_sandbox.filePath(u"photo.v"_s);
    ASSERT_TRUE(runTool(u"vips"_s, {u"black"_s, tall, u"1000"_s, u"12000"_s, u"--bands"_s, u"3"_s}));
    ASSERT_TRUE(runTool(u"vips"_s, {u"black"_s, wide, u"8000"_s, u"300"_s, u"--bands"_s, u"3"_s}));
    ASSERT_TRUE(runTool(u"vips"_s, {u"black"_s, tiny, u"16"_s, u"12"_s, u"--bands"_s, u"3"_s}));
    ASSERT_TRUE(runTool(u"vips"_s, {u"black"_s, photo, u"3000"_s, u"2000"_s, u"--bands"_s, u"3"_s}));
    const struct
    {
        QString base;
        const char *name;
        const char *options;
        int width;
        int height;
        const char *format = "jpeg";
        int orientation = 1;
    } cases[] = {
        {tall, "baseline.jpg", "", 100, 1200},    {tall, "progressive.jpg", "[interlace]", 100, 1200},
        {tall, "plain.png", "", 100, 1200},       {tall, "interlaced.png", "[interlace]", 100, 1200},
        {tall, "frame.gif", "", 100, 1200},       {tall, "strips.tif", "", 100, 1200},
        {tall, "lossy.webp", "", 100, 1200},      {wide, "wide.jpg", "", 4000, 150},
        {wide, "wide.png", "", 1000, 40},         {photo, "to-webp.jpg", "", 3000, 2000, "webp"},
        {photo, "to-avif.jpg", "", 3000, 2000, "avif"}, {photo, "turned.jpg", "", 4000, 6000, "jpeg", 6},
    };
    for (const auto &c : cases) {
        const QString source = m_sandbox.filePath(QString::fromLatin1(c.name));
        const QString warmUp = m_sandbox.filePath(u"tiny-"_s + QString::fromLatin1(c.name));
        ASSERT_TRUE(runTool(u"vips"_s, {u"copy"_s, c.base, source + QString::fromLatin1(c.options)}));
        ASSERT_TRUE(runTool(u"vips"_s, {u"copy"_s, tiny, warmUp + QString::fromLatin1(c.options)}));
        if (c.orientation != 1) {
            ASSERT_TRUE(runTool(u"exiftool"_s, {u"-q"_s, u"-overwrite_original"_s, u"-n"_s,
                                                u"-Orientation=%1"_s.arg(c.orientation), source, warmUp}));
        }
        QProcess probe;
        probe.start(QStringLiteral(VALTRONA_DRAWPROBE), {source, QString::number(c.width), QString::number(c.height),
                                                         QString::fromLatin1(c.format), warmUp});
        ASSERT_TRUE(probe.waitForFinished(60000)) << c.name;
        if (probe.exitCode() == 3)
            GTEST_SKIP() << "the peak resident memory cannot be reset on this system";
        const QByteArray output = probe.readAllStandardOutput();
        ASSERT_EQ(probe.exitCode(), 0) << c.name << output.constData();
        const QList<QByteArray> fields = output.trimmed().split(' ');
        ASSERT_EQ(fields.size(), 4) << output.constData();
        const qint64 estimate = fields.at(1).toLongLong();
        const qint64 measured = fields.at(3).toLongLong();
        EXPECT_GE(estimate, measured) << c.name;
        EXPECT_GT(measured, 0) << c.name;
    }

    // An interlaced PNG decodes whole: 30000 x 30000 pixels take 2.7 GB,
    // whatever the size of the file. Only its header is read.
    const QString bomb = m_sandbox.writeFile(u"bomb.png"_s, pngClaiming(30000, 30000, true));
    const auto info = imaging::inspect(bomb);
    ASSERT_TRUE(info.has_value());
    EXPECT_GE(info->decodeBytes, qint64(30000) * 30000 * 3);
    EXPECT_GE(imaging::drawMemory(*info, 1024, 1024, {}, imaging::OutputFormat::Jpeg), info->decodeBytes);
}

} // namespace
