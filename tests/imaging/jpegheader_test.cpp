#include "imaging/jpegheader.h"

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace valtrona;

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

// An APP1 Exif segment with one tag, the camera make "Kamera".
QByteArray exifSegment()
{
    return segment(0xE1, QByteArray("Exif\0\0", 6)
                             + QByteArray::fromHex("49492a00080000000100" // "II", 42, IFD at 8, one entry
                                                   "0f010200070000001a000000" // Make, ASCII, 7 bytes at 26
                                                   "00000000") // no next IFD
                             + QByteArray("Kamera\0", 7));
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
        {"Exif", kSoi + exifSegment() + kBody + kEoi, 2, "JEIDA Exif JPEG-Format"},
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
    for (const auto &c : cases) {
        const imaging::JpegHeader parsed = imaging::parseJpegHeader(c.bytes, false);
        EXPECT_EQ(parsed.kind, c.kind) << c.name;
        EXPECT_EQ(parsed.description, QString::fromLatin1(c.description)) << c.name;
    }
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
}

TEST(JpegHeaderEnd, AfterTheApplicationAndCommentSegments)
{
    const QByteArray app0 = jfifSegment();
    const QByteArray app1 = exifSegment();
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

} // namespace
