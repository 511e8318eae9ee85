#include "core/fileservices.h"

#include "support/testsupport.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <functional>

#include <sys/stat.h>
#include <unistd.h>

namespace files = valtrona::files;
using valtrona::test::Sandbox;

namespace {

struct TextCase
{
    const char *name;
    std::function<QString(const QString &)> op;
    QString input;
    QString expected;
};

QString u8(const char *text)
{
    return QString::fromUtf8(text);
}

TEST(FileServices, PathTextIsTakenApartAtSlashesOnly)
{
    const auto add = [](const QString &p) { return files::addTrailingSeparator(p); };
    const auto remove = [](const QString &p) { return files::removeTrailingSeparator(p); };
    const auto name = [](const QString &p) { return files::fileNamePart(p); };
    const auto nameDropping = [](const QString &p) { return files::fileNamePart(p, true); };
    const auto base = [](const QString &p) { return files::baseName(p); };
    const auto dir = [](const QString &p) { return files::directoryPart(p); };
    const auto ext = [](const QString &p) { return files::extensionPart(p); };
    const auto strip = [](const QString &p) { return files::stripExtension(p); };

    const TextCase cases[] = {
        {"add", add, u8("  /Fotos/Urlaub  "), u8("/Fotos/Urlaub/")},
        {"add", add, u8(""), u8("")},
        {"add", add, u8("   "), u8("")},
        {"add", add, u8("/Fotos/"), u8("/Fotos/")},
        {"add", add, u8("a\\"), u8("a\\/")},
        {"remove", remove, u8("/"), u8("/")},
        {"remove", remove, u8("/a/"), u8("/a")},
        {"remove", remove, u8("a\\"), u8("a\\")},
        {"name", name, u8("/a/b.jpg"), u8("b.jpg")},
        {"name", name, u8("/bs/a\\b.jpg"), u8("a\\b.jpg")},
        {"name", name, u8("/a/b/"), u8("")},
        {"nameDropping", nameDropping, u8("/a/b/"), u8("b")},
        {"base", base, u8("/Fotos.2024/scan"), u8("scan")},
        {"base", base, u8("/x/a.b.jpg"), u8("a.b")},
        {"dir", dir, u8("bild.jpg"), u8("bild.jpg")},
        {"dir", dir, u8("/a/b/c.jpg"), u8("/a/b")},
        {"dir", dir, u8("C:\\A\\x.png"), u8("C:\\A\\x.png")},
        {"dir", dir, u8("/x.jpg"), u8("")},
        {"ext", ext, u8("/Fotos.2024/scan"), u8("")},
        {"ext", ext, u8("x.JPG"), u8("JPG")},
        {"ext", ext, u8("a\\b.c\\d"), u8("c\\d")},
        {"strip", strip, u8("/Fotos.2024/scan"), u8("/Fotos.2024/scan")},
        {"strip", strip, u8("/a/x.JPG"), u8("/a/x")},
        {"strip", strip, u8("/x/12:30.jpg"), u8("/x/12:30")},
    };
    for (const TextCase &c : cases)
        EXPECT_EQ(c.op(c.input), c.expected) << c.name << "(\"" << c.input.toStdString() << "\")";
}

TEST(FileServices, NamesThatAreNotUtf8KeepTheirBytesAndStayApart)
{
    const QString e4 = QString(QChar(0xDCE4));
    struct Case { QByteArray native; QString text; };
    const Case cases[] = {
        {"/a/\xc3\xa4rger.jpg", u8("/a/ärger.jpg")},
        {"/a/\xe4rger.jpg", u8("/a/") + e4 + u8("rger.jpg")},
        {"/a/\xf6rger.jpg", u8("/a/") + QChar(0xDCF6) + u8("rger.jpg")},
        {"\xf0\x9f\x98\x80\xe4", u8("\U0001F600") + e4},
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

TEST(FileServices, ReplaceResumesAfterTheReplacement)
{
    struct Case
    {
        const char *text, *find, *replacement;
        Qt::CaseSensitivity cs;
        const char *all;
        int allCount;
        const char *first;
    };
    const Case cases[] = {
        {"aXa", "a", "aa", Qt::CaseSensitive, "aaXaa", 2, "aaXa"},
        {"IMG img Img", "img", "Bild", Qt::CaseInsensitive, "Bild Bild Bild", 3, "Bild img Img"},
        {"IMG img Img", "img", "Bild", Qt::CaseSensitive, "IMG Bild Img", 1, "IMG Bild Img"},
        {"aaaa", "aa", "a", Qt::CaseSensitive, "aa", 2, "aaa"},
        {"abc", "", "x", Qt::CaseSensitive, "abc", 0, "abc"},
        {"Straße", "STRASSE", "x", Qt::CaseInsensitive, "Straße", 0, "Straße"},
    };
    for (const Case &c : cases) {
        QString all = u8(c.text);
        EXPECT_EQ(files::replaceAll(all, u8(c.find), u8(c.replacement), c.cs), c.allCount) << c.text;
        EXPECT_EQ(all, u8(c.all)) << c.text;
        QString first = u8(c.text);
        EXPECT_EQ(files::replaceFirst(first, u8(c.find), u8(c.replacement), c.cs), c.allCount > 0 ? 1 : 0);
        EXPECT_EQ(first, u8(c.first)) << c.text;
    }
}

TEST(FileServices, ExistenceQueries)
{
    Sandbox box;
    box.writeFile(QStringLiteral("Bilder/A.JPG"), "x");
    box.writeFile(QStringLiteral("Bilder/notes.txt"), "x");
    QDir().mkpath(box.filePath(QStringLiteral("Leer")));
    ASSERT_EQ(::symlink("nowhere", QFile::encodeName(box.filePath(QStringLiteral("dangling"))).constData()), 0);

    box.writeNativeFile("Latin/\xe4.jpg", "x");

    // `file`: fileExists (masks match, dangling links count); `there`:
    // pathExists (neither).
    struct Case { QString path; bool file; bool dir; bool there; };
    const Case cases[] = {
        {QString(), false, false, false},
        {QStringLiteral("."), false, true, true},
        {box.filePath(QStringLiteral("Bilder/A.JPG")), true, false, true},
        {box.filePath(QStringLiteral("Bilder")), true, true, true},
        {box.filePath(QStringLiteral("Bilder/")), true, true, true},
        {box.filePath(QStringLiteral("Bilder/*.jpg")), true, false, false},
        {box.filePath(QStringLiteral("Bilder/?.jpg")), true, false, false},
        {box.filePath(QStringLiteral("Bilder/*.png")), false, false, false},
        {box.filePath(QStringLiteral("Leer/*.*")), false, false, false},
        {box.filePath(QStringLiteral("Fehlt/*.jpg")), false, false, false},
        {box.filePath(QStringLiteral("missing.jpg")), false, false, false},
        {box.filePath(QStringLiteral("dangling")), true, false, false},
        {box.filePath(QStringLiteral("Latin/")) + QChar(0xDCE4) + QStringLiteral(".jpg"), true, false, true},
        {box.filePath(QStringLiteral("Latin/")) + QChar(0xFFFD) + QStringLiteral(".jpg"), false, false, false},
        {QStringLiteral("/"), true, true, true},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(files::fileExists(c.path), c.file) << c.path.toStdString();
        EXPECT_EQ(files::dirExists(c.path), c.dir) << c.path.toStdString();
        EXPECT_EQ(files::dirExistsNonEmpty(c.path), c.dir) << c.path.toStdString();
        EXPECT_EQ(files::pathExists(c.path), c.there) << c.path.toStdString();
    }
}

TEST(FileServices, TextFilesAreReplacedWhole)
{
    Sandbox box;
    const QString path = box.filePath(QStringLiteral("text.txt"));
    EXPECT_TRUE(files::writeFileText(path, u8("erste Fassung, länger")));
    EXPECT_TRUE(files::writeFileText(path, u8("zweite")));
    QString text = u8("unverändert");
    EXPECT_EQ(files::readFileText(path, text), 6);
    EXPECT_EQ(text, u8("zweite"));

    text = u8("unverändert");
    EXPECT_EQ(files::readFileText(box.filePath(QStringLiteral("fehlt.txt")), text), 0);
    EXPECT_EQ(text, u8("unverändert"));
}

TEST(FileServices, SetFileTimesSelectsTimes)
{
    Sandbox box;
    const QString path = box.writeFile(QStringLiteral("bild.jpg"), "x");
    const QDateTime written(QDate(2019, 7, 14), QTime(13, 5, 42), Qt::UTC);
    const QDateTime accessed(QDate(2020, 1, 2), QTime(3, 4, 5), Qt::UTC);

    ASSERT_TRUE(files::setFileTimes(path, written, 0));  // 0 means the write time
    EXPECT_EQ(QFileInfo(path).lastModified().toUTC(), written);

    ASSERT_TRUE(files::setFileTimes(path, accessed, files::LastAccessTime));
    QFileInfo info(path);
    EXPECT_EQ(info.lastModified().toUTC(), written);
    EXPECT_EQ(info.lastRead().toUTC(), accessed);

    // Local time is converted, so the same instant results.
    const QDateTime local = written.toLocalTime();
    ASSERT_TRUE(files::setFileTimes(path, local.addSecs(60), files::LastWriteTime | files::CreationTime));
    EXPECT_EQ(QFileInfo(path).lastModified().toUTC(), written.addSecs(60));

    // Before 1970 and with milliseconds.
    const QDateTime old(QDate(1965, 3, 1), QTime(8, 0, 0, 250), Qt::UTC);
    ASSERT_TRUE(files::setFileTimes(path, old, files::LastWriteTime));
    EXPECT_EQ(QFileInfo(path).lastModified().toUTC(), old);

    EXPECT_TRUE(files::setFileTimes(box.path(), written, files::LastWriteTime));
    EXPECT_EQ(QFileInfo(box.path()).lastModified().toUTC(), written);

    EXPECT_FALSE(files::setFileTimes(path, written, files::CreationTime));
    EXPECT_FALSE(files::setFileTimes(box.filePath(QStringLiteral("fehlt.jpg")), written));
    EXPECT_FALSE(files::setFileTimes(path, QDateTime()));
}

// root/ a.jpg b.JPG c.txt .hidden/h.jpg aa/z.jpg Sub/x.jpg Sub/y.Jpg
//       Sub/back -> root (a loop), loop -> root, dangling.jpg -> nowhere
class DirectoryWalk : public ::testing::Test
{
protected:
    void SetUp() override
    {
        for (const char *name : {"b.JPG", "a.jpg", "c.txt", ".hidden/h.jpg", "aa/z.jpg", "Sub/y.Jpg", "Sub/x.jpg"})
            m_box.writeFile(u8(name), "x");
        link(m_box.path(), QStringLiteral("loop"));
        link(QStringLiteral(".."), QStringLiteral("Sub/back"));
        link(QStringLiteral("nowhere.jpg"), QStringLiteral("dangling.jpg"));
        ::mkfifo(QFile::encodeName(m_box.filePath(QStringLiteral("pipe.jpg"))).constData(), 0600);
    }

    void link(const QString &target, const QString &name)
    {
        ASSERT_EQ(::symlink(QFile::encodeName(target).constData(),
                            QFile::encodeName(m_box.filePath(name)).constData()), 0);
    }

    QString root() const { return m_box.path() + QLatin1Char('/'); }

    QStringList relative(const QStringList &paths) const
    {
        QStringList out;
        for (const QString &path : paths) {
            EXPECT_TRUE(path.startsWith(root())) << path.toStdString();
            out.append(path.mid(root().size()));
        }
        return out;
    }

    Sandbox m_box;
};

TEST_F(DirectoryWalk, FollowsTheOrderAndMatchesTheMaskInAnyCase)
{
    struct Case
    {
        const char *what;
        QString mask;
        bool recurse;
        bool hidden;
        QStringList files;
    };
    const Case cases[] = {
        {"flat", QStringLiteral("*.jpg"), false, true,
         {QStringLiteral("a.jpg"), QStringLiteral("b.JPG")}},
        // Files of a directory first, then its subdirectories in name order.
        {"recursive mask", QStringLiteral("*.jpg"), true, true,
         {QStringLiteral("a.jpg"), QStringLiteral("b.JPG"), QStringLiteral(".hidden/h.jpg"),
          QStringLiteral("aa/z.jpg"), QStringLiteral("Sub/x.jpg"), QStringLiteral("Sub/y.Jpg")}},
        {"recursive mask, no hidden", QStringLiteral("*.JPG"), true, false,
         {QStringLiteral("a.jpg"), QStringLiteral("b.JPG"), QStringLiteral("aa/z.jpg"),
          QStringLiteral("Sub/x.jpg"), QStringLiteral("Sub/y.Jpg")}},
        // "*.*": subdirectories are walked where they are met.
        {"recursive all", QStringLiteral("*.*"), true, true,
         {QStringLiteral(".hidden/h.jpg"), QStringLiteral("a.jpg"), QStringLiteral("aa/z.jpg"),
          QStringLiteral("b.JPG"), QStringLiteral("c.txt"), QStringLiteral("Sub/x.jpg"),
          QStringLiteral("Sub/y.Jpg")}},
        {"single letter", QStringLiteral("?.txt"), true, true, {QStringLiteral("c.txt")}},
    };
    for (const Case &c : cases) {
        files::ListFilesOptions options;
        options.mask = c.mask;
        options.recurse = c.recurse;
        options.includeHidden = c.hidden;
        const auto result = files::listFiles(m_box.path(), options);
        ASSERT_TRUE(result.has_value()) << c.what;
        EXPECT_EQ(relative(result->files), c.files) << c.what;
        EXPECT_FALSE(result->cancelled);
    }
}

TEST_F(DirectoryWalk, JpegFilesOfAFolderLeaveHiddenOnesOutAndKeepEveryName)
{
    m_box.writeFile(u8("d.jpeg"), "x");
    m_box.writeFile(u8(".x.jpg"), "x");
    m_box.writeFile(u8(".thumbnails/normal/t.jpg"), "x");
    m_box.writeFile(u8("Sub/e.jpe"), "x");
    // Two Latin-1 names that only differ in their one non-UTF-8 byte, one
    // of them in a folder whose name is not UTF-8 either.
    m_box.writeNativeFile("\xe4.jpg", "x");
    m_box.writeNativeFile("\xf6/\xe4.JPEG", "x");

    const auto photos = files::listJpegFiles(root(), false);
    ASSERT_TRUE(photos.has_value());
    const QString e4 = QString(QChar(0xDCE4));
    EXPECT_EQ(relative(*photos),
              (QStringList{u8("a.jpg"), u8("b.JPG"), u8("d.jpeg"), e4 + u8(".jpg"), u8("aa/z.jpg"),
                           u8("Sub/x.jpg"), u8("Sub/y.Jpg"), QChar(0xDCF6) + u8("/") + e4 + u8(".JPEG")}));
    // Each one still names its own file.
    for (const QString &photo : *photos)
        EXPECT_TRUE(files::pathExists(photo)) << photo.toStdString();

    // A folder among other paths brings its photos in its place.
    const QString text = m_box.filePath(u8("c.txt"));
    const QStringList expanded = files::expandFolders({text, m_box.filePath(u8("aa")), text});
    EXPECT_EQ(relative(expanded), (QStringList{u8("c.txt"), u8("aa/z.jpg"), u8("c.txt")}));
}

TEST_F(DirectoryWalk, CollectsDirectoriesWithTrailingSeparator)
{
    files::ListFilesOptions options;
    options.recurse = true;
    options.collectFiles = false;
    options.collectDirectories = true;
    const auto result = files::listFiles(root(), options);
    ASSERT_TRUE(result.has_value());
    EXPECT_TRUE(result->files.isEmpty());
    // The links are entries of their directories; what they lead to is
    // walked once only.
    EXPECT_EQ(relative(result->directories),
              (QStringList{QStringLiteral(".hidden/"), QStringLiteral("aa/"), QStringLiteral("loop/"),
                           QStringLiteral("Sub/"), QStringLiteral("Sub/back/")}));
}

TEST_F(DirectoryWalk, SortsByPathOrByTime)
{
    files::ListFilesOptions options;
    options.mask = QStringLiteral("*.jpg");
    options.recurse = true;
    options.includeHidden = false;
    options.sort = files::ListSort::ByPath;
    auto result = files::listFiles(m_box.path(), options);
    ASSERT_TRUE(result.has_value());
    EXPECT_EQ(relative(result->files),
              (QStringList{QStringLiteral("a.jpg"), QStringLiteral("aa/z.jpg"), QStringLiteral("b.JPG"),
                           QStringLiteral("Sub/x.jpg"), QStringLiteral("Sub/y.Jpg")}));

    const QDateTime base(QDate(2021, 5, 1), QTime(12, 0), Qt::UTC);
    const char *newestLast[] = {"Sub/y.Jpg", "b.JPG", "aa/z.jpg", "a.jpg", "Sub/x.jpg"};
    for (int i = 0; i < 5; ++i)
        ASSERT_TRUE(files::setFileTimes(m_box.filePath(u8(newestLast[i])), base.addSecs(i)));
    options.sort = files::ListSort::ByModificationTime;
    result = files::listFiles(m_box.path(), options);
    ASSERT_TRUE(result.has_value());
    QStringList expected;
    for (const char *name : newestLast)
        expected.append(u8(name));
    EXPECT_EQ(relative(result->files), expected);
}

TEST_F(DirectoryWalk, CancelStopsBeforeTheNextDirectory)
{
    std::atomic_bool cancel = false;
    files::ListFilesOptions options;
    options.recurse = true;
    options.cancel = &cancel;
    // The flag is set by an event that runs while the walk serves events.
    QMetaObject::invokeMethod(QCoreApplication::instance(), [&cancel] { cancel = true; }, Qt::QueuedConnection);
    const auto result = files::listFiles(m_box.path(), options);
    ASSERT_TRUE(result.has_value());
    EXPECT_TRUE(result->cancelled);
    EXPECT_TRUE(result->files.isEmpty());

    options.processEvents = false;
    const auto untouched = files::listFiles(m_box.path(), options);
    ASSERT_TRUE(untouched.has_value());
    EXPECT_TRUE(untouched->cancelled);
}

TEST_F(DirectoryWalk, RefusesAMissingStart)
{
    for (const QString &start : {QString(), m_box.filePath(QStringLiteral("fehlt")),
                                 m_box.filePath(QStringLiteral("a.jpg"))}) {
        const auto result = files::listFiles(start);
        ASSERT_FALSE(result.has_value()) << start.toStdString();
        EXPECT_EQ(result.error().code, valtrona::ErrorCode::SourceMissing);
    }
}

} // namespace
