#include "imaging/imaging.h"
#include "imaging/preview.h"
#include "fixtures.h"
#include "support/testsupport.h"

#include <QFile>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace valtrona;
using namespace valtrona::test;

namespace {

class MeasureTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite() { ASSERT_TRUE(imaging::start()); }

    Sandbox m_sandbox;
};

// Every format is measured in the formats test, every failure in the
// conversion test; here the names the image library might misread.
TEST_F(MeasureTest, ReadsSizesBehindOddNames)
{
    const QString jpeg = writeWithVips(m_sandbox.filePath(u"plain.jpg"_s), gradientImage(50, 40), u"[Q=90]"_s);
    const struct
    {
        const char *name;
        int width;
        int height;
    } cases[] = {
        {"pixel.png", 1, 1}, {"Bild [1] äöü ß.jpg", 64, 48}, {"ends in bracket[Q=5]", 50, 40},
        {"no-suffix", 50, 40}, {"wrong suffix.png", 50, 40}, // JPEG bytes: the content decides
    };
    for (const auto &c : cases) {
        const QString path = m_sandbox.filePath(QString::fromUtf8(c.name));
        if (c.width == 50)
            QFile::copy(jpeg, path);
        else
            writeWithVips(path, gradientImage(c.width, c.height));
        const auto size = imaging::measure(path);
        ASSERT_TRUE(size.has_value()) << c.name << ": " << qPrintable(size.error().detail);
        EXPECT_EQ(*size, QSize(c.width, c.height)) << c.name;
    }
}

// A header may claim any size: beyond what the layer accepts it is refused
// before anything is decoded, by measuring and by the previews alike.
TEST_F(MeasureTest, RefusesImplausibleSizes)
{
    const QByteArray good = readAll(writeWithVips(m_sandbox.filePath(u"good.jpg"_s), gradientImage(120, 80)));
    const struct
    {
        const char *name;
        QByteArray bytes;
        ErrorCode code;
    } cases[] = {
        {"huge JPEG frame", withFrameSize(good, 60000, 60000), ErrorCode::TooLarge},
        {"huge PNG claim", pngClaiming(100000, 100000), ErrorCode::TooLarge},
        {"zero-size frame", withFrameSize(good, 0, 0), ErrorCode::Damaged},
    };
    for (const auto &c : cases) {
        const auto size = imaging::measure(m_sandbox.writeFile(u"claim"_s, c.bytes));
        const auto preview = imaging::loadPreview(m_sandbox.filePath(u"claim"_s), 100, 100);
        ASSERT_FALSE(size.has_value() || preview.has_value()) << c.name;
        EXPECT_EQ(int(size.error().code), int(c.code)) << c.name << ": " << qPrintable(size.error().detail);
        EXPECT_EQ(int(preview.error().code), int(c.code)) << c.name;
    }
}

// The layer starts again after every stop, any number of times; while it is
// stopped, the calls that need it say so.
TEST_F(MeasureTest, StopAndRestartLeaveTheLayerWorking)
{
    const QString source = writeWithVips(m_sandbox.filePath(u"a.png"_s), gradientImage(64, 48));
    const imaging::DrawRequest request = drawRequest(source, 32, 24, imaging::OutputFormat::Jpeg);
    for (int round = 0; round < 20; ++round) {
        imaging::restart();
        ASSERT_EQ(imaging::measure(source).value_or({}), QSize(64, 48)) << "round " << round;
        if (round % 5 == 0) {
            ASSERT_TRUE(drawToFile(request, m_sandbox.path(), u"out.jpg"_s).has_value()) << "round " << round;
        }
    }

    imaging::stop();
    imaging::stop(); // stopping twice is harmless
    EXPECT_FALSE(imaging::isStarted());
    const auto measured = imaging::measure(source);
    const auto inspected = imaging::inspect(source);
    const auto drawn = drawToFile(request, m_sandbox.path(), u"stopped.jpg"_s);
    ASSERT_FALSE(measured.has_value() || inspected.has_value() || drawn.has_value());
    for (const Error &error : {measured.error(), inspected.error(), drawn.error()})
        EXPECT_EQ(int(error.code), int(ErrorCode::Internal)) << qPrintable(error.detail);
    EXPECT_FALSE(QFile::exists(m_sandbox.filePath(u"stopped.jpg"_s)));
    // Previews need the library only.
    EXPECT_TRUE(imaging::loadPreview(source, 8, 8).has_value());

    ASSERT_TRUE(imaging::start());
    ASSERT_TRUE(imaging::start()); // starting twice too
    EXPECT_EQ(imaging::measure(source).value_or({}), QSize(64, 48));
}

} // namespace
