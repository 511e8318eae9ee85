#include "core/fileservices.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace valtrona::files {

namespace {

// Index of the last "/" or "\" in text, -1 when there is none.
qsizetype lastSeparator(const QString &text)
{
    for (qsizetype i = text.size() - 1; i >= 0; --i) {
        if (isSeparator(text.at(i)))
            return i;
    }
    return -1;
}

// Index of the "." that starts the extension: scanning from the end, the
// first "." met before any separator; -1 when a separator or the start
// comes first.
qsizetype extensionDot(const QString &path)
{
    for (qsizetype i = path.size() - 1; i >= 0; --i) {
        const QChar c = path.at(i);
        if (c == QLatin1Char('.'))
            return i;
        if (isSeparator(c))
            return -1;
    }
    return -1;
}

bool isBlank(QChar c)
{
    return c == QLatin1Char(' ');
}

bool hasWildcard(const QString &text)
{
    return text.contains(QLatin1Char('*')) || text.contains(QLatin1Char('?'));
}

bool matchesEverything(const QString &mask)
{
    return mask.isEmpty() || mask == u"*" || mask == u"*.*";
}

// "*" matches any run of characters, "?" any one; everything else stands for
// itself, compared ignoring letter case as the file system of the original
// platform does.
bool maskMatches(const QString &mask, const QString &name)
{
    if (matchesEverything(mask))
        return true;
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

// Every entry of a directory except "." and "..", dangling links included,
// in name order ignoring case (case decides only between otherwise equal
// names), so a walk is the same on every run.
QFileInfoList sortedEntries(const QString &directory, bool includeHidden)
{
    QDir::Filters filters = QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot;
    if (includeHidden)
        filters |= QDir::Hidden;
    QFileInfoList entries = QDir(directory).entryInfoList(filters, QDir::Unsorted);
    std::sort(entries.begin(), entries.end(), [](const QFileInfo &a, const QFileInfo &b) {
        const int folded = QString::compare(a.fileName(), b.fileName(), Qt::CaseInsensitive);
        if (folded != 0)
            return folded < 0;
        return a.fileName() < b.fileName();
    });
    return entries;
}

FileError fileError(FileError::Code code, const QString &message)
{
    return FileError{code, message};
}

} // namespace

bool isSeparator(QChar c)
{
    return c == QLatin1Char('/') || c == QLatin1Char('\\');
}

QString addTrailingSeparator(const QString &path)
{
    qsizetype begin = 0;
    qsizetype end = path.size();
    while (begin < end && isBlank(path.at(begin)))
        ++begin;
    while (end > begin && isBlank(path.at(end - 1)))
        --end;
    QString trimmed = path.mid(begin, end - begin);
    if (!trimmed.isEmpty() && !isSeparator(trimmed.back()))
        trimmed.append(QLatin1Char('/'));
    return trimmed;
}

QString removeTrailingSeparator(const QString &path)
{
    if (path.size() > 1 && isSeparator(path.back()))
        return path.left(path.size() - 1);
    return path;
}

QString fileNamePart(const QString &path, bool dropTrailingSeparator)
{
    const QString p = dropTrailingSeparator ? removeTrailingSeparator(path) : path;
    return p.mid(lastSeparator(p) + 1);
}

QString baseName(const QString &path)
{
    const QString name = fileNamePart(path, false);
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? name : name.left(dot);
}

QString directoryPart(const QString &path)
{
    const qsizetype sep = lastSeparator(path);
    return sep < 0 ? path : path.left(sep);
}

QString extensionPart(const QString &path)
{
    const qsizetype dot = extensionDot(path);
    return dot < 0 ? QString() : path.mid(dot + 1);
}

QString stripExtension(const QString &path)
{
    const qsizetype dot = extensionDot(path);
    return dot < 0 ? path : path.left(dot);
}

QString trimControlChars(const QString &text, int mode)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    if (mode & TrimLeading) {
        while (begin < end && text.at(begin).unicode() <= 32)
            ++begin;
    }
    if (mode & TrimTrailing) {
        while (end > begin && text.at(end - 1).unicode() <= 32)
            --end;
    }
    return text.mid(begin, end - begin);
}

int replaceAll(QString &text, const QString &find, const QString &replacement,
               Qt::CaseSensitivity cs)
{
    if (find.isEmpty())
        return 0;
    int count = 0;
    qsizetype from = 0;
    for (;;) {
        const qsizetype at = text.indexOf(find, from, cs);
        if (at < 0)
            break;
        text.replace(at, find.size(), replacement);
        from = at + replacement.size();
        ++count;
    }
    return count;
}

int replaceFirst(QString &text, const QString &find, const QString &replacement,
                 Qt::CaseSensitivity cs)
{
    if (find.isEmpty())
        return 0;
    const qsizetype at = text.indexOf(find, 0, cs);
    if (at < 0)
        return 0;
    text.replace(at, find.size(), replacement);
    return 1;
}

