#pragma once

#include <QSize>
#include <QString>

#include <functional>

#include "controls/pictureloader.h"

namespace valtrona {

/// Reads previews through the imaging layer, so the picture views show
/// every format a run converts (TIFF and WebP included), decoded no larger
/// than they are shown.
class ImagingPictureLoader : public PictureLoader
{
public:
    /// `measure` gives a file's pixel size from its header (empty when unreadable).
    explicit ImagingPictureLoader(std::function<QSize(const QString &)> measure);

    LoadedPicture load(const QString &path, const ShownSizeFunction &shownSize) override;
    LoadedPicture loadFromData(const QByteArray &data, const ShownSizeFunction &shownSize) override;

private:
    std::function<QSize(const QString &)> m_measure;
};

} // namespace valtrona
