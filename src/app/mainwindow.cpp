#include "app/mainwindow.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMetaObject>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QShortcut>
#include <QVBoxLayout>

#include "app/imagingpictureloader.h"
#include "app/lineinputs.h"
#include "app/runcontroller.h"
#include "app/settingsdialog.h"
#include "app/sourcelist.h"
#include "app/statuslist.h"
#include "app/userdialogs.h"
#include "batch/conversionrun.h"
#include "batch/runsettings.h"
#include "batch/sizerules.h"
#include "controls/controlsupport.h"
#include "controls/lineinput_dialogs.h"
#include "controls/vxactctrl.h"
#include "controls/vxborder.h"
#include "controls/vxcont.h"
#include "controls/vxinvisiblecont.h"
#include "controls/vxlinein.h"
#include "controls/vxpict.h"
#include "core/appinfo.h"
#include "core/fileservices.h"
#include "core/settings.h"
#include "imaging/imaging.h"

namespace valtrona {

namespace {

const QString abortTitle = QStringLiteral("Abbruch");

// Every format the imaging library here reads well. Qt's own file dialog
// matches the patterns ignoring letter case, so "*.jpg" also shows "A.JPG".
QString imageFileFilter()
{
    return QStringLiteral("Bilddateien (*.jpg *.jpeg *.jpe *.gif *.bmp *.png *.tif *.tiff *.webp *.heic *.heif "
                          "*.avif *.jxl)");
}

QPushButton *makeButton(const QString &name, const QString &caption, QWidget *parent)
{
    auto *button = new QPushButton(caption, parent);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

QComboBox *makeChoice(const QString &name, QWidget *parent)
{
    auto *combo = new QComboBox(parent);
    combo->setObjectName(name);
    return combo;
}

// A choice list with nothing selected, as the lists start before the saved
// parameters are read.
void fillChoice(QComboBox *combo, const QList<ChoiceEntry> &entries)
{
    combo->clear();
    for (const ChoiceEntry &entry : entries)
        combo->addItem(entry.text, entry.itemData);
    combo->setCurrentIndex(-1);
}

void selectItemData(QComboBox *combo, int itemData)
{
    const int index = combo->findData(itemData);
    if (index >= 0)
        combo->setCurrentIndex(index);
}

// A framed card area: the caption sits in the frame line, the children in
// a layout inside the frame's work area.
VxCont *makeFrame(const QString &caption, QWidget *parent)
{
    auto *frame = new VxCont(parent);
    frame->setBorderStyle(BorderStyleCode::ThreedInOut);
    frame->setCaptionFrame(caption);
    return frame;
}

VxPict *makePreview(const QString &name, std::shared_ptr<PictureLoader> loader, QWidget *parent)
{
    auto *preview = new VxPict(parent);
    preview->setObjectName(name);
    preview->setPictureLoader(std::move(loader));
    preview->setShowPictureToolTip(3);
    preview->setMinimumSize(240, 240);
    return preview;
}

// Parameter lines: label and input in one control, no button unless asked.
VxLineIn *makeTextLine(const QString &name, const QString &caption, QWidget *parent)
{
    auto *line = new VxLineIn(parent);
    line->setObjectName(name);
    line->setCaption(caption);
    line->setButtonShow(false);
    line->setLabelWidth(110);
    return line;
}

VxLineIn *makeChoiceLine(const QString &name, const QString &caption, QWidget *parent)
{
    VxLineIn *line = makeTextLine(name, caption, parent);
    line->setControlStyle(1);
    line->setComboStyle(2);
    line->setComboLines(16);
    return line;
}

void fillChoice(VxLineIn *line, const QList<ChoiceEntry> &entries)
{
    line->clearList();
    for (const ChoiceEntry &entry : entries)
        line->addItem(entry.text, entry.itemData);
    line->setListIndex(-1);
}

void selectItemData(VxLineIn *line, int itemData)
{
    for (int i = 0; i < line->listCount(); ++i) {
        if (line->itemData(i) == itemData) {
            line->setListIndex(i);
            return;
        }
    }
}

// The folder button of the target line asks through the window's dialogs
// (so tests answer it); file dialogs, which no line of this window opens,
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

QLabel *buddyLabel(const QString &text, QWidget *buddy, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setBuddy(buddy);
    return label;
}

} // namespace

// The window as the run sees it: rows, progress, preview, the inputs read
// per file and the stop flag.
class MainWindow::RunHost : public ConversionHost
{
public:
    explicit RunHost(MainWindow &window)
        : m_window(window)
    {
    }

    void clearStatusRows() override { m_window.m_lvStat->clear(); }

    void addStatusRow(const StatusRow &row) override
    {
        m_window.m_lvStat->addStatusRow(row.text, row.kind, row.tag);
    }

    void setCaptionPercent(int percent) override
    {
        m_window.setWindowTitle(m_window.m_programTitle + QStringLiteral(" - ") + QString::number(percent)
                                + QStringLiteral(" %"));
    }

