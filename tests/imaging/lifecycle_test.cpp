#include "imaging/imaging.h"
#include "imaging/picture.h"
#include "fixtures.h"
#include "support/testsupport.h"

#include <QStringList>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

using namespace Qt::StringLiterals;
using namespace valtrona;
using namespace valtrona::test;

namespace {

// Collects what the layer reports instead of showing it.
class ReportLog
{
public:
    ReportLog()
    {
        imaging::setQuiet(false);
        imaging::setReporter([this](const QString &title, const QString &text) {
            m_reports.push_back({title, text});
        });
    }
    ~ReportLog()
    {
        imaging::setReporter({});
        imaging::setQuiet(false);
    }
    const std::vector<std::pair<QString, QString>> &reports() const { return m_reports; }

private:
    std::vector<std::pair<QString, QString>> m_reports;
};

struct StatusCase
{
    int status;
    const char *text;
};

class StatusTextTest : public ::testing::TestWithParam<StatusCase>
{
};

TEST_P(StatusTextTest, ReportsTextAndNumber)
{
    ReportLog log;
    const StatusCase c = GetParam();
    EXPECT_EQ(imaging::statusText(c.status), QString::fromUtf8(c.text));
    EXPECT_EQ(imaging::checkStatus(c.status), c.status);
    ASSERT_EQ(log.reports().size(), 1u);
    EXPECT_EQ(log.reports()[0].first, u"GDI Error"_s);
    EXPECT_EQ(log.reports()[0].second,
              QString::fromUtf8(c.text) + u" GDI+ Error:"_s + QString::number(c.status));
}

INSTANTIATE_TEST_SUITE_P(
    AllStatuses, StatusTextTest,
    ::testing::Values(StatusCase {1, "Generic Error."}, StatusCase {2, "Invalid Parameter."},
                      StatusCase {3, "Out Of Memory."}, StatusCase {4, "Object Busy."},
                      StatusCase {5, "Insufficient Buffer."}, StatusCase {6, "Not Implemented."},
                      StatusCase {7, "Win32 Error."}, StatusCase {8, "Wrong State."},
                      StatusCase {9, "Aborted."}, StatusCase {10, "File Not Found."},
                      StatusCase {11, "Value Overflow."}, StatusCase {12, "Access Denied."},
                      StatusCase {13, "Unknown Image Format."}, StatusCase {14, "FontFamily Not Found."},
                      StatusCase {15, "FontStyle Not Found."}, StatusCase {16, "Not TrueType Font."},
                      StatusCase {17, "Unsupported Gdiplus Version."},
                      StatusCase {18, "Gdiplus Not Initialized."}, StatusCase {19, "Property Not Found."},
                      StatusCase {20, "Property Not Supported."}, StatusCase {21, "Unknown GDI+ Error."},
                      StatusCase {-1, "Unknown GDI+ Error."}));

TEST(CheckStatus, ZeroAndQuietStaySilent)
{
    ReportLog log;
    EXPECT_EQ(imaging::checkStatus(0), 0);
    imaging::setQuiet(true);
    EXPECT_TRUE(imaging::isQuiet());
    EXPECT_EQ(imaging::checkStatus(13), 13);
    EXPECT_TRUE(log.reports().empty());
    imaging::setQuiet(false);
    imaging::checkStatus(13);
    EXPECT_EQ(log.reports().size(), 1u);
}

TEST(Lifecycle, RestartsManyTimesAndKeepsWorking)
{
    Sandbox sandbox;
    const QString source = writeWithVips(sandbox.filePath(u"a.png"_s), gradientImage(64, 48));
    imaging::setQuiet(true);
    for (int round = 0; round < 60; ++round) {
        ASSERT_TRUE(imaging::restart()) << "round " << round;
        ASSERT_TRUE(imaging::isStarted());
        int width = 0;
        int height = 0;
        ASSERT_TRUE(imaging::measure(source, width, height)) << "round " << round;
        EXPECT_EQ(width, 64);
        if (round % 10 == 0) {
            const imaging::Picture picture = imaging::drawFile(source, 32, 24);
            ASSERT_FALSE(picture.isNull()) << "round " << round;
            EXPECT_TRUE(imaging::saveJpeg(picture, sandbox.filePath(u"out.jpg"_s), 80));
        }
    }
    imaging::stop();
    EXPECT_FALSE(imaging::isStarted());
    imaging::stop(); // stopping twice is harmless
    EXPECT_TRUE(imaging::start());
    EXPECT_TRUE(imaging::start()); // starting twice too
    EXPECT_TRUE(imaging::isStarted());
}

TEST(Lifecycle, OperationsWhileStoppedFailWithNotInitialized)
{
    Sandbox sandbox;
    const QString source = writeWithVips(sandbox.filePath(u"a.png"_s), gradientImage(16, 16));
    ASSERT_TRUE(imaging::start());
    const imaging::Picture picture = imaging::drawFile(source, 8, 8);
    ASSERT_FALSE(picture.isNull());

    imaging::stop();
    ReportLog log;
    int width = -1;
    int height = -1;
    EXPECT_FALSE(imaging::measure(source, width, height));
    EXPECT_EQ(width, 0);
    EXPECT_EQ(height, 0);
    EXPECT_EQ(imaging::lastStatus(), imaging::GdiplusNotInitialized);
    EXPECT_TRUE(imaging::drawFile(source, 8, 8).isNull());
    EXPECT_FALSE(imaging::saveJpeg(picture, sandbox.filePath(u"out.jpg"_s), 80));
    EXPECT_FALSE(QFile::exists(sandbox.filePath(u"out.jpg"_s)));
    EXPECT_EQ(log.reports().size(), 3u);
    ASSERT_TRUE(imaging::start());
    EXPECT_TRUE(imaging::saveJpeg(picture, sandbox.filePath(u"out.jpg"_s), 80));
}

TEST(Encoders, FoundByMimeTypeIgnoringCase)
{
    const struct
    {
        const char *mime;
        const char *suffix;
    } cases[] = {
        {"image/jpeg", ".jpg"}, {"IMAGE/JPEG", ".jpg"}, {"image/png", ".png"}, {"Image/Png", ".png"},
        {"image/x-unknown", ""}, {"", ""},           {"image/jpe", ""},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(imaging::findEncoder(QString::fromLatin1(c.mime)), QString::fromLatin1(c.suffix))
            << c.mime;
    }
}

TEST(Encoders, MissingEncoderIsReportedEvenWhenQuiet)
{
    Sandbox sandbox;
    ASSERT_TRUE(imaging::start());
    const QString source = writeWithVips(sandbox.filePath(u"a.png"_s), gradientImage(16, 16));
    const imaging::Picture picture = imaging::drawFile(source, 8, 8);
    ReportLog log;
    imaging::setQuiet(true);
    EXPECT_FALSE(imaging::saveImage(picture, sandbox.filePath(u"out.xyz"_s), u"image/x-unknown"_s, 80));
    ASSERT_EQ(log.reports().size(), 1u);
    EXPECT_EQ(log.reports()[0].first, u"Encoder Error"_s);
    EXPECT_EQ(log.reports()[0].second, u"Es konnte kein passender Encoder ermittelt werden !"_s);
    EXPECT_FALSE(QFile::exists(sandbox.filePath(u"out.xyz"_s)));
}

TEST(Concurrency, IsConfigurable)
{
    imaging::setConcurrency(1);
    EXPECT_EQ(imaging::concurrency(), 1);
    imaging::setConcurrency(3);
    EXPECT_EQ(imaging::concurrency(), 3);
    imaging::setConcurrency(0);
    EXPECT_GE(imaging::concurrency(), 1);
}

} // namespace
