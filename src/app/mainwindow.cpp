#include "app/mainwindow.h"

#include <QAbstractItemModel>
#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QVBoxLayout>

#include <algorithm>

#include "app/imagingpictureloader.h"
#include "app/parametercard.h"
#include "app/processcard.h"
#include "app/runcontroller.h"
#include "app/settingsdialog.h"
#include "app/sourcecard.h"
#include "app/sourcelist.h"
#include "app/statuslist.h"
#include "app/userdialogs.h"
#include "app/widgetfactory.h"
#include "batch/conversionrun.h"
#include "controls/controlsupport.h"
#include "controls/vxactctrl.h"
#include "controls/vxcont.h"
#include "core/appinfo.h"
#include "core/settings.h"
#include "imaging/imaging.h"

namespace valtrona {

// The window as the run sees it: rows, progress, preview, the inputs read
// per file and the stop flag.
class MainWindow::RunHost : public ConversionHost
{
public:
    explicit RunHost(MainWindow &window)
        : m_window(window)
    {
    }

    void clearStatusRows() override { m_window.statusList()->clear(); }

    void addStatusRow(const StatusRow &row) override
    {
        m_window.statusList()->addStatusRow(row.text, row.kind, row.tag);
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
        m_window.m_processCard->setProgress(index);
    }

    void showPreview(const QString &path) override { m_window.showRunPreview(path); }

    // The run never waits on this thread; nothing to yield to.
    void yield() override {}

    bool stopRequested() override { return m_window.m_stopRequested || m_window.m_closing; }

    FileInputs fileInputs() override { return m_window.m_parameterCard->fileInputs(); }

    bool deleteSources() override { return m_window.m_parameterCard->deleteSources(); }

