#include "batch/libraryimaging.h"

#include "core/targetfolder.h"
#include "imaging/imaging.h"
#include "imaging/jpegheader.h"
#include "imaging/picture.h"

#include <QFile>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

Error lastImagingError()
{
    const QString message = imaging::lastErrorMessage();
    switch (imaging::lastStatus()) {
    case imaging::FileNotFound:
        return {ErrorCode::SourceMissing, message};
    case imaging::UnknownImageFormat:
        return {ErrorCode::UnknownFormat, message};
    case imaging::ValueOverflow:
    case imaging::OutOfMemory:
        return {ErrorCode::TooLarge, message};
    case imaging::AccessDenied:
        return {ErrorCode::TargetNotWritable, message};
    default:
        return {ErrorCode::Internal, message};
    }
}

} // namespace

void shareCoresAmong(int jobs)
{
    const int cores = std::max(1, QThread::idealThreadCount());
    imaging::setConcurrency(jobs > 1 ? std::max(1, cores / jobs) : 0);
}

bool LibraryImaging::restart()
{
    return imaging::restart();
}

Expected<SourceFacts, Error> LibraryImaging::inspect(const QString &path)
{
    SourceFacts facts;
    if (!imaging::measure(path, facts.width, facts.height))
        return unexpected(lastImagingError());
    return facts;
}

qint64 LibraryImaging::drawMemory(const SourceFacts &, const DrawJob &)
{
    return 0;
}

Expected<void, Error> LibraryImaging::drawInto(const DrawJob &job, files::PendingFile &output)
{
    imaging::DrawModes modes;
    modes.interpolation = job.settings.interpolation;
    modes.smoothing = job.settings.smoothing;
    modes.pixelOffset = job.settings.pixelOffset;
    modes.compositingQuality = job.settings.compositing;
    modes.compositingMode = 0;
    const QString mimeType = job.format == ImageFormat::Jpeg ? u"image/jpeg"_s : u"image/png"_s;
    const QTemporaryDir scratch;
    const QString path = scratch.filePath(u"out"_s);
    if (!imaging::drawFileToFile(job.source, path, job.width, job.height, modes, mimeType, job.settings.quality))
        return unexpected(lastImagingError());
    if (job.carryExif) {
        QByteArray block;
        if (imaging::readExif(job.source, block))
            imaging::writeExif(path, block); // a target unfit for it stays as it is
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return unexpected(Error {ErrorCode::Internal, file.errorString()});
    return output.write(file.readAll());
}

Expected<void, Error> LibraryImaging::copyInto(const QString &source, files::PendingFile &output)
{
    QFile file(source);
    if (!file.open(QIODevice::ReadOnly))
        return unexpected(Error {file.exists() ? ErrorCode::SourceUnreadable : ErrorCode::SourceMissing,
                                 file.errorString()});
    return output.write(file.readAll());
}

} // namespace valtrona
