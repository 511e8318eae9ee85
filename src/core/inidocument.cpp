#include "core/inifile.h"
#include "core/inifile_p.h"

#include <QStringDecoder>
#include <QStringEncoder>

namespace valtrona {

using namespace Qt::StringLiterals;
using detail::trimmedControl;

namespace {

// ---------------------------------------------------------------------------
// Bytes and text

constexpr QByteArrayView utf8Bom("\xEF\xBB\xBF");

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\v' || c == '\f' || c == '\r' || c == '\n';
}

QByteArrayView trimmedView(QByteArrayView text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && isBlank(text.at(begin)))
        ++begin;
    while (end > begin && isBlank(text.at(end - 1)))
        --end;
    return text.sliced(begin, end - begin);
}

bool isValidUtf8(QByteArrayView bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString ignored = decoder.decode(bytes);
    return !decoder.hasError();
}

// Names are matched like the platform's profile functions match them:
// trimmed, ignoring case.
bool sameName(const QString &a, const QString &b)
{
    return a.trimmed().compare(b.trimmed(), Qt::CaseInsensitive) == 0;
}

bool hasLineBreak(const QString &text)
{
    return text.contains(u'\r') || text.contains(u'\n');
}

// ---------------------------------------------------------------------------
// Lines of a document

struct Line
{
    qsizetype start = 0;      // first byte of the line (after a BOM on line 1)
    qsizetype contentEnd = 0; // end of the content, before the line break
    qsizetype end = 0;        // after the line break
};

enum class LineKind { Blank, Header, Comment, Key, Other };

// Line breaks are found with memchr-based searches, so long lines cost
// little even in an instrumented build.
QList<Line> splitLines(const QByteArray &bytes)
{
    QList<Line> lines;
    const qsizetype n = bytes.size();
    qsizetype i = bytes.startsWith(utf8Bom) ? utf8Bom.size() : 0;
    qsizetype nextCr = bytes.indexOf('\r', i);
    qsizetype nextLf = bytes.indexOf('\n', i);
    while (i < n) {
        if (nextCr >= 0 && nextCr < i)
            nextCr = bytes.indexOf('\r', i);
        if (nextLf >= 0 && nextLf < i)
            nextLf = bytes.indexOf('\n', i);
        qsizetype lineBreak = n;
        if (nextCr >= 0)
            lineBreak = nextCr;
        if (nextLf >= 0 && nextLf < lineBreak)
            lineBreak = nextLf;
        Line line;
        line.start = i;
        line.contentEnd = lineBreak;
        if (lineBreak < n)
            i = lineBreak == nextCr && nextLf == lineBreak + 1 ? lineBreak + 2 : lineBreak + 1;
        else
            i = n;
        line.end = i;
        lines.append(line);
    }
    return lines;
}

// A parsed view of a document: its lines and how the text is encoded.
class Parsed
{
public:
    explicit Parsed(const QByteArray &bytes)
        : m_bytes(bytes), m_lines(splitLines(bytes)), m_utf8(isValidUtf8(bytes))
    {
    }

    const QList<Line> &lines() const { return m_lines; }
    bool isUtf8() const { return m_utf8; }

    QByteArrayView content(const Line &line) const
    {
        return QByteArrayView(m_bytes).sliced(line.start, line.contentEnd - line.start);
    }

    QString decode(QByteArrayView bytes) const
    {
        return m_utf8 ? QString::fromUtf8(bytes) : QString::fromLatin1(bytes);
    }

    LineKind kind(const Line &line) const
    {
        const QByteArrayView text = trimmedView(content(line));
        if (text.isEmpty())
            return LineKind::Blank;
        if (text.front() == '[')
            return LineKind::Header;
        if (text.front() == ';')
            return LineKind::Comment;
        return text.contains('=') ? LineKind::Key : LineKind::Other;
    }

    // "[ name ] trailing" -> "name"; no "]": the rest of the line.
    QString headerName(const Line &line) const
    {
        QByteArrayView text = trimmedView(content(line)).sliced(1);
        const qsizetype close = text.indexOf(']');
        if (close >= 0)
            text = text.first(close);
        return decode(trimmedView(text));
    }

    // A key line's name: the text before the first "=", or the whole line.
    QString keyName(const Line &line) const
    {
        const QByteArrayView text = content(line);
        const qsizetype eq = text.indexOf('=');
        return decode(trimmedView(eq >= 0 ? text.first(eq) : text));
    }

    // Byte range of a key line's value, trimmed; empty range at the end of
    // the content when the line has no "=".
    std::pair<qsizetype, qsizetype> valueRange(const Line &line) const
    {
        const QByteArrayView text = content(line);
        const qsizetype eq = text.indexOf('=');
        if (eq < 0)
            return {line.contentEnd, line.contentEnd};
        qsizetype begin = line.start + eq + 1;
        qsizetype end = line.contentEnd;
        while (begin < end && isBlank(m_bytes.at(begin)))
            ++begin;
        while (end > begin && isBlank(m_bytes.at(end - 1)))
            --end;
        return {begin, end};
    }

