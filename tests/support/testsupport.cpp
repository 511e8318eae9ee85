#include "support/testsupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace valtrona::test {

QString dataPath(const QString &relative)
{
    return QDir(QStringLiteral(VALTRONA_TEST_DATA_DIR)).filePath(relative);
}

Sandbox::Sandbox()
{
    EXPECT_TRUE(m_dir.isValid()) << "cannot create a temporary directory";
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

QByteArray readAll(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

} // namespace valtrona::test
