#include "core/targetfolder.h"

#include "core/descriptorio.h"
#include "core/fileservices.h"

#include <QDir>
#include <QFileInfo>
#include <QFile>
#include <QRandomGenerator>
#include <QStringList>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace valtrona::files {

namespace {

std::optional<FileIdentity> identityOf(const struct stat &info)
{
    return FileIdentity {quint64(info.st_dev), quint64(info.st_ino)};
}

int retryOnInterrupt(auto call)
{
    int result = 0;
    do {
        result = call();
    } while (result < 0 && errno == EINTR);
    return result;
}

void closeQuietly(int &fd)
{
    if (fd >= 0)
        ::close(fd);
    fd = -1;
}

// Names a pending file gets while it is linked in beside its target; hidden,
// so a listing taken at that moment does not show it as an image.
QByteArray temporaryName()
{
    return ".valtrona-" + QByteArray::number(QRandomGenerator::global()->generate64(), 16) + ".tmp";
}

// The segments of a relative path, "" and "." dropped; nothing when a ".."
// would climb out.
std::optional<QStringList> segmentsOf(const QString &relative)
{
    QStringList segments;
    for (const QString &segment : relative.split(u'/')) {
        if (segment.isEmpty() || segment == u"."_s)
            continue;
        if (segment == u".."_s)
            return std::nullopt;
        segments.append(segment);
    }
    return segments;
}

} // namespace

std::optional<FileIdentity> fileIdentity(const QString &path)
{
    struct stat info {};
    if (path.isEmpty() || ::stat(nativeFileName(path).constData(), &info) != 0)
        return std::nullopt;
    return identityOf(info);
}

std::optional<FileIdentity> entryIdentity(const QString &path)
{
    struct stat info {};
    if (path.isEmpty() || ::lstat(nativeFileName(path).constData(), &info) != 0)
        return std::nullopt;
    return identityOf(info);
}

// ---- PendingFile -----------------------------------------------------------

PendingFile::~PendingFile()
{
    discard();
}

PendingFile::PendingFile(PendingFile &&other) noexcept
    : m_fd(std::exchange(other.m_fd, -1))
    , m_folderFd(std::exchange(other.m_folderFd, -1))
    , m_tempName(std::move(other.m_tempName))
    , m_folderPath(std::move(other.m_folderPath))
{
    other.m_tempName.clear();
}

PendingFile &PendingFile::operator=(PendingFile &&other) noexcept
{
    if (this != &other) {
        discard();
        m_fd = std::exchange(other.m_fd, -1);
        m_folderFd = std::exchange(other.m_folderFd, -1);
        m_tempName = std::move(other.m_tempName);
        other.m_tempName.clear();
        m_folderPath = std::move(other.m_folderPath);
    }
    return *this;
}

bool PendingFile::isOpen() const
{
    return m_fd >= 0;
}

int PendingFile::descriptor() const
{
    return m_fd;
}

Expected<void, Error> PendingFile::write(QByteArrayView bytes)
{
    if (m_fd < 0)
        return unexpected(Error {ErrorCode::Internal, u"pending file is closed"_s});
    if (!detail::writeAll(m_fd, bytes))
        return unexpected(targetError(errno, m_folderPath));
    return {};
}

Expected<void, Error> PendingFile::replaceContent(QByteArrayView bytes)
{
    if (m_fd < 0)
        return unexpected(Error {ErrorCode::Internal, u"pending file is closed"_s});
    if (retryOnInterrupt([&] { return ::ftruncate(m_fd, 0); }) != 0 || ::lseek(m_fd, 0, SEEK_SET) != 0)
        return unexpected(targetError(errno, m_folderPath));
    return write(bytes);
}

Expected<QByteArray, Error> PendingFile::readAll() const
{
    if (m_fd < 0)
        return unexpected(Error {ErrorCode::Internal, u"pending file is closed"_s});
    QByteArray bytes(size(), Qt::Uninitialized);
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t got = ::pread(m_fd, bytes.data() + done, size_t(bytes.size() - done), done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0)
            return unexpected(targetError(errno, m_folderPath));
        if (got == 0)
            break;
        done += got;
    }
    bytes.truncate(done);
    return bytes;
}

