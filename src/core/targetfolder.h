#pragma once

// The folder a run writes into. Every output is first written completely
// into a pending file that has no name yet, then put into place by one
// rename: a crash, a full disk or a stop never leaves a half-written image
// under a target name. Everything below the folder is reached without
// following symbolic links, so nothing is ever written through a link or
// outside the folder; a link standing at a target name is replaced itself.

#include "core/error.h"
#include "core/expected.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>

namespace valtrona::files {

/// What a file is, whatever path reaches it: device and inode. Links, bind
/// mounts and "."/".." segments reach one file by many paths.
struct FileIdentity
{
    quint64 device = 0;
    quint64 inode = 0;

    bool operator==(const FileIdentity &other) const = default;
};

/// The file a path reaches, links followed; nothing when it reaches none.
std::optional<FileIdentity> fileIdentity(const QString &path);

/// The directory entry a path names, a link at its end not followed.
std::optional<FileIdentity> entryIdentity(const QString &path);

/// An output being written: an open file in the target folder's file system
/// that has no name (or a hidden temporary one where the file system cannot
/// do without). Dropping it discards everything written.
class PendingFile
{
public:
    PendingFile() = default;
    ~PendingFile();
    PendingFile(PendingFile &&other) noexcept;
    PendingFile &operator=(PendingFile &&other) noexcept;
    PendingFile(const PendingFile &) = delete;
    PendingFile &operator=(const PendingFile &) = delete;

    bool isOpen() const;
    /// Open for reading and writing; the writer owns the position.
    int descriptor() const;

    /// Writes all of `bytes` at the current position.
    [[nodiscard]] Expected<void, Error> write(QByteArrayView bytes);
    /// Replaces the whole content with `bytes`.
    [[nodiscard]] Expected<void, Error> replaceContent(QByteArrayView bytes);
    /// The whole content written so far.
    [[nodiscard]] Expected<QByteArray, Error> readAll() const;
    /// Bytes written so far.
    qint64 size() const;

    /// Throws the content away now (also done on destruction).
    void discard();

private:
    friend class TargetFolder;

    int m_fd = -1;
    int m_folderFd = -1;  ///< the folder holding the temporary name (owned), -1 for an unnamed file
    QByteArray m_tempName; ///< empty for an unnamed file
    QString m_folderPath;  ///< for error texts
};

/// How commit() puts a pending file into place.
struct CommitOptions
{
    /// Modification time the file gets; invalid keeps the time of writing.
    QDateTime modificationTime;
};

/// The folder a run writes into, opened once and shared by every worker.
class TargetFolder
{
public:
    enum class Creation { CreateMissing, ExistingOnly };

    /// Opens `path`, creating it and missing parents unless told not to.
    /// The folder itself may be reached through links (the user chose it);
    /// nothing below it is.
    [[nodiscard]] static Expected<TargetFolder, Error> open(const QString &path,
                                                           Creation creation = Creation::CreateMissing);

    TargetFolder() = default;
    ~TargetFolder();
    TargetFolder(TargetFolder &&other) noexcept;
    TargetFolder &operator=(TargetFolder &&other) noexcept;
    TargetFolder(const TargetFolder &) = delete;
    TargetFolder &operator=(const TargetFolder &) = delete;

    bool isOpen() const;
    /// Absolute, cleaned, without a trailing "/".
    QString path() const;

    /// The path of `target` below this folder ("a/b.jpg"), or nothing when
    /// it lies outside it, names the folder itself or has a ".." segment
    /// below it. The folder's part is recognised as the text given to
    /// open(), that text made absolute, or path().
    std::optional<QString> relativePath(const QString &target) const;

    /// A new pending file. Safe to call from several threads at once.
    [[nodiscard]] Expected<PendingFile, Error> createPending() const;

    /// Creates the folders of a relative folder path below this folder.
    /// Fails with TargetPathUnsafe when a level is a symbolic link.
    [[nodiscard]] Expected<void, Error> createFolders(const QString &relativeFolder) const;

    /// Puts a pending file into place under a relative path: the folders on
    /// the way are created, a file or a link of that name is replaced (never
    /// followed), an existing file's permissions are kept. Afterwards the
    /// pending file is closed, whatever the outcome.
    [[nodiscard]] Expected<void, Error> commit(PendingFile &file, const QString &relativePath,
                                               const CommitOptions &options = {}) const;

    /// The entry at a relative path, reached without following links on the
    /// way (a link at its end is not followed either).
    std::optional<FileIdentity> entryIdentity(const QString &relativePath) const;

private:
    int m_fd = -1;
    QString m_path;
    QString m_given; ///< the text given to open(), with a trailing "/"
};

} // namespace valtrona::files
