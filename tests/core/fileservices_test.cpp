#include "core/fileservices.h"

#include "support/testsupport.h"

#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace files = valtrona::files;
using valtrona::test::Sandbox;

namespace {

QString u8(const char *text)
{
    return QString::fromUtf8(text);
}

TEST(FileServices, PathTextIsTakenApartAtSlashesOnly)
{
    const struct
    {
        const char *name;
        QString (*op)(const QString &);
        const char *input;
        const char *expected;
    } cases[] = {
        {"add", files::addTrailingSeparator, "  /Fotos/Urlaub  ", "/Fotos/Urlaub/"},
        {"add", files::addTrailingSeparator, "   ", ""},
        {"add", files::addTrailingSeparator, "/Fotos/", "/Fotos/"},
        {"add", files::addTrailingSeparator, "a\\", "a\\/"},
        {"remove", files::removeTrailingSeparator, "/", "/"},
        {"name", [](const QString &p) { return files::fileNamePart(p); }, "/bs/a\\b.jpg", "a\\b.jpg"},
        {"nameDropping", [](const QString &p) { return files::fileNamePart(p, true); }, "/a/b/", "b"},
        {"base", files::baseName, "/Fotos.2024/scan", "scan"},
        {"base", files::baseName, "/x/a.b.jpg", "a.b"},
        {"dir", files::directoryPart, "/a/b/c.jpg", "/a/b"},
        {"dir", files::directoryPart, "C:\\A\\x.png", "C:\\A\\x.png"},
        {"ext", files::extensionPart, "/Fotos.2024/scan", ""},
        {"ext", files::extensionPart, "a\\b.c\\d", "c\\d"},
        {"strip", files::stripExtension, "/a/x.JPG", "/a/x"},
    };
    for (const auto &c : cases)
        EXPECT_EQ(c.op(u8(c.input)), u8(c.expected)) << c.name << "(\"" << c.input << "\")";
}

TEST(FileServices, NamesThatAreNotUtf8KeepTheirBytesAndStayApart)
{
    const QString e4 = QString(QChar(0xDCE4));
    struct Case { QByteArray native; QString text; };
    const Case cases[] = {
        {"/a/\xc3\xa4rger.jpg", u8("/a/ärger.jpg")},
        {"/a/\xe4rger.jpg", u8("/a/") + e4 + u8("rger.jpg")},
        {"\xf0\x9f\x98\x80\xe4", u8("\U0001F600") + e4},
        {"\xf0\x90\x82\x80", u8("\U00010080")}, // its low surrogate looks like a kept byte
        // Cut off, overlong, an encoded surrogate, beyond U+10FFFF: byte by byte.
        {"\xe2\x82", QString(QChar(0xDCE2)) + QChar(0xDC82)},
        {"\xc0\xaf", QString(QChar(0xDCC0)) + QChar(0xDCAF)},
        {"\xed\xb2\x80", QString(QChar(0xDCED)) + QChar(0xDCB2) + QChar(0xDC80)},
        {"\xf4\x90\x80\x80", QString(QChar(0xDCF4)) + QChar(0xDC90) + QChar(0xDC80) + QChar(0xDC80)},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(files::fileNameFromNative(c.native), c.text) << c.native.toHex().constData();
        EXPECT_EQ(files::nativeFileName(c.text), c.native) << c.native.toHex().constData();
    }
}

TEST(FileServices, SetFileTimesSelectsTimes)
{
    Sandbox box;
    const QString path = box.writeFile(QStringLiteral("bild.jpg"), "x");
    // Before 1970 and with milliseconds.
    const QDateTime written(QDate(1965, 3, 1), QTime(8, 0, 0, 250), Qt::UTC);
    const QDateTime accessed(QDate(2020, 1, 2), QTime(3, 4, 5), Qt::UTC);
    ASSERT_TRUE(files::setFileTimes(path, written, 0));  // 0 means the write time
    ASSERT_TRUE(files::setFileTimes(path, accessed, files::LastAccessTime | files::CreationTime));
    const QFileInfo info(path);
    EXPECT_EQ(info.lastModified().toUTC(), written);
    EXPECT_EQ(info.lastRead().toUTC(), accessed);

    EXPECT_FALSE(files::setFileTimes(path, written, files::CreationTime));
    EXPECT_FALSE(files::setFileTimes(box.filePath(QStringLiteral("fehlt.jpg")), written));
    EXPECT_FALSE(files::setFileTimes(path, QDateTime()));
}

// A folder of photos with hidden ones, links that loop back (Sub/back,
// loop), a dangling link, a named pipe and names that are not UTF-8: two
// Latin-1 names that differ only in their one non-UTF-8 byte, one of them
// in a folder whose name is not UTF-8 either.
TEST(FileServices, PhotoWalkLeavesHiddenOnesOutAndKeepsEveryName)
{
    Sandbox box;
    for (const char *name : {"b.JPG", "a.jpg", "c.txt", "d.jpeg", ".x.jpg", ".hidden/h.jpg",
                             ".thumbnails/normal/t.jpg", "aa/z.jpg", "Sub/y.Jpg", "Sub/x.jpg", "Sub/e.jpe"})
        box.writeFile(u8(name), "x");
    box.writeNativeFile("\xe4.jpg", "x");
    box.writeNativeFile("\xf6/\xe4.JPEG", "x");
    for (const auto &[target, name] : {std::pair {box.path(), u8("loop")}, {u8(".."), u8("Sub/back")},
                                       {u8("nowhere.jpg"), u8("dangling.jpg")}})
        ASSERT_EQ(::symlink(QFile::encodeName(target).constData(),
                            QFile::encodeName(box.filePath(name)).constData()), 0);
    ::mkfifo(QFile::encodeName(box.filePath(u8("pipe.jpg"))).constData(), 0600);
    const QString root = box.path() + QLatin1Char('/');
    const auto relative = [&root](const QStringList &paths) {
        QStringList out;
        for (const QString &path : paths) {
            EXPECT_TRUE(path.startsWith(root)) << path.toStdString();
            out.append(path.mid(root.size()));
        }
        return out;
    };

    const auto photos = files::listJpegFiles(root, false);
    ASSERT_TRUE(photos.has_value());
    const QString e4 = QString(QChar(0xDCE4));
    EXPECT_EQ(relative(*photos),
              (QStringList{u8("a.jpg"), u8("b.JPG"), u8("d.jpeg"), e4 + u8(".jpg"), u8("aa/z.jpg"),
                           u8("Sub/x.jpg"), u8("Sub/y.Jpg"), QChar(0xDCF6) + u8("/") + e4 + u8(".JPEG")}));
    // Each one still names its own file.
    for (const QString &photo : *photos)
        EXPECT_TRUE(files::pathExists(photo)) << photo.toStdString();

    // A folder among other paths brings its photos in its place.
    const QString text = box.filePath(u8("c.txt"));
    const QStringList expanded = files::expandFolders({text, box.filePath(u8("aa")), text});
    EXPECT_EQ(relative(expanded), (QStringList{u8("c.txt"), u8("aa/z.jpg"), u8("c.txt")}));

    // A walk must start at a folder.
    for (const QString &start : {QString(), box.filePath(u8("a.jpg"))})
        EXPECT_EQ(files::listFiles(start).error().code, valtrona::ErrorCode::SourceMissing) << start.toStdString();
}

} // namespace
