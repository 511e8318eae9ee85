#pragma once

// Where each converted image goes and under what name. Pure string work on
// paths except for creating the target's directory.
//
// Only "/" separates; "\" and ":" are kept as characters of a name, and
// folder names compare exactly, as the file system compares them.
//
// A target always stays inside the target directory: empty, "." and ".."
// components of the part taken from the source are dropped or neutralised,
// and a "/" that the replacement text brings into the file name becomes "_",
// so the replacement only ever changes the file name, never the folder.

#include <QString>
#include <QStringList>

namespace valtrona {

/// The longest common leading text, compared character by character and
/// case-sensitively, of the source directories (each with a trailing "/").
/// Not cut back to a directory boundary:
/// "/Bilder/Urlaub/" and "/Bilder/Uwe/" give "/Bilder/U". Empty for an
/// empty list or when two sources share nothing.
QString commonBaseDirectory(const QStringList &sourcePaths);

/// The extension for a format code ("J" gives ".jpg", "P" ".png", "W"
/// ".webp", "A" ".avif", ignoring case); empty for any other code.
QString targetExtension(const QString &formatCode);

/// The target path without touching the disk: the source path with the
/// common base removed (unless `keepDirectoryStructure`; compared exactly),
/// placed below `targetDirectory` (with or without trailing separator), its
/// extension replaced by that of `formatCode`.
QString composeTargetPath(const QString &targetDirectory, const QString &commonBase,
                          const QString &sourcePath, bool keepDirectoryStructure,
                          const QString &formatCode);

/// composeTargetPath(), then creates the target's directory with every
/// missing level. A failure to create it is silent (the save fails later).
QString targetPath(const QString &targetDirectory, const QString &commonBase,
                   const QString &sourcePath, bool keepDirectoryStructure,
                   const QString &formatCode);

/// Replaces every `search` (ignoring case) by `replacement` in the file name
/// of `target`, leaving its directory and extension alone. An empty `search`
/// returns `target` unchanged. Every "/" that the replacement brings in
/// becomes "_" ("a/b" gives "a_b"), and a file name of "", "." or ".." is
/// prefixed with "_".
QString renameTarget(const QString &target, const QString &search, const QString &replacement);

} // namespace valtrona
