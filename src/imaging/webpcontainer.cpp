// The metadata chunks of a WebP file, set after the encoder has written it.

#include "imaging/imaging_p.h"

#include <QList>
#include <QtEndian>

namespace valtrona::imaging::detail {

namespace {

constexpr qsizetype kChunkHeader = 8;
constexpr quint8 kIccFlag = 0x20;
constexpr quint8 kAlphaFlag = 0x10;
constexpr quint8 kExifFlag = 0x08;
constexpr quint8 kXmpFlag = 0x04;

QByteArray littleEndian32(quint32 value)
{
    QByteArray bytes(4, Qt::Uninitialized);
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray littleEndian24(quint32 value)
{
    return littleEndian32(value).left(3);
}

QByteArray chunk(QByteArrayView fourcc, const QByteArray &payload)
{
    QByteArray bytes = fourcc.toByteArray() + littleEndian32(quint32(payload.size())) + payload;
    if (payload.size() % 2 != 0)
        bytes.append('\0');
    return bytes;
}

} // namespace

QByteArray webpWithExifOnly(const QByteArray &webp, const QByteArray &tiff, int width, int height)
{
    if (webp.size() < 12 + kChunkHeader || !webp.startsWith("RIFF") || webp.mid(8, 4) != "WEBP")
        return {};
    // The chunks as written, each with its header and padding.
    QList<QByteArray> chunks;
    for (qsizetype pos = 12; pos < webp.size();) {
        if (pos + kChunkHeader > webp.size())
            return {};
        const qsizetype size = qFromLittleEndian<quint32>(webp.constData() + pos + 4);
        const qsizetype whole = kChunkHeader + size + size % 2;
        if (size < 0 || pos + kChunkHeader + size > webp.size())
            return {};
        chunks.append(webp.mid(pos, whole));
        pos += whole;
    }
    if (chunks.isEmpty())
        return {};
    chunks.removeIf([](const QByteArray &c) { return c.startsWith("EXIF") || c.startsWith("XMP ") || c.startsWith("ICCP"); });
    if (chunks.isEmpty())
        return {};
    const QByteArray first = chunks.first().left(4);
    if (first == "VP8X") {
        // An extended file already: its flags tell what it holds.
        if (chunks.first().size() < kChunkHeader + 10)
            return {};
        quint8 flags = quint8(chunks.first().at(kChunkHeader)) & ~(kIccFlag | kExifFlag | kXmpFlag);
        if (!tiff.isEmpty())
            flags |= kExifFlag;
        chunks.first()[kChunkHeader] = char(flags);
    } else if (first == "VP8 " || first == "VP8L") {
        // A simple file that is to hold EXIF data becomes an extended one:
        // a VP8X chunk with the canvas size goes first. A lossless picture
        // says in its header whether it uses transparency.
        if (!tiff.isEmpty()) {
            quint8 flags = kExifFlag;
            if (first == "VP8L" && chunks.first().size() >= kChunkHeader + 5
                && (quint8(chunks.first().at(kChunkHeader + 4)) & 0x10) != 0)
                flags |= kAlphaFlag;
            const QByteArray extended = QByteArray(1, char(flags)) + QByteArray(3, '\0')
                                        + littleEndian24(quint32(width - 1)) + littleEndian24(quint32(height - 1));
            chunks.prepend(chunk("VP8X", extended));
        }
    } else {
        return {};
    }
    if (!tiff.isEmpty())
        chunks.append(chunk("EXIF", tiff));

    QByteArray body = "WEBP";
    for (const QByteArray &c : std::as_const(chunks))
        body += c;
    return "RIFF" + littleEndian32(quint32(body.size())) + body;
}

} // namespace valtrona::imaging::detail
