#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

namespace valtrona::test {

/// Absolute path of a file under tests/data.
QString dataPath(const QString &relative);

/// A fresh temporary directory, removed with everything in it on destruction.
class Sandbox
{
public:
    Sandbox();

    /// Absolute path of the sandbox directory, without a trailing "/".
    QString path() const;
    /// Absolute path of a name inside the sandbox.
    QString filePath(const QString &relative) const;
    /// Writes bytes to a file inside the sandbox (parents created); returns its path.
    QString writeFile(const QString &relative, const QByteArray &bytes) const;

private:
    QTemporaryDir m_dir;
};

/// Reads a whole file; an empty array when it cannot be read.
QByteArray readAll(const QString &path);

} // namespace valtrona::test
