#pragma once

#include <QList>
#include <QStringList>

#include <utility>

#include "app/userdialogs.h"

namespace valtrona::test {

/// Answers the windows' dialogs from a script and records every one shown.
class ScriptedDialogs : public UserDialogs
{
public:
    void information(QWidget *, const QString &title, const QString &text) override
    {
        record(u"information", title, text);
    }
    bool askYesNo(QWidget *, const QString &title, const QString &text) override
    {
        record(u"question", title, text);
        return answers.isEmpty() || answers.takeFirst();
    }
    void plainMessage(QWidget *, const QString &title, const QString &text) override { record(u"plain", title, text); }
    QStringList openFiles(QWidget *, const QString &title, const QStringList &filters) override
    {
        record(u"openFiles", title, QString());
        lastFilters = filters;
        return std::exchange(nextFiles, {});
    }
    QString chooseFolder(QWidget *, const QString &prompt, const QString &startFolder) override
    {
        record(u"chooseFolder", prompt, QString());
        lastStartFolder = startFolder;
        return std::exchange(nextFolder, {});
    }

    /// Answers for the next questions, first in first out; Yes when none is left.
    QList<bool> answers;
    /// Result of the next open dialog (then cleared).
    QStringList nextFiles;
    /// Result of the next folder dialog (then cleared).
    QString nextFolder;

    /// Every dialog shown, as "kind|title|text"; the kinds are "information",
    /// "question", "plain", "openFiles" and "chooseFolder" (these two without text).
    QStringList shown;
    QStringList lastFilters;
    QString lastStartFolder;

private:
    void record(QStringView kind, const QString &title, const QString &text)
    {
        shown.append(kind.toString() + u'|' + title + u'|' + text);
    }
};

} // namespace valtrona::test
