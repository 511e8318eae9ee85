#pragma once

// Settings as a front end that does not seed the file reads them: the
// drawing settings of section "JPG" and the last-used parameters of section
// "Last", each as it would read after start-up seeding.

#include "core/settings.h"

#include <QString>

namespace valtrona {

/// Section "JPG" as it would read after start-up seeding, without writing
/// the file: a missing or empty key gives its seeded default.
DrawingSettings readSeededDrawingSettings(const QString &settingsFile);

/// Section "Last" as the window shows it at start (after seeding), without
/// writing the file: missing or empty seeded keys give their defaults
/// (Style 3, Width 1024, Height 768, WU 0, HU 0); SFOR and REPW stay empty.
LastParameters readSeededLastParameters(const QString &settingsFile);

/// The value start-up seeding writes for a key, empty when it seeds none.
QString seededDefault(const QString &section, const QString &key);

} // namespace valtrona
