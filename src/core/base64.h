#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

namespace valtrona {

/// Base64 codec with ten selectable coding tables, line spanning, and
/// progress and timing signals.
///
///   code  alphabet                                           padding
///   0     RFC 4648 base64 (A-Z a-z 0-9 + /)                   "="
///   1     A-Z, "§!#$&()*-.:;<=>?@[\]^_{|}`", 0-9 + /          "~"
///   2     as 1 with a blank in place of "§"                   "~"
///   3..8  the codec's own permutations (no "-" in them)       "-"
///   9     RFC 4648 URL-safe (A-Z a-z 0-9 - _)                 "="
///
/// Characters are bytes (Latin-1), so "§" is byte 0xA7.
class Base64Encoding : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int activeCodingTable READ activeCodingTable WRITE setActiveCodingTable)

public:
    static constexpr int TableCount = 10;

    explicit Base64Encoding(QObject *parent = nullptr);

    int activeCodingTable() const;
    /// Selects a table and rebuilds the encode and decode tables. A code
    /// outside 0 to 9 is refused (returns false) and the table stays.
    bool setActiveCodingTable(int code);

    /// The 64 characters of the active table, value 0 first.
    QByteArray alphabet() const;
    char paddingCharacter() const;

    /// Encodes bytes; the output has exactly 4 characters per started group
    /// of three bytes, the last group padded. Empty input gives empty output
    /// and no signal.
    QByteArray encodeB64(const QByteArray &input);

    /// Decodes characters to bytes. Characters outside the alphabet (line
    /// breaks, blanks unless table 2 has them, anything foreign) are skipped;
    /// the first padding character ends the data. A last group of two or
    /// three characters gives one or two bytes, with or without padding.
    QByteArray decodeB64(const QByteArray &input);

    /// encodeB64() / decodeB64() on a string taken as one byte per character
    /// (Latin-1; other characters become "?").
    QString encodeB64Str(const QString &text);
    QString decodeB64Str(const QString &text);

    static QByteArray strToByteArray(const QString &text);
    static QString byteArrayToStr(const QByteArray &bytes);

    /// Breaks text into lines of `lineLength` bytes, each followed by CR LF.
    /// The number of breaks is round((n + n mod L) / L) with halves to even,
    /// so the output is n + 2 × that long: a short last line may go without
    /// its break, or be followed by one empty line. A line length below 1
    /// returns the input unchanged.
    static QByteArray span(int lineLength, const QByteArray &input);

    /// Removes every CR and LF, undoing span().
    static QByteArray unspan(const QByteArray &input);

Q_SIGNALS:
    /// Progress of an encode or decode in percent: 0 first, 100 last, and
    /// in between every time the processed input count reaches a multiple of
    /// the step (encode: round(n / 300), decode: n / 400 truncated; none when
    /// the step is 0).
    void progress(int percent);
    /// Duration of one encode or decode; `operation` is "Encode" or "Decode".
    void workingTime(qint64 milliseconds, const QString &operation);

private:
    void buildTables();

    int m_activeCodingTable = 0;
    QByteArray m_encodeTable;          // 64 entries
    unsigned char m_decodeTable[256];  // 255: not in the alphabet, 64: padding
    char m_padding = '=';
};

} // namespace valtrona
