// The conversion run against a stand-in imaging layer: "images" are text
// files ("IMG 320x240"), so the run's order, file handling and safety can be
// checked exactly, with workers finishing in scrambled order.

#include "batch/conversionrun.h"

#include "batch/workerpool.h"
#include "core/targetfolder.h"
#include "support/testsupport.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace valtrona;
using valtrona::test::Sandbox;

namespace {

// Records everything the run tells its host, in order, as short event texts.
class RecordingHost : public ConversionHost
{
public:
    QStringList events;
    QStringList rows;     // "KEY\ttext"
    QStringList failures; // "name: reason"
    FileInputs inputs {u"160"_s, u"120"_s, 0, 0};
    bool deleteSourcesSet = false;
    bool stop = false;
    QString stopAtPicture; // file name whose "PIC" row sets the stop flag
    int ended = 0;

    void clearStatusRows() override { events.append(u"clear"_s); }
    void addStatusRow(const StatusRow &row) override
    {
        rows.append(statusIconKey(row.kind) + u'\t' + row.text);
        events.append(u"row "_s + rows.last());
        if (!stopAtPicture.isEmpty() && row.kind == StatusKind::Picture
            && row.text.endsWith(u" : "_s + stopAtPicture))
            stop = true;
    }
    void setCaptionPercent(int percent) override { events.append(u"caption "_s + QString::number(percent)); }
    void setProgress(int, int, const QString &text) override { events.append(u"progress "_s + text); }
    void showPreview(const QString &path) override { events.append(u"preview "_s + QFileInfo(path).fileName()); }
    void yield() override {}
    bool stopRequested() override { return stop; }
    FileInputs fileInputs() override { return inputs; }
    bool deleteSources() override { return deleteSourcesSet; }
    void fileFailed(const QString &source, const Error &error) override
    {
        failures.append(QFileInfo(source).fileName() + u": "_s + errorText(error.code));
    }
    void runEnded() override { ++ended; }
};

// Images as text: "IMG <width>x<height> [<memory>]"; "BROKEN" anywhere
// makes the drawing fail as damaged data does. Drawings take a few
// milliseconds that differ from file to file, so workers finish out of order.
class FakeImaging : public ConversionImaging
{
public:
    explicit FakeImaging(QStringList *events = nullptr) : m_events(events) {}

    std::atomic<qint64> inUse {0};
    std::atomic<qint64> peak {0};

    bool restart() override
    {
        if (m_events)
            m_events->append(u"restart"_s);
        return true;
    }

    Expected<SourceFacts, Error> inspect(const QString &path, bool) override
    {
        const auto header = read(path);
        if (!header)
            return unexpected(header.error());
        const QStringList fields = QString::fromUtf8(*header).trimmed().split(u' ');
        const QStringList size = fields.value(1).split(u'x');
        if (fields.value(0) != u"IMG"_s || size.size() != 2)
            return unexpected(Error {ErrorCode::UnknownFormat, path});
        SourceFacts facts;
        facts.width = size.at(0).toInt();
        facts.height = size.at(1).toInt();
        facts.decodeBytes = fields.value(2).toLongLong();
        if (fields.value(3) == u"webp"_s)
            facts.writtenAs = ImageFormat::WebP;
        return facts;
    }

    qint64 drawMemory(const SourceFacts &facts, const DrawJob &) override { return facts.decodeBytes; }

    Expected<void, Error> drawInto(const DrawJob &job, files::PendingFile &output) override
    {
        const auto facts = inspect(job.source, job.settings.upright);
        const qint64 memory = facts ? facts->decodeBytes : 0;
        const qint64 now = inUse += memory;
        for (qint64 seen = peak; now > seen && !peak.compare_exchange_weak(seen, now);) {
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(qHash(QFileInfo(job.source).fileName()) % 5));
        inUse -= memory;
        if (read(job.source)->contains("BROKEN"))
            return unexpected(Error {ErrorCode::Damaged, job.source});
        const QString text = u"drawn "_s + QFileInfo(job.source).fileName() + u' ' + QString::number(job.width)
            + u'x' + QString::number(job.height)
            + (job.format == ImageFormat::Png ? u" png"_s : job.format == ImageFormat::WebP ? u" webp"_s : u" jpg"_s)
            + (job.carryExif ? u" exif"_s : QString()) + u'\n';
        return output.write(text.toUtf8());
    }

