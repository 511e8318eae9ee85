#include "core/trash.h"

#include "support/testsupport.h"

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

#include <sys/stat.h>
#include <unistd.h>

namespace files = valtrona::files;
using valtrona::test::readAll;
using valtrona::test::Sandbox;

namespace {

struct TrashInfo
{
    QString path;       // decoded
    QDateTime deleted;
    bool wellFormed = false;
};

TrashInfo parseTrashInfo(const QString &infoPath)
{
    const QList<QByteArray> lines = readAll(infoPath).split('\n');
    TrashInfo info;
    if (lines.size() != 4 || lines[0] != "[Trash Info]" || !lines[1].startsWith("Path=")
        || !lines[2].startsWith("DeletionDate=") || !lines[3].isEmpty()) {
        return info;
    }
    const QByteArray encodedPath = lines[1].mid(5);
    // Percent-encoded: nothing but unreserved characters, "/" and escapes.
    for (const char c : encodedPath) {
        if (!(QChar::fromLatin1(c).isLetterOrNumber() || QByteArray("-._~/%").contains(c)))
            return info;
    }
    info.path = QFile::decodeName(QByteArray::fromPercentEncoding(encodedPath));
    info.deleted = QDateTime::fromString(QString::fromLatin1(lines[2].mid(13)),
                                         QStringLiteral("yyyy-MM-dd'T'HH:mm:ss"));
    info.wellFormed = info.deleted.isValid();
    return info;
}

// Points XDG_DATA_HOME at a directory that does not exist yet, so the trash
// and its parents have to be created.
class Trash : public ::testing::Test
{
protected:
    QString trashDir() const { return m_dataHome + QStringLiteral("/Trash"); }

    Sandbox m_home;
    Sandbox m_work;
    QString m_dataHome = m_home.filePath(QStringLiteral("noch/nicht/share"));
    valtrona::test::ScopedEnvironment m_environment {"XDG_DATA_HOME", m_dataHome};
};

TEST_F(Trash, FileIsRecoverableWithItsTrashInfo)
{
    EXPECT_EQ(files::homeTrashDirectory(), trashDir());
    const QString name = QStringLiteral("Ürlaub 100% #1.jpg");
    const QString source = m_work.writeFile(QStringLiteral("Fotos/") + name, "bilddaten");
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);

    const auto trashed = files::moveToTrash(source);
    ASSERT_TRUE(trashed.has_value()) << trashed.error().detail.toStdString();
    EXPECT_FALSE(QFileInfo::exists(source));
    EXPECT_EQ(trashed->trashedPath, trashDir() + QStringLiteral("/files/") + name);
    EXPECT_EQ(trashed->infoPath, trashDir() + QStringLiteral("/info/") + name + QStringLiteral(".trashinfo"));
    EXPECT_EQ(readAll(trashed->trashedPath), QByteArray("bilddaten"));

    const TrashInfo info = parseTrashInfo(trashed->infoPath);
    ASSERT_TRUE(info.wellFormed) << readAll(trashed->infoPath).toStdString();
    EXPECT_EQ(info.path, QFileInfo(source).absoluteFilePath());
    EXPECT_GE(info.deleted, before.addMSecs(-before.time().msec()));
    EXPECT_LE(info.deleted, QDateTime::currentDateTime());
    EXPECT_NE(readAll(trashed->infoPath).indexOf("%20100%25%20%231.jpg"), -1);

    // The trash is private to its user.
    QFileInfo trashInfo(trashDir());
    EXPECT_EQ(trashInfo.permissions() & (QFileDevice::ReadGroup | QFileDevice::ReadOther), 0);

    // Restoring is a rename back to the recorded path.
    ASSERT_TRUE(QFile::rename(trashed->trashedPath, info.path));
    EXPECT_EQ(readAll(source), QByteArray("bilddaten"));
}

