#include "cli/clijob.h"
#include "cli/clioptions.h"

#include "support/testsupport.h"

#include <QBuffer>
#include <QDir>

#include <gtest/gtest.h>

using namespace Qt::StringLiterals;
using namespace valtrona;
using namespace valtrona::cli;
using Kind = valtrona::cli::SourceArgument::Kind;

namespace {

TEST(ParseArguments, EveryOptionInBothSpellings)
{
    const auto parsed = parseArguments(
        {u"--style"_s, u"2"_s, u"--width=800"_s, u"--height"_s, u"600"_s, u"--width-unit"_s, u"%"_s,
         u"--height-unit=px"_s, u"--format"_s, u"PNG"_s, u"--out"_s, u"o"_s, u"--keep-dirs"_s,
         u"--search"_s, u"IMG"_s, u"--replace="_s, u"--keep-date"_s, u"--exif"_s, u"--delete-sources"_s,
         u"--settings"_s, u"s.ini"_s, u"--jobs"_s, u"3"_s, u"a.jpg"_s, u"-"_s, u"--dir"_s, u"d"_s,
         u"--"_s, u"--odd.jpg"_s, u"-"_s});
    ASSERT_TRUE(parsed.has_value()) << parsed.error().toStdString();
    CliOptions expected;
    expected.style = 2;
    expected.width = u"800"_s;
    expected.height = u"600"_s;
    expected.widthUnit = 1;
    expected.heightUnit = 0;
    expected.format = ImageFormat::Png;
    expected.outDir = u"o"_s;
    expected.search = u"IMG"_s;
    expected.replace = QString(); // given, but empty
    expected.keepDirs = expected.keepDate = expected.exif = expected.deleteSources = true;
    expected.settingsFile = u"s.ini"_s;
    expected.jobs = 3;
    expected.sources = {{Kind::File, u"a.jpg"_s}, {Kind::StandardIn, {}}, {Kind::Directory, u"d"_s},
                        {Kind::File, u"--odd.jpg"_s}, {Kind::File, u"-"_s}};
    EXPECT_TRUE(*parsed == expected);

    const std::pair<const char *, ImageFormat> formats[] = {
        {"jpg", ImageFormat::Jpeg}, {"JPEG", ImageFormat::Jpeg}, {"webp", ImageFormat::WebP}, {" AVIF ", ImageFormat::Avif}};
    for (const auto &[name, format] : formats)
        EXPECT_EQ(parseArguments({u"--format"_s, QString::fromLatin1(name)}).value_or({}).format, format) << name;
}

TEST(ParseArguments, RefusesWhatItCannotUse)
{
    const QList<QStringList> refused {
        {u"--bogus"_s}, {u"-x"_s}, {u"--width"_s}, {u"--width-unit"_s, u"cm"_s}, {u"--height-unit="_s},
        {u"--format"_s, u"gif"_s}, {u"--jobs"_s, u"viele"_s}, {u"--jobs"_s, u"1.5"_s}, {u"--jobs=+"_s},
        {u"--style"_s, u"zwei"_s}, {u"--exif=1"_s},
    };
    for (const QStringList &arguments : refused) {
        const auto parsed = parseArguments(arguments);
        ASSERT_FALSE(parsed.has_value()) << arguments.join(u' ').toStdString();
        EXPECT_FALSE(parsed.error().isEmpty());
    }
}

LastParameters seededLast()
{
    LastParameters last;
    last.style = 3;
    last.width = u"1024"_s;
    last.height = u"768"_s;
    last.path = u"/ziel"_s;
    last.searchFor = u"IMG"_s;
    last.replaceWith = u"Bild"_s;
    return last;
}

CliOptions optionsFrom(const QStringList &arguments)
{
    const auto parsed = parseArguments(arguments);
    EXPECT_TRUE(parsed.has_value());
    return parsed.has_value() ? *parsed : CliOptions();
}

// Any whole number is taken and brought into 1 .. twice the cores, with a
// notice when it had to change; none makes as many threads as asked.
TEST(JobCount, AbsurdValuesAreClamped)
{
    struct Case { const char *given; int cores; int jobs; bool notice; };
    const Case cases[] = {
        {nullptr, 2, 2, false},
        {nullptr, 0, 1, false}, // core count unknown
        {"+4", 2, 4, false},
        {"5", 8, 5, false},
        {"5", 2, 4, true},
        {" -3 ", 2, 1, true},
        {"2147483648", 2, 4, true},
        {"-99999999999999999999999", 2, 1, true},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.given ? c.given : "not given");
        QStringList arguments;
        if (c.given)
            arguments = QStringList {u"--jobs"_s, QString::fromUtf8(c.given)};
        const CliOptions options = optionsFrom(arguments);
        const JobCount count = jobCount(options.jobs, c.cores);
        EXPECT_EQ(count.jobs, c.jobs);
        EXPECT_EQ(!count.notice.isEmpty(), c.notice) << count.notice.toStdString();
    }
}

