// Photos whose EXIF data says they are stored turned or mirrored: measured,
// previewed and drawn as they are shown, or as stored when asked; and the
// EXIF data an output carries describes the output.

#include "imaging/conversion.h"
#include "imaging/imaging.h"
#include "imaging/preview.h"
#include "fixtures.h"
#include "support/testsupport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSize>

#include <gtest/gtest.h>

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace valtrona;
using namespace valtrona::test;
using Format = imaging::OutputFormat;

namespace {

enum class Corner { TopLeft, TopRight, BottomLeft, BottomRight, None };

const char *cornerName(Corner corner)
{
    constexpr const char *names[] = {"top left", "top right", "bottom left", "bottom right", "none"};
    return names[int(corner)];
}

constexpr int kStoredWidth = 64;
constexpr int kStoredHeight = 40;

// Grey, with a red block in one corner.
PixelBuffer markedImage(Corner corner)
{
    PixelBuffer image = solidImage(kStoredWidth, kStoredHeight, 128, 128, 128);
    const int left = corner == Corner::TopRight || corner == Corner::BottomRight ? kStoredWidth - 24 : 0;
    const int top = corner == Corner::BottomLeft || corner == Corner::BottomRight ? kStoredHeight - 16 : 0;
    for (int y = top; y < top + 16; ++y) {
        for (int x = left; x < left + 24; ++x) {
            char *pixel = image.bytes.data() + (qsizetype(y) * kStoredWidth + x) * 3;
            pixel[0] = char(230);
            pixel[1] = char(20);
            pixel[2] = char(20);
        }
    }
    return image;
}

// The one corner that is red, or None when not exactly one is.
Corner markedCorner(const PixelBuffer &image)
{
    auto red = [&](int x, int y) {
        const char *pixel = image.bytes.constData() + (qsizetype(y) * image.width + x) * image.channels;
        return static_cast<unsigned char>(pixel[0]) > 180 && static_cast<unsigned char>(pixel[1]) < 90;
    };
    const int right = image.width - 3;
    const int bottom = image.height - 3;
    const bool marks[] = {red(2, 2), red(right, 2), red(2, bottom), red(right, bottom)};
    if (std::count(std::begin(marks), std::end(marks), true) != 1)
        return Corner::None;
    return Corner(std::find(std::begin(marks), std::end(marks), true) - std::begin(marks));
}

// A JPEG photo whose stored pixels have the mark at `stored`, with EXIF
// data in the given byte order that records `orientation` (also in XMP), a
// camera and the stored pixel dimensions.
QString orientedPhoto(const Sandbox &box, const QString &name, int orientation, Corner stored, bool littleEndian)
{
    const QString path = writeWithVips(box.filePath(name), markedImage(stored), u"[Q=95,strip]"_s);
    const QString value = QString::number(orientation);
    EXPECT_TRUE(runTool(u"exiftool"_s, {u"-q"_s, u"-overwrite_original"_s, u"-n"_s,
                                        u"-ExifByteOrder="_s + (littleEndian ? u"II"_s : u"MM"_s),
                                        u"-Orientation="_s + value, u"-XMP-tiff:Orientation="_s + value,
                                        u"-Make=Testkamera"_s, u"-ExifImageWidth=%1"_s.arg(kStoredWidth),
                                        u"-ExifImageHeight=%1"_s.arg(kStoredHeight), path}));
    return path;
}

// What exiftool reads from files: one object per file, numbers as numbers,
// each named with its group ("IFD0:Orientation", "XMP-tiff:Orientation").
QList<QJsonObject> exifOf(const QStringList &paths)
{
    QByteArray json;
    EXPECT_TRUE(runTool(u"exiftool"_s,
                        QStringList {u"-j"_s, u"-n"_s, u"-G1"_s, u"-IFD0:Orientation"_s, u"-XMP-tiff:Orientation"_s,
                                     u"-ExifIFD:ExifImageWidth"_s, u"-ExifIFD:ExifImageHeight"_s, u"-IFD0:Make"_s}
                            + paths,
                        &json));
    QList<QJsonObject> objects;
    for (const QJsonValue &value : QJsonDocument::fromJson(json).array())
        objects.append(value.toObject());
    return objects;
}

class OrientationTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(imaging::start()); }
    void TearDown() override { imaging::setOrientation(imaging::Orientation::Upright); }

    Sandbox m_sandbox;
};

