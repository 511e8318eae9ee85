#include "core/fileservices.h"

// The path text and name functions of the file services: no file-system
// access.

namespace valtrona::files {

namespace {

// Index of the last "/" in text, -1 when there is none.
qsizetype lastSeparator(const QString &text)
{
    return text.lastIndexOf(QLatin1Char('/'));
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

// A byte of a name that is not part of valid UTF-8 is kept as a lone low
// surrogate; text decoded from valid UTF-8 never holds one.
constexpr char16_t escapeBase = 0xDC00;

bool isEscapedByte(const QString &text, qsizetype i)
{
    const char16_t u = text.at(i).unicode();
    return u >= escapeBase + 0x80 && u <= escapeBase + 0xFF && (i == 0 || !text.at(i - 1).isHighSurrogate());
}

// Length of the valid UTF-8 sequence at bytes[i] and its code point; 0 when
// the bytes there are not one (stray, cut off, overlong, surrogate, too big).
int utf8Sequence(QByteArrayView bytes, qsizetype i, char32_t &codePoint)
{
    const auto byte = [&](qsizetype at) { return static_cast<unsigned char>(bytes.at(at)); };
    const unsigned char lead = byte(i);
    int length = 0;
    char32_t smallest = 0;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
        codePoint = lead & 0x1F;
        smallest = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3;
        codePoint = lead & 0x0F;
        smallest = 0x800;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        codePoint = lead & 0x07;
        smallest = 0x10000;
    } else {
        return 0;
    }
    if (i + length > bytes.size())
        return 0;
    for (int k = 1; k < length; ++k) {
        const unsigned char next = byte(i + k);
        if ((next & 0xC0) != 0x80)
            return 0;
        codePoint = (codePoint << 6) | (next & 0x3F);
    }
    if (codePoint < smallest || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
        return 0;
    return length;
}

} // namespace

QString fileNameFromNative(QByteArrayView bytes)
{
    QString text;
    text.reserve(bytes.size());
    qsizetype i = 0;
    while (i < bytes.size()) {
        const auto lead = static_cast<unsigned char>(bytes.at(i));
        if (lead < 0x80) {
            text.append(QLatin1Char(char(lead)));
            ++i;
            continue;
        }
        char32_t codePoint = 0;
        const int length = utf8Sequence(bytes, i, codePoint);
        if (length == 0) {
            text.append(QChar(char16_t(escapeBase + lead)));
            ++i;
            continue;
        }
        const char32_t units[] = {codePoint};
        text.append(QString::fromUcs4(units, 1));
        i += length;
    }
    return text;
}

QByteArray nativeFileName(const QString &path)
{
    QByteArray bytes;
    qsizetype runStart = 0;
    for (qsizetype i = 0; i < path.size(); ++i) {
        if (!isEscapedByte(path, i))
            continue;
        bytes += QStringView(path).sliced(runStart, i - runStart).toUtf8();
        bytes += char(path.at(i).unicode() - escapeBase);
        runStart = i + 1;
    }
    bytes += QStringView(path).sliced(runStart).toUtf8();
    return bytes;
}

bool isSeparator(QChar c)
{
    return c == QLatin1Char('/');
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