    void setProgress(int index, int /*count*/, const QString &progressText) override
    {
        m_window.m_runStatusText = progressText;
        m_window.updateCountLabel();
        m_window.m_prog->setValue(index);
    }

    void showPreview(const QString &path) override { m_window.showRunPreview(path); }

    // The run never waits on this thread; nothing to yield to.
    void yield() override {}

    bool stopRequested() override { return m_window.m_stopRequested || m_window.m_closing; }

    FileInputs fileInputs() override
    {
        FileInputs inputs;
        inputs.widthText = m_window.m_txtB->text();
        inputs.heightText = m_window.m_txtH->text();
        inputs.widthUnit = m_window.selectedItemData(m_window.m_cmbFB);
        inputs.heightUnit = m_window.selectedItemData(m_window.m_cmbFH);
        return inputs;
    }

    bool deleteSources() override { return m_window.m_chkDel->isChecked(); }

    void fileFailed(const QString &source, const Error &error) override
    {
        m_window.m_lvStat->setLastRowToolTip(source + QStringLiteral(": ")
                                             + errorText(error.code));
    }

    void runEnded() override { m_window.setWindowTitle(m_window.m_programTitle); }

private:
    MainWindow &m_window;
};

MainWindow::Environment MainWindow::defaultEnvironment()
{
    Environment env;
    env.settingsPath = settingsPath();
    env.dialogs = std::make_shared<StandardDialogs>();
    env.startImaging = [] { return imaging::start(); };
    env.quit = [] { QCoreApplication::exit(0); };
    return env;
}

MainWindow::MainWindow(Environment environment, QWidget *parent)
    : QWidget(parent)
    , m_env(std::move(environment))
{
    if (!m_env.dialogs)
        m_env.dialogs = std::make_shared<StandardDialogs>();
    if (!m_env.startImaging)
        m_env.startImaging = [] { return imaging::start(); };
    if (!m_env.quit)
        m_env.quit = [] { QCoreApplication::exit(0); };

    setObjectName(QStringLiteral("B_MAIN"));
    m_pictureLoader =
        std::make_shared<ImagingPictureLoader>([this](const QString &path) { return measureQuietly(path); });
    setAttribute(Qt::WA_QuitOnClose, true);
    m_runHost = std::make_unique<RunHost>(*this);
    m_runController = new RunController(*m_runHost, this);
    connect(m_runController, &RunController::finished, this, &MainWindow::onRunFinished);
    // The run's preview is read on its workers and shown when ready, so a
    // 40-megapixel photo never holds up the window.
    connect(m_runController, &RunController::previewReady, this, &MainWindow::showReadPreview);

    auto *layout = new QVBoxLayout(this);
    auto *cardArea = new QWidget(this);
    cardArea->setObjectName(QStringLiteral("cardArea"));
    QWidget *cards[3] = {};
    const QStringList cardNames = {QStringLiteral("boxSEL"), QStringLiteral("boxPRM"), QStringLiteral("boxDO")};
    for (int i = 0; i < 3; ++i) {
        auto *card = new VxInvisibleCont(cardArea);
        card->setObjectName(cardNames.at(i));
        cards[i] = card;
    }
    buildSourceCard(cards[0]);
    buildParameterCard(cards[1]);
    buildProcessCard(cards[2]);

    m_aa = new VxActCtrl(cardArea);
    m_aa->setObjectName(QStringLiteral("AA"));
    m_aa->setContainerLeft(0);
    m_aa->setContainerTop(0);
    m_aa->setBExtendWidth(true);
    m_aa->setBExtendHeight(true);
    m_aa->setCtlNames(cardNames.join(QLatin1Char(';')));
    m_aa->setCtlDisplays(QStringLiteral("Quelldateien;Parameter;Bildverarbeitung"));
    m_aa->setCtlWidth(QStringLiteral("0;0;"));
    m_aa->setCtlHeight(QStringLiteral("0;0;"));
    // Framed containers report a fixed size hint of their own; what they
    // hold decides how small a card may get.
    const QList<VxCont *> frames = cardArea->findChildren<VxCont *>();
    for (VxCont *frame : frames) {
        if (frame->layout())
            frame->setMinimumSize(frame->layout()->totalMinimumSize());
    }
    int minimumWidth = 0;
    int minimumHeight = 0;
    for (QWidget *card : cards) {
        minimumWidth = std::max(minimumWidth, card->minimumSizeHint().width());
        minimumHeight = std::max(minimumHeight, card->minimumSizeHint().height());
    }
    cardArea->setMinimumSize(minimumWidth, minimumHeight);
    layout->addWidget(cardArea, 1);

    auto *row = new QWidget(this);
    buildButtonRow(row);
    layout->addWidget(row);

    // Escape stops a run from whichever card is shown. Enter has no
    // window-wide meaning (see keyPressEvent()): it never starts a run.
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, [this] {
        if (m_running)
            onStop();
    });

