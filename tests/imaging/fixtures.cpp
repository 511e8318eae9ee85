#include "fixtures.h"

#include "core/targetfolder.h"
#include "imaging/imaging.h"

#include <QFile>
#include <QTemporaryDir>

#include <cmath>

namespace valtrona::test {

PixelBuffer gradientImage(int width, int height)
{
    PixelBuffer image {QByteArray(qsizetype(width) * height * 3, Qt::Uninitialized), width, height, 3};
    char *p = image.bytes.data();
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double fx = width > 1 ? double(x) / (width - 1) : 0.0;
            const double fy = height > 1 ? double(y) / (height - 1) : 0.0;
            *p++ = char(std::lround(20 + 215 * fx));
            *p++ = char(std::lround(30 + 200 * fy));
            *p++ = char(std::lround(128 + 90 * std::sin(6.0 * fx) * std::cos(4.0 * fy)));
        }
    }
    return image;
}

PixelBuffer solidImage(int width, int height, int red, int green, int blue)
{
    PixelBuffer image {QByteArray(qsizetype(width) * height * 3, Qt::Uninitialized), width, height, 3};
    for (qsizetype i = 0; i < image.bytes.size(); i += 3) {
        image.bytes[i] = char(red);
        image.bytes[i + 1] = char(green);
        image.bytes[i + 2] = char(blue);
    }
    return image;
}

void writePnm(const QString &path, const PixelBuffer &image)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return;
    const QByteArray magic = image.channels == 1 ? "P5" : "P6";
    file.write(magic + '\n' + QByteArray::number(image.width) + ' ' + QByteArray::number(image.height)
               + "\n255\n");
    file.write(image.bytes);
}

QString writeWithVips(const QString &path, const PixelBuffer &image, const QString &saveOptions)
{
    QTemporaryDir scratch;
    const QString pnm = scratch.filePath(image.channels == 1 ? QStringLiteral("in.pgm")
                                                             : QStringLiteral("in.ppm"));
    writePnm(pnm, image);
    runTool(QStringLiteral("vips"), {QStringLiteral("copy"), pnm, path + saveOptions});
    return path;
}

namespace {

// CRC-32 as PNG chunks use it.
quint32 crc32(const QByteArray &bytes)
{
    quint32 crc = 0xFFFFFFFFu;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int k = 0; k < 8; ++k)
            crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
    return ~crc;
}

} // namespace

PixelBuffer referenceResample(const PixelBuffer &image, int width, int height)
{
    QTemporaryDir scratch;
    const QString in = scratch.filePath(image.channels == 1 ? QStringLiteral("in.pgm") : QStringLiteral("in.ppm"));
    const QString out = scratch.filePath(QStringLiteral("out.png"));
    writePnm(in, image);
    runTool(QStringLiteral("vips"), {QStringLiteral("thumbnail"), in, out, QString::number(width), QStringLiteral("--height"),
                                     QString::number(height), QStringLiteral("--size"), QStringLiteral("force")});
    return firstChannels(decoded(out), image.channels);
}

PixelBuffer pixelsOf(const imaging::RgbaImage &image)
{
    return {image.pixels, image.width, image.height, 4};
}

PixelBuffer decoded(const QString &path)
{
    const imaging::Orientation shown = imaging::orientation();
    imaging::setOrientation(imaging::Orientation::Stored);
    const auto image = imaging::loadPreview(path, 0, 0);
    imaging::setOrientation(shown);
    return image ? pixelsOf(*image) : PixelBuffer {};
}

imaging::DrawRequest drawRequest(const QString &source, int width, int height, imaging::OutputFormat format)
{
    imaging::DrawRequest request;
    request.source = source;
    request.width = width;
    request.height = height;
    request.format = format;
    return request;
}

Expected<QString, Error> drawToFile(const imaging::DrawRequest &request, const QString &folder, const QString &name)
{
    auto target = files::TargetFolder::open(folder);
    if (!target)
        return unexpected(target.error());
    auto pending = target->createPending();
    if (!pending)
        return unexpected(pending.error());
    if (auto drawn = imaging::drawInto(request, *pending); !drawn)
        return unexpected(drawn.error());
    if (auto committed = target->commit(*pending, name); !committed)
        return unexpected(committed.error());
    return QString(target->path() + u'/' + name);
}

PixelBuffer firstChannels(const PixelBuffer &image, int channels)
{
    PixelBuffer result {QByteArray(), image.width, image.height, channels};
    const qsizetype pixels = qsizetype(image.width) * image.height;
    result.bytes.reserve(pixels * channels);
    for (qsizetype p = 0; p < pixels; ++p)
        result.bytes.append(image.bytes.constData() + p * image.channels, channels);
    return result;
}

QByteArray pngClaiming(quint32 width, quint32 height, bool interlaced)
{
    auto chunk = [](const QByteArray &type, const QByteArray &data) {
        QByteArray out;
        const quint32 length = quint32(data.size());
        out.append(char(length >> 24)).append(char(length >> 16)).append(char(length >> 8)).append(char(length));
        const QByteArray body = type + data;
        const quint32 crc = crc32(body);
        out.append(body);
        out.append(char(crc >> 24)).append(char(crc >> 16)).append(char(crc >> 8)).append(char(crc));
        return out;
    };
    QByteArray ihdr;
    for (const quint32 v : {width, height})
        ihdr.append(char(v >> 24)).append(char(v >> 16)).append(char(v >> 8)).append(char(v));
    ihdr.append(char(8)).append(char(2)).append(char(0)).append(char(0)).append(char(interlaced ? 1 : 0));
    return QByteArray("\x89PNG\r\n\x1a\n", 8) + chunk("IHDR", ihdr)
           + chunk("IDAT", QByteArray::fromHex("789c636000000001000100")) + chunk("IEND", {});
}

QByteArray withFrameSize(QByteArray jpegBytes, int width, int height)
{
    const qsizetype sof = jpegBytes.indexOf(QByteArray::fromHex("ffc0"));
    if (sof < 0)
        return {};
    jpegBytes[sof + 5] = char(height >> 8);
    jpegBytes[sof + 6] = char(height);
    jpegBytes[sof + 7] = char(width >> 8);
    jpegBytes[sof + 8] = char(width);
    return jpegBytes;
}

} // namespace valtrona::test
