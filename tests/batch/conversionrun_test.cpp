#include "batch/conversionrun.h"

#include "imaging/imaging.h"
#include "imaging/picture.h"
#include "support/testsupport.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QSize>
#include <QTimeZone>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace valtrona;
using valtrona::test::Sandbox;

namespace {

// Records everything the run tells its host, in order, as short event texts
// ("row INF\tBearbeite 3 Bilder", "restart", "caption 33", ...).
class RecordingHost : public ConversionHost
{
public:
    QStringList events;
    QList<StatusRow> rows;
    FileInputs inputs {u"160"_s, u"120"_s, 0, 0};
    bool deleteSourcesSet = false;
    bool stop = false;
    QString stopAtPicture; // file name whose "PIC" row sets the stop flag
    int ended = 0;

    void clearStatusRows() override { events.append(u"clear"_s); }
    void addStatusRow(const StatusRow &row) override
    {
        rows.append(row);
        events.append(u"row "_s + statusIconKey(row.kind) + u'\t' + row.text);
        if (!stopAtPicture.isEmpty() && row.kind == int(StatusKind::Picture)
            && row.text.endsWith(u" : "_s + stopAtPicture))
            stop = true;
    }
    void setCaptionPercent(int percent) override
    {
        events.append(u"caption "_s + QString::number(percent));
    }
    void setProgress(int, int, const QString &text) override { events.append(u"progress "_s + text); }
    void showPreview(const QString &path) override
    {
        events.append(u"preview "_s + QFileInfo(path).fileName());
    }
    void yield() override {}
    bool stopRequested() override { return stop; }
    FileInputs fileInputs() override { return inputs; }
    bool deleteSources() override { return deleteSourcesSet; }
    void fileFailed(const QString &source, const Error &error) override
    {
        events.append(u"failed "_s + QFileInfo(source).fileName() + u": "_s + errorText(error.code));
    }
    void runEnded() override { ++ended; }

    // The rows as "KEY\ttext", the way the command line prints them.
    QStringList rowLines() const
    {
        QStringList lines;
        for (const StatusRow &row : rows)
            lines.append(statusIconKey(row.kind) + u'\t' + row.text);
        return lines;
    }
};

// The real imaging layer, with its restarts written into the host's events.
class ObservedImaging : public LibraryImaging
{
public:
    explicit ObservedImaging(QStringList &events) : m_events(events) {}
    bool restart() override
    {
        m_events.append(u"restart"_s);
        return LibraryImaging::restart();
    }

private:
    QStringList &m_events;
};

class ConversionRunTest : public ::testing::Test
{
protected:
    static void SetUpTestSuite()
    {
        imaging::setQuiet(true);
        ASSERT_TRUE(imaging::start());
    }

    // Copies a fixture from tests/data/run into the sandbox's source folder.
    QString source(const QString &fixture, const QString &name = QString())
    {
        return box.copyData(u"run/"_s + fixture, u"src/"_s + (name.isEmpty() ? fixture : name));
    }

    RunParameters parameters(const QStringList &sources, const QString &out = u"out"_s) const
    {
        RunParameters p;
        p.sources = sources;
        p.targetDirectory = box.filePath(out);
        p.changeStyle = 4;
        p.formatCode = u"J"_s;
        return p;
    }

    RunSummary run(const RunParameters &p, int jobs = 1, bool background = false)
    {
        ObservedImaging imaging(host.events);
        ConversionRun conversion(host, imaging, [] { return DrawingSettings(); });
        conversion.setJobs(jobs);
        conversion.setConvertInBackground(background);
        return conversion.run(p);
    }

    static QSize sizeOf(const QString &path)
    {
        int width = 0;
        int height = 0;
        imaging::measure(path, width, height);
        return QSize(width, height);
    }

