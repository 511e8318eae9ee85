#pragma once

// Why something the user asked for could not be done, from the file system
// up through imaging and the run: a code a program can act on and a detail
// for logs. The text a person reads comes from errorText().

#include <QString>

namespace valtrona {

enum class ErrorCode {
    SourceMissing,        ///< the source file is not there (any more)
    SourceUnreadable,     ///< the source exists but cannot be read (permissions, I/O)
    UnknownFormat,        ///< not an image, or a format the program does not read
    Damaged,              ///< image data corrupt, cut off, or not what the header claims
    TooLarge,             ///< decoding it would need more memory than a conversion may take
    SizeUnusable,         ///< the size rules gave no drawable target size
    NoEncoder,            ///< no encoder for the target format
    TargetNotWritable,    ///< the target folder refuses writing (permissions, read-only)
    TargetOccupied,       ///< a folder stands where the target file would go
    TargetIsUnreadSource, ///< the target is a later source of the same run, not read yet
    TargetPathUnsafe,     ///< the target path leaves the target folder or passes a link
    DiskFull,             ///< no space (or quota) left on the target's file system
    FileSizeLimit,        ///< the process's file-size limit stops the write
    Internal,             ///< anything else; the detail says what
};

struct Error
{
    ErrorCode code = ErrorCode::Internal;
    QString detail; ///< technical text for logs (library message, system error); may be empty
};

/// The reason in German, as a person reads it ("Zielordner nicht beschreibbar").
QString errorText(ErrorCode code);

/// An error for a failed system call on the source side (errno value).
Error sourceError(int errnoValue, const QString &path);

/// An error for a failed system call on the target side (errno value).
Error targetError(int errnoValue, const QString &path);

} // namespace valtrona
