#include "imaging/imaging.h"
#include "imaging/imaging_p.h"

#include "core/fileservices.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <atomic>
#include <cstdio>
#include <mutex>
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
std::atomic<bool> g_quiet {false};
std::atomic<int> g_concurrency {0};
std::atomic<bool> g_modulesLoaded {false};
std::atomic<Orientation> g_orientation {Orientation::Upright};
QByteArray g_moduleDirectory; // written once, before any use of the library

std::mutex g_reporterMutex;
Reporter g_reporter = [](const QString &title, const QString &text) {
    std::fprintf(stderr, "%s: %s\n", qPrintable(title), qPrintable(text));
};

thread_local int t_lastStatus = 0;
thread_local QString t_lastMessage;
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
// be initialised again after vips_shutdown().
bool initialiseLibraryOnce()
{
    static const bool ok = [] {
        // The library loads its format modules (ImageMagick, PDF, HEIF, ...)
        // from the module directory below its prefix at start. They pull in
        // large libraries (7 MiB more at the peak of a run) that a batch of
        // JPEGs never needs, so the library is started with a prefix
        // without modules and openImage() loads them when a file needs them.
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
        if (status != 0)
            return false;
        // Each file is opened once per conversion, so caching operations
        // across files only holds memory.
        vips_cache_set_max(0);
        useShortStrips();
        // The library's warnings (a damaged scan line, a truncated file) end
        // up as our own status; keep them off the terminal, but count them
        // per thread for the conversion's damage check.
        g_log_set_handler("VIPS", G_LOG_LEVEL_WARNING,
                          [](const gchar *, GLogLevelFlags, const gchar *, gpointer) { ++t_libraryWarnings; },
                          nullptr);
        return true;
    }();
    return ok;
}

// Sizes beyond this are refused by measure(): nobody resizes them on a
// desktop, and a forged header must not make us plan for them.
constexpr qint64 kMaxImagePixels = (qint64(1) << 31) - 1;

struct EncoderEntry
{
    const char *mimeType;
    const char *suffix;
};

// MIME types we know the library's savers by. The first match wins.
constexpr EncoderEntry kEncoders[] = {
    {"image/jpeg", ".jpg"},
    {"image/png", ".png"},
    {"image/webp", ".webp"},
    {"image/tiff", ".tif"},
    {"image/gif", ".gif"},
    {"image/avif", ".avif"},
    {"image/heif", ".heic"},
    {"image/jxl", ".jxl"},
};

} // namespace

