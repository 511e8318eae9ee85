#pragma once

#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

#include "batch/conversionrun.h"
#include "controls/vxinvisiblecont.h"

class QCheckBox;
class QComboBox;
class QRadioButton;

namespace valtrona {

class UserDialogs;
class VxLineIn;

/// Card 2, "Parameter" (boxPRM): the change style with width, height and
/// their units, the four preset lists, the output format, the renaming, the
/// target folder and the options of a run. Choosing a style relabels and
/// enables the inputs; picking a preset fills width and height.
class ParameterCard : public VxInvisibleCont
{
    Q_OBJECT

public:
    /// `dialogs` answers the folder button of the target line.
    explicit ParameterCard(std::shared_ptr<UserDialogs> dialogs, QWidget *parent = nullptr);

    /// Fills the style and unit lists and the four preset lists (the
    /// presets from the settings file), nothing selected.
    void fillLists(const QString &settingsPath);
    /// Shows the last-used parameters of the settings file (section Last).
    void readLastParameters(const QString &settingsPath);
    /// Writes the inputs as the last-used parameters; true when every key was written.
    [[nodiscard]] bool saveLastParameters(const QString &settingsPath) const;

    /// The check of "Weiter >", in this order: a style is chosen, the
    /// format parameters suit it, a target folder is given. Returns the
    /// message of the first that fails, empty when all pass. A unit list
    /// with nothing selected gets its first unit on the way, silently.
    QString check();

    /// What a run reads from this card once at its start (after check()).
    RunParameters runParameters(const QStringList &sources) const;
    /// Width and height inputs with their units as they stand now.
    FileInputs fileInputs() const;
    /// Whether "Quelldateien nach Bearbeitung löschen" is checked now.
    bool deleteSources() const;

    /// Puts the focus on the first field, the style list.
    void focusFirstField();

private:
    void onStyleChanged();
    void onPresetPicked(int list);
    std::optional<ChangeStyle> selectedStyle() const;

    VxLineIn *m_styleChoice = nullptr;
    VxLineIn *m_widthLine = nullptr;
    VxLineIn *m_heightLine = nullptr;
    QComboBox *m_widthUnit = nullptr;
    QComboBox *m_heightUnit = nullptr;
    VxLineIn *m_presetLists[4] = {};
    QRadioButton *m_formatOptions[4] = {};
    VxLineIn *m_searchLine = nullptr;
    VxLineIn *m_replaceLine = nullptr;
    VxLineIn *m_targetLine = nullptr;
    QCheckBox *m_keepFoldersBox = nullptr;
    QCheckBox *m_deleteSourcesBox = nullptr;
    QCheckBox *m_exifBox = nullptr;
    QCheckBox *m_keepDateBox = nullptr;
};

} // namespace valtrona
