#pragma once

#include <QSize>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <functional>
#include <memory>

class QLabel;
class QPushButton;

namespace valtrona {

class ImagingPictureLoader;
class ParameterCard;
class ProcessCard;
class RunController;
struct RunSummary;
class SourceCard;
class SourceList;
class StatusList;
class UserDialogs;
class VxActCtrl;

/// The main window: the card switcher with its three cards (SourceCard,
/// ParameterCard, ProcessCard), the button row below them, the navigation
/// between the cards, the start-up and shut-down of the program, and the
/// run (through a RunController). Controls carry their program names as
/// objectName ("cmdW", "txtB", ...).
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

protected:
    void closeEvent(QCloseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    class RunHost;

    QWidget *buildCards();
    QWidget *buildButtonRow();

    void onNext();
    void onBack();
    void onStop();
    void onReset();
    void onConfigure();

    QSize measureQuietly(const QString &path);
    void showRunPreview(const QString &path);
    void updateSourceCount();
    void updateCountLabel();
    void focusCard();
    void focusNextField();
    QWidget *shownCard() const;
    void applyOrientationSetting();
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
    // What the count label shows on card 3: the run's progress or result.
    QString m_runStatusText;

    std::shared_ptr<ImagingPictureLoader> m_pictureLoader;
    std::unique_ptr<RunHost> m_runHost;
    RunController *m_runController = nullptr;

    VxActCtrl *m_cardSwitcher = nullptr;
    SourceCard *m_sourceCard = nullptr;
    ParameterCard *m_parameterCard = nullptr;
    ProcessCard *m_processCard = nullptr;

    // The button row below the cards
    QLabel *m_countLabel = nullptr;
    QPushButton *m_resetButton = nullptr;
    QPushButton *m_configureButton = nullptr;
    QPushButton *m_backButton = nullptr;
    QPushButton *m_nextButton = nullptr;
    QPushButton *m_closeButton = nullptr;
};

} // namespace valtrona