    Sandbox box;
    RecordingHost host;
};

QStringList fileGroup(const QString &name, const QStringList &detail)
{
    return QStringList {u"PIC\tBearbeite Bild : "_s + name} + detail;
}

const QStringList written160 {u"INF\tBildgröße : 160x120"_s};

TEST_F(ConversionRunTest, SmallBatchWritesTheRowsOfEachOutcome)
{
    const QString photo = source(u"photo.jpg"_s);
    const QString small = source(u"small.jpg"_s);
    const QString missing = box.filePath(u"src/missing.jpg"_s);
    const QString text = source(u"notimage.jpg"_s);

    const RunSummary summary = run(parameters({photo, small, missing, text}));

    QStringList expected {u"INF\tBearbeite 4 Bilder"_s};
    expected += fileGroup(u"photo.jpg"_s, {u"INF\tBildgröße : 160x120"_s, u"INF\tDateiname : photo.jpg"_s,
                                           u"POK\tBild erfolgreich bearbeitet"_s});
    expected += fileGroup(u"small.jpg"_s, {u"INF\tBildgröße : 160x120"_s, u"INF\tDateiname : small.jpg"_s,
                                           u"INF\tQuelldatei hat bereits korrekte Größe (160x120)"_s,
                                           u"POK\tBild erfolgreich bearbeitet"_s});
    // An unreadable file measures 0 x 0: the fit keeps the width, the height
    // stays 0, and the draw then fails.
    expected += fileGroup(u"missing.jpg"_s, {u"INF\tBildgröße : 160x0"_s, u"INF\tDateiname : missing.jpg"_s,
                                             u"ERR\tFehler beim Verarbeiten des Bildes"_s});
    expected += fileGroup(u"notimage.jpg"_s, {u"INF\tBildgröße : 160x0"_s, u"INF\tDateiname : notimage.jpg"_s,
                                              u"ERR\tFehler beim Verarbeiten des Bildes"_s});
    expected += u"INF\tBearbeitung abgeschlossen"_s;
    EXPECT_EQ(host.rowLines(), expected);

    EXPECT_EQ(host.rows.at(1).tag, photo);
    EXPECT_EQ(host.rows.at(3).tag, box.filePath(u"out/photo.jpg"_s));
    EXPECT_EQ(summary.written, 2);
    EXPECT_EQ(summary.failed, 2);
    EXPECT_FALSE(summary.stopped);
    EXPECT_EQ(host.ended, 1);

    EXPECT_EQ(sizeOf(box.filePath(u"out/photo.jpg"_s)), QSize(160, 120));
    // The right-sized file is copied byte for byte, not re-encoded.
    EXPECT_EQ(test::readAll(box.filePath(u"out/small.jpg"_s)), test::readAll(small));
    EXPECT_FALSE(QFileInfo::exists(box.filePath(u"out/missing.jpg"_s)));
    EXPECT_FALSE(QFileInfo::exists(box.filePath(u"out/notimage.jpg"_s)));
}

TEST_F(ConversionRunTest, PercentBoxThatNothingFitsFailsWithoutName)
{
    host.inputs = {u"50"_s, u"50"_s, 1, 1};
    run(parameters({source(u"photo.jpg"_s)}));

    EXPECT_EQ(host.rowLines(), (QStringList {u"INF\tBearbeite 1 Bilder"_s,
                                             u"PIC\tBearbeite Bild : photo.jpg"_s,
                                             u"INF\tBildgröße : 0x0"_s,
                                             u"ERR\tFehler beim Verarbeiten des Bildes"_s,
                                             u"INF\tBearbeitung abgeschlossen"_s}));
    EXPECT_FALSE(QFileInfo::exists(box.filePath(u"out"_s + u"/photo.jpg"_s)));
}

TEST_F(ConversionRunTest, HostSeesCaptionProgressAndPreviewInStepOrder)
{
    const QStringList sources {source(u"photo.jpg"_s, u"a.jpg"_s), source(u"photo.jpg"_s, u"b.jpg"_s),
                               source(u"photo.jpg"_s, u"c.jpg"_s)};
    run(parameters(sources));

    QStringList flow;
    for (const QString &event : std::as_const(host.events)) {
        if (!event.startsWith(u"row INF\tBild"_s) && !event.startsWith(u"row INF\tDatei"_s))
            flow.append(event);
    }
    QStringList expected {u"restart"_s, u"clear"_s, u"row INF\tBearbeite 3 Bilder"_s};
    const QStringList percent {u"33"_s, u"67"_s, u"100"_s};
    for (int i = 0; i < 3; ++i) {
        const QString name = QString(QChar(u'a' + i)) + u".jpg"_s;
        expected += {u"caption "_s + percent[i], u"preview "_s + name, u"row PIC\tBearbeite Bild : "_s + name,
                     u"progress "_s + QString::number(i + 1) + u" von 3..."_s,
                     u"row POK\tBild erfolgreich bearbeitet"_s};
    }
    expected += {u"row INF\tBearbeitung abgeschlossen"_s, u"restart"_s, u"preview "_s};
    EXPECT_EQ(flow, expected);
}

TEST_F(ConversionRunTest, StopDuringFileFinishesItAndStopsBeforeTheNext)
{
    QStringList sources;
    for (int i = 1; i <= 4; ++i)
        sources.append(source(u"photo.jpg"_s, u"f"_s + QString::number(i) + u".jpg"_s));
    host.stopAtPicture = u"f2.jpg"_s;

    const RunSummary summary = run(parameters(sources));

    const QStringList lines = host.rowLines();
    ASSERT_GE(lines.size(), 3);
    EXPECT_EQ(lines.mid(lines.size() - 3),
              (QStringList {u"INF\tDateiname : f2.jpg"_s, u"POK\tBild erfolgreich bearbeitet"_s,
                            u"INF\tBearbeitung abgebrochen"_s}));
    EXPECT_EQ(lines.count(u"INF\tBearbeitung abgeschlossen"_s), 0);
    EXPECT_TRUE(summary.stopped);
    EXPECT_EQ(summary.written, 2);
    EXPECT_EQ(summary.restarts, 2);
    EXPECT_TRUE(QFileInfo::exists(box.filePath(u"out/f2.jpg"_s)));
    EXPECT_FALSE(QFileInfo::exists(box.filePath(u"out/f3.jpg"_s)));
    EXPECT_EQ(host.ended, 1);
}

// Where the restarts fall among the "PIC" rows: file numbers before which
// one happened, 0 for before the first row, -1 for after the last.
QList<int> restartPoints(const QStringList &events)
{
    QList<int> points;
    int pictures = 0;
    bool lastRowSeen = false;
    for (const QString &event : events) {
        if (event.startsWith(u"row PIC"_s))
            ++pictures;
        if (event.startsWith(u"row INF\tBearbeitung ab"_s))
            lastRowSeen = true;
        if (event == u"restart"_s)
            points.append(lastRowSeen ? -1 : pictures + 1);
    }
    return points;
}

TEST_F(ConversionRunTest, ParallelRunWritesWhatTheSequentialRunWrites)
{
    // Every outcome, and files enough for restarts before file 15 and 30.
    const QStringList kinds {u"photo.jpg"_s, u"small.jpg"_s, u"notimage.jpg"_s, u"alpha.png"_s, u"missing"_s};
    QStringList sources;
    for (int i = 1; i <= 30; ++i) {
        const QString kind = kinds.at(i % kinds.size());
        const QString name = u"p"_s + QString::number(i).rightJustified(2, u'0') + u'_' + kind;
        sources.append(kind == u"missing"_s ? box.filePath(u"src/"_s + name) : source(kind, name));
    }

    const RunSummary sequential = run(parameters(sources, u"one"_s), 1);
    const QStringList sequentialRows = host.rowLines();
    const QList<int> sequentialRestarts = restartPoints(host.events);
    host = RecordingHost();
    run(parameters(sources, u"background"_s), 1, true);
    EXPECT_EQ(host.rowLines(), sequentialRows) << "one job on a worker thread";
    host = RecordingHost();
    const RunSummary parallel = run(parameters(sources, u"four"_s), 4);

    EXPECT_EQ(host.rowLines(), sequentialRows);
    EXPECT_EQ(restartPoints(host.events), sequentialRestarts);
    EXPECT_EQ(restartPoints(host.events), (QList<int> {1, 15, 30, -1}));
    EXPECT_EQ(sequential.restarts, 4);
    EXPECT_EQ(parallel.written, sequential.written);
    EXPECT_EQ(parallel.failed, sequential.failed);

    const QStringList outputs = QDir(box.filePath(u"one"_s)).entryList(QDir::Files, QDir::Name);
    EXPECT_EQ(outputs.size(), sequential.written);
    EXPECT_EQ(QDir(box.filePath(u"four"_s)).entryList(QDir::Files, QDir::Name), outputs);
    for (const QString &name : outputs) {
        EXPECT_EQ(test::readAll(box.filePath(u"four/"_s + name)), test::readAll(box.filePath(u"one/"_s + name)))
            << name.toStdString();
    }
}

TEST_F(ConversionRunTest, ParallelStopEndsAtAFileBoundaryOfTheSequentialRows)
{
    QStringList sources;
    for (int i = 1; i <= 20; ++i)
        sources.append(source(u"photo.jpg"_s, u"s"_s + QString::number(i).rightJustified(2, u'0') + u".jpg"_s));

    run(parameters(sources, u"one"_s), 1);
    const QStringList full = host.rowLines();
    host = RecordingHost();
    host.stopAtPicture = u"s03.jpg"_s;
    const RunSummary summary = run(parameters(sources, u"three"_s), 3);

    const QStringList lines = host.rowLines();
    ASSERT_TRUE(summary.stopped);
    ASSERT_EQ(lines.last(), u"INF\tBearbeitung abgebrochen"_s);
    const QStringList before = lines.mid(0, lines.size() - 1);
    EXPECT_EQ(before, full.mid(0, before.size()));
    EXPECT_TRUE(full.at(before.size()).startsWith(u"PIC\t"_s)) << "stopped inside a file's rows";
    EXPECT_GE(summary.written, 3);
    EXPECT_LT(summary.written, 20);
    // Files after the stop were never started.
    EXPECT_EQ(QDir(box.filePath(u"three"_s)).entryList(QDir::Files).size(), summary.written);
}

QString exiftoolValue(const QString &path, const QString &tag)
{
    QProcess tool;
    tool.start(u"exiftool"_s, {u"-s3"_s, u"-"_s + tag, path});
    if (!tool.waitForFinished(30000))
        return QString();
    return QString::fromUtf8(tool.readAllStandardOutput()).trimmed();
}

TEST_F(ConversionRunTest, ExifIsCarriedOverAndPixelsStayTheSame)
{
    if (QStandardPaths::findExecutable(u"exiftool"_s).isEmpty())
        GTEST_SKIP() << "exiftool is not installed";
    const QString photo = source(u"photo.jpg"_s);

    run(parameters({photo}, u"plain"_s));
    RunParameters withExif = parameters({photo}, u"exif"_s);
    withExif.copyExif = true;
    run(withExif);

    const QString plain = box.filePath(u"plain/photo.jpg"_s);
    const QString carried = box.filePath(u"exif/photo.jpg"_s);
    EXPECT_EQ(exiftoolValue(carried, u"Make"_s), u"Testkamera"_s);
    EXPECT_EQ(exiftoolValue(carried, u"DateTimeOriginal"_s), u"2021:06:05 14:30:00"_s);
    EXPECT_EQ(exiftoolValue(plain, u"Make"_s), QString());

    const imaging::RgbaImage a = imaging::pictureFromFile(plain).toRgba();
    const imaging::RgbaImage b = imaging::pictureFromFile(carried).toRgba();
    ASSERT_FALSE(a.isNull());
    EXPECT_EQ(b.width, 160);
    EXPECT_EQ(b.height, 120);
    EXPECT_TRUE(a.pixels == b.pixels) << "the EXIF copy changed the decoded pixels";
}

TEST_F(ConversionRunTest, KeepDateGivesTheTargetTheSourceModificationTime)
{
    const QString photo = source(u"photo.jpg"_s);
    const QString small = source(u"small.jpg"_s);
    const QDateTime stamp(QDate(2003, 4, 5), QTime(6, 7, 8), Qt::UTC);
    for (const QString &path : {photo, small}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadWrite));
        ASSERT_TRUE(file.setFileTime(stamp, QFileDevice::FileModificationTime));
    }
    RunParameters p = parameters({photo, small});
    p.keepDate = true;
    run(p);

    // Both the drawn and the copied target.
    EXPECT_EQ(QFileInfo(box.filePath(u"out/photo.jpg"_s)).lastModified().toUTC(), stamp);
    EXPECT_EQ(QFileInfo(box.filePath(u"out/small.jpg"_s)).lastModified().toUTC(), stamp);
}

