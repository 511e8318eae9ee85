#include "controls/lineinput_dialogs.h"

#include <QFileDialog>
#include <QFileInfo>

#include "controls/controlsupport.h"

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

// A start path whose folder does not exist would make the dialog fall back to
// the working directory; start in the nearest folder that still exists.
QString existingStart(const QString &start, bool folder)
{
    if (start.isEmpty())
        return start;
    const QFileInfo info(start);
    QString dir = folder ? info.absoluteFilePath() : info.absolutePath();
    const QString name = folder ? QString() : info.fileName();
    while (!QFileInfo(dir).isDir()) {
        const QString parent = QFileInfo(dir).absolutePath();
        if (parent == dir)
            return start;
        dir = parent;
    }
    return name.isEmpty() ? dir : dir % u"/"_s % name;
}

// Qt matches "*.*" literally, so it would hide files without an extension;
// the all-files entry gets the pattern that lists every file on Linux.
QString linuxFilter(const QString &filter)
{
    QString result = filter;
    return result.replace(u"(*.*)"_s, u"(*)"_s);
}

class StandardDialogs final : public LineInputDialogs
{
public:
    QString openFile(QWidget *parent, const QString &caption, const QString &start,
                     const QString &filter) override
    {
        return QFileDialog::getOpenFileName(parent, caption, existingStart(start, false), linuxFilter(filter));
    }

    QStringList openFiles(QWidget *parent, const QString &caption, const QString &start,
                          const QString &filter) override
    {
        return QFileDialog::getOpenFileNames(parent, caption, existingStart(start, false), linuxFilter(filter));
    }

    QString saveFile(QWidget *parent, const QString &caption, const QString &start,
                     const QString &filter) override
    {
        return QFileDialog::getSaveFileName(parent, caption, existingStart(start, false), linuxFilter(filter));
    }

    QString chooseFolder(QWidget *parent, const QString &caption, const QString &start,
                         bool foldersOnly) override
    {
        QFileDialog::Options options;
        if (foldersOnly)
            options |= QFileDialog::ShowDirsOnly;
        return QFileDialog::getExistingDirectory(parent, caption, existingStart(start, true), options);
    }
};

} // namespace

LineInputDialogs::~LineInputDialogs() = default;

std::shared_ptr<LineInputDialogs> standardLineInputDialogs()
{
    static const std::shared_ptr<LineInputDialogs> dialogs = std::make_shared<StandardDialogs>();
    return dialogs;
}

QString lineInputFilter(const QString &fileTypes, const QString &extensions)
{
    const QStringList types = fileTypes.split(QLatin1Char('|'));
    const QStringList exts = extensions.split(QLatin1Char('|'));
    QStringList entries;
    const qsizetype pairs = qMin(types.size(), exts.size());
    for (qsizetype i = 0; i < pairs; ++i) {
        const QString type = types.at(i).trimmed();
        const QString ext = exts.at(i).trimmed();
        // An empty extension would give the pattern "*.", which matches nothing useful.
        if (ext.isEmpty())
            continue;
        entries.append(type % u" (*."_s % ext % u")"_s);
    }
    entries.append(controlText(ControlText::AllFiles) % u" (*.*)"_s);
    return entries.join(u";;"_s);
}

QString lineInputStartPath(const QString &text, const QString &defaultFilename)
{
    const QString path = text.section(QLatin1Char('|'), 0, 0).trimmed();
    if (path.isEmpty())
        return defaultFilename;
    const QFileInfo info(path);
    if (info.isDir() || path.endsWith(QLatin1Char('/'))) {
        if (defaultFilename.isEmpty())
            return path;
        if (path.endsWith(QLatin1Char('/')))
            return path + defaultFilename;
        return path % u"/"_s % defaultFilename;
    }
    if (defaultFilename.isEmpty())
        return path;
    return info.path() % u"/"_s % defaultFilename;
}

} // namespace valtrona
