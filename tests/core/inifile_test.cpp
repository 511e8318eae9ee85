#include "core/inifile.h"

#include "support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <limits>

using namespace valtrona;
using namespace Qt::StringLiterals;

namespace {

std::string show(const QByteArray &bytes)
{
    return bytes.toPercentEncoding(" =[];\"").toStdString();
}

TEST(IniDocumentTest, FindsValuesByPrivateProfileRules)
{
    const struct
    {
        const char *name;
        QByteArray file;
        QString section;
        QString key;
        std::optional<QString> expected;
    } cases[] = {
        {"names ignore case", "[Größe]\r\nÄrger=1\r\n", u"GRÖßE"_s, u"ärger"_s, u"1"_s},
        {"names trimmed", "  [ Last ]  \r\n\t Width \t=  7 \r\n", u" Last"_s, u"Width "_s, u"7"_s},
        {"only one quote pair", "[A]\r\nk= \"\"x\"\" \r\n", u"A"_s, u"k"_s, u"\"x\""_s},
        {"unmatched quote kept", "[A]\r\nk=\"x\r\n", u"A"_s, u"k"_s, u"\"x"_s},
        {"first = splits", "[A]\r\nk=a=b\r\n", u"A"_s, u"k"_s, u"a=b"_s},
        {"mixed breaks", "[A]\r\na=1\n[B]\rb=2\r\n", u"B"_s, u"b"_s, u"2"_s},
        {"first section wins", "[A]\r\nk=1\r\n[a]\r\nk=2\r\n", u"A"_s, u"k"_s, u"1"_s},
        {"first key wins", "[A]\r\nk=1\r\nK=2\r\n", u"A"_s, u"k"_s, u"1"_s},
        {"key of next section not taken", "[A]\r\n[B]\r\nk=1\r\n", u"A"_s, u"k"_s, std::nullopt},
        {"empty value", "[A]\r\nk=\r\n", u"A"_s, u"k"_s, QString()},
        {"line without =", "[A]\r\nflag\r\n", u"A"_s, u"flag"_s, QString()},
        {"comment is no key", "[A]\r\n;k=1\r\n", u"A"_s, u"k"_s, std::nullopt},
        {"header without ]", "[A\r\nk=1\r\n", u"A"_s, u"k"_s, u"1"_s},
        {"BOM before first header", "\xEF\xBB\xBF[A]\r\nk=1\r\n", u"A"_s, u"k"_s, u"1"_s},
        {"Latin-1 file", "[A]\r\np=C:\\J\xF6rg\r\n", u"A"_s, u"p"_s, u"C:\\Jörg"_s},
    };
    for (const auto &c : cases)
        EXPECT_EQ(IniDocument(c.file).value(c.section, c.key), c.expected) << c.name;
}

// Every write keeps every byte it does not have to change.
TEST(IniDocumentTest, WritesChangeOnlyWhatTheyMust)
{
    const struct
    {
        const char *name;
        QByteArray before;
        QString section;
        QString key;
        QString value;
        QByteArray after;
    } cases[] = {
        {"replaced in place", "; head\r\n[A]\r\nx = 1  \r\ny=2\n[B]\rz=3", u"a"_s, u"X"_s, u"10"_s,
         "; head\r\n[A]\r\nx = 10  \r\ny=2\n[B]\rz=3"},
        {"quoted value replaced", "[A]\r\nk=\"old\"\r\n", u"A"_s, u"k"_s, u"new"_s, "[A]\r\nk=new\r\n"},
        {"line without = gets one", "[A]\r\nflag\r\n", u"A"_s, u"flag"_s, u"1"_s, "[A]\r\nflag=1\r\n"},
        {"new key after last key", "[A]\r\na=1\r\n; c\r\n\r\n[B]\r\nb=1\r\n", u"A"_s, u"n"_s, u"2"_s,
         "[A]\r\na=1\r\nn=2\r\n; c\r\n\r\n[B]\r\nb=1\r\n"},
        {"new key keeps LF", "[A]\na=1\n[B]\n", u"A"_s, u"n"_s, u"2"_s, "[A]\na=1\nn=2\n[B]\n"},
        {"new section at the end", "x\r\n[A]\r\na=1\r\n", u"Last"_s, u"Style"_s, u"3"_s,
         "x\r\n[A]\r\na=1\r\n\r\n[Last]\r\nStyle=3\r\n"},
        {"new section after unterminated line", "[A]\na=1", u"N"_s, u"k"_s, u"v"_s, "[A]\na=1\n\n[N]\nk=v\n"},
        {"new section after blank line", "[A]\r\na=1\r\n\r\n", u"N"_s, u"k"_s, u"v"_s,
         "[A]\r\na=1\r\n\r\n[N]\r\nk=v\r\n"},
        {"new file", "", u" Last "_s, u" Style "_s, u"3"_s, "[Last]\r\nStyle=3\r\n"},
        {"blank edges quoted", "", u"A"_s, u"k"_s, u" x "_s, "[A]\r\nk=\" x \"\r\n"},
        {"quotes quoted", "", u"A"_s, u"k"_s, u"\"q\""_s, "[A]\r\nk=\"\"q\"\"\r\n"},
        {"Latin-1 file stays Latin-1", "[A]\r\np=\xE4\r\n", u"A"_s, u"q"_s, u"ö"_s, "[A]\r\np=\xE4\r\nq=\xF6\r\n"},
        {"Latin-1 file becomes UTF-8 for wider text", "[A]\r\np=\xE4\r\n", u"A"_s, u"q"_s, u"€"_s,
         "[A]\r\np=\xC3\xA4\r\nq=\xE2\x82\xAC\r\n"},
    };
    for (const auto &c : cases) {
        IniDocument document(c.before);
        ASSERT_TRUE(document.setValue(c.section, c.key, c.value)) << c.name;
        EXPECT_EQ(show(document.bytes()), show(c.after)) << c.name;
        EXPECT_EQ(document.value(c.section, c.key), c.value) << c.name << ": reads back what was written";
    }

    // What cannot be stored on one line is refused, and nothing changes.
    const QByteArray before = "[A]\r\nk=1\r\n";
    const struct
    {
        QString section;
        QString key;
        QString value;
    } refused[] = {
        {u"A"_s, u"k"_s, u"a\rb"_s}, {u"A\n"_s, u"k"_s, u"1"_s}, {u"A"_s, u"k=x"_s, u"1"_s},
        {u"A"_s, u" "_s, u"1"_s},     {u" "_s, u"k"_s, u"1"_s},    {u"A]"_s, u"k"_s, u"1"_s},
        {u"A"_s, u"[k"_s, u"1"_s},    {u"A"_s, u";k"_s, u"1"_s},
    };
    for (const auto &r : refused) {
        IniDocument document(before);
        EXPECT_FALSE(document.setValue(r.section, r.key, r.value)) << r.key.toStdString();
        EXPECT_EQ(document.bytes(), before);
    }
}

TEST(IniFileTest, ReadsIntegersAndLongValues)
{
    test::Sandbox sandbox;
    const QString file = sandbox.writeFile(u"v.ini"_s,
        "[JPG]\r\nA= 12abc\r\nB=abc\r\nC=\r\nD=-5\r\nE=99999999999\r\nG=+7\r\nH=-99999999999\r\nL="
        + QByteArray(5000, 'x') + "\r\n");
    const struct
    {
        const char16_t *key;
        qint32 expected;
    } ints[] = {
        {u"A", 12}, {u"B", 0}, {u"C", -1}, {u"D", -5}, {u"E", std::numeric_limits<qint32>::max()},
        {u"G", 7}, {u"H", std::numeric_limits<qint32>::min()},
    };
    for (const auto &c : ints)
        EXPECT_EQ(readIniInt(file, u"jpg"_s, QString::fromUtf16(c.key), -1), c.expected);

    EXPECT_EQ(readIniString(file, u"JPG"_s, u"L"_s).size(), iniValueLimit - 1);
    EXPECT_EQ(readIniString(file, u"JPG"_s, u"C"_s, u"dflt"_s), u"dflt"_s);
    EXPECT_EQ(readIniString(sandbox.filePath(u"missing.ini"_s), u"JPG"_s, u"A"_s, u"d"_s), u"d"_s);
}

TEST(IniFileTest, WritesAtomicallyAndSeesOtherWriters)
{
    test::Sandbox sandbox;
    const QString file = sandbox.filePath(u"v.ini"_s);
    EXPECT_EQ(ensureIniDefault(file, u"Last"_s, u"Width"_s, u"1024"_s), u"1024"_s);
    EXPECT_EQ(ensureIniDefault(file, u"LAST"_s, u"width"_s, u"9"_s), u"1024"_s);

    // Another copy of the program rewrites the file: the next read sees it.
    sandbox.writeFile(u"v.ini"_s, "[Last]\r\nWidth=640\r\n");
    EXPECT_EQ(readIniString(file, u"Last"_s, u"Width"_s), u"640"_s);

    EXPECT_TRUE(writeIniString(file, u"Last"_s, u"Height"_s, u"480"_s));
    EXPECT_EQ(test::readAll(file), "[Last]\r\nWidth=640\r\nHeight=480\r\n"_ba);
    EXPECT_EQ(QDir(sandbox.path()).entryList(QDir::Files), QStringList {u"v.ini"_s})
        << "no temporary or lock file left behind";

    // A settings file the user linked elsewhere is written where it lives.
    const QString linked = sandbox.filePath(u"linked.ini"_s);
    ASSERT_TRUE(QFile::link(file, linked));
    EXPECT_TRUE(writeIniString(linked, u"Last"_s, u"Width"_s, u"800"_s));
    EXPECT_TRUE(QFileInfo(linked).isSymLink());
    EXPECT_EQ(readIniString(file, u"Last"_s, u"Width"_s), u"800"_s);
}

TEST(IniFileTest, LeavesWhatItCannotUseAlone)
{
    test::Sandbox sandbox;
    // A directory where the file should be: reads give defaults, writes fail.
    const QString dir = sandbox.filePath(u"taken.ini"_s);
    QDir().mkpath(dir + u"/inner"_s);
    EXPECT_EQ(readIniInt(dir, u"A"_s, u"k"_s, 5), 5);
    EXPECT_FALSE(writeIniString(dir, u"A"_s, u"k"_s, u"1"_s));
    EXPECT_FALSE(tidyIniFile(dir));

    // A missing directory is not created.
    EXPECT_FALSE(writeIniString(sandbox.filePath(u"no/such/dir/v.ini"_s), u"A"_s, u"k"_s, u"1"_s));
    EXPECT_FALSE(QFileInfo::exists(sandbox.filePath(u"no"_s)));

    // An edit that changes nothing does not create the file, nor does tidying.
    const QString missing = sandbox.filePath(u"missing.ini"_s);
    EXPECT_TRUE(editIniFile(missing, [](IniDocument &) { return true; }));
    EXPECT_FALSE(tidyIniFile(missing));
    EXPECT_FALSE(QFileInfo::exists(missing));
}

TEST(IniSectionTest, ReadsRawEntries)
{
    test::Sandbox sandbox;
    const QByteArray text = "[A]\r\n  a = 1 \r\n\r\n;note\r\nflag\r\nq=\"x\"\r\n[B]\r\nb=2\r\n";
    const QString small = sandbox.writeFile(u"small.ini"_s, text);
    const QString nul(QChar(0));
    EXPECT_EQ(readIniSection(small, u"a"_s),
              u"a=1"_s + nul + u";note"_s + nul + u"flag"_s + nul + u"q=\"x\""_s + nul);
    EXPECT_EQ(readIniSection(sandbox.filePath(u"missing.ini"_s), u"A"_s), u"0"_s);

    // At 32501 bytes and more a plain line parser takes over; ordinary
    // entries still give their pairs.
    QByteArray padded = "[A]\r\n01=0180x0135\r\n02=0210x0158\r\n;c\r\n\r\n[B]\r\nb=2\r\n[Pad]\r\n";
    padded += QByteArray(iniLargeFileSize - padded.size(), 'p');
    const QString large = sandbox.writeFile(u"large.ini"_s, padded);
    QStringList names, values;
    EXPECT_EQ(readIniSectionPairs(large, u"a"_s, names, values), 2);
    EXPECT_EQ(names, (QStringList {u"01"_s, u"02"_s}));
    EXPECT_EQ(values, (QStringList {u"0180x0135"_s, u"0210x0158"_s}));
    EXPECT_EQ(readIniSection(large, u"B"_s), nul + u"b=2"_s);
}

// Pieces between NULs; empty ones, comments and a last piece of one
// character (a missing file's "0") are dropped; a piece without "=" is a
// value without a name.
TEST(IniSectionTest, SplitsEntriesAtNul)
{
    const QString nul(QChar(0));
    QStringList names {u"stale"_s}, values {u"stale"_s};
    EXPECT_EQ(splitIniSection(u"0"_s, names, values), 0);
    EXPECT_TRUE(names.isEmpty() && values.isEmpty());
    EXPECT_EQ(splitIniSection(u";x=1"_s + nul + nul + u"k=v=w"_s + nul + u"flag"_s + nul + u"b"_s, names, values), 2);
    EXPECT_EQ(names, (QStringList {u"k"_s, QString()}));
    EXPECT_EQ(values, (QStringList {u"v=w"_s, u"flag"_s}));
}

TEST(IniTidyTest, OneEmptyLineBeforeEveryHeader)
{
    const struct
    {
        QByteArray before;
        QByteArray after;
    } cases[] = {
        {"\r\n\r\n[A]\r\n\r\n\r\n\r\na=1\r\n\r\n\r\n[B]\r\n\r\n\r\n", "[A]\r\n\r\na=1\r\n\r\n[B]\r\n"},
        {"[A]\r\nPath=/a[b]/c\r\n", "[A]\r\nPath=/a\r\n\r\n[b]/c\r\n"},
        {"[A]\na=1\n[B]\rb=2", "[A]\r\na=1\r\n\r\n[B]\r\nb=2\r\n"},
        {"head [A]", "head \r\n\r\n[A]\r\n"},
        {" \t\r\n ", ""},
    };
    for (const auto &c : cases) {
        const QByteArray once = tidiedIniText(c.before);
        EXPECT_EQ(show(once), show(c.after));
        EXPECT_EQ(show(tidiedIniText(once)), show(once)) << "a tidied text stays as it is";
    }
}

TEST(IniTidyTest, RewritesOnlyWhenTheLayoutChanges)
{
    test::Sandbox sandbox;
    const QString file = sandbox.writeFile(u"v.ini"_s, "[A]\r\na=1\r\n[B]\r\n");
    EXPECT_TRUE(tidyIniFile(file));
    EXPECT_EQ(test::readAll(file), "[A]\r\na=1\r\n\r\n[B]\r\n"_ba);

    // Trailing blank lines alone are no reason to rewrite.
    sandbox.writeFile(u"v.ini"_s, "[A]\r\na=1\r\n\r\n[B]\r\n\r\n\r\n");
    EXPECT_FALSE(tidyIniFile(file));
    EXPECT_EQ(test::readAll(file), "[A]\r\na=1\r\n\r\n[B]\r\n\r\n\r\n"_ba);
}

} // namespace
