#include "core/base64.h"

#include <QList>
#include <QRandomGenerator>

#include <gtest/gtest.h>

#include <algorithm>

using valtrona::Base64Encoding;

namespace {

QByteArray randomBytes(qsizetype n, quint32 seed)
{
    QRandomGenerator generator(seed);
    QByteArray bytes(n, Qt::Uninitialized);
    for (char &b : bytes)
        b = static_cast<char>(generator.bounded(256));
    return bytes;
}

// Everything the codec reports during one call.
struct Events
{
    QList<int> progress;
    QList<QString> operations;
};

void recordEvents(Base64Encoding &codec, Events &events)
{
    QObject::connect(&codec, &Base64Encoding::progress, &codec,
                     [&events](int percent) { events.progress.append(percent); });
    QObject::connect(&codec, &Base64Encoding::workingTime, &codec,
                     [&events](qint64 ms, const QString &operation) {
                         EXPECT_GE(ms, 0);
                         events.operations.append(operation);
                     });
}

// Encoded with the standard table, decoded back; the rows without an
// encoding are what the decoder takes besides its own output.
TEST(Base64, KnownEncodingsAndWhatTheDecoderTolerates)
{
    const struct
    {
        const char *encoded;
        const char *plain;
        bool encodesTo; ///< encoding `plain` gives `encoded`
    } cases[] = {
        {"TWFu", "Man", true},       {"TQ==", "M", true},      {"TWE=", "Ma", true},
        {"Zm9vYg==", "foob", true},  {"", "", true},
        {"TWE", "Ma", false},        {"TQ", "M", false},       // no padding
        {"TWFuT", "Man", false},     // a lone sixth bit group carries no byte
        {" TW\tFu\r\n", "Man", false}, // white space anywhere
        {"TW\xE4" "Fu", "Man", false},  // a foreign byte
        {"TQ==TWFu", "M", false},    // padding ends the data
        {"====", "", false},
    };
    Base64Encoding codec;
    for (const auto &c : cases) {
        EXPECT_EQ(codec.decodeB64(c.encoded), QByteArray(c.plain)) << c.encoded;
        if (c.encodesTo) {
            EXPECT_EQ(codec.encodeB64(c.plain), QByteArray(c.encoded)) << c.plain;
        }
    }
}

// The 48 bytes whose bits, six at a time, are the values 0 to 63 in order:
// encoded, they spell the alphabet.
QByteArray everySextet()
{
    QByteArray bytes;
    for (int v = 0; v < 64; v += 4)
        bytes.append(char(v << 2 | (v + 1) >> 4)).append(char((v + 1) << 4 | (v + 2) >> 2)).append(char((v + 2) << 6 | (v + 3)));
    return bytes;
}

// Every table spells its alphabet and pads with its own character; data
// written with one of them must read back with the same table in any later
// version, so none of them may change.
TEST(Base64, EveryTableHasItsAlphabetAndPadding)
{
    const struct
    {
        int table;
        const char *alphabet;
        char padding;
    } cases[] = {
        {0, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/", '='},
        {1, "ABCDEFGHIJKLMNOPQRSTUVWXYZ\xA7!#$&()*-.:;<=>?@[\\]^_{|}`0123456789+/", '~'},
        {2, "ABCDEFGHIJKLMNOPQRSTUVWXYZ !#$&()*-.:;<=>?@[\\]^_{|}`0123456789+/", '~'},
        {3, "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789+/", '-'},
        {4, "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz+/", '-'},
        {5, "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ+/", '-'},
        {6, "/+9876543210zyxwvutsrqponmlkjihgfedcbaZYXWVUTSRQPONMLKJIHGFEDCBA", '-'},
        {7, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._", '-'},
        {8, "./0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz", '-'},
        {9, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_", '='},
    };
    Base64Encoding codec;
    for (const auto &c : cases) {
        ASSERT_TRUE(codec.setActiveCodingTable(c.table));
        const QByteArray alphabet(c.alphabet);
        ASSERT_EQ(alphabet.size(), 64) << "table " << c.table;
        EXPECT_EQ(codec.encodeB64(everySextet()), alphabet) << "table " << c.table;
        EXPECT_EQ(codec.decodeB64(alphabet), everySextet()) << "table " << c.table;
        EXPECT_EQ(codec.encodeB64("M"), alphabet.mid(19, 1) + alphabet.mid(16, 1) + c.padding + c.padding)
            << "table " << c.table;
        EXPECT_EQ(codec.paddingCharacter(), c.padding);
    }

    // "=" is a letter of table 1, not padding: four letters give three bytes.
    ASSERT_TRUE(codec.setActiveCodingTable(1));
    EXPECT_EQ(codec.decodeB64("TQ~~"), QByteArray("M"));
    EXPECT_EQ(codec.decodeB64("TQ==").size(), 3);

    // A table number out of range is refused and the table stays.
    EXPECT_FALSE(codec.setActiveCodingTable(Base64Encoding::TableCount));
    EXPECT_FALSE(codec.setActiveCodingTable(-1));
    EXPECT_EQ(codec.activeCodingTable(), 1);
}

TEST(Base64, RoundTripsThroughSpan)
{
    Base64Encoding codec;
    // The tables differ only in their letters (pinned above); table 2 holds
    // a blank, which the decoder must not skip.
    for (const int table : {0, 2}) {
        ASSERT_TRUE(codec.setActiveCodingTable(table));
        for (const qsizetype n : {1, 2, 3, 149, 150, 4099}) {
            const QByteArray bytes = randomBytes(n, quint32(table * 10007 + n));
            const QByteArray encoded = codec.encodeB64(bytes);
            EXPECT_EQ(encoded.size(), (n + 2) / 3 * 4) << "table " << table << " n " << n;
            const QByteArray spanned = Base64Encoding::span(76, encoded);
            EXPECT_EQ(codec.decodeB64(spanned), bytes) << "spanned, table " << table << " n " << n;
        }
    }
}

TEST(Base64, StringsAreOneBytePerCharacter)
{
    Base64Encoding codec;
    const QString text = QStringLiteral("Grüße §1");
    EXPECT_EQ(codec.encodeB64Str(text), QStringLiteral("R3L832UgpzE="));
    EXPECT_EQ(codec.decodeB64Str(QStringLiteral("R3L832UgpzE=")), text);
}

TEST(Base64, SpanLengthFollowsTheBreakCountRule)
{
    struct Case { qsizetype n; int lineLength; qsizetype spannedLength; };
    const Case cases[] = {
        {0, 4, 0},
        {8, 4, 12},   // two full lines
        {10, 4, 16},  // (10 + 2) / 4 = 3 breaks
        {9, 4, 13},   // (9 + 1) / 4 = 2.5 gives 2: the last line has no break
        {11, 4, 19},  // (11 + 3) / 4 = 3.5 gives 4: an empty line follows
        {5, 4, 9},    // (5 + 1) / 4 = 1.5 gives 2
        {3, 76, 3},   // (3 + 3) / 76 rounds to 0: no break at all
    };
    for (const Case &c : cases) {
        const QByteArray input(c.n, 'x');
        const QByteArray spanned = Base64Encoding::span(c.lineLength, input);
        EXPECT_EQ(spanned.size(), c.spannedLength) << "n " << c.n;
        EXPECT_EQ(Base64Encoding::unspan(spanned), input) << "n " << c.n;
    }
    EXPECT_EQ(Base64Encoding::span(4, "ABCDEFGHIJ"), QByteArray("ABCD\r\nEFGH\r\nIJ\r\n"));
    EXPECT_EQ(Base64Encoding::span(4, "ABCDEFGHIJK"), QByteArray("ABCD\r\nEFGH\r\nIJK\r\n\r\n"));
    EXPECT_EQ(Base64Encoding::span(4, "ABCDEFGHI"), QByteArray("ABCD\r\nEFGH\r\nI"));
    EXPECT_EQ(Base64Encoding::span(0, "ABC"), QByteArray("ABC"));
}

TEST(Base64, ProgressStepsFollowTheInputLength)
{
    // Encode: step round(n / 300), halves to even; decode: step n / 400.
    // Each call reports 0 first, 100 last, and one event per completed
    // group whose processed count is a multiple of the step.
    struct Case { bool encode; qsizetype n; qsizetype events; };
    const Case cases[] = {
        {true, 0, 0},      // empty input: no event at all
        {false, 0, 0},
        {true, 1, 2},
        {true, 149, 2},
        {true, 150, 2},    // 0.5 rounds to 0: no step
        {true, 151, 53},   // step 1: all 51 groups
        {true, 450, 77},   // 1.5 rounds to 2: groups 2, 4, ... 150
        {true, 600, 102},  // step 2: every second of 200 groups
        {true, 750, 127},  // 2.5 rounds to 2: 125 of 250 groups
        {true, 900, 302},  // step 3: all 300 groups
        {true, 1000, 335}, // step 3: 333 full groups, the short last not
        {false, 396, 2},   // step 0
        {false, 800, 202}, // step 2: all 200 groups
        {false, 1200, 102},// step 3: every third of 300 groups
    };
    for (const Case &c : cases) {
        Base64Encoding codec;
        Events events;
        const QByteArray input = c.encode ? randomBytes(c.n, 7) : QByteArray(c.n, 'A');
        recordEvents(codec, events);
        if (c.encode)
            codec.encodeB64(input);
        else
            codec.decodeB64(input);
        EXPECT_EQ(events.progress.size(), c.events) << (c.encode ? "encode " : "decode ") << c.n;
        if (c.n == 0) {
            EXPECT_TRUE(events.operations.isEmpty());
            continue;
        }
        ASSERT_FALSE(events.progress.isEmpty());
        EXPECT_EQ(events.progress.first(), 0);
        EXPECT_EQ(events.progress.last(), 100);
        EXPECT_TRUE(std::is_sorted(events.progress.cbegin(), events.progress.cend()));
        EXPECT_EQ(events.operations, QList<QString>{c.encode ? QStringLiteral("Encode") : QStringLiteral("Decode")});
    }
}

} // namespace