    Expected<void, Error> copyInto(const QString &source, files::PendingFile &output) override
    {
        const auto bytes = read(source);
        if (!bytes)
            return unexpected(bytes.error());
        return output.write(*bytes);
    }

private:
    static Expected<QByteArray, Error> read(const QString &path)
    {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly))
            return unexpected(Error {file.exists() ? ErrorCode::SourceUnreadable : ErrorCode::SourceMissing, path});
        return file.readAll();
    }

    QStringList *m_events;
};

QString image(int width, int height, qint64 memory = 0)
{
    return u"IMG "_s + QString::number(width) + u'x' + QString::number(height) + u' ' + QString::number(memory);
}

void makeLink(const QString &pointsTo, const QString &at)
{
    ASSERT_EQ(::symlink(QFile::encodeName(pointsTo).constData(), QFile::encodeName(at).constData()), 0);
}

// Everything a run left in a sandbox: every file below it with its bytes,
// trashed files included (their info files, which hold paths and times, by
// name only).
QStringList treeOf(const QString &root)
{
    QStringList tree;
    for (const QString &file : test::filesBelow(root)) {
        tree.append(file.endsWith(u".trashinfo"_s)
                        ? file
                        : file + u" = "_s + QString::fromUtf8(test::readAll(root + u'/' + file)).trimmed());
    }
    return tree;
}

struct Outcome
{
    RunSummary summary;
    QStringList rows;
    QStringList failures;
    QStringList tree;
    QStringList events;
    qint64 peakMemory = 0; ///< of the drawings at once
};

// A scenario writes its files into a fresh sandbox and says how to run.
struct Scenario
{
    const char *name;
    std::function<RunParameters(const Sandbox &box, RecordingHost &host)> setUp;
};

// `look` sees the sandbox as the run left it.
Outcome runScenario(const Scenario &scenario, int jobs, qint64 budget = defaultMemoryBudget,
                    const std::function<void(const Sandbox &)> &look = {})
{
    Sandbox box;
    const test::ScopedEnvironment trash("XDG_DATA_HOME", box.filePath(u"trash"_s));
    RecordingHost host;
    const RunParameters parameters = scenario.setUp(box, host);
    FakeImaging imaging(&host.events);
    WorkerPool pool(jobs);
    ConversionRun run(host, imaging, pool, [] { return DrawingSettings(); });
    run.setMemoryBudget(budget);
    Outcome outcome;
    outcome.summary = run.run(parameters);
    outcome.rows = host.rows;
    outcome.failures = host.failures;
    outcome.tree = treeOf(box.path());
    outcome.events = host.events;
    outcome.peakMemory = imaging.peak;
    if (look)
        look(box);
    EXPECT_EQ(host.ended, 1) << scenario.name;
    return outcome;
}

RunParameters fitInto(const QStringList &sources, const QString &target)
{
    RunParameters p;
    p.sources = sources;
    p.targetDirectory = target;
    p.changeStyle = ChangeStyle::FitRectangle;
    return p;
}

