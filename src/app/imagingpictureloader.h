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

    /// Hands over a picture read ahead (on another thread) for `path`; the
    /// next load() of that path takes it when it is large enough.
    void prime(const QString &path, const LoadedPicture &picture);

    LoadedPicture load(const QString &path, const ShownSizeFunction &shownSize) override;
    LoadedPicture loadFromData(const QByteArray &data, const ShownSizeFunction &shownSize) override;

    /// The decoded picture of an image file, no larger than box (0: no
    /// limit); a null image when unreadable. Safe on any thread.
    static LoadedPicture readPreview(const QString &path, const QSize &box);

private:
    std::function<QSize(const QString &)> m_measure;
    QString m_primedPath;
    LoadedPicture m_primed;
};

} // namespace valtrona
