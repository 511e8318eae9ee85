#include "core/fileservices.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSet>

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>

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

} // namespace valtrona::files