TEST_F(ConversionRunTest, DeletedSourcesCanBeRestoredFromTheTrash)
{
    const test::ScopedEnvironment trash("XDG_DATA_HOME", box.filePath(u"data"_s));
    const QString photo = source(u"photo.jpg"_s);
    const QString text = source(u"notimage.jpg"_s);
    const QByteArray photoBytes = test::readAll(photo);
    host.deleteSourcesSet = true;

    run(parameters({photo, text}));

    const QStringList lines = host.rowLines();
    const qsizetype deleting = lines.indexOf(u"INF\tQuelldatei wird gelöscht..."_s);
    ASSERT_GE(deleting, 0);
    EXPECT_EQ(lines.at(deleting + 1), u"POK\tBild erfolgreich bearbeitet"_s);
    EXPECT_EQ(lines.count(u"INF\tQuelldatei wird gelöscht..."_s), 1);

    EXPECT_FALSE(QFileInfo::exists(photo));
    EXPECT_EQ(test::readAll(box.filePath(u"data/Trash/files/photo.jpg"_s)), photoBytes);
    const QByteArray info = test::readAll(box.filePath(u"data/Trash/info/photo.jpg.trashinfo"_s));
    EXPECT_TRUE(info.contains(QFile::encodeName(photo))) << info.toStdString();
    // A failed conversion keeps its source.
    EXPECT_TRUE(QFileInfo::exists(text));
}