qint64 PendingFile::size() const
{
    struct stat info {};
    if (m_fd < 0 || ::fstat(m_fd, &info) != 0)
        return 0;
    return qint64(info.st_size);
}

void PendingFile::discard()
{
    closeQuietly(m_fd);
    if (m_folderFd >= 0 && !m_tempName.isEmpty())
        ::unlinkat(m_folderFd, m_tempName.constData(), 0);
    m_tempName.clear();
    closeQuietly(m_folderFd);
}

// ---- TargetFolder ----------------------------------------------------------

Expected<TargetFolder, Error> TargetFolder::open(const QString &path, Creation creation)
{
    const QString absolute = QDir::cleanPath(QDir::current().absoluteFilePath(path));
    const QByteArray native = nativeFileName(absolute);

    // Every missing level, as the user would create it; the first refusal
    // on the way is what the user needs to hear about.
    int refusal = 0;
    for (qsizetype i = 1; creation == Creation::CreateMissing && i <= native.size(); ++i) {
        if (i < native.size() && native.at(i) != '/')
            continue;
        if (::mkdir(native.left(i).constData(), 0777) != 0 && errno != EEXIST && refusal == 0)
            refusal = errno;
    }
    const int fd = ::open(native.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return unexpected(targetError(refusal != 0 && errno == ENOENT ? refusal : errno, absolute));

    TargetFolder folder;
    folder.m_fd = fd;
    folder.m_path = absolute;
    folder.m_given = path.endsWith(u'/') ? path : path + u'/';
    return folder;
}

TargetFolder::~TargetFolder()
{
    closeQuietly(m_fd);
}

TargetFolder::TargetFolder(TargetFolder &&other) noexcept
    : m_fd(std::exchange(other.m_fd, -1))
    , m_path(std::move(other.m_path))
    , m_given(std::move(other.m_given))
{
}

TargetFolder &TargetFolder::operator=(TargetFolder &&other) noexcept
{
    if (this != &other) {
        closeQuietly(m_fd);
        m_fd = std::exchange(other.m_fd, -1);
        m_path = std::move(other.m_path);
        m_given = std::move(other.m_given);
    }
    return *this;
}

bool TargetFolder::isOpen() const
{
    return m_fd >= 0;
}

QString TargetFolder::path() const
{
    return m_path;
}

std::optional<QString> TargetFolder::relativePath(const QString &target) const
{
    if (m_fd < 0 || target.isEmpty())
        return std::nullopt;
    // The folder's part is matched as text (as given, made absolute, or
    // cleaned); the rest is taken as it stands, so a ".." in it is refused.
    const QString absoluteTarget = QDir::current().absoluteFilePath(target);
    const QString prefixes[] = {m_given, QDir::current().absoluteFilePath(m_given), m_path + u'/'};
    for (const QString &prefix : prefixes) {
        const QString &candidate = QDir::isAbsolutePath(prefix) ? absoluteTarget : target;
        if (prefix.isEmpty() || !candidate.startsWith(prefix))
            continue;
        const std::optional<QStringList> segments = segmentsOf(candidate.mid(prefix.size()));
        if (!segments || segments->isEmpty())
            return std::nullopt;
        return segments->join(u'/');
    }
    return std::nullopt;
}

Expected<PendingFile, Error> TargetFolder::createPending() const
{
    if (m_fd < 0)
        return unexpected(Error {ErrorCode::Internal, u"target folder is not open"_s});
    PendingFile file;
    file.m_folderPath = m_path;
    file.m_fd = retryOnInterrupt([&] { return ::openat(m_fd, ".", O_TMPFILE | O_RDWR | O_CLOEXEC, 0666); });
    if (file.m_fd >= 0)
        return file;
    if (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL)
        return unexpected(targetError(errno, m_path));

    // A file system without unnamed files: a hidden temporary name.
    for (int attempt = 0; attempt < 100; ++attempt) {
        const QByteArray name = temporaryName();
        const int fd = retryOnInterrupt([&] {
            return ::openat(m_fd, name.constData(), O_CREAT | O_EXCL | O_RDWR | O_NOFOLLOW | O_CLOEXEC, 0666);
        });
        if (fd < 0 && errno == EEXIST)
            continue;
        if (fd < 0)
            return unexpected(targetError(errno, m_path));
        file.m_fd = fd;
        file.m_folderFd = ::fcntl(m_fd, F_DUPFD_CLOEXEC, 0);
        file.m_tempName = name;
        return file;
    }
    return unexpected(Error {ErrorCode::Internal, u"no free temporary name in "_s + m_path});
}

namespace {

// Opens the folder `segments` below `base` level by level, never through a
// link; creates missing levels when asked. Returns an owned descriptor.
Expected<int, Error> openFolders(int base, const QStringList &segments, bool create, const QString &root)
{
    int fd = ::fcntl(base, F_DUPFD_CLOEXEC, 0);
    if (fd < 0)
        return unexpected(targetError(errno, root));
    QString where = root;
    for (const QString &segment : segments) {
        where += u'/' + segment;
        const QByteArray name = nativeFileName(segment);
        int next = retryOnInterrupt(
            [&] { return ::openat(fd, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); });
        if (next < 0 && errno == ENOENT && create) {
            if (::mkdirat(fd, name.constData(), 0777) != 0 && errno != EEXIST) {
                const Error error = targetError(errno, where);
                ::close(fd);
                return unexpected(error);
            }
            next = retryOnInterrupt(
                [&] { return ::openat(fd, name.constData(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC); });
        }
        if (next < 0) {
            const int failure = errno;
            struct stat info {};
            const bool link = ::fstatat(fd, name.constData(), &info, AT_SYMLINK_NOFOLLOW) == 0 && S_ISLNK(info.st_mode);
            ::close(fd);
            if (link || failure == ELOOP)
                return unexpected(Error {ErrorCode::TargetPathUnsafe, u"symbolic link on the way: "_s + where});
            return unexpected(targetError(failure, where));
        }
        ::close(fd);
        fd = next;
    }
    return fd;
}

} // namespace

Expected<void, Error> TargetFolder::createFolders(const QString &relativeFolder) const
{
    if (m_fd < 0)
        return unexpected(Error {ErrorCode::Internal, u"target folder is not open"_s});
    const std::optional<QStringList> segments = segmentsOf(relativeFolder);
    if (!segments)
        return unexpected(Error {ErrorCode::TargetPathUnsafe, u"leaves the target folder: "_s + relativeFolder});
    auto fd = openFolders(m_fd, *segments, true, m_path);
    if (!fd)
        return unexpected(fd.error());
    ::close(*fd);
    return {};
}

Expected<void, Error> TargetFolder::commit(PendingFile &file, const QString &relativePath,
                                           const CommitOptions &options) const
{
    struct Closer
    {
        PendingFile &file;
        ~Closer() { file.discard(); }
    } closer {file};

    if (m_fd < 0 || !file.isOpen())
        return unexpected(Error {ErrorCode::Internal, u"nothing to put into place"_s});
    std::optional<QStringList> segments = segmentsOf(relativePath);
    if (!segments || segments->isEmpty())
        return unexpected(Error {ErrorCode::TargetPathUnsafe, u"leaves the target folder: "_s + relativePath});
    const QByteArray name = nativeFileName(segments->takeLast());
    const QString where = m_path + u'/' + relativePath;

    auto opened = openFolders(m_fd, *segments, true, m_path);
    if (!opened)
        return unexpected(opened.error());
    int folder = *opened;
    struct FolderCloser
    {
        int &fd;
        ~FolderCloser() { closeQuietly(fd); }
    } folderCloser {folder};

    struct stat existing {};
    const bool exists = ::fstatat(folder, name.constData(), &existing, AT_SYMLINK_NOFOLLOW) == 0;
    if (exists && S_ISDIR(existing.st_mode))
        return unexpected(Error {ErrorCode::TargetOccupied, u"a folder stands at "_s + where});

    // The file as it is to stay: its time, and the permissions of the file
    // it replaces.
    auto finish = [&](int fd) {
        if (exists && S_ISREG(existing.st_mode))
            ::fchmod(fd, existing.st_mode & 07777);
        if (options.modificationTime.isValid()) {
            struct timespec times[2];
            times[0].tv_sec = 0;
            times[0].tv_nsec = UTIME_OMIT;
            times[1] = timespecOf(options.modificationTime);
            ::futimens(fd, times);
        }
    };
    finish(file.m_fd);

    // Linked in under a hidden name beside the target, then renamed over it:
    // the rename replaces a file or a link at the name, never following it.
    QByteArray staged;
    if (file.m_tempName.isEmpty()) {
        const QByteArray self = "/proc/self/fd/" + QByteArray::number(file.m_fd);
        for (int attempt = 0; attempt < 100 && staged.isEmpty(); ++attempt) {
            const QByteArray candidate = temporaryName();
            if (::linkat(AT_FDCWD, self.constData(), folder, candidate.constData(), AT_SYMLINK_FOLLOW) == 0)
                staged = candidate;
            else if (errno != EEXIST)
                break;
        }
    } else if (::renameat(file.m_folderFd, file.m_tempName.constData(), folder, name.constData()) == 0) {
        file.m_tempName.clear();
        return {};
    }
    if (staged.isEmpty() && errno != EXDEV && errno != ENOENT && errno != EEXIST && errno != EPERM)
        return unexpected(targetError(errno, where));

    if (staged.isEmpty()) {
        // Another file system below the folder (a mount point), or no /proc:
        // a copy beside the target, renamed the same way.
        for (int attempt = 0; attempt < 100 && staged.isEmpty(); ++attempt) {
            const QByteArray candidate = temporaryName();
            int copy = retryOnInterrupt([&] {
                return ::openat(folder, candidate.constData(), O_CREAT | O_EXCL | O_WRONLY | O_NOFOLLOW | O_CLOEXEC,
                                0666);
            });
            if (copy < 0 && errno == EEXIST)
                continue;
            if (copy < 0)
                return unexpected(targetError(errno, where));
            const bool copied = detail::copyContent(file.m_fd, copy);
            const int copyError = errno;
            if (copied)
                finish(copy);
            ::close(copy);
            if (!copied) {
                ::unlinkat(folder, candidate.constData(), 0);
                return unexpected(targetError(copyError, where));
            }
            staged = candidate;
        }
        if (staged.isEmpty())
            return unexpected(Error {ErrorCode::Internal, u"no free temporary name beside "_s + where});
    }

    if (::renameat(folder, staged.constData(), folder, name.constData()) != 0) {
        const Error error = targetError(errno, where);
        ::unlinkat(folder, staged.constData(), 0);
        return unexpected(error);
    }
    return {};
}

std::optional<FileIdentity> TargetFolder::entryIdentity(const QString &relativePath) const
{
    std::optional<QStringList> segments = segmentsOf(relativePath);
    if (m_fd < 0 || !segments || segments->isEmpty())
        return std::nullopt;
    const QByteArray name = nativeFileName(segments->takeLast());
    auto folder = openFolders(m_fd, *segments, false, m_path);
    if (!folder)
        return std::nullopt;
    struct stat info {};
    const bool found = ::fstatat(*folder, name.constData(), &info, AT_SYMLINK_NOFOLLOW) == 0;
    ::close(*folder);
    if (!found)
        return std::nullopt;
    return identityOf(info);
}

// ---- Whole files -----------------------------------------------------------

Expected<void, Error> writeFileAtomically(const QString &path, QByteArrayView bytes, AtLink atLink)
{
    QString target = path;
    if (atLink == AtLink::WriteTarget) {
        const QFileInfo info(path);
        if (info.isSymLink() && !info.canonicalFilePath().isEmpty())
            target = info.canonicalFilePath();
    }
    const QFileInfo info(target);
    auto folder = TargetFolder::open(info.absolutePath(), TargetFolder::Creation::ExistingOnly);
    if (!folder)
        return unexpected(folder.error());
    auto pending = folder->createPending();
    if (!pending)
        return unexpected(pending.error());
    if (auto written = pending->write(bytes); !written)
        return written;
    return folder->commit(*pending, info.fileName());
}

} // namespace valtrona::files
