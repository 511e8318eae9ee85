#pragma once

// Internals shared by the imaging sources; never included by public headers.

#include "imaging/picture.h"

#include <QString>

#include <vips/vips8>

namespace valtrona::imaging {

// The pixels of a picture: sRGB, uchar, three or four bands, in memory.
class Picture::Private
{
public:
    vips::VImage image;
};

class PictureAccess
{
public:
    static Picture make(vips::VImage image);
    static const vips::VImage *image(const Picture &picture);
};

namespace detail {

/// Initialises the image library once per process; false when it cannot.
bool ensureLibrary();

/// True once the library's format modules are loaded (or were loaded by the
/// library itself at start).
bool formatModulesLoaded();

/// Loads the library's format modules (ImageMagick, PDF, HEIF, ...), once per
/// process; the library starts without them.
void loadFormatModules();

/// Hands a message to the reporter, whether or not the layer is quiet.
void report(const QString &title, const QString &text);

/// Records the calling thread's outcome: status and library message.
void setLast(int status, const QString &message = {});

/// Records a failure, passes it to checkStatus() and returns false.
bool fail(int status, const QString &message = {});

/// Status for an image-library error message (and the file it was about).
int statusFromVipsMessage(const QString &message);

/// The library's pending error text, cleared.
QString takeVipsError();

/// Opens an image file lazily for one top-to-bottom read (header only until
/// pixels are asked for). failOnTruncation makes a cut-off file an error
/// instead of grey rows; shrink > 1 is for JPEG only. Formats the library
/// reads only from named files are opened that way. Throws vips::VError.
vips::VImage openImage(const QString &path, bool failOnTruncation, int shrink = 1);

/// True when opening by name is possible for this path: the library reads a
/// trailing "[...]" of a file name as load options.
bool nameIsSafeForLibrary(const QByteArray &name);

/// The path as the library wants it (local 8-bit file name).
QByteArray nativePath(const QString &path);

/// Writes bytes to path through a temporary file in the same directory and
/// a rename. On failure nothing is left behind and the status is returned.
int writeFileAtomically(const QString &path, const char *data, qint64 size);

} // namespace detail

} // namespace valtrona::imaging
