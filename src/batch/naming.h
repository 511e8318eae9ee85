#pragma once

// Where each converted image goes and under what name. Pure string work on
// paths except for creating the target's directory.
//
// A target always stays inside the target directory: empty, "." and ".."
// components of the part taken from the source are dropped or neutralised,
// and a replacement that would put a separator into the file name gets "_"
// in its place.

#include <QString>
#include <QStringList>

namespace valtrona {

/// The longest common leading text, compared character by character after
/// upper-casing, of the source directories (each with a trailing "/"), in
/// the spelling of the last source. Not cut back to a directory boundary:
/// "/Bilder/Urlaub/" and "/Bilder/Uwe/" give "/Bilder/U". Empty for an
/// empty list or when two sources share nothing.
QString commonBaseDirectory(const QStringList &sourcePaths);

/// The extension for a format code ("J" gives ".jpg", "P" ".png", ignoring
/// case); empty for any other code.
QString targetExtension(const QString &formatCode);

/// The target path without touching the disk: the source path with the
/// common base removed (unless `keepDirectoryStructure`; compared ignoring
/// case), every ":" removed, "\" read as "/", placed below `targetDirectory`
/// (with or without trailing separator), its extension replaced by that of
/// `formatCode`.
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
/// returns `target` unchanged. Separators that the replacement brings in
/// become "_", and a file name of "", "." or ".." is prefixed with "_".
QString renameTarget(const QString &target, const QString &search, const QString &replacement);

} // namespace valtrona
