#pragma once

#include <QString>

namespace valtrona {

/// The program's title as shown in window captions ("Valtrona").
QString programTitle();

/// The version from the build, for example "0.1.0".
QString programVersion();

} // namespace valtrona
