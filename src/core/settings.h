#pragma once

// The settings file: where it lives, its sections and keys, and the defaults
// seeded into it at every start.
//
// Start-up order of the window program (keep it; the presets shown at the
// first start depend on it): settingsPath(); build the change-style and unit
// lists; fill the four preset lists from the file; seedDefaultSettings();
// read the LAST section into the inputs; start imaging. Because the presets
// are read before seeding, a first start without a file shows empty preset
// lists, and the second start shows the sixteen defaults per list.

#include <QLatin1String>
#include <QList>
#include <QStringList>
#include <QString>

namespace valtrona {

/// Section and key names as they stand in the file.
namespace ini {
inline constexpr QLatin1String sectionMain("Main");
inline constexpr QLatin1String keyVersion("Version");

inline constexpr QLatin1String sectionLast("Last"); // also addressed as "LAST"
inline constexpr QLatin1String keyStyle("Style");
inline constexpr QLatin1String keyWidth("Width");
inline constexpr QLatin1String keyHeight("Height");
inline constexpr QLatin1String keyWidthUnit("WU");
inline constexpr QLatin1String keyHeightUnit("HU");
inline constexpr QLatin1String keyPath("Path");
inline constexpr QLatin1String keySearchFor("SFOR"); // not seeded
inline constexpr QLatin1String keyReplaceWith("REPW"); // not seeded

inline constexpr QLatin1String sectionJpg("JPG");
inline constexpr QLatin1String keyQuality("PRZ");
inline constexpr QLatin1String keyInterpolation("INT");
inline constexpr QLatin1String keySmoothing("SMT");
inline constexpr QLatin1String keyPixelOffset("PXL");
inline constexpr QLatin1String keyCompositing("CMP");
inline constexpr QLatin1String keyOrientation("ORI"); // not seeded

/// Preset sections are "FMT_" + a preset key ("43", "32", "54", "169").
inline constexpr QLatin1String presetSectionPrefix("FMT_");
} // namespace ini

/// The preset keys in list order: "43", "32", "54", "169".
QStringList presetKeys();

/// "FMT_" + presetKey.
QString presetSection(const QString &presetKey);

/// The sixteen default entries of one preset list ("0180x0135" ...), in key
/// order "01" to "16"; empty for an unknown preset key.
QStringList defaultPresetEntries(const QString &presetKey);

/// One value the start-up seeding writes when it is missing or empty.
struct SettingDefault
{
    QString section;
    QString key;
    QString value;
};

/// Every seeded value, in the order seeding writes them: Main/Version;
/// Last/Style, Width, Height, WU, HU, Path; JPG/PRZ, INT, SMT, PXL, CMP;
/// FMT_43, FMT_32, FMT_54, FMT_169 keys "01" to "16".
QList<SettingDefault> seededDefaults();

/// The program directory with a trailing "/": the running executable's
/// directory when it may hold settings (see keepsSettings()), else
/// $XDG_CONFIG_HOME/valtrona/ (by default ~/.config/valtrona/), created when
/// missing.
QString programDirectory();

/// Whether an executable's directory may hold the settings: it must be
/// writable and not one of the system's program folders (below /usr, /bin,
/// /sbin, /lib or /opt), where even a user allowed to write there (root)
/// keeps them in the configuration folder.
bool keepsSettings(const QString &executableDirectory);

/// SettingsFilePath: programDirectory(), then `subdirectory` + "/" when it is
/// non-empty, then the base name, ".", and `extension` without a leading ".".
/// `baseName` empty means the executable's base name ("valtrona" for the
/// window program; "valtrona" when there is no application object). Each
/// directory part gets a trailing "/" only when it lacks one.
QString settingsFilePath(const QString &extension, const QString &subdirectory = {},
                         const QString &baseName = {});

/// The process-wide settings path. Unless set, computed once on first use as
/// settingsFilePath("ini").
QString settingsPath();

/// Sets the process-wide settings path (the command line's --settings FILE,
/// a front end that shares the window program's "valtrona.ini", tests that
/// point it into a sandbox). An empty path goes back to the computed default.
void setSettingsPath(const QString &path);

/// SeedDefaultSettings: writes every seededDefaults() entry whose key is
/// missing or empty (in one write), then tidyIniFile(). A file that already
/// holds every default in tidy form is not touched; one that cannot be read
/// or written is left alone (reads then give their defaults).
void seedDefaultSettings(const QString &file);

/// seedDefaultSettings(settingsPath()).
void seedDefaultSettings();

/// The drawing settings of section "JPG": JPEG quality, the four drawing
/// modes (their meanings are the imaging layer's) and the orientation. The
/// numbers are what the file holds, unchecked; a default-made value holds
/// what start-up seeding writes.
struct DrawingSettings
{
    int quality = 85;      ///< PRZ, JPEG quality in percent (clamped when saving)
    int interpolation = 7; ///< INT
    int smoothing = 4;     ///< SMT
    int pixelOffset = 2;   ///< PXL
    int compositing = 2;   ///< CMP
    /// ORI: photos are turned upright as their EXIF data says, unless the
    /// key reads "0" (then they are taken as stored). Missing means upright.
    bool upright = true;

    bool operator==(const DrawingSettings &other) const = default;
};

/// Reads the JPG section anew (called once per image). Each number is read
/// with readIniInt; a key that is missing or empty reads as the number
/// `missing` holds for it. ORI is read as described above.
DrawingSettings readDrawingSettings(const QString &file, const DrawingSettings &missing);

/// The last-used parameters of the main window (section LAST).
struct LastParameters
{
    int style = 0;      ///< Style, read with default 0
    QString width;      ///< Width, as typed
    QString height;     ///< Height, as typed
    int widthUnit = 0;  ///< WU: 0 pixel, 1 percent
    int heightUnit = 0; ///< HU
    QString path;       ///< Path, the target directory
    QString searchFor;  ///< SFOR
    QString replaceWith; ///< REPW
};

/// Reads the LAST section: integers with readIniInt (default 0), texts with
/// readIniString (empty default).
LastParameters readLastParameters(const QString &file);

/// Writes the whole LAST section (integers as decimal text, texts
/// unchanged), one key after another. Returns true when every key was written.
bool writeLastParameters(const QString &file, const LastParameters &parameters);

} // namespace valtrona
