#pragma once

#include <QString>

namespace valtrona {

/// The row texts a run writes, for the run and for hosts and tests that
/// look for them.
namespace runtext {
QString startRow(int count);              ///< "Bearbeite 3 Bilder"
QString pictureRow(const QString &path);  ///< "Bearbeite Bild : a.jpg"
QString targetName(const QString &path);  ///< "Dateiname : a.jpg"
QString rightSize(int width, int height); ///< "Quelldatei hat bereits korrekte Größe (160x120)"
QString progressText(int index, int count); ///< "3 von 30..."
QString finished();                       ///< "Bearbeitung abgeschlossen"
QString stopped();                        ///< "Bearbeitung abgebrochen"
QString success();                        ///< "Bild erfolgreich bearbeitet"
QString failure();                        ///< "Fehler beim Verarbeiten des Bildes"
QString deleting();                       ///< "Quelldatei wird gelöscht..."
QString notDeletedSameFile();             ///< the source is its own target and stays
} // namespace runtext

/// Percent of the run at file `index` of `count`, rounded half to even.
int runPercent(int index, int count);

} // namespace valtrona
