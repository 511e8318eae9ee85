// valtrona-cli run as a user runs it: a separate process, its output, its
// exit status and the files it leaves.

#include "core/fileservices.h"
#include "imaging/imaging.h"
#include "support/testsupport.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QSize>
#include <QThread>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <optional>

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
        ASSERT_TRUE(imaging::start());
    }

    QString source(const QString &fixture)
    {
        return box.writeFile(u"src/"_s + fixture, test::readAll(test::dataPath(u"run/"_s + fixture)));
    }

    // `shell`: a bash script that runs the program as "$0" "$@".
    void startCli(QProcess &process, const QStringList &arguments, const char *shell = nullptr)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(u"XDG_DATA_HOME"_s, box.filePath(u"data"_s));
        process.setProcessEnvironment(environment);
        process.setWorkingDirectory(box.path());
        const QStringList cli = QStringList {u"--settings"_s, settings} + arguments;
        if (shell)
            process.start(u"bash"_s, QStringList {u"-c"_s, QString::fromUtf8(shell), QStringLiteral(VALTRONA_CLI_PATH)} + cli);
        else
            process.start(QStringLiteral(VALTRONA_CLI_PATH), cli);
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

// Photos whose names are not UTF-8 (an old Latin-1 card) are listed with
// the replacement character, converted, written and trashed under their own
// bytes.
TEST_F(CliRunTest, NamesThatAreNotUtf8AreConvertedUnderTheirOwnBytes)
{
    const QByteArray jpeg = test::readAll(test::dataPath(u"run/photo.jpg"_s));
    const QByteArray sources[] = {box.writeNativeFile("latin/\xe4rger.jpg", jpeg),
                                  box.writeNativeFile("latin/\xf6rger.jpg", jpeg)};
    const CliResult latin = runCli({u"--style"_s, u"4"_s, u"--width"_s, u"160"_s, u"--height"_s, u"120"_s,
                                    u"--out"_s, u"out"_s, u"--delete-sources"_s, u"--dir"_s, u"latin"_s});
    EXPECT_EQ(latin.exitCode, 0) << latin.err.toStdString();
    EXPECT_EQ(latin.out.count(u"PIC\tBearbeite Bild : \uFFFDrger.jpg\n"_s), 2) << latin.out.toStdString();
    EXPECT_EQ(latin.out.count(u"POK\t"_s), 2) << latin.out.toStdString();
    for (const char *name : {"/out/\xe4rger.jpg", "/out/\xf6rger.jpg"}) {
        const QString output = files::fileNameFromNative(QByteArray(QFile::encodeName(box.path()) + name));
        EXPECT_EQ(imaging::measure(output).value_or({}), QSize(160, 120)) << name;
    }
    for (const QByteArray &source : sources) {
        EXPECT_FALSE(files::fileFacts(files::fileNameFromNative(source)).has_value()) << source.toStdString();
        const QByteArray trashed =
            QFile::encodeName(box.path()) + "/data/Trash/files/" + source.mid(source.lastIndexOf('/') + 1);
        EXPECT_EQ(files::fileFacts(files::fileNameFromNative(trashed)).value_or(files::FileFacts {}).size,
                  jpeg.size());
    }
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
                           "\r\nSFOR=photo\r\nREPW=bild\r\n";
    box.writeFile(u"valtrona.ini"_s, ini);
    const CliResult fromFile = runCli({photo});
    EXPECT_EQ(fromFile.exitCode, 0) << fromFile.err.toStdString();
    EXPECT_TRUE(fromFile.out.contains(u"INF\tBildgröße : 200x150\n"_s));
    EXPECT_TRUE(QFileInfo::exists(box.filePath(u"fromini/bild.jpg"_s)));
    EXPECT_EQ(test::readAll(settings), ini);
}

// Any number of workers gives the same rows and the same bytes. The BMP
// files are read by one of the image library's format modules, loaded when
// the first file needs them: with several jobs, two workers ask at once.
TEST_F(CliRunTest, FourJobsGiveTheSameRowsAndFilesAsOne)
{
    const QString bmp = box.filePath(u"photo.bmp"_s);
    ASSERT_TRUE(test::runTool(u"vips"_s, {u"magicksave"_s, test::dataPath(u"run/photo.jpg"_s), bmp}));
    const QStringList kinds {u"photo.jpg"_s, u"small.jpg"_s, u"alpha.png"_s, u"notimage.jpg"_s, u"photo.bmp"_s};
    QStringList sources;
    for (int i = 1; i <= 20; ++i) {
        const QString kind = kinds.at(i % kinds.size());
        const QString from = kind == u"photo.bmp"_s ? bmp : test::dataPath(u"run/"_s + kind);
        sources.append(box.writeFile(u"src/%1_%2"_s.arg(i, 2, 10, QChar(u'0')).arg(kind), test::readAll(from)));
    }
    const QStringList options {u"--style"_s, u"3"_s, u"--width"_s, u"120"_s, u"--exif"_s};

    const CliResult one = runCli(options + QStringList {u"--out"_s, u"one"_s, u"--jobs"_s, u"1"_s} + sources);
    const CliResult four = runCli(options + QStringList {u"--out"_s, u"four"_s, u"--jobs"_s, u"4"_s} + sources);

    EXPECT_EQ(one.exitCode, 1);
    EXPECT_EQ(four.exitCode, 1);
    EXPECT_EQ(four.out, one.out);
    const QStringList written = test::filesBelow(box.filePath(u"one"_s));
    EXPECT_EQ(written.size(), 16);
    EXPECT_EQ(test::filesBelow(box.filePath(u"four"_s)), written);
    for (const QString &name : written)
        EXPECT_EQ(test::readAll(box.filePath(u"four/"_s + name)), test::readAll(box.filePath(u"one/"_s + name)));
    EXPECT_EQ(imaging::measure(box.filePath(u"four/05_photo.jpg"_s)).value_or({}).width(), 120);
}

