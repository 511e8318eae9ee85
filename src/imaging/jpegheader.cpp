#include "imaging/jpegheader.h"
#include "imaging/imaging.h"
#include "imaging/imaging_p.h"

#include <QFile>
#include <QFileInfo>

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

ReadAt fileReader(QFile &file)
{
    return [&file](qint64 offset, qint64 count) {
        if (offset < 0 || count <= 0 || !file.seek(offset))
            return QByteArray();
        return file.read(count);
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

} // namespace

namespace detail {

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

JpegHeader parseJpegHeader(const QByteArray &bytes, bool endCheck)
{
    return parse(memoryReader(bytes), bytes.size(), endCheck);
}

JpegHeader readJpegHeader(const QString &path, bool endCheck)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return parse(fileReader(file), file.size(), endCheck);
}

bool readExif(const QString &path, QByteArray &block)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return false;
    const JpegHeader header = parse(fileReader(file), file.size(), true);
    if (header.kind != 2 || !file.seek(0))
        return false;
    const QByteArray bytes = file.read(header.headerEnd);
    if (bytes.size() != header.headerEnd)
        return false;
    block = bytes;
    return true;
}

bool writeExif(const QString &path, const QByteArray &block)
{
    if (!QFileInfo(path).isFile())
        return false;
    const QByteArray header = detail::portableHeaderBlock(block);
    if (header.isEmpty())
        return false;

    QByteArray target;
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return false;
        target = file.readAll();
        if (target.size() != file.size())
            return false;
    }
    const int kind = parseJpegHeader(target, true).kind;
    if (kind != 1 && kind != 3)
        return false;

    const QByteArray combined = header + target.mid(2);
    return detail::writeFileAtomically(path, combined.constData(), combined.size()) == Ok;
}

} // namespace valtrona::imaging