    // The list's count follows every change of its rows, drops included.
    QAbstractItemModel *rows = m_lv->model();
    connect(rows, &QAbstractItemModel::rowsInserted, this, &MainWindow::updateCountLabel);
    connect(rows, &QAbstractItemModel::rowsRemoved, this, &MainWindow::updateCountLabel);
    connect(rows, &QAbstractItemModel::modelReset, this, &MainWindow::updateCountLabel);

    resize(820, 580);
}

MainWindow::~MainWindow()
{
    shutDown();
    // The controller lets the file in hand finish; the host it reports to
    // goes after it.
    delete m_runController;
    m_runController = nullptr;
}

void MainWindow::buildSourceCard(QWidget *card)
{
    auto *outer = new QVBoxLayout(card);
    outer->setContentsMargins(0, 0, 0, 0);
    VxCont *frame = makeFrame(QStringLiteral("Quelldateien wählen"), card);
    outer->addWidget(frame);

    auto *grid = new QGridLayout(frame);
    m_lv = new SourceList(frame);
    m_lv->setObjectName(QStringLiteral("lv"));
    m_lv->setMeasure([this](const QString &path) { return measureQuietly(path); });
    m_lv->setRestart([this] {
        // A run may have a file in flight; the layer is restarted only
        // while nothing converts.
        if (!m_running)
            restartImaging();
    });
    grid->addWidget(buddyLabel(QStringLiteral("&Quelldateien wählen :"), m_lv, frame), 0, 0);
    grid->addWidget(m_lv, 1, 0);

    m_prv = makePreview(QStringLiteral("PRV"), m_pictureLoader, frame);
    grid->addWidget(m_prv, 1, 1);
    grid->setColumnStretch(0, 1);

    auto *buttons = new QHBoxLayout;
    m_cmdOpen = makeButton(QStringLiteral("cmdOpen"), QStringLiteral("&Bilder laden"), frame);
    m_cmdOpen->setToolTip(QStringLiteral("Bilder zur Verarbeitung laden"));
    m_cmdOpenF = makeButton(QStringLiteral("cmdOpenF"), QStringLiteral("&Verzeichnis laden"), frame);
    m_cmdOpenF->setToolTip(QStringLiteral("Bilder zur Verarbeitung laden"));
    m_cmdRemove = makeButton(QStringLiteral("cmdRemove"), QStringLiteral("Bild(er) &entfernen"), frame);
    m_cmdRemove->setToolTip(QStringLiteral("Bild aus Auswahl entfernen"));
    m_cmdRemoveAll = makeButton(QStringLiteral("cmdRemoveAll"), QStringLiteral("&Alle entfernen"), frame);
    m_cmdRemoveAll->setToolTip(QStringLiteral("Alle Bilder entfernen..."));
    for (QPushButton *button : {m_cmdOpen, m_cmdOpenF, m_cmdRemove, m_cmdRemoveAll})
        buttons->addWidget(button);
    buttons->addStretch(1);
    grid->addLayout(buttons, 2, 0, 1, 2);

    connect(m_cmdOpen, &QPushButton::clicked, this, &MainWindow::onOpenFiles);
    connect(m_cmdOpenF, &QPushButton::clicked, this, &MainWindow::onOpenFolder);
    connect(m_cmdRemove, &QPushButton::clicked, this, &MainWindow::onRemoveSelected);
    connect(m_cmdRemoveAll, &QPushButton::clicked, this, &MainWindow::onRemoveAll);
    connect(m_lv, &SourceList::previewRequested, this, &MainWindow::showSourcePreview);
    auto *removeKey = new QShortcut(QKeySequence::Delete, m_lv);
    removeKey->setContext(Qt::WidgetShortcut);
    connect(removeKey, &QShortcut::activated, m_cmdRemove, &QPushButton::click);
}

void MainWindow::buildParameterCard(QWidget *card)
{
    auto *outer = new QVBoxLayout(card);
    outer->setContentsMargins(0, 0, 0, 0);
    VxCont *frame = makeFrame(QStringLiteral("Parameter festlegen"), card);
    outer->addWidget(frame);
    auto *grid = new QGridLayout(frame);
    grid->setColumnStretch(0, 3);
    grid->setColumnStretch(1, 2);
    grid->setHorizontalSpacing(16);

    int row = 0;
    m_cmbTyp = makeChoiceLine(QStringLiteral("cmbTyp"), QStringLiteral("Änderungsstil :"), frame);
    grid->addWidget(m_cmbTyp, row++, 0, 1, 2);

    m_txtB = makeTextLine(QStringLiteral("txtB"), QStringLiteral("Breite :"), frame);
    m_cmbFB = makeChoice(QStringLiteral("cmbFB"), frame);
    m_cmbFB->setAccessibleName(QStringLiteral("Einheit der Breite"));
    grid->addWidget(m_txtB, row, 0);
    grid->addWidget(m_cmbFB, row++, 1);

    m_txtH = makeTextLine(QStringLiteral("txtH"), QStringLiteral("Höhe :"), frame);
    m_cmbFH = makeChoice(QStringLiteral("cmbFH"), frame);
    m_cmbFH->setAccessibleName(QStringLiteral("Einheit der Höhe"));
    grid->addWidget(m_txtH, row, 0);
    grid->addWidget(m_cmbFH, row++, 1);

    const QList<PresetList> presets = presetLists();
    for (int i = 0; i < 4; ++i) {
        m_cmbFMT[i] = makeChoiceLine(QStringLiteral("cmbFMT"), presets.value(i).caption, frame);
        setControlArrayIndex(m_cmbFMT[i], i);
        grid->addWidget(m_cmbFMT[i], row + i / 2, i % 2);
        connect(m_cmbFMT[i], &VxLineIn::change, this, [this, i] { onPresetPicked(i); });
    }
    row += 2;

    auto *formatRow = new QHBoxLayout;
    auto *label2 = new QLabel(QStringLiteral("Zieldateiformat : "), frame);
    label2->setObjectName(QStringLiteral("Label2"));
    formatRow->addWidget(label2);
    auto *formatGroup = new QButtonGroup(frame);
    m_optDF[0] = new QRadioButton(QStringLiteral("&JPG"), frame);
    m_optDF[0]->setProperty("Tag", QStringLiteral("J"));
    m_optDF[1] = new QRadioButton(QStringLiteral("&PNG"), frame);
    m_optDF[1]->setProperty("Tag", QStringLiteral("P"));
    m_optDF[2] = new QRadioButton(QStringLiteral("W&ebP"), frame);
    m_optDF[2]->setProperty("Tag", QStringLiteral("W"));
    m_optDF[3] = new QRadioButton(QStringLiteral("AV&IF"), frame);
    m_optDF[3]->setProperty("Tag", QStringLiteral("A"));
    for (int i = 0; i < 4; ++i) {
        m_optDF[i]->setObjectName(QStringLiteral("optDF"));
        setControlArrayIndex(m_optDF[i], i);
        formatGroup->addButton(m_optDF[i], i);
        formatRow->addWidget(m_optDF[i]);
    }
    m_optDF[0]->setChecked(true);
    formatRow->addStretch(1);
    grid->addLayout(formatRow, row++, 0, 1, 2);

    auto *label1 = new QLabel(QStringLiteral("Ersetzen im Zieldateinamen :"), frame);
    label1->setObjectName(QStringLiteral("Label1"));
    grid->addWidget(label1, row++, 0, 1, 2);
    m_txtSFor = makeTextLine(QStringLiteral("txtSFor"), QStringLiteral("Suchen nach :"), frame);
    m_txtRep = makeTextLine(QStringLiteral("txtRep"), QStringLiteral("Ersetzten durch :"), frame);
    grid->addWidget(m_txtSFor, row, 0);
    grid->addWidget(m_txtRep, row++, 1);

    m_txtDst = makeTextLine(QStringLiteral("txtDst"), QStringLiteral("Zielverzeichnis :"), frame);
    m_txtDst->setButtonShow(true);
    m_txtDst->setButtonCaption(QStringLiteral("..."));
    m_txtDst->setButtonToolTip(QStringLiteral("Zielverzeichnis wählen"));
    m_txtDst->setCommandStyle(3);
    m_txtDst->setDialogs(std::make_shared<LineDialogs>(m_env.dialogs));
    grid->addWidget(m_txtDst, row++, 0, 1, 2);

    m_chkKeepDir = new QCheckBox(QStringLiteral("Verzeichnisstruktur &beibehalten"), frame);
    m_chkKeepDir->setObjectName(QStringLiteral("chkKeepDir"));
    m_chkDel = new QCheckBox(QStringLiteral("Quelldateien nach Bearbeitung &löschen"), frame);
    m_chkDel->setObjectName(QStringLiteral("chkDel"));
    m_chkEXF = new QCheckBox(QStringLiteral("E&XIF Bilddaten ins Ziel übertragen"), frame);
    m_chkEXF->setObjectName(QStringLiteral("chkEXF"));
    m_chkDU = new QCheckBox(QStringLiteral("Datum und &Uhrzeit beim Konvertieren beibehalten"), frame);
    m_chkDU->setObjectName(QStringLiteral("chkDU"));
    grid->addWidget(m_chkKeepDir, row, 0);
    grid->addWidget(m_chkDel, row++, 1);
    grid->addWidget(m_chkEXF, row, 0);
    grid->addWidget(m_chkDU, row++, 1);
    grid->setRowStretch(row, 1);

    // Both columns of lines get one label width each; the long caption
    // "Seitenlänge :" is measured too, so the label never clips.
    const QString widthCaption = m_txtB->caption();
    m_txtB->setCaption(widthLabelText(ChangeStyle::LongSide));
    fitLabelColumn({m_cmbTyp, m_txtB, m_txtH, m_cmbFMT[0], m_cmbFMT[2], m_txtSFor, m_txtDst}, 110);
    m_txtB->setCaption(widthCaption);
    fitLabelColumn({m_cmbFMT[1], m_cmbFMT[3], m_txtRep}, 110);

    connect(m_cmbTyp, &VxLineIn::change, this, &MainWindow::onStyleChanged);
}

void MainWindow::buildProcessCard(QWidget *card)
{
    auto *outer = new QVBoxLayout(card);
    outer->setContentsMargins(0, 0, 0, 0);
    VxCont *frame = makeFrame(QStringLiteral("Bilder verarbeiten"), card);
    outer->addWidget(frame);
    auto *grid = new QGridLayout(frame);

    m_prog = new QProgressBar(frame);
    m_prog->setObjectName(QStringLiteral("prog"));
    m_prog->setRange(0, 1);
    m_prog->setValue(0);
    grid->addWidget(m_prog, 0, 0, 1, 2);

    m_lvStat = new StatusList(frame);
    m_lvStat->setObjectName(QStringLiteral("lvStat"));
    grid->addWidget(m_lvStat, 1, 0);

    m_picPrev = makePreview(QStringLiteral("picPrev"), m_pictureLoader, frame);
    grid->addWidget(m_picPrev, 1, 1);
    grid->setColumnStretch(0, 1);

    m_cmdStop = makeButton(QStringLiteral("cmdStop"), QStringLiteral("Abbruch"), frame);
    m_cmdStop->setToolTip(QStringLiteral("Esc"));
    m_cmdStop->setEnabled(false);
    auto *stopRow = new QHBoxLayout;
    stopRow->addStretch(1);
    stopRow->addWidget(m_cmdStop);
    grid->addLayout(stopRow, 2, 0, 1, 2);

    connect(m_cmdStop, &QPushButton::clicked, this, &MainWindow::onStop);
    connect(m_lvStat, &StatusList::rowClicked, this, [this](const QString &path) {
        if (path != m_picPrev->fileName())
            m_picPrev->setFileName(path);
    });
}

void MainWindow::buildButtonRow(QWidget *row)
{
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    m_lblStat = new QLabel(SourceList::countText(0), row);
    m_lblStat->setObjectName(QStringLiteral("lblStat"));
    m_command1 = makeButton(QStringLiteral("Command1"), QStringLiteral("&Reset"), row);
    m_cmdCFG = makeButton(QStringLiteral("cmdCFG"), QStringLiteral("&Konfiguration"), row);
    m_cmdZ = makeButton(QStringLiteral("cmdZ"), QStringLiteral("< &Zurück"), row);
    m_cmdW = makeButton(QStringLiteral("cmdW"), QStringLiteral("&Weiter >"), row);
    m_cmdOK = makeButton(QStringLiteral("cmdOK"), QStringLiteral("&Schließen"), row);

    layout->addWidget(m_lblStat, 1);
    layout->addWidget(m_command1);
    layout->addWidget(m_cmdCFG);
    layout->addSpacing(16);
    layout->addWidget(m_cmdZ);
    layout->addWidget(m_cmdW);
    layout->addSpacing(16);
    layout->addWidget(m_cmdOK);

    connect(m_cmdW, &QPushButton::clicked, this, &MainWindow::onNext);
    connect(m_cmdZ, &QPushButton::clicked, this, &MainWindow::onBack);
    connect(m_cmdOK, &QPushButton::clicked, this, &MainWindow::close);
    connect(m_cmdCFG, &QPushButton::clicked, this, &MainWindow::onConfigure);
    connect(m_command1, &QPushButton::clicked, this, &MainWindow::onReset);
}

bool MainWindow::start()
{
    m_programTitle = programTitle();
    setWindowTitle(m_programTitle);

    fillChoice(m_cmbTyp, changeStyleEntries());
    fillChoice(m_cmbFB, sizeUnitEntries());
    fillChoice(m_cmbFH, sizeUnitEntries());

    // Presets are read before the defaults are seeded, so a first start
    // without a settings file shows them only from the second start on.
    const QList<PresetList> presets = presetLists();
    for (int i = 0; i < 4 && i < presets.size(); ++i) {
        m_cmbFMT[i]->clearList();
        const QStringList entries = presetEntries(m_env.settingsPath, presets.at(i).key);
        for (const QString &entry : entries)
            m_cmbFMT[i]->addItem(entry);
        m_cmbFMT[i]->setListIndex(-1);
    }

    m_currentCard = 1;
    showCard(1);
    seedDefaultSettings(m_env.settingsPath);
    readLastParameters();
    applyOrientationSetting();

    imaging::setReporter([this](const QString &title, const QString &text) {
        // Reports may come from a worker thread; boxes belong to this one.
        if (m_suppressReports)
            return;
        QMetaObject::invokeMethod(this, [this, title, text] { reportImagingFailure(title, text); },
                                  Qt::QueuedConnection);
    });

    if (!m_env.startImaging()) {
        m_env.dialogs->plainMessage(this, QString(), QStringLiteral("GDI konnte nicht initialisiert werden !"));
        return false;
    }
    updateSourceCount();
    return true;
}

int MainWindow::currentCard() const
{
    return m_currentCard;
}

void MainWindow::showCard(int n)
{
    if (n < 1 || n > 3)
        return;
    m_aa->setActiveControl(n);
    m_currentCard = n;
    // The focus moves before "Weiter >" may be disabled: a disabled button
    // hands its focus on, and the next in line could be "Schließen".
    focusCard();
    m_cmdZ->setEnabled(n != 1);
    m_cmdW->setEnabled(n != 3);
    updateCountLabel();
}

void MainWindow::focusCard()
{
    // Where Enter and Space are harmless: the list, the first field, the
    // run's status rows.
    switch (m_currentCard) {
    case 1:
        m_lv->setFocus(Qt::OtherFocusReason);
        break;
    case 2:
        m_cmbTyp->setActive();
        break;
    default:
        m_lvStat->setFocus(Qt::OtherFocusReason);
        break;
    }
}

QWidget *MainWindow::shownCard() const
{
    return m_aa->getControl(m_currentCard);
}

void MainWindow::focusNextField()
{
    // Like Tab, but only to fields of the shown card: Enter never lands on
    // a button, so pressing it again cannot trigger one.
    QWidget *card = shownCard();
    QWidget *start = QApplication::focusWidget();
    for (int step = 0; step < 200; ++step) {
        if (!focusNextChild())
            return;
        QWidget *now = QApplication::focusWidget();
        if (!now || now == start)
            return;
        if (card && card->isAncestorOf(now) && !qobject_cast<QPushButton *>(now))
            return;
    }
}

void MainWindow::keyPressEvent(QKeyEvent *event)
{
    // Only keys no control took come here.
    if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) {
        QWidget::keyPressEvent(event);
        return;
    }
    QWidget *focus = QApplication::focusWidget();
    if (auto *button = qobject_cast<QPushButton *>(focus); button && button->isEnabled()) {
        // A focused button takes Enter as it takes Space.
        button->click();
    } else if (m_currentCard == 1 && focus == m_lv) {
        onNext(); // on to the parameters; never a run from here
    } else if (m_currentCard == 2 && focus && shownCard() && shownCard()->isAncestorOf(focus)) {
        focusNextField();
    }
    event->accept();
}

void MainWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    // Back from another program: files may have gone meanwhile.
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        m_lv->refreshAvailability();
}

bool MainWindow::validateCard(int n)
{
    if (n == 1) {
        if (m_lv->count() == 0) {
            m_env.dialogs->information(this, abortTitle, QStringLiteral("Sie haben keine Quelldateien gewählt !"));
            return false;
        }
        return true;
    }
    if (n == 2) {
        if (m_cmbTyp->listIndex() < 0) {
            m_env.dialogs->information(this, abortTitle, QStringLiteral("Sie haben keinen Änderungsstil gewählt !"));
            return false;
        }
        if (m_cmbFB->currentIndex() < 0)
            m_cmbFB->setCurrentIndex(0);
        if (m_cmbFH->currentIndex() < 0)
            m_cmbFH->setCurrentIndex(0);
        if (!formatParametersValid(changeStyleFromNumber(selectedItemData(m_cmbTyp)), m_txtB->text(),
                                   m_txtH->text())) {
            m_env.dialogs->information(this, abortTitle,
                                       QStringLiteral("Sie haben ungültige Formatparameter gewählt !"));
            return false;
        }
        if (m_txtDst->text().isEmpty()) {
            m_env.dialogs->information(this, abortTitle, QStringLiteral("Sie haben kein Zielverzeichnis gewählt !"));
            return false;
        }
        saveLastParameters();
        return true;
    }
    return true;
}

