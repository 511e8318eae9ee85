#include "imaging/imaging.h"
#include "imaging/jpegheader.h"
#include "imaging/picture.h"
#include "fixtures.h"
#include "support/testsupport.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace valtrona;
using namespace valtrona::test;

namespace {

QByteArray segment(unsigned char marker, const QByteArray &payload)
{
    const int length = int(payload.size()) + 2;
    QByteArray out;
    out.append(char(0xFF)).append(char(marker)).append(char(length >> 8)).append(char(length & 0xFF));
    return out + payload;
}

QByteArray jfifSegment()
{
    return segment(0xE0, QByteArray::fromHex("4a4649460001010000010001 0000"));
}

// An APP1 Exif segment with one tag, the camera make.
QByteArray exifSegment(const QByteArray &make)
{
    const QByteArray value = make + '\0';
    QByteArray tiff = QByteArray::fromHex("49492a0008000000"); // "II", 42, IFD at 8
    tiff += QByteArray::fromHex("0100");                       // one entry
    tiff += QByteArray::fromHex("0f010200");                   // Make, ASCII
    const quint32 count = quint32(value.size());
    tiff.append(char(count)).append(char(count >> 8)).append(char(count >> 16)).append(char(count >> 24));
    tiff += QByteArray::fromHex("1a000000");                   // value at 26
    tiff += QByteArray::fromHex("00000000");                   // no next IFD
    tiff += value;
    return segment(0xE1, QByteArray("Exif\0\0", 6) + tiff);
}

const QByteArray kSoi = QByteArray::fromHex("ffd8");
const QByteArray kEoi = QByteArray::fromHex("ffd9");
const QByteArray kBody = QByteArray::fromHex("ffdb0004aabbffda0004ccdd112233");

TEST(JpegHeaderKind, FromTheFirstMarker)
{
    const struct
    {
        const char *name;
        QByteArray bytes;
        int kind;
        const char *description;
    } cases[] = {
        {"JFIF", kSoi + jfifSegment() + kBody + kEoi, 1, "JFIF JPEG-Format"},
        {"Exif", kSoi + exifSegment("X") + kBody + kEoi, 2, "JEIDA Exif JPEG-Format"},
        {"SOF0", kSoi + QByteArray::fromHex("ffc00011") + kEoi, 3, "JPEG-Format"},
        {"SOF3", kSoi + QByteArray::fromHex("ffc30011") + kEoi, 3, "JPEG-Format"},
        {"DHT first", kSoi + QByteArray::fromHex("ffc40011") + kEoi, 0, ""},
        {"DQT first", kSoi + kBody + kEoi, 0, ""},
        {"JFXX in APP0", kSoi + segment(0xE0, "JFXX\0\x10") + kEoi, 0, ""},
        {"XMP in APP1", kSoi + segment(0xE1, "http://ns.adobe.com/") + kEoi, 0, ""},
        {"JFIF in APP1", kSoi + segment(0xE1, "JFIF\0") + kEoi, 0, ""},
        {"no start marker", jfifSegment() + kEoi, 0, ""},
        {"PNG", QByteArray("\x89PNG\r\n\x1a\n", 8) + kEoi, 0, ""},
        {"empty", QByteArray(), 0, ""},
        {"start marker only", kSoi, 0, ""},
        {"cut in identifier", kSoi + QByteArray::fromHex("ffe000104a46"), 0, ""},
    };
    Sandbox sandbox;
    for (const auto &c : cases) {
        const imaging::JpegHeader parsed = imaging::parseJpegHeader(c.bytes, false);
        EXPECT_EQ(parsed.kind, c.kind) << c.name;
        EXPECT_EQ(parsed.description, QString::fromLatin1(c.description)) << c.name;
        const imaging::JpegHeader read = imaging::readJpegHeader(sandbox.writeFile(u"f.jpg"_s, c.bytes), false);
        EXPECT_EQ(read.kind, c.kind) << c.name;
        EXPECT_EQ(read.headerEnd, parsed.headerEnd) << c.name;
    }
    EXPECT_EQ(imaging::readJpegHeader(sandbox.filePath(u"absent.jpg"_s), false).kind, 0);
}

TEST(JpegHeaderKind, EndCheck)
{
    const QByteArray head = kSoi + jfifSegment() + kBody;
    const QByteArray filler(20700, 'x');
    const struct
    {
        const char *name;
        QByteArray bytes;
        int kind;
    } cases[] = {
        {"ends with FF D9", head + kEoi, 1},
        {"FF D9 then a 0", head + kEoi + '\0', 1},
        {"FF D9 then two 0", head + kEoi + QByteArray(2, '\0'), 0},
        {"FF D9 then other byte", head + kEoi + 'x', 0},
        {"no end marker", head, 0},
        {"D9 FF reversed", head + QByteArray::fromHex("d9ff"), 0},
        {"trailer of 20610 ending in l", head + kEoi + filler.left(20608) + 'l', 1},
        {"trailer one byte longer", head + kEoi + filler.left(20609) + 'l', 0},
        {"trailer one byte shorter", head + kEoi + filler.left(20607) + 'l', 0},
        {"trailer of 20610 ending in L", head + kEoi + filler.left(20608) + 'L', 0},
        {"short file ending in l", head + 'l', 0},
        {"trailer ending in 0", head + kEoi + filler.left(20608) + '\0', 0},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(imaging::parseJpegHeader(c.bytes, true).kind, c.kind) << c.name;
        EXPECT_EQ(imaging::parseJpegHeader(c.bytes, false).kind, 1) << c.name;
    }
    // The same rule on files, read from their ends.
    Sandbox sandbox;
    EXPECT_EQ(imaging::readJpegHeader(sandbox.writeFile(u"t.jpg"_s, head + kEoi + filler.left(20608) + 'l'), true).kind, 1);
    EXPECT_EQ(imaging::readJpegHeader(sandbox.writeFile(u"u.jpg"_s, head + kEoi + 'l'), true).kind, 0);
    EXPECT_EQ(imaging::readJpegHeader(sandbox.writeFile(u"v.jpg"_s, kSoi + QByteArray::fromHex("ffc0")), true).kind, 0);
}

TEST(JpegHeaderEnd, AfterTheApplicationAndCommentSegments)
{
    const QByteArray app0 = jfifSegment();
    const QByteArray app1 = exifSegment("Kamera");
    const QByteArray com = segment(0xFE, "Kommentar");
    const QByteArray app13 = segment(0xED, "Photoshop 3.0");
    const struct
    {
        const char *name;
        QByteArray bytes;
        qint64 end;
    } cases[] = {
        {"Exif, COM", kSoi + app1 + com + kBody + kEoi, 2 + app1.size() + com.size()},
        {"Exif, JFIF, APP13, COM", kSoi + app1 + app0 + app13 + com + kBody + kEoi,
         2 + app1.size() + app0.size() + app13.size() + com.size()},
        {"JFIF only", kSoi + app0 + kBody + kEoi, 2 + app0.size()},
        {"frame first", kSoi + QByteArray::fromHex("ffc00011") + kEoi, 2},
        {"segment running past the end", kSoi + app1 + QByteArray::fromHex("ffe2ffff0102") + kEoi, 2 + app1.size()},
        {"segment length below 2", kSoi + app1 + QByteArray::fromHex("ffe20001") + kBody + kEoi, 2 + app1.size()},
        {"APP segment after the tables ignored", kSoi + app1 + kBody + com + kEoi, 2 + app1.size()},
    };
    for (const auto &c : cases)
        EXPECT_EQ(imaging::parseJpegHeader(c.bytes, true).headerEnd, c.end) << c.name;
}

class ExifCopyTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        ASSERT_TRUE(imaging::start());
        imaging::setQuiet(true);
    }

    // A photo as cameras write it: Exif first, then the image.
    QString exifPhoto(const QString &name, int width, int height)
    {
        const QString plain = writeWithVips(m_sandbox.filePath(u"plain-"_s + name), gradientImage(width, height),
                                            u"[Q=90,strip]"_s);
        const QString path = m_sandbox.filePath(name);
        EXPECT_TRUE(runTool(u"exiftool"_s, {u"-q"_s, u"-Make=Testkamera"_s, u"-Model=VT 1"_s,
                                            u"-DateTimeOriginal=2024:05:06 07:08:09"_s, u"-o"_s, path, plain}));
        EXPECT_EQ(imaging::readJpegHeader(path, true).kind, 2);
        return path;
    }

    QString converted(const QString &source, const QString &name, int width, int height)
    {
        const QString path = m_sandbox.filePath(name);
        EXPECT_TRUE(imaging::saveJpeg(imaging::drawFile(source, width, height), path, 85));
        return path;
    }

    static QByteArray exifTag(const QString &path, const QString &tag)
    {
        QByteArray out;
        runTool(u"exiftool"_s, {u"-s3"_s, u"-"_s + tag, path}, &out);
        return out.trimmed();
    }

    Sandbox m_sandbox;
};

