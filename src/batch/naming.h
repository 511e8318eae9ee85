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

#include "batch/conversionimaging.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace valtrona {

/// The longest common leading text, compared character by character and
/// case-sensitively, of the source directories (each with a trailing "/").
/// Not cut back to a directory boundary:
/// "/Bilder/Urlaub/" and "/Bilder/Uwe/" give "/Bilder/U". Empty for an
/// empty list or when two sources share nothing.
QString commonBaseDirectory(const QStringList &sourcePaths);

/// The target path without touching the disk: the source path with the
/// common base removed (unless `keepDirectoryStructure`; compared exactly),
/// placed below `targetDirectory` (with or without trailing separator), its
/// extension replaced by that of `format` (formatExtension()); without a
/// format the name keeps no extension at all.
QString composeTargetPath(const QString &targetDirectory, const QString &commonBase,
                          const QString &sourcePath, bool keepDirectoryStructure,
                          std::optional<ImageFormat> format);

/// Replaces every `search` (ignoring case) by `replacement` in the file name
/// of `target`, leaving its directory and extension alone. An empty `search`
/// returns `target` unchanged. Every "/" that the replacement brings in
/// becomes "_" ("a/b" gives "a_b"), and a file name of "", "." or ".." is
/// prefixed with "_".
QString renameTarget(const QString &target, const QString &search, const QString &replacement);

} // namespace valtrona
