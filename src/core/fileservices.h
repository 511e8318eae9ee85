#pragma once

// Stateless path and file services shared by the target naming, the
// conversion run and the source list. Nothing here throws or shows a
// message: every call reports through its result.
//
// Only "/" separates; "\" and ":" are ordinary characters of a name. The
// names follow the program's file-service vocabulary:
//
//   AddBackslash            addTrailingSeparator
//   RemoveTrailingSeparator removeTrailingSeparator
//   FileNamePart            fileNamePart
//   BaseName                baseName
//   DirectoryPart           directoryPart
//   ExtensionPart           extensionPart
//   StripExtension          stripExtension
//   TrimControlChars        trimControlChars
//   ReplaceAll, ReplaceFirst replaceAll, replaceFirst
//   FileExists, DirExists, DirExistsNonEmpty   fileExists, dirExists, dirExistsNonEmpty
//   ReadFileText, WriteFileText                readFileText, writeFileText
//   CreateDirectoryChain    TargetFolder::createFolders (core/targetfolder.h)
//   SetFileTimes            setFileTimes (DateToFileTime is QDateTime's job)
//   ListFiles               listFiles, listJpegFiles, expandFolders
//   DeleteToRecycleBin      deleteToRecycleBin, moveToTrash (core/trash.h)

#include "core/error.h"
#include "core/expected.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <atomic>
#include <optional>
#include <ctime>