namespace detail {

bool ensureLibrary()
{
    return initialiseLibraryOnce();
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

void report(const QString &title, const QString &text)
{
    Reporter reporter;
    {
        std::lock_guard<std::mutex> lock(g_reporterMutex);
        reporter = g_reporter;
    }
    if (reporter)
        reporter(title, text);
}

void setLast(int status, const QString &message)
{
    t_lastStatus = status;
    t_lastMessage = message;
}

bool fail(int status, const QString &message)
{
    setLast(status, message);
    checkStatus(status);
    return false;
}

int statusFromVipsMessage(const QString &message)
{
    const QString m = message.toLower();
    if (m.contains(u"does not exist"_s) || m.contains(u"no such file"_s))
        return FileNotFound;
    if (m.contains(u"permission denied"_s) || m.contains(u"access denied"_s))
        return AccessDenied;
    if (m.contains(u"not a known"_s) || m.contains(u"unsupported"_s) || m.contains(u"not a jpeg"_s))
        return UnknownImageFormat;
    if (m.contains(u"maximum supported image dimension"_s) || m.contains(u"image too large"_s)
        || m.contains(u"too many pixels"_s))
        return ValueOverflow;
    if (m.contains(u"out of memory"_s) || m.contains(u"cannot allocate"_s)
        || m.contains(u"memory area too large"_s))
        return OutOfMemory;
    return GenericError;
}

QString takeVipsError()
{
    const QString message = QString::fromUtf8(vips_error_buffer()).trimmed();
    vips_error_clear();
    return message;
}

QByteArray nativePath(const QString &path)
{
    return QFile::encodeName(path);
}

bool nameIsSafeForLibrary(const QByteArray &name)
{
    return !name.endsWith(']');
}

vips::VImage openImage(const QString &path, bool failOnTruncation, int shrink)
{
    // The library takes ownership of the options and frees them, also when
    // the call fails, so every attempt gets its own.
    auto options = [&] {
        vips::VOption *o = vips::VImage::option()->set("access", VIPS_ACCESS_SEQUENTIAL);
        if (failOnTruncation)
            o->set("fail_on", VIPS_FAIL_ON_TRUNCATED);
        if (shrink > 1)
            o->set("shrink", shrink);
        return o;
    };
    const QByteArray name = nativePath(path);
    const bool allFormats = formatModulesLoaded();
    try {
        try {
            // Opening a source never reads options out of the file name, so
            // names with brackets stay names.
            return vips::VImage::new_from_source(vips::VSource::new_from_file(name.constData()), "",
                                                 options());
        } catch (const vips::VError &) {
            // Some loaders (BMP and other formats behind ImageMagick) only
            // take file names.
            if (!nameIsSafeForLibrary(name) || vips_foreign_find_load(name.constData()) == nullptr)
                throw;
            vips_error_clear();
            return vips::VImage::new_from_file(name.constData(), options());
        }
    } catch (const vips::VError &) {
        // A format the built-in loaders do not know may be one of the
        // modules' formats.
        if (allFormats)
            throw;
        vips_error_clear();
        loadFormatModules();
        return openImage(path, failOnTruncation, shrink);
    }
}

int writeFileAtomically(const QString &path, const char *data, qint64 size)
{
    const auto written = files::writeFileAtomically(path, QByteArrayView(data, size));
    if (!written) {
        const ErrorCode code = written.error().code;
        setLast(code == ErrorCode::TargetNotWritable ? AccessDenied : Win32Error, written.error().detail);
        return t_lastStatus;
    }
    setLast(Ok);
    return Ok;
}

quint64 libraryWarningCount()
{
    return t_libraryWarnings;
}

} // namespace detail

bool start()
{
    if (!g_started.load()) {
        const int status = initialiseLibraryOnce() ? Ok : GenericError;
        g_started.store(checkStatus(status) == Ok);
    }
    return g_started.load();
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

bool restart()
{
    stop();
    return start();
}

bool isStarted()
{
    return g_started.load();
}

int checkStatus(int status)
{
    if (status == Ok || g_quiet.load())
        return status;
    detail::report(u"GDI Error"_s, statusText(status) % u" GDI+ Error:"_s % QString::number(status));
    return status;
}

QString statusText(int status)
{
    static const char *const texts[] = {
        "",
        "Generic Error.",
        "Invalid Parameter.",
        "Out Of Memory.",
        "Object Busy.",
        "Insufficient Buffer.",
        "Not Implemented.",
        "Win32 Error.",
        "Wrong State.",
        "Aborted.",
        "File Not Found.",
        "Value Overflow.",
        "Access Denied.",
        "Unknown Image Format.",
        "FontFamily Not Found.",
        "FontStyle Not Found.",
        "Not TrueType Font.",
        "Unsupported Gdiplus Version.",
        "Gdiplus Not Initialized.",
        "Property Not Found.",
        "Property Not Supported.",
    };
    if (status >= 0 && status < int(std::size(texts)))
        return QString::fromLatin1(texts[status]);
    return u"Unknown GDI+ Error."_s;
}

void setQuiet(bool quiet)
{
    g_quiet.store(quiet);
}

bool isQuiet()
{
    return g_quiet.load();
}

void setReporter(Reporter reporter)
{
    std::lock_guard<std::mutex> lock(g_reporterMutex);
    g_reporter = std::move(reporter);
}

int lastStatus()
{
    return t_lastStatus;
}

QString lastErrorMessage()
{
    return t_lastMessage;
}

void setConcurrency(int threads)
{
    if (threads < 0)
        threads = 0;
    g_concurrency.store(threads);
    if (initialiseLibraryOnce())
        vips_concurrency_set(threads);
}

int concurrency()
{
    const int threads = g_concurrency.load();
    if (threads > 0)
        return threads;
    return initialiseLibraryOnce() ? vips_concurrency_get() : int(std::thread::hardware_concurrency());
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

bool measure(const QString &path, int &width, int &height)
{
    width = 0;
    height = 0;
    if (!QFileInfo(path).isFile()) {
        detail::setLast(FileNotFound);
        return false;
    }
    if (!isStarted())
        return detail::fail(GdiplusNotInitialized);
    try {
        // Opening is lazy: only the header is parsed here.
        vips::VImage image = detail::openImage(path, false);
        if (image.width() < 1 || image.height() < 1
            || qint64(image.width()) * image.height() > kMaxImagePixels)
            return detail::fail(ValueOverflow);
        const bool swapped = detail::swapsSides(detail::appliedOrientation(image, orientation()));
        width = swapped ? image.height() : image.width();
        height = swapped ? image.width() : image.height();
        detail::setLast(Ok);
        return true;
    } catch (const vips::VError &) {
        const QString message = detail::takeVipsError();
        return detail::fail(detail::statusFromVipsMessage(message), message);
    }
}

QString findEncoder(const QString &mimeType)
{
    if (!initialiseLibraryOnce())
        return {};
    for (const EncoderEntry &entry : kEncoders) {
        if (mimeType.compare(QLatin1StringView(entry.mimeType), Qt::CaseInsensitive) != 0)
            continue;
        if (vips_foreign_find_save_buffer(entry.suffix) == nullptr) {
            vips_error_clear();
            if (detail::formatModulesLoaded())
                return {};
            detail::loadFormatModules();
            return findEncoder(mimeType);
        }
        return QString::fromLatin1(entry.suffix);
    }
    return {};
}

bool copyFile(const QString &source, const QString &target)
{
    const auto copied = files::copyFileAtomically(source, target);
    if (!copied) {
        const Error &error = copied.error();
        const int status = error.code == ErrorCode::SourceMissing ? FileNotFound
                           : error.code == ErrorCode::TargetNotWritable ? AccessDenied
                                                                        : Win32Error;
        detail::setLast(status, error.detail);
        return false;
    }
    detail::setLast(Ok);
    return true;
}

} // namespace valtrona::imaging
