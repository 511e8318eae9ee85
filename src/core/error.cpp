#include "core/error.h"

#include <cerrno>
#include <cstring>

using namespace Qt::StringLiterals;

namespace valtrona {

QString errorText(ErrorCode code)
{
    switch (code) {
    case ErrorCode::SourceMissing:
        return u"Quelldatei nicht gefunden"_s;
    case ErrorCode::SourceUnreadable:
        return u"Quelldatei nicht lesbar"_s;
    case ErrorCode::UnknownFormat:
        return u"Kein Bild oder unbekanntes Bildformat"_s;
    case ErrorCode::Damaged:
        return u"Bilddaten beschädigt oder unvollständig"_s;
    case ErrorCode::TooLarge:
        return u"Bild zu groß für den verfügbaren Arbeitsspeicher"_s;
    case ErrorCode::SizeUnusable:
        return u"Zielgröße nicht verwendbar"_s;
    case ErrorCode::NoEncoder:
        return u"Zielformat wird nicht unterstützt"_s;
    case ErrorCode::TargetNotWritable:
        return u"Zielordner nicht beschreibbar"_s;
    case ErrorCode::TargetOccupied:
        return u"Am Zielort steht ein Ordner gleichen Namens"_s;
    case ErrorCode::TargetIsUnreadSource:
        return u"Zieldatei ist eine noch nicht gelesene Quelldatei"_s;
    case ErrorCode::TargetPathUnsafe:
        return u"Zielpfad führt über eine Verknüpfung oder aus dem Zielordner hinaus"_s;
    case ErrorCode::DiskFull:
        return u"Kein Platz mehr auf dem Zieldatenträger"_s;
    case ErrorCode::FileSizeLimit:
        return u"Dateigrößengrenze erreicht"_s;
    case ErrorCode::Internal:
        break;
    }
    return u"Interner Fehler der Bildverarbeitung"_s;
}

namespace {

QString systemText(int errnoValue, const QString &path)
{
    return QString::fromLocal8Bit(std::strerror(errnoValue)) + u": "_s + path;
}

} // namespace

Error sourceError(int errnoValue, const QString &path)
{
    const ErrorCode code = errnoValue == ENOENT || errnoValue == ENOTDIR ? ErrorCode::SourceMissing
                                                                          : ErrorCode::SourceUnreadable;
    return {code, systemText(errnoValue, path)};
}

Error targetError(int errnoValue, const QString &path)
{
    ErrorCode code = ErrorCode::TargetNotWritable;
    switch (errnoValue) {
    case ENOSPC:
    case EDQUOT:
        code = ErrorCode::DiskFull;
        break;
    case EFBIG:
        code = ErrorCode::FileSizeLimit;
        break;
    case EISDIR:
        code = ErrorCode::TargetOccupied;
        break;
    case ELOOP:
        code = ErrorCode::TargetPathUnsafe;
        break;
    default:
        break;
    }
    return {code, systemText(errnoValue, path)};
}

} // namespace valtrona
