#include "core/fileservices.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <set>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace valtrona::files {

namespace {

bool hasWildcard(const QString &text)
{
    return text.contains(QLatin1Char('*')) || text.contains(QLatin1Char('?'));
}

bool matchesEverything(const QString &mask)
{
    if (mask.isEmpty())
        return true;
    const QStringList parts = mask.split(QLatin1Char(';'));
    return std::any_of(parts.cbegin(), parts.cend(),
                       [](const QString &part) { return part == u"*" || part == u"*.*"; });
}

// "*" matches any run of characters, "?" any one; everything else stands for
// itself, compared ignoring letter case.
bool oneMaskMatches(const QString &mask, const QString &name)
{
    const QString m = mask.toCaseFolded();
    const QString n = name.toCaseFolded();
    qsizetype mi = 0;
    qsizetype ni = 0;
    qsizetype starAt = -1;
    qsizetype resumeAt = 0;
    while (ni < n.size()) {
        if (mi < m.size() && (m.at(mi) == QLatin1Char('?') || m.at(mi) == n.at(ni))) {
            ++mi;
            ++ni;
        } else if (mi < m.size() && m.at(mi) == QLatin1Char('*')) {
            starAt = mi++;
            resumeAt = ni;
        } else if (starAt >= 0) {
            mi = starAt + 1;
            ni = ++resumeAt;
        } else {
            return false;
        }
    }
    while (mi < m.size() && m.at(mi) == QLatin1Char('*'))
        ++mi;
    return mi == m.size();
}

bool maskMatches(const QString &mask, const QString &name)
{
    if (matchesEverything(mask))
        return true;
    const QStringList parts = mask.split(QLatin1Char(';'), Qt::SkipEmptyParts);
    return std::any_of(parts.cbegin(), parts.cend(),
                       [&name](const QString &part) { return oneMaskMatches(part, name); });
}

// One entry of a directory as the walk sees it. The type follows links, so
// a link to a directory is a directory and a dangling link is neither.
struct Entry
{
    QString name;
    QByteArray nativeName;
    bool isFile = false;       // a regular file
    bool isDirectory = false;
    qint64 modifiedMs = 0;
};

qint64 modifiedMs(const struct stat &info)
{
    return qint64(info.st_mtim.tv_sec) * 1000 + info.st_mtim.tv_nsec / 1000000;
}

// Every entry of a directory except "." and "..", dangling links included,
// in name order ignoring case (case decides only between otherwise equal
// names), so a walk is the same on every run. Read with the system's own
// calls: Qt's directory iterator leaves out names that are not valid UTF-8.
std::vector<Entry> sortedEntries(const QByteArray &nativeDirectory, bool includeHidden)
{
    std::vector<Entry> entries;
    DIR *dir = ::opendir(nativeDirectory.isEmpty() ? "." : nativeDirectory.constData());
    if (dir == nullptr)
        return entries;
    QByteArray prefix = nativeDirectory;
    if (!prefix.isEmpty() && !prefix.endsWith('/'))
        prefix.append('/');
    while (const struct dirent *found = ::readdir(dir)) {
        const QByteArray name(found->d_name);
        if (name == "." || name == "..")
            continue;
        if (!includeHidden && name.startsWith('.'))
            continue;
        Entry entry;
        entry.name = fileNameFromNative(name);
        entry.nativeName = name;
        struct stat info {};
        const QByteArray path = prefix + name;
        if (::stat(path.constData(), &info) == 0) {
            entry.isFile = S_ISREG(info.st_mode);
            entry.isDirectory = S_ISDIR(info.st_mode);
            entry.modifiedMs = modifiedMs(info);
        }
        entries.push_back(std::move(entry));
    }
    ::closedir(dir);
    std::sort(entries.begin(), entries.end(), [](const Entry &a, const Entry &b) {
        const int folded = QString::compare(a.name, b.name, Qt::CaseInsensitive);
        if (folded != 0)
            return folded < 0;
        return a.name < b.name;
    });
    return entries;
}

bool statPath(const QString &path, struct stat &info)
{
    return ::stat(nativeFileName(path).constData(), &info) == 0;
}

} // namespace