TEST_F(OrientationTest, EachOfTheEightIsShownUprightOrAsStoredWhenAsked)
{
    const struct
    {
        int orientation;
        Corner stored; ///< where the corner shown top left lies in the stored pixels
        Format format;
        bool carryExif;
        bool littleEndian; ///< byte order of the source's EXIF data
    } cases[] = {
        {1, Corner::TopLeft, Format::Jpeg, true, true},      {2, Corner::TopRight, Format::WebP, true, false},
        {3, Corner::BottomRight, Format::Avif, true, true},  {4, Corner::BottomLeft, Format::Png, true, false},
        {5, Corner::TopLeft, Format::Jpeg, false, false},    {6, Corner::BottomLeft, Format::WebP, false, true},
        {7, Corner::BottomRight, Format::Avif, false, false}, {8, Corner::TopRight, Format::Jpeg, true, true},
    };
    constexpr const char *suffixes[] = {".jpg", ".png", ".webp", ".avif"};
    struct Expected
    {
        QString output;
        int orientation; ///< what the output's EXIF data records; 0 none at all
        int width;
        int height;
    };
    QList<Expected> outputs;
    for (const auto &c : cases) {
        const QString source = orientedPhoto(m_sandbox, u"photo%1.jpg"_s.arg(c.orientation), c.orientation, c.stored,
                                             c.littleEndian);
        for (const imaging::Orientation mode : {imaging::Orientation::Upright, imaging::Orientation::Stored}) {
            const bool upright = mode == imaging::Orientation::Upright;
            const bool swapped = upright && c.orientation >= 5;
            const int width = swapped ? kStoredHeight : kStoredWidth;
            const int height = swapped ? kStoredWidth : kStoredHeight;
            const Corner topLeft = upright ? Corner::TopLeft : c.stored;
            const std::string where = std::to_string(c.orientation) + (upright ? " upright" : " stored");
            imaging::setOrientation(mode);

            EXPECT_EQ(imaging::measure(source).value_or({}), QSize(width, height)) << where;
            const auto info = imaging::inspect(source, mode);
            ASSERT_TRUE(info.has_value()) << where;
            EXPECT_EQ(QSize(info->width, info->height), QSize(width, height)) << where;
            EXPECT_EQ(info->orientation, upright ? c.orientation : 1) << where;

            const PixelBuffer preview = pixelsOf(imaging::loadPreview(source, 0, 0).value_or({}));
            EXPECT_EQ(QSize(preview.width, preview.height), QSize(width, height)) << where;
            EXPECT_STREQ(cornerName(markedCorner(preview)), cornerName(topLeft)) << where;

            // Half the size as shown.
            imaging::DrawRequest request;
            request.source = source;
            request.width = width / 2;
            request.height = height / 2;
            request.format = c.format;
            request.quality = 90;
            request.orientation = mode;
            request.carryExif = c.carryExif;
            const auto written = drawToFile(request, m_sandbox.filePath(u"out"_s),
                                            QString::fromLatin1(where).replace(u' ', u'-')
                                                + QLatin1StringView(suffixes[int(c.format)]));
            ASSERT_TRUE(written.has_value()) << where << ": " << qPrintable(written.error().detail);
            const QString output = *written;
            const PixelBuffer drawn = decoded(output);
            EXPECT_EQ(QSize(drawn.width, drawn.height), QSize(width / 2, height / 2)) << where;
            EXPECT_STREQ(cornerName(markedCorner(drawn)), cornerName(topLeft)) << where;
            const bool carried = c.carryExif && c.format != Format::Png;
            outputs.append({output, !carried ? 0 : upright ? 1 : c.orientation, width / 2, height / 2});
        }
    }

    // Metadata goes into an output only when asked for, and the carried EXIF
    // data describes the output, so no viewer turns an upright picture again.
    QStringList paths;
    for (const Expected &e : std::as_const(outputs))
        paths.append(e.output);
    const QList<QJsonObject> read = exifOf(paths);
    ASSERT_EQ(read.size(), outputs.size());
    for (qsizetype i = 0; i < outputs.size(); ++i) {
        const Expected &e = outputs.at(i);
        const QJsonObject &exif = read.at(i);
        const std::string where = QFileInfo(e.output).fileName().toStdString();
        if (e.orientation == 0) {
            EXPECT_FALSE(exif.contains(u"IFD0:Make"_s) || exif.contains(u"IFD0:Orientation"_s)
                         || exif.contains(u"XMP-tiff:Orientation"_s))
                << where << QJsonDocument(exif).toJson().toStdString();
            continue;
        }
        EXPECT_EQ(exif.value(u"IFD0:Make"_s).toString(), u"Testkamera"_s) << where;
        EXPECT_EQ(exif.value(u"IFD0:Orientation"_s).toInt(), e.orientation) << where;
        EXPECT_EQ(exif.value(u"ExifIFD:ExifImageWidth"_s).toInt(), e.width) << where;
        EXPECT_EQ(exif.value(u"ExifIFD:ExifImageHeight"_s).toInt(), e.height) << where;
        // Only a JPEG output carries the source's XMP packet along.
        if (e.output.endsWith(u".jpg"_s)) {
            EXPECT_EQ(exif.value(u"XMP-tiff:Orientation"_s).toInt(), e.orientation) << where;
        }
    }
}

} // namespace
