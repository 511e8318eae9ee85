#pragma once

#include <functional>

#include <QDialog>
#include <QList>
#include <QPointer>
#include <QStringList>
#include <QWidget>

#include "controls/controlsupport.h"

class QListWidget;

namespace valtrona {

/// One line of the card chooser: the text shown and the card's number.
struct CardChoice
{
    QString text;
    int number = 0;
};

/// Turns sibling widgets of its parent into cards of which exactly one is
/// shown, in a fixed place. The cards are named in `CTLNames` and found among
/// the parent's widgets by objectName; "name|index" names element `index` of
/// a control array (widgets sharing the objectName, told apart by their
/// "Index" property, see setControlArrayIndex()).
///
/// Positions and sizes are in twips (1440 per inch) and converted to pixels
/// at the parent's logical DPI. The switcher itself shows nothing at run time.
class VxActCtrl : public QWidget, public ControlHooks
{
    Q_OBJECT
    /// Number (1-based) of the card shown; 0 shows none. Default 0.
    Q_PROPERTY(int ActiveControl READ activeControl WRITE setActiveControl NOTIFY activeControlChanged)
    /// Number of cards. Default 0; set to the number of CTLNames elements
    /// whenever a list is assigned.
    Q_PROPERTY(int ControlCount READ controlCount WRITE setControlCount)
    /// The cards' objectNames, separated by ";". Default empty.
    Q_PROPERTY(QString CTLNames READ ctlNames WRITE setCtlNames)
    /// The cards' display names, separated by ";". Default empty.
    Q_PROPERTY(QString CTLDisplays READ ctlDisplays WRITE setCtlDisplays)
    /// The cards' keys, separated by ";". Default empty.
    Q_PROPERTY(QString CTLKeys READ ctlKeys WRITE setCtlKeys)
    /// Per-card widths in twips, ";"-separated; 0 means ContainerWidth. Default empty.
    Q_PROPERTY(QString CTLWidth READ ctlWidth WRITE setCtlWidth)
    /// Per-card heights in twips, ";"-separated; 0 means ContainerHeight. Default empty.
    Q_PROPERTY(QString CTLHeight READ ctlHeight WRITE setCtlHeight)
    /// Design mode only: top of the parking place of hidden cards. Default 260.
    Q_PROPERTY(int CardInvisibleTop READ cardInvisibleTop WRITE setCardInvisibleTop)
    /// Design mode only: left of the parking place of hidden cards. Default 4500.
    Q_PROPERTY(int CardInvisibleLeft READ cardInvisibleLeft WRITE setCardInvisibleLeft)
    /// Design mode only: vertical step between parked cards. Default 420.
    Q_PROPERTY(int CardOffset READ cardOffset WRITE setCardOffset)
    /// Top of the shown card. Default 60.
    Q_PROPERTY(int ContainerTop READ containerTop WRITE setContainerTop)
    /// Left of the shown card. Default 60.
    Q_PROPERTY(int ContainerLeft READ containerLeft WRITE setContainerLeft)
    /// Width for a shown card whose own width is 0; 0 leaves it alone. Default 0.
    Q_PROPERTY(int ContainerWidth READ containerWidth WRITE setContainerWidth)
    /// Height for a shown card whose own height is 0; 0 leaves it alone. Default 0.
    Q_PROPERTY(int ContainerHeight READ containerHeight WRITE setContainerHeight)
    /// The shown card is addressed by its key from CTLKeys.
    Q_PROPERTY(QString ActiveControlByKey READ activeControlByKey WRITE setActiveControlByKey STORED false)
    /// Stretch the shown card to the parent's width (height) less
    /// ContainerLeft (ContainerTop) on both sides, and follow the parent's
    /// resizing. Default false.
    Q_PROPERTY(bool BExtendWidth READ bExtendWidth WRITE setBExtendWidth)
    Q_PROPERTY(bool BExtendHeight READ bExtendHeight WRITE setBExtendHeight)
    /// True while the host is being designed rather than run. Default false.
    Q_PROPERTY(bool DesignMode READ designMode WRITE setDesignMode)
    /// Language switch: when not 0, CTLDisplays is offered for translation. Default 0.
    Q_PROPERTY(int CTLUseLng READ ctlUseLng WRITE setCtlUseLng)

public:
    /// A step of the navigation; the codes "F", "L", "N", "NX", "P", "PX"
    /// name them in this order. The plain steps wrap around, the Stop steps
    /// stay at the ends.
    enum class Navigation { First, Last, Next, NextStop, Previous, PreviousStop };
    Q_ENUM(Navigation)

    explicit VxActCtrl(QWidget *parent = nullptr);
    ~VxActCtrl() override;

    int activeControl() const;
    /// Switches to card `number`; a number equal to the current one does nothing.
    void setActiveControl(int number);
    int controlCount() const;
    void setControlCount(int count);

    QString ctlNames() const;
    void setCtlNames(const QString &names);
    QString ctlDisplays() const;
    void setCtlDisplays(const QString &displays);
    QString ctlKeys() const;
    void setCtlKeys(const QString &keys);
    QString ctlWidth() const;
    void setCtlWidth(const QString &widths);
    QString ctlHeight() const;
    void setCtlHeight(const QString &heights);

