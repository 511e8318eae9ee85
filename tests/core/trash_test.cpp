#include "core/trash.h"

#include "core/fileservices.h"

#include "support/testsupport.h"

#include <QByteArray>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace files = valtrona::files;
using namespace Qt::StringLiterals;
using valtrona::test::readAll;
using valtrona::test::Sandbox;

namespace {

struct stat statOf(const QString &path)
{
    struct stat info {};
    EXPECT_EQ(::stat(files::nativeFileName(path).constData(), &info), 0) << path.toStdString();
    return info;
}

// The file's bytes, whatever bytes its name is made of.
QByteArray readNative(const QString &path)
{
    QFile file;
    const int fd = ::open(files::nativeFileName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0 || !file.open(fd, QIODevice::ReadOnly, QFileDevice::AutoCloseHandle))
        return {};
    return file.readAll();
}

struct TrashInfo
{
    QString path; ///< decoded
    QDateTime deleted;
};

// A .trashinfo as a file manager reads it: exactly three lines, the path
// percent-encoded (nothing but unreserved characters, "/" and escapes);
// empty when it is not one.
TrashInfo parseTrashInfo(const QString &infoPath)
{
    static const QRegularExpression layout(
        u"^\\[Trash Info\\]\nPath=([A-Za-z0-9._~/%-]+)\nDeletionDate=(\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d)\n$"_s);
    const QRegularExpressionMatch match = layout.match(QString::fromLatin1(readNative(infoPath)));
    if (!match.hasMatch())
        return {};
    return {files::fileNameFromNative(QByteArray::fromPercentEncoding(match.captured(1).toLatin1())),
            QDateTime::fromString(match.captured(2), u"yyyy-MM-dd'T'HH:mm:ss"_s)};
}

// Points XDG_DATA_HOME at a directory that does not exist yet, so the trash
// and its parents have to be created.
class Trash : public ::testing::Test
{
protected:
    QString trashDir() const { return m_dataHome + u"/Trash"_s; }

