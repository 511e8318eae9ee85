#include "scripteddialogs.h"

namespace valtrona::test {

void ScriptedDialogs::information(QWidget *, const QString &title, const QString &text)
{
    shown.append(QStringLiteral("information|") + title + QLatin1Char('|') + text);
}

bool ScriptedDialogs::askYesNo(QWidget *, const QString &title, const QString &text)
{
    shown.append(QStringLiteral("question|") + title + QLatin1Char('|') + text);
    return answers.isEmpty() ? true : answers.takeFirst();
}

void ScriptedDialogs::plainMessage(QWidget *, const QString &title, const QString &text)
{
    shown.append(QStringLiteral("plain|") + title + QLatin1Char('|') + text);
}

QStringList ScriptedDialogs::openFiles(QWidget *, const QString &title, const QStringList &filters)
{
    shown.append(QStringLiteral("openFiles|") + title + QLatin1Char('|'));
    lastFilters = filters;
    return std::exchange(nextFiles, {});
}

QString ScriptedDialogs::chooseFolder(QWidget *, const QString &prompt, const QString &startFolder)
{
    shown.append(QStringLiteral("chooseFolder|") + prompt + QLatin1Char('|'));
    lastStartFolder = startFolder;
    return std::exchange(nextFolder, {});
}

} // namespace valtrona::test
