#include "imaging/sourcefile_p.h"

#include "core/fileservices.h"
#include "imaging/imaging_p.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace valtrona::imaging::detail {

namespace {

bool procFileSystemPresent()
{
    static const bool present = ::access("/proc/self/fd", F_OK) == 0;
    return present;
}

// True when opening by name is possible for this path: the library reads a
// trailing "[...]" of a file name as load options.
bool nameIsSafeForLibrary(const QByteArray &name)
{
    return !name.endsWith(']');
}

QByteArray nicknameOf(const char *typeName)
{
    const char *nickname = vips_nickname_find(g_type_from_name(typeName));
    return nickname != nullptr ? QByteArray(nickname) : QByteArray(typeName);
}

} // namespace

bool isRequested(const std::atomic_bool *flag)
{
    return flag != nullptr && flag->load(std::memory_order_relaxed);
}

Error cancelledError()
{
    return {ErrorCode::Internal, u"cancelled"_s};
}

QString libraryMessage(const vips::VError &error)
{
    vips_error_clear();
    return QString::fromUtf8(error.what()).trimmed();
}

SourceFile::SourceFile(const std::atomic_bool *cancel) : m_cancel(cancel) {}

SourceFile::~SourceFile()
{
    if (m_fd >= 0)
        ::close(m_fd);
}

Expected<void, Error> SourceFile::open(const QString &path)
{
    m_path = path;
    const QByteArray native = files::nativeFileName(path);
    // Opened without waiting: a pipe at the name must not block.
    do {
        m_fd = ::open(native.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    } while (m_fd < 0 && errno == EINTR);
    if (m_fd < 0)
        return unexpected(sourceError(errno, path));
    struct stat info {};
    if (::fstat(m_fd, &info) != 0)
        return unexpected(sourceError(errno, path));
    if (!S_ISREG(info.st_mode))
        return unexpected(Error {ErrorCode::SourceUnreadable, u"not a regular file: "_s + path});
    ::fcntl(m_fd, F_SETFL, ::fcntl(m_fd, F_GETFL) & ~O_NONBLOCK);
    m_size = qint64(info.st_size);
    return {};
}

int SourceFile::descriptor() const
{
    return m_fd;
}

qint64 SourceFile::size() const
{
    return m_size;
}

bool SourceFile::cancelRequested() const
{
    return isRequested(m_cancel);
}

int SourceFile::readErrno() const
{
    return m_readErrno.load();
}

Error SourceFile::readError() const
{
    return sourceError(readErrno(), m_path);
}

QByteArray SourceFile::libraryName() const
{
    if (procFileSystemPresent())
        return "/proc/self/fd/" + QByteArray::number(m_fd);
    const QByteArray name = files::nativeFileName(m_path);
    return nameIsSafeForLibrary(name) ? name : QByteArray();
}

gint64 SourceFile::read(VipsSourceCustom *, void *buffer, gint64 length, Reader *reader)
{
    SourceFile &file = *reader->file;
    // A stop request ends the decoding at its next read.
    if (file.cancelRequested())
        return -1;
    for (;;) {
        const ssize_t got = ::pread(file.m_fd, buffer, size_t(length), off_t(reader->position));
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            file.m_readErrno.store(errno);
            return -1;
        }
        reader->position += got;
        return got;
    }
}

gint64 SourceFile::seek(VipsSourceCustom *, gint64 offset, int whence, Reader *reader)
{
    qint64 base = 0;
    if (whence == SEEK_CUR) {
        base = reader->position;
    } else if (whence == SEEK_END) {
        struct stat info {};
        if (::fstat(reader->file->m_fd, &info) != 0)
            return -1;
        base = qint64(info.st_size);
    } else if (whence != SEEK_SET) {
        return -1;
    }
    if (base + offset < 0)
        return -1;
    reader->position = base + offset;
    return reader->position;
}

vips::VSource SourceFile::newSource()
{
    VipsSourceCustom *custom = vips_source_custom_new();
    auto *reader = new Reader {this};
    auto freeReader = [](gpointer data, GClosure *) { delete static_cast<Reader *>(data); };
    g_signal_connect_data(custom, "read", G_CALLBACK(&SourceFile::read), reader, freeReader, GConnectFlags(0));
    g_signal_connect(custom, "seek", G_CALLBACK(&SourceFile::seek), reader);
    return vips::VSource(VIPS_SOURCE(custom));
}

bool Loader::isJpeg() const
{
    return name.startsWith("jpegload");
}

bool Loader::isPng() const
{
    return name.startsWith("pngload");
}

Expected<Loader, Error> findLoader(SourceFile &file)
{
    for (;;) {
        const bool allFormats = formatModulesLoaded();
        if (const char *type = vips_foreign_find_load_source(file.newSource().get_source()))
            return Loader {nicknameOf(type), true};
        vips_error_clear();
        if (file.readErrno() != 0)
            return unexpected(file.readError());
        // Some loaders (BMP and other formats behind ImageMagick) only take
        // file names.
        const QByteArray name = file.libraryName();
        if (const char *type = name.isEmpty() ? nullptr : vips_foreign_find_load(name.constData()))
            return Loader {nicknameOf(type), false};
        vips_error_clear();
        // Perhaps one of the modules' formats.
        if (allFormats)
            return unexpected(Error {ErrorCode::UnknownFormat, {}});
        loadFormatModules();
    }
}

Expected<Loader, Error> openSource(SourceFile &file, const QString &path)
{
    if (auto opened = file.open(path); !opened)
        return unexpected(opened.error());
    return findLoader(file);
}

Expected<vips::VImage, Error> openImage(SourceFile &file, const Loader &loader, VipsFailOn failOn, int shrink)
{
    vips::VOption *options = vips::VImage::option()
                                 ->set("access", VIPS_ACCESS_SEQUENTIAL)
                                 ->set("fail_on", int(failOn));
    if (shrink > 1)
        options->set("shrink", shrink);
    try {
        vips::VImage image = loader.fromSource
                                 ? vips::VImage::new_from_source(file.newSource(), "", options)
                                 : vips::VImage::new_from_file(file.libraryName().constData(), options);
        if (image.width() < 1 || image.height() < 1)
            return unexpected(Error {ErrorCode::Damaged, u"image without pixels"_s});
        return image;
    } catch (const vips::VError &error) {
        const QString message = libraryMessage(error);
        if (file.readErrno() != 0)
            return unexpected(file.readError());
        if (file.cancelRequested())
            return unexpected(cancelledError());
        return unexpected(Error {ErrorCode::Damaged, message});
    }
}

} // namespace valtrona::imaging::detail
