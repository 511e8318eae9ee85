#include "core/inifile.h"
#include "core/inifile_p.h"

#include "core/fileservices.h"

#include <QFile>
#include <QFileInfo>
#include <QLockFile>

#include <limits>

namespace valtrona {

using namespace Qt::StringLiterals;
using detail::trimmedControl;

namespace {

// ---------------------------------------------------------------------------
// Files

enum class FileState { Missing, Read, Unreadable };

struct FileBytes
{
    FileState state = FileState::Missing;
    QByteArray bytes;
};

FileBytes readFile(const QString &path)
{
    QFileInfo info(path);
    if (path.isEmpty() || (!info.exists() && !info.isSymLink()))
        return {FileState::Missing, {}};
    if (!info.isFile() || info.size() > iniMaxFileSize)
        return {FileState::Unreadable, {}};
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {FileState::Unreadable, {}};
    if (file.size() > iniMaxFileSize)
        return {FileState::Unreadable, {}};
    QByteArray bytes = file.readAll();
    if (bytes.size() > iniMaxFileSize || file.error() != QFileDevice::NoError)
        return {FileState::Unreadable, {}};
    return {FileState::Read, bytes};
}

// Serialises read-modify-write cycles of several copies of the program, so
// that each one's keys survive ("last writer wins per key"). When the lock
// cannot be had (read-only directory, a copy hanging on it) the work goes on
// unlocked, as the file functions never block for long.
class FileLock
{
public:
    explicit FileLock(const QString &path) : m_lock(path + u".lock"_s)
    {
        m_lock.setStaleLockTime(10000);
        m_lock.tryLock(2000);
    }

private:
    QLockFile m_lock;
};

} // namespace

std::optional<QByteArray> IniDocument::readFileBytes(const QString &path)
{
    FileBytes file = readFile(path);
    if (file.state != FileState::Read)
        return std::nullopt;
    return std::move(file.bytes);
}

// ---------------------------------------------------------------------------
// File functions

bool editIniFile(const QString &file, const std::function<bool(IniDocument &)> &edit)
{
    if (file.isEmpty())
        return false;
    FileLock lock(file);
    const FileBytes current = readFile(file);
    if (current.state == FileState::Unreadable)
        return false;
    IniDocument document(current.bytes);
    if (!edit(document))
        return false;
    if (document.bytes() == current.bytes)
        return true; // nothing to write; a missing file is not created empty
    return files::writeFileAtomically(file, document.bytes(), files::AtLink::WriteTarget).has_value();
}

qint32 readIniInt(const QString &file, const QString &section, const QString &key,
                  qint32 defaultValue)
{
    const QString text = readIniString(file, section, key);
    if (text.isEmpty())
        return defaultValue;
    qsizetype i = 0;
    bool negative = false;
    if (text.at(0) == u'-' || text.at(0) == u'+') {
        negative = text.at(0) == u'-';
        ++i;
    }
    qint64 value = 0;
    for (; i < text.size() && text.at(i) >= u'0' && text.at(i) <= u'9'; ++i) {
        value = value * 10 + (text.at(i).unicode() - u'0');
        if (value > qint64(std::numeric_limits<qint32>::max()) + 1)
            value = qint64(std::numeric_limits<qint32>::max()) + 1;
    }
    if (negative)
        value = -value;
    return qint32(qBound(qint64(std::numeric_limits<qint32>::min()), value,
                         qint64(std::numeric_limits<qint32>::max())));
}

QString readIniString(const QString &file, const QString &section, const QString &key,
                      const QString &defaultValue)
{
    const std::optional<QByteArray> bytes = IniDocument::readFileBytes(file);
    if (!bytes)
        return defaultValue;
    QString value = IniDocument(*bytes).value(section, key).value_or(QString());
    if (value.isEmpty())
        return defaultValue;
    if (value.size() >= iniValueLimit) {
        qsizetype cut = iniValueLimit - 1;
        if (value.at(cut - 1).isHighSurrogate())
            --cut;
        value.truncate(cut);
    }
    return value;
}

bool writeIniString(const QString &file, const QString &section, const QString &key,
                    const QString &value)
{
    return editIniFile(file, [&](IniDocument &document) {
        return document.setValue(section, key, value);
    });
}

QString ensureIniDefault(const QString &file, const QString &section, const QString &key,
                         const QString &defaultValue)
{
    const QString value = readIniString(file, section, key);
    if (!value.isEmpty())
        return value;
    // The default holds whether or not the file could take it.
    static_cast<void>(writeIniString(file, section, key, defaultValue));
    return defaultValue;
}

QString readIniSection(const QString &file, const QString &section)
{
    const FileBytes current = readFile(file);
    if (current.state == FileState::Missing)
        return u"0"_s;
    if (current.state == FileState::Unreadable)
        return {};

    if (current.bytes.size() < iniLargeFileSize) {
        QString text;
        const QStringList entries = IniDocument(current.bytes).sectionEntries(section);
        for (const QString &entry : entries)
            text += entry + QChar(0);
        return text;
    }

    // Large files: a plain line parser.
    const QString wanted = u'[' + section + u']';
    QString text;
    bool collecting = false;
    for (const QString &line : detail::decodedLines(current.bytes)) {
        const QString content = line.trimmed();
        if (content.startsWith(u'[') && content.endsWith(u']'))
            collecting = false;
        if (collecting && !content.isEmpty())
            text += QChar(0) + content;
        if (content.compare(wanted, Qt::CaseInsensitive) == 0)
            collecting = true;
    }
    return text;
}

int splitIniSection(const QString &sectionText, QStringList &names, QStringList &values)
{
    names.clear();
    values.clear();
    QStringList pieces;
    qsizetype start = 0;
    for (;;) {
        const qsizetype nul = sectionText.indexOf(QChar(0), start);
        if (nul < 0)
            break;
        pieces.append(sectionText.sliced(start, nul - start));
        start = nul + 1;
    }
    // The remainder counts only when it starts before the text's last
    // character, so a last piece of one character is dropped.
    if (start < sectionText.size() - 1)
        pieces.append(sectionText.sliced(start));

    for (const QString &piece : std::as_const(pieces)) {
        if (piece.isEmpty() || piece.startsWith(u';'))
            continue;
        const qsizetype eq = piece.indexOf(u'=');
        names.append(eq >= 0 ? piece.first(eq) : QString());
        values.append(eq >= 0 ? piece.sliced(eq + 1) : piece);
    }
    return int(names.size());
}

int readIniSectionPairs(const QString &file, const QString &section, QStringList &names,
                        QStringList &values)
{
    return splitIniSection(readIniSection(file, section), names, values);
}

bool tidyIniFile(const QString &file)
{
    if (file.isEmpty())
        return false;
    FileLock lock(file);
    const FileBytes current = readFile(file);
    if (current.state != FileState::Read)
        return false;
    const QByteArray tidied = tidiedIniText(current.bytes);
    if (trimmedControl(tidied) == trimmedControl(current.bytes))
        return false;
    return files::writeFileAtomically(file, tidied, files::AtLink::WriteTarget).has_value();
}

} // namespace valtrona
