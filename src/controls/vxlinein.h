#pragma once

#include <memory>

#include <QFont>
#include <QIcon>
#include <QPixmap>
#include <QPointer>
#include <QWidget>

#include "controls/controlcodes.h"
#include "controls/controlsupport.h"
#include "controls/lineinput_edit.h"
#include "controls/vxcolor.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QMimeData;
class QPushButton;

namespace valtrona {

class LineInputDialogs;

/// A one-line input: label on the left, one input element in the middle and
/// a command button on the right, laid out in a single row.
///
/// `ControlStyle` picks the input element and `CommandStyle` what the button
/// does; their integer codes, and those of `ComboStyle`, `PictureType`,
/// `DlgFolderStyle` and `Alignment`, are read as the enums below.
///
/// Widths and gaps are in pixels of a 96-DPI screen and scale with the
/// screen's logical DPI. Colours are stored colour values (see
/// colorFromValue()); the text-element settings apply to every input element.
/// Several paths (multiple-file dialog, dropped files) are joined with "|".
class VxLineIn : public QWidget, public ControlHooks
{
    Q_OBJECT
    // Layout
    Q_PROPERTY(int ButtonWidth READ buttonWidth WRITE setButtonWidth)
    Q_PROPERTY(int LabelWidth READ labelWidth WRITE setLabelWidth)
    Q_PROPERTY(int FixedBlockWidth READ fixedBlockWidth WRITE setFixedBlockWidth)
    Q_PROPERTY(int ControlDistance READ controlDistance WRITE setControlDistance)
    Q_PROPERTY(int TopDistance READ topDistance WRITE setTopDistance)
    Q_PROPERTY(int LeftOffset READ leftOffset WRITE setLeftOffset)
    // Dialogs
    Q_PROPERTY(QString DlgFileType READ dlgFileType WRITE setDlgFileType)
    Q_PROPERTY(QString DlgFileExtension READ dlgFileExtension WRITE setDlgFileExtension)
    Q_PROPERTY(QString DlgOpenCaption READ dlgOpenCaption WRITE setDlgOpenCaption)
    Q_PROPERTY(QString DlgSaveCaption READ dlgSaveCaption WRITE setDlgSaveCaption)
    Q_PROPERTY(QString DlgPathCaption READ dlgPathCaption WRITE setDlgPathCaption)
    /// See FolderStyle; default 1, folders only.
    Q_PROPERTY(int DlgFolderStyle READ dlgFolderStyle WRITE setDlgFolderStyle)
    /// True: the chosen folder is kept exactly as the dialog returns it.
    /// False (default): it is cleaned ("//" and a trailing "/" removed). The
    /// letter case is never changed, file names on Linux depend on it.
    Q_PROPERTY(bool DlgFolderNamesAsis READ dlgFolderNamesAsis WRITE setDlgFolderNamesAsis)
    Q_PROPERTY(QString DefaultFilename READ defaultFilename WRITE setDefaultFilename)
    // Elements
    Q_PROPERTY(bool ButtonShow READ buttonShow WRITE setButtonShow)
    Q_PROPERTY(int TextBoxStyle READ textBoxStyle WRITE setTextBoxStyle)
    Q_PROPERTY(QString TextMask READ textMask WRITE setTextMask)
    Q_PROPERTY(int ControlStyle READ controlStyle WRITE setControlStyle)
    Q_PROPERTY(bool GreyControl READ greyControl WRITE setGreyControl)
    Q_PROPERTY(int CommandStyle READ commandStyle WRITE setCommandStyle)
    Q_PROPERTY(int PictureType READ pictureType WRITE setPictureType)
    /// True (default): font and system colours follow the host. False pins
    /// them as they are; switching back drops a font or palette set on the
    /// control itself.
    Q_PROPERTY(bool AutoAmbientChanges READ autoAmbientChanges WRITE setAutoAmbientChanges)
    Q_PROPERTY(bool AppendOleDDFiles READ appendOleDDFiles WRITE setAppendOleDDFiles)
    Q_PROPERTY(bool AllowDDMultiFiles READ allowDDMultiFiles WRITE setAllowDDMultiFiles)
    // Label
    Q_PROPERTY(QString Caption READ caption WRITE setCaption)
    Q_PROPERTY(uint LabelForeColor READ labelForeColor WRITE setLabelForeColor)
    Q_PROPERTY(QFont LabelFont READ labelFont WRITE setLabelFont)
    /// "" or "L": left, "R": right, "C": centred (first letter, any case).
    Q_PROPERTY(QString LabelAlignment READ labelAlignment WRITE setLabelAlignment)
    Q_PROPERTY(QString LabelToolTip READ labelToolTip WRITE setLabelToolTip)
    // Check box
    Q_PROPERTY(bool CheckboxShow READ checkboxShow WRITE setCheckboxShow)
    Q_PROPERTY(bool Value READ value WRITE setValue NOTIFY checkBoxChanged)
    // Text elements
    /// The text of txt, txi, mem and anz (not of the combo box, see comboText()).
    Q_PROPERTY(QString Text READ text WRITE setText NOTIFY change)
    Q_PROPERTY(uint TextForeColor READ textForeColor WRITE setTextForeColor)
    Q_PROPERTY(uint TextBackColor READ textBackColor WRITE setTextBackColor)
    Q_PROPERTY(QFont Font READ textFont WRITE setTextFont)
    Q_PROPERTY(bool Locked READ locked WRITE setLocked)
    Q_PROPERTY(QString PasswordChar READ passwordChar WRITE setPasswordChar)
    Q_PROPERTY(int MaxLength READ maxLength WRITE setMaxLength)
    Q_PROPERTY(bool Enabled READ textEnabled WRITE setTextEnabled)
    Q_PROPERTY(QString TextToolTip READ textToolTip WRITE setTextToolTip)
    /// Alignment of the display field (HorizontalAlignment; unknown codes: left).
    Q_PROPERTY(int Alignment READ alignment WRITE setAlignment)
    Q_PROPERTY(bool UseMnemonic READ useMnemonic WRITE setUseMnemonic)
    Q_PROPERTY(bool ButtonClickOnEnter READ buttonClickOnEnter WRITE setButtonClickOnEnter)
    // Button
    Q_PROPERTY(QString ButtonCaption READ buttonCaption WRITE setButtonCaption)
    Q_PROPERTY(uint ButtonBackColor READ buttonBackColor WRITE setButtonBackColor)
    Q_PROPERTY(QFont ButtonFont READ buttonFont WRITE setButtonFont)
    Q_PROPERTY(uint ButtonMaskColor READ buttonMaskColor WRITE setButtonMaskColor)
    Q_PROPERTY(bool ButtonUseMaskColor READ buttonUseMaskColor WRITE setButtonUseMaskColor)
    Q_PROPERTY(QString ButtonToolTip READ buttonToolTip WRITE setButtonToolTip)
    Q_PROPERTY(QPixmap ButtonPicture READ buttonPicture WRITE setButtonPicture)
    // Whole control
    Q_PROPERTY(uint BackColor READ backColor WRITE setBackColor)
    Q_PROPERTY(uint ForeColor READ foreColor WRITE setForeColor)
    /// 0 (default): the label and tooltips are not offered for translation.
    Q_PROPERTY(int CTLUseLng READ ctlUseLng WRITE setCtlUseLng)
    Q_PROPERTY(int ComboLines READ comboLines WRITE setComboLines)
    Q_PROPERTY(int ComboStyle READ comboStyle WRITE setComboStyle)
    Q_PROPERTY(bool ShowImage READ showImage WRITE setShowImage)
    Q_PROPERTY(QPixmap LinePicture READ linePicture WRITE setLinePicture)
    // Run time only
    Q_PROPERTY(int ListIndex READ listIndex WRITE setListIndex STORED false)
    Q_PROPERTY(QString Tag READ tag WRITE setTag)
    Q_PROPERTY(QString TagUser2 READ tagUser2 WRITE setTagUser2)
    Q_PROPERTY(bool DesignMode READ designMode WRITE setDesignMode)

public:
    /// The input element (ControlStyle); unknown codes use the text box.
    enum class ControlStyle {
        Text = 0,       ///< text box `txt`
        Combo = 1,      ///< combo box, editable `cmb0` or drop-down list `cmb2` by ComboStyle
        Memo = 2,       ///< multi-line box `mem`
        Display = 3,    ///< read-only display field `anz`
        SecondText = 4, ///< second text box `txi`, right aligned, for numbers
    };
    Q_ENUM(ControlStyle)

