#include "core/settings.h"

#include "core/inifile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QMutex>
#include <QStandardPaths>

#include <array>

namespace valtrona {

using namespace Qt::StringLiterals;

namespace {

// The seeded preset widths, the same in every list.
constexpr std::array<int, 16> presetWidths {180, 210, 240, 320, 400, 510, 621, 630,
                                            640, 800, 825, 1024, 1200, 1280, 1600, 2048};

struct PresetRatio
{
    const char *key;
    int numerator;   // height = width * numerator / denominator
    int denominator;
};

constexpr std::array<PresetRatio, 4> presetRatios {{
    {"43", 3, 4},
    {"32", 2, 3},
    {"54", 4, 5},
    {"169", 9, 16},
}};

QString withTrailingSlash(const QString &path)
{
    if (path.isEmpty() || path.endsWith(u'/'))
        return path;
    return path + u'/';
}

QString executableBaseName()
{
    if (QCoreApplication::instance()) {
        const QString name = QFileInfo(QCoreApplication::applicationFilePath()).completeBaseName();
        if (!name.isEmpty())
            return name;
    }
    return u"valtrona"_s;
}

QString executableDirectory()
{
    if (!QCoreApplication::instance())
        return {};
    return QCoreApplication::applicationDirPath();
}

struct SettingsPathHolder
{
    QMutex mutex;
    QString path;
};

SettingsPathHolder &settingsPathHolder()
{
    static SettingsPathHolder holder;
    return holder;
}

} // namespace

QStringList presetKeys()
{
    QStringList keys;
    for (const PresetRatio &ratio : presetRatios)
        keys.append(QString::fromLatin1(ratio.key));
    return keys;
}

QString presetSection(const QString &presetKey)
{
    return ini::presetSectionPrefix + presetKey;
}

QStringList defaultPresetEntries(const QString &presetKey)
{
    QStringList entries;
    for (const PresetRatio &ratio : presetRatios) {
        if (presetKey != QLatin1String(ratio.key))
            continue;
        for (const int width : presetWidths) {
            // Halves round up here: the lists were made that way.
            const int height =
                (2 * width * ratio.numerator + ratio.denominator) / (2 * ratio.denominator);
            entries.append(u"%1x%2"_s.arg(width, 4, 10, QLatin1Char('0'))
                               .arg(height, 4, 10, QLatin1Char('0')));
        }
    }
    return entries;
}

QList<SettingDefault> seededDefaults()
{
    const QString main = ini::sectionMain;
    const QString last = ini::sectionLast;
    const QString jpg = ini::sectionJpg;
    const DrawingSettings drawing;
    QList<SettingDefault> defaults {
        {main, ini::keyVersion, u"1"_s},
        {last, ini::keyStyle, u"3"_s},
        {last, ini::keyWidth, u"1024"_s},
        {last, ini::keyHeight, u"768"_s},
        {last, ini::keyWidthUnit, u"0"_s},
        {last, ini::keyHeightUnit, u"0"_s},
        {last, ini::keyPath, QString()},
        {jpg, ini::keyQuality, QString::number(drawing.quality)},
        {jpg, ini::keyInterpolation, QString::number(drawing.interpolation)},
        {jpg, ini::keySmoothing, QString::number(drawing.smoothing)},
        {jpg, ini::keyPixelOffset, QString::number(drawing.pixelOffset)},
        {jpg, ini::keyCompositing, QString::number(drawing.compositing)},
    };
    const QStringList keys = presetKeys();
    for (const QString &presetKey : keys) {
        const QString section = presetSection(presetKey);
        const QStringList entries = defaultPresetEntries(presetKey);
        for (qsizetype i = 0; i < entries.size(); ++i)
            defaults.append({section, u"%1"_s.arg(i + 1, 2, 10, QLatin1Char('0')), entries.at(i)});
    }
    return defaults;
}

bool keepsSettings(const QString &executableDirectory)
{
    if (executableDirectory.isEmpty())
        return false;
    const QString canonical = QFileInfo(executableDirectory).canonicalFilePath();
    for (const QString &system : {u"/usr"_s, u"/bin"_s, u"/sbin"_s, u"/lib"_s, u"/opt"_s}) {
        if (canonical == system || canonical.startsWith(system + u'/'))
            return false;
    }
    const QFileInfo info(executableDirectory);
    return info.isDir() && info.isWritable();
}

QString programDirectory()
{
    const QString exeDir = executableDirectory();
    if (keepsSettings(exeDir))
        return withTrailingSlash(exeDir);
    QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    if (config.isEmpty())
        config = QDir::homePath() + u"/.config"_s;
    const QString dir = withTrailingSlash(config) + u"valtrona"_s;
    QDir().mkpath(dir);
    return dir + u'/';
}

QString settingsFilePath(const QString &extension, const QString &subdirectory,
                         const QString &baseName)
{
    QString ext = extension;
    if (ext.startsWith(u'.'))
        ext.remove(0, 1);
    QString path = programDirectory();
    if (!subdirectory.isEmpty())
        path += withTrailingSlash(subdirectory);
    return path + (baseName.isEmpty() ? executableBaseName() : baseName) + u'.' + ext;
}

QString settingsPath()
{
    SettingsPathHolder &holder = settingsPathHolder();
    QMutexLocker locker(&holder.mutex);
    if (holder.path.isEmpty())
        holder.path = settingsFilePath(u"ini"_s);
    return holder.path;
}

void setSettingsPath(const QString &path)
{
    SettingsPathHolder &holder = settingsPathHolder();
    QMutexLocker locker(&holder.mutex);
    holder.path = path;
}

void seedDefaultSettings(const QString &file)
{
    // All defaults in one locked edit and at most one write: the same result
    // as ensuring them one by one, without rewriting the file seventy times
    // on the first start.
    const QList<SettingDefault> defaults = seededDefaults();
    const bool seeded = editIniFile(file, [&defaults](IniDocument &document) {
        for (const SettingDefault &entry : defaults) {
            if (document.value(entry.section, entry.key).value_or(QString()).isEmpty()
                && !document.setValue(entry.section, entry.key, entry.value))
                return false;
        }
        return true;
    });
    // A file that cannot be read or written stays as it is: the readers then
    // give their own defaults. Tidying tells only whether it rewrote.
    if (seeded)
        tidyIniFile(file);
}

void seedDefaultSettings()
{
    seedDefaultSettings(settingsPath());
}

DrawingSettings readDrawingSettings(const QString &file, const DrawingSettings &missing)
{
    const QString jpg = ini::sectionJpg;
    DrawingSettings settings;
    settings.quality = readIniInt(file, jpg, ini::keyQuality, missing.quality);
    settings.interpolation = readIniInt(file, jpg, ini::keyInterpolation, missing.interpolation);
    settings.smoothing = readIniInt(file, jpg, ini::keySmoothing, missing.smoothing);
    settings.pixelOffset = readIniInt(file, jpg, ini::keyPixelOffset, missing.pixelOffset);
    settings.compositing = readIniInt(file, jpg, ini::keyCompositing, missing.compositing);
    settings.upright = readIniString(file, jpg, ini::keyOrientation).trimmed() != u"0"_s;
    return settings;
}

LastParameters readLastParameters(const QString &file)
{
    const QString last = ini::sectionLast;
    LastParameters p;
    p.style = readIniInt(file, last, ini::keyStyle, 0);
    p.width = readIniString(file, last, ini::keyWidth);
    p.height = readIniString(file, last, ini::keyHeight);
    p.widthUnit = readIniInt(file, last, ini::keyWidthUnit, 0);
    p.heightUnit = readIniInt(file, last, ini::keyHeightUnit, 0);
    p.path = readIniString(file, last, ini::keyPath);
    p.searchFor = readIniString(file, last, ini::keySearchFor);
    p.replaceWith = readIniString(file, last, ini::keyReplaceWith);
    return p;
}

bool writeLastParameters(const QString &file, const LastParameters &p)
{
    const QString last = ini::sectionLast;
    bool ok = writeIniString(file, last, ini::keyStyle, QString::number(p.style));
    ok = writeIniString(file, last, ini::keyWidth, p.width) && ok;
    ok = writeIniString(file, last, ini::keyHeight, p.height) && ok;
    ok = writeIniString(file, last, ini::keyWidthUnit, QString::number(p.widthUnit)) && ok;
    ok = writeIniString(file, last, ini::keyHeightUnit, QString::number(p.heightUnit)) && ok;
    ok = writeIniString(file, last, ini::keyPath, p.path) && ok;
    ok = writeIniString(file, last, ini::keySearchFor, p.searchFor) && ok;
    ok = writeIniString(file, last, ini::keyReplaceWith, p.replaceWith) && ok;
    return ok;
}

} // namespace valtrona