const Scenario scenarios[] = {
    {"every outcome, across two restarts",
     [](const Sandbox &box, RecordingHost &) {
         QStringList sources;
         for (int i = 1; i <= 31; ++i) {
             const QString name = u"src/f"_s + QString::number(i).rightJustified(2, u'0') + u".jpg"_s;
             switch (i % 6) {
             case 0: sources.append(box.writeFile(name, image(640, 480).toUtf8())); break;
             case 1: sources.append(box.writeFile(name, image(160, 120).toUtf8())); break; // right size
             case 2: sources.append(box.filePath(name)); break;                            // missing
             case 3: sources.append(box.writeFile(name, "not an image")); break;
             case 4: sources.append(box.writeFile(name, (image(640, 480) + u" BROKEN"_s).toUtf8())); break;
             default: sources.append(box.writeFile(name, image(800, 100).toUtf8())); break;
             }
         }
         return fitInto(sources, box.filePath(u"out"_s));
     }},
    {"two sources with one target: the later wins",
     [](const Sandbox &box, RecordingHost &) {
         return fitInto({box.writeFile(u"src/x.png"_s, image(640, 480).toUtf8()),
                         box.writeFile(u"src/sub/y.jpg"_s, image(320, 240).toUtf8()),
                         box.writeFile(u"src/x.jpg"_s, image(800, 600).toUtf8())},
                        box.filePath(u"out"_s));
     }},
    {"target folder is the source folder, sources deleted",
     [](const Sandbox &box, RecordingHost &host) {
         host.deleteSourcesSet = true;
         // a.JPG would replace a.jpg before a.jpg had its turn; b.jpg has had
         // its turn when b.png's output replaces it.
         return fitInto({box.writeFile(u"src/a.JPG"_s, image(640, 480).toUtf8()),
                         box.writeFile(u"src/a.jpg"_s, image(320, 240).toUtf8()),
                         box.writeFile(u"src/b.jpg"_s, image(640, 480).toUtf8()),
                         box.writeFile(u"src/b.png"_s, image(800, 600).toUtf8()),
                         box.writeFile(u"src/c.jpg"_s, image(160, 120).toUtf8())},
                        box.filePath(u"src"_s));
     }},
    {"stop during file 5 of 20",
     [](const Sandbox &box, RecordingHost &host) {
         host.stopAtPicture = u"s05.jpg"_s;
         host.deleteSourcesSet = true;
         QStringList sources;
         for (int i = 1; i <= 20; ++i)
             sources.append(box.writeFile(u"src/s"_s + QString::number(i).rightJustified(2, u'0') + u".jpg"_s,
                                          image(640, 480).toUtf8()));
         return fitInto(sources, box.filePath(u"out"_s));
     }},
    {"sources reached through a linked folder, target the real one",
     [](const Sandbox &box, RecordingHost &host) {
         host.deleteSourcesSet = true;
         box.writeFile(u"real/p.jpg"_s, image(640, 480).toUtf8());
         box.writeFile(u"real/q.jpg"_s, image(160, 120).toUtf8());
         makeLink(box.filePath(u"real"_s), box.filePath(u"via"_s));
         return fitInto({box.filePath(u"via/p.jpg"_s), box.filePath(u"via/q.jpg"_s)}, box.filePath(u"real"_s));
     }},
    {"links at a target name and on the way",
     [](const Sandbox &box, RecordingHost &) {
         const QString precious = box.writeFile(u"elsewhere/m.jpg"_s, "precious");
         QDir().mkpath(box.filePath(u"out"_s));
         makeLink(precious, box.filePath(u"out/m.jpg"_s));
         makeLink(box.filePath(u"elsewhere"_s), box.filePath(u"out/sub"_s));
         RunParameters p = fitInto({box.writeFile(u"src/m.jpg"_s, image(640, 480).toUtf8()),
                                    box.writeFile(u"src/sub/n.jpg"_s, image(640, 480).toUtf8())},
                                   box.filePath(u"out"_s));
         return p;
     }},
};

// Whatever the number of workers, a run writes the same rows and leaves the
// same files, stop included.
TEST(ConversionRun, SeveralWorkersDoExactlyWhatOneDoes)
{
    for (const Scenario &scenario : scenarios) {
        const Outcome one = runScenario(scenario, 1);
        for (const int jobs : {3, 8}) {
            const Outcome many = runScenario(scenario, jobs);
            EXPECT_EQ(many.rows, one.rows) << scenario.name << ", " << jobs << " jobs";
            EXPECT_EQ(many.failures, one.failures) << scenario.name;
            EXPECT_EQ(many.tree, one.tree) << scenario.name;
            EXPECT_EQ(many.summary.restarts, one.summary.restarts) << scenario.name;
        }
    }
}

QStringList group(const QString &name, const QStringList &detail)
{
    return QStringList {u"PIC\tBearbeite Bild : "_s + name} + detail;
}

