#include "core/appinfo.h"

namespace valtrona {

QString programTitle()
{
    return QStringLiteral("Valtrona");
}

QString programVersion()
{
    return QStringLiteral(VALTRONA_VERSION);
}

} // namespace valtrona
