#pragma once

#include "core/error.h"
#include "core/expected.h"
#include "core/settings.h"
#include "imaging/conversion.h"

#include <QString>

#include <atomic>
#include <optional>

namespace valtrona {

namespace files {
class PendingFile;
}

/// The file formats a run writes.
using ImageFormat = imaging::OutputFormat;

/// The format of a format code, ignoring case: "J" JPEG, "P" PNG, "W" WebP,
/// "A" AVIF; nothing for any other code (such a run saves nothing).
std::optional<ImageFormat> formatForCode(const QString &code);

/// The file extension of a format: ".jpg", ".png", ".webp", ".avif".
QString formatExtension(ImageFormat format);

/// What the run learns from a source's header before it draws it: its size
/// and what its decoding will take.
using SourceFacts = imaging::SourceInfo;

/// One drawing: a source scaled to exactly width x height.
struct DrawJob
{
    QString source;
    int width = 0;
    int height = 0;
    DrawingSettings settings;
    ImageFormat format = ImageFormat::Jpeg;
    bool carryExif = false; ///< a JPEG source's EXIF data goes into the output (not PNG)
    const std::atomic_bool *cancel = nullptr; ///< when set, the drawing may end early with an error
};

/// The imaging a conversion run uses. Everything but restart() is called
/// from several worker threads at once; restart() only while no other call
/// runs. Outputs are written into pending files that the run puts into place.
class ConversionImaging
{
public:
    virtual ~ConversionImaging();

    /// Releases what the imaging library holds and starts it again; false when it failed.
    [[nodiscard]] virtual bool restart() = 0;
    /// Reads the header only; the size as shown when `upright` (a photo
    /// stored on its side turned as its EXIF data says), else as stored.
    [[nodiscard]] virtual Expected<SourceFacts, Error> inspect(const QString &path, bool upright) = 0;
    /// Peak memory of a drawing, estimated from the header, for admitting it.
    virtual qint64 drawMemory(const SourceFacts &facts, const DrawJob &job) = 0;
    /// Draws, encodes and writes into `output`; complete only on success.
    [[nodiscard]] virtual Expected<void, Error> drawInto(const DrawJob &job, files::PendingFile &output) = 0;
    /// The source's bytes unchanged into `output`.
    [[nodiscard]] virtual Expected<void, Error> copyInto(const QString &source, files::PendingFile &output) = 0;
};

} // namespace valtrona
