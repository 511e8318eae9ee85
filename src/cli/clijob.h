#pragma once

// Turns parsed options into a run: collects the source list, fills what the
// options leave open from the settings file, and checks the parameters the
// way the window checks its first two cards.

#include "batch/conversionhost.h"
#include "batch/conversionrun.h"
#include "cli/clioptions.h"
#include "core/expected.h"
#include "core/settings.h"

#include <QIODevice>
#include <QString>
#include <QStringList>

#include <optional>

namespace valtrona::cli {

/// Everything a command-line run needs.
struct CliJob
{
    RunParameters parameters;
    FileInputs inputs;          ///< width and height fields with their units
    bool deleteSources = false; ///< "Quelldateien nach Bearbeitung löschen"
};

/// Builds the source list from the source arguments in their order, the way
/// the window's list adds files: every path made absolute, duplicates by
/// exact path dropped (the first stays). "-" reads one path per line from
/// `standardInput` (empty lines skipped); --dir adds the photos below the
/// directory as files::listJpegFiles() finds them. Fails with a German
/// message when a --dir is not a directory.
Expected<QStringList, QString> collectSources(const QList<SourceArgument> &arguments,
                                              QIODevice *standardInput);

/// Fills the parameters from the options, taking what they leave open from
/// `last` (the "Last" section as the window shows it at start), and checks
/// them in the window's order. A failed check gives the window's message:
/// "Sie haben keine Quelldateien gewählt !", "Sie haben keinen Änderungsstil
/// gewählt !", "Sie haben ungültige Formatparameter gewählt !" or "Sie haben
/// kein Zielverzeichnis gewählt !".
Expected<CliJob, QString> resolveJob(const CliOptions &options, const LastParameters &last,
                                     const QStringList &sources);

/// How many files a run converts at once.
struct JobCount
{
    int jobs = 1;
    QString notice; ///< German line for standard error when `requested` was changed, else empty
};

/// The files converted at once: `requested` (the number of cores when not
/// given) kept within 1 to twice the number of cores; more would only
/// multiply the memory held without converting faster.
JobCount jobCount(std::optional<int> requested, int cores);

} // namespace valtrona::cli
