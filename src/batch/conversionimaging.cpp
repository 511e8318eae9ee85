#include "batch/conversionimaging.h"

namespace valtrona {

ConversionImaging::~ConversionImaging() = default;

namespace {

struct FormatEntry
{
    QStringView code;
    ImageFormat format;
    QStringView extension;
};

constexpr FormatEntry kFormats[] = {
    {u"J", ImageFormat::Jpeg, u".jpg"},
    {u"P", ImageFormat::Png, u".png"},
    {u"W", ImageFormat::WebP, u".webp"},
    {u"A", ImageFormat::Avif, u".avif"},
};

} // namespace

std::optional<ImageFormat> formatForCode(const QString &code)
{
    for (const FormatEntry &entry : kFormats) {
        if (code.compare(entry.code, Qt::CaseInsensitive) == 0)
            return entry.format;
    }
    return std::nullopt;
}

QString formatExtension(ImageFormat format)
{
    for (const FormatEntry &entry : kFormats) {
        if (entry.format == format)
            return entry.extension.toString();
    }
    return {};
}

} // namespace valtrona
