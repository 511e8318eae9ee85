#include "batch/conversionimaging.h"

using namespace Qt::StringLiterals;

namespace valtrona {

ConversionImaging::~ConversionImaging() = default;

std::optional<ImageFormat> formatForCode(const QString &code)
{
    const QString upper = code.toUpper();
    if (upper == u"J"_s)
        return ImageFormat::Jpeg;
    if (upper == u"P"_s)
        return ImageFormat::Png;
    return std::nullopt;
}

} // namespace valtrona