bool MainWindow::isRunning() const
{
    return m_running;
}

bool MainWindow::stopRequested() const
{
    return m_stopRequested;
}

SourceList *MainWindow::sourceList() const
{
    return m_lv;
}

StatusList *MainWindow::statusList() const
{
    return m_lvStat;
}

void MainWindow::onNext()
{
    if (!validateCard(m_currentCard))
        return;
    showCard(m_currentCard + 1);
    if (m_currentCard == 3 && !m_running)
        runConversion();
}

void MainWindow::onBack()
{
    showCard(m_currentCard - 1);
}

void MainWindow::onStop()
{
    m_stopRequested = true;
    m_runController->checkStop();
}

void MainWindow::onReset()
{
    // Disabled while a run goes on: the list would empty under it.
    if (m_running)
        return;
    showCard(1);
    m_lv->removeAll();
    m_lv->showPreview();
    updateSourceCount();
}

void MainWindow::onConfigure()
{
    SettingsDialog dialog(m_env.settingsPath, m_env.dialogs, this);
    // The dialog fills itself when its hidden init button is pressed.
    QPushButton *init = dialog.initButton();
    init->setProperty("Tag", 1);
    init->click();
    dialog.exec();
    applyOrientationSetting();
}

void MainWindow::applyOrientationSetting()
{
    // Previews and the dimensions column follow the setting; a run reads it
    // per file with the drawing settings.
    const bool upright = readDrawingSettings(m_env.settingsPath, DrawingSettings()).upright;
    imaging::setOrientation(upright ? imaging::Orientation::Upright : imaging::Orientation::Stored);
}

