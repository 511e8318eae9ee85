#pragma once

// The imaging layer: the one place that talks to the image library.
//
// Lifecycle: start() once before anything else, restart() between batches to
// give back caches and buffers, stop() when the program ends. The engine calls
// start/stop/restart only while no conversion is in flight; measuring,
// drawing and previews may then run on several threads at once.
//
// Every fallible call returns its result or an Error (core/error.h) that
// says why; the layer keeps no error state and shows or prints nothing.

#include "core/error.h"
#include "core/expected.h"

#include <QSize>
#include <QString>

namespace valtrona::imaging {

/// Starts the layer (the image library is initialised once per process).
/// Fails with Internal, the library's message as detail, only when the
/// library cannot initialise; it never can afterwards.
[[nodiscard]] Expected<void, Error> start();

/// Stops the layer: drops the operation cache and the calling thread's
/// buffers and clears the started flag. The library itself stays loaded, so
/// start() works again afterwards.
void stop();

/// stop(), then start again. Since the library stays initialised, the
/// layer is started afterwards unless the library could never initialise
/// (start() says why).
void restart();

/// True while the layer is started.
bool isStarted();

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

/// The size of an image from its header only (pixels are never decoded), in
/// the orientation set with setOrientation(): a photo stored on its side
/// measures as it is shown when Upright. Errors: SourceMissing (nothing is
/// read), SourceUnreadable, UnknownFormat, Damaged (a broken header),
/// TooLarge (more than maxImagePixels()), Internal (the layer is stopped).
[[nodiscard]] Expected<QSize, Error> measure(const QString &path);

/// The largest image, in pixels, that the layer accepts (width * height).
qint64 maxImagePixels();

} // namespace valtrona::imaging