TEST(ConversionRun, OutcomesAndTheirReasons)
{
    const Outcome o = runScenario(scenarios[0], 4);
    QStringList expected {u"INF\tBearbeite 31 Bilder"_s};
    expected += group(u"f01.jpg"_s, {u"INF\tBildgröße : 160x120"_s, u"INF\tDateiname : f01.jpg"_s,
                                     u"INF\tQuelldatei hat bereits korrekte Größe (160x120)"_s,
                                     u"POK\tBild erfolgreich bearbeitet"_s});
    // An unreadable file measures 0 x 0: the fit keeps the width.
    expected += group(u"f02.jpg"_s, {u"INF\tBildgröße : 160x0"_s, u"INF\tDateiname : f02.jpg"_s,
                                     u"ERR\tFehler beim Verarbeiten des Bildes"_s});
    expected += group(u"f03.jpg"_s, {u"INF\tBildgröße : 160x0"_s, u"INF\tDateiname : f03.jpg"_s,
                                     u"ERR\tFehler beim Verarbeiten des Bildes"_s});
    expected += group(u"f04.jpg"_s, {u"INF\tBildgröße : 160x120"_s, u"INF\tDateiname : f04.jpg"_s,
                                     u"ERR\tFehler beim Verarbeiten des Bildes"_s});
    expected += group(u"f05.jpg"_s, {u"INF\tBildgröße : 160x20"_s, u"INF\tDateiname : f05.jpg"_s,
                                     u"POK\tBild erfolgreich bearbeitet"_s});
    EXPECT_EQ(o.rows.mid(0, expected.size()), expected);
    EXPECT_EQ(o.rows.last(), u"INF\tBearbeitung abgeschlossen"_s);
    EXPECT_EQ(o.failures.mid(0, 3), (QStringList {u"f02.jpg: Quelldatei nicht gefunden"_s,
                                                   u"f03.jpg: Kein Bild oder unbekanntes Bildformat"_s,
                                                   u"f04.jpg: Bilddaten beschädigt oder unvollständig"_s}));
    EXPECT_EQ(o.summary.written, 16);
    EXPECT_EQ(o.summary.failed, 15);
    EXPECT_TRUE(o.tree.contains(u"out/f06.jpg = drawn f06.jpg 160x120 jpg"_s));
    EXPECT_TRUE(o.tree.contains(u"out/f01.jpg = IMG 160x120 0"_s)) << "right size: copied byte for byte";
    EXPECT_FALSE(o.tree.contains(u"out/f04.jpg"_s));

    // Restarts at the start, before files 15 and 30, and at the end.
    QList<int> restartsBefore;
    int pictures = 0;
    for (const QString &event : o.events) {
        pictures += event.startsWith(u"row PIC"_s);
        if (event == u"restart"_s)
            restartsBefore.append(pictures + 1);
    }
    EXPECT_EQ(restartsBefore, (QList<int> {1, 15, 30, 32}));
}

TEST(ConversionRun, TargetsNeverTakeWhatIsNotTheirs)
{
    const Outcome collision = runScenario(scenarios[1], 4);
    EXPECT_TRUE(collision.tree.contains(u"out/x.jpg = drawn x.jpg 160x120 jpg"_s)) << "the later source wins";

    const Outcome inPlace = runScenario(scenarios[2], 4);
    EXPECT_EQ(inPlace.failures, QStringList {u"a.JPG: Zieldatei ist eine noch nicht gelesene Quelldatei"_s});
    EXPECT_EQ(inPlace.tree,
              (QStringList {u"src/a.JPG = IMG 640x480 0"_s, u"src/a.jpg = drawn a.jpg 160x120 jpg"_s,
                            u"src/b.jpg = drawn b.png 160x120 jpg"_s, u"src/c.jpg = IMG 160x120 0"_s,
                            u"trash/Trash/files/b.png = IMG 800x600 0"_s, u"trash/Trash/info/b.png.trashinfo"_s}));
    EXPECT_EQ(inPlace.rows.count(u"INF\tQuelldatei ist zugleich die Zieldatei und wird nicht gelöscht"_s), 3);

    const Outcome linked = runScenario(scenarios[4], 4);
    EXPECT_EQ(linked.tree, (QStringList {u"real/p.jpg = drawn p.jpg 160x120 jpg"_s, u"real/q.jpg = IMG 160x120 0"_s}))
        << "a source reached through a link is its own target and stays";

    const Outcome links = runScenario(scenarios[5], 4);
    EXPECT_TRUE(links.tree.contains(u"elsewhere/m.jpg = precious"_s));
    EXPECT_TRUE(links.tree.contains(u"out/m.jpg = drawn m.jpg 160x120 jpg"_s)) << "the link itself is replaced";
    EXPECT_EQ(links.failures,
              QStringList {u"n.jpg: Zielpfad führt über eine Verknüpfung oder aus dem Zielordner hinaus"_s});
}

TEST(ConversionRun, AStopFinishesTheFileInHandAndNothingAfter)
{
    const Outcome o = runScenario(scenarios[3], 8);
    ASSERT_TRUE(o.summary.stopped);
    EXPECT_EQ(o.rows.mid(o.rows.size() - 3),
              (QStringList {u"INF\tQuelldatei wird gelöscht..."_s, u"POK\tBild erfolgreich bearbeitet"_s,
                            u"INF\tBearbeitung abgebrochen"_s}));
    EXPECT_EQ(o.summary.written, 5);
    // Five outputs, five sources in the trash, the rest untouched, and no
    // temporary file of the work done ahead.
    EXPECT_EQ(o.tree.filter(u"out/"_s).size(), 5);
    EXPECT_EQ(o.tree.filter(u"trash/Trash/files/"_s).size(), 5);
    EXPECT_EQ(o.tree.filter(u"src/"_s).size(), 15);
    EXPECT_TRUE(o.tree.contains(u"out/s05.jpg = drawn s05.jpg 160x120 jpg"_s));
}

