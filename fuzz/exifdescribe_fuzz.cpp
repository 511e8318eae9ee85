// Reads arbitrary bytes as the EXIF and XMP data of a JPEG's header block and
// makes them describe an output: the block keeps its length and segment
// structure, and nothing outside the two payloads changes.

#include "imaging/jpegheader.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

QByteArray segment(const QByteArray &identifier, const QByteArray &payload)
{
    const QByteArray body = identifier + payload.left(0xFFFF - 2 - identifier.size());
    const int length = int(body.size()) + 2;
    return QByteArray("\xff\xe1", 2) + char(length >> 8) + char(length & 0xFF) + body;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const QByteArray half = bytes.left(bytes.size() / 2);
    const QByteArray exif = segment(QByteArray("Exif\0\0", 6), bytes.mid(half.size()));
    const QByteArray xmp = segment(QByteArray("http://ns.adobe.com/xap/1.0/\0", 29), half);
    const QByteArray block = QByteArray("\xff\xd8", 2) + exif + xmp;
    for (const std::optional<int> orientation : {std::optional<int>(), std::optional<int>(1)}) {
        QByteArray described = block;
        valtrona::imaging::describeOutput(described, orientation, 70000, 3);
        if (described.size() != block.size())
            std::abort();
        // The markers and lengths of both segments stay as they were.
        if (described.left(10) != block.left(10) || described.mid(exif.size() + 2, 10) != block.mid(exif.size() + 2, 10))
            std::abort();
        if (!orientation && described.mid(exif.size() + 2) != block.mid(exif.size() + 2))
            std::abort();
    }
    return 0;
}
