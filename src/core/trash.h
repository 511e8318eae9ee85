#pragma once

// Deletion into the desktop trash (the freedesktop.org trash layout), so a
// deleted source can be restored from the file manager.

#include "core/error.h"
#include "core/expected.h"

#include <QString>

namespace valtrona::files {

/// Where an item went.
struct TrashedItem
{
    QString trashedPath;  ///< the item inside <trash>/files
    QString infoPath;     ///< its <trash>/info/<name>.trashinfo
};

/// A trash directory: `path` holds files/ and info/. `topDirectory` is the
/// mount point whose relative paths the .trashinfo records; empty for the
/// home trash, which records absolute paths.
struct TrashLocation
{
    QString path;
    QString topDirectory;
};

/// The home trash, $XDG_DATA_HOME/Trash (by default ~/.local/share/Trash).
QString homeTrashDirectory();

/// Moves a file, link or directory (a trailing separator is ignored) into the
/// trash of its own file system: the home trash when the item lies on the
/// same file system, else $topdir/.Trash/$uid or $topdir/.Trash-$uid; only
/// when neither can be used is it copied into the home trash and then
/// removed. Missing trash directories are created. The .trashinfo is written
/// first and names a unique entry, so two items with the same name never meet.
/// Errors: SourceMissing (an empty path, or nothing there), TargetNotWritable
/// (no usable trash, or the item cannot go into it).
[[nodiscard]] Expected<TrashedItem, Error> moveToTrash(const QString &path);

/// Moves the item into the given trash directory, creating it when missing,
/// without choosing one by file system (copy and delete when a rename across
/// file systems is needed).
[[nodiscard]] Expected<TrashedItem, Error> moveToTrashAt(const QString &path, const TrashLocation &trash);

/// The program's deletion call: -1 for an empty path (nothing done), 0 when
/// the item went to the trash, 1 otherwise. Never asks and never reports.
int deleteToRecycleBin(const QString &path);

} // namespace valtrona::files