    /// What the button does (CommandStyle). On a combo line every command
    /// but Clear only reports the click.
    enum class CommandStyle {
        None = -1,        ///< every unknown code: only the events of the click
        Clear = 0,
        OpenFile = 1,
        SaveFile = 2,
        ChooseFolder = 3,
        ReportClick = 4,  ///< raise buttonClicked() and nothing else
        CopyText = 5,     ///< put the text on the clipboard
        OpenFiles = 6,    ///< several files, joined with pathSeparator()
    };
    Q_ENUM(CommandStyle)

    /// The combo box of ControlStyle 1 (ComboStyle); every code but 0 is a drop-down list.
    enum class ComboStyle { Editable = 0, DropDownList = 2 };
    Q_ENUM(ComboStyle)

    /// Picture on the button (PictureType); unknown codes show ButtonPicture,
    /// or without one the caption or "...".
    enum class PictureType { OwnPicture = 0, Folder = 1, OpenFile = 2, SaveFile = 3, Clear = 4 };
    Q_ENUM(PictureType)

    /// What the folder dialog lists (DlgFolderStyle); unknown codes list files too.
    enum class FolderStyle { FilesAndFolders = 0, FoldersOnly = 1 };
    Q_ENUM(FolderStyle)

    explicit VxLineIn(QWidget *parent = nullptr);
    ~VxLineIn() override;

