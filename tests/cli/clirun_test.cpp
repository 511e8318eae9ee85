// valtrona-cli run as a user runs it: a separate process, its output, its
// exit status and the files it leaves.

#include "imaging/imaging.h"
#include "imaging/picture.h"
#include "support/testsupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QThread>

#include <gtest/gtest.h>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace valtrona;
using valtrona::test::Sandbox;

namespace {

struct CliResult
{
    int exitCode = -1;
    QString out;
    QString err;
};

class CliRunTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        imaging::setQuiet(true);
        ASSERT_TRUE(imaging::start());
    }

    QString source(const QString &fixture, const QString &name = QString())
    {
        return box.copyData(u"run/"_s + fixture, u"src/"_s + (name.isEmpty() ? fixture : name));
    }

    void startCli(QProcess &process, const QStringList &arguments)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"XDG_DATA_HOME"_s, box.filePath(u"data"_s));
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(box.path());
        process.start(QStringLiteral(VALTRONA_CLI_PATH),
                      QStringList {u"--settings"_s, settings} + arguments);
        ASSERT_TRUE(process.waitForStarted());
    }

    CliResult runCli(const QStringList &arguments, const QByteArray &input = QByteArray())
    {
        QProcess process;
        startCli(process, arguments);
        process.write(input);
        process.closeWriteChannel();
        EXPECT_TRUE(process.waitForFinished(120000));
        return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
                QString::fromUtf8(process.readAllStandardOutput()),
                QString::fromUtf8(process.readAllStandardError())};
    }

    Sandbox box;
    QString settings = box.filePath(u"valtrona.ini"_s);
};

TEST_F(CliRunTest, HelpIsGermanAndExitsZero)
{
    const CliResult result = runCli({u"--help"_s});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_TRUE(result.out.startsWith(u"Aufruf: valtrona-cli"_s));
    EXPECT_TRUE(result.out.contains(u"Rückgabewert"_s));
}

TEST_F(CliRunTest, FailedChecksPrintTheWindowsMessageAndExitTwo)
{
    const QString photo = source(u"photo.jpg"_s);
    struct Case { QStringList arguments; QString message; };
    // The order of the checks is pinned by the ResolveJob tests; here only
    // how a failed one reaches the user.
    const QList<Case> cases {
        {{u"--out"_s, u"out"_s}, u"Sie haben keine Quelldateien gewählt !"_s},
        {{photo}, u"Sie haben kein Zielverzeichnis gewählt !"_s},
    };
    for (const Case &c : cases) {
        const CliResult result = runCli(c.arguments);
        EXPECT_EQ(result.exitCode, 2) << c.message.toStdString();
        EXPECT_EQ(result.err, c.message + u'\n');
        EXPECT_EQ(result.out, QString());
    }
    const CliResult bad = runCli({u"--width-unit"_s, u"cm"_s, photo});
    EXPECT_EQ(bad.exitCode, 2);
    EXPECT_TRUE(bad.err.contains(u"--width-unit"_s));
    EXPECT_FALSE(QFileInfo::exists(box.filePath(u"out"_s)));
}

TEST_F(CliRunTest, RowsOnStandardOutputAndExitStatusByErrors)
{
    const QString photo = source(u"photo.jpg"_s);
    const QString text = source(u"notimage.jpg"_s);
    const QStringList options {u"--style"_s, u"4"_s, u"--width"_s, u"160"_s, u"--height"_s, u"120"_s,
                               u"--out"_s, u"out"_s, u"--jobs"_s, u"1"_s};

    // A source named twice is converted once.
    const CliResult good = runCli(options + QStringList {photo, photo});
    EXPECT_EQ(good.exitCode, 0);
    EXPECT_EQ(good.err, QString());
    EXPECT_EQ(good.out, u"INF\tBearbeite 1 Bilder\n"
                        u"PIC\tBearbeite Bild : photo.jpg\n"
                        u"INF\tBildgröße : 160x120\n"
                        u"INF\tDateiname : photo.jpg\n"
                        u"POK\tBild erfolgreich bearbeitet\n"
                        u"INF\tBearbeitung abgeschlossen\n"_s);

    const CliResult bad = runCli(options + QStringList {text});
    EXPECT_EQ(bad.exitCode, 1);
    EXPECT_TRUE(bad.out.contains(u"ERR\tFehler beim Verarbeiten des Bildes\n"_s));
    // The imaging layer's report goes to standard error.
    EXPECT_TRUE(bad.err.contains(u"GDI Error"_s)) << bad.err.toStdString();

    // Photos whose names are not UTF-8 (an old Latin-1 card) are not left
    // out: each gets its rows, named with the replacement character, and
    // fails with the normal error row.
    const QByteArray jpeg = test::readAll(photo);
    box.writeNativeFile("latin/\xe4rger.jpg", jpeg);
    box.writeNativeFile("latin/\xf6rger.jpg", jpeg);
    const CliResult latin = runCli(options + QStringList {u"--dir"_s, u"latin"_s});
    EXPECT_EQ(latin.exitCode, 1);
    EXPECT_TRUE(latin.out.startsWith(u"INF\tBearbeite 2 Bilder\n"_s)) << latin.out.toStdString();
    EXPECT_EQ(latin.out.count(u"PIC\tBearbeite Bild : \uFFFDrger.jpg\n"_s), 2) << latin.out.toStdString();
    EXPECT_EQ(latin.out.count(u"ERR\t"_s), 2) << latin.out.toStdString();
}

