// Feeds arbitrary bytes to the INI engine as a settings file: reads keys and
// sections, writes a key back, tidies, and checks the promises the engine
// makes (a written value reads back unchanged, other keys keep their values,
// a tidied text stays tidied). Runs the file functions on a real file too,
// padded past the size where sections are read by the line parser.
//
//   CC=clang CXX=clang++ cmake -S . -B build-fuzz -G Ninja \
//       -DVALTRONA_FUZZ=ON -DVALTRONA_GUI=OFF -DVALTRONA_TESTS=OFF
//   cmake --build build-fuzz --target ini_fuzz -j2
//   build-fuzz/fuzz/ini_fuzz -max_total_time=60 -max_len=8192

#include "core/inifile.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdio>
#include <cstdlib>

using namespace valtrona;
using namespace Qt::StringLiterals;

namespace {

void require(bool condition, const char *what)
{
    if (!condition) {
        std::fprintf(stderr, "ini_fuzz: %s\n", what);
        std::abort();
    }
}

QString text(FuzzedDataProvider &provider, size_t maxLength)
{
    const std::string bytes = provider.ConsumeRandomLengthString(maxLength);
    return QString::fromUtf8(bytes.data(), qsizetype(bytes.size()));
}

// On tmpfs where there is one: the writes sync to disk, which would make
// the file half of each run a hundred times slower than the rest.
const QTemporaryDir &scratch()
{
    static const QTemporaryDir dir(QDir(u"/dev/shm"_s).exists()
                                       ? u"/dev/shm/ini_fuzz-XXXXXX"_s
                                       : QDir::tempPath() + u"/ini_fuzz-XXXXXX"_s);
    return dir;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    FuzzedDataProvider provider(data, size);
    const bool padded = provider.ConsumeIntegralInRange(0, 15) == 0;
    const QString section = text(provider, 24);
    const QString key = text(provider, 24);
    const QString value = text(provider, 64);
    const QString otherSection = text(provider, 24);
    const QString otherKey = text(provider, 24);
    const std::string rest = provider.ConsumeRemainingBytesAsString();
    const QByteArray bytes(rest.data(), qsizetype(rest.size()));

    // In memory.
    IniDocument document(bytes);
    const std::optional<QString> before = document.value(section, key);
    const std::optional<QString> otherBefore = document.value(otherSection, otherKey);
    document.sectionEntries(section);
    if (document.setValue(section, key, value)) {
        require(document.value(section, key) == value, "written value does not read back");
        const bool sameKey = section.trimmed().compare(otherSection.trimmed(), Qt::CaseInsensitive) == 0
            && key.trimmed().compare(otherKey.trimmed(), Qt::CaseInsensitive) == 0;
        if (!sameKey && otherBefore)
            require(document.value(otherSection, otherKey) == otherBefore, "another key changed");
        require(document.hasSection(section), "written section missing");
    } else {
        require(document.bytes() == bytes, "refused write changed the text");
        require(document.value(section, key) == before, "refused write changed a value");
    }

    const QByteArray tidied = tidiedIniText(document.bytes());
    require(tidiedIniText(tidied) == tidied, "tidy is not stable");

    QStringList names;
    QStringList values;
    const int count = splitIniSection(QString::fromUtf8(bytes), names, values);
    require(count == names.size() && count == values.size(), "split lists differ");

    // Through a file: the small-file reader, or the line parser when padded.
    if (!scratch().isValid())
        return 0;
    const QString file = scratch().filePath(u"fuzz.ini"_s);
    QByteArray content = bytes;
    if (padded) {
        static const QByteArray padding = QByteArray("\r\n[Pad]\r\n").append(QByteArray(iniLargeFileSize, 'p'));
        content.append(padding);
    }
    {
        QFile out(file);
        if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return 0;
        out.write(content);
    }
    readIniSection(file, section);
    readIniSectionPairs(file, otherSection, names, values);
    readIniInt(file, section, key, 0);
    if (writeIniString(file, section, key, value))
        require(readIniString(file, section, key) == value, "file write does not read back");
    tidyIniFile(file);
    return 0;
}
