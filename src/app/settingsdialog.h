#pragma once

#include <QDialog>
#include <QString>

#include <memory>

class QPushButton;

namespace valtrona {

class UserDialogs;
class VxLineIn;

/// The settings dialog for the imaging parameters of section "JPG": JPEG
/// quality, the four drawing modes and the orientation, each but the quality
/// with its "?" help. Edits are written only after the user confirms the save
/// question.
class SettingsDialog : public QDialog
{
    Q_OBJECT

public:
    /// Index of the first line (quality); the lines are 5 to 10.
    static constexpr int firstLine = 5;
    static constexpr int lineCount = 6;

    SettingsDialog(QString settingsPath, std::shared_ptr<UserDialogs> dialogs, QWidget *parent = nullptr);

    /// The hidden button the owner presses from code to fill the dialog.
    QPushButton *initButton() const;

    /// Fills the lines from the settings file and clears the dirty flag.
    void fill();
    /// Asks "Wollen Sie Ihre Änderungen speichern ?" when something changed;
    /// on Yes writes the lines. Either answer clears the dirty flag.
    void saveIfChanged();

    bool isDirty() const;
    /// The input of line index (5 to 10); null outside that range.
    VxLineIn *line(int index) const;

    /// Help lines shown by the "?" button of a key; empty for "PRZ" and
    /// any other key without help.
    static QStringList parameterHelp(const QString &key);

public Q_SLOTS:
    void reject() override;

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void showParameterHelp(const QString &key);

    QString m_settingsPath;
    std::shared_ptr<UserDialogs> m_dialogs;
    VxLineIn *m_lines[lineCount] = {};
    QString m_keys[lineCount];
    QPushButton *m_cmdInit = nullptr;
    QPushButton *m_cmdSave = nullptr;
    QPushButton *m_cmdAB = nullptr;
    int m_dirty = 0;
};

} // namespace valtrona