    int cardInvisibleTop() const;
    void setCardInvisibleTop(int twips);
    int cardInvisibleLeft() const;
    void setCardInvisibleLeft(int twips);
    int cardOffset() const;
    void setCardOffset(int twips);
    int containerTop() const;
    void setContainerTop(int twips);
    int containerLeft() const;
    void setContainerLeft(int twips);
    int containerWidth() const;
    void setContainerWidth(int twips);
    int containerHeight() const;
    void setContainerHeight(int twips);
    bool bExtendWidth() const;
    void setBExtendWidth(bool on);
    bool bExtendHeight() const;
    void setBExtendHeight(bool on);
    bool designMode() const;
    void setDesignMode(bool on);
    int ctlUseLng() const;
    void setCtlUseLng(int use);

    /// Per-card values from the split lists (1-based; empty or 0 outside).
    QString controlName(int number) const;
    QString controlDisplay(int number) const;
    QString controlKey(int number) const;
    int controlWidth(int number) const;
    int controlHeight(int number) const;

    QString activeControlByKey() const;
    void setActiveControlByKey(const QString &key);
    /// The number of the card with this key (compared without regard to
    /// case), 0 when no card has it.
    int getControlIndexByKey(const QString &key) const;

    /// The card widget with this number, or nullptr.
    QWidget *getControl(int number) const;
    /// Geometry of card n in twips; 0 when there is no such card.
    int getControlWD(int number) const;
    int getControlHG(int number) const;
    int getControlLF(int number) const;
    int getControlTP(int number) const;
    /// The display name of card n, else its "Caption", "CaptionStored" or
    /// "Tag" property, else "Steuerelement 01" with n in two digits.
    QString getControlDisplay(int number) const;

    /// Navigation by code: "F", "L", "N", "NX", "P", "PX" (any case);
    /// other codes change nothing.
    void navigate(const QString &code);
    void navigate(Navigation step);
    void firstControl();
    void lastControl();
    void nextControl();
    void nextControlX();
    void prevControl();
    void prevControlX();

    /// Places every card afresh: the active one shown, all others hidden
    /// (parked in design mode).
    void arrangeAll();
    /// Same as arrangeAll().
    void refresh();
    /// Places the shown card again (after the parent was resized).
    void refCtrl();
    /// Places card n where a shown card goes.
    void resizeControl(int number);
    /// Hides the shown card and sets ActiveControl to 0 (with the change signal).
    void activeControlReset();
    /// Splits the lists again and arranges the cards.
    void initializeControl();

    /// The lines of the chooser dialog: "01 - display" with the card number.
    QList<CardChoice> chooserChoices() const;
    /// Opens the chooser and makes the chosen card active; cancel changes
    /// nothing. Returns the chosen number, 0 when cancelled.
    int activeControlDlg();
    /// Replaces the chooser dialog (for tests and hosts with their own):
    /// gets the parent, the choices and the current number, returns the chosen
    /// number or 0. An empty function restores the built-in dialog.
    using ChooserFunction = std::function<int(QWidget *, const QList<CardChoice> &, int)>;
    void setChooser(ChooserFunction chooser);

    /// Shows the class name and version in a message.
    void aboutBox();

    QString ctlClassName() const override;
    void terminateControl() override;

Q_SIGNALS:
    /// The shown card changed from `previous` to `current`.
    void activeControlChanged(int previous, int current);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;
    QObject *hooksObject() const override;
    int useLanguage() const override;
    QList<QPair<QString, LngPropertyType>> lngProperties() const override;

private:
    void ctlUpdate();
    void switchCard(int previous, int current);
    void parkControl(int number);
    QSize cardSize(int number) const;
    void watchParent();

    int m_activeControl = 0;
    int m_controlCount = 0;
    QString m_names;
    QString m_displays;
    QString m_keys;
    QString m_widths;
    QString m_heights;
    QStringList m_nameList;
    QStringList m_displayList;
    QStringList m_keyList;
    QList<int> m_widthList;
    QList<int> m_heightList;
    int m_cardInvisibleTop = 260;
    int m_cardInvisibleLeft = 4500;
    int m_cardOffset = 420;
    int m_containerTop = 60;
    int m_containerLeft = 60;
    int m_containerWidth = 0;
    int m_containerHeight = 0;
    bool m_extendWidth = false;
    bool m_extendHeight = false;
    bool m_designMode = false;
    int m_ctlUseLng = 0;
    bool m_terminated = false;
    bool m_arranged = false;
    QPointer<QWidget> m_watchedParent;
    ChooserFunction m_chooser;
};

/// The chooser of VxActCtrl: a list of cards with OK and cancel.
class VxActCtrlChooser : public QDialog
{
    Q_OBJECT

public:
    VxActCtrlChooser(const QList<CardChoice> &choices, int current, QWidget *parent = nullptr);

    /// The number of the selected line, 0 when none is selected.
    int chosenNumber() const;
    QListWidget *list() const;

private:
    QListWidget *m_list = nullptr;
};

} // namespace valtrona
