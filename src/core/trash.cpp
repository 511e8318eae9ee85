#include "core/trash.h"

#include "core/descriptorio.h"
#include "core/fileservices.h"

#include <QDateTime>
#include <QDir>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <optional>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace valtrona::files {

namespace {

// Paths go to the system under their own bytes, so a photo from an old card
// whose name is not UTF-8 reaches the trash like any other.
QByteArray encoded(const QString &path)
{
    return nativeFileName(path);
}

// The path with every link and "." or ".." resolved; empty when it is not there.
QString canonicalPath(const QString &path)
{
    char resolved[PATH_MAX];
    if (::realpath(encoded(path).constData(), resolved) == nullptr)
        return {};
    return fileNameFromNative(resolved);
}

// The names in a directory, "." and ".." left out; nothing when it cannot be read.
std::optional<QStringList> entriesOf(const QString &directory)
{
    DIR *dir = ::opendir(encoded(directory).constData());
    if (dir == nullptr)
        return std::nullopt;
    QStringList names;
    while (const dirent *entry = ::readdir(dir)) {
        const QByteArrayView name(entry->d_name);
        if (name != "." && name != "..")
            names.append(fileNameFromNative(name));
    }
    ::closedir(dir);
    return names;
}

// Gives `to` the modification time `from` had, to the nanosecond.
void keepModificationTime(const QString &to, const struct stat &from)
{
    const struct timespec times[2] = {{0, UTIME_OMIT}, from.st_mtim};
    ::utimensat(AT_FDCWD, encoded(to).constData(), times, AT_SYMLINK_NOFOLLOW);
}

// Copies a regular file's bytes into a new file.
bool copyFileBytes(const QString &from, const QString &to)
{
    const int in = ::open(encoded(from).constData(), O_RDONLY | O_CLOEXEC);
    if (in < 0)
        return false;
    const int out = ::open(encoded(to).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    bool copied = out >= 0 && detail::copyContent(in, out);
    ::close(in);
    if (out >= 0 && ::close(out) != 0)
        copied = false;
    return copied;
}

bool lstatPath(const QString &path, struct stat &info)
{
    return ::lstat(encoded(path).constData(), &info) == 0;
}

bool statPath(const QString &path, struct stat &info)
{
    return ::stat(encoded(path).constData(), &info) == 0;
}

// Nothing to move: an empty path or no entry there.
Error missing(const QString &message)
{
    return Error {ErrorCode::SourceMissing, message};
}

// The trash, the target of the move, cannot take the item.
Error refused(const QString &message)
{
    return Error {ErrorCode::TargetNotWritable, message};
}

QString parentOf(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    return slash <= 0 ? QStringLiteral("/") : path.left(slash);
}

// Creates the directory and its missing parents, each new level private to
// the user as the trash layout asks. True when it is a directory afterwards.
bool makePrivatePath(const QString &path)
{
    struct stat info {};
    if (statPath(path, info))
        return S_ISDIR(info.st_mode);
    const QString parent = parentOf(path);
    if (parent != path && !makePrivatePath(parent))
        return false;
    if (::mkdir(encoded(path).constData(), 0700) != 0 && errno != EEXIST)
        return false;
    return statPath(path, info) && S_ISDIR(info.st_mode);
}

// The device of the nearest existing level of path.
dev_t deviceOf(QString path)
{
    struct stat info {};
    while (!statPath(path, info)) {
        const QString parent = parentOf(path);
        if (parent == path)
            return 0;
        path = parent;
    }
    return info.st_dev;
}

// The top directory of the mount that holds `directory` (canonical, absolute).
QString mountTopOf(const QString &directory, dev_t device)
{
    QString top = directory;
    while (top != u"/") {
        struct stat info {};
        const QString parent = parentOf(top);
        if (!statPath(parent, info) || info.st_dev != device)
            break;
        top = parent;
    }
    return top;
}

// $topdir/.Trash/$uid when the administrator prepared $topdir/.Trash (a
// real directory with the sticky bit), else $topdir/.Trash-$uid, owned by us.
QString topDirectoryTrash(const QString &top)
{
    const QString uid = QString::number(::getuid());
    const QString base = top == u"/" ? QString() : top;

    struct stat shared {};
    const QString sharedTrash = base + QStringLiteral("/.Trash");
    if (lstatPath(sharedTrash, shared) && S_ISDIR(shared.st_mode) && (shared.st_mode & S_ISVTX)) {
        const QString mine = sharedTrash + QLatin1Char('/') + uid;
        struct stat info {};
        if (!lstatPath(mine, info))
            ::mkdir(encoded(mine).constData(), 0700);
        if (lstatPath(mine, info) && S_ISDIR(info.st_mode) && info.st_uid == ::getuid())
            return mine;
    }

    const QString own = base + QStringLiteral("/.Trash-") + uid;
    struct stat info {};
    if (!lstatPath(own, info))
        ::mkdir(encoded(own).constData(), 0700);
    if (lstatPath(own, info) && S_ISDIR(info.st_mode) && info.st_uid == ::getuid()
        && (info.st_mode & 0700) == 0700) {
        return own;
    }
    return {};
}

// Copies a file, link or directory tree, keeping modification times, so the
// trashed copy restores like the original.
bool copyTree(const QString &from, const QString &to)
{
    struct stat info {};
    if (!lstatPath(from, info))
        return false;
    if (S_ISLNK(info.st_mode)) {
        QByteArray buffer(4096, Qt::Uninitialized);
        const ssize_t n = ::readlink(encoded(from).constData(), buffer.data(), size_t(buffer.size()));
        if (n < 0)
            return false;
        buffer.truncate(n);
        return ::symlink(buffer.constData(), encoded(to).constData()) == 0;
    }
    if (S_ISDIR(info.st_mode)) {
        const std::optional<QStringList> names = entriesOf(from);
        if (!names || ::mkdir(encoded(to).constData(), 0700) != 0)
            return false;
        for (const QString &name : *names) {
            if (!copyTree(from + QLatin1Char('/') + name, to + QLatin1Char('/') + name))
                return false;
        }
    } else if (!S_ISREG(info.st_mode) || !copyFileBytes(from, to)) {
        return false;
    }
    // The copy is whole even where its permissions or time cannot be set.
    ::chmod(encoded(to).constData(), info.st_mode & 07777);
    keepModificationTime(to, info);
    return true;
}

bool removeTree(const QString &path)
{
    struct stat info {};
    if (!lstatPath(path, info))
        return true;
    if (!S_ISDIR(info.st_mode))
        return ::unlink(encoded(path).constData()) == 0;
    const std::optional<QStringList> names = entriesOf(path);
    if (!names)
        return false;
    bool removed = true;
    for (const QString &name : *names)
        removed = removeTree(path + QLatin1Char('/') + name) && removed;
    return ::rmdir(encoded(path).constData()) == 0 && removed;
}

// "IMG.jpg", "IMG.2.jpg", "IMG.3.jpg", ..., each short enough that its
// ".trashinfo" still fits the file system's name limit.
QString candidateName(const QString &name, int attempt)
{
    constexpr qsizetype nameMax = 255;
    const qsizetype infoSuffix = qsizetype(sizeof(".trashinfo") - 1);
    qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot <= 0)
        dot = name.size();
    QString stem = name.left(dot);
    const QString ext = name.mid(dot);
    const QString number = attempt == 1 ? QString() : QLatin1Char('.') + QString::number(attempt);
    for (;;) {
        const QString candidate = stem + number + ext;
        if (encoded(candidate).size() + infoSuffix <= nameMax || stem.size() <= 1)
            return candidate;
        stem.chop(stem.size() >= 2 && stem.at(stem.size() - 1).isLowSurrogate() ? 2 : 1);
    }
}

QByteArray trashInfo(const QString &originalPath, const QString &topDirectory)
{
    QString recorded = originalPath;
    if (!topDirectory.isEmpty() && topDirectory != u"/"
        && originalPath.startsWith(topDirectory + QLatin1Char('/'))) {
        recorded = originalPath.mid(topDirectory.size() + 1);
    }
    const QString date = QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd'T'HH:mm:ss"));
    return QByteArrayLiteral("[Trash Info]\nPath=") + encoded(recorded).toPercentEncoding("/")
        + QByteArrayLiteral("\nDeletionDate=") + date.toLatin1() + QByteArrayLiteral("\n");
}

// The item's absolute location with its parent resolved, as it will be
// restored; the item itself (perhaps a link) is not resolved.
QString originalLocation(const QString &path)
{
    const QString absolute = QDir::isAbsolutePath(path) ? path : QDir::currentPath() + QLatin1Char('/') + path;
    const QString name = fileNamePart(absolute);
    const QString parent = canonicalPath(parentOf(absolute));
    if (parent.isEmpty())
        return {};
    if (parent == u"/")
        return QLatin1Char('/') + name;
    return parent + QLatin1Char('/') + name;
}

} // namespace

