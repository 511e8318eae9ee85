#include "batch/runsettings.h"

#include "core/inifile.h"

namespace valtrona {

namespace {

qint32 seededInt(const QString &file, const QString &section, const QString &key)
{
    // readIniInt gives its default exactly when the key is missing or empty,
    // which is when seeding would have written the default.
    const QString seeded = seededDefault(section, key);
    return readIniInt(file, section, key, seeded.toInt());
}

QString seededString(const QString &file, const QString &section, const QString &key)
{
    return readIniString(file, section, key, seededDefault(section, key));
}

} // namespace

QString seededDefault(const QString &section, const QString &key)
{
    const QList<SettingDefault> defaults = seededDefaults();
    for (const SettingDefault &entry : defaults) {
        if (entry.section.compare(section, Qt::CaseInsensitive) == 0
            && entry.key.compare(key, Qt::CaseInsensitive) == 0)
            return entry.value;
    }
    return QString();
}

DrawingSettings readSeededDrawingSettings(const QString &settingsFile)
{
    // Seeding writes what a default-made value holds.
    return readDrawingSettings(settingsFile, DrawingSettings());
}

LastParameters readSeededLastParameters(const QString &settingsFile)
{
    const QString last = ini::sectionLast;
    LastParameters parameters;
    parameters.style = seededInt(settingsFile, last, ini::keyStyle);
    parameters.width = seededString(settingsFile, last, ini::keyWidth);
    parameters.height = seededString(settingsFile, last, ini::keyHeight);
    parameters.widthUnit = seededInt(settingsFile, last, ini::keyWidthUnit);
    parameters.heightUnit = seededInt(settingsFile, last, ini::keyHeightUnit);
    parameters.path = seededString(settingsFile, last, ini::keyPath);
    parameters.searchFor = seededString(settingsFile, last, ini::keySearchFor);
    parameters.replaceWith = seededString(settingsFile, last, ini::keyReplaceWith);
    return parameters;
}

} // namespace valtrona