// A phone photo held upright is stored on its side with EXIF orientation 6:
// the size rules see it as shown, portrait, and so does its output, unless
// the settings say to take photos as stored.
TEST_F(CliRunTest, APhotoStoredOnItsSideIsSizedAndWrittenAsShown)
{
    const QString photo = box.filePath(u"src/phone.jpg"_s);
    QDir().mkpath(box.filePath(u"src"_s));
    ASSERT_TRUE(test::runTool(u"vips"_s, {u"black"_s, photo + u"[strip]"_s, u"40"_s, u"30"_s, u"--bands"_s, u"3"_s}));
    ASSERT_TRUE(test::runTool(u"exiftool"_s, {u"-q"_s, u"-overwrite_original"_s, u"-n"_s, u"-Orientation=6"_s, photo}));
    for (const auto &[ini, size] : {std::pair(QByteArray(), QSize(15, 20)),
                                    std::pair(QByteArray("[JPG]\r\nORI=0\r\n"), QSize(20, 15))}) {
        box.writeFile(u"valtrona.ini"_s, ini);
        const CliResult result = runCli({u"--style"_s, u"3"_s, u"--width"_s, u"20"_s, u"--format"_s, u"webp"_s,
                                         u"--out"_s, u"out"_s, photo});
        EXPECT_EQ(result.exitCode, 0) << result.out.toStdString();
        const QString text = u"INF\tBildgröße : %1x%2\n"_s.arg(size.width()).arg(size.height());
        EXPECT_TRUE(result.out.contains(text)) << result.out.toStdString();
        EXPECT_EQ(imaging::measure(box.filePath(u"out/phone.webp"_s)).value_or({}), size) << ini.constData();
    }
}

// Reads rows until the first "PIC" row, then sends each signal.
void signalAfterFirstPicture(QProcess &process, const QList<int> &signalNumbers)
{
    QElapsedTimer clock;
    clock.start();
    QByteArray seen;
    while (!seen.contains("PIC\t") && clock.elapsed() < 60000) {
        process.waitForReadyRead(1000);
        seen += process.peek(1 << 20);
    }
    ASSERT_TRUE(seen.contains("PIC\t"));
    for (const int signalNumber : signalNumbers) {
        ::kill(pid_t(process.processId()), signalNumber);
        QThread::msleep(30);
    }
}

enum class Written {
    All,    // every source that exists
    None,
    Prefix, // the first k sources, 0 < k < all: the file in hand finished, nothing after it
    Subset, // fewer than all
};

struct EndingCase
{
    const char *name;
    QStringList sources;
    QStringList options;
    const char *shell;           // nullptr: the program is started directly
    QList<int> signalNumbers;    // sent once the first "PIC" row appeared
    int exitCode;
    QString err;                 // standard error, exactly
    std::optional<QString> lastRow; // last row on standard output; "" none at all
    Written written;
};

