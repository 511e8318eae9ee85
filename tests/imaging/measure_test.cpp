#include "imaging/imaging.h"
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

    QString jpeg(const QString &name, int width, int height)
    {
        return writeWithVips(m_sandbox.filePath(name), gradientImage(width, height), u"[Q=90]"_s);
    }

    Sandbox m_sandbox;
};

// Every format is measured in the formats test; here the names.
TEST_F(MeasureTest, ReadsSizesBehindOddNames)
{
    const struct
    {
        const char *name;
        int width;
        int height;
    } cases[] = {
        {"tall.png", 7, 301},   {"pixel.png", 1, 1},          {"Bild [1] äöü ß.jpg", 64, 48},
        {"no-suffix", 12, 9},   {"ends in bracket[Q=5]", 20, 10}, {"wrong suffix.png", 50, 40},
    };
    for (const auto &c : cases) {
        const QString name = QString::fromUtf8(c.name);
        QString path = m_sandbox.filePath(name);
        if (name.startsWith(u"wrong"_s)) {
            // JPEG bytes behind a PNG name: the content decides.
            QFile::copy(jpeg(u"content.jpg"_s, c.width, c.height), path);
        } else if (!name.contains(u'.')) {
            QFile::copy(jpeg(u"plain.jpg"_s, c.width, c.height), path);
        } else {
            writeWithVips(path, gradientImage(c.width, c.height));
        }
        const auto size = imaging::measure(path);
        ASSERT_TRUE(size.has_value()) << c.name << ": " << qPrintable(size.error().detail);
        EXPECT_EQ(*size, QSize(c.width, c.height)) << c.name;
    }

    // Only the header is read: a file cut in half still measures.
    const QByteArray whole = readAll(jpeg(u"whole.jpg"_s, 400, 300));
    EXPECT_EQ(imaging::measure(m_sandbox.writeFile(u"half.jpg"_s, whole.left(whole.size() / 2))).value_or({}),
              QSize(400, 300));
}

TEST_F(MeasureTest, RefusesImplausibleSizes)
{
    const QByteArray good = readAll(jpeg(u"good.jpg"_s, 120, 80));
    const struct
    {
        const char *name;
        QString path;
        ErrorCode code;
    } cases[] = {
        {"huge JPEG frame", m_sandbox.writeFile(u"huge.jpg"_s, withFrameSize(good, 60000, 60000)), ErrorCode::TooLarge},
        {"huge PNG claim", m_sandbox.writeFile(u"huge.png"_s, pngClaiming(100000, 100000)), ErrorCode::TooLarge},
        {"zero-size frame", m_sandbox.writeFile(u"zero.jpg"_s, withFrameSize(good, 0, 0)), ErrorCode::Damaged},
    };
    for (const auto &c : cases) {
        const auto size = imaging::measure(c.path);
        ASSERT_FALSE(size.has_value()) << c.name;
        EXPECT_EQ(int(size.error().code), int(c.code)) << c.name << ": " << qPrintable(size.error().detail);
    }
}

// The layer starts again after every stop, any number of times; while it is
// stopped, the calls that need it say so.
TEST_F(MeasureTest, StopAndRestartLeaveTheLayerWorking)
{
    const QString source = writeWithVips(m_sandbox.filePath(u"a.png"_s), gradientImage(64, 48));
    for (int round = 0; round < 20; ++round) {
        imaging::restart();
        ASSERT_TRUE(imaging::isStarted()) << "round " << round;
        ASSERT_EQ(imaging::measure(source).value_or({}), QSize(64, 48)) << "round " << round;
        if (round % 5 == 0) {
            imaging::DrawRequest request;
            request.source = source;
            request.width = 32;
            request.height = 24;
            ASSERT_TRUE(drawToFile(request, m_sandbox.path(), u"out.jpg"_s).has_value()) << "round " << round;
        }
    }

    imaging::stop();
    imaging::stop(); // stopping twice is harmless
    EXPECT_FALSE(imaging::isStarted());
    imaging::DrawRequest request;
    request.source = source;
    request.width = 32;
    request.height = 24;
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