bool fileExists(const QString &path)
{
    if (path.isEmpty() || path == u".")
        return false;
    const QString name = fileNamePart(path);
    if (hasWildcard(name)) {
        const QString dir = path.left(path.size() - name.size());
        const std::vector<Entry> entries = sortedEntries(nativeFileName(dir), true);
        return std::any_of(entries.cbegin(), entries.cend(), [&name](const Entry &entry) {
            return maskMatches(name, entry.name);
        });
    }
    struct stat info {};
    return ::lstat(nativeFileName(path).constData(), &info) == 0;
}

bool pathExists(const QString &path)
{
    struct stat info {};
    return !path.isEmpty() && statPath(path, info);
}

std::optional<FileFacts> fileFacts(const QString &path)
{
    struct stat info {};
    if (path.isEmpty() || !statPath(path, info) || !S_ISREG(info.st_mode))
        return std::nullopt;
    const qint64 milliseconds = qint64(info.st_mtim.tv_sec) * 1000 + info.st_mtim.tv_nsec / 1000000;
    return FileFacts {qint64(info.st_size), QDateTime::fromMSecsSinceEpoch(milliseconds)};
}

bool dirExists(const QString &path)
{
    const QString p = removeTrailingSeparator(path);
    struct stat info {};
    return !p.isEmpty() && statPath(p, info) && S_ISDIR(info.st_mode);
}

bool dirExistsNonEmpty(const QString &path)
{
    return !path.isEmpty() && dirExists(path);
}

qsizetype readFileText(const QString &path, QString &text)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        return 0;
    text = QString::fromLocal8Bit(bytes);
    return text.size();
}

bool writeFileText(const QString &path, const QString &text)
{
    // A failed write may leave an older file standing, which still counts.
    return writeFileAtomically(path, text.toUtf8()).has_value() || fileExists(path);
}

struct timespec timespecOf(const QDateTime &time)
{
    const qint64 ms = time.toMSecsSinceEpoch();
    qint64 seconds = ms / 1000;
    qint64 remainder = ms % 1000;
    if (remainder < 0) {
        remainder += 1000;
        --seconds;
    }
    struct timespec stamp {};
    stamp.tv_sec = static_cast<time_t>(seconds);
    stamp.tv_nsec = static_cast<long>(remainder * 1000000);
    return stamp;
}

bool setFileTimes(const QString &path, const QDateTime &time, int which)
{
    if (which == 0)
        which = LastWriteTime;
    if (!(which & (LastAccessTime | LastWriteTime)) || !time.isValid() || path.isEmpty())
        return false;

    const struct timespec stamp = timespecOf(time);
    struct timespec times[2];
    times[0].tv_sec = 0;
    times[0].tv_nsec = UTIME_OMIT;
    times[1] = times[0];
    if (which & LastAccessTime)
        times[0] = stamp;
    if (which & LastWriteTime)
        times[1] = stamp;
    return ::utimensat(AT_FDCWD, nativeFileName(path).constData(), times, 0) == 0;
}

namespace {

// The paths found with the modification time of each, for sorting.
struct Found
{
    QStringList paths;
    std::vector<qint64> modifiedMs;

    void append(const QString &path, qint64 ms)
    {
        paths.append(path);
        modifiedMs.push_back(ms);
    }
};

// Walks by the system's bytes and spells what it finds as text, so a folder
// whose name is not valid UTF-8 is walked too.
class DirectoryWalk
{
public:
    explicit DirectoryWalk(const ListFilesOptions &options) : m_options(options) {}

    void visit(const QString &directory, const QByteArray &nativeDirectory);
    bool cancelled() const { return m_cancelled; }

    Found files;
    Found directories;

private:
    bool cancelRequested() const
    {
        return m_options.cancel != nullptr && m_options.cancel->load();
    }
    void collect(const QString &directory, const Entry &entry);
    void descend(const QString &directory, const QByteArray &nativeDirectory, const Entry &entry)
    {
        visit(directory + entry.name + QLatin1Char('/'), QByteArray(nativeDirectory + entry.nativeName + '/'));
    }

