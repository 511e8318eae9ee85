#include "app/parametercard.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>

#include "app/userdialogs.h"
#include "app/widgetfactory.h"
#include "batch/sizerules.h"
#include "controls/controlsupport.h"
#include "controls/lineinput_dialogs.h"
#include "controls/vxcont.h"
#include "controls/vxlinein.h"
#include "core/settings.h"

namespace valtrona {

namespace {

// The folder button of the target line asks through the window's dialogs
// (so tests answer it); file dialogs, which no line of this card opens,
// stay the control library's own.
class LineDialogs : public LineInputDialogs
{
public:
    explicit LineDialogs(std::shared_ptr<UserDialogs> dialogs)
        : m_dialogs(std::move(dialogs))
        , m_files(standardLineInputDialogs())
    {
    }

    QString openFile(QWidget *parent, const QString &caption, const QString &start, const QString &filter) override
    {
        return m_files->openFile(parent, caption, start, filter);
    }
    QStringList openFiles(QWidget *parent, const QString &caption, const QString &start,
                          const QString &filter) override
    {
        return m_files->openFiles(parent, caption, start, filter);
    }
    QString saveFile(QWidget *parent, const QString &caption, const QString &start, const QString &filter) override
    {
        return m_files->saveFile(parent, caption, start, filter);
    }
    QString chooseFolder(QWidget *parent, const QString &caption, const QString &start, bool) override
    {
        return m_dialogs->chooseFolder(parent, caption, start);
    }

private:
    std::shared_ptr<UserDialogs> m_dialogs;
    std::shared_ptr<LineInputDialogs> m_files;
};

QCheckBox *makeCheckBox(const QString &name, const QString &caption, QWidget *parent)
{
    auto *box = new QCheckBox(caption, parent);
    box->setObjectName(name);
    return box;
}

} // namespace

ParameterCard::ParameterCard(std::shared_ptr<UserDialogs> dialogs, QWidget *parent)
    : VxInvisibleCont(parent)
{
    setObjectName(QStringLiteral("boxPRM"));
    VxCont *frame = makeCardFrame(this, QStringLiteral("Parameter festlegen"));
    auto *grid = new QGridLayout(frame);
    grid->setColumnStretch(0, 3);
    grid->setColumnStretch(1, 2);
    grid->setHorizontalSpacing(16);

    int row = 0;
    m_styleChoice = makeChoiceLine(QStringLiteral("cmbTyp"), QStringLiteral("Änderungsstil :"), frame);
    grid->addWidget(m_styleChoice, row++, 0, 1, 2);

    m_widthLine = makeTextLine(QStringLiteral("txtB"), widthLabelText(std::nullopt), frame);
    m_widthUnit = makeChoice(QStringLiteral("cmbFB"), frame);
    m_widthUnit->setAccessibleName(QStringLiteral("Einheit der Breite"));
    grid->addWidget(m_widthLine, row, 0);
    grid->addWidget(m_widthUnit, row++, 1);

    m_heightLine = makeTextLine(QStringLiteral("txtH"), heightLabelText(), frame);
    m_heightUnit = makeChoice(QStringLiteral("cmbFH"), frame);
    m_heightUnit->setAccessibleName(QStringLiteral("Einheit der Höhe"));
    grid->addWidget(m_heightLine, row, 0);
    grid->addWidget(m_heightUnit, row++, 1);

    const QList<PresetList> presets = presetLists();
    for (int i = 0; i < 4; ++i) {
        m_presetLists[i] = makeChoiceLine(QStringLiteral("cmbFMT"), presets.value(i).caption, frame);
        setControlArrayIndex(m_presetLists[i], i);
        grid->addWidget(m_presetLists[i], row + i / 2, i % 2);
        connect(m_presetLists[i], &VxLineIn::change, this, [this, i] { onPresetPicked(i); });
    }
    row += 2;

    auto *formatRow = new QHBoxLayout;
    auto *formatLabel = new QLabel(QStringLiteral("Zieldateiformat : "), frame);
    formatLabel->setObjectName(QStringLiteral("Label2"));
    formatRow->addWidget(formatLabel);
    auto *formatGroup = new QButtonGroup(frame);
    // Each option's tag is its format code, read when a run starts.
    const struct
    {
        const char *caption;
        const char *code;
    } formats[] = {{"&JPG", "J"}, {"&PNG", "P"}, {"W&ebP", "W"}, {"AV&IF", "A"}};
    for (int i = 0; i < 4; ++i) {
        m_formatOptions[i] = new QRadioButton(QString::fromUtf8(formats[i].caption), frame);
        m_formatOptions[i]->setProperty("Tag", QString::fromLatin1(formats[i].code));
        m_formatOptions[i]->setObjectName(QStringLiteral("optDF"));
        setControlArrayIndex(m_formatOptions[i], i);
        formatGroup->addButton(m_formatOptions[i], i);
        formatRow->addWidget(m_formatOptions[i]);
    }
    m_formatOptions[0]->setChecked(true);
    formatRow->addStretch(1);
    grid->addLayout(formatRow, row++, 0, 1, 2);

    auto *renameLabel = new QLabel(QStringLiteral("Ersetzen im Zieldateinamen :"), frame);
    renameLabel->setObjectName(QStringLiteral("Label1"));
    grid->addWidget(renameLabel, row++, 0, 1, 2);
    m_searchLine = makeTextLine(QStringLiteral("txtSFor"), QStringLiteral("Suchen nach :"), frame);
    m_replaceLine = makeTextLine(QStringLiteral("txtRep"), QStringLiteral("Ersetzten durch :"), frame);
    grid->addWidget(m_searchLine, row, 0);
    grid->addWidget(m_replaceLine, row++, 1);

    m_targetLine = makeTextLine(QStringLiteral("txtDst"), QStringLiteral("Zielverzeichnis :"), frame);
    m_targetLine->setButtonShow(true);
    m_targetLine->setButtonCaption(QStringLiteral("..."));
    m_targetLine->setButtonToolTip(QStringLiteral("Zielverzeichnis wählen"));
    m_targetLine->setCommandStyle(3);
    m_targetLine->setDialogs(std::make_shared<LineDialogs>(std::move(dialogs)));
    grid->addWidget(m_targetLine, row++, 0, 1, 2);

    m_keepFoldersBox = makeCheckBox(QStringLiteral("chkKeepDir"), QStringLiteral("Verzeichnisstruktur &beibehalten"),
                                    frame);
    m_deleteSourcesBox = makeCheckBox(QStringLiteral("chkDel"),
                                      QStringLiteral("Quelldateien nach Bearbeitung &löschen"), frame);
    m_exifBox = makeCheckBox(QStringLiteral("chkEXF"), QStringLiteral("E&XIF Bilddaten ins Ziel übertragen"), frame);
    m_keepDateBox = makeCheckBox(QStringLiteral("chkDU"),
                                 QStringLiteral("Datum und &Uhrzeit beim Konvertieren beibehalten"), frame);
    grid->addWidget(m_keepFoldersBox, row, 0);
    grid->addWidget(m_deleteSourcesBox, row++, 1);
    grid->addWidget(m_exifBox, row, 0);
    grid->addWidget(m_keepDateBox, row++, 1);
    grid->setRowStretch(row, 1);

    // Both columns of lines get one label width each; the long caption
    // "Seitenlänge :" is measured too, so the label never clips.
    m_widthLine->setCaption(widthLabelText(ChangeStyle::LongSide));
    fitLabelColumn({m_styleChoice, m_widthLine, m_heightLine, m_presetLists[0], m_presetLists[2], m_searchLine,
                    m_targetLine},
                   110);
    m_widthLine->setCaption(widthLabelText(std::nullopt));
    fitLabelColumn({m_presetLists[1], m_presetLists[3], m_replaceLine}, 110);

    connect(m_styleChoice, &VxLineIn::change, this, &ParameterCard::onStyleChanged);
}

void ParameterCard::fillLists(const QString &settingsPath)
{
    fillChoice(m_styleChoice, changeStyleEntries());
    fillChoice(m_widthUnit, sizeUnitEntries());
    fillChoice(m_heightUnit, sizeUnitEntries());
    const QList<PresetList> presets = presetLists();
    for (int i = 0; i < 4 && i < presets.size(); ++i) {
        m_presetLists[i]->clearList();
        const QStringList entries = presetEntries(settingsPath, presets.at(i).key);
        for (const QString &entry : entries)
            m_presetLists[i]->addItem(entry);
        m_presetLists[i]->setListIndex(-1);
    }
}

void ParameterCard::readLastParameters(const QString &settingsPath)
{
    const LastParameters last = valtrona::readLastParameters(settingsPath);
    selectItemData(m_styleChoice, last.style);
    selectItemData(m_widthUnit, last.widthUnit);
    selectItemData(m_heightUnit, last.heightUnit);
    m_widthLine->setText(last.width);
    m_heightLine->setText(last.height);
    m_targetLine->setText(last.path);
    m_searchLine->setText(last.searchFor);
    m_replaceLine->setText(last.replaceWith);
}

bool ParameterCard::saveLastParameters(const QString &settingsPath) const
{
    LastParameters last;
    last.style = selectedItemData(m_styleChoice);
    last.widthUnit = selectedItemData(m_widthUnit);
    last.heightUnit = selectedItemData(m_heightUnit);
    last.width = m_widthLine->text();
    last.height = m_heightLine->text();
    last.path = m_targetLine->text();
    last.searchFor = m_searchLine->text();
    last.replaceWith = m_replaceLine->text();
    return writeLastParameters(settingsPath, last);
}

QString ParameterCard::check()
{
    const std::optional<ChangeStyle> style = selectedStyle();
    if (!style)
        return QStringLiteral("Sie haben keinen Änderungsstil gewählt !");
    if (m_widthUnit->currentIndex() < 0)
        m_widthUnit->setCurrentIndex(0);
    if (m_heightUnit->currentIndex() < 0)
        m_heightUnit->setCurrentIndex(0);
    if (!formatParametersValid(style, m_widthLine->text(), m_heightLine->text()))
        return QStringLiteral("Sie haben ungültige Formatparameter gewählt !");
    if (m_targetLine->text().isEmpty())
        return QStringLiteral("Sie haben kein Zielverzeichnis gewählt !");
    return QString();
}

RunParameters ParameterCard::runParameters(const QStringList &sources) const
{
    RunParameters parameters;
    parameters.sources = sources;
    parameters.targetDirectory = m_targetLine->text();
    // check() has made sure a style is chosen.
    parameters.changeStyle = selectedStyle().value_or(ChangeStyle::WidthAndHeight);
    parameters.keepDate = m_keepDateBox->isChecked();
    parameters.copyExif = m_exifBox->isChecked();
    parameters.searchText = m_searchLine->text();
    parameters.replaceText = m_replaceLine->text();
    // The later checked option wins; a tag that names no format leaves none.
    parameters.format = ImageFormat::Jpeg;
    for (const QRadioButton *option : m_formatOptions) {
        if (option->isChecked())
            parameters.format = formatForCode(option->property("Tag").toString());
    }
    parameters.keepDirectoryStructure = m_keepFoldersBox->isChecked();
    return parameters;
}

FileInputs ParameterCard::fileInputs() const
{
    FileInputs inputs;
    inputs.widthText = m_widthLine->text();
    inputs.heightText = m_heightLine->text();
    inputs.widthUnit = selectedItemData(m_widthUnit);
    inputs.heightUnit = selectedItemData(m_heightUnit);
    return inputs;
}

bool ParameterCard::deleteSources() const
{
    return m_deleteSourcesBox->isChecked();
}

void ParameterCard::focusFirstField()
{
    m_styleChoice->setActive();
}

void ParameterCard::onStyleChanged()
{
    const std::optional<ChangeStyle> style = selectedStyle();
    m_widthLine->setCaption(widthLabelText(style));
    if (!style)
        return;
    const InputEnabling enabling = inputEnabling(*style);
    m_widthLine->setTextEnabled(enabling.width);
    m_widthUnit->setEnabled(enabling.width);
    m_heightLine->setTextEnabled(enabling.height);
    m_heightUnit->setEnabled(enabling.height);
}

void ParameterCard::onPresetPicked(int list)
{
    VxLineIn *presets = m_presetLists[list];
    const int index = presets->listIndex();
    if (index < 0)
        return;
    if (const std::optional<PresetSize> size = splitPreset(presets->itemText(index))) {
        m_widthLine->setText(size->widthText());
        m_heightLine->setText(size->heightText());
    }
    // Cleared again, so the same entry can be picked twice.
    presets->setListIndex(-1);
}

std::optional<ChangeStyle> ParameterCard::selectedStyle() const
{
    return changeStyleFromNumber(selectedItemData(m_styleChoice));
}

} // namespace valtrona
