#pragma once

#include "batch/conversionimaging.h"

namespace valtrona {

/// ConversionImaging over the program's imaging layer.
class LibraryImaging : public ConversionImaging
{
public:
    bool restart() override;
    Expected<SourceFacts, Error> inspect(const QString &path, bool upright) override;
    qint64 drawMemory(const SourceFacts &facts, const DrawJob &job) override;
    Expected<void, Error> drawInto(const DrawJob &job, files::PendingFile &output) override;
    Expected<void, Error> copyInto(const QString &source, files::PendingFile &output) override;
};

/// Lets each of `jobs` files converted at once use its share of the cores;
/// one job (or fewer) gives a file all of them.
void shareCoresAmong(int jobs);

} // namespace valtrona
