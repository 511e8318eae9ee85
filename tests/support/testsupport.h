#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <ostream>

#include <sys/resource.h>

/// Prints a QString readably in GoogleTest failure messages.
void PrintTo(const QString &text, std::ostream *out);

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
    /// Writes a file whose name inside the sandbox is given as the system's
    /// bytes, for names that are not UTF-8 (parents created); returns its
    /// full path as bytes.
    QByteArray writeNativeFile(const QByteArray &relative, const QByteArray &bytes) const;

    ~Sandbox();
    Sandbox(const Sandbox &) = delete;
    Sandbox &operator=(const Sandbox &) = delete;

private:
    QTemporaryDir m_dir;
};

/// Sets an environment variable for its lifetime, then restores it.
class ScopedEnvironment
{
public:
    ScopedEnvironment(const char *name, const QString &value);
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment &) = delete;
    ScopedEnvironment &operator=(const ScopedEnvironment &) = delete;

private:
    QByteArray m_name;
    QByteArray m_old;
    bool m_wasSet;
};

/// Reads a whole file; an empty array when it cannot be read.
QByteArray readAll(const QString &path);

/// Runs a program; true when it exits with 0. Output goes to *output.
bool runTool(const QString &program, const QStringList &arguments, QByteArray *output = nullptr);

/// Every file below a directory, hidden ones included, as sorted paths
/// relative to it.
QStringList filesBelow(const QString &root);

/// Makes every file write beyond `bytes` fail, as on a full disk, for as
/// long as it lives (the process's file-size limit; SIGXFSZ is ignored).
class FileSizeLimit
{
public:
    explicit FileSizeLimit(rlim_t bytes);
    ~FileSizeLimit();
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;

private:
    rlimit m_saved {};
};

} // namespace valtrona::test
