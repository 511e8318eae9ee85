#pragma once

#include "batch/conversionhost.h"
#include "batch/conversionimaging.h"
#include "batch/runtext.h"
#include "batch/sizerules.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace valtrona {

class WorkerPool;

/// What a run reads once at its start (cards 1 and 2 of the window).
struct RunParameters
{
    QStringList sources;           ///< full source paths in list order
    QString targetDirectory;       ///< with or without a trailing separator
    ChangeStyle changeStyle = ChangeStyle::WidthAndHeight;
    bool keepDate = false;         ///< target gets the source's modification time
    bool copyExif = false;         ///< EXIF data of a JPEG source is carried over
    QString searchText;            ///< replaced in the target file name, ignoring case
    QString replaceText;
    /// The output format; none when the front end's format code matched none
    /// (then targets get no extension and nothing is drawn, only copied).
    std::optional<ImageFormat> format = ImageFormat::Jpeg;
    bool keepDirectoryStructure = false;
};

/// How a run ended.
struct RunSummary
{
    int count = 0;      ///< files in the list
    int written = 0;    ///< files reported "Bild erfolgreich bearbeitet"
    int failed = 0;     ///< files reported with an "ERR" row
    bool stopped = false;
    int restarts = 0;   ///< imaging restarts, the first and the last included
};

/// Reads the drawing settings (section "JPG") as they stand now.
using DrawingSettingsReader = std::function<DrawingSettings()>;

/// Memory the conversions of one run may take together by default. The
/// estimates are on the safe side (often twice what is used), so with the
/// program itself a run stays under 1 GiB whatever its inputs.
inline constexpr qint64 defaultMemoryBudget = qint64(896) << 20;

/// One pass over a source list: every image measured, sized, drawn or
/// copied, written into the target directory and reported row by row.
///
/// Files are converted on the pool's workers, several at once, each into a
/// pending file that has no name yet. Everything a person can see happens
/// on the run's own thread, in list order, exactly as if the files were done
/// one after the other: the status rows, progress and preview, putting each
/// output into place, deleting the source, the file date. So two sources
/// with one target give the later one's output, and a stop during file k
/// finishes k and then ends with "Bearbeitung abgebrochen": work already
/// done for later files is thrown away. Before every 15th file all earlier
/// files are done and the imaging library is restarted with no worker busy.
///
/// A target is never a source of the run that has not been read yet, never
/// written through a link or outside the target folder, and a source is not
/// deleted when its output took its place. A file is admitted to a worker
/// only when the memory its header promises fits the run's budget.
///
/// The run is driven by advance(): a window calls it whenever the pool says
/// a job has finished (and when "Abbruch" is pressed); run() drives it by
/// waiting, for front ends without an event loop.
class ConversionRun
{
public:
    ConversionRun(ConversionHost &host, ConversionImaging &imaging, WorkerPool &pool,
                  DrawingSettingsReader drawingSettings);
    /// Waits for the run's jobs still on the pool.
    ~ConversionRun();
    ConversionRun(const ConversionRun &) = delete;
    ConversionRun &operator=(const ConversionRun &) = delete;

    /// Memory (bytes) the files being converted may take together.
    void setMemoryBudget(qint64 bytes);

    /// Restarts the imaging library, clears the rows, writes the start row
    /// and hands out the first files.
    void start(const RunParameters &parameters);

    /// Does everything that is ready now, without waiting for a worker.
    /// Returns false once the run has ended (the host has heard runEnded()).
    bool advance();

    bool isFinished() const;
    RunSummary summary() const;

    /// start(), then advance() until the end, waiting for the pool between
    /// and letting the host yield at least every 40 ms.
    RunSummary run(const RunParameters &parameters);

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace valtrona
