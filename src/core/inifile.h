#pragma once

// The program's own INI engine, with private-profile rules:
// - section and key names are matched ignoring case (full Unicode case
//   folding) and trimmed of surrounding white space;
// - values are trimmed, and one pair of matching double quotes around a value
//   is removed when read by key;
// - CR LF, LF-only and CR-only files are all read;
// - writing an existing key replaces only its value, in place, and keeps every
//   other byte of the file; a new key goes after the last key of its section;
//   a new section is appended at the end of the file (after one empty line);
//   text before the first section is kept;
// - the first occurrence of a section or key wins when names repeat;
// - the file is UTF-8; a file that is not valid UTF-8 (an old file in a
//   single-byte code page) is read as Latin-1, and its bytes are kept as they
//   are wherever a write does not touch them.
//
// Every call opens the file anew (nothing is cached, so a change made by
// another copy of the program is seen by the next read), and every write goes
// to a temporary file in the same directory that is then renamed over the
// old one, under a lock file, so a crash never leaves a truncated file.
// Calls never raise and never show messages: a failed read gives the
// default, a failed write leaves the file as it was.
//
// Naming: the functions carry the names of the settings access routines in
// lower camelCase (ReadIniInt -> readIniInt, TidyIniFile -> tidyIniFile ...).

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace valtrona {

/// Values longer than this (in UTF-16 code units) are cut when read by key;
/// a read gives at most iniValueLimit - 1 characters.
inline constexpr qsizetype iniValueLimit = 4096;

/// Files at least this large are read section-wise by a plain line parser
/// (see readIniSection).
inline constexpr qsizetype iniLargeFileSize = 32501;

/// Files larger than this are treated as unreadable: reads give defaults and
/// writes leave them alone.
inline constexpr qsizetype iniMaxFileSize = 64 * 1024 * 1024;

/// An INI text held in memory, edited in place. The engine behind the file
/// functions below; usable on its own (tests, fuzzing, batched edits).
class IniDocument
{
public:
    IniDocument() = default;
    explicit IniDocument(QByteArray bytes);

    /// The file's bytes; std::nullopt when it is missing, unreadable or
    /// larger than iniMaxFileSize. An empty file gives an empty array.
    static std::optional<QByteArray> readFileBytes(const QString &path);

    const QByteArray &bytes() const;

    /// The value of a key, trimmed and with one pair of surrounding double
    /// quotes removed, not yet cut to iniValueLimit; std::nullopt when the
    /// section or key is missing. A line without "=" is a key with an empty
    /// value.
    std::optional<QString> value(const QString &section, const QString &key) const;

    /// Sets a key, creating section and key when missing (see the header
    /// comment for where they go). Returns false, and changes nothing, when
    /// a name is empty or cannot be stored on one line: a line break in any
    /// argument, "=" in the key or "]" in the section name, or a name that
    /// starts with "[" or ";".
    [[nodiscard]] bool setValue(const QString &section, const QString &key, const QString &value);

    /// The non-empty lines of a section in file order, trimmed; key lines
    /// given as "name=value" with name and value trimmed (quotes kept), other
    /// lines (comments included) as they stand. Empty when the section is
    /// missing.
    QStringList sectionEntries(const QString &section) const;

    /// True when a header of that name exists.
    bool hasSection(const QString &section) const;

private:
    QByteArray m_bytes;
};

/// Applies `edit` to the file's document (empty when the file is missing)
/// under the file's lock, and writes the result atomically when `edit`
/// returns true and the bytes changed. A file that exists but cannot be read
/// is left alone. Returns true when the file holds the edited document.
[[nodiscard]] bool editIniFile(const QString &file, const std::function<bool(IniDocument &)> &edit);

/// ReadIniInt: the value's leading decimal number (optional sign, clamped to
/// the 32-bit range); `defaultValue` when the key is missing or its value
/// empty; 0 when the value has no leading digits.
qint32 readIniInt(const QString &file, const QString &section, const QString &key,
                  qint32 defaultValue);

/// ReadIniString: the value, cut to iniValueLimit - 1 characters;
/// `defaultValue` when the key is missing or its value is empty.
QString readIniString(const QString &file, const QString &section, const QString &key,
                      const QString &defaultValue = {});

/// WriteIniString: writes one key (file, section and key created when
/// missing). Returns true when the file now holds the value.
bool writeIniString(const QString &file, const QString &section, const QString &key,
                    const QString &value);

/// EnsureIniDefault: the value of the key; when it is missing or empty,
/// writes `defaultValue` and returns it.
QString ensureIniDefault(const QString &file, const QString &section, const QString &key,
                         const QString &defaultValue);

/// ReadIniSection: the raw text of a section.
/// - Missing file: "0".
/// - File shorter than iniLargeFileSize: every entry (see
///   IniDocument::sectionEntries) followed by one NUL character; empty when
///   the section is missing or empty.
/// - Larger files: every non-empty trimmed line of the section preceded by one
///   NUL character (a line "[...]" ends the section).
QString readIniSection(const QString &file, const QString &section);

/// The entry splitting of ReadIniSectionPairs on a section text: pieces
/// between NUL characters; the last piece (after the last NUL, or the whole
/// text without one) counts only when it is longer than one character;
/// empty pieces and pieces starting with ";" are dropped; each piece splits
/// at its first "=" into name and value (no "=": empty name, the piece as
/// value). Clears and fills the two lists; returns their length.
int splitIniSection(const QString &sectionText, QStringList &names, QStringList &values);

/// ReadIniSectionPairs: readIniSection() and splitIniSection(). A missing
/// file or empty section gives 0.
int readIniSectionPairs(const QString &file, const QString &section, QStringList &names,
                        QStringList &values);

/// The layout pass of TidyIniFile on a text: line breaks made CR LF, the text
/// trimmed of bytes 0 to 32 at both ends, every "[" preceded by CR LF
/// (wherever it stands), runs of three CR LF reduced to two, trimmed again,
/// and one CR LF appended (an empty result stays empty).
QByteArray tidiedIniText(const QByteArray &text);

/// TidyIniFile: rewrites the file with tidiedIniText() when the trimmed
/// layout differs, so there is exactly one empty line before every section
/// header. A file already in that form, and a missing file, are left alone.
/// Returns true when the file was rewritten.
bool tidyIniFile(const QString &file);

} // namespace valtrona