QString homeTrashDirectory()
{
    QString dataHome = qEnvironmentVariable("XDG_DATA_HOME");
    if (dataHome.isEmpty() || !QDir::isAbsolutePath(dataHome))
        dataHome = QDir::homePath() + QStringLiteral("/.local/share");
    return removeTrailingSeparator(dataHome) + QStringLiteral("/Trash");
}

namespace {

// The item a path names (a link itself, not what it points to), without a
// trailing separator.
struct TrashCandidate
{
    QString path;
    struct stat info {};
};

Expected<TrashCandidate, Error> candidateOf(const QString &path)
{
    TrashCandidate candidate;
    candidate.path = removeTrailingSeparator(path);
    if (candidate.path.isEmpty())
        return unexpected(missing(QStringLiteral("empty path")));
    if (!lstatPath(candidate.path, candidate.info))
        return unexpected(missing(QStringLiteral("no such file: ") + candidate.path));
    return candidate;
}

} // namespace

Expected<TrashedItem, Error> moveToTrashAt(const QString &path, const TrashLocation &trash)
{
    const auto found = candidateOf(path);
    if (!found)
        return unexpected(found.error());
    const QString &p = found->path;
    const struct stat &item = found->info;
    const QString original = originalLocation(p);
    if (original.isEmpty() || original == u"/")
        return unexpected(refused(QStringLiteral("cannot trash: ") + p));

    const QString filesDir = trash.path + QStringLiteral("/files");
    const QString infoDir = trash.path + QStringLiteral("/info");
    if (!makePrivatePath(filesDir) || !makePrivatePath(infoDir))
        return unexpected(refused(QStringLiteral("cannot create trash in ") + trash.path));

    // A directory may not go into a trash that lies inside it.
    const QString trashCanonical = canonicalPath(trash.path);
    if (S_ISDIR(item.st_mode)
        && (trashCanonical == original || trashCanonical.startsWith(original + QLatin1Char('/')))) {
        return unexpected(refused(QStringLiteral("the trash lies inside ") + p));
    }

    const QString name = fileNamePart(original);
    const QByteArray info = trashInfo(original, trash.topDirectory);
    for (int attempt = 1; attempt < 10000; ++attempt) {
        const QString candidate = candidateName(name, attempt);
        const QString infoPath = infoDir + QLatin1Char('/') + candidate + QStringLiteral(".trashinfo");
        const QString trashedPath = filesDir + QLatin1Char('/') + candidate;

        // The .trashinfo is created exclusively first: it reserves the name.
        const int fd = ::open(encoded(infoPath).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
        if (fd < 0) {
            if (errno == EEXIST)
                continue;
            return unexpected(refused(QStringLiteral("cannot write ") + infoPath));
        }
        const bool written = detail::writeAll(fd, info);
        const bool closed = ::close(fd) == 0;
        if (!written || !closed) {
            ::unlink(encoded(infoPath).constData());
            return unexpected(refused(QStringLiteral("cannot write ") + infoPath));
        }
        struct stat existing {};
        if (lstatPath(trashedPath, existing)) {
            // A leftover without its .trashinfo: keep it, take the next name.
            ::unlink(encoded(infoPath).constData());
            continue;
        }

        if (::rename(encoded(p).constData(), encoded(trashedPath).constData()) == 0)
            return TrashedItem{trashedPath, infoPath};
        if (errno != EXDEV) {
            const QString why = QString::fromLocal8Bit(::strerror(errno));
            ::unlink(encoded(infoPath).constData());
            return unexpected(refused(why + QStringLiteral(": ") + p));
        }

        // Another file system: copy, and remove the original only when the
        // copy is complete.
        if (!copyTree(p, trashedPath)) {
            removeTree(trashedPath);
            ::unlink(encoded(infoPath).constData());
            return unexpected(refused(QStringLiteral("cannot copy into the trash: ") + p));
        }
        if (!S_ISDIR(item.st_mode)) {
            if (::unlink(encoded(p).constData()) != 0) {
                removeTree(trashedPath);
                ::unlink(encoded(infoPath).constData());
                return unexpected(refused(QStringLiteral("cannot remove ") + p));
            }
        } else if (!removeTree(p)) {
            // Part of the tree is gone; its only copy is in the trash now.
            return unexpected(refused(QStringLiteral("partly removed: ") + p));
        }
        return TrashedItem{trashedPath, infoPath};
    }
    return unexpected(refused(QStringLiteral("no free name in the trash for ") + name));
}

Expected<TrashedItem, Error> moveToTrash(const QString &path)
{
    const auto found = candidateOf(path);
    if (!found)
        return unexpected(found.error());
    const QString &p = found->path;
    const struct stat &item = found->info;

    const QString home = homeTrashDirectory();
    if (deviceOf(home) == item.st_dev)
        return moveToTrashAt(p, TrashLocation{home, QString()});

    const QString original = originalLocation(p);
    struct stat parentInfo {};
    if (S_ISDIR(item.st_mode) && statPath(parentOf(original), parentInfo) && parentInfo.st_dev != item.st_dev) {
        // A mount point: its contents are not ours to move or copy away.
        return unexpected(refused(QStringLiteral("is a mount point: ") + p));
    }
    const QString top = mountTopOf(parentOf(original), item.st_dev);
    struct stat topInfo {};
    // An item that is itself a mount point has no top directory of its own.
    if (!original.isEmpty() && statPath(top, topInfo) && topInfo.st_dev == item.st_dev) {
        const QString topTrash = topDirectoryTrash(top);
        if (!topTrash.isEmpty()) {
            Expected<TrashedItem, Error> moved = moveToTrashAt(p, TrashLocation{topTrash, top});
            if (moved.has_value())
                return moved;
        }
    }
    return moveToTrashAt(p, TrashLocation{home, QString()});
}

int deleteToRecycleBin(const QString &path)
{
    if (path.isEmpty())
        return -1;
    return moveToTrash(path).has_value() ? 0 : 1;
}

} // namespace valtrona::files
