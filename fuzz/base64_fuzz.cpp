// Decodes arbitrary text with every coding table and checks that whatever
// is encoded decodes back, directly and through span/unspan.
//
// Input: byte 0 picks the table, byte 1 the line length, the rest is data.

#include "core/base64.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 2)
        return 0;
    valtrona::Base64Encoding codec;
    codec.setActiveCodingTable(data[0] % valtrona::Base64Encoding::TableCount);
    const int lineLength = data[1] % 100;
    const QByteArray payload(reinterpret_cast<const char *>(data + 2), qsizetype(size - 2));

    // Anything may come in as text.
    const QByteArray decoded = codec.decodeB64(payload);
    if (decoded.size() > (payload.size() / 4 + 1) * 3)
        std::abort();
    codec.decodeB64(valtrona::Base64Encoding::unspan(payload));
    valtrona::Base64Encoding::span(lineLength, payload);

    // What is encoded comes back.
    const QByteArray encoded = codec.encodeB64(payload);
    if (encoded.size() != (payload.size() + 2) / 3 * 4)
        std::abort();
    if (codec.decodeB64(encoded) != payload)
        std::abort();
    const QByteArray spanned = valtrona::Base64Encoding::span(lineLength, encoded);
    if (valtrona::Base64Encoding::unspan(spanned) != encoded)
        std::abort();
    if (codec.decodeB64(spanned) != payload)
        std::abort();
    return 0;
}