// How every way a run can end reaches the caller: exit code, standard error
// and what was written.
TEST_F(CliRunTest, EachEndingHasItsExitCode)
{
    const QStringList small {u"--style"_s, u"4"_s, u"--width"_s, u"160"_s, u"--height"_s, u"120"_s,
                             u"--jobs"_s, u"1"_s};
    // About half a second per file.
    const QStringList slow {u"--style"_s, u"0"_s, u"--width"_s, u"3000"_s, u"--height"_s, u"2000"_s,
                            u"--format"_s, u"png"_s, u"--jobs"_s, u"1"_s};
    // One photo named twice is converted once; six large photos take long
    // enough to be interrupted.
    const QStringList photo {source(u"photo.jpg"_s), source(u"photo.jpg"_s)};
    QStringList large {box.filePath(u"src/big1.jpg"_s)};
    EXPECT_TRUE(test::runTool(u"vips"_s, {u"resize"_s, test::dataPath(u"run/photo.jpg"_s), large.first() + u"[Q=90]"_s,
                                          u"12.5"_s}));
    for (int i = 2; i <= 6; ++i)
        large.append(box.writeFile(u"src/big%1.jpg"_s.arg(i), test::readAll(large.first())));
    const QString mostJobs = QString::number(2 * std::max(1, QThread::idealThreadCount()));
    const QString stopped = u"INF\tBearbeitung abgebrochen"_s;
    const QString finished = u"INF\tBearbeitung abgeschlossen"_s;
    const QList<EndingCase> cases {
        {"converted", photo, small, nullptr, {}, 0, {}, finished, Written::All},
        {"file failed", QStringList {u"src/fehlt.jpg"_s} + photo, small, nullptr, {}, 1,
         u"src/fehlt.jpg: Quelldatei nicht gefunden\n"_s, finished, Written::All},
        {"option refused", photo, small + QStringList {u"--width-unit"_s, u"cm"_s}, nullptr, {}, 2,
         u"valtrona-cli: --width-unit: ungültiger Wert „cm“ (erlaubt: px, %)\nHilfe mit: valtrona-cli --help\n"_s,
         u""_s, Written::None},
        {"folder refused", photo, small + QStringList {u"--dir"_s, u"fehlt"_s}, nullptr, {}, 2,
         u"Das Verzeichnis „fehlt“ wurde nicht gefunden !\n"_s, u""_s, Written::None},
        {"check refused", {}, small, nullptr, {}, 2, u"Sie haben keine Quelldateien gewählt !\n"_s, u""_s,
         Written::None},
        {"jobs clamped", photo, small + QStringList {u"--jobs"_s, u"2147483648"_s}, nullptr, {}, 0,
         u"valtrona-cli: --jobs liegt außerhalb von 1 bis "_s + mostJobs + u", verwendet wird "_s + mostJobs + u'\n',
         finished, Written::All},
        {"reader gone", large, slow, R"("$0" "$@" | head -n 1; exit "${PIPESTATUS[0]}")", {}, 3,
         u"valtrona-cli: Standardausgabe geschlossen, Bearbeitung abgebrochen\n"_s, std::nullopt, Written::Prefix},
        {"size limit", large, slow, R"(ulimit -f 100; exec "$0" "$@")", {}, 3,
         u"src/big1.jpg: Dateigrößengrenze erreicht\n"
         u"valtrona-cli: Dateigrößengrenze erreicht (ulimit -f), Bearbeitung abgebrochen\n"_s,
         stopped, Written::None},
        {"output closed", photo, small, R"(exec "$0" "$@" >&-)", {}, 3,
         u"valtrona-cli: Standardausgabe geschlossen\n"_s, std::nullopt, Written::None},
        {"SIGINT", large, slow, nullptr, {SIGINT}, 130, {}, stopped, Written::Prefix},
        {"SIGTERM", large, slow, nullptr, {SIGTERM}, 143, {}, stopped, Written::Prefix},
        // Ends in the middle of a file: no stop row, no partial file.
        {"SIGINT twice", large, slow + QStringList {u"--jobs"_s, u"2"_s}, nullptr, {SIGINT, SIGINT},
         130, {}, std::nullopt, Written::Subset},
    };

    for (const EndingCase &c : cases) {
        SCOPED_TRACE(c.name);
        const QString out = u"out-"_s + QString::fromUtf8(c.name).replace(u' ', u'-');
        const QString suffix = c.options.contains(u"png"_s) ? u".png"_s : u".jpg"_s;
        QStringList targets; // names the sources that exist convert to, in list order
        for (const QString &path : c.sources) {
            const QFileInfo info(box.path(), path);
            if (info.exists() && !targets.contains(info.completeBaseName() + suffix))
                targets.append(info.completeBaseName() + suffix);
        }

        QProcess process;
        startCli(process, c.options + QStringList {u"--out"_s, out} + c.sources, c.shell);
        process.closeWriteChannel();
        if (!c.signalNumbers.isEmpty())
            signalAfterFirstPicture(process, c.signalNumbers);
        ASSERT_TRUE(process.waitForFinished(120000));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), c.exitCode);
        EXPECT_EQ(QString::fromUtf8(process.readAllStandardError()), c.err);
        const QStringList rows = QString::fromUtf8(process.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
        if (c.lastRow) {
            EXPECT_EQ(rows.isEmpty() ? QString() : rows.last(), *c.lastRow);
        }
        if (c.signalNumbers.size() > 1) {
            EXPECT_FALSE(rows.join(u'\n').contains(u"Bearbeitung ab"_s));
        }

        // Whatever is there is a whole image under its own name.
        const QStringList written = test::filesBelow(box.filePath(out));
        for (const QString &name : written) {
            EXPECT_TRUE(targets.contains(name)) << name.toStdString();
            EXPECT_TRUE(imaging::measure(box.filePath(out + u'/' + name)).has_value()) << name.toStdString();
        }
        switch (c.written) {
        case Written::All:
            EXPECT_EQ(written, targets);
            break;
        case Written::None:
            EXPECT_EQ(written, QStringList());
            break;
        case Written::Prefix:
            EXPECT_GE(written.size(), 1);
            EXPECT_EQ(written, targets.mid(0, std::min(written.size(), targets.size() - 1)));
            break;
        case Written::Subset:
            EXPECT_LT(written.size(), targets.size());
            break;
        }
        if (c.written != Written::Subset && !c.shell) {
            EXPECT_EQ(rows.count(u"POK\tBild erfolgreich bearbeitet"_s), written.size());
        }
    }
}

} // namespace
