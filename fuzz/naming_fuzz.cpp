// Feeds random names, bases and replacements to the path helpers and the
// target naming, and checks that every target stays inside the target
// directory.
//
// Input: byte 0 holds flags (bit 0 keep structure, bit 1 UTF-16 text,
// bits 2-3 output format, or none); the rest is split at "\n" into base, source,
// search text, replacement and further sources.

#include "batch/naming.h"
#include "core/fileservices.h"

#include <QDir>
#include <QFileInfo>
#include <QStringList>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

namespace files = valtrona::files;

void check(bool condition)
{
    if (!condition)
        std::abort();
}

void checkInside(const QString &target, const QString &directory)
{
    const QString dir = directory + QLatin1Char('/');
    const QString name = files::fileNamePart(target);
    check(target.startsWith(dir));
    check(!target.contains(QChar(0)));
    check(QDir::cleanPath(target).startsWith(dir));
    check(!name.isEmpty() && name != u"." && name != u"..");
    const QStringList parts = target.mid(dir.size()).split(QLatin1Char('/'));
    for (const QString &part : parts)
        check(!part.isEmpty() && part != u".." && part != u".");
}

void exercisePathText(const QString &path)
{
    const QString name = files::fileNamePart(path);
    const QString dir = files::directoryPart(path);
    if (dir != path)
        check(dir.size() + 1 + name.size() == path.size());
    const QString ext = files::extensionPart(path);
    const QString stripped = files::stripExtension(path);
    check(stripped.size() + (ext.isEmpty() && stripped == path ? 0 : ext.size() + 1) == path.size());
    check(files::baseName(path).size() <= name.size());
    files::fileNamePart(path, true);
    files::addTrailingSeparator(path);
    files::removeTrailingSeparator(path);
    files::trimControlChars(path, files::TrimBoth);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    const uint8_t flags = data[0];
    const bool keep = flags & 1;
    const std::optional<valtrona::ImageFormat> formats[] = {valtrona::ImageFormat::Jpeg, valtrona::ImageFormat::Png,
                                                           valtrona::ImageFormat::WebP, std::nullopt};
    const std::optional<valtrona::ImageFormat> format = formats[(flags >> 2) & 3];

    QString text;
    if (flags & 2)
        text = QString::fromUtf16(reinterpret_cast<const char16_t *>(data + 1), qsizetype((size - 1) / 2));
    else
        text = QString::fromUtf8(reinterpret_cast<const char *>(data + 1), qsizetype(size - 1));
    QStringList fields = text.split(QLatin1Char('\n'));
    while (fields.size() < 4)
        fields.append(QString());

    const QString &base = fields[0];
    const QString &source = fields[1];
    const QString &search = fields[2];
    const QString &replacement = fields[3];
    for (const QString &field : std::as_const(fields))
        exercisePathText(field);

    QString replaced = source;
    files::replaceAll(replaced, search, replacement, Qt::CaseInsensitive);
    files::replaceFirst(replaced, search, replacement, Qt::CaseSensitive);

    const QString out = QStringLiteral("/E/Out");
    const QString target = valtrona::composeTargetPath(out, base, source, keep, format);
    checkInside(target, out);
    checkInside(valtrona::renameTarget(target, search, replacement), out);

    const QString common = valtrona::commonBaseDirectory(fields.mid(1));
    for (const QString &s : fields.mid(1)) {
        const QString t = valtrona::composeTargetPath(out, common, s, keep, format);
        checkInside(t, out);
        checkInside(valtrona::renameTarget(t, search, replacement), out);
    }
    return 0;
}
