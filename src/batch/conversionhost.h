#pragma once

#include "core/error.h"

#include <QList>
#include <QString>

namespace valtrona {

/// Kind of a status row; it picks the row's icon.
enum class StatusKind : int {
    None = 0,    ///< "EPY": no icon
    Picture = 1, ///< "PIC": the image now being worked on
    Written = 2, ///< "POK": an image written successfully
    Error = 3,   ///< "ERR": a failure
    Info = 4,    ///< "INF": start, size and name details, deletion, stop, end
};

/// Icon key of a row kind: "PIC", "POK", "ERR", "INF"; "EPY" for None and
/// any value outside the enumeration.
QString statusIconKey(StatusKind kind);

/// One row of the status list a run writes.
struct StatusRow
{
    QString text;
    StatusKind kind = StatusKind::None;
    /// Source path on the "PIC" row, target path on the "Dateiname" row, else empty.
    QString tag;

    bool operator==(const StatusRow &other) const = default;
};

/// The inputs a run reads anew for every file (width and height fields and their units).
struct FileInputs
{
    QString widthText;
    QString heightText;
    int widthUnit = 0;  ///< 0 pixels, any other value percent
    int heightUnit = 0; ///< 0 pixels, any other value percent

    bool operator==(const FileInputs &other) const = default;
};

/// What a conversion run needs from the program that drives it: the window,
/// the command line or a test. All calls come from the thread that called
/// ConversionRun::run().
class ConversionHost
{
public:
    virtual ~ConversionHost();

    /// Empties the status list before a run writes its first row.
    virtual void clearStatusRows() = 0;
    /// Appends one row; the window shows it at once.
    virtual void addStatusRow(const StatusRow &row) = 0;
    /// Percent of the run reached, for the caption ("Valtrona - 33 %").
    virtual void setCaptionPercent(int percent) = 0;
    /// Progress after file `index` of `count` started; text is "3 von 30...".
    virtual void setProgress(int index, int count, const QString &progressText) = 0;
    /// Shows the file being worked on; an empty path clears the preview.
    virtual void showPreview(const QString &path) = 0;
    /// Lets the host process pending events (the window stays responsive).
    virtual void yield() = 0;
    /// True once the user asked to stop; polled once per file before its work.
    virtual bool stopRequested() = 0;
    /// Width and height fields and units as they stand now.
    virtual FileInputs fileInputs() = 0;
    /// Whether "Quelldateien nach Bearbeitung löschen" is set now.
    virtual bool deleteSources() = 0;
    /// File `source` was reported with an "ERR" row; `error` says why
    /// (errorText() gives the German reason). Called right after that row.
    virtual void fileFailed(const QString &source, const Error &error) = 0;

    /// The run has ended (finished or stopped): reset controls and caption.
    virtual void runEnded() = 0;
};

} // namespace valtrona
