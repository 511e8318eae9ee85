#include "imaging/jpegheader.h"
#include "imaging/imaging_p.h"

#include <cerrno>
#include <functional>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace valtrona::imaging {

namespace {

constexpr unsigned char kMarker = 0xFF;
constexpr unsigned char kStartOfImage = 0xD8;
constexpr unsigned char kEndOfImage = 0xD9;
constexpr unsigned char kApp0 = 0xE0;
constexpr unsigned char kApp1 = 0xE1;
constexpr unsigned char kApp2 = 0xE2;
constexpr unsigned char kApp14 = 0xEE;
constexpr unsigned char kAppLast = 0xEF;
constexpr unsigned char kComment = 0xFE;
// Some writers leave a trailing block after the end marker; such files end
// in "l" and carry the marker this many bytes before their end.
constexpr qint64 kTrailerDistance = 20610;

// Random access to the bytes of a file or of an in-memory copy. Reads past
// the end return fewer bytes, never garbage.
using ReadAt = std::function<QByteArray(qint64 offset, qint64 count)>;

unsigned char byteAt(const QByteArray &bytes, qsizetype index)
{
    return static_cast<unsigned char>(bytes.at(index));
}

bool isHeaderSegment(unsigned char marker)
{
    return (marker >= kApp0 && marker <= kAppLast) || marker == kComment;
}

bool endsWithEndMarker(const ReadAt &read, qint64 size)
{
    if (size < 2)
        return false;
    const qint64 tailLength = std::min<qint64>(size, 3);
    const QByteArray tail = read(size - tailLength, tailLength);
    if (tail.size() != tailLength)
        return false;
    const unsigned char last = byteAt(tail, tail.size() - 1);
    auto isEndMarker = [&read](qint64 offset) {
        const QByteArray pair = read(offset, 2);
        return pair.size() == 2 && byteAt(pair, 0) == kMarker && byteAt(pair, 1) == kEndOfImage;
    };
    if (last == 0) {
        if (size >= 3 && isEndMarker(size - 3))
            return true;
    } else if (isEndMarker(size - 2)) {
        return true;
    }
    // Counted 1-based in the original rule: position size - 20610.
    if (last == 0x6C && size > kTrailerDistance)
        return isEndMarker(size - kTrailerDistance - 1);
    return false;
}

// Offset just after the APPn/COM segments that follow the start marker.
// A segment that runs past the end of the file ends the walk before it.
qint64 headerSegmentsEnd(const ReadAt &read, qint64 size)
{
    qint64 pos = 2;
    while (pos + 4 <= size) {
        const QByteArray head = read(pos, 4);
        if (head.size() != 4 || byteAt(head, 0) != kMarker || !isHeaderSegment(byteAt(head, 1)))
            break;
        const qint64 length = (qint64(byteAt(head, 2)) << 8) | byteAt(head, 3);
        if (length < 2 || pos + 2 + length > size)
            break;
        pos += 2 + length;
    }
    return pos;
}

JpegHeader parse(const ReadAt &read, qint64 size, bool endCheck)
{
    JpegHeader header;
    const QByteArray start = read(0, 10);
    if (start.size() < 4 || byteAt(start, 0) != kMarker || byteAt(start, 1) != kStartOfImage
        || byteAt(start, 2) != kMarker)
        return header;

    const unsigned char marker = byteAt(start, 3);
    const QByteArray identifier = start.size() >= 10 ? start.mid(6, 4) : QByteArray();
    if (marker == kApp0 && identifier == "JFIF") {
        header.kind = 1;
        header.description = u"JFIF JPEG-Format"_s;
    } else if (marker == kApp1 && identifier == "Exif") {
        header.kind = 2;
        header.description = u"JEIDA Exif JPEG-Format"_s;
    } else if (marker >= 0xC0 && marker <= 0xC3) {
        header.kind = 3;
        header.description = u"JPEG-Format"_s;
    } else {
        return header;
    }
    if (endCheck && !endsWithEndMarker(read, size))
        return {};
    header.headerEnd = headerSegmentsEnd(read, size);
    return header;
}

ReadAt memoryReader(const QByteArray &bytes)
{
    return [&bytes](qint64 offset, qint64 count) {
        if (offset < 0 || offset >= bytes.size() || count <= 0)
            return QByteArray();
        return bytes.mid(qsizetype(offset), qsizetype(count));
    };
}

ReadAt descriptorReader(int fd)
{
    return [fd](qint64 offset, qint64 count) {
        QByteArray bytes;
        if (offset < 0 || count <= 0)
            return bytes;
        bytes.resize(qsizetype(count));
        qsizetype done = 0;
        while (done < bytes.size()) {
            const ssize_t got = ::pread(fd, bytes.data() + done, size_t(bytes.size() - done), off_t(offset + done));
            if (got < 0 && errno == EINTR)
                continue;
            if (got <= 0)
                break;
            done += got;
        }
        bytes.truncate(done);
        return bytes;
    };
}

// ---- Describing an output in a copied EXIF block ---------------------------

constexpr quint16 kTiffShort = 3;
constexpr quint16 kTiffLong = 4;
constexpr quint16 kTagOrientation = 0x0112;
constexpr quint16 kTagExifDirectory = 0x8769;
constexpr quint16 kTagPixelXDimension = 0xA002;
constexpr quint16 kTagPixelYDimension = 0xA003;
constexpr qsizetype kTiffEntrySize = 12;

// A TIFF structure inside a byte array (the payload of an EXIF segment),
// read and written in its own byte order. Offsets are relative to the TIFF
// header; nothing is read or written outside the structure.
class TiffStructure
{
public:
    TiffStructure(QByteArray &bytes, qsizetype start, qsizetype size) : m_bytes(bytes), m_start(start), m_size(size)
    {
        if (size < 8)
            return;
        const QByteArray order = bytes.mid(start, 4);
        if (order == QByteArrayView("II*\0", 4))
            m_valid = m_little = true;
        else if (order == QByteArrayView("MM\0*", 4))
            m_valid = true;
    }

