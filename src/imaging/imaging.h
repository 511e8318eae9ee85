#pragma once

// The imaging layer: the one place that talks to the image library.
//
// Lifecycle: start() once before anything else, restart() between batches to
// give back caches and buffers, stop() when the program ends. The engine calls
// start/stop/restart only while no conversion is in flight; measure, draw and
// save may then be called from several threads at once.
//
// Failures are passed over, not raised: every operation returns a plain
// result (false, 0 x 0, a null Picture) and hands its status number to
// checkStatus(), which tells the reporter unless the layer is quiet.

#include <QString>

#include <functional>

namespace valtrona::imaging {

/// Status numbers of the layer. 0 is success; the texts are statusText()'s.
enum Status : int {
    Ok = 0,
    GenericError = 1,
    InvalidParameter = 2,
    OutOfMemory = 3,
    ObjectBusy = 4,
    InsufficientBuffer = 5,
    NotImplemented = 6,
    Win32Error = 7, ///< an operating-system file operation failed (open, write, rename)
    WrongState = 8,
    Aborted = 9,
    FileNotFound = 10,
    ValueOverflow = 11, ///< also: an image larger than the layer accepts
    AccessDenied = 12,
    UnknownImageFormat = 13,
    FontFamilyNotFound = 14,
    FontStyleNotFound = 15,
    NotTrueTypeFont = 16,
    UnsupportedGdiplusVersion = 17,
    GdiplusNotInitialized = 18, ///< an operation was called while the layer is stopped
    PropertyNotFound = 19,
    PropertyNotSupported = 20,
};

/// Receives a failure report: title and text of the message to show.
/// May be called from any thread that runs an imaging operation; a window
/// must hand the report over to its own thread before showing a box.
using Reporter = std::function<void(const QString &title, const QString &text)>;

/// Starts the layer (the image library is initialised once per process).
/// Returns the started flag; false only when the library cannot initialise.
bool start();

/// Stops the layer: drops the operation cache and the calling thread's
/// buffers and clears the started flag. The library itself stays loaded, so
/// start() works again afterwards.
void stop();

/// stop(), then start(); returns the started flag.
bool restart();

/// True while the layer is started.
bool isStarted();

/// Passes a status through: 0 silently; any other value is reported, unless
/// the layer is quiet, with the title "GDI Error" and the text
/// statusText(status) + " GDI+ Error:" + status. Returns status unchanged.
int checkStatus(int status);

/// The text for a status number: "Generic Error." for 1, ... "Property Not
/// Supported." for 20, "Unknown GDI+ Error." for any other non-zero value and
/// the empty text for 0.
QString statusText(int status);

/// When quiet, checkStatus() reports nothing (it still returns the status).
void setQuiet(bool quiet);
bool isQuiet();

/// Installs the receiver of failure reports; an empty function reports
/// nowhere. The default reporter writes "title: text" to stderr.
void setReporter(Reporter reporter);

/// The status of the calling thread's last imaging operation (0 after a
/// success) and the image library's message for it (empty when none). Lets a
/// front end log why a file failed without showing boxes.
int lastStatus();
QString lastErrorMessage();

/// Number of worker threads the image library may use inside one conversion.
/// 0 restores the library's default (the number of cores). An engine that
/// converts N files at once should set about cores / N.
void setConcurrency(int threads);
int concurrency();

/// Which way up pictures come out. A photo's EXIF data (or a TIFF's header)
/// may record that its pixels are stored turned or mirrored, as a camera
/// held on its side stores them; Upright turns them the way the record says
/// they are to be shown, Stored takes them as they lie in the file.
enum class Orientation { Upright, Stored };

/// The orientation measure() and the previews (loadPreview(),
/// loadPreviewFromData()) use; Upright until set. Process-wide: a front end
/// sets it from its settings. Conversions take theirs with each request.
void setOrientation(Orientation orientation);
Orientation orientation();

/// Measures an image from its header only (pixels are never decoded), in
/// the orientation set with setOrientation(): a photo stored on its side
/// measures as it is shown when Upright.
/// A missing file gives false and 0 x 0 without any report; an unreadable,
/// unknown, corrupt or implausibly large image (more than maxImagePixels())
/// gives false and 0 x 0 with its status passed to checkStatus().
bool measure(const QString &path, int &width, int &height);

/// The largest image, in pixels, that the layer accepts (width * height).
qint64 maxImagePixels();

/// Finds the encoder for a MIME type such as "image/jpeg", compared ignoring
/// case. Returns the file suffix the encoder writes (".jpg", ".png", ...) or
/// the empty text when there is none. Reports nothing.
QString findEncoder(const QString &mimeType);

/// Copies a file byte for byte into place: written under a temporary name in
/// the target's directory and renamed, so a failure leaves no target behind.
/// Copying a file onto itself succeeds without touching it.
bool copyFile(const QString &source, const QString &target);

} // namespace valtrona::imaging