TEST_F(Trash, SameNamesGetUniqueEntries)
{
    QStringList trashedPaths;
    for (const char *dir : {"a", "b", "c"}) {
        const QString source = m_work.writeFile(QString::fromLatin1(dir) + QStringLiteral("/IMG_1.jpg"),
                                                QByteArray(dir));
        const auto trashed = files::moveToTrash(source);
        ASSERT_TRUE(trashed.has_value());
        trashedPaths.append(QFileInfo(trashed->trashedPath).fileName());
        EXPECT_EQ(parseTrashInfo(trashed->infoPath).path, source);
        EXPECT_EQ(readAll(trashed->trashedPath), QByteArray(dir));
    }
    EXPECT_EQ(trashedPaths, (QStringList{QStringLiteral("IMG_1.jpg"), QStringLiteral("IMG_1.2.jpg"),
                                         QStringLiteral("IMG_1.3.jpg")}));
}

TEST_F(Trash, LongNamesAreShortenedToFitTheInfoFile)
{
    const QString name = QString(240, QLatin1Char('x')) + QStringLiteral("ö.jpeg");  // 247 bytes
    QStringList trashedNames;
    for (const char *dir : {"a", "b"}) {
        const QString source = m_work.writeFile(QString::fromLatin1(dir) + QLatin1Char('/') + name, dir);
        const auto trashed = files::moveToTrash(source);
        ASSERT_TRUE(trashed.has_value()) << trashed.error().detail.toStdString();
        const QString trashedName = QFileInfo(trashed->trashedPath).fileName();
        EXPECT_LE(QFile::encodeName(trashedName).size() + 10, 255);
        EXPECT_TRUE(trashedName.endsWith(QStringLiteral(".jpeg")));
        EXPECT_EQ(parseTrashInfo(trashed->infoPath).path, source);
        trashedNames.append(trashedName);
    }
    EXPECT_NE(trashedNames[0], trashedNames[1]);
}

TEST_F(Trash, DirectoriesAndLinksGoWhole)
{
    m_work.writeFile(QStringLiteral("Ordner/unter/bild.jpg"), "x");
    const auto dir = files::moveToTrash(m_work.filePath(QStringLiteral("Ordner/")));
    ASSERT_TRUE(dir.has_value());
    EXPECT_FALSE(QFileInfo::exists(m_work.filePath(QStringLiteral("Ordner"))));
    EXPECT_EQ(readAll(dir->trashedPath + QStringLiteral("/unter/bild.jpg")), QByteArray("x"));
    EXPECT_EQ(parseTrashInfo(dir->infoPath).path, m_work.filePath(QStringLiteral("Ordner")));

    const QString target = m_work.writeFile(QStringLiteral("ziel.jpg"), "ziel");
    const QString link = m_work.filePath(QStringLiteral("verweis.jpg"));
    ASSERT_EQ(::symlink(QFile::encodeName(target).constData(), QFile::encodeName(link).constData()), 0);
    const auto trashedLink = files::moveToTrash(link);
    ASSERT_TRUE(trashedLink.has_value());
    EXPECT_TRUE(QFileInfo(trashedLink->trashedPath).isSymLink());
    EXPECT_EQ(readAll(target), QByteArray("ziel"));
}

TEST_F(Trash, RefusesWhatCannotGo)
{
    EXPECT_EQ(files::deleteToRecycleBin(QString()), -1);
    EXPECT_FALSE(QFileInfo::exists(trashDir()));
    EXPECT_EQ(files::deleteToRecycleBin(m_work.filePath(QStringLiteral("fehlt.jpg"))), 1);

    const auto missing = files::moveToTrash(m_work.filePath(QStringLiteral("fehlt.jpg")));
    ASSERT_FALSE(missing.has_value());
    EXPECT_EQ(missing.error().code, valtrona::ErrorCode::SourceMissing);

    // A directory that holds the trash itself stays where it is.
    const QString source = m_work.writeFile(QStringLiteral("eins.jpg"), "1");
    ASSERT_EQ(files::deleteToRecycleBin(source), 0);
    const auto holder = files::moveToTrash(m_home.filePath(QStringLiteral("noch")));
    ASSERT_FALSE(holder.has_value());
    EXPECT_EQ(holder.error().code, valtrona::ErrorCode::TargetNotWritable);
    EXPECT_TRUE(QFileInfo::exists(trashDir() + QStringLiteral("/files/eins.jpg")));
}