TEST_F(ConversionRunTest, SourceThatIsItsOwnTargetIsNotDeleted)
{
    const test::ScopedEnvironment trash("XDG_DATA_HOME", box.filePath(u"data"_s));
    const QString photo = source(u"photo.jpg"_s);
    host.deleteSourcesSet = true;

    RunParameters p = parameters({photo}, u"src"_s);
    run(p);

    const QStringList lines = host.rowLines();
    EXPECT_TRUE(lines.contains(u"INF\tQuelldatei ist zugleich die Zieldatei und wird nicht gelöscht"_s));
    EXPECT_FALSE(lines.contains(u"INF\tQuelldatei wird gelöscht..."_s));
    EXPECT_TRUE(lines.contains(u"POK\tBild erfolgreich bearbeitet"_s));
    EXPECT_EQ(sizeOf(photo), QSize(160, 120));
    EXPECT_FALSE(QFileInfo::exists(box.filePath(u"data/Trash/files/photo.jpg"_s)));
}

TEST_F(ConversionRunTest, NothingIsWrittenOutsideTheTargetDirectory)
{
    const QString photo = source(u"photo.jpg"_s);
    const QString nested = source(u"small.jpg"_s, u"deeper/small.jpg"_s);
    const QStringList before = test::filesBelow(box.path());
    RunParameters p = parameters({photo, nested});
    p.searchText = u"o"_s;
    p.replaceText = u"/../../x"_s;
    host.inputs = {u"100"_s, u"100"_s, 0, 0};
    run(p);

    QStringList added = test::filesBelow(box.path());
    for (const QString &old : before)
        added.removeOne(old);
    ASSERT_EQ(added.size(), 2) << added.join(u", "_s).toStdString();
    for (const QString &path : std::as_const(added))
        EXPECT_TRUE(path.startsWith(u"out/"_s)) << path.toStdString();
}

