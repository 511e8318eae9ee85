#pragma once

class QCoreApplication;

namespace valtrona {

/// Loads Qt's own German translation (qtbase_de) from Qt's translations
/// directory and installs it, so standard buttons and dialogs read
/// "Ja", "Nein", "Abbrechen". Returns false when the file is missing.
bool installQtGermanTranslation(QCoreApplication &app);

} // namespace valtrona