    /// The separator between several paths in the text.
    static QString pathSeparator();

    int buttonWidth() const;
    void setButtonWidth(int pixels);
    int labelWidth() const;
    void setLabelWidth(int pixels);
    int fixedBlockWidth() const;
    void setFixedBlockWidth(int pixels);
    int controlDistance() const;
    void setControlDistance(int pixels);
    int topDistance() const;
    void setTopDistance(int pixels);
    int leftOffset() const;
    void setLeftOffset(int pixels);

    QString dlgFileType() const;
    void setDlgFileType(const QString &types);
    QString dlgFileExtension() const;
    void setDlgFileExtension(const QString &extensions);
    QString dlgOpenCaption() const;
    void setDlgOpenCaption(const QString &caption);
    QString dlgSaveCaption() const;
    void setDlgSaveCaption(const QString &caption);
    QString dlgPathCaption() const;
    void setDlgPathCaption(const QString &caption);
    int dlgFolderStyle() const;
    void setDlgFolderStyle(int style);
    bool dlgFolderNamesAsis() const;
    void setDlgFolderNamesAsis(bool asis);
    QString defaultFilename() const;
    void setDefaultFilename(const QString &name);

    bool buttonShow() const;
    void setButtonShow(bool show);
    int textBoxStyle() const;
    void setTextBoxStyle(int style);
    QString textMask() const;
    void setTextMask(const QString &mask);
    int controlStyle() const;
    void setControlStyle(int style);
    bool greyControl() const;
    void setGreyControl(bool grey);
    int commandStyle() const;
    void setCommandStyle(int style);
    int pictureType() const;
    void setPictureType(int type);
    bool autoAmbientChanges() const;
    void setAutoAmbientChanges(bool on);
    bool appendOleDDFiles() const;
    void setAppendOleDDFiles(bool append);
    bool allowDDMultiFiles() const;
    void setAllowDDMultiFiles(bool allow);

    QString caption() const;
    void setCaption(const QString &caption);
    uint labelForeColor() const;
    void setLabelForeColor(uint color);
    QFont labelFont() const;
    void setLabelFont(const QFont &font);
    QString labelAlignment() const;
    void setLabelAlignment(const QString &alignment);
    QString labelToolTip() const;
    void setLabelToolTip(const QString &tip);

    bool checkboxShow() const;
    void setCheckboxShow(bool show);
    bool value() const;
    void setValue(bool checked);

    QString text() const;
    /// Sets the text of every input element; raises change() when it differs.
    void setText(const QString &text);
    uint textForeColor() const;
    void setTextForeColor(uint color);
    uint textBackColor() const;
    void setTextBackColor(uint color);
    QFont textFont() const;
    void setTextFont(const QFont &font);
    bool locked() const;
    void setLocked(bool locked);
    QString passwordChar() const;
    void setPasswordChar(const QString &character);
    int maxLength() const;
    void setMaxLength(int length);
    bool textEnabled() const;
    void setTextEnabled(bool enabled);
    QString textToolTip() const;
    void setTextToolTip(const QString &tip);
    int alignment() const;
    void setAlignment(int alignment);
    bool useMnemonic() const;
    void setUseMnemonic(bool on);
    bool buttonClickOnEnter() const;
    void setButtonClickOnEnter(bool on);