    const ListFilesOptions &m_options;
    bool m_cancelled = false;
    // Device and inode of every directory walked, so none is walked twice.
    std::set<std::pair<dev_t, ino_t>> m_visited;
};

void DirectoryWalk::collect(const QString &directory, const Entry &entry)
{
    if (entry.isDirectory) {
        if (m_options.collectDirectories)
            directories.append(directory + entry.name + QLatin1Char('/'), entry.modifiedMs);
    } else if (entry.isFile) {
        // Only regular files: a pipe or a device would hang the reader.
        if (m_options.collectFiles)
            files.append(directory + entry.name, entry.modifiedMs);
    }
}

void DirectoryWalk::visit(const QString &directory, const QByteArray &nativeDirectory)
{
    if (cancelRequested()) {
        m_cancelled = true;
        return;
    }
    struct stat info {};
    if (::stat(nativeDirectory.constData(), &info) != 0 || !S_ISDIR(info.st_mode)
        || !m_visited.emplace(info.st_dev, info.st_ino).second) {
        return;
    }

    if (m_options.processEvents && QCoreApplication::instance() != nullptr) {
        QCoreApplication::processEvents();
        if (cancelRequested()) {
            m_cancelled = true;
            return;
        }
    }

    const std::vector<Entry> entries = sortedEntries(nativeDirectory, m_options.includeHidden);
    const QString &mask = m_options.mask;
    if (!m_options.recurse || matchesEverything(mask)) {
        for (const Entry &entry : entries) {
            if (!maskMatches(mask, entry.name))
                continue;
            collect(directory, entry);
            if (m_options.recurse && entry.isDirectory)
                descend(directory, nativeDirectory, entry);
        }
        return;
    }

    for (const Entry &entry : entries) {
        if (maskMatches(mask, entry.name))
            collect(directory, entry);
    }
    for (const Entry &entry : entries) {
        if (entry.isDirectory)
            descend(directory, nativeDirectory, entry);
    }
}

bool pathLess(const QString &a, const QString &b)
{
    const int folded = QString::compare(a, b, Qt::CaseInsensitive);
    return folded != 0 ? folded < 0 : a < b;
}

QStringList sortedPaths(const Found &found, ListSort sort)
{
    if (sort == ListSort::None || found.paths.size() < 2)
        return found.paths;
    std::vector<qsizetype> order(size_t(found.paths.size()));
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = qsizetype(i);
    std::sort(order.begin(), order.end(), [&found, sort](qsizetype a, qsizetype b) {
        const QString &pathA = found.paths.at(a);
        const QString &pathB = found.paths.at(b);
        if (sort == ListSort::ByModificationTime) {
            const qint64 timeA = found.modifiedMs[size_t(a)];
            const qint64 timeB = found.modifiedMs[size_t(b)];
            if (timeA != timeB)
                return timeA < timeB;
        }
        return pathLess(pathA, pathB);
    });
    QStringList paths;
    paths.reserve(found.paths.size());
    for (const qsizetype i : order)
        paths.append(found.paths.at(i));
    return paths;
}

} // namespace

Expected<ListFilesResult, Error> listFiles(const QString &directory, const ListFilesOptions &options)
{
    if (!dirExistsNonEmpty(directory))
        return unexpected(Error {ErrorCode::SourceMissing, QStringLiteral("not a directory: ") + directory});

    const QString start = directory.endsWith(QLatin1Char('/')) ? directory : directory + QLatin1Char('/');
    DirectoryWalk walk(options);
    walk.visit(start, nativeFileName(start));
    ListFilesResult result;
    result.files = sortedPaths(walk.files, options.sort);
    result.directories = sortedPaths(walk.directories, options.sort);
    result.cancelled = walk.cancelled();
    return result;
}

Expected<QStringList, Error> listJpegFiles(const QString &folder, bool processEvents)
{
    ListFilesOptions options;
    options.mask = QStringLiteral("*.jpg;*.jpeg");
    options.recurse = true;
    options.includeHidden = false;
    options.processEvents = processEvents;
    auto walk = listFiles(folder, options);
    if (!walk)
        return unexpected(walk.error());
    return std::move(walk->files);
}

QStringList expandFolders(const QStringList &paths, bool processEvents)
{
    QStringList expanded;
    for (const QString &path : paths) {
        if (!dirExistsNonEmpty(path)) {
            expanded.append(path);
            continue;
        }
        if (const auto photos = listJpegFiles(path, processEvents))
            expanded += *photos;
    }
    return expanded;
}

} // namespace valtrona::files
