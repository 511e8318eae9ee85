#include "imaging/imaging.h"
#include "imaging/imaging_p.h"
#include "imaging/sourcefile_p.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <atomic>
#include <mutex>
#include <optional>
#include <thread>

#include <dlfcn.h>
#include <gmodule.h>
#include <vips/vips8>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

using namespace Qt::StringLiterals;

namespace valtrona::imaging {

namespace {

std::atomic<bool> g_started {false};
std::atomic<int> g_concurrency {0};
std::atomic<bool> g_modulesLoaded {false};
std::atomic<Orientation> g_orientation {Orientation::Upright};
QByteArray g_moduleDirectory; // written once, before any use of the library

thread_local quint64 t_libraryWarnings = 0;

// The directory the library's format modules are installed in, beside the
// library itself: <libdir>/vips-modules-<major>.<minor>.
QByteArray moduleDirectory()
{
    Dl_info info {};
    if (dladdr(reinterpret_cast<void *>(&vips_init), &info) == 0 || info.dli_fname == nullptr)
        return {};
    const QString library = QFileInfo(QFile::decodeName(info.dli_fname)).canonicalFilePath();
    if (library.isEmpty())
        return {};
    return QFile::encodeName(QFileInfo(library).absolutePath()
                             % u"/vips-modules-%1.%2"_s.arg(VIPS_MAJOR_VERSION).arg(VIPS_MINOR_VERSION));
}

// Lines per strip in which the library's pipelines pass pixels along. Its
// default of 128 makes the JPEG decoder's line cache hold some 600 lines of
// the decoded width (7 MB for a 12-megapixel photo) while a picture streams
// into its encoder; 16 lines cut a conversion's buffers to about a third at
// no measurable cost in speed.
constexpr int kStripHeight = 16;

// The strip height is one of the library's command-line settings; there is
// no call for it, so it is passed through the library's own option parser.
void useShortStrips()
{
    GOptionContext *context = g_option_context_new(nullptr);
    GOptionGroup *group = g_option_group_new("vips", "", "", nullptr, nullptr);
    vips_add_option_entries(group);
    g_option_context_set_main_group(context, group);
    g_option_context_set_ignore_unknown_options(context, TRUE);
    QByteArray program("valtrona");
    QByteArray tileHeight = "--vips-tile-height=" + QByteArray::number(kStripHeight);
    char *arguments[] = {program.data(), tileHeight.data(), nullptr};
    int count = 2;
    char **argv = arguments;
    g_option_context_parse(context, &count, &argv, nullptr);
    g_option_context_free(context);
}

// The library is initialised once per process and never shut down: it cannot
// be initialised again after vips_shutdown(). Gives the library's message
// when it cannot be initialised.
const std::optional<QString> &libraryFailure()
{
    static const std::optional<QString> failure = []() -> std::optional<QString> {
        // The library loads its format modules (ImageMagick, PDF, HEIF, ...)
        // from the module directory below its prefix at start. They pull in
        // large libraries (7 MiB more at the peak of a run) that a batch of
        // JPEGs never needs, so the library is started with a prefix
        // without modules and findLoader() loads them when a file needs them.
        // A prefix the user set is left alone.
        const bool deferModules = qEnvironmentVariableIsEmpty("VIPSHOME");
        if (deferModules)
            qputenv("VIPSHOME", "/nonexistent/valtrona-deferred-modules");
        const int status = VIPS_INIT("valtrona");
        if (deferModules) {
            qunsetenv("VIPSHOME");
            g_moduleDirectory = moduleDirectory();
        } else {
            g_modulesLoaded.store(true);
        }
        if (status != 0) {
            const QString message = QString::fromUtf8(vips_error_buffer()).trimmed();
            vips_error_clear();
            return message;
        }
        // Each file is opened once per conversion, so caching operations
        // across files only holds memory.
        vips_cache_set_max(0);
        useShortStrips();
        // The library's warnings (a damaged scan line, a truncated file) end
        // up in our own errors; keep them off the terminal, but count them
        // per thread for the conversion's damage check.
        g_log_set_handler("VIPS", G_LOG_LEVEL_WARNING,
                          [](const gchar *, GLogLevelFlags, const gchar *, gpointer) { ++t_libraryWarnings; },
                          nullptr);
        return std::nullopt;
    }();
    return failure;
}

// Sizes beyond this are refused by measure(): nobody resizes them on a
// desktop, and a forged header must not make us plan for them.
constexpr qint64 kMaxImagePixels = (qint64(1) << 31) - 1;

} // namespace

namespace detail {

bool ensureLibrary()
{
    return !libraryFailure().has_value();
}

Error notStartedError()
{
    return {ErrorCode::Internal, u"the imaging layer is not started"_s};
}

bool formatModulesLoaded()
{
    return g_modulesLoaded.load();
}

void loadFormatModules()
{
    static std::once_flag once;
    std::call_once(once, [] {
        const QDir dir(QFile::decodeName(g_moduleDirectory));
        const QStringList modules = g_moduleDirectory.isEmpty()
            ? QStringList()
            : dir.entryList({u"*.so"_s}, QDir::Files, QDir::Name);
        for (const QString &module : modules) {
            // Opening runs the module's initialiser, which registers its
            // loaders and savers. A module whose libraries are missing is
            // skipped, as the library itself does.
            GModule *handle = g_module_open(QFile::encodeName(dir.filePath(module)).constData(),
                                            G_MODULE_BIND_LAZY);
            if (handle != nullptr)
                g_module_make_resident(handle);
        }
        g_modulesLoaded.store(true);
    });
}

quint64 libraryWarningCount()
{
    return t_libraryWarnings;
}

} // namespace detail

Expected<void, Error> start()
{
    if (const std::optional<QString> &failure = libraryFailure())
        return unexpected(Error {ErrorCode::Internal, u"the image library cannot start: "_s + *failure});
    g_started.store(true);
    return {};
}

void stop()
{
    if (!g_started.exchange(false))
        return;
    // Setting the limit trims the operation cache down to it. (The library's
    // drop-all call frees the cache table itself and is for its shutdown
    // only; operations after it crash.)
    vips_cache_set_max(0);
    vips_error_clear();
    // Frees the calling thread's buffers; worker threads free theirs when
    // they end.
    vips_thread_shutdown();
#if defined(__GLIBC__)
    // Hand freed pixel memory back to the system between batches.
    malloc_trim(0);
#endif
}

void restart()
{
    stop();
    g_started.store(detail::ensureLibrary());
}

bool isStarted()
{
    return g_started.load();
}

void setConcurrency(int threads)
{
    if (threads < 0)
        threads = 0;
    g_concurrency.store(threads);
    if (detail::ensureLibrary())
        vips_concurrency_set(threads);
}

int concurrency()
{
    const int threads = g_concurrency.load();
    if (threads > 0)
        return threads;
    return detail::ensureLibrary() ? vips_concurrency_get() : int(std::thread::hardware_concurrency());
}

void setOrientation(Orientation orientation)
{
    g_orientation.store(orientation);
}

Orientation orientation()
{
    return g_orientation.load();
}

qint64 maxImagePixels()
{
    return kMaxImagePixels;
}

Expected<QSize, Error> measure(const QString &path)
{
    if (!isStarted())
        return unexpected(detail::notStartedError());
    detail::SourceFile file;
    auto loader = detail::openSource(file, path);
    if (!loader)
        return unexpected(loader.error());
    // Opening is lazy: only the header is parsed here.
    auto image = detail::openImage(file, *loader, VIPS_FAIL_ON_NONE);
    if (!image)
        return unexpected(image.error());
    if (qint64(image->width()) * image->height() > kMaxImagePixels)
        return unexpected(Error {ErrorCode::TooLarge, u"%1 x %2"_s.arg(image->width()).arg(image->height())});
    const bool swapped = detail::swapsSides(detail::appliedOrientation(*image, orientation()));
    return swapped ? QSize(image->height(), image->width()) : QSize(image->width(), image->height());
}

} // namespace valtrona::imaging
