#include "batch/conversionhost.h"

using namespace Qt::StringLiterals;

namespace valtrona {

QString statusIconKey(StatusKind kind)
{
    switch (kind) {
    case StatusKind::Picture:
        return u"PIC"_s;
    case StatusKind::Written:
        return u"POK"_s;
    case StatusKind::Error:
        return u"ERR"_s;
    case StatusKind::Info:
        return u"INF"_s;
    case StatusKind::None:
        break;
    }
    return u"EPY"_s;
}

ConversionHost::~ConversionHost() = default;

} // namespace valtrona
