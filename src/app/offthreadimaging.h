#pragma once

#include "batch/conversionimaging.h"

#include <functional>

namespace valtrona {

/// Runs the long part of one conversion (decode, scale, encode) on a worker
/// thread while the window's events keep being processed, so a
/// 40-megapixel photo never freezes the window. Calls still happen one at a
/// time and in the order the run makes them, so its rows stay in sequence.
class OffThreadImaging : public ConversionImaging
{
public:
    /// `inner` does the work; with processEvents the calling thread serves
    /// its events while a worker is busy, else it only waits.
    OffThreadImaging(ConversionImaging &inner, bool processEvents = true);

    bool restart() override;
    SourceSize measure(const QString &path) override;
    bool drawAndSave(const QString &source, const QString &target, int width, int height,
                     const DrawingSettings &settings, const QString &formatCode) override;
    bool copyFile(const QString &source, const QString &target) override;
    std::optional<QByteArray> readExif(const QString &source) override;
    bool writeExif(const QString &target, const QByteArray &block) override;
    Error lastError() override;

private:
    bool offThread(const std::function<bool()> &work);

    ConversionImaging &m_inner;
    bool m_processEvents = true;
};

} // namespace valtrona