    QString buttonCaption() const;
    void setButtonCaption(const QString &caption);
    uint buttonBackColor() const;
    void setButtonBackColor(uint color);
    QFont buttonFont() const;
    void setButtonFont(const QFont &font);
    uint buttonMaskColor() const;
    void setButtonMaskColor(uint color);
    bool buttonUseMaskColor() const;
    void setButtonUseMaskColor(bool on);
    QString buttonToolTip() const;
    void setButtonToolTip(const QString &tip);
    QPixmap buttonPicture() const;
    void setButtonPicture(const QPixmap &picture);

    uint backColor() const;
    void setBackColor(uint color);
    uint foreColor() const;
    void setForeColor(uint color);
    int ctlUseLng() const;
    void setCtlUseLng(int use);
    int comboLines() const;
    void setComboLines(int lines);
    int comboStyle() const;
    void setComboStyle(int style);
    bool showImage() const;
    void setShowImage(bool show);
    QPixmap linePicture() const;
    void setLinePicture(const QPixmap &picture);

    QString tag() const;
    void setTag(const QString &tag);
    QString tagUser2() const;
    void setTagUser2(const QString &tag);
    /// A free number for the host to tell its lines apart.
    int cid() const;
    void setCid(int id);
    bool designMode() const;
    void setDesignMode(bool on);

    // Combo list operations (on the combo box of ControlStyle 1).
    /// Appends an item with its number and text key; returns its index.
    int addItem(const QString &text, int itemData = 0, const QString &itemTag = QString());
    void removeItem(int index);
    void clearList();
    int listCount() const;
    /// The selected item, -1 for none. Out-of-range indexes select none.
    int listIndex() const;
    void setListIndex(int index);
    QString itemText(int index) const;
    /// The number of an item, 0 outside the list.
    int itemData(int index) const;
    void setItemData(int index, int number);
    /// The text key of an item, empty outside the list.
    QString itemTag(int index) const;
    void setItemTag(int index, const QString &tag);
    /// Selects the first item with this key; false (selection unchanged) when none has it.
    bool selectByItemTag(const QString &tag);
    /// Selects the first item with this number; false (selection unchanged) when none has it.
    bool selectByItemData(int number);
    /// The key of the selected item, empty when none is selected.
    QString listFocusItemTag() const;
    /// The combo box's current text (for the editable combo, what is typed).
    QString comboText() const;

    /// True once the user changed the text (typing, pasting, dropping, the button).
    bool edited() const;
    void setEdited(bool edited);
    /// Gives the focus to the input element of the current ControlStyle.
    void setActive();
    /// Raises change() now.
    void fireEventChange();
    /// Raises change() once the event loop runs again.
    void sendChangeMsg();
    /// Makes the label column as wide as its caption needs.
    void autoSizeLabel();
    /// The command button.
    QPushButton *buttonControl() const;
    /// Left edge and width of the input element, in pixels.
    int ctlLeft() const;
    int ctlWidth() const;
    /// When set, a button click leaves the focus where it is.
    void setSuppressFocus(bool suppress);
    bool suppressFocus() const;

    /// Runs the button's click sequence, as a click on the button does.
    void clickButton();
    /// Replaces the dialogs the button opens; nullptr restores Qt's own.
    void setDialogs(std::shared_ptr<LineInputDialogs> dialogs);
    /// The filter the file dialogs get, built from DlgFileType and DlgFileExtension.
    QString dialogFilter() const;

