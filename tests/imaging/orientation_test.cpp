// Photos whose EXIF data says they are stored turned or mirrored: measured,
// previewed and drawn as they are shown, or as stored when asked; and the
// EXIF data an output carries describes the output.

#include "imaging/conversion.h"
#include "imaging/imaging.h"
#include "imaging/preview.h"
#include "fixtures.h"
#include "support/testsupport.h"

#include <QSize>

#include <string>

#include <gtest/gtest.h>


using namespace Qt::StringLiterals;
using namespace valtrona;
using namespace valtrona::test;
using Format = imaging::OutputFormat;

namespace {

// The corners of a picture, in this order.
constexpr const char *kCorners[] = {"top left", "top right", "bottom left", "bottom right"};
enum Corner { TopLeft, TopRight, BottomLeft, BottomRight };

constexpr int kStoredWidth = 64;
constexpr int kStoredHeight = 40;

// Grey, with a red block in one corner.
PixelBuffer markedImage(Corner corner)
{
    PixelBuffer image = solidImage(kStoredWidth, kStoredHeight, 128, 128, 128);
    const int left = corner % 2 ? kStoredWidth - 24 : 0;
    const int top = corner / 2 ? kStoredHeight - 16 : 0;
    for (int y = top; y < top + 16; ++y) {
        for (int x = left; x < left + 24; ++x)
            image.bytes.replace((qsizetype(y) * kStoredWidth + x) * 3, 3, "\xe6\x14\x14");
    }
    return image;
}

// The names of the corners that are red: exactly one for a good picture.
std::string markedCorners(const PixelBuffer &image)
{
    std::string names;
    for (int corner = 0; corner < 4; ++corner) {
        const int x = corner % 2 ? image.width - 3 : 2;
        const int y = corner / 2 ? image.height - 3 : 2;
        const auto *pixel = reinterpret_cast<const unsigned char *>(image.bytes.constData())
            + (qsizetype(y) * image.width + x) * image.channels;
        if (pixel[0] > 180 && pixel[1] < 90)
            names += (names.empty() ? "" : ", ") + std::string(kCorners[corner]);
    }
    return names;
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
        {1, TopLeft, Format::Jpeg, true, true},      {2, TopRight, Format::WebP, true, false},
        {3, BottomRight, Format::Avif, true, true},  {4, BottomLeft, Format::Png, true, false},
        {5, TopLeft, Format::Jpeg, false, false},    {6, BottomLeft, Format::WebP, false, true},
        {7, BottomRight, Format::Avif, false, false}, {8, TopRight, Format::Jpeg, true, true},
    };
    constexpr const char *suffixes[] = {".jpg", ".png", ".webp", ".avif"};
    // Each output and what exiftool reads from it: name, camera, orientation,
    // pixel dimensions, and the orientation of the XMP packet, which only a
    // JPEG output carries along.
    QStringList outputs;
    QStringList metadata;
    for (const auto &c : cases) {
        const QString source = orientedPhoto(m_sandbox, u"photo%1.jpg"_s.arg(c.orientation), c.orientation, c.stored,
                                             c.littleEndian);
        for (const imaging::Orientation mode : {imaging::Orientation::Upright, imaging::Orientation::Stored}) {
            const bool upright = mode == imaging::Orientation::Upright;
            const bool swapped = upright && c.orientation >= 5;
            const int width = swapped ? kStoredHeight : kStoredWidth;
            const int height = swapped ? kStoredWidth : kStoredHeight;
            const char *topLeft = kCorners[upright ? TopLeft : c.stored];
            const std::string where = std::to_string(c.orientation) + (upright ? " upright" : " stored");
            imaging::setOrientation(mode);

            EXPECT_EQ(imaging::measure(source).value_or({}), QSize(width, height)) << where;
            const auto info = imaging::inspect(source, mode);
            ASSERT_TRUE(info.has_value()) << where;
            EXPECT_EQ(QSize(info->width, info->height), QSize(width, height)) << where;
            EXPECT_EQ(info->orientation, upright ? c.orientation : 1) << where;

            const PixelBuffer preview = pixelsOf(imaging::loadPreview(source, 0, 0).value_or({}));
            EXPECT_EQ(QSize(preview.width, preview.height), QSize(width, height)) << where;
            EXPECT_EQ(markedCorners(preview), topLeft) << where;

            // Half the size as shown.
            imaging::DrawRequest request = drawRequest(source, width / 2, height / 2, c.format);
            request.carryExif = c.carryExif;
            request.orientation = mode;
            const auto written = drawToFile(request, m_sandbox.filePath(u"out"_s),
                                            QString::fromLatin1(where).replace(u' ', u'-')
                                                + QLatin1StringView(suffixes[int(c.format)]));
            ASSERT_TRUE(written.has_value()) << where << ": " << qPrintable(written.error().detail);
            const QString output = *written;
            const PixelBuffer drawn = decoded(output);
            EXPECT_EQ(QSize(drawn.width, drawn.height), QSize(width / 2, height / 2)) << where;
            EXPECT_EQ(markedCorners(drawn), topLeft) << where;
            const QString name = QFileInfo(output).fileName();
            const int recorded = upright ? 1 : c.orientation;
            outputs.append(output);
            metadata.append(!c.carryExif || c.format == Format::Png
                                ? name + u"\t-\t-\t-\t-\t-"_s
                                : u"%1\tTestkamera\t%2\t%3\t%4\t%5"_s.arg(name).arg(recorded).arg(width / 2).arg(height / 2)
                                      .arg(c.format == Format::Jpeg ? QString::number(recorded) : u"-"_s));
        }
    }

    // Metadata goes into an output only when asked for, and the carried EXIF
    // data describes the output, so no viewer turns an upright picture again.
    QByteArray table;
    ASSERT_TRUE(runTool(u"exiftool"_s, QStringList {u"-T"_s, u"-n"_s, u"-FileName"_s, u"-IFD0:Make"_s,
                                                    u"-IFD0:Orientation"_s, u"-ExifIFD:ExifImageWidth"_s,
                                                    u"-ExifIFD:ExifImageHeight"_s, u"-XMP-tiff:Orientation"_s}
                                           + outputs,
                        &table));
    EXPECT_EQ(QString::fromUtf8(table).split(u'\n', Qt::SkipEmptyParts), metadata);
}

} // namespace