    void fileFailed(const QString &source, const Error &error) override
    {
        m_window.statusList()->setLastRowToolTip(source + QStringLiteral(": ") + errorText(error.code));
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
    env.startImaging = [] { return imaging::start().has_value(); };
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
        m_env.startImaging = [] { return imaging::start().has_value(); };
    if (!m_env.quit)
        m_env.quit = [] { QCoreApplication::exit(0); };

    setObjectName(QStringLiteral("B_MAIN"));
    m_pictureLoader =
        std::make_shared<ImagingPictureLoader>([this](const QString &path) { return measureQuietly(path); });
    setAttribute(Qt::WA_QuitOnClose, true);
    m_runHost = std::make_unique<RunHost>(*this);
    m_runController = new RunController(*m_runHost, this);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(buildCards(), 1);
    layout->addWidget(buildButtonRow());

    connect(m_runController, &RunController::finished, this, &MainWindow::onRunFinished);
    // The run's preview is read on its workers and shown when ready, so a
    // 40-megapixel photo never holds up the window.
    connect(m_runController, &RunController::previewReady, m_processCard, &ProcessCard::showReadPreview);
    connect(m_processCard, &ProcessCard::stopClicked, this, &MainWindow::onStop);
    connect(m_sourceCard, &SourceCard::sourcesChanged, this, &MainWindow::updateSourceCount);

    SourceList *list = m_sourceCard->list();
    list->setMeasure([this](const QString &path) { return measureQuietly(path); });
    list->setRestart([this] {
        // A run may have a file in flight; the layer is restarted only
        // while nothing converts.
        if (!m_running)
            imaging::restart();
    });
    // The list's count follows every change of its rows, drops included.
    QAbstractItemModel *rows = list->model();
    connect(rows, &QAbstractItemModel::rowsInserted, this, &MainWindow::updateCountLabel);
    connect(rows, &QAbstractItemModel::rowsRemoved, this, &MainWindow::updateCountLabel);
    connect(rows, &QAbstractItemModel::modelReset, this, &MainWindow::updateCountLabel);

    // Escape stops a run from whichever card is shown. Enter has no
    // window-wide meaning (see keyPressEvent()): it never starts a run.
    auto *escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(escape, &QShortcut::activated, this, [this] {
        if (m_running)
            onStop();
    });

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

QWidget *MainWindow::buildCards()
{
    auto *cardArea = new QWidget(this);
    cardArea->setObjectName(QStringLiteral("cardArea"));
    m_sourceCard = new SourceCard(m_env.dialogs, m_pictureLoader, cardArea);
    m_parameterCard = new ParameterCard(m_env.dialogs, cardArea);
    m_processCard = new ProcessCard(m_pictureLoader, cardArea);
    const QList<QWidget *> cards = {m_sourceCard, m_parameterCard, m_processCard};

    m_cardSwitcher = new VxActCtrl(cardArea);
    m_cardSwitcher->setObjectName(QStringLiteral("AA"));
    m_cardSwitcher->setContainerLeft(0);
    m_cardSwitcher->setContainerTop(0);
    m_cardSwitcher->setBExtendWidth(true);
    m_cardSwitcher->setBExtendHeight(true);
    QStringList cardNames;
    for (const QWidget *card : cards)
        cardNames.append(card->objectName());
    m_cardSwitcher->setCtlNames(cardNames.join(QLatin1Char(';')));
    m_cardSwitcher->setCtlDisplays(QStringLiteral("Quelldateien;Parameter;Bildverarbeitung"));
    m_cardSwitcher->setCtlWidth(QStringLiteral("0;0;"));
    m_cardSwitcher->setCtlHeight(QStringLiteral("0;0;"));

    // Framed containers report a fixed size hint of their own; what they
    // hold decides how small a card may get.
    const QList<VxCont *> frames = cardArea->findChildren<VxCont *>();
    for (VxCont *frame : frames) {
        if (frame->layout())
            frame->setMinimumSize(frame->layout()->totalMinimumSize());
    }
    int minimumWidth = 0;
    int minimumHeight = 0;
    for (const QWidget *card : cards) {
        minimumWidth = std::max(minimumWidth, card->minimumSizeHint().width());
        minimumHeight = std::max(minimumHeight, card->minimumSizeHint().height());
    }
    cardArea->setMinimumSize(minimumWidth, minimumHeight);
    return cardArea;
}

QWidget *MainWindow::buildButtonRow()
{
    auto *row = new QWidget(this);
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    m_countLabel = new QLabel(SourceList::countText(0), row);
    m_countLabel->setObjectName(QStringLiteral("lblStat"));
    m_resetButton = makeButton(QStringLiteral("Command1"), QStringLiteral("&Reset"), row);
    m_configureButton = makeButton(QStringLiteral("cmdCFG"), QStringLiteral("&Konfiguration"), row);
    m_backButton = makeButton(QStringLiteral("cmdZ"), QStringLiteral("< &Zurück"), row);
    m_nextButton = makeButton(QStringLiteral("cmdW"), QStringLiteral("&Weiter >"), row);
    m_closeButton = makeButton(QStringLiteral("cmdOK"), QStringLiteral("&Schließen"), row);

    layout->addWidget(m_countLabel, 1);
    layout->addWidget(m_resetButton);
    layout->addWidget(m_configureButton);
    layout->addSpacing(16);
    layout->addWidget(m_backButton);
    layout->addWidget(m_nextButton);
    layout->addSpacing(16);
    layout->addWidget(m_closeButton);

    connect(m_nextButton, &QPushButton::clicked, this, &MainWindow::onNext);
    connect(m_backButton, &QPushButton::clicked, this, &MainWindow::onBack);
    connect(m_closeButton, &QPushButton::clicked, this, &MainWindow::close);
    connect(m_configureButton, &QPushButton::clicked, this, &MainWindow::onConfigure);
    connect(m_resetButton, &QPushButton::clicked, this, &MainWindow::onReset);
    return row;
}

bool MainWindow::start()
{
    m_programTitle = programTitle();
    setWindowTitle(m_programTitle);

    // Presets are read before the defaults are seeded, so a first start
    // without a settings file shows them only from the second start on.
    m_parameterCard->fillLists(m_env.settingsPath);
    m_currentCard = 1;
    showCard(1);
    seedDefaultSettings(m_env.settingsPath);
    m_parameterCard->readLastParameters(m_env.settingsPath);
    applyOrientationSetting();

    if (!m_env.startImaging()) {
        m_env.dialogs->plainMessage(this, QString(), QStringLiteral("GDI konnte nicht initialisiert werden !"));
        return false;
    }
    updateSourceCount();
    return true;
}

QStringList MainWindow::addStartPaths(const QStringList &paths)
{
    return m_sourceCard->addStartPaths(paths);
}

int MainWindow::currentCard() const
{
    return m_currentCard;
}

void MainWindow::showCard(int n)
{
    if (n < 1 || n > 3)
        return;
    m_cardSwitcher->setActiveControl(n);
    m_currentCard = n;
    // The focus moves before "Weiter >" may be disabled: a disabled button
    // hands its focus on, and the next in line could be "Schließen".
    focusCard();
    m_backButton->setEnabled(n != 1);
    m_nextButton->setEnabled(n != 3);
    updateCountLabel();
}

void MainWindow::focusCard()
{
    // Where Enter and Space are harmless: the list, the first field, the
    // run's status rows.
    switch (m_currentCard) {
    case 1:
        m_sourceCard->list()->setFocus(Qt::OtherFocusReason);
        break;
    case 2:
        m_parameterCard->focusFirstField();
        break;
    default:
        statusList()->setFocus(Qt::OtherFocusReason);
        break;
    }
}

QWidget *MainWindow::shownCard() const
{
    return m_cardSwitcher->getControl(m_currentCard);
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
    } else if (m_currentCard == 1 && focus == m_sourceCard->list()) {
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
        m_sourceCard->list()->refreshAvailability();
}

bool MainWindow::validateCard(int n)
{
    QString refusal;
    if (n == 1)
        refusal = m_sourceCard->check();
    else if (n == 2)
        refusal = m_parameterCard->check();
    if (!refusal.isEmpty()) {
        m_env.dialogs->information(this, QStringLiteral("Abbruch"), refusal);
        return false;
    }
    if (n == 2 && !m_parameterCard->saveLastParameters(m_env.settingsPath)) {
        // Parameters that cannot be kept for the next start never hold up a
        // run; whoever started the program from a terminal hears of it.
        qWarning("valtrona: Parameter nicht gespeichert: %s", qPrintable(m_env.settingsPath));
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
    return m_sourceCard->list();
}

StatusList *MainWindow::statusList() const
{
    return m_processCard->statusList();
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
    m_sourceCard->clear();
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

void MainWindow::showRunPreview(const QString &path)
{
    // An empty path also tells the controller that no preview is wanted any more.
    m_runController->readPreview(path, m_processCard->previewBox());
    if (path.isEmpty())
        m_processCard->clearPreview();
}

QSize MainWindow::measureQuietly(const QString &path)
{
    // An unreadable file shows as 0 x 0 in its row or as an empty preview;
    // neither reports an error of its own.
    return imaging::measure(path).value_or(QSize(0, 0));
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
        m_countLabel->setText(m_runStatusText);
    else
        m_countLabel->setText(SourceList::countText(m_sourceCard->list()->count()));
}

void MainWindow::runConversion()
{
    m_stopRequested = false;
    const QStringList sources = m_sourceCard->list()->paths();
    m_processCard->startRun(int(sources.size()));
    m_running = true;
    m_runStatusText.clear();
    m_resetButton->setEnabled(false);

    // The file was seeded at start; a key emptied since reads as 0.
    const QString settings = m_env.settingsPath;
    const DrawingSettings emptied {0, 0, 0, 0, 0, true};
    m_runController->start(m_parameterCard->runParameters(sources),
                           [settings, emptied] { return readDrawingSettings(settings, emptied); }, m_env.jobs);
}

void MainWindow::onRunFinished(const RunSummary &summary)
{
    m_running = false;
    m_runStatusText = runSummaryText(summary);
    m_processCard->endRun(m_currentCard == 3);
    m_resetButton->setEnabled(true);
    updateCountLabel();
    // Sources the run moved to the trash show as gone.
    m_sourceCard->list()->refreshAvailability();

    if (m_closing) {
        shutDown();
        m_env.quit();
    }
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    event->accept();
    if (m_running) {
        // The run is abandoned where it stands: the window goes at once, the
        // file in hand is finished whole, and the program ends when the run
        // has unwound (see onRunFinished()).
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
    imaging::stop();
}

} // namespace valtrona
