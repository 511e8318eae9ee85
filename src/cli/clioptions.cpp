#include "cli/clioptions.h"

#include <QRegularExpression>
#include <QStringBuilder>

#include <algorithm>
#include <array>
#include <climits>
#include <utility>

using namespace Qt::StringLiterals;

namespace valtrona::cli {

namespace {

// Applies an option's value to the options; an empty result is success,
// otherwise the German reason the value was refused.
using ApplyFn = QString (*)(CliOptions &options, const QString &value);

struct OptionSpec
{
    const char16_t *name;      // without the leading "--"
    const char16_t *valueName; // nullptr: a switch without a value
    const char16_t *help;
    ApplyFn apply;
};

std::optional<int> parseInt(const QString &text)
{
    bool ok = false;
    const int value = text.trimmed().toInt(&ok);
    if (!ok)
        return std::nullopt;
    return value;
}

// A whole number, saturated to the int range: "2147483648" gives INT_MAX.
std::optional<int> parseSaturated(const QString &text)
{
    static const QRegularExpression wholeNumber(u"^\\s*[+-]?[0-9]+\\s*$"_s);
    if (!wholeNumber.match(text).hasMatch())
        return std::nullopt;
    bool ok = false;
    const qlonglong value = text.trimmed().toLongLong(&ok);
    if (!ok) // beyond even 64 bits
        return text.contains(u'-') ? INT_MIN : INT_MAX;
    return int(std::clamp<qlonglong>(value, INT_MIN, INT_MAX));
}

QString refuse(const QString &value, const QString &allowed)
{
    return u"ungültiger Wert „"_s % value % u"“ (erlaubt: "_s % allowed % u')';
}

std::optional<int> parseUnit(const QString &text)
{
    const QString unit = text.trimmed().toLower();
    if (unit == u"px"_s || unit == u"pixel"_s)
        return 0;
    if (unit == u"%"_s || unit == u"prozent"_s)
        return 1;
    return std::nullopt;
}

// The option table: name, value, help text (German), and what it sets.
// Options not given take the values the window would show at start.
const std::array<OptionSpec, 18> optionTable = {{
    {u"style", u"0..4",
     u"Änderungsstil: 0 Breite und Höhe, 1 konstante Höhe, 2 konstante Breite,\n"
     u"3 quadratisch lange Seite, 4 passend in Rechteck (Vorgabe: Last/Style)",
     [](CliOptions &o, const QString &v) -> QString {
         const std::optional<int> style = parseInt(v);
         if (!style)
             return refuse(v, u"0 bis 4"_s);
         o.style = *style;
         return {};
     }},
    {u"width", u"TEXT", u"Breite bzw. Seitenlänge (Vorgabe: Last/Width)",
     [](CliOptions &o, const QString &v) -> QString { o.width = v; return {}; }},
    {u"height", u"TEXT", u"Höhe (Vorgabe: Last/Height)",
     [](CliOptions &o, const QString &v) -> QString { o.height = v; return {}; }},
    {u"width-unit", u"px|%", u"Einheit der Breite: Pixel oder Prozent (Vorgabe: Last/WU)",
     [](CliOptions &o, const QString &v) -> QString {
         const std::optional<int> unit = parseUnit(v);
         if (!unit)
             return refuse(v, u"px, %"_s);
         o.widthUnit = *unit;
         return {};
     }},
    {u"height-unit", u"px|%", u"Einheit der Höhe: Pixel oder Prozent (Vorgabe: Last/HU)",
     [](CliOptions &o, const QString &v) -> QString {
         const std::optional<int> unit = parseUnit(v);
         if (!unit)
             return refuse(v, u"px, %"_s);
         o.heightUnit = *unit;
         return {};
     }},
    {u"format", u"jpg|png|webp|avif", u"Zieldateiformat (Vorgabe: jpg)",
     [](CliOptions &o, const QString &v) -> QString {
         static constexpr std::array<std::pair<QStringView, ImageFormat>, 5> formats {{
             {u"jpg", ImageFormat::Jpeg},
             {u"jpeg", ImageFormat::Jpeg},
             {u"png", ImageFormat::Png},
             {u"webp", ImageFormat::WebP},
             {u"avif", ImageFormat::Avif},
         }};
         const QString given = v.trimmed().toLower();
         for (const auto &[name, format] : formats) {
             if (given == name) {
                 o.format = format;
                 return {};
             }
         }
         return refuse(v, u"jpg, png, webp, avif"_s);
     }},
    {u"out", u"DIR", u"Zielverzeichnis (Vorgabe: Last/Path)",
     [](CliOptions &o, const QString &v) -> QString { o.outDir = v; return {}; }},
    {u"keep-dirs", nullptr, u"Verzeichnisstruktur beibehalten",
     [](CliOptions &o, const QString &) -> QString { o.keepDirs = true; return {}; }},
    {u"search", u"TEXT", u"im Zieldateinamen suchen nach TEXT (Vorgabe: Last/SFOR)",
     [](CliOptions &o, const QString &v) -> QString { o.search = v; return {}; }},
    {u"replace", u"TEXT", u"gefundenen Text ersetzen durch TEXT (Vorgabe: Last/REPW)",
     [](CliOptions &o, const QString &v) -> QString { o.replace = v; return {}; }},
    {u"keep-date", nullptr, u"Datum und Uhrzeit beim Konvertieren beibehalten",
     [](CliOptions &o, const QString &) -> QString { o.keepDate = true; return {}; }},
    {u"exif", nullptr, u"EXIF Bilddaten ins Ziel übertragen",
     [](CliOptions &o, const QString &) -> QString { o.exif = true; return {}; }},
    {u"delete-sources", nullptr, u"Quelldateien nach Bearbeitung löschen (in den Papierkorb)",
     [](CliOptions &o, const QString &) -> QString { o.deleteSources = true; return {}; }},
    {u"dir", u"DIR", u"alle *.jpg und *.jpeg unterhalb von DIR hinzufügen (wie „Verzeichnis laden“)",
     [](CliOptions &o, const QString &v) -> QString {
         o.sources.append({SourceArgument::Kind::Directory, v});
         return {};
     }},
    {u"settings", u"FILE",
     u"Einstellungsdatei (Vorgabe: valtrona.ini im Programmverzeichnis);\nsie wird nur gelesen",
     [](CliOptions &o, const QString &v) -> QString { o.settingsFile = v; return {}; }},
    {u"jobs", u"N",
     u"N Bilder gleichzeitig bearbeiten, 1 bis doppelte Anzahl der Prozessorkerne;\n"
     u"andere Werte werden darauf begrenzt (Vorgabe: Anzahl der Prozessorkerne)",
     [](CliOptions &o, const QString &v) -> QString {
         const std::optional<int> jobs = parseSaturated(v);
         if (!jobs)
             return refuse(v, u"ganze Zahl"_s);
         o.jobs = *jobs;
         return {};
     }},
    {u"help", nullptr, u"diese Hilfe anzeigen",
     [](CliOptions &o, const QString &) -> QString { o.help = true; return {}; }},
    {u"version", nullptr, u"Versionsnummer anzeigen",
     [](CliOptions &o, const QString &) -> QString { o.version = true; return {}; }},
}};

const OptionSpec *findOption(const QString &name)
{
    for (const OptionSpec &entry : optionTable) {
        if (name == QStringView(entry.name))
            return &entry;
    }
    return nullptr;
}

} // namespace

Expected<CliOptions, QString> parseArguments(const QStringList &arguments)
{
    CliOptions options;
    bool optionsEnded = false;
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString &argument = arguments.at(i);
        if (optionsEnded || !argument.startsWith(u'-')) {
            options.sources.append({SourceArgument::Kind::File, argument});
            continue;
        }
        if (argument == u"-"_s) {
            options.sources.append({SourceArgument::Kind::StandardIn, QString()});
            continue;
        }
        if (argument == u"--"_s) {
            optionsEnded = true;
            continue;
        }
        if (argument == u"-h"_s) {
            options.help = true;
            continue;
        }
        if (!argument.startsWith(u"--"_s))
            return unexpected<QString>(u"unbekannte Option „"_s % argument % u"“"_s);

        QString name = argument.mid(2);
        std::optional<QString> value;
        const qsizetype equals = name.indexOf(u'=');
        if (equals >= 0) {
            value = name.mid(equals + 1);
            name.truncate(equals);
        }
        const OptionSpec *entry = findOption(name);
        if (!entry)
            return unexpected<QString>(u"unbekannte Option „--"_s % name % u"“"_s);
        if (!entry->valueName) {
            if (value)
                return unexpected<QString>(u"die Option „--"_s % name % u"“ erwartet keinen Wert"_s);
            entry->apply(options, QString());
            continue;
        }
        if (!value) {
            if (i + 1 >= arguments.size())
                return unexpected<QString>(u"der Option „--"_s % name % u"“ fehlt der Wert "_s
                                  % QStringView(entry->valueName));
            value = arguments.at(++i);
        }
        const QString refused = entry->apply(options, *value);
        if (!refused.isEmpty())
            return unexpected<QString>(u"--"_s % name % u": "_s % refused);
    }
    return options;
}

