#include "cli/clijob.h"

#include "batch/sizerules.h"
#include "core/fileservices.h"

#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <QStringBuilder>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace valtrona::cli {

namespace {

QString absolutePath(const QString &path)
{
    return QDir::cleanPath(QDir::current().absoluteFilePath(path));
}

class SourceList
{
public:
    void add(const QString &path)
    {
        if (path.isEmpty())
            return;
        const QString full = absolutePath(path);
        if (m_seen.contains(full))
            return;
        m_seen.insert(full);
        m_paths.append(full);
    }

    QStringList paths() const { return m_paths; }

private:
    QStringList m_paths;
    QSet<QString> m_seen;
};

// The unit lists hold "Pixel" (0) and "Prozent" (1); a value matching
// neither leaves the list without selection, which the check of card 2 turns
// into the first entry.
int selectedUnit(int unit)
{
    return unit == sizeunit::percent ? sizeunit::percent : sizeunit::pixel;
}

} // namespace

Expected<QStringList, QString> collectSources(const QList<SourceArgument> &arguments,
                                              QIODevice *standardInput)
{
    SourceList list;
    for (const SourceArgument &argument : arguments) {
        switch (argument.kind) {
        case SourceArgument::Kind::File:
            list.add(argument.value);
            break;
        case SourceArgument::Kind::StandardIn:
            if (!standardInput)
                break;
            while (!standardInput->atEnd()) {
                QByteArray line = standardInput->readLine();
                while (line.endsWith('\n') || line.endsWith('\r'))
                    line.chop(1);
                list.add(files::fileNameFromNative(line));
            }
            break;
        case SourceArgument::Kind::Directory: {
            const auto found = files::listJpegFiles(absolutePath(argument.value), false);
            if (!found)
                return unexpected<QString>(u"Das Verzeichnis „"_s % argument.value
                                  % u"“ wurde nicht gefunden !"_s);
            for (const QString &file : *found)
                list.add(file);
            break;
        }
        }
    }
    return list.paths();
}

Expected<CliJob, QString> resolveJob(const CliOptions &options, const LastParameters &last,
                                     const QStringList &sources)
{
    // Card 1.
    if (sources.isEmpty())
        return unexpected<QString>(u"Sie haben keine Quelldateien gewählt !"_s);

    // Card 2, in the window's order.
    // The style list holds 0 to 4; any other value leaves it without selection.
    const std::optional<ChangeStyle> style = changeStyleFromNumber(options.style.value_or(last.style));
    if (!style)
        return unexpected<QString>(u"Sie haben keinen Änderungsstil gewählt !"_s);

    CliJob job;
    job.inputs.widthText = options.width.value_or(last.width);
    job.inputs.heightText = options.height.value_or(last.height);
    job.inputs.widthUnit = selectedUnit(options.widthUnit.value_or(last.widthUnit));
    job.inputs.heightUnit = selectedUnit(options.heightUnit.value_or(last.heightUnit));
    if (!formatParametersValid(style, job.inputs.widthText, job.inputs.heightText))
        return unexpected<QString>(u"Sie haben ungültige Formatparameter gewählt !"_s);

    const QString target = options.outDir.value_or(last.path);
    if (target.isEmpty())
        return unexpected<QString>(u"Sie haben kein Zielverzeichnis gewählt !"_s);

    RunParameters &parameters = job.parameters;
    parameters.sources = sources;
    parameters.targetDirectory = absolutePath(target);
    parameters.changeStyle = *style;
    parameters.keepDate = options.keepDate;
    parameters.copyExif = options.exif;
    parameters.searchText = options.search.value_or(last.searchFor);
    parameters.replaceText = options.replace.value_or(last.replaceWith);
    parameters.format = options.format.value_or(ImageFormat::Jpeg);
    parameters.keepDirectoryStructure = options.keepDirs;
    job.deleteSources = options.deleteSources;
    return job;
}

JobCount jobCount(std::optional<int> requested, int cores)
{
    const int most = 2 * std::max(1, cores);
    if (!requested)
        return {std::min(std::max(1, cores), most), QString()};
    JobCount count;
    count.jobs = std::clamp(*requested, 1, most);
    if (count.jobs != *requested)
        count.notice = u"valtrona-cli: --jobs liegt außerhalb von 1 bis "_s % QString::number(most)
            % u", verwendet wird "_s % QString::number(count.jobs);
    return count;
}

} // namespace valtrona::cli