TEST_F(Trash, TopDirectoryTrashRecordsRelativePaths)
{
    const QString top = m_work.filePath(QStringLiteral("platte"));
    const QString source = m_work.writeFile(QStringLiteral("platte/Fotos/b 1.jpg"), "b");
    const files::TrashLocation location{top + QStringLiteral("/.Trash-") + QString::number(::getuid()), top};
    const auto trashed = files::moveToTrashAt(source, location);
    ASSERT_TRUE(trashed.has_value());
    EXPECT_EQ(trashed->trashedPath, location.path + QStringLiteral("/files/b 1.jpg"));
    const TrashInfo info = parseTrashInfo(trashed->infoPath);
    ASSERT_TRUE(info.wellFormed);
    EXPECT_EQ(info.path, QStringLiteral("Fotos/b 1.jpg"));
    EXPECT_NE(readAll(trashed->infoPath).indexOf("Path=Fotos/b%201.jpg\n"), -1);
}

// A directory on a second file system (/dev/shm on most machines), or null.
std::unique_ptr<QTemporaryDir> otherFileSystem(const QString &here)
{
    auto dir = std::make_unique<QTemporaryDir>(QStringLiteral("/dev/shm/valtrona-trash-XXXXXX"));
    struct stat a {}, b {};
    if (!dir->isValid() || ::stat(QFile::encodeName(dir->path()).constData(), &a) != 0
        || ::stat(QFile::encodeName(here).constData(), &b) != 0 || a.st_dev == b.st_dev) {
        return nullptr;
    }
    return dir;
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

TEST_F(Trash, AcrossFileSystemsTheCopyIsCompleteBeforeTheOriginalGoes)
{
    const auto other = otherFileSystem(m_home.path());
    if (!other)
        GTEST_SKIP() << "no second writable file system";
    const QString file = other->filePath(QStringLiteral("quelle.jpg"));
    writeFile(file, "fern");
    writeFile(other->filePath(QStringLiteral("baum/ast/blatt.jpg")), "blatt");

    const files::TrashLocation home{files::homeTrashDirectory(), QString()};
    const auto trashedFile = files::moveToTrashAt(file, home);
    ASSERT_TRUE(trashedFile.has_value());
    EXPECT_FALSE(QFileInfo::exists(file));
    EXPECT_EQ(readAll(trashedFile->trashedPath), QByteArray("fern"));
    EXPECT_EQ(parseTrashInfo(trashedFile->infoPath).path, file);

    const auto trashedTree = files::moveToTrashAt(other->filePath(QStringLiteral("baum")), home);
    ASSERT_TRUE(trashedTree.has_value());
    EXPECT_FALSE(QFileInfo::exists(other->filePath(QStringLiteral("baum"))));
    EXPECT_EQ(readAll(trashedTree->trashedPath + QStringLiteral("/ast/blatt.jpg")), QByteArray("blatt"));

    // Chosen automatically, an item stays on its own file system.
    const QString topTrash = QStringLiteral("/dev/shm/.Trash-") + QString::number(::getuid());
    const bool existed = QFileInfo::exists(topTrash);
    const QString shm = other->filePath(QStringLiteral("auf shm.jpg"));
    writeFile(shm, "shm");
    const auto trashed = files::moveToTrash(shm);
    ASSERT_TRUE(trashed.has_value());
    const TrashInfo info = parseTrashInfo(trashed->infoPath);
    const QByteArray content = readAll(trashed->trashedPath);
    QFile::remove(trashed->trashedPath);
    QFile::remove(trashed->infoPath);
    if (!existed) {
        QDir().rmdir(topTrash + QStringLiteral("/files"));
        QDir().rmdir(topTrash + QStringLiteral("/info"));
        QDir().rmdir(topTrash);
    }
    EXPECT_TRUE(trashed->trashedPath.startsWith(topTrash + QStringLiteral("/files/")));
    EXPECT_EQ(content, QByteArray("shm"));
    EXPECT_EQ(info.path, shm.mid(QStringLiteral("/dev/shm/").size()));
}

} // namespace