TEST_F(CliRunTest, DefaultsComeFromTheSettingsFileWhichStaysUntouched)
{
    const QString photo = source(u"photo.jpg"_s);
    // No file at all: the seeded defaults (style 3, long side 1024) apply,
    // and no file is created.
    const CliResult seeded = runCli({u"--out"_s, u"seeded"_s, photo});
    EXPECT_EQ(seeded.exitCode, 0) << seeded.out.toStdString();
    EXPECT_TRUE(seeded.out.contains(u"INF\tBildgröße : 1024x768\n"_s));
    EXPECT_FALSE(QFileInfo::exists(settings));

    const QByteArray ini = "[Last]\r\nStyle=2\r\nWidth=200\r\nHeight=\r\nWU=0\r\nHU=0\r\nPath=" +
                           QFile::encodeName(box.filePath(u"fromini"_s)) +
                           "\r\nSFOR=photo\r\nREPW=bild\r\n\r\n[JPG]\r\nPRZ=40\r\n";
    box.writeFile(u"valtrona.ini"_s, ini);
    const CliResult fromFile = runCli({photo});
    EXPECT_EQ(fromFile.exitCode, 0) << fromFile.err.toStdString();
    EXPECT_TRUE(fromFile.out.contains(u"INF\tBildgröße : 200x150\n"_s));
    EXPECT_TRUE(QFileInfo::exists(box.filePath(u"fromini/bild.jpg"_s)));
    EXPECT_EQ(test::readAll(settings), ini);

    // PRZ=40 is read for the image: a smaller file than quality 85 gives.
    box.writeFile(u"valtrona.ini"_s, QByteArray(ini).replace("PRZ=40", "PRZ=85"));
    runCli({u"--out"_s, u"q85"_s, photo});
    EXPECT_LT(QFileInfo(box.filePath(u"fromini/bild.jpg"_s)).size(),
              QFileInfo(box.filePath(u"q85/bild.jpg"_s)).size());
}

TEST_F(CliRunTest, FourJobsGiveTheSameRowsAndFilesAsOne)
{
    QStringList sources;
    const QStringList kinds {u"photo.jpg"_s, u"small.jpg"_s, u"alpha.png"_s, u"notimage.jpg"_s};
    for (int i = 1; i <= 17; ++i)
        sources.append(source(kinds.at(i % kinds.size()), QString::number(i).rightJustified(2, u'0') + u'_'
                                                              + kinds.at(i % kinds.size())));
    const QStringList options {u"--style"_s, u"3"_s, u"--width"_s, u"120"_s, u"--exif"_s};

    const CliResult one = runCli(options + QStringList {u"--out"_s, u"one"_s, u"--jobs"_s, u"1"_s} + sources);
    const CliResult four = runCli(options + QStringList {u"--out"_s, u"four"_s, u"--jobs"_s, u"4"_s} + sources);

    EXPECT_EQ(one.exitCode, 1);
    EXPECT_EQ(four.exitCode, 1);
    EXPECT_EQ(four.out, one.out);
    const QStringList written = test::filesBelow(box.filePath(u"one"_s));
    EXPECT_EQ(written.size(), 13);
    EXPECT_EQ(test::filesBelow(box.filePath(u"four"_s)), written);
    for (const QString &name : written)
        EXPECT_EQ(test::readAll(box.filePath(u"four/"_s + name)), test::readAll(box.filePath(u"one/"_s + name)));
}