TEST_F(ExifCopyTest, CarriesTheBlockOverAndKeepsThePixels)
{
    const QString source = exifPhoto(u"photo.jpg"_s, 640, 480);
    QByteArray block;
    ASSERT_TRUE(imaging::readExif(source, block));
    EXPECT_EQ(block, readAll(source).left(block.size()));
    EXPECT_EQ(block.size(), imaging::readJpegHeader(source, true).headerEnd);

    const QString target = converted(source, u"small.jpg"_s, 320, 240);
    EXPECT_EQ(imaging::readJpegHeader(target, true).kind, 1);
    const PixelBuffer before = pixelsOf(imaging::pictureFromFile(target));
    ASSERT_TRUE(imaging::writeExif(target, block));

    EXPECT_EQ(imaging::readJpegHeader(target, true).kind, 2);
    EXPECT_EQ(exifTag(target, u"Make"_s), QByteArray("Testkamera"));
    EXPECT_EQ(exifTag(target, u"Model"_s), QByteArray("VT 1"));
    EXPECT_EQ(exifTag(target, u"DateTimeOriginal"_s), QByteArray("2024:05:06 07:08:09"));
    EXPECT_TRUE(imagesClose(pixelsOf(imaging::pictureFromFile(target)), before, 0, 0.0));
    int width = 0;
    int height = 0;
    EXPECT_TRUE(imaging::measure(target, width, height));
    EXPECT_EQ(width, 320);
    EXPECT_EQ(height, 240);
}