void MainWindow::onOpenFiles()
{
    const QStringList filters = {
        imageFileFilter(),
        QStringLiteral("Alle Dateien (*.*)"),
    };
    const QStringList files = m_env.dialogs->openFiles(this, QStringLiteral("Dateien wählen :"), filters);
    if (files.isEmpty())
        return;
    m_lv->addSourceFiles(files);
    updateSourceCount();
}

void MainWindow::onOpenFolder()
{
    const QString folder = m_env.dialogs->chooseFolder(
        this, QStringLiteral("Verzeichnis für Konvertierung wählen (JPG) : "), m_lastSourceFolder);
    if (folder.isEmpty())
        return;
    m_lastSourceFolder = folder;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const auto photos = files::listJpegFiles(folder);
    QApplication::restoreOverrideCursor();
    if (!photos || photos->isEmpty())
        return;
    m_lv->addSourceFiles(*photos);
    updateSourceCount();
}

QStringList MainWindow::addStartPaths(const QStringList &paths)
{
    QStringList existing;
    QStringList missing;
    for (const QString &path : paths) {
        const QString absolute = path.isEmpty() ? QString() : QDir::cleanPath(QDir::current().absoluteFilePath(path));
        if (files::pathExists(absolute))
            existing.append(absolute);
        else
            missing.append(path);
    }
    const QStringList sources = files::expandFolders(existing, false);
    if (!sources.isEmpty()) {
        m_lv->addSourceFiles(sources);
        updateSourceCount();
    }
    return missing;
}

