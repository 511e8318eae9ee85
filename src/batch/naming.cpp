#include "batch/naming.h"

#include "core/fileservices.h"

#include <algorithm>

namespace valtrona {

namespace {

// The part of a target that comes from the source, made safe to append
// below the target directory: empty and "." components dropped, ".." made a
// plain name, so it can never climb out.
QString confinedRelativePath(const QString &rel)
{
    QString normalized = rel;
    // A NUL would end the name early on its way to the system.
    normalized.replace(QChar(0), QLatin1Char('_'));
    const QStringList parts = normalized.split(QLatin1Char('/'));
    QStringList kept;
    kept.reserve(parts.size());
    for (const QString &part : parts) {
        if (part.isEmpty() || part == u".")
            continue;
        kept.append(part == u".." ? QStringLiteral("_..") : part);
    }
    return kept.join(QLatin1Char('/'));
}

// A file name that cannot name another directory.
QString confinedFileName(QString name)
{
    for (QChar &c : name) {
        if (files::isSeparator(c) || c == QChar(0))
            c = QLatin1Char('_');
    }
    if (name.isEmpty() || name == u"." || name == u"..")
        name.prepend(QLatin1Char('_'));
    return name;
}

} // namespace

QString commonBaseDirectory(const QStringList &sourcePaths)
{
    QString base;
    bool first = true;
    for (const QString &source : sourcePaths) {
        const QString dir = files::addTrailingSeparator(files::directoryPart(source));
        if (first) {
            base = dir;
            first = false;
        }
        // Exact characters: "Foto" and "foto" are two folders.
        qsizetype n = 0;
        const qsizetype limit = std::min(base.size(), dir.size());
        while (n < limit && base.at(n) == dir.at(n))
            ++n;
        // Never cut between the two halves of a surrogate pair.
        if (n > 0 && n < dir.size() && dir.at(n - 1).isHighSurrogate())
            --n;
        base = n > 0 ? dir.left(n) : QString();
        if (base.isEmpty())
            break;
    }
    return base;
}

QString composeTargetPath(const QString &targetDirectory, const QString &commonBase,
                          const QString &sourcePath, bool keepDirectoryStructure,
                          std::optional<ImageFormat> format)
{
    QString rel = sourcePath;
    if (!keepDirectoryStructure && !commonBase.isEmpty() && rel.startsWith(commonBase))
        rel = rel.mid(commonBase.size());
    rel = confinedRelativePath(rel);

    const QString stem = files::stripExtension(rel);
    QString name = files::fileNamePart(stem);
    const QString dir = stem.left(stem.size() - name.size());
    name = confinedFileName(name + (format ? formatExtension(*format) : QString()));
    return files::addTrailingSeparator(targetDirectory) + dir + name;
}

QString renameTarget(const QString &target, const QString &search, const QString &replacement)
{
    if (search.isEmpty())
        return target;
    // A bare file name has no directory to keep (directoryPart would
    // return the name itself).
    const qsizetype nameLength = files::fileNamePart(target).size();
    const QString dir = target.left(target.size() - nameLength);
    QString name = files::baseName(target);
    files::replaceAll(name, search, replacement, Qt::CaseInsensitive);
    const QString fileName = name + QLatin1Char('.') + files::extensionPart(target);
    return dir + confinedFileName(fileName);
}

} // namespace valtrona
