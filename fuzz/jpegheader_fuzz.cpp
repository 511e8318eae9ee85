// Reads arbitrary bytes as the start of a JPEG file, with and without the end
// check, and checks that the reported header end lies inside the data and
// only ever comes with a recognised kind.

#include "imaging/jpegheader.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    for (const bool endCheck : {false, true}) {
        const valtrona::imaging::JpegHeader header = valtrona::imaging::parseJpegHeader(bytes, endCheck);
        if (header.kind < 0 || header.kind > 3)
            std::abort();
        if (header.headerEnd < 0 || header.headerEnd > bytes.size())
            std::abort();
        if (header.kind != 0 && bytes.size() < 4)
            std::abort();
    }
    return 0;
}