TEST(ConversionRun, DrawingsWaitForMemoryAndTheTooLargeFail)
{
    const Scenario heavy {"heavy", [](const Sandbox &box, RecordingHost &) {
                              QStringList sources;
                              for (int i = 1; i <= 12; ++i)
                                  sources.append(box.writeFile(u"h%1.jpg"_s.arg(i), image(640, 480, 60).toUtf8()));
                              sources.append(box.writeFile(u"giant.jpg"_s, image(640, 480, 101).toUtf8()));
                              return fitInto(sources, box.filePath(u"out"_s));
                          }};
    const Outcome o = runScenario(heavy, 6, 100);
    EXPECT_EQ(o.summary.written, 12);
    EXPECT_LE(o.peakMemory, 100) << "two drawings of 60 never run at once";
    EXPECT_EQ(o.failures, QStringList {u"giant.jpg: Bild zu groß für den verfügbaren Arbeitsspeicher"_s});
}

// The host hears each step of a file in the order a person sees them (the
// caption's percent rounded half to even), and each file is drawn with the
// details the run was given.
TEST(ConversionRun, HostSeesEachStepInOrderAndTheDetailsItAsked)
{
    const QDateTime stamp(QDate(2003, 4, 5), QTime(6, 7, 8), Qt::UTC);
    const Scenario details {"details", [&stamp](const Sandbox &box, RecordingHost &) {
                                QStringList sources;
                                for (char name = 'a'; name <= 'h'; ++name)
                                    sources.append(box.writeFile(u"src/%1.jpg"_s.arg(QLatin1Char(name)), image(640, 480).toUtf8()));
                                QFile first(sources.first());
                                EXPECT_TRUE(first.open(QIODevice::ReadWrite)
                                            && first.setFileTime(stamp, QFileDevice::FileModificationTime));
                                RunParameters p = fitInto(sources, box.filePath(u"out"_s));
                                p.keepDate = true;
                                p.copyExif = true;
                                p.format = ImageFormat::Png;
                                return p;
                            }};
    const Outcome o = runScenario(details, 2, defaultMemoryBudget, [&stamp](const Sandbox &box) {
        EXPECT_EQ(QFileInfo(box.filePath(u"out/a.png"_s)).lastModified().toUTC(), stamp);
    });
    QStringList flow;
    for (const QString &event : o.events) {
        if (!event.startsWith(u"row INF\tBild"_s) && !event.startsWith(u"row INF\tDatei"_s))
            flow.append(event);
    }
    QStringList expected {u"restart"_s, u"clear"_s, u"row INF\tBearbeite 8 Bilder"_s};
    const QStringList percent {u"12"_s, u"25"_s, u"38"_s, u"50"_s, u"62"_s, u"75"_s, u"88"_s, u"100"_s};
    for (int i = 0; i < 8; ++i) {
        const QString name = QString(QChar(u'a' + i)) + u".jpg"_s;
        expected += {u"caption "_s + percent[i], u"preview "_s + name, u"row PIC\tBearbeite Bild : "_s + name,
                     u"progress "_s + QString::number(i + 1) + u" von 8..."_s,
                     u"row POK\tBild erfolgreich bearbeitet"_s};
    }
    expected += {u"row INF\tBearbeitung abgeschlossen"_s, u"restart"_s, u"preview "_s};
    EXPECT_EQ(flow, expected);
    EXPECT_TRUE(o.tree.contains(u"out/a.png = drawn a.jpg 160x120 png exif"_s));
    EXPECT_EQ(o.summary.written, 8);
}

// A right-size JPEG or PNG target takes the source's bytes whatever they
// are; a WebP target is always WebP.
TEST(ConversionRun, RightSizeSourcesAreCopiedUnlessTheTargetIsAnotherNewFormat)
{
    const Scenario rightSize {"right size", [](const Sandbox &box, RecordingHost &) {
                                  RunParameters p = fitInto({box.writeFile(u"src/a.jpg"_s, "IMG 160x120 0"),
                                                             box.writeFile(u"src/b.webp"_s, "IMG 160x120 0 webp")},
                                                            box.filePath(u"out"_s));
                                  p.format = ImageFormat::WebP;
                                  return p;
                              }};
    const Outcome o = runScenario(rightSize, 2);
    EXPECT_EQ(o.tree.filter(u"out/"_s),
              (QStringList {u"out/a.webp = drawn a.jpg 160x120 webp"_s, u"out/b.webp = IMG 160x120 0 webp"_s}));
}

} // namespace
