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

TEST(CheckStatus, ReportsTextAndNumberUnlessZeroOrQuiet)
{
    ReportLog log;
    const struct
    {
        int status;
        const char *text;
    } cases[] = {
        {1, "Generic Error. GDI+ Error:1"},
        {13, "Unknown Image Format. GDI+ Error:13"},
        {20, "Property Not Supported. GDI+ Error:20"},
        {21, "Unknown GDI+ Error. GDI+ Error:21"},
        {-4, "Unknown GDI+ Error. GDI+ Error:-4"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(imaging::checkStatus(c.status), c.status);
        ASSERT_FALSE(log.reports().empty());
        EXPECT_EQ(log.reports().back().first, u"GDI Error"_s);
        EXPECT_EQ(log.reports().back().second, QString::fromLatin1(c.text));
    }
    const size_t reported = log.reports().size();
    EXPECT_EQ(imaging::checkStatus(0), 0);
    imaging::setQuiet(true);
    EXPECT_EQ(imaging::checkStatus(13), 13);
    EXPECT_EQ(log.reports().size(), reported);
    EXPECT_EQ(imaging::statusText(0), QString());
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

} // namespace
