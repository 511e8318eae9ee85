#pragma once

#include <QSize>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>

class QCheckBox;
class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QRadioButton;

namespace valtrona {

class ImagingPictureLoader;
class RunController;
struct LoadedPicture;
struct RunSummary;
class SourceList;
class StatusList;
class UserDialogs;
class VxActCtrl;
class VxLineIn;
class VxPict;

/// The main window: three cards (source files, parameters, processing),
/// the button row below them, the start-up and shut-down of the program.
/// Controls carry their program names as objectName ("cmdW", "txtB", ...).
class MainWindow : public QWidget
{
    Q_OBJECT

public:
    /// What the window needs from outside; tests replace every part.
    struct Environment
    {
        /// The settings file.
        QString settingsPath;
        /// Message boxes and file dialogs; null means the standard ones.
        std::shared_ptr<UserDialogs> dialogs;
        /// Starts the imaging layer; false when it cannot start.
        std::function<bool()> startImaging;
        /// Ends the program; called when the window goes away.
        std::function<void()> quit;
        /// Files converted at once; 0 means one per core.
        int jobs = 0;
    };

    /// The settings path of the process, the standard dialogs, the imaging
    /// layer and QApplication::quit().
    static Environment defaultEnvironment();

    explicit MainWindow(Environment environment, QWidget *parent = nullptr);
    ~MainWindow() override;

    /// The start-up sequence: title, lists, presets, card 1, seeding, last
    /// parameters, imaging. Returns false when imaging cannot start (the
    /// message has been shown then and the program is to end).
    bool start();

    /// Adds the files and folders the program was started with ("Open with"
    /// of a file manager), after start(): each path made absolute against
    /// the working directory, folders walked as "Verzeichnis laden" walks
    /// them, files taken in the given order; then the count label follows.
    /// Returns the paths that do not exist (they are skipped).
    QStringList addStartPaths(const QStringList &paths);

    /// Number of the card shown, 1 to 3.
    int currentCard() const;
    /// Shows card n and enables "< Zurück" and "Weiter >" for it.
    void showCard(int n);
    /// Checks the inputs of card n; shows the message and returns false
    /// when the user may not go on.
    bool validateCard(int n);

    /// True while a conversion run is in progress.
    bool isRunning() const;
    /// True once "Abbruch" was pressed during the current run.
    bool stopRequested() const;

    SourceList *sourceList() const;
    StatusList *statusList() const;

Q_SIGNALS:
    /// A conversion run has ended (finished or stopped).
    void runFinished();

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    class RunHost;

    void buildSourceCard(QWidget *card);
    void buildParameterCard(QWidget *card);
    void buildProcessCard(QWidget *card);
    void buildButtonRow(QWidget *row);

    void onNext();
    void onBack();
    void onStop();
    void onReset();
    void onConfigure();
    void onOpenFiles();
    void onOpenFolder();
    void onRemoveSelected();
    void onRemoveAll();
    void onStyleChanged();
    void onPresetPicked(int list);

    QSize measureQuietly(const QString &path);
    void showRunPreview(const QString &path);
    void showReadPreview(const QString &path, const LoadedPicture &picture);
    void restartImaging();
    void updateSourceCount();
    void updateCountLabel();
    void focusCard();
    void focusNextField();
    QWidget *shownCard() const;
    void showSourcePreview(const QString &path);
    void readLastParameters();
    void applyOrientationSetting();
    bool saveLastParameters();
    static int selectedItemData(const QComboBox *combo);
    static int selectedItemData(const VxLineIn *line);
    void runConversion();
    void onRunFinished(const RunSummary &summary);
    void shutDown();

    Environment m_env;
    QString m_programTitle;
    int m_currentCard = 1;
    bool m_stopRequested = false;
    bool m_running = false;
    bool m_closing = false;
    bool m_shutDown = false;
    QString m_lastSourceFolder;
    // What the count label shows on card 3: the run's progress or result.
    QString m_runStatusText;

    std::shared_ptr<ImagingPictureLoader> m_pictureLoader;
    std::unique_ptr<RunHost> m_runHost;
    RunController *m_runController = nullptr;
    VxActCtrl *m_aa = nullptr;

    // Card 1
    SourceList *m_lv = nullptr;
    VxPict *m_prv = nullptr;
    QPushButton *m_cmdOpen = nullptr;
    QPushButton *m_cmdOpenF = nullptr;
    QPushButton *m_cmdRemove = nullptr;
    QPushButton *m_cmdRemoveAll = nullptr;

    // Card 2
    VxLineIn *m_cmbTyp = nullptr;
    VxLineIn *m_txtB = nullptr;
    VxLineIn *m_txtH = nullptr;
    QComboBox *m_cmbFB = nullptr;
    QComboBox *m_cmbFH = nullptr;
    VxLineIn *m_cmbFMT[4] = {};
    QRadioButton *m_optDF[4] = {};
    VxLineIn *m_txtSFor = nullptr;
    VxLineIn *m_txtRep = nullptr;
    VxLineIn *m_txtDst = nullptr;
    QCheckBox *m_chkKeepDir = nullptr;
    QCheckBox *m_chkDel = nullptr;
    QCheckBox *m_chkEXF = nullptr;
    QCheckBox *m_chkDU = nullptr;

    // Card 3
    QProgressBar *m_prog = nullptr;
    StatusList *m_lvStat = nullptr;
    VxPict *m_picPrev = nullptr;
    QPushButton *m_cmdStop = nullptr;

    // Button row
    QPushButton *m_cmdZ = nullptr;
    QPushButton *m_cmdW = nullptr;
    QPushButton *m_cmdOK = nullptr;
    QPushButton *m_cmdCFG = nullptr;
    QPushButton *m_command1 = nullptr;
    QLabel *m_lblStat = nullptr;
};

} // namespace valtrona