    QString rawValue(const Line &line) const
    {
        const auto [begin, end] = valueRange(line);
        return decode(QByteArrayView(m_bytes).sliced(begin, end - begin));
    }

    // Index of the first header with that name, or -1.
    qsizetype findSection(const QString &section) const
    {
        for (qsizetype i = 0; i < m_lines.size(); ++i) {
            if (kind(m_lines.at(i)) == LineKind::Header && sameName(headerName(m_lines.at(i)), section))
                return i;
        }
        return -1;
    }

    // One past the last line of the section whose header is at `header`.
    qsizetype sectionEnd(qsizetype header) const
    {
        qsizetype i = header + 1;
        while (i < m_lines.size() && kind(m_lines.at(i)) != LineKind::Header)
            ++i;
        return i;
    }

    // Index of the first line in the section naming the key, or -1.
    qsizetype findKey(qsizetype header, const QString &key) const
    {
        const qsizetype end = sectionEnd(header);
        for (qsizetype i = header + 1; i < end; ++i) {
            const LineKind k = kind(m_lines.at(i));
            if ((k == LineKind::Key || k == LineKind::Other) && sameName(keyName(m_lines.at(i)), key))
                return i;
        }
        return -1;
    }

    // The line break to use for a line inserted after `line`.
    QByteArray lineBreakAfter(const Line &line) const
    {
        if (line.end > line.contentEnd)
            return m_bytes.sliced(line.contentEnd, line.end - line.contentEnd);
        for (const Line &other : m_lines) {
            if (other.end > other.contentEnd)
                return m_bytes.sliced(other.contentEnd, other.end - other.contentEnd);
        }
        return "\r\n"_ba;
    }

private:
    const QByteArray &m_bytes;
    QList<Line> m_lines;
    bool m_utf8;
};

// A value is stored so that reading it back gives exactly the same text:
// surrounding blanks or a pair of surrounding quotes would be lost on the
// read, so such a value gets one pair of quotes of its own.
QString storedValue(const QString &value)
{
    if (value.isEmpty())
        return value;
    const bool blankEdge = value.front().isSpace() || value.back().isSpace()
        || value.front().unicode() < 32 || value.back().unicode() < 32;
    const bool quoted = value.size() >= 2 && value.front() == u'"' && value.back() == u'"';
    if (blankEdge || quoted)
        return u'"' + value + u'"';
    return value;
}

QString unquoted(const QString &value)
{
    if (value.size() >= 2 && value.front() == u'"' && value.back() == u'"')
        return value.sliced(1, value.size() - 2);
    return value;
}

QByteArray withCrLf(const QByteArray &text)
{
    const QList<Line> lines = splitLines(text);
    QByteArray out;
    out.reserve(text.size() + lines.size());
    if (text.startsWith(utf8Bom))
        out.append(utf8Bom);
    for (const Line &line : lines) {
        out.append(QByteArrayView(text).sliced(line.start, line.contentEnd - line.start));
        if (line.end > line.contentEnd)
            out.append("\r\n");
    }
    return out;
}

// One layout pass on CR LF text, trimmed at both ends.
QByteArray tidyPass(const QByteArray &text)
{
    QByteArray out = text;
    out.replace("[", "\r\n[");
    const QByteArrayView three("\r\n\r\n\r\n");
    while (out.contains(three))
        out.replace(three, "\r\n\r\n");
    return trimmedControl(out);
}

bool isAscii(const QByteArray &bytes)
{
    for (const char c : bytes) {
        if (quint8(c) >= 0x80)
            return false;
    }
    return true;
}

// Sets a key in a document held as bytes, in the document's encoding
// (UTF-8 when the bytes are valid UTF-8, else Latin-1). Names are checked
// and trimmed by the caller.
void setInBytes(QByteArray &bytes, const QString &sectionName, const QString &keyName,
                const QString &value)
{
    const Parsed parsed(bytes);
    const auto encode = [&parsed](const QString &text) {
        return parsed.isUtf8() ? text.toUtf8() : text.toLatin1();
    };
    const QByteArray stored = encode(storedValue(value));

    const qsizetype header = parsed.findSection(sectionName);
    if (header >= 0) {
        const qsizetype keyLine = parsed.findKey(header, keyName);
        if (keyLine >= 0) {
            const Line &line = parsed.lines().at(keyLine);
            const auto [begin, end] = parsed.valueRange(line);
            const bool hasEquals = parsed.content(line).contains('=');
            bytes.replace(begin, end - begin, hasEquals ? stored : '=' + stored);
            return;
        }
        qsizetype anchor = header;
        const qsizetype end = parsed.sectionEnd(header);
        for (qsizetype i = header + 1; i < end; ++i) {
            const LineKind k = parsed.kind(parsed.lines().at(i));
            if (k == LineKind::Key || k == LineKind::Other)
                anchor = i;
        }
        const Line &line = parsed.lines().at(anchor);
        bytes.insert(line.contentEnd, parsed.lineBreakAfter(line) + encode(keyName) + '=' + stored);
        return;
    }

    const QByteArray lineBreak = parsed.lines().isEmpty()
        ? "\r\n"_ba
        : parsed.lineBreakAfter(parsed.lines().constLast());
    if (!parsed.lines().isEmpty()) {
        const Line &last = parsed.lines().constLast();
        if (last.end == last.contentEnd)
            bytes.append(lineBreak);
        if (parsed.kind(last) != LineKind::Blank)
            bytes.append(lineBreak);
    }
    bytes.append('[' + encode(sectionName) + ']' + lineBreak + encode(keyName) + '=' + stored
                   + lineBreak);
}

} // namespace

