// valtrona-cli: the batch conversion of the window program, driven from the
// command line. Rows on standard output, messages on standard error.

#include "batch/conversionrun.h"
#include "batch/libraryimaging.h"
#include "batch/workerpool.h"
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
#include <cerrno>
#include <csignal>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

using namespace Qt::StringLiterals;
using namespace valtrona;

namespace {

using cli::Ending;
namespace exitcode = cli::exitcode;

std::atomic<Ending> ending {Ending::None};

// The first Ctrl-C or SIGTERM asks the run to stop after the file in hand;
// another one while the run is stopping ends the process at once. Every
// file is written under a temporary name and renamed into place, so nothing
// half-written stays behind.
void onStopSignal(int signal)
{
    const bool terminate = signal == SIGTERM;
    if (!cli::requestEnding(ending, terminate ? Ending::Terminated : Ending::Interrupted))
        _exit(terminate ? exitcode::terminated : exitcode::interrupted);
}

void installStopHandlers()
{
    struct sigaction action {};
    action.sa_handler = onStopSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

// A reader that went away (| head) or the file-size limit would otherwise
// kill the process in the middle of a file, without a word. Ignored, the
// write fails with EPIPE or EFBIG and the run says so and stops.
void ignoreWriteSignals()
{
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

// A closed standard stream's number would be handed to the next file
// opened, and rows or messages would land in it (an output image, say).
// Each closed one is taken by /dev/null instead. False when standard output
// was closed.
bool occupyClosedStandardStreams()
{
    bool outputOpen = true;
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) != -1 || errno != EBADF)
            continue;
        if (stream == STDOUT_FILENO)
            outputOpen = false;
        const int opened = open("/dev/null", stream == STDIN_FILENO ? O_RDONLY : O_WRONLY);
        if (opened >= 0 && opened != stream) {
            dup2(opened, stream);
            close(opened);
        }
    }
    return outputOpen;
}

// A byte of a file name that is not UTF-8 is written as U+FFFD. False when
// the text could not be written whole.
bool print(std::FILE *stream, const QString &text)
{
    QStringEncoder toUtf8(QStringEncoder::Utf8);
    const QByteArray bytes = toUtf8(text);
    return std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stream) == size_t(bytes.size())
        && std::fflush(stream) == 0;
}

void printError(const QString &text)
{
    print(stderr, text + u'\n');
}

bool printOut(const QString &text)
{
    return print(stdout, text);
}

const QString outputClosed = u"valtrona-cli: "_s + cli::endingText(Ending::OutputClosed);

} // namespace

int main(int argc, char **argv)
{
    const bool outputOpen = occupyClosedStandardStreams();
    ignoreWriteSignals();
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
        return exitcode::refused;
    }
    const cli::CliOptions &options = *parsed;
    if (options.help || options.version) {
        const QString text = options.help ? cli::helpText() : u"valtrona-cli "_s % programVersion() % u'\n';
        if (outputOpen && printOut(text))
            return exitcode::success;
        printError(outputClosed);
        return exitcode::cannotContinue;
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
        return exitcode::refused;
    }
    const auto job = cli::resolveJob(options, last, *sources);
    if (!job) {
        printError(job.error());
        return exitcode::refused;
    }
    // Rows nobody can read: nothing is converted.
    if (!outputOpen) {
        printError(outputClosed);
        return exitcode::cannotContinue;
    }

    const int cores = std::max(1, QThread::idealThreadCount());
    const cli::JobCount jobCount = cli::jobCount(options.jobs, cores);
    if (!jobCount.notice.isEmpty())
        printError(jobCount.notice);
    const int jobs = jobCount.jobs;
    shareCoresAmong(jobs);
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
    if (!imaging::start()) {
        printError(u"GDI konnte nicht initialisiert werden !"_s);
        return exitcode::cannotContinue;
    }
    installStopHandlers();

    cli::CliHost host(terminal, job->inputs, job->deleteSources, ending, QDir::currentPath());
    LibraryImaging imagingLayer;
    WorkerPool pool(jobs);
    ConversionRun run(host, imagingLayer, pool, [settingsFile] { return readSeededDrawingSettings(settingsFile); });
    const RunSummary summary = run.run(job->parameters);
    imaging::stop();

    const Ending ended = ending.load();
    const QString why = cli::endingText(ended);
    if (!why.isEmpty())
        printError(u"valtrona-cli: "_s % why % (summary.stopped ? u", Bearbeitung abgebrochen"_s : QString()));
    return cli::exitCode(ended, host.errorWritten());
}
