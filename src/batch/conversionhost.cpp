#include "batch/conversionhost.h"

using namespace Qt::StringLiterals;

namespace valtrona {

QString statusIconKey(int kind)
{
    switch (kind) {
    case int(StatusKind::Picture):
        return u"PIC"_s;
    case int(StatusKind::Written):
        return u"POK"_s;
    case int(StatusKind::Error):
        return u"ERR"_s;
    case int(StatusKind::Info):
        return u"INF"_s;
    default:
        return u"EPY"_s;
    }
}

ConversionHost::~ConversionHost() = default;

} // namespace valtrona