QString helpText()
{
    QString text = u"Aufruf: valtrona-cli [Optionen] [DATEI...]\n"
                   u"\n"
                   u"Verkleinert Bilder stapelweise, wie die Karte „Bildverarbeitung“ des\n"
                   u"Programmfensters. DATEI „-“ liest Pfade zeilenweise von der Standardeingabe.\n"
                   u"Nicht angegebene Optionen nehmen die Werte aus dem Abschnitt „Last“ der\n"
                   u"Einstellungsdatei, die das Fenster beim Start zeigen würde.\n"
                   u"\n"
                   u"Optionen:\n"_s;
    for (const OptionSpec &entry : optionTable) {
        QString head = u"  --"_s % QStringView(entry.name);
        if (entry.valueName)
            head += u' ' % QStringView(entry.valueName);
        const QStringList lines = QString::fromUtf16(entry.help).split(u'\n');
        const qsizetype column = 24;
        if (head.size() >= column)
            text += head % u'\n' % QString(column, u' ');
        else
            text += head.leftJustified(column);
        text += lines.join(u'\n' % QString(column, u' ')) % u'\n';
    }
    text += u"\n"
            u"Ausgabe: jede Statuszeile des Laufs als Symbol, Tabulator und Text, z. B.\n"
            u"  PIC\tBearbeite Bild : a.jpg\n"
            u"Für jedes Bild mit Fehler nennt die Standardfehlerausgabe Datei und Grund, z. B.\n"
            u"  urlaub/IMG_0042.jpg: Zielordner nicht beschreibbar\n"
            u"Ist sie ein Terminal, zeigt sie auch den Fortschritt.\n"
            u"\n"
            u"Strg+C oder SIGTERM beenden das laufende Bild und brechen dann ab; ein\n"
            u"weiteres Strg+C beendet sofort, ohne halb geschriebene Dateien zu hinterlassen.\n"
            u"Ebenso bricht der Lauf nach dem laufenden Bild ab, wenn die Standardausgabe\n"
            u"geschlossen wird (z. B. „| head“) oder die Dateigrößengrenze (ulimit -f)\n"
            u"erreicht ist.\n"
            u"\n"
            u"Rückgabewert (3, 130 und 143 gehen 1 vor):\n"
            u"  0    alle Bilder ohne Fehler bearbeitet\n"
            u"  1    mindestens ein Bild mit Fehler (Zeile „ERR“)\n"
            u"  2    Aufruf oder Parameter ungültig; nichts wurde bearbeitet\n"
            u"  3    Lauf konnte nicht beginnen oder nicht weitergehen: Standardausgabe\n"
            u"       geschlossen oder nicht beschreibbar, Dateigrößengrenze erreicht, oder\n"
            u"       die Bildverarbeitung ließ sich nicht starten\n"
            u"  130  durch Strg+C (SIGINT) abgebrochen\n"
            u"  143  durch SIGTERM abgebrochen\n"_s;
    return text;
}

} // namespace valtrona::cli