void MainWindow::onRemoveSelected()
{
    m_lv->removeSelected();
    updateSourceCount();
}

void MainWindow::onRemoveAll()
{
    if (m_lv->count() > 0
        && m_env.dialogs->askYesNo(this, QStringLiteral("Entfernen"),
                                   QStringLiteral("Wollen Sie alle Bilder aus der Auswahl entfernen ?"))) {
        m_lv->removeAll();
    }
    m_lv->forgetPreviewItem();
    m_lv->showPreview();
    updateSourceCount();
}

void MainWindow::onStyleChanged()
{
    const std::optional<ChangeStyle> style = changeStyleFromNumber(selectedItemData(m_cmbTyp));
    m_txtB->setCaption(widthLabelText(style));
    if (!style)
        return;
    const InputEnabling enabling = inputEnabling(*style);
    m_txtB->setTextEnabled(enabling.width);
    m_cmbFB->setEnabled(enabling.width);
    m_txtH->setTextEnabled(enabling.height);
    m_cmbFH->setEnabled(enabling.height);
}

void MainWindow::onPresetPicked(int list)
{
    VxLineIn *presets = m_cmbFMT[list];
    const int index = presets->listIndex();
    if (index < 0)
        return;
    if (const std::optional<PresetSize> size = splitPreset(presets->itemText(index))) {
        m_txtB->setText(size->widthText());
        m_txtH->setText(size->heightText());
    }
    // Cleared again, so the same entry can be picked twice.
    presets->setListIndex(-1);
}

void MainWindow::showRunPreview(const QString &path)
{
    // An empty path also tells the controller that no preview is wanted any more.
    m_runController->readPreview(path, m_picPrev->size() * m_picPrev->devicePixelRatioF());
    if (path.isEmpty())
        m_picPrev->cls();
}

void MainWindow::showReadPreview(const QString &path, const LoadedPicture &picture)
{
    m_pictureLoader->prime(path, picture);
    m_picPrev->setFileName(path);
}

void MainWindow::restartImaging()
{
    imaging::restart();
}

QSize MainWindow::measureQuietly(const QString &path)
{
    // An unreadable file shows as 0 x 0 in its row or as an empty preview;
    // neither reports an error of its own.
    const bool wasSuppressed = m_suppressReports.exchange(true);
    int width = 0;
    int height = 0;
    imaging::measure(path, width, height);
    m_suppressReports = wasSuppressed;
    return QSize(width, height);
}

void MainWindow::updateSourceCount()
{
    updateCountLabel();
    if (!m_running)
        setWindowTitle(m_programTitle);
}

