#include "imaging/outputwriter_p.h"
#include "imaging/imaging_p.h"
#include "imaging/jpegheader.h"
#include "imaging/sourcefile_p.h"

#include "core/targetfolder.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace valtrona::imaging::detail {

namespace {

// Bytes of the encoded file held back before the header decision: the
// start marker and the next segment's marker and identifier.
constexpr qsizetype kHeadLength = 10;

} // namespace

OutputWriter::OutputWriter(files::PendingFile &file, Kind kind, QByteArray exif, QSize size,
                           const std::atomic_bool *cancel)
    : m_file(file), m_kind(kind), m_exif(std::move(exif)), m_size(size), m_cancel(cancel)
{
}

vips::VTarget OutputWriter::newTarget()
{
    VipsTargetCustom *custom = vips_target_custom_new();
    g_signal_connect(custom, "write", G_CALLBACK(&OutputWriter::onWrite), this);
    g_signal_connect(custom, "end", G_CALLBACK(&OutputWriter::onEnd), this);
    return vips::VTarget(VIPS_TARGET(custom));
}

Expected<void, Error> OutputWriter::finish()
{
    if (m_error)
        return unexpected(*m_error);
    if (!m_released && !release())
        return unexpected(*m_error);
    // The EXIF block goes only in front of a whole JPEG, one that ends
    // with its end marker.
    if (m_exifCarried && m_kind == Kind::Jpeg && !(m_tail[0] == char(0xFF) && m_tail[1] == char(0xD9)))
        return unexpected(Error {ErrorCode::Internal, u"encoder output does not end with an end marker"_s});
    return {};
}

const std::optional<Error> &OutputWriter::error() const
{
    return m_error;
}

bool OutputWriter::cancelled() const
{
    return m_cancelled;
}

gint64 OutputWriter::onWrite(VipsTargetCustom *, const void *data, gint64 length, OutputWriter *writer)
{
    return writer->write(QByteArrayView(static_cast<const char *>(data), qsizetype(length))) ? length : -1;
}

int OutputWriter::onEnd(VipsTargetCustom *, OutputWriter *writer)
{
    if (!writer->m_released && !writer->release())
        return -1;
    return 0;
}

bool OutputWriter::write(QByteArrayView bytes)
{
    if (isRequested(m_cancel)) {
        m_cancelled = true;
        return false;
    }
    if (m_released)
        return put(bytes);
    switch (m_kind) {
    case Kind::Plain:
        m_released = true;
        return put(bytes);
    case Kind::Webp:
        m_head.append(bytes);
        return true;
    case Kind::Jpeg:
        break;
    }
    const qsizetype taken = std::min(bytes.size(), kHeadLength - m_head.size());
    m_head.append(bytes.first(taken));
    if (m_head.size() < kHeadLength)
        return true;
    return release() && put(bytes.sliced(taken));
}

// Writes what was held back: for a JPEG the start of the file, with the JFIF
// segment put in as every written JPEG gets it, and the EXIF block in place
// of the start marker when the start is that of a JFIF or plain JPEG file;
// for a WebP file the whole of it with its EXIF chunk.
bool OutputWriter::release()
{
    m_released = true;
    QByteArray start = m_head;
    if (m_kind == Kind::Webp) {
        start = webpWithExifOnly(m_head, m_exif, m_size.width(), m_size.height());
        if (start.isEmpty()) {
            m_error = Error {ErrorCode::Internal, u"the WebP encoder wrote no WebP file"_s};
            return false;
        }
        return put(start);
    }
    if (m_kind == Kind::Jpeg && start.size() >= 4 && start.startsWith("\xff\xd8")
        && static_cast<unsigned char>(start.at(3)) != 0xE0)
        start = start.left(2) + jfifSegment() + start.mid(2);
    if (m_kind == Kind::Jpeg && !m_exif.isEmpty()) {
        const int kind = parseJpegHeader(start, false).kind;
        if (kind == 1 || kind == 3) {
            start = m_exif + start.mid(2);
            m_exifCarried = true;
        }
    }
    return put(start);
}

bool OutputWriter::put(QByteArrayView bytes)
{
    if (bytes.isEmpty())
        return true;
    if (auto written = m_file.write(bytes); !written) {
        m_error = written.error();
        return false;
    }
    if (bytes.size() >= 2) {
        m_tail[0] = bytes.at(bytes.size() - 2);
        m_tail[1] = bytes.at(bytes.size() - 1);
    } else {
        m_tail[0] = m_tail[1];
        m_tail[1] = bytes.at(0);
    }
    return true;
}

} // namespace valtrona::imaging::detail