    Sandbox m_home;
    Sandbox m_work;
    QString m_dataHome = m_home.filePath(u"noch/nicht/share"_s);
    valtrona::test::ScopedEnvironment m_environment {"XDG_DATA_HOME", m_dataHome};
};

TEST_F(Trash, FileIsRecoverableWithItsTrashInfo)
{
    const QString name = u"Ürlaub 100% #1.jpg"_s;
    const QString source = m_work.writeFile(u"Fotos/"_s + name, "bilddaten");
    const QDateTime before = QDateTime::currentDateTime().addSecs(-1);

    const auto trashed = files::moveToTrash(source);
    ASSERT_TRUE(trashed.has_value()) << trashed.error().detail.toStdString();
    EXPECT_FALSE(QFileInfo::exists(source));
    EXPECT_EQ(trashed->trashedPath, trashDir() + u"/files/"_s + name);
    EXPECT_EQ(trashed->infoPath, trashDir() + u"/info/"_s + name + u".trashinfo"_s);
    const TrashInfo info = parseTrashInfo(trashed->infoPath);
    EXPECT_EQ(info.path, source) << readAll(trashed->infoPath).toStdString();
    EXPECT_GE(info.deleted, before.addMSecs(-before.time().msec()));
    EXPECT_LE(info.deleted, QDateTime::currentDateTime());

    EXPECT_EQ(readAll(trashed->trashedPath), "bilddaten");

    // A name from an old card that is not UTF-8 goes under its own bytes.
    const QString latin = files::fileNameFromNative(m_work.writeNativeFile("Fotos/\xe4rger.jpg", "alt"));
    const auto trashedLatin = files::moveToTrash(latin);
    ASSERT_TRUE(trashedLatin.has_value()) << trashedLatin.error().detail.toStdString();
    EXPECT_FALSE(files::fileFacts(latin).has_value());
    EXPECT_EQ(files::fileFacts(trashedLatin->trashedPath).value_or(files::FileFacts {}).size, 3);
    EXPECT_EQ(parseTrashInfo(trashedLatin->infoPath).path, latin);
    EXPECT_TRUE(readNative(trashedLatin->infoPath).contains("/Fotos/%E4rger.jpg\n"));

    // The trash is private to its user.
    EXPECT_EQ(QFileInfo(trashDir()).permissions() & (QFileDevice::ReadGroup | QFileDevice::ReadOther), 0);
}

// Same names get unique entries; long ones are shortened so that their
// .trashinfo still fits the file system's limit of 255 bytes.
TEST_F(Trash, EveryItemGetsItsOwnEntry)
{
    const QString x240(240, u'x');
    const struct
    {
        QString name;
        QStringList trashed;
    } cases[] = {
        {u"IMG_1.jpg"_s, {u"IMG_1.jpg"_s, u"IMG_1.2.jpg"_s, u"IMG_1.3.jpg"_s}},
        {x240 + u"ö.jpeg"_s, {x240 + u".jpeg"_s, x240.left(238) + u".2.jpeg"_s, x240.left(238) + u".3.jpeg"_s}},
    };
    for (const auto &c : cases) {
        for (int i = 0; i < 3; ++i) {
            const QString source = m_work.writeFile(QString::number(i) + u'/' + c.name, QByteArray::number(i));
            const auto trashed = files::moveToTrash(source);
            ASSERT_TRUE(trashed.has_value()) << trashed.error().detail.toStdString();
            EXPECT_EQ(trashed->trashedPath, trashDir() + u"/files/"_s + c.trashed[i]);
            EXPECT_EQ(parseTrashInfo(trashed->infoPath).path, source);
            EXPECT_EQ(readAll(trashed->trashedPath), QByteArray::number(i));
        }
    }
}

TEST_F(Trash, DirectoriesAndLinksGoWhole)
{
    m_work.writeFile(u"Ordner/unter/bild.jpg"_s, "x");
    const auto dir = files::moveToTrash(m_work.filePath(u"Ordner/"_s));
    ASSERT_TRUE(dir.has_value());
    EXPECT_FALSE(QFileInfo::exists(m_work.filePath(u"Ordner"_s)));
    EXPECT_EQ(readAll(dir->trashedPath + u"/unter/bild.jpg"_s), "x");
    EXPECT_EQ(parseTrashInfo(dir->infoPath).path, m_work.filePath(u"Ordner"_s));

    const QString target = m_work.writeFile(u"ziel.jpg"_s, "ziel");
    const QString link = m_work.filePath(u"verweis.jpg"_s);
    ASSERT_EQ(::symlink(QFile::encodeName(target).constData(), QFile::encodeName(link).constData()), 0);
    const auto trashedLink = files::moveToTrash(link);
    ASSERT_TRUE(trashedLink.has_value());
    EXPECT_TRUE(QFileInfo(trashedLink->trashedPath).isSymLink());
    EXPECT_EQ(readAll(target), "ziel");
}

TEST_F(Trash, RefusesWhatCannotGo)
{
    EXPECT_EQ(files::deleteToRecycleBin(QString()), -1);
    EXPECT_FALSE(QFileInfo::exists(trashDir()));
    EXPECT_EQ(files::deleteToRecycleBin(m_work.filePath(u"fehlt.jpg"_s)), 1);
    EXPECT_EQ(files::moveToTrash(m_work.filePath(u"fehlt.jpg"_s)).error().code, valtrona::ErrorCode::SourceMissing);

    // A directory that holds the trash itself stays where it is.
    ASSERT_EQ(files::deleteToRecycleBin(m_work.writeFile(u"eins.jpg"_s, "1")), 0);
    EXPECT_EQ(files::moveToTrash(m_home.filePath(u"noch"_s)).error().code, valtrona::ErrorCode::TargetNotWritable);
    EXPECT_TRUE(QFileInfo::exists(trashDir() + u"/files/eins.jpg"_s));
}

TEST_F(Trash, TopDirectoryTrashRecordsRelativePaths)
{
    const QString top = m_work.filePath(u"platte"_s);
    const QString source = m_work.writeFile(u"platte/Fotos/b 1.jpg"_s, "b");
    const files::TrashLocation location {top + u"/.Trash-"_s + QString::number(::getuid()), top};
    const auto trashed = files::moveToTrashAt(source, location);
    ASSERT_TRUE(trashed.has_value());
    EXPECT_EQ(trashed->trashedPath, location.path + u"/files/b 1.jpg"_s);
    EXPECT_EQ(parseTrashInfo(trashed->infoPath).path, u"Fotos/b 1.jpg"_s);
}

TEST_F(Trash, AcrossFileSystemsTheCopyIsCompleteBeforeTheOriginalGoes)
{
    // A second file system: /dev/shm on most machines.
    if (!QFileInfo(u"/dev/shm"_s).isWritable())
        GTEST_SKIP() << "no /dev/shm";
    const valtrona::test::ScopedEnvironment shm("TMPDIR", u"/dev/shm"_s);
    const Sandbox other;
    struct stat here {}, there {};
    if (::stat(QFile::encodeName(m_home.path()).constData(), &here) != 0
        || ::stat(QFile::encodeName(other.path()).constData(), &there) != 0 || here.st_dev == there.st_dev)
        GTEST_SKIP() << "/dev/shm is no second file system";
    const QString file = other.writeFile(u"quelle.jpg"_s, "fern");
    other.writeFile(u"baum/ast/blatt.jpg"_s, "blatt");
    other.writeNativeFile("baum/ast/\xfc.jpg", "alt");
    const struct stat before = statOf(file);

    const files::TrashLocation home {files::homeTrashDirectory(), QString()};
    const auto trashedFile = files::moveToTrashAt(file, home);
    ASSERT_TRUE(trashedFile.has_value());
    EXPECT_FALSE(QFileInfo::exists(file));
    EXPECT_EQ(readAll(trashedFile->trashedPath), "fern");
    const struct stat after = statOf(trashedFile->trashedPath);
    EXPECT_EQ(after.st_mtim.tv_sec, before.st_mtim.tv_sec);
    EXPECT_EQ(after.st_mtim.tv_nsec, before.st_mtim.tv_nsec);
    EXPECT_EQ(parseTrashInfo(trashedFile->infoPath).path, file);

    const auto trashedTree = files::moveToTrashAt(other.filePath(u"baum"_s), home);
    ASSERT_TRUE(trashedTree.has_value());
    EXPECT_FALSE(QFileInfo::exists(other.filePath(u"baum"_s)));
    EXPECT_EQ(readAll(trashedTree->trashedPath + u"/ast/blatt.jpg"_s), "blatt");
    EXPECT_EQ(files::fileFacts(trashedTree->trashedPath + files::fileNameFromNative("/ast/\xfc.jpg"))
                  .value_or(files::FileFacts {}).size, 3);

    // Chosen automatically, an item stays on its own file system.
    const QString topTrash = u"/dev/shm/.Trash-"_s + QString::number(::getuid());
    const bool existed = QFileInfo::exists(topTrash);
    const QString onShm = other.writeFile(u"auf shm.jpg"_s, "shm");
    const auto trashed = files::moveToTrash(onShm);
    ASSERT_TRUE(trashed.has_value());
    EXPECT_TRUE(trashed->trashedPath.startsWith(topTrash + u"/files/"_s));
    EXPECT_EQ(readAll(trashed->trashedPath), "shm");
    EXPECT_EQ(parseTrashInfo(trashed->infoPath).path, onShm.mid(u"/dev/shm/"_s.size()));
    QFile::remove(trashed->trashedPath);
    QFile::remove(trashed->infoPath);
    if (!existed)
        QDir(topTrash).removeRecursively();
}

} // namespace