TEST_F(ExifCopyTest, LeavesUnsuitableFilesAlone)
{
    const QString source = exifPhoto(u"photo.jpg"_s, 64, 48);
    QByteArray block;
    ASSERT_TRUE(imaging::readExif(source, block));
    const QString jfif = converted(source, u"jfif.jpg"_s, 32, 24);
    const QByteArray jfifBytes = readAll(jfif);

    const QByteArray sourceBytes = readAll(source);
    const QString cutSource = m_sandbox.writeFile(u"cut-source.jpg"_s, sourceBytes.left(sourceBytes.size() - 10));
    for (const QString &path : {jfif, cutSource, m_sandbox.filePath(u"absent.jpg"_s)}) {
        QByteArray unread("unchanged");
        EXPECT_FALSE(imaging::readExif(path, unread)) << path.toStdString();
        EXPECT_EQ(unread, QByteArray("unchanged"));
    }

    const QString exifTarget = exifPhoto(u"already.jpg"_s, 16, 16);
    const QString png = writeWithVips(m_sandbox.filePath(u"p.png"_s), gradientImage(8, 8));
    const QString cut = m_sandbox.writeFile(u"cut.jpg"_s, jfifBytes.left(jfifBytes.size() - 5));
    for (const QString &target : {exifTarget, png, cut}) {
        const QByteArray original = readAll(target);
        EXPECT_FALSE(imaging::writeExif(target, block)) << target.toStdString();
        EXPECT_EQ(readAll(target), original) << target.toStdString();
    }
    EXPECT_FALSE(imaging::writeExif(m_sandbox.filePath(u"absent.jpg"_s), block));
    EXPECT_FALSE(QFile::exists(m_sandbox.filePath(u"absent.jpg"_s)));

    const QByteArray badBlocks[] = {
        QByteArray(),
        QByteArray("not a header"),
        block.mid(2),              // no start marker
        block.left(block.size() - 3), // cut inside a segment
        block + kBody,             // image data after the segments
    };
    for (const QByteArray &bad : badBlocks) {
        EXPECT_FALSE(imaging::writeExif(jfif, bad)) << bad.size();
        EXPECT_EQ(readAll(jfif), jfifBytes);
    }
}

TEST_F(ExifCopyTest, LeavesTheSourceColourSegmentsOut)
{
    const QByteArray block = kSoi + exifSegment("Testkamera")
                             + segment(0xE2, QByteArray("ICC_PROFILE\0\x01\x01", 14) + QByteArray(64, 'p'))
                             + segment(0xEE, QByteArray("Adobe\0\x64\0\0\0\0\x02", 12))
                             + segment(0xFE, "Kommentar");
    const QString source = writeWithVips(m_sandbox.filePath(u"s.png"_s), gradientImage(40, 30));
    const QString target = converted(source, u"t.jpg"_s, 40, 30);
    const PixelBuffer before = pixelsOf(imaging::pictureFromFile(target));
    ASSERT_TRUE(imaging::writeExif(target, block));
    const QByteArray bytes = readAll(target);
    EXPECT_FALSE(bytes.contains("ICC_PROFILE"));
    EXPECT_FALSE(bytes.contains("Adobe"));
    EXPECT_TRUE(bytes.contains("Kommentar"));
    EXPECT_EQ(exifTag(target, u"Make"_s), QByteArray("Testkamera"));
    EXPECT_TRUE(imagesClose(pixelsOf(imaging::pictureFromFile(target)), before, 0, 0.0));
}

} // namespace