    QString ctlClassName() const override;
    void terminateControl() override;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void beforeButtonClicked();
    void buttonClicked();
    void afterButtonClicked();
    void afterButtonClickedFinished();
    /// The text (or the combo's selection or typed text) changed.
    void change();
    void gotFocusText();
    void gotFocusCombo();
    void lostFocusText();
    void lostFocusCombo();
    /// A character typed into a text element, before the mask is applied.
    /// The host may replace it, or set it to QChar() to drop it.
    void keyPressBeforeCheck(QChar *character);
    void checkBoxChanged();
    void labelClick();
    void labelDblClick();
    void labelPopMenu(const QPoint &globalPos);
    void buttonRightClick();
    void labelMouseDown(Qt::MouseButton button, const QPoint &pos);
    void labelMouseUp(Qt::MouseButton button, const QPoint &pos);
    /// A key pressed in the combo box.
    void comboKeyPress(int key);
    /// Before a dialog opens: the host may set the window that owns it.
    void requestMainForm(QWidget **form);
    /// Files were dropped onto the line and are now in the text.
    void oleDragDropDone();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    QObject *hooksObject() const override;
    int useLanguage() const override;
    QList<QPair<QString, LngPropertyType>> lngProperties() const override;

private:
    ControlStyle controlStyleKind() const;
    CommandStyle commandStyleKind() const;
    void runCommand();
    void clearCombo();
    QWidget *inputElement() const;
    QWidget *focusElement() const;
    /// The five input elements, which share the text-element settings.
    QList<QWidget *> inputElements() const;
    void setTextFromUser(const QString &text, QObject *source);
    void syncElements(QObject *source);
    void updateVisibility();
    void updateRules();
    void updateColors();
    void updateButtonFace();
    void updateLabelAlignment();
    void updateLabelText();
    void relayout();
    /// Lays the row out again after a change of its height.
    void resizeRow();
    bool acceptsFileDrop(const QMimeData *mime) const;
    bool dropFiles(const QMimeData *mime);
    QWidget *dialogOwner();
    bool isTextElement(const QObject *object) const;

    QWidget *m_con = nullptr;
    QLabel *m_img = nullptr;
    QCheckBox *m_chk = nullptr;
    QLabel *m_lbl = nullptr;
    QLineEdit *m_txt = nullptr;
    QLineEdit *m_txi = nullptr;
    LineInputMemo *m_mem = nullptr;
    QComboBox *m_cmb = nullptr;
    QLabel *m_anz = nullptr;
    QPushButton *m_cmd = nullptr;
    QWidget *m_gry = nullptr;
    LineInputValidator *m_txtValidator = nullptr;
    LineInputValidator *m_txiValidator = nullptr;

    int m_buttonWidth = 32;
    int m_labelWidth = 125;
    int m_fixedBlockWidth = 0;
    int m_controlDistance = 4;
    int m_topDistance = 2;
    int m_leftOffset = 0;
    QString m_dlgFileType;
    QString m_dlgFileExtension;
    QString m_dlgOpenCaption;
    QString m_dlgSaveCaption;
    QString m_dlgPathCaption;
    int m_dlgFolderStyle = int(FolderStyle::FoldersOnly);
    bool m_dlgFolderNamesAsis = false;
    QString m_defaultFilename;
    bool m_buttonShow = true;
    int m_textBoxStyle = 0;
    QString m_textMask;
    int m_controlStyle = 0;
    bool m_greyControl = false;
    int m_commandStyle = 0;
    int m_pictureType = 0;
    bool m_autoAmbientChanges = true;
    bool m_appendOleDDFiles = false;
    bool m_allowDDMultiFiles = false;
    QString m_caption;
    uint m_labelForeColor = SystemColor::ButtonText;
    QString m_labelAlignment;
    QString m_labelToolTip;
    bool m_checkboxShow = false;
    bool m_value = true;
    QString m_text;
    uint m_textForeColor = SystemColor::WindowText;
    uint m_textBackColor = SystemColor::Window;
    bool m_locked = false;
    QString m_passwordChar;
    int m_maxLength = 0;
    bool m_textEnabled = true;
    QString m_textToolTip;
    int m_alignment = 0;
    bool m_useMnemonic = false;
    bool m_buttonClickOnEnter = false;
    QString m_buttonCaption;
    uint m_buttonBackColor = SystemColor::ButtonFace;
    uint m_buttonMaskColor = FixedColor::Silver;
    bool m_buttonUseMaskColor = true;
    QPixmap m_buttonPicture;
    uint m_backColor = SystemColor::ButtonFace;
    uint m_foreColor = SystemColor::ButtonText;
    int m_ctlUseLng = 0;
    int m_comboLines = 8;
    int m_comboStyle = int(ComboStyle::DropDownList);
    bool m_showImage = false;
    QPixmap m_linePicture;
    QString m_tag;
    QString m_tagUser2;
    int m_cid = 0;
    bool m_designMode = false;
    bool m_edited = false;
    bool m_suppressFocus = false;
    bool m_quiet = false;
    bool m_terminated = false;
    bool m_retyping = false;
    std::shared_ptr<LineInputDialogs> m_dialogs;
};

} // namespace valtrona
