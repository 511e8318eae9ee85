#include "scripteddialogs.h"

namespace valtrona::test {

void ScriptedDialogs::information(QWidget *, const QString &title, const QString &text)
{
    shown.append({QStringLiteral("information"), title, text});
}

bool ScriptedDialogs::askYesNo(QWidget *, const QString &title, const QString &text)
{
    shown.append({QStringLiteral("question"), title, text});
    return answers.isEmpty() ? true : answers.takeFirst();
}

void ScriptedDialogs::plainMessage(QWidget *, const QString &title, const QString &text)
{
    shown.append({QStringLiteral("plain"), title, text});
}

QStringList ScriptedDialogs::openFiles(QWidget *, const QString &title, const QStringList &filters)
{
    shown.append({QStringLiteral("openFiles"), title, QString()});
    lastFilters = filters;
    return std::exchange(nextFiles, {});
}

QString ScriptedDialogs::chooseFolder(QWidget *, const QString &prompt, const QString &startFolder)
{
    shown.append({QStringLiteral("chooseFolder"), prompt, QString()});
    lastStartFolder = startFolder;
    return std::exchange(nextFolder, {});
}

QStringList ScriptedDialogs::texts() const
{
    QStringList result;
    for (const Shown &entry : shown)
        result.append(entry.text);
    return result;
}

} // namespace valtrona::test