namespace detail {

QByteArray trimmedControl(const QByteArray &text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && quint8(text.at(begin)) <= 32)
        ++begin;
    while (end > begin && quint8(text.at(end - 1)) <= 32)
        --end;
    return text.sliced(begin, end - begin);
}

QStringList decodedLines(const QByteArray &bytes)
{
    const Parsed parsed(bytes);
    QStringList decoded;
    for (const Line &line : parsed.lines())
        decoded.append(parsed.decode(parsed.content(line)));
    return decoded;
}

} // namespace detail

// ---------------------------------------------------------------------------
// IniDocument

IniDocument::IniDocument(QByteArray bytes) : m_bytes(std::move(bytes)) {}


const QByteArray &IniDocument::bytes() const
{
    return m_bytes;
}

std::optional<QString> IniDocument::value(const QString &section, const QString &key) const
{
    const Parsed parsed(m_bytes);
    const qsizetype header = parsed.findSection(section);
    if (header < 0)
        return std::nullopt;
    const qsizetype line = parsed.findKey(header, key);
    if (line < 0)
        return std::nullopt;
    return unquoted(parsed.rawValue(parsed.lines().at(line)));
}

bool IniDocument::setValue(const QString &section, const QString &key, const QString &value)
{
    const QString sectionName = section.trimmed();
    const QString keyName = key.trimmed();
    if (sectionName.isEmpty() || keyName.isEmpty() || hasLineBreak(section) || hasLineBreak(key)
        || hasLineBreak(value) || sectionName.contains(u']') || keyName.contains(u'=')
        || keyName.startsWith(u'[') || keyName.startsWith(u';'))
        return false;

    // New text goes in the document's own encoding. An old single-byte file
    // keeps its encoding as long as the new text fits Latin-1 and the result
    // still reads the same way; otherwise it is converted to UTF-8 as a whole
    // first, so every other value keeps its meaning.
    if (!isValidUtf8(m_bytes)) {
        QStringEncoder latin1(QStringEncoder::Latin1);
        const QByteArray ignored = latin1.encode(sectionName + keyName + value);
        if (!latin1.hasError()) {
            QByteArray trial = m_bytes;
            setInBytes(trial, sectionName, keyName, value);
            if (!isValidUtf8(trial) || isAscii(trial)) {
                m_bytes = std::move(trial);
                return true;
            }
        }
        m_bytes = QString::fromLatin1(m_bytes).toUtf8();
    }
    setInBytes(m_bytes, sectionName, keyName, value);
    return true;
}

QStringList IniDocument::sectionEntries(const QString &section) const
{
    const Parsed parsed(m_bytes);
    QStringList entries;
    const qsizetype header = parsed.findSection(section);
    if (header < 0)
        return entries;
    const qsizetype end = parsed.sectionEnd(header);
    for (qsizetype i = header + 1; i < end; ++i) {
        const Line &line = parsed.lines().at(i);
        switch (parsed.kind(line)) {
        case LineKind::Blank:
        case LineKind::Header:
            break;
        case LineKind::Key:
            entries.append(parsed.keyName(line) + u'=' + parsed.rawValue(line));
            break;
        case LineKind::Comment:
        case LineKind::Other:
            entries.append(parsed.decode(trimmedView(parsed.content(line))));
            break;
        }
    }
    return entries;
}

bool IniDocument::hasSection(const QString &section) const
{
    return Parsed(m_bytes).findSection(section) >= 0;
}

QByteArray tidiedIniText(const QByteArray &text)
{
    // The pass is repeated until it changes nothing more (a bracket in the
    // middle of a line needs two), so that a tidied file is left alone at
    // the next start.
    QByteArray current = trimmedControl(withCrLf(text));
    for (int pass = 0; pass < 8; ++pass) {
        QByteArray next = tidyPass(current);
        if (next == current)
            break;
        current = std::move(next);
    }
    if (current.isEmpty())
        return current;
    current.append("\r\n");
    return current;
}

} // namespace valtrona
