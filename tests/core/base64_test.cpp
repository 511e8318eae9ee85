#include "core/base64.h"

#include <QList>

#include <gtest/gtest.h>

using valtrona::Base64Encoding;

namespace {

// What the decoder takes besides its own output (standard table).
TEST(Base64, DecoderToleratesMissingPaddingAndForeignBytes)
{
    const struct
    {
        const char *encoded;
        const char *plain;
    } cases[] = {
        {"TWE=", "Ma"}, {"TWE", "Ma"}, {"TQ", "M"}, // with or without padding
        {"TWFuT", "Man"},       // a lone sixth bit group carries no byte
        {" TW\tFu\r\n", "Man"}, // white space anywhere, like any foreign byte
        {"TQ==TWFu", "M"},      // padding ends the data
    };
    Base64Encoding codec;
    for (const auto &c : cases)
        EXPECT_EQ(codec.decodeB64(c.encoded), QByteArray(c.plain)) << c.encoded;
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
        // Table 1's "=" and table 2's blank are letters, neither padding nor
        // skipped.
        EXPECT_EQ(codec.encodeB64(everySextet()), alphabet) << "table " << c.table;
        EXPECT_EQ(codec.decodeB64(alphabet), everySextet()) << "table " << c.table;
        // A last group of one or two bytes is padded.
        EXPECT_EQ(codec.encodeB64("M"), alphabet.mid(19, 1) + alphabet.mid(16, 1) + c.padding + c.padding)
            << "table " << c.table;
        EXPECT_EQ(codec.encodeB64("Ma"), alphabet.mid(19, 1) + alphabet.mid(22, 1) + alphabet.mid(4, 1) + c.padding)
            << "table " << c.table;
    }

    // A table number out of range is refused and the table stays.
    EXPECT_FALSE(codec.setActiveCodingTable(Base64Encoding::TableCount));
    EXPECT_FALSE(codec.setActiveCodingTable(-1));
    EXPECT_EQ(codec.activeCodingTable(), 9);
}

// round((n + n mod L) / L) breaks, halves to even: a short last line may go
// without its break, or be followed by an empty line.
TEST(Base64, SpanFollowsTheBreakCountRule)
{
    const struct
    {
        int lineLength;
        const char *input;
        const char *spanned;
    } cases[] = {
        {4, "ABCDEFGHIJ", "ABCD\r\nEFGH\r\nIJ\r\n"},      // (10 + 2) / 4 = 3
        {4, "ABCDEFGHI", "ABCD\r\nEFGH\r\nI"},            // 2.5 gives 2
        {4, "ABCDEFGHIJK", "ABCD\r\nEFGH\r\nIJK\r\n\r\n"}, // 3.5 gives 4
        {76, "ABC", "ABC"},                                // 6 / 76 gives 0
        {0, "ABC", "ABC"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(Base64Encoding::span(c.lineLength, c.input), QByteArray(c.spanned)) << c.input;
        EXPECT_EQ(Base64Encoding::unspan(c.spanned), QByteArray(c.input)) << c.input;
    }
}

// Progress: 0 first, 100 last, and one event per completed group whose
// processed count is a multiple of the step (encode: round(n / 300) with
// halves to even, decode: n / 400); nothing at all for empty input.
TEST(Base64, ProgressStepsFollowTheInputLength)
{
    struct Case { bool encode; qsizetype n; qsizetype events; };
    const Case cases[] = {
        {true, 0, 0},
        {true, 150, 2},    // 0.5 rounds to 0: no step
        {true, 450, 77},   // 1.5 rounds to 2: groups 2, 4, ... 150
        {true, 750, 127},  // 2.5 rounds to 2: 125 of 250 groups
        {true, 1000, 335}, // step 3: 333 full groups, the short last not
        {false, 396, 2},   // step 0
        {false, 1200, 102},// step 3: every third of 300 groups
    };
    for (const Case &c : cases) {
        Base64Encoding codec;
        QList<int> progress;
        QObject::connect(&codec, &Base64Encoding::progress, [&progress](int percent) { progress.append(percent); });
        const QByteArray input(c.n, 'A');
        static_cast<void>(c.encode ? codec.encodeB64(input) : codec.decodeB64(input));
        ASSERT_EQ(progress.size(), c.events) << (c.encode ? "encode " : "decode ") << c.n;
        if (c.n > 0) {
            EXPECT_EQ(progress.first(), 0);
            EXPECT_EQ(progress.last(), 100);
        }
    }
}

} // namespace
