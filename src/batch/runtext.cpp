#include "batch/runtext.h"

#include "core/fileservices.h"
#include "core/numeric.h"

using namespace Qt::StringLiterals;

namespace valtrona {

namespace runtext {

QString startRow(int count)
{
    return u"Bearbeite "_s + QString::number(count) + u" Bilder"_s;
}

QString pictureRow(const QString &path)
{
    return u"Bearbeite Bild : "_s + files::fileNamePart(path);
}

QString targetName(const QString &path)
{
    return u"Dateiname : "_s + files::fileNamePart(path);
}

QString rightSize(int width, int height)
{
    return u"Quelldatei hat bereits korrekte Größe ("_s + QString::number(width) + u'x' + QString::number(height)
        + u')';
}

QString progressText(int index, int count)
{
    return QString::number(index) + u" von "_s + QString::number(count) + u"..."_s;
}

QString finished()
{
    return u"Bearbeitung abgeschlossen"_s;
}

QString stopped()
{
    return u"Bearbeitung abgebrochen"_s;
}

QString success()
{
    return u"Bild erfolgreich bearbeitet"_s;
}

QString failure()
{
    return u"Fehler beim Verarbeiten des Bildes"_s;
}

QString deleting()
{
    return u"Quelldatei wird gelöscht..."_s;
}

QString notDeletedSameFile()
{
    return u"Quelldatei ist zugleich die Zieldatei und wird nicht gelöscht"_s;
}

} // namespace runtext

int runPercent(int index, int count)
{
    if (count <= 0)
        return 0;
    return toInt32Or(static_cast<double>(index) / count * 100.0, 0);
}

} // namespace valtrona