TEST(ResolveJob, ChecksInTheWindowsOrder)
{
    struct Case {
        QStringList arguments;
        int lastStyle;
        QString lastPath;
        bool withSources;
        QString message; // empty: the job passes
    };
    const QString noSources = u"Sie haben keine Quelldateien gewählt !"_s;
    const QString noStyle = u"Sie haben keinen Änderungsstil gewählt !"_s;
    const QString badFormat = u"Sie haben ungültige Formatparameter gewählt !"_s;
    const QString noTarget = u"Sie haben kein Zielverzeichnis gewählt !"_s;
    const QList<Case> cases {
        {{u"--style"_s, u"9"_s, u"--out="_s}, 3, u"/z"_s, false, noSources},
        {{}, 9, u"/z"_s, true, noStyle},
        {{u"--style"_s, u"-1"_s}, 3, u"/z"_s, true, noStyle},
        {{u"--style"_s, u"5"_s, u"--width="_s}, 3, {}, true, noStyle},
        {{u"--style"_s, u"2"_s, u"--width="_s, u"--out="_s}, 3, {}, true, badFormat},
        {{u"--style"_s, u"0"_s, u"--height="_s}, 3, u"/z"_s, true, badFormat},
        {{u"--style"_s, u"1"_s, u"--width="_s}, 3, u"/z"_s, true, {}},
        {{u"--style"_s, u"4"_s, u"--width"_s, u"0"_s, u"--height"_s, u"abc"_s}, 3, u"/z"_s, true, {}},
        {{}, 3, {}, true, noTarget},
        {{u"--out="_s}, 3, u"/z"_s, true, noTarget},
        {{u"--out"_s, u"/anders"_s}, 3, {}, true, {}},
    };
    for (const Case &c : cases) {
        LastParameters last = seededLast();
        last.style = c.lastStyle;
        last.path = c.lastPath;
        const QStringList sources = c.withSources ? QStringList {u"/a/b.jpg"_s} : QStringList();
        const auto job = resolveJob(optionsFrom(c.arguments), last, sources);
        const QString context = c.arguments.join(u' ');
        if (c.message.isEmpty()) {
            EXPECT_TRUE(job.has_value()) << context.toStdString() << ": " << job.error().toStdString();
        } else {
            ASSERT_FALSE(job.has_value()) << context.toStdString();
            EXPECT_EQ(job.error(), c.message) << context.toStdString();
        }
    }
}

TEST(ResolveJob, OptionsLeftOutTakeTheLastParameters)
{
    LastParameters last = seededLast();
    last.widthUnit = 7; // matches no unit entry: the first ("Pixel") is taken
    last.heightUnit = 1;
    const auto job = resolveJob(optionsFrom({}), last, {u"/a/b.jpg"_s});
    ASSERT_TRUE(job.has_value());
    EXPECT_EQ(job->parameters.changeStyle, ChangeStyle::LongSide);
    EXPECT_EQ(job->inputs, (FileInputs {u"1024"_s, u"768"_s, 0, 1}));
    EXPECT_EQ(job->parameters.targetDirectory, u"/ziel"_s);
    EXPECT_EQ(job->parameters.searchText + u'>' + job->parameters.replaceText, u"IMG>Bild"_s);
    EXPECT_EQ(job->parameters.format, ImageFormat::Jpeg);
    EXPECT_FALSE(job->parameters.keepDate || job->parameters.copyExif || job->deleteSources
                 || job->parameters.keepDirectoryStructure);

    const auto given = resolveJob(optionsFrom({u"--style"_s, u"0"_s, u"--width"_s, u"50"_s, u"--width-unit"_s,
                                               u"%"_s, u"--search"_s, u""_s, u"--format"_s, u"png"_s}),
                                  last, {u"/a/b.jpg"_s});
    ASSERT_TRUE(given.has_value());
    EXPECT_EQ(given->parameters.changeStyle, ChangeStyle::WidthAndHeight);
    EXPECT_EQ(given->inputs, (FileInputs {u"50"_s, u"768"_s, 1, 1}));
    EXPECT_EQ(given->parameters.searchText, QString());
    EXPECT_EQ(given->parameters.format, ImageFormat::Png);
}

TEST(CollectSources, AddsInOrderWithoutDuplicates)
{
    test::Sandbox box;
    box.writeFile(u"tree/a.jpg"_s, "x");
    box.writeFile(u"tree/B.JPG"_s, "x");
    box.writeFile(u"tree/note.txt"_s, "x");
    box.writeFile(u"tree/sub/c.jpg"_s, "x");
    box.writeFile(u"tree/sub/d.png"_s, "x");
    const QString previous = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(box.path()));

    QByteArray input = QFile::encodeName(box.filePath(u"tree/sub/c.jpg"_s)) + "\r\n\nlos.jpg\n";
    QBuffer standardInput(&input);
    standardInput.open(QIODevice::ReadOnly);
    const QList<SourceArgument> arguments {{Kind::File, u"first.jpg"_s},
                                           {Kind::StandardIn, {}},
                                           {Kind::Directory, u"tree"_s},
                                           {Kind::File, u"./first.jpg"_s},
                                           {Kind::File, u"tree/b.jpg"_s}};
    const auto sources = collectSources(arguments, &standardInput);
    QDir::setCurrent(previous);

    ASSERT_TRUE(sources.has_value());
    QStringList expected {box.filePath(u"first.jpg"_s), box.filePath(u"tree/sub/c.jpg"_s),
                          box.filePath(u"los.jpg"_s)};
    // The walk gives a directory's files before its subdirectories.
    expected += {box.filePath(u"tree/a.jpg"_s), box.filePath(u"tree/B.JPG"_s)};
    // Letter case makes a different path.
    expected += box.filePath(u"tree/b.jpg"_s);
    EXPECT_EQ(*sources, expected);
}

} // namespace
