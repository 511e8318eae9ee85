#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include "app/userdialogs.h"

namespace valtrona::test {

/// Answers the windows' dialogs from a script and records every one shown.
class ScriptedDialogs : public UserDialogs
{
public:
    void information(QWidget *parent, const QString &title, const QString &text) override;
    bool askYesNo(QWidget *parent, const QString &title, const QString &text) override;
    void plainMessage(QWidget *parent, const QString &title, const QString &text) override;
    QStringList openFiles(QWidget *parent, const QString &title, const QStringList &filters) override;
    QString chooseFolder(QWidget *parent, const QString &prompt, const QString &startFolder) override;

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
};

} // namespace valtrona::test