    bool isValid() const { return m_valid; }
    quint32 firstDirectory() const { return read(4, 4); }

    /// Offset of the entry for `tag` in the directory at `directory`, or -1.
    qsizetype entry(quint32 directory, quint16 tag) const
    {
        if (!fits(directory, 2))
            return -1;
        const quint32 count = read(directory, 2);
        for (quint32 i = 0; i < count; ++i) {
            const qsizetype at = qsizetype(directory) + 2 + qsizetype(i) * kTiffEntrySize;
            if (!fits(at, kTiffEntrySize))
                return -1;
            if (read(at, 2) == tag)
                return at;
        }
        return -1;
    }

    quint16 type(qsizetype entry) const { return quint16(read(entry + 2, 2)); }
    quint32 count(qsizetype entry) const { return read(entry + 4, 4); }
    quint32 longValue(qsizetype entry) const { return read(entry + 8, 4); }

    /// Sets a single SHORT or LONG value held in the entry itself; a value
    /// too large for a SHORT turns the entry into a LONG.
    void setNumber(qsizetype entry, quint32 value)
    {
        const quint16 kind = type(entry);
        if (count(entry) != 1 || (kind != kTiffShort && kind != kTiffLong))
            return;
        if (kind == kTiffShort && value <= 0xFFFF) {
            write(entry + 8, 2, value);
        } else {
            write(entry + 2, 2, kTiffLong);
            write(entry + 8, 4, value);
        }
    }

private:
    bool fits(qsizetype offset, qsizetype length) const { return offset >= 0 && offset + length <= m_size; }

    quint32 read(qsizetype offset, int length) const
    {
        if (!fits(offset, length))
            return 0;
        quint32 value = 0;
        for (int i = 0; i < length; ++i) {
            const quint32 byte = byteAt(m_bytes, m_start + offset + (m_little ? length - 1 - i : i));
            value = (value << 8) | byte;
        }
        return value;
    }

    void write(qsizetype offset, int length, quint32 value)
    {
        if (!fits(offset, length))
            return;
        for (int i = 0; i < length; ++i) {
            const int shift = 8 * (m_little ? i : length - 1 - i);
            m_bytes[m_start + offset + i] = char((value >> shift) & 0xFF);
        }
    }

