#include "batch/naming.h"

#include "support/testsupport.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>

using valtrona::commonBaseDirectory;
using valtrona::composeTargetPath;
using valtrona::ImageFormat;
using valtrona::renameTarget;

namespace {

constexpr ImageFormat jpeg = ImageFormat::Jpeg;
constexpr ImageFormat png = ImageFormat::Png;
constexpr ImageFormat webp = ImageFormat::WebP;
constexpr ImageFormat avif = ImageFormat::Avif;

QString s(const char *text)
{
    return QString::fromUtf8(text);
}

QStringList list(std::initializer_list<const char *> texts)
{
    QStringList out;
    for (const char *t : texts)
        out.append(s(t));
    return out;
}

// True when `target` names a file strictly below `directory`, even after
// "." and ".." are resolved.
bool staysInside(const QString &target, const QString &directory)
{
    const QString dir = QDir::cleanPath(directory) + QLatin1Char('/');
    const QString clean = QDir::cleanPath(target);
    const QString name = QFileInfo(target).fileName();
    return clean.startsWith(dir) && clean.size() > dir.size() && name != u"." && name != u".."
        && !name.isEmpty();
}

TEST(Naming, CommonBaseIsACharacterPrefix)
{
    struct Case { QStringList sources; const char *base; };
    const Case cases[] = {
        {{}, ""},
        {list({"/D/A/x.png"}), "/D/A/"},
        {list({"/D/A/x.png", "/D/A/B/y.jpg"}), "/D/A/"},
        // Not cut back to a directory boundary: "Urlaub" and "Ursula" share "Ur".
        {list({"/Bilder/Urlaub/a.jpg", "/Bilder/Ursula/b.jpg"}), "/Bilder/Ur"},
        {list({"/Bilder/Urlaub/a.jpg", "/Bilder/Uwe/b.jpg"}), "/Bilder/U"},
        // Letter case counts: "Foto" and "foto" are two folders.
        {list({"/x/Foto/a.jpg", "/x/foto/a.jpg"}), "/x/"},
        {list({"/fotos/Ä/x.jpg", "/fotos/ä/y.jpg"}), "/fotos/"},
        // "\" is part of a name, not a separator.
        {list({"/bs/a\\b.jpg", "/bs/a\\c.jpg"}), "/bs/"},
        {list({"/C/x/a.jpg", "/D/y/b.jpg"}), "/"},
        {list({"a.jpg", "b.jpg"}), ""},
        {list({"/a/b/c.jpg", "/a/b/c.jpg", "/x/y.jpg", "/a/b/d.jpg"}), "/"},
        // Never between the halves of a character outside the BMP.
        {list({"/a/\U0001F600/x.jpg", "/a/\U0001F603/y.jpg"}), "/a/"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(commonBaseDirectory(c.sources), s(c.base)) << c.sources.join(u',').toStdString();
}

TEST(Naming, TargetPaths)
{
    struct Case
    {
        const char *what;
        const char *targetDir;
        const char *base;
        const char *source;
        bool keep;
        std::optional<ImageFormat> format;
        const char *target;
    };
    const Case cases[] = {
        {"flat", "/E/Out", "/D/A/", "/D/A/x.png", false, jpeg, "/E/Out/x.jpg"},
        {"below base", "/E/Out", "/D/A/", "/D/A/B/y.jpg", false, jpeg, "/E/Out/B/y.jpg"},
        {"kept", "/E/Out", "/D/A/", "/D/A/x.png", true, jpeg, "/E/Out/D/A/x.jpg"},
        {"kept below", "/E/Out", "/D/A/", "/D/A/B/y.jpg", true, jpeg, "/E/Out/D/A/B/y.jpg"},
        {"trailing separator", "/E/Out/", "/D/A/", "/D/A/B/y.jpg", false, jpeg, "/E/Out/B/y.jpg"},
        {"blanks around", "  /E/Out  ", "/D/A/", "/D/A/x.png", false, jpeg, "/E/Out/x.jpg"},
        {"backslash", "/E/Out", "/bs/", "/bs/a\\b.JPG", false, png, "/E/Out/a\\b.png"},
        {"two roots", "/E/Out", "/", "/C/x/a.jpg", false, png, "/E/Out/C/x/a.png"},
        {"base is a prefix", "/E/Out", "/Bilder/Ur", "/Bilder/Urlaub/a.jpg", false, jpeg, "/E/Out/laub/a.jpg"},
        {"other case, other folder", "/E/Out", "/x/Foto/", "/x/foto/a.jpg", false, jpeg, "/E/Out/x/foto/a.jpg"},
        {"not below base", "/E/Out", "/D/A/", "/Q/x.png", false, jpeg, "/E/Out/Q/x.jpg"},
        {"no extension", "/E/Out", "/E/raw/", "/E/raw/scan", false, jpeg, "/E/Out/scan.jpg"},
        {"dotted dir", "/E/Out", "/", "/v1.2/scan", false, jpeg, "/E/Out/v1.2/scan.jpg"},
        {"two points", "/E/Out", "/", "/a/x.tar.PNG", false, jpeg, "/E/Out/a/x.tar.jpg"},
        {"WebP", "/E/Out", "/D/", "/D/x.jpg", false, webp, "/E/Out/x.webp"},
        {"AVIF", "/E/Out", "/D/", "/D/x.jpg", false, avif, "/E/Out/x.avif"},
        {"unknown format", "/E/Out", "/D/", "/D/x.png", false, std::nullopt, "/E/Out/x"},
        {"colons", "/E/Out", "/x/", "/x/a:b/12:30.jpg", false, jpeg, "/E/Out/a:b/12:30.jpg"},
    };
    for (const Case &c : cases) {
        EXPECT_EQ(composeTargetPath(s(c.targetDir), s(c.base), s(c.source), c.keep, c.format), s(c.target))
            << c.what;
    }
}

TEST(Naming, RenameTouchesOnlyTheFileName)
{
    struct Case { const char *target, *search, *replacement, *result; };
    const Case cases[] = {
        {"/E/Out/img_001.jpg", "IMG", "Bild", "/E/Out/Bild_001.jpg"},
        {"/E/IMG/img_001.jpg", "img", "Bild", "/E/IMG/Bild_001.jpg"},
        {"/E/Out/img_001.jpg", "", "Bild", "/E/Out/img_001.jpg"},
        {"/E/Out/img_001.jpg", "jpg", "png", "/E/Out/img_001.jpg"},
        {"/E/Out/a.a.jpg", "a", "aa", "/E/Out/aa.aa.jpg"},
        {"/E/Out/Straße.jpg", "STRASSE", "x", "/E/Out/Straße.jpg"},
        {"/E/Out/ÄRGER.jpg", "ärger", "Freude", "/E/Out/Freude.jpg"},
        {"/E/Out/scan", "scan", "Bild", "/E/Out/Bild."},
        {"img_1.jpg", "img", "Bild", "Bild_1.jpg"},
    };
    for (const Case &c : cases)
        EXPECT_EQ(renameTarget(s(c.target), s(c.search), s(c.replacement)), s(c.result)) << c.target;
}

TEST(Naming, NamesCannotEscapeTheTargetDirectory)
{
    const QString out = QStringLiteral("/E/Out");
    struct RenameCase { const char *target, *search, *replacement, *result; };
    const RenameCase renames[] = {
        {"/E/Out/img.jpg", "img", "../../etc/x", "/E/Out/.._.._etc_x.jpg"},
        {"/E/Out/img.jpg", "img", "..\\..\\x", "/E/Out/..\\..\\x.jpg"},
        {"/E/Out/img.jpg", "img.jpg", "/", "/E/Out/img.jpg"},  // the extension is not searched
        {"/E/Out/x", "x", ".", "/E/Out/_.."},
        {"/E/Out/x", "x", "", "/E/Out/_."},
        {"/E/Out/B/img.jpg", "img", "/", "/E/Out/B/_.jpg"},
    };
    for (const RenameCase &c : renames) {
        const QString renamed = renameTarget(s(c.target), s(c.search), s(c.replacement));
        EXPECT_EQ(renamed, s(c.result)) << c.replacement;
        EXPECT_TRUE(staysInside(renamed, out)) << renamed.toStdString();
    }

    struct SourceCase { const char *base, *source; bool keep; const char *target; };
    const SourceCase sources[] = {
        {"/D/A/", "/D/A/../../../etc/passwd.png", false, "/E/Out/_../_../_../etc/passwd.jpg"},
        {"/D/A/", "/D/A/../../../etc/passwd.png", true, "/E/Out/D/A/_../_../_../etc/passwd.jpg"},
        {"/D/A/", "/D/A/x\\..\\..\\y.png", false, "/E/Out/x\\..\\..\\y.jpg"},
        {"/D/", "/D/./a//b.png", false, "/E/Out/a/b.jpg"},
        {"", "../x.png", false, "/E/Out/_../x.jpg"},
        {"/D/A/", "/D/A/..", false, "/E/Out/_..jpg"},
        {"/D/A/", "/D/A/", false, "/E/Out/.jpg"},
    };
    for (const SourceCase &c : sources) {
        const QString target = composeTargetPath(out, s(c.base), s(c.source), c.keep, jpeg);
        EXPECT_EQ(target, s(c.target)) << c.source;
        EXPECT_TRUE(staysInside(target, out)) << target.toStdString();
        EXPECT_TRUE(staysInside(renameTarget(target, QStringLiteral("."), QStringLiteral("..")), out));
    }
    // A NUL would cut the name short on its way to the system.
    const QString nul = composeTargetPath(out, QString(), QStringLiteral("/..") + QChar(0) + QStringLiteral("x/y.png"),
                                          false, jpeg);
    EXPECT_EQ(nul, QStringLiteral("/E/Out/.._x/y.jpg"));
    EXPECT_EQ(renameTarget(nul, QStringLiteral("y"), QString(QChar(0))), QStringLiteral("/E/Out/.._x/_.jpg"));
    // Without an extension nothing stands between the name and "..".
    const QString bare = composeTargetPath(out, QString(), QStringLiteral("/D/.."), false, std::nullopt);
    EXPECT_TRUE(staysInside(bare, out)) << bare.toStdString();
}

} // namespace