void MainWindow::updateCountLabel()
{
    // The run's progress and result belong to its card; the other cards
    // show what the list holds.
    if (m_currentCard == 3 && !m_runStatusText.isEmpty())
        m_lblStat->setText(m_runStatusText);
    else
        m_lblStat->setText(SourceList::countText(m_lv->count()));
}

void MainWindow::showSourcePreview(const QString &path)
{
    if (path.isEmpty()) {
        m_prv->cls();
        return;
    }
    if (path != m_prv->fileName())
        m_prv->setFileName(path);
}

void MainWindow::readLastParameters()
{
    const LastParameters last = valtrona::readLastParameters(m_env.settingsPath);
    selectItemData(m_cmbTyp, last.style);
    selectItemData(m_cmbFB, last.widthUnit);
    selectItemData(m_cmbFH, last.heightUnit);
    m_txtB->setText(last.width);
    m_txtH->setText(last.height);
    m_txtDst->setText(last.path);
    m_txtSFor->setText(last.searchFor);
    m_txtRep->setText(last.replaceWith);
}

bool MainWindow::saveLastParameters()
{
    LastParameters last;
    last.style = selectedItemData(m_cmbTyp);
    last.widthUnit = selectedItemData(m_cmbFB);
    last.heightUnit = selectedItemData(m_cmbFH);
    last.width = m_txtB->text();
    last.height = m_txtH->text();
    last.path = m_txtDst->text();
    last.searchFor = m_txtSFor->text();
    last.replaceWith = m_txtRep->text();
    return writeLastParameters(m_env.settingsPath, last);
}

int MainWindow::selectedItemData(const QComboBox *combo)
{
    return combo->currentIndex() < 0 ? -1 : combo->currentData().toInt();
}

int MainWindow::selectedItemData(const VxLineIn *line)
{
    return line->listIndex() < 0 ? -1 : line->itemData(line->listIndex());
}

void MainWindow::runConversion()
{
    m_stopRequested = false;
    m_lvStat->clear();
    const QStringList sources = m_lv->paths();
    m_prog->setRange(0, std::max(1, static_cast<int>(sources.size())));
    m_prog->setValue(0);
    m_running = true;
    m_suppressReports = true;
    m_runStatusText.clear();
    m_command1->setEnabled(false);
    m_cmdStop->setEnabled(true);

    RunParameters parameters;
    parameters.sources = sources;
    parameters.targetDirectory = m_txtDst->text();
    parameters.changeStyle = changeStyleFromNumber(selectedItemData(m_cmbTyp)).value_or(ChangeStyle::WidthAndHeight);
    parameters.keepDate = m_chkDU->isChecked();
    parameters.copyExif = m_chkEXF->isChecked();
    parameters.searchText = m_txtSFor->text();
    parameters.replaceText = m_txtRep->text();
    // The options' tags hold the format codes; the later checked one wins.
    parameters.format = ImageFormat::Jpeg;
    for (QRadioButton *option : m_optDF) {
        if (option->isChecked())
            parameters.format = formatForCode(option->property("Tag").toString());
    }
    parameters.keepDirectoryStructure = m_chkKeepDir->isChecked();

    // The file was seeded at start; a key emptied since reads as 0.
    const QString settings = m_env.settingsPath;
    const DrawingSettings emptied {0, 0, 0, 0, 0, true};
    m_runController->start(parameters, [settings, emptied] { return readDrawingSettings(settings, emptied); },
                           m_env.jobs);
}

void MainWindow::onRunFinished(const RunSummary &summary)
{
    m_prog->setValue(0);
    m_running = false;
    m_suppressReports = false;
    m_runStatusText = runSummaryText(summary);
    if (m_currentCard == 3)
        m_lvStat->setFocus(Qt::OtherFocusReason); // before "Abbruch" goes grey
    m_cmdStop->setEnabled(false);
    m_command1->setEnabled(true);
    updateCountLabel();
    // Sources the run moved to the trash show as gone.
    m_lv->refreshAvailability();
    Q_EMIT runFinished();

    if (m_closing) {
        shutDown();
        m_env.quit();
    }
}

void MainWindow::reportImagingFailure(const QString &title, const QString &text)
{
    // A run reports failed files as status rows; no box interrupts it.
    if (m_suppressReports || m_shutDown)
        return;
    m_env.dialogs->plainMessage(this, title, text);
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    event->accept();
    if (m_running) {
        // The run is abandoned where it stands: the window goes at once, the
        // file in hand is finished whole, and the program ends when the run
        // has unwound (see runConversion()).
        m_closing = true;
        hide();
        m_runController->checkStop();
        return;
    }
    shutDown();
    m_env.quit();
}

void MainWindow::shutDown()
{
    if (m_shutDown)
        return;
    m_shutDown = true;
    terminateControls(this);
    imaging::setReporter({});
    imaging::stop();
}

} // namespace valtrona