TEST_F(ConversionRunTest, FailedSaveLeavesNoFileBehind)
{
    const QString photo = source(u"photo.jpg"_s);
    const QString small = source(u"small.jpg"_s);
    // Directories where the targets should go: the save (and the copy)
    // cannot put their files into place.
    ASSERT_TRUE(QDir().mkpath(box.filePath(u"out/photo.jpg"_s)));
    ASSERT_TRUE(QDir().mkpath(box.filePath(u"out/small.jpg"_s)));

    const RunSummary summary = run(parameters({photo, small}));

    EXPECT_EQ(summary.failed, 2);
    EXPECT_EQ(host.rowLines().count(u"ERR\tFehler beim Verarbeiten des Bildes"_s), 2);
    EXPECT_EQ(test::filesBelow(box.filePath(u"out"_s)), QStringList());
}

TEST_F(ConversionRunTest, BrokenInputsFailWithoutCrashOrOutput)
{
    const QByteArray photoBytes = test::readAll(valtrona::test::dataPath(u"run/photo.jpg"_s));
    const QStringList sources {
        box.writeFile(u"src/empty.jpg"_s, QByteArray()),
        box.writeFile(u"src/header-only.jpg"_s, photoBytes.left(400)),
        box.writeFile(u"src/truncated.jpg"_s, photoBytes.left(photoBytes.size() * 6 / 10)),
        box.writeFile(u"src/garbage.jpg"_s, QByteArray(5000, '\x5a')),
        source(u"notimage.jpg"_s),
        source(u"huge.png"_s),
        source(u"huge.jpg"_s),
        source(u"photo.jpg"_s, u"fine.jpg"_s),
    };

    const RunSummary summary = run(parameters(sources));

    EXPECT_EQ(summary.failed, 7);
    EXPECT_EQ(summary.written, 1);
    EXPECT_EQ(host.rowLines().last(), u"INF\tBearbeitung abgeschlossen"_s);
    EXPECT_EQ(test::filesBelow(box.filePath(u"out"_s)), QStringList {u"fine.jpg"_s});
}

TEST(RunText, PercentRoundsHalfToEven)
{
    struct Case { int index; int count; int percent; };
    const Case cases[] = {{1, 3, 33}, {2, 3, 67}, {3, 3, 100}, {1, 2, 50}, {1, 8, 12}, {3, 8, 38}, {0, 0, 0}};
    for (const Case &c : cases)
        EXPECT_EQ(runPercent(c.index, c.count), c.percent) << c.index << '/' << c.count;
}

} // namespace
