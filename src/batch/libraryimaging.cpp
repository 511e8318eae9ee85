#include "batch/libraryimaging.h"

#include "imaging/conversion.h"
#include "imaging/imaging.h"

#include <QThread>

#include <algorithm>

namespace valtrona {

namespace {

imaging::DrawModes drawModes(const DrawingSettings &settings)
{
    imaging::DrawModes modes;
    modes.interpolation = settings.interpolation;
    modes.smoothing = settings.smoothing;
    modes.pixelOffset = settings.pixelOffset;
    modes.compositingQuality = settings.compositing;
    modes.compositingMode = 0;
    return modes;
}

imaging::Orientation orientation(bool upright)
{
    return upright ? imaging::Orientation::Upright : imaging::Orientation::Stored;
}

} // namespace

void shareCoresAmong(int jobs)
{
    const int cores = std::max(1, QThread::idealThreadCount());
    imaging::setConcurrency(jobs > 1 ? std::max(1, cores / jobs) : 0);
}

bool LibraryImaging::restart()
{
    imaging::restart();
    return imaging::isStarted();
}

Expected<SourceFacts, Error> LibraryImaging::inspect(const QString &path, bool upright)
{
    return imaging::inspect(path, orientation(upright));
}

qint64 LibraryImaging::drawMemory(const SourceFacts &facts, const DrawJob &job)
{
    return imaging::drawMemory(facts, job.width, job.height, drawModes(job.settings), job.format);
}

Expected<void, Error> LibraryImaging::drawInto(const DrawJob &job, files::PendingFile &output)
{
    imaging::DrawRequest request;
    request.source = job.source;
    request.width = job.width;
    request.height = job.height;
    request.modes = drawModes(job.settings);
    request.format = job.format;
    request.quality = job.settings.quality;
    request.carryExif = job.carryExif;
    request.orientation = orientation(job.settings.upright);
    request.cancel = job.cancel;
    return imaging::drawInto(request, output);
}

Expected<void, Error> LibraryImaging::copyInto(const QString &source, files::PendingFile &output)
{
    return imaging::copyInto(source, output);
}

} // namespace valtrona
