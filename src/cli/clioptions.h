#pragma once

// The command line of valtrona-cli: one declarative option table, parsed
// into CliOptions. Options left out keep std::nullopt (or false) so that the
// settings file's "Last" section can fill them later.

#include "batch/conversionimaging.h"
#include "core/expected.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace valtrona::cli {

/// One source argument, in command-line order.
struct SourceArgument
{
    enum class Kind {
        File,      ///< a path given on the command line
        StandardIn, ///< "-": paths read from standard input, one per line
        Directory, ///< --dir DIR: every "*.jpg" below DIR
    };
    Kind kind = Kind::File;
    QString value;

    bool operator==(const SourceArgument &other) const = default;
};

struct CliOptions
{
    bool help = false;
    bool version = false;
    std::optional<int> style;          ///< --style, as given (range checked later)
    std::optional<QString> width;      ///< --width TEXT
    std::optional<QString> height;     ///< --height TEXT
    std::optional<int> widthUnit;      ///< --width-unit px|% (0 or 1)
    std::optional<int> heightUnit;     ///< --height-unit px|%
    std::optional<ImageFormat> format; ///< --format jpg|png|webp|avif
    std::optional<QString> outDir;     ///< --out DIR
    std::optional<QString> search;     ///< --search TEXT
    std::optional<QString> replace;    ///< --replace TEXT
    bool keepDirs = false;             ///< --keep-dirs
    bool keepDate = false;             ///< --keep-date
    bool exif = false;                 ///< --exif
    bool deleteSources = false;        ///< --delete-sources
    std::optional<QString> settingsFile; ///< --settings FILE
    std::optional<int> jobs;           ///< --jobs N, as given (saturated to int; range checked later)
    QList<SourceArgument> sources;

    bool operator==(const CliOptions &other) const = default;
};

/// Parses the arguments (without the program name). "--name value" and
/// "--name=value" are both accepted, "--" ends the options, and "-" stands
/// for standard input. Fails with a German message for an unknown option, a
/// missing value or a value out of its set.
Expected<CliOptions, QString> parseArguments(const QStringList &arguments);

/// The German help text of --help, generated from the option table.
QString helpText();

} // namespace valtrona::cli
