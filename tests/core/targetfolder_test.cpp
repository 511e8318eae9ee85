#include "core/targetfolder.h"

#include "support/testsupport.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace valtrona;
using valtrona::test::Sandbox;

namespace {

void makeLink(const QString &pointsTo, const QString &at)
{
    ASSERT_EQ(::symlink(QFile::encodeName(pointsTo).constData(), QFile::encodeName(at).constData()), 0);
}

files::TargetFolder openFolder(const QString &path)
{
    auto folder = files::TargetFolder::open(path);
    EXPECT_TRUE(folder.has_value()) << folder.error().detail.toStdString();
    return std::move(*folder);
}

Expected<void, Error> put(const files::TargetFolder &folder, const QString &relative, const QByteArray &bytes,
                          const files::CommitOptions &options = {})
{
    auto pending = folder.createPending();
    if (!pending)
        return unexpected(pending.error());
    if (auto written = pending->write(bytes); !written)
        return written;
    return folder.commit(*pending, relative, options);
}

TEST(TargetFolder, RelativePathsStayInsideTheFolder)
{
    Sandbox box;
    const files::TargetFolder folder = openFolder(box.filePath(u"out/"_s));
    EXPECT_EQ(folder.relativePath(box.filePath(u"out//sub/./b.jpg"_s)), u"sub/b.jpg"_s);
    for (const QString &outside : {u"out/sub/../../x.jpg"_s, u"out"_s, u"outer/a.jpg"_s})
        EXPECT_EQ(folder.relativePath(box.filePath(outside)), std::nullopt) << outside.toStdString();

    // The folder's own text may hold ".." and be relative; targets built on
    // that text are recognised.
    const QString winding = box.filePath(u"out/../out"_s);
    const files::TargetFolder again = openFolder(winding);
    EXPECT_EQ(again.path(), box.filePath(u"out"_s));
    EXPECT_EQ(again.relativePath(winding + u"/c.jpg"_s), u"c.jpg"_s);
}

TEST(TargetFolder, PutsFilesIntoPlaceWholeAndNeverThroughALink)
{
    Sandbox box;
    const QString outside = box.writeFile(u"elsewhere/precious.jpg"_s, "precious");
    ASSERT_TRUE(QDir().mkpath(box.filePath(u"out"_s)));
    makeLink(outside, box.filePath(u"out/linked.jpg"_s));
    makeLink(box.filePath(u"elsewhere"_s), box.filePath(u"out/away"_s));
    const files::TargetFolder folder = openFolder(box.filePath(u"out"_s));

    // A link at the target name is replaced itself; what it pointed to stays.
    ASSERT_TRUE(put(folder, u"linked.jpg"_s, "new").has_value());
    EXPECT_FALSE(QFileInfo(box.filePath(u"out/linked.jpg"_s)).isSymLink());
    EXPECT_EQ(test::readAll(box.filePath(u"out/linked.jpg"_s)), "new");
    EXPECT_EQ(test::readAll(outside), "precious");

    // A linked folder below the target folder is never entered.
    EXPECT_EQ(put(folder, u"away/precious.jpg"_s, "overwritten").error().code, ErrorCode::TargetPathUnsafe);
    EXPECT_EQ(folder.createFolders(u"away/deeper"_s).error().code, ErrorCode::TargetPathUnsafe);
    EXPECT_EQ(put(folder, u"../escape.jpg"_s, "x").error().code, ErrorCode::TargetPathUnsafe);
    EXPECT_EQ(test::readAll(outside), "precious");
    EXPECT_FALSE(QFileInfo::exists(box.filePath(u"escape.jpg"_s)));
    EXPECT_FALSE(QFileInfo::exists(box.filePath(u"elsewhere/deeper"_s)));

    // Missing folders on the way are made; a folder at the name is refused.
    ASSERT_TRUE(put(folder, u"a/b/c.jpg"_s, "deep").has_value());
    EXPECT_EQ(test::readAll(box.filePath(u"out/a/b/c.jpg"_s)), "deep");
    EXPECT_EQ(put(folder, u"a/b"_s, "x").error().code, ErrorCode::TargetOccupied);

    // Nothing else appeared: no temporary leftovers, no discarded output.
    {
        auto dropped = folder.createPending();
        ASSERT_TRUE(dropped.has_value());
        ASSERT_TRUE(dropped->write("never seen").has_value());
    }
    EXPECT_EQ(test::filesBelow(box.filePath(u"out"_s)), (QStringList {u"a/b/c.jpg"_s, u"linked.jpg"_s}));
    EXPECT_EQ(test::filesBelow(box.filePath(u"elsewhere"_s)), QStringList {u"precious.jpg"_s});
}

// A failed write leaves the old file; a replacing one keeps its permissions.
TEST(TargetFolder, ReplacingKeepsTheOldFileUntilTheNewOneIsWhole)
{
    Sandbox box;
    const QString target = box.writeFile(u"out/a.jpg"_s, "old");
    ASSERT_EQ(::chmod(QFile::encodeName(target).constData(), 0640), 0);
    const files::TargetFolder folder = openFolder(box.filePath(u"out"_s));
    Expected<void, Error> failed;
    {
        const test::FileSizeLimit limit(1000);
        failed = put(folder, u"a.jpg"_s, QByteArray(5000, 'x'));
    }
    EXPECT_EQ(failed.error().code, ErrorCode::FileSizeLimit);
    EXPECT_EQ(test::readAll(target), "old");
    EXPECT_EQ(test::filesBelow(box.filePath(u"out"_s)), QStringList {u"a.jpg"_s});

    const QDateTime stamp(QDate(2003, 4, 5), QTime(6, 7, 8), Qt::UTC);
    ASSERT_TRUE(put(folder, u"a.jpg"_s, "new", {stamp}).has_value());
    struct stat info {};
    ASSERT_EQ(::stat(QFile::encodeName(target).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    EXPECT_EQ(QFileInfo(target).lastModified().toUTC(), stamp);
    EXPECT_EQ(folder.entryIdentity(u"a.jpg"_s), files::entryIdentity(target));
}

TEST(TargetFolder, IdentityFollowsTheFileNotThePath)
{
    Sandbox box;
    const QString file = box.writeFile(u"src/a.jpg"_s, "a");
    makeLink(box.filePath(u"src"_s), box.filePath(u"via"_s));
    const QString hard = box.filePath(u"hard.jpg"_s);
    ASSERT_EQ(::link(QFile::encodeName(file).constData(), QFile::encodeName(hard).constData()), 0);

    const auto identity = files::fileIdentity(file);
    ASSERT_TRUE(identity.has_value());
    EXPECT_EQ(files::entryIdentity(box.filePath(u"via/a.jpg"_s)), identity);
    EXPECT_EQ(files::fileIdentity(hard), identity);
    EXPECT_NE(files::entryIdentity(box.filePath(u"via"_s)), files::fileIdentity(box.filePath(u"via"_s)));
    EXPECT_FALSE(files::fileIdentity(box.filePath(u"src/missing.jpg"_s)).has_value());
}

} // namespace
