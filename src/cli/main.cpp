// valtrona-cli: the batch conversion of the window program, driven from the
// command line. Rows on standard output, messages on standard error.

#include "batch/conversionimaging.h"
#include "batch/conversionrun.h"
#include "batch/runsettings.h"
#include "cli/clihost.h"
#include "cli/clijob.h"
#include "cli/clioptions.h"
#include "core/appinfo.h"
#include "core/fileservices.h"
#include "core/settings.h"
#include "imaging/imaging.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QStringBuilder>
#include <QStringEncoder>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <cstdio>

#include <unistd.h>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

using namespace Qt::StringLiterals;
using namespace valtrona;

namespace {

// Exit codes: 0 no "ERR" row, 1 at least one, 2 nothing was converted.
constexpr int exitOk = 0;
constexpr int exitErrorRows = 1;
constexpr int exitUsage = 2;
constexpr int exitInterrupted = 130;

std::atomic_int interrupts {0};

// The first Ctrl-C asks the run to stop after the file at hand; the second
// ends the process at once. Every file is written under a temporary name
// and renamed into place, so nothing half-written stays behind.
void onInterrupt(int)
{
    if (interrupts.fetch_add(1) >= 1)
        _exit(exitInterrupted);
}

void installInterruptHandler()
{
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
}

// A byte of a file name that is not UTF-8 is written as U+FFFD.
void print(std::FILE *stream, const QString &text)
{
    QStringEncoder toUtf8(QStringEncoder::Utf8);
    const QByteArray bytes = toUtf8(text);
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream);
}

void printError(const QString &text)
{
    print(stderr, text + u'\n');
}

void printOut(const QString &text)
{
    print(stdout, text);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"valtrona-cli"_s);
    QCoreApplication::setApplicationVersion(programVersion());

    // From the raw bytes, so that file names which are not UTF-8 stay distinct.
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(files::fileNameFromNative(argv[i]));
    const auto parsed = cli::parseArguments(arguments);
    if (!parsed) {
        printError(u"valtrona-cli: "_s % parsed.error());
        printError(u"Hilfe mit: valtrona-cli --help"_s);
        return exitUsage;
    }
    const cli::CliOptions &options = *parsed;
    if (options.help) {
        printOut(cli::helpText());
        return exitOk;
    }
    if (options.version) {
        printOut(u"valtrona-cli "_s % programVersion() % u'\n');
        return exitOk;
    }

    // The window's settings file, read only: the command line never writes it.
    const QString settingsFile = options.settingsFile
        ? QDir::current().absoluteFilePath(*options.settingsFile)
        : settingsFilePath(u"ini"_s, QString(), u"valtrona"_s);
    setSettingsPath(settingsFile);
    const LastParameters last = readSeededLastParameters(settingsFile);

    QFile standardInput;
    standardInput.open(stdin, QIODevice::ReadOnly);
    const auto sources = cli::collectSources(options.sources, &standardInput);
    if (!sources) {
        printError(sources.error());
        return exitUsage;
    }
    const auto job = cli::resolveJob(options, last, *sources);
    if (!job) {
        printError(job.error());
        return exitUsage;
    }

    const int cores = std::max(1, QThread::idealThreadCount());
    const int jobs = options.jobs.value_or(cores);
    // Several files at once share the cores; one file gets them all.
    imaging::setConcurrency(jobs > 1 ? std::max(1, cores / jobs) : 0);
#if defined(__GLIBC__)
    // Every thread that allocates would get a malloc arena of its own, each
    // keeping freed pixel buffers; a few shared arenas keep the peak down
    // (about a quarter less here) at no measurable cost in speed.
    mallopt(M_ARENA_MAX, std::clamp(jobs, 1, 4));
    // Pixel strips and decoder buffers (tens to hundreds of KiB each) come
    // straight from the system and go back when freed, instead of lingering
    // in the arenas; a fixed threshold also stops malloc from raising it
    // after the first large free. About 2 MiB less at the peak, no
    // measurable cost in speed.
    mallopt(M_MMAP_THRESHOLD, 64 * 1024);
#endif

    cli::Terminal terminal(stdout, stderr, isatty(STDERR_FILENO) == 1, isatty(STDOUT_FILENO) == 1);
    imaging::setReporter([&terminal](const QString &title, const QString &text) {
        terminal.writeMessage(title % u": "_s % text);
    });
    if (!imaging::start()) {
        printError(u"GDI konnte nicht initialisiert werden !"_s);
        return exitUsage;
    }
    installInterruptHandler();

    cli::CliHost host(terminal, job->inputs, job->deleteSources, interrupts);
    LibraryImaging imagingLayer;
    ConversionRun run(host, imagingLayer,
                      [settingsFile] { return readSeededDrawingSettings(settingsFile); });
    run.setJobs(jobs);
    run.run(job->parameters);

    imaging::stop();
    imaging::setReporter({});
    return host.errorWritten() ? exitErrorRows : exitOk;
}
