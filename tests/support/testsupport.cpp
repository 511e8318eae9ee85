#include "support/testsupport.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include <gtest/gtest.h>

#include <csignal>

#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

void PrintTo(const QString &text, std::ostream *out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace valtrona::test {

QString dataPath(const QString &relative)
{
    return QDir(QStringLiteral(VALTRONA_TEST_DATA_DIR)).filePath(relative);
}

Sandbox::Sandbox()
{
    EXPECT_TRUE(m_dir.isValid()) << "cannot create a temporary directory";
}

Sandbox::~Sandbox()
{
    // Qt's own removal cannot see names that are not UTF-8, so the tree goes
    // by the system's calls, children first, links not followed.
    if (!m_dir.isValid())
        return;
    ::nftw(QFile::encodeName(m_dir.path()).constData(),
           [](const char *path, const struct stat *, int, struct FTW *) {
               ::remove(path);
               return 0;
           },
           16, FTW_DEPTH | FTW_PHYS);
}

QByteArray Sandbox::writeNativeFile(const QByteArray &relative, const QByteArray &bytes) const
{
    const QByteArray full = QFile::encodeName(m_dir.path()) + '/' + relative;
    for (qsizetype at = full.indexOf('/', 1); at > 0; at = full.indexOf('/', at + 1))
        ::mkdir(full.left(at).constData(), 0755);
    const int fd = ::open(full.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    EXPECT_GE(fd, 0) << full.toStdString();
    if (fd >= 0) {
        EXPECT_EQ(::write(fd, bytes.constData(), size_t(bytes.size())), bytes.size());
        ::close(fd);
    }
    return full;
}

QString Sandbox::path() const
{
    return m_dir.path();
}

QString Sandbox::filePath(const QString &relative) const
{
    return m_dir.filePath(relative);
}

QString Sandbox::writeFile(const QString &relative, const QByteArray &bytes) const
{
    const QString full = filePath(relative);
    QDir().mkpath(QFileInfo(full).absolutePath());
    QFile file(full);
    EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << full.toStdString();
    file.write(bytes);
    return full;
}

ScopedEnvironment::ScopedEnvironment(const char *name, const QString &value)
    : m_name(name), m_old(qgetenv(name)), m_wasSet(qEnvironmentVariableIsSet(name))
{
    qputenv(name, QFile::encodeName(value));
}

ScopedEnvironment::~ScopedEnvironment()
{
    if (m_wasSet)
        qputenv(m_name.constData(), m_old);
    else
        qunsetenv(m_name.constData());
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

bool runTool(const QString &program, const QStringList &arguments, QByteArray *output)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::SeparateChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(60000))
        return false;
    if (output)
        *output = process.readAllStandardOutput();
    return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

QStringList filesBelow(const QString &root)
{
    QStringList found;
    QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System, QDirIterator::Subdirectories);
    while (it.hasNext())
        found.append(QDir(root).relativeFilePath(it.next()));
    found.sort();
    return found;
}

FileSizeLimit::FileSizeLimit(rlim_t bytes)
{
    std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &m_saved);
    rlimit limit = m_saved;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
}

FileSizeLimit::~FileSizeLimit()
{
    setrlimit(RLIMIT_FSIZE, &m_saved);
}

} // namespace valtrona::test