// BMP is read by one of the image library's format modules, which are loaded
// when the first file needs them; with several jobs, two workers ask at once.
TEST_F(CliRunTest, ModuleFormatsConvertAlikeWithOneJobOrFour)
{
    const QString bmp = box.filePath(u"src/picture.bmp"_s);
    QDir().mkpath(box.filePath(u"src"_s));
    ASSERT_EQ(QProcess::execute(u"vips"_s, {u"magicksave"_s, test::dataPath(u"run/photo.jpg"_s), bmp}), 0);
    QStringList sources;
    for (const QString &name : {u"a.bmp"_s, u"b.bmp"_s, u"c.jpg"_s, u"d.bmp"_s, u"e.bmp"_s, u"f.jpg"_s}) {
        const QString path = name.endsWith(u".bmp"_s) ? box.filePath(u"src/"_s + name) : source(u"photo.jpg"_s, name);
        if (name.endsWith(u".bmp"_s)) {
            ASSERT_TRUE(QFile::copy(bmp, path));
        }
        sources.append(path);
    }
    const QStringList options {u"--style"_s, u"3"_s, u"--width"_s, u"120"_s};

    const CliResult one = runCli(options + QStringList {u"--out"_s, u"one"_s, u"--jobs"_s, u"1"_s} + sources);
    const CliResult four = runCli(options + QStringList {u"--out"_s, u"four"_s, u"--jobs"_s, u"4"_s} + sources);
    EXPECT_EQ(one.exitCode, 0) << one.out.toStdString();
    EXPECT_EQ(four.exitCode, 0) << four.out.toStdString();
    EXPECT_EQ(four.out, one.out);
    const QStringList written = test::filesBelow(box.filePath(u"one"_s));
    ASSERT_EQ(written.size(), 6);
    EXPECT_EQ(test::filesBelow(box.filePath(u"four"_s)), written);
    for (const QString &name : written) {
        EXPECT_EQ(test::readAll(box.filePath(u"four/"_s + name)), test::readAll(box.filePath(u"one/"_s + name)));
        int width = 0;
        int height = 0;
        EXPECT_TRUE(imaging::measure(box.filePath(u"four/"_s + name), width, height));
        EXPECT_EQ(width, 120) << name.toStdString();
    }
}

// Large sources, so that a conversion takes long enough to be interrupted.
QStringList largeSources(const Sandbox &box, int count)
{
    const QString first = box.filePath(u"src/big01.jpg"_s);
    QDir().mkpath(box.filePath(u"src"_s));
    const imaging::Picture picture = imaging::drawFile(test::dataPath(u"run/photo.jpg"_s), 4000, 3000);
    EXPECT_TRUE(imaging::saveJpeg(picture, first, 90));
    QStringList sources {first};
    for (int i = 2; i <= count; ++i) {
        const QString name = box.filePath(u"src/big"_s + QString::number(i).rightJustified(2, u'0') + u".jpg"_s);
        QFile::copy(first, name);
        sources.append(name);
    }
    return sources;
}

// Reads rows until the first "PIC" row, then sends SIGINT `times` times.
void interruptAfterFirstPicture(QProcess &process, int times)
{
    QElapsedTimer clock;
    clock.start();
    QByteArray seen;
    while (!seen.contains("PIC\t") && clock.elapsed() < 60000) {
        process.waitForReadyRead(1000);
        seen += process.peek(1 << 20);
    }
    ASSERT_TRUE(seen.contains("PIC\t"));
    for (int i = 0; i < times; ++i) {
        ::kill(pid_t(process.processId()), SIGINT);
        QThread::msleep(30);
    }
}

TEST_F(CliRunTest, CtrlCOnceFinishesTheFileAndStops)
{
    const QStringList sources = largeSources(box, 8);
    QProcess process;
    startCli(process, QStringList {u"--style"_s, u"4"_s, u"--width"_s, u"1024"_s, u"--height"_s, u"768"_s,
                                   u"--out"_s, u"out"_s, u"--jobs"_s, u"1"_s} + sources);
    interruptAfterFirstPicture(process, 1);
    ASSERT_TRUE(process.waitForFinished(60000));

    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
    const QStringList rows = QString::fromUtf8(process.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
    ASSERT_FALSE(rows.isEmpty());
    EXPECT_EQ(rows.last(), u"INF\tBearbeitung abgebrochen"_s);
    const qsizetype written = rows.count(u"POK\tBild erfolgreich bearbeitet"_s);
    EXPECT_GE(written, 1);
    EXPECT_LT(written, 8);
    EXPECT_EQ(test::filesBelow(box.filePath(u"out"_s)).size(), written);
}

TEST_F(CliRunTest, CtrlCTwiceEndsAtOnceWithoutPartialFiles)
{
    const QStringList sources = largeSources(box, 8);
    QProcess process;
    startCli(process, QStringList {u"--style"_s, u"0"_s, u"--width"_s, u"3000"_s, u"--height"_s, u"2000"_s,
                                   u"--format"_s, u"png"_s, u"--out"_s, u"out"_s, u"--jobs"_s, u"2"_s} + sources);
    interruptAfterFirstPicture(process, 2);
    ASSERT_TRUE(process.waitForFinished(10000));

    EXPECT_EQ(process.exitCode(), 130);
    EXPECT_FALSE(QString::fromUtf8(process.readAllStandardOutput()).contains(u"Bearbeitung ab"_s));
    // Whatever is there is a whole image under its own name.
    for (const QString &name : test::filesBelow(box.filePath(u"out"_s))) {
        EXPECT_TRUE(name.startsWith(u"big"_s) && name.endsWith(u".png"_s)) << name.toStdString();
        int width = 0;
        int height = 0;
        EXPECT_TRUE(imaging::measure(box.filePath(u"out/"_s + name), width, height));
        EXPECT_FALSE(imaging::pictureFromFile(box.filePath(u"out/"_s + name)).isNull()) << name.toStdString();
    }
}

} // namespace
