#pragma once

#include "core/error.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace valtrona {

/// Quality and drawing modes of section "JPG", read anew for every file.
struct DrawingSettings
{
    int quality = 85;      ///< "PRZ", JPEG quality in percent (clamped when saving)
    int interpolation = 7; ///< "INT"
    int smoothing = 4;     ///< "SMT"
    int pixelOffset = 2;   ///< "PXL"
    int compositing = 2;   ///< "CMP"

    bool operator==(const DrawingSettings &other) const = default;
};

/// Pixel size of a source; 0 x 0 when it cannot be read.
struct SourceSize
{
    int width = 0;
    int height = 0;
    /// False only when measuring failed with an error rather than an unreadable file.
    bool measured = true;
};

/// The imaging operations a conversion run uses. Everything but restart()
/// may be called from several worker threads at once; restart() is called
/// only while no other call is running.
class ConversionImaging
{
public:
    virtual ~ConversionImaging();

    /// Releases what the imaging library holds and starts it again; false when it failed.
    virtual bool restart() = 0;
    /// Reads the size from the file's header.
    virtual SourceSize measure(const QString &path) = 0;
    /// Draws `source` scaled to exactly width x height and saves it to `target`
    /// ("J" JPEG with settings.quality, "P" PNG, any other code saves nothing).
    /// The target appears whole or not at all.
    virtual bool drawAndSave(const QString &source, const QString &target, int width, int height,
                             const DrawingSettings &settings, const QString &formatCode) = 0;
    /// Copies a file byte for byte into place (temporary name, then rename).
    virtual bool copyFile(const QString &source, const QString &target) = 0;
    /// The EXIF header block of a JPEG source, or nothing.
    virtual std::optional<QByteArray> readExif(const QString &source) = 0;
    /// Puts an EXIF block in front of a JPEG target; false when the target is not fit for it.
    virtual bool writeExif(const QString &target, const QByteArray &block) = 0;
    /// Why the calling thread's last failed call failed.
    virtual Error lastError() = 0;
};

/// ConversionImaging over the program's imaging layer.
class LibraryImaging : public ConversionImaging
{
public:
    bool restart() override;
    SourceSize measure(const QString &path) override;
    bool drawAndSave(const QString &source, const QString &target, int width, int height,
                     const DrawingSettings &settings, const QString &formatCode) override;
    bool copyFile(const QString &source, const QString &target) override;
    std::optional<QByteArray> readExif(const QString &source) override;
    bool writeExif(const QString &target, const QByteArray &block) override;
    Error lastError() override;
};

} // namespace valtrona
