#pragma once

// Internals shared by the imaging sources; never included by public headers.
// Opening a source file for the image library: the file is opened once by
// us, so the error codes come from the system's own answer and every later
// read reaches this very file, whatever happens to its name meanwhile.

#include "core/error.h"
#include "core/expected.h"

#include <QByteArray>
#include <QString>

#include <atomic>

#include <vips/vips8>

namespace valtrona::imaging::detail {

/// True when a stop flag is given and set.
bool isRequested(const std::atomic_bool *flag);

/// The error of a drawing stopped on request.
Error cancelledError();

/// The library's message of a failed call, as captured when it failed; the
/// library's pending error is cleared.
QString libraryMessage(const vips::VError &error);

/// A source file, opened once. The library reads it through sources of its
/// own (each with its own position) or, for loaders that only take names,
/// through the descriptor's name under /proc. A set cancel flag ends the
/// decoding at its next read.
class SourceFile
{
public:
    explicit SourceFile(const std::atomic_bool *cancel = nullptr);
    ~SourceFile();
    SourceFile(const SourceFile &) = delete;
    SourceFile &operator=(const SourceFile &) = delete;

    /// Opens a regular file for reading. Errors: SourceMissing,
    /// SourceUnreadable (permissions, I/O, not a regular file).
    [[nodiscard]] Expected<void, Error> open(const QString &path);

    int descriptor() const;
    qint64 size() const;
    bool cancelRequested() const;

    /// The errno of a failed read, 0 when none failed.
    int readErrno() const;
    Error readError() const;

    /// A new library source over the file, reading from its start.
    vips::VSource newSource();

    /// A name the library can open the same file by; empty when there is
    /// none (the library would read a trailing "[...]" as options).
    QByteArray libraryName() const;

private:
    struct Reader
    {
        SourceFile *file;
        qint64 position = 0;
    };

    static gint64 read(VipsSourceCustom *, void *buffer, gint64 length, Reader *reader);
    static gint64 seek(VipsSourceCustom *, gint64 offset, int whence, Reader *reader);

    const std::atomic_bool *m_cancel;
    QString m_path;
    int m_fd = -1;
    qint64 m_size = 0;
    std::atomic<int> m_readErrno {0};
};

/// The loader the library picked for a file: by its content, never by a name.
struct Loader
{
    QByteArray name;         ///< the library's nickname ("jpegload_source", "magickload", ...)
    bool fromSource = false; ///< reads through a source; otherwise only by file name

    bool isJpeg() const;
    bool isPng() const;
};

/// The loader for an opened file, the format modules loaded when no
/// built-in loader knows it. Errors: UnknownFormat, and the file's read errors.
[[nodiscard]] Expected<Loader, Error> findLoader(SourceFile &file);

/// Opens `path` into `file` and finds its loader: the first two steps of
/// every read. Errors: those of SourceFile::open() and findLoader().
[[nodiscard]] Expected<Loader, Error> openSource(SourceFile &file, const QString &path);

/// Opens an image lazily for one top-to-bottom read: only the header is
/// read here. shrink > 1 is for JPEG only. Errors: Damaged (a broken header
/// or no pixels), the file's read errors, and Internal "cancelled".
[[nodiscard]] Expected<vips::VImage, Error> openImage(SourceFile &file, const Loader &loader, VipsFailOn failOn,
                                                      int shrink = 1);

} // namespace valtrona::imaging::detail