    QByteArray &m_bytes;
    const qsizetype m_start;
    const qsizetype m_size;
    bool m_valid = false;
    bool m_little = false;
};

void describeInTiff(QByteArray &bytes, qsizetype start, qsizetype size, std::optional<int> orientation,
                    int width, int height)
{
    TiffStructure tiff(bytes, start, size);
    if (!tiff.isValid())
        return;
    const quint32 main = tiff.firstDirectory();
    if (orientation) {
        const qsizetype entry = tiff.entry(main, kTagOrientation);
        if (entry >= 0 && tiff.type(entry) == kTiffShort)
            tiff.setNumber(entry, quint32(*orientation));
    }
    const qsizetype pointer = tiff.entry(main, kTagExifDirectory);
    if (pointer < 0 || tiff.count(pointer) != 1)
        return;
    const quint32 exif = tiff.longValue(pointer);
    for (const auto &[tag, value] : {std::pair {kTagPixelXDimension, width}, std::pair {kTagPixelYDimension, height}}) {
        const qsizetype entry = tiff.entry(exif, tag);
        if (entry >= 0)
            tiff.setNumber(entry, quint32(value));
    }
}

// An XMP packet may repeat the orientation as tiff:Orientation="6" or
// <tiff:Orientation>6</tiff:Orientation>; the digit is set in place.
void describeInXmp(QByteArray &bytes, qsizetype start, qsizetype size, int orientation)
{
    const QByteArrayView name("tiff:Orientation");
    const qsizetype end = start + size;
    for (qsizetype at = bytes.indexOf(name, start); at >= 0 && at < end; at = bytes.indexOf(name, at + 1)) {
        qsizetype pos = at + name.size();
        while (pos < end && (bytes.at(pos) == ' ' || bytes.at(pos) == '='))
            ++pos;
        if (pos < end && (bytes.at(pos) == '"' || bytes.at(pos) == '\'' || bytes.at(pos) == '>'))
            ++pos;
        if (pos < end && bytes.at(pos) >= '1' && bytes.at(pos) <= '8'
            && (pos + 1 >= end || bytes.at(pos + 1) < '0' || bytes.at(pos + 1) > '9'))
            bytes[pos] = char('0' + orientation);
    }
}

constexpr QByteArrayView kExifIdentifier("Exif\0\0", 6);
constexpr QByteArrayView kXmpIdentifier("http://ns.adobe.com/xap/1.0/\0", 29);

// Calls visit(payload start, payload size) for every APP1 segment of a
// header block whose payload begins with `identifier`.
template <typename Visit>
void forEachApp1(const QByteArray &block, QByteArrayView identifier, Visit visit)
{
    qsizetype pos = 2;
    while (pos + 4 <= block.size() && byteAt(block, pos) == kMarker && isHeaderSegment(byteAt(block, pos + 1))) {
        const qsizetype length = (qsizetype(byteAt(block, pos + 2)) << 8) | byteAt(block, pos + 3);
        if (length < 2 || pos + 2 + length > block.size())
            return;
        const qsizetype payload = pos + 4;
        const qsizetype payloadSize = length - 2;
        if (byteAt(block, pos + 1) == kApp1 && QByteArrayView(block).sliced(payload, payloadSize).startsWith(identifier))
            visit(payload, payloadSize);
        pos += 2 + length;
    }
}

} // namespace

namespace detail {

QByteArray exifPayload(const QByteArray &block)
{
    QByteArray found;
    if (block.size() >= 2 && byteAt(block, 0) == kMarker && byteAt(block, 1) == kStartOfImage) {
        forEachApp1(block, kExifIdentifier, [&](qsizetype payload, qsizetype size) {
            if (found.isEmpty())
                found = block.mid(payload, size);
        });
    }
    return found;
}

// A header block is FF D8 followed by whole APPn/COM segments and nothing
// else.
QByteArray portableHeaderBlock(const QByteArray &block)
{
    if (block.size() < 2 || byteAt(block, 0) != kMarker || byteAt(block, 1) != kStartOfImage)
        return {};
    QByteArray result = block.left(2);
    qsizetype pos = 2;
    while (pos < block.size()) {
        if (pos + 4 > block.size() || byteAt(block, pos) != kMarker
            || !isHeaderSegment(byteAt(block, pos + 1)))
            return {};
        const qsizetype length = (qsizetype(byteAt(block, pos + 2)) << 8) | byteAt(block, pos + 3);
        if (length < 2 || pos + 2 + length > block.size())
            return {};
        const unsigned char marker = byteAt(block, pos + 1);
        const QByteArray payload = block.mid(pos + 4, 12);
        const bool colourProfile = marker == kApp2 && payload.startsWith("ICC_PROFILE");
        const bool colourTransform = marker == kApp14 && payload.startsWith("Adobe");
        if (!colourProfile && !colourTransform)
            result += block.mid(pos, 2 + length);
        pos += 2 + length;
    }
    return result;
}

std::optional<QByteArray> readExifBlock(int descriptor)
{
    struct stat info {};
    if (::fstat(descriptor, &info) != 0)
        return std::nullopt;
    const ReadAt read = descriptorReader(descriptor);
    const JpegHeader header = parse(read, qint64(info.st_size), true);
    if (header.kind != 2)
        return std::nullopt;
    QByteArray block = read(0, header.headerEnd);
    if (block.size() != header.headerEnd)
        return std::nullopt;
    return block;
}

} // namespace detail

void describeOutput(QByteArray &block, std::optional<int> orientation, int width, int height)
{
    if (block.size() < 2 || byteAt(block, 0) != kMarker || byteAt(block, 1) != kStartOfImage)
        return;
    forEachApp1(block, kExifIdentifier, [&](qsizetype payload, qsizetype size) {
        describeInTiff(block, payload + kExifIdentifier.size(), size - kExifIdentifier.size(), orientation,
                       width, height);
    });
    if (orientation) {
        forEachApp1(block, kXmpIdentifier, [&](qsizetype payload, qsizetype size) {
            describeInXmp(block, payload, size, *orientation);
        });
    }
}

JpegHeader parseJpegHeader(const QByteArray &bytes, bool endCheck)
{
    return parse(memoryReader(bytes), bytes.size(), endCheck);
}

} // namespace valtrona::imaging