namespace valtrona::files {

// ---- Names as the system spells them ---------------------------------------

/// A name or path as the system gives it, as text. Valid UTF-8 is decoded;
/// every byte that is not part of valid UTF-8 (a Latin-1 "\xe4" from an old
/// camera card) becomes the lone surrogate U+DC80 + its low byte. So no two
/// names give the same text, the text shows such a byte as the replacement
/// character, and nativeFileName() gives back the exact bytes.
QString fileNameFromNative(QByteArrayView bytes);

/// The bytes of a path for the system: the reverse of fileNameFromNative().
/// The queries and the walk below, the target folder, the trash and the
/// imaging layer use it, so a photo with such a name is read, converted,
/// written and trashed under its own bytes. Qt's file classes turn such a
/// byte into U+FFFD and do not reach the file.
QByteArray nativeFileName(const QString &path);

// ---- Path text (no file-system access) ------------------------------------

/// True for "/", the only separator.
bool isSeparator(QChar c);

/// The path trimmed of leading and trailing blanks, with "/" appended unless
/// it is empty or already ends in "/".
QString addTrailingSeparator(const QString &path);

/// Drops one trailing "/" when the path is longer than one character.
QString removeTrailingSeparator(const QString &path);

/// The text after the last separator (the whole path when it has none);
/// with `dropTrailingSeparator`, a trailing separator is removed first.
QString fileNamePart(const QString &path, bool dropTrailingSeparator = false);

/// The file name without directory and without everything from its last ".".
/// "a.b.jpg" gives "a.b"; a point in a directory name is never taken.
QString baseName(const QString &path);

/// The text before the last separator. A path without separator is returned
/// unchanged (not empty).
QString directoryPart(const QString &path);

/// The extension without its ".", empty when the file name has no ".".
QString extensionPart(const QString &path);

/// The path without the extension of its file name (the "." is removed too).
QString stripExtension(const QString &path);

enum TrimMode { TrimLeading = 1, TrimTrailing = 2, TrimBoth = 3 };

/// Removes characters with codes 0 to 32 at the start (mode bit 1) and/or
/// at the end (mode bit 2).
QString trimControlChars(const QString &text, int mode);

/// Replaces every occurrence of `find` in `text`, left to right, resuming
/// after the inserted replacement (so a replacement that contains `find`
/// does not loop). An empty `find` replaces nothing. Returns the count.
int replaceAll(QString &text, const QString &find, const QString &replacement,
               Qt::CaseSensitivity cs = Qt::CaseSensitive);

/// Replaces only the first occurrence; returns 0 or 1.
int replaceFirst(QString &text, const QString &find, const QString &replacement,
                 Qt::CaseSensitivity cs = Qt::CaseSensitive);

// ---- File-system queries ---------------------------------------------------

/// False for "" and "."; otherwise true when the path names any entry (file,
/// directory, even a dangling link). A "*" or "?" in the file name part is a
/// mask matched case-insensitively, so "dir/*.jpg" is true when one matches.
bool fileExists(const QString &path);

/// True when the path names a file, a directory or anything else that is
/// there, following links (a dangling link is not). Unlike fileExists(), "*"
/// and "?" are characters of the name.
bool pathExists(const QString &path);

/// What a regular file's entry says of it, following links.
struct FileFacts
{
    qint64 size = 0;
    QDateTime modified; ///< last write, in local time
};

/// The size and last write time of a regular file; nothing for anything
/// else or when it is not there. Reaches names that are not UTF-8, which
/// Qt's file classes cannot.
std::optional<FileFacts> fileFacts(const QString &path);

/// True when the path (a trailing separator allowed) is a directory.
bool dirExists(const QString &path);

/// False for an empty path, else dirExists().
bool dirExistsNonEmpty(const QString &path);

// ---- File contents ---------------------------------------------------------

/// Reads the whole file as local 8-bit text (UTF-8 here) into `text` and
/// returns its length; returns 0 and leaves `text` alone when it can't be read.
qsizetype readFileText(const QString &path, QString &text);

/// Replaces the file's content with `text` (UTF-8) through a temporary file
/// and rename; returns fileExists(path) afterwards.
[[nodiscard]] bool writeFileText(const QString &path, const QString &text);

/// How an atomic write treats a symbolic link standing at the path.
enum class AtLink {
    Replace,     ///< the link itself is replaced by the file (outputs: never written through)
    WriteTarget, ///< the file the link points to is rewritten (a settings file the user linked)
};

/// Writes `bytes` to an unnamed file in the folder of `path` and renames it
/// into place, so `path` holds either its old content or all of the new one.
/// Every write is checked, so a full disk fails the call and leaves the old
/// file as it was. An existing file's permissions are kept. The folder must
/// exist.
Expected<void, Error> writeFileAtomically(const QString &path, QByteArrayView bytes,
                                          AtLink atLink = AtLink::Replace);

// ---- File times ------------------------------------------------------------

/// A point in time as the system's file-time calls take it.
struct timespec timespecOf(const QDateTime &time);

enum FileTimeSelect { CreationTime = 1, LastAccessTime = 2, LastWriteTime = 4 };

/// Sets the selected times (bits of FileTimeSelect; 0 means LastWriteTime) of
/// a file or directory to `time`; its time zone setting says whether it is local or
/// UTC. The creation time cannot be set on Linux and is skipped; a request
/// for it alone returns false. True only when the times were set.
[[nodiscard]] bool setFileTimes(const QString &path, const QDateTime &time, int which = LastWriteTime);

// ---- Directory walk --------------------------------------------------------

enum class ListSort {
    None,               ///< the walk's own order
    ByPath,             ///< ascending by path, ignoring letter case first
    ByModificationTime, ///< ascending by last write time
};

struct ListFilesOptions
{
    /// Matched against entry names ignoring case; "*.*" and "*" match every
    /// name. Several masks are separated by ";" ("*.jpg;*.jpeg").
    QString mask = QStringLiteral("*.*");
    bool recurse = false;
    bool collectFiles = true;
    bool collectDirectories = false;
    /// Hidden (dot) entries are collected and descended into.
    bool includeHidden = true;
    ListSort sort = ListSort::None;
    /// Let pending events run once per directory visited.
    bool processEvents = true;
    /// While this flag is set, no further directory is visited.
    const std::atomic_bool *cancel = nullptr;
};

struct ListFilesResult
{
    QStringList files;        ///< full paths, "/"-joined below the start directory
    QStringList directories;  ///< full paths with a trailing "/"
    bool cancelled = false;
};

/// Walks `directory`. In each directory entries come in name order (ignoring
/// case). Without recursion, or with the mask "*.*", matching entries are
/// collected and subdirectories descended into as they are met; with
/// recursion and another mask, a directory's matching files come first, then
/// its subdirectories are walked. "." and ".." are never taken, a directory
/// reached twice (a link loop or a second link to it) is walked only once,
/// and dangling links are skipped. Names that are not valid UTF-8 are taken
/// too, spelled as fileNameFromNative() spells them. Fails with
/// SourceMissing when `directory` is not a directory.
[[nodiscard]] Expected<ListFilesResult, Error> listFiles(const QString &directory,
                                               const ListFilesOptions &options = {});

/// The photos of a folder as "Verzeichnis laden" collects them: every
/// "*.jpg" and "*.jpeg" in any letter case, in the folder and all its
/// subfolders, in the walk's order (a folder's files before its
/// subfolders). Hidden files and folders (names starting with ".") are
/// skipped, so thumbnail caches such as ".thumbnails/" are never taken.
/// `processEvents` as in ListFilesOptions. Fails like listFiles().
[[nodiscard]] Expected<QStringList, Error> listJpegFiles(const QString &folder, bool processEvents = true);

/// The paths in their order, each folder among them replaced by its
/// listJpegFiles(); other paths, existing or not, are kept as they are.
QStringList expandFolders(const QStringList &paths, bool processEvents = true);

} // namespace valtrona::files
