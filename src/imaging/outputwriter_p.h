#pragma once

// Internals shared by the imaging sources; never included by public headers.

#include "core/error.h"
#include "core/expected.h"

#include <QByteArray>
#include <QSize>

#include <atomic>
#include <optional>

#include <vips/vips8>

namespace valtrona::files {
class PendingFile;
}

namespace valtrona::imaging::detail {

/// Takes an encoder's bytes and writes them into a pending file as they
/// come. A JPEG gets the plain JFIF segment after its start marker (the
/// encoder writes none once metadata is stripped) and, when asked, the
/// source's EXIF header block in place of that start marker; the first bytes
/// are held back until that can be decided. A WebP file is held back whole
/// (its encoder hands it over in one piece at the end anyway) to set its
/// metadata: none, or the EXIF chunk asked for.
class OutputWriter
{
public:
    enum class Kind { Plain, Jpeg, Webp };

    /// `exif` is the header block for a JPEG, the TIFF structure for a WebP
    /// file; `size` is the picture's.
    OutputWriter(files::PendingFile &file, Kind kind, QByteArray exif, QSize size, const std::atomic_bool *cancel);

    /// A custom target that writes through this writer.
    vips::VTarget newTarget();

    /// Checks what can only be checked once everything is written.
    [[nodiscard]] Expected<void, Error> finish();

    /// The pending file's write error, once one happened.
    const std::optional<Error> &error() const;
    /// True once a write was refused because a stop was requested.
    bool cancelled() const;

private:
    static gint64 onWrite(VipsTargetCustom *, const void *data, gint64 length, OutputWriter *writer);
    static int onEnd(VipsTargetCustom *, OutputWriter *writer);

    bool write(QByteArrayView bytes);
    bool release();
    bool put(QByteArrayView bytes);

    files::PendingFile &m_file;
    const Kind m_kind;
    const QByteArray m_exif;
    const QSize m_size;
    const std::atomic_bool *m_cancel;
    QByteArray m_head;
    bool m_released = false;
    bool m_exifCarried = false; ///< in front of a JPEG
    bool m_cancelled = false;
    char m_tail[2] = {0, 0};
    std::optional<Error> m_error;
};

} // namespace valtrona::imaging::detail