bool fileExists(const QString &path)
{
    if (path.isEmpty() || path == u".")
        return false;
    const QString name = fileNamePart(path);
    if (hasWildcard(name)) {
        const QString dir = path.left(path.size() - name.size());
        const QFileInfoList entries = sortedEntries(dir.isEmpty() ? QStringLiteral(".") : dir, true);
        return std::any_of(entries.cbegin(), entries.cend(), [&name](const QFileInfo &entry) {
            return maskMatches(name, entry.fileName());
        });
    }
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

bool dirExists(const QString &path)
{
    const QString p = removeTrailingSeparator(path);
    return !p.isEmpty() && QFileInfo(p).isDir();
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

bool createDirectoryChain(const QString &path)
{
    QString p = addTrailingSeparator(path);
    p.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (dirExistsNonEmpty(p))
        return true;
    // Every level in order, each as the text up to its separator; a leading
    // "/" (the root) and doubled separators name nothing to create.
    for (qsizetype i = 1; i < p.size(); ++i) {
        if (p.at(i) == QLatin1Char('/') && p.at(i - 1) != QLatin1Char('/'))
            ::mkdir(QFile::encodeName(p.left(i)).constData(), 0777);
    }
    return dirExists(p);
}

bool setFileTimes(const QString &path, const QDateTime &time, int which)
{
    if (which == 0)
        which = LastWriteTime;
    if (!(which & (LastAccessTime | LastWriteTime)) || !time.isValid() || path.isEmpty())
        return false;

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

    struct timespec times[2];
    times[0].tv_sec = 0;
    times[0].tv_nsec = UTIME_OMIT;
    times[1] = times[0];
    if (which & LastAccessTime)
        times[0] = stamp;
    if (which & LastWriteTime)
        times[1] = stamp;
    return ::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0) == 0;
}

namespace {

class DirectoryWalk
{
public:
    explicit DirectoryWalk(const ListFilesOptions &options) : m_options(options) {}

    void visit(const QString &directory);
    ListFilesResult takeResult() { return std::move(m_result); }

private:
    bool cancelRequested() const
    {
        return m_options.cancel != nullptr && m_options.cancel->load();
    }
    void collect(const QString &directory, const QFileInfo &entry);

    const ListFilesOptions &m_options;
    ListFilesResult m_result;
    QSet<QString> m_visited;  // canonical paths, so no directory is walked twice
};

void DirectoryWalk::collect(const QString &directory, const QFileInfo &entry)
{
    if (entry.isDir()) {
        if (m_options.collectDirectories)
            m_result.directories.append(directory + entry.fileName() + QLatin1Char('/'));
    } else if (entry.isFile()) {
        // Only regular files: a pipe or a device would hang the reader.
        if (m_options.collectFiles)
            m_result.files.append(directory + entry.fileName());
    }
}

void DirectoryWalk::visit(const QString &directory)
{
    if (cancelRequested()) {
        m_result.cancelled = true;
        return;
    }
    const QString canonical = QFileInfo(directory).canonicalFilePath();
    if (canonical.isEmpty() || m_visited.contains(canonical))
        return;
    m_visited.insert(canonical);

    if (m_options.processEvents && QCoreApplication::instance() != nullptr) {
        QCoreApplication::processEvents();
        if (cancelRequested()) {
            m_result.cancelled = true;
            return;
        }
    }

    const QFileInfoList entries = sortedEntries(directory, m_options.includeHidden);
    const QString &mask = m_options.mask;
    if (!m_options.recurse || matchesEverything(mask)) {
        for (const QFileInfo &entry : entries) {
            if (!maskMatches(mask, entry.fileName()))
                continue;
            collect(directory, entry);
            if (m_options.recurse && entry.isDir())
                visit(directory + entry.fileName() + QLatin1Char('/'));
        }
        return;
    }

    for (const QFileInfo &entry : entries) {
        if (maskMatches(mask, entry.fileName()))
            collect(directory, entry);
    }
    for (const QFileInfo &entry : entries) {
        if (entry.isDir())
            visit(directory + entry.fileName() + QLatin1Char('/'));
    }
}

bool pathLess(const QString &a, const QString &b)
{
    const int folded = QString::compare(a, b, Qt::CaseInsensitive);
    return folded != 0 ? folded < 0 : a < b;
}

void sortPaths(QStringList &paths, ListSort sort)
{
    if (sort == ListSort::None || paths.size() < 2)
        return;
    if (sort == ListSort::ByPath) {
        std::sort(paths.begin(), paths.end(), pathLess);
        return;
    }
    std::vector<std::pair<qint64, QString>> stamped;
    stamped.reserve(paths.size());
    for (const QString &path : std::as_const(paths))
        stamped.emplace_back(QFileInfo(path).lastModified().toMSecsSinceEpoch(), path);
    std::sort(stamped.begin(), stamped.end(), [](const auto &a, const auto &b) {
        return a.first != b.first ? a.first < b.first : pathLess(a.second, b.second);
    });
    for (qsizetype i = 0; i < paths.size(); ++i)
        paths[i] = stamped[size_t(i)].second;
}

} // namespace

Expected<ListFilesResult, FileError> listFiles(const QString &directory, const ListFilesOptions &options)
{
    if (directory.isEmpty() || !QFileInfo(directory).isDir())
        return unexpected(fileError(FileError::Code::NotFound, QStringLiteral("not a directory: ") + directory));

    const QString start = directory.endsWith(QLatin1Char('/')) ? directory : directory + QLatin1Char('/');
    DirectoryWalk walk(options);
    walk.visit(start);
    ListFilesResult result = walk.takeResult();
    sortPaths(result.files, options.sort);
    sortPaths(result.directories, options.sort);
    return result;
}

} // namespace valtrona::files
