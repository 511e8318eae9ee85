#include "core/base64.h"

#include "core/numeric.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstring>

namespace valtrona {

namespace {

struct CodingTable
{
    const char *alphabet;  // 64 bytes, Latin-1
    char padding;
};

// Tables 3 to 8 are this codec's own; none of them holds its padding "-".
constexpr CodingTable codingTables[Base64Encoding::TableCount] = {
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/", '='},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZ\xA7!#$&()*-.:;<=>?@[\\]^_{|}`0123456789+/", '~'},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZ !#$&()*-.:;<=>?@[\\]^_{|}`0123456789+/", '~'},
    {"abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+/", '-'},
    {"0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz+/", '-'},
    {"0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ+/", '-'},
    {"/+9876543210zyxwvutsrqponmlkjihgfedcbaZYXWVUTSRQPONMLKJIHGFEDCBA", '-'},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._", '-'},
    {"./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", '-'},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_", '='},
};

constexpr unsigned char NotInAlphabet = 255;
constexpr unsigned char PaddingValue = 64;

int percentOf(qint64 done, qint64 total)
{
    return static_cast<int>(done * 100 / total);
}

} // namespace

Base64Encoding::Base64Encoding(QObject *parent) : QObject(parent)
{
    buildTables();
}

int Base64Encoding::activeCodingTable() const
{
    return m_activeCodingTable;
}

bool Base64Encoding::setActiveCodingTable(int code)
{
    if (code < 0 || code >= TableCount)
        return false;
    m_activeCodingTable = code;
    buildTables();
    return true;
}

QByteArray Base64Encoding::alphabet() const
{
    return m_encodeTable;
}

char Base64Encoding::paddingCharacter() const
{
    return m_padding;
}

void Base64Encoding::buildTables()
{
    const CodingTable &table = codingTables[m_activeCodingTable];
    m_encodeTable = QByteArray(table.alphabet, 64);
    m_padding = table.padding;
    std::memset(m_decodeTable, NotInAlphabet, sizeof m_decodeTable);
    m_decodeTable[static_cast<unsigned char>(m_padding)] = PaddingValue;
    for (int i = 0; i < 64; ++i)
        m_decodeTable[static_cast<unsigned char>(m_encodeTable.at(i))] = static_cast<unsigned char>(i);
}

QByteArray Base64Encoding::encodeB64(const QByteArray &input)
{
    QElapsedTimer timer;
    timer.start();
    const qint64 n = input.size();
    if (n == 0)
        return {};

    const auto step = static_cast<qint64>(roundHalfEven(double(n) / 300.0));
    const qint64 outLength = n % 3 != 0 ? ((n + 3 - n % 3) / 3) * 4 : (n / 3) * 4;
    QByteArray out(outLength, Qt::Uninitialized);
    Q_EMIT progress(0);

    const auto *in = reinterpret_cast<const unsigned char *>(input.constData());
    const char *enc = m_encodeTable.constData();
    char *dst = out.data();
    for (qint64 i = 0; i < n; i += 3) {
        const qint64 left = n - i;
        const unsigned b0 = in[i];
        const unsigned b1 = left > 1 ? in[i + 1] : 0;
        const unsigned b2 = left > 2 ? in[i + 2] : 0;
        *dst++ = enc[b0 >> 2];
        *dst++ = enc[((b0 & 0x03) << 4) | (b1 >> 4)];
        *dst++ = left > 1 ? enc[((b1 & 0x0F) << 2) | (b2 >> 6)] : m_padding;
        *dst++ = left > 2 ? enc[b2 & 0x3F] : m_padding;

        const qint64 processed = left > 2 ? i + 3 : n;
        if (step > 0 && processed % step == 0)
            Q_EMIT progress(percentOf(processed, n));
    }

    Q_EMIT progress(100);
    Q_EMIT workingTime(timer.elapsed(), QStringLiteral("Encode"));
    return out;
}

QByteArray Base64Encoding::decodeB64(const QByteArray &input)
{
    QElapsedTimer timer;
    timer.start();
    const qint64 n = input.size();
    if (n == 0)
        return {};

    const qint64 step = n / 400;
    QByteArray out((n / 4 + 1) * 3, Qt::Uninitialized);
    Q_EMIT progress(0);

    const auto *in = reinterpret_cast<const unsigned char *>(input.constData());
    char *dst = out.data();
    unsigned quad[4] = {0, 0, 0, 0};
    int have = 0;
    for (qint64 i = 0; i < n; ++i) {
        const unsigned char value = m_decodeTable[in[i]];
        if (value == NotInAlphabet)
            continue;  // line breaks, blanks and anything foreign
        if (value == PaddingValue)
            break;
        quad[have++] = value;
        if (have < 4)
            continue;
        *dst++ = static_cast<char>((quad[0] << 2) | ((quad[1] & 48) >> 4));
        *dst++ = static_cast<char>(((quad[1] & 15) << 4) | ((quad[2] & 60) >> 2));
        *dst++ = static_cast<char>(((quad[2] & 3) << 6) | quad[3]);
        have = 0;
        if (step > 0 && (i + 1) % step == 0)
            Q_EMIT progress(percentOf(i + 1, n));
    }
    // A short last group: two characters carry one byte, three carry two;
    // a single one carries no whole byte.
    if (have >= 2)
        *dst++ = static_cast<char>((quad[0] << 2) | ((quad[1] & 48) >> 4));
    if (have == 3)
        *dst++ = static_cast<char>(((quad[1] & 15) << 4) | ((quad[2] & 60) >> 2));
    out.truncate(dst - out.constData());

    Q_EMIT progress(100);
    Q_EMIT workingTime(timer.elapsed(), QStringLiteral("Decode"));
    return out;
}

QString Base64Encoding::encodeB64Str(const QString &text)
{
    return byteArrayToStr(encodeB64(strToByteArray(text)));
}

QString Base64Encoding::decodeB64Str(const QString &text)
{
    return byteArrayToStr(decodeB64(strToByteArray(text)));
}

QByteArray Base64Encoding::strToByteArray(const QString &text)
{
    return text.toLatin1();
}

QString Base64Encoding::byteArrayToStr(const QByteArray &bytes)
{
    return QString::fromLatin1(bytes);
}

QByteArray Base64Encoding::span(int lineLength, const QByteArray &input)
{
    const qint64 n = input.size();
    if (lineLength < 1 || n == 0)
        return input;
    const qint64 length = lineLength;
    const auto breaks = static_cast<qint64>(roundHalfEven(double(n + n % length) / double(length)));
    const qint64 outLength = n + 2 * breaks;

    QByteArray out;
    out.reserve(outLength);
    for (qint64 i = 0; i < n; i += length) {
        out.append(input.constData() + i, std::min(length, n - i));
        if (out.size() + 2 <= outLength)
            out.append("\r\n", 2);
    }
    // The break count may exceed the lines by one: an empty last line.
    while (out.size() + 2 <= outLength)
        out.append("\r\n", 2);
    return out;
}

QByteArray Base64Encoding::unspan(const QByteArray &input)
{
    QByteArray out;
    out.reserve(input.size());
    for (const char c : input) {
        if (c != '\r' && c != '\n')
            out.append(c);
    }
    return out;
}

} // namespace valtrona
