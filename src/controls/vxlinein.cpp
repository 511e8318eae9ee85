#include "controls/vxlinein.h"

#include <QApplication>
#include <QBitmap>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QTimer>
#include <QUrl>

#include "controls/lineinput_dialogs.h"

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

constexpr int itemDataRole = Qt::UserRole;
constexpr int itemTagRole = Qt::UserRole + 1;

// Covers the line while it is shown greyed.
class GreyCover : public QWidget
{
public:
    explicit GreyCover(QWidget *parent)
        : QWidget(parent)
    {
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        QColor veil = palette().color(QPalette::Window);
        veil.setAlpha(140);
        painter.fillRect(rect(), veil);
    }
};

QStringList localFiles(const QMimeData *mime)
{
    QStringList files;
    if (!mime || !mime->hasUrls())
        return files;
    const QList<QUrl> urls = mime->urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile() && !url.toLocalFile().isEmpty())
            files.append(url.toLocalFile());
    }
    return files;
}

} // namespace

VxLineIn::VxLineIn(QWidget *parent)
    : QWidget(parent)
    , m_dlgFileType(u"Textdatei"_s)
    , m_dlgFileExtension(u"txt"_s)
    , m_dlgOpenCaption(u"Datei öffnen : "_s)
    , m_dlgSaveCaption(u"Datei speichern : "_s)
    , m_dlgPathCaption(u"Wählen Sie ein Verzeichnis : "_s)
    , m_textMask(u"*"_s)
    , m_caption(u"Label : "_s)
{
    m_con = new QWidget(this);
    m_con->setObjectName(u"con"_s);

    m_img = new QLabel(m_con);
    m_img->setObjectName(u"img"_s);
    m_img->setAlignment(Qt::AlignCenter);

    m_chk = new QCheckBox(m_con);
    m_chk->setObjectName(u"chk"_s);
    m_chk->setChecked(m_value);

    m_lbl = new QLabel(m_caption, m_con);
    m_lbl->setObjectName(u"lbl"_s);
    m_lbl->setTextFormat(Qt::PlainText);

    m_txt = new QLineEdit(m_con);
    m_txt->setObjectName(u"txt"_s);
    m_txtValidator = new LineInputValidator(m_txt);
    m_txt->setValidator(m_txtValidator);

    m_txi = new QLineEdit(m_con);
    m_txi->setObjectName(u"txi"_s);
    m_txi->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_txiValidator = new LineInputValidator(m_txi);
    m_txi->setValidator(m_txiValidator);

    m_mem = new LineInputMemo(m_con);
    m_mem->setObjectName(u"mem"_s);
    m_mem->setTabChangesFocus(true);

    m_cmb = new QComboBox(m_con);
    m_cmb->setObjectName(u"cmb2"_s);
    m_cmb->setMaxVisibleItems(m_comboLines);
    m_cmb->setInsertPolicy(QComboBox::NoInsert);

    m_anz = new QLabel(m_con);
    m_anz->setObjectName(u"anz"_s);
    m_anz->setTextFormat(Qt::PlainText);
    m_anz->setFrameShape(QFrame::StyledPanel);
    m_anz->setFrameShadow(QFrame::Sunken);
    m_anz->setAutoFillBackground(true);
    m_anz->setTextInteractionFlags(Qt::TextSelectableByMouse);

    m_cmd = new QPushButton(m_con);
    m_cmd->setObjectName(u"cmd"_s);
    m_cmd->setAutoDefault(false);

    m_gry = new GreyCover(this);
    m_gry->setObjectName(u"gry"_s);
    m_gry->hide();

    connect(m_txt, &QLineEdit::textEdited, this, [this](const QString &t) { setTextFromUser(t, m_txt); });
    connect(m_txi, &QLineEdit::textEdited, this, [this](const QString &t) { setTextFromUser(t, m_txi); });
    connect(m_mem, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_quiet)
            setTextFromUser(m_mem->toPlainText(), m_mem);
    });
    connect(m_cmb, &QComboBox::currentIndexChanged, this, [this] {
        if (!m_terminated)
            Q_EMIT change();
    });
    connect(m_chk, &QCheckBox::toggled, this, [this](bool checked) {
        if (m_value == checked)
            return;
        m_value = checked;
        if (!m_terminated)
            Q_EMIT checkBoxChanged();
    });
    connect(m_cmd, &QPushButton::clicked, this, &VxLineIn::clickButton);

    for (QObject *watched : {static_cast<QObject *>(m_txt), static_cast<QObject *>(m_txi),
                             static_cast<QObject *>(m_mem), static_cast<QObject *>(m_cmb),
                             static_cast<QObject *>(m_lbl), static_cast<QObject *>(m_cmd),
                             static_cast<QObject *>(m_anz)})
        watched->installEventFilter(this);
    // Drops and typed keys of the multi-line box arrive at its viewport.
    m_mem->viewport()->installEventFilter(this);
    m_txt->setAcceptDrops(true);
    m_txi->setAcceptDrops(true);
    m_anz->setAcceptDrops(true);
    setAcceptDrops(true);

    setFocusProxy(m_txt);
    setAutoFillBackground(true);
    updateRules();
    updateColors();
    updateButtonFace();
    updateVisibility();
    updateLabelAlignment();
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    resize(sizeHint());
}

VxLineIn::~VxLineIn() = default;

QString VxLineIn::pathSeparator()
{
    return u"|"_s;
}

// --- Layout properties -----------------------------------------------------

int VxLineIn::buttonWidth() const
{
    return m_buttonWidth;
}

void VxLineIn::setButtonWidth(int pixels)
{
    m_buttonWidth = qMax(0, pixels);
    relayout();
}

int VxLineIn::labelWidth() const
{
    return m_labelWidth;
}

void VxLineIn::setLabelWidth(int pixels)
{
    m_labelWidth = qMax(0, pixels);
    relayout();
}

int VxLineIn::fixedBlockWidth() const
{
    return m_fixedBlockWidth;
}

void VxLineIn::setFixedBlockWidth(int pixels)
{
    m_fixedBlockWidth = qMax(0, pixels);
    relayout();
}

int VxLineIn::controlDistance() const
{
    return m_controlDistance;
}

void VxLineIn::setControlDistance(int pixels)
{
    m_controlDistance = qMax(0, pixels);
    relayout();
}

int VxLineIn::topDistance() const
{
    return m_topDistance;
}

void VxLineIn::setTopDistance(int pixels)
{
    m_topDistance = qMax(0, pixels);
    updateGeometry();
    relayout();
}

int VxLineIn::leftOffset() const
{
    return m_leftOffset;
}

void VxLineIn::setLeftOffset(int pixels)
{
    m_leftOffset = qMax(0, pixels);
    relayout();
}

// --- Dialog properties -----------------------------------------------------

QString VxLineIn::dlgFileType() const
{
    return m_dlgFileType;
}

void VxLineIn::setDlgFileType(const QString &types)
{
    m_dlgFileType = types;
}

QString VxLineIn::dlgFileExtension() const
{
    return m_dlgFileExtension;
}

void VxLineIn::setDlgFileExtension(const QString &extensions)
{
    m_dlgFileExtension = extensions;
}

QString VxLineIn::dlgOpenCaption() const
{
    return m_dlgOpenCaption;
}

void VxLineIn::setDlgOpenCaption(const QString &caption)
{
    m_dlgOpenCaption = caption;
}

QString VxLineIn::dlgSaveCaption() const
{
    return m_dlgSaveCaption;
}

void VxLineIn::setDlgSaveCaption(const QString &caption)
{
    m_dlgSaveCaption = caption;
}

QString VxLineIn::dlgPathCaption() const
{
    return m_dlgPathCaption;
}

void VxLineIn::setDlgPathCaption(const QString &caption)
{
    m_dlgPathCaption = caption;
}

int VxLineIn::dlgFolderStyle() const
{
    return m_dlgFolderStyle;
}

void VxLineIn::setDlgFolderStyle(int style)
{
    m_dlgFolderStyle = style;
}

bool VxLineIn::dlgFolderNamesAsis() const
{
    return m_dlgFolderNamesAsis;
}

void VxLineIn::setDlgFolderNamesAsis(bool asis)
{
    m_dlgFolderNamesAsis = asis;
}

QString VxLineIn::defaultFilename() const
{
    return m_defaultFilename;
}

void VxLineIn::setDefaultFilename(const QString &name)
{
    m_defaultFilename = name;
}

// --- Element properties ----------------------------------------------------

bool VxLineIn::buttonShow() const
{
    return m_buttonShow;
}

void VxLineIn::setButtonShow(bool show)
{
    m_buttonShow = show;
    updateVisibility();
}

int VxLineIn::textBoxStyle() const
{
    return m_textBoxStyle;
}

void VxLineIn::setTextBoxStyle(int style)
{
    m_textBoxStyle = style;
    updateRules();
}

QString VxLineIn::textMask() const
{
    return m_textMask;
}

void VxLineIn::setTextMask(const QString &mask)
{
    m_textMask = mask;
    updateRules();
}

int VxLineIn::controlStyle() const
{
    return m_controlStyle;
}

void VxLineIn::setControlStyle(int style)
{
    m_controlStyle = style;
    setSizePolicy(QSizePolicy::Expanding, style == 2 ? QSizePolicy::Preferred : QSizePolicy::Fixed);
    updateVisibility();
    updateGeometry();
}

bool VxLineIn::greyControl() const
{
    return m_greyControl;
}

void VxLineIn::setGreyControl(bool grey)
{
    m_greyControl = grey;
    m_con->setEnabled(!grey);
    m_gry->setVisible(grey);
    if (grey)
        m_gry->raise();
}

int VxLineIn::commandStyle() const
{
    return m_commandStyle;
}

void VxLineIn::setCommandStyle(int style)
{
    m_commandStyle = style;
    updateButtonFace();
}

int VxLineIn::pictureType() const
{
    return m_pictureType;
}

void VxLineIn::setPictureType(int type)
{
    m_pictureType = type;
    updateButtonFace();
}

bool VxLineIn::autoAmbientChanges() const
{
    return m_autoAmbientChanges;
}

void VxLineIn::setAutoAmbientChanges(bool on)
{
    if (m_autoAmbientChanges == on)
        return;
    m_autoAmbientChanges = on;
    if (on) {
        // Inherit the host's font and palette again.
        setFont(QFont());
        setPalette(QPalette());
        updateColors();
    } else {
        // Pin what the host gives now; later changes of the host stay outside.
        setFont(font());
        setPalette(palette());
    }
}

bool VxLineIn::appendOleDDFiles() const
{
    return m_appendOleDDFiles;
}

void VxLineIn::setAppendOleDDFiles(bool append)
{
    m_appendOleDDFiles = append;
}

bool VxLineIn::allowDDMultiFiles() const
{
    return m_allowDDMultiFiles;
}

void VxLineIn::setAllowDDMultiFiles(bool allow)
{
    m_allowDDMultiFiles = allow;
}

// --- Label -----------------------------------------------------------------

QString VxLineIn::caption() const
{
    return m_caption;
}

void VxLineIn::setCaption(const QString &caption)
{
    m_caption = caption;
    updateLabelText();
}

uint VxLineIn::labelForeColor() const
{
    return m_labelForeColor;
}

void VxLineIn::setLabelForeColor(uint color)
{
    m_labelForeColor = color;
    updateColors();
}

QFont VxLineIn::labelFont() const
{
    return m_lbl->font();
}

void VxLineIn::setLabelFont(const QFont &font)
{
    m_lbl->setFont(font);
    updateLabelText();
}

QString VxLineIn::labelAlignment() const
{
    return m_labelAlignment;
}

void VxLineIn::setLabelAlignment(const QString &alignment)
{
    m_labelAlignment = alignment;
    updateLabelAlignment();
}

QString VxLineIn::labelToolTip() const
{
    return m_labelToolTip;
}

void VxLineIn::setLabelToolTip(const QString &tip)
{
    m_labelToolTip = tip;
    updateLabelText();
}

// --- Check box -------------------------------------------------------------

bool VxLineIn::checkboxShow() const
{
    return m_checkboxShow;
}

void VxLineIn::setCheckboxShow(bool show)
{
    m_checkboxShow = show;
    updateVisibility();
}

bool VxLineIn::value() const
{
    return m_value;
}

void VxLineIn::setValue(bool checked)
{
    m_chk->setChecked(checked);
}

// --- Text elements ---------------------------------------------------------

QString VxLineIn::text() const
{
    return m_text;
}

void VxLineIn::setText(const QString &text)
{
    if (text == m_text)
        return;
    m_text = text;
    syncElements(nullptr);
    if (!m_quiet && !m_terminated)
        Q_EMIT change();
}

uint VxLineIn::textForeColor() const
{
    return m_textForeColor;
}

void VxLineIn::setTextForeColor(uint color)
{
    m_textForeColor = color;
    updateColors();
}

uint VxLineIn::textBackColor() const
{
    return m_textBackColor;
}

void VxLineIn::setTextBackColor(uint color)
{
    m_textBackColor = color;
    updateColors();
}

QFont VxLineIn::textFont() const
{
    return m_txt->font();
}

void VxLineIn::setTextFont(const QFont &font)
{
    for (QWidget *element : {static_cast<QWidget *>(m_txt), static_cast<QWidget *>(m_txi),
                             static_cast<QWidget *>(m_mem), static_cast<QWidget *>(m_cmb),
                             static_cast<QWidget *>(m_anz)})
        element->setFont(font);
    updateGeometry();
}

bool VxLineIn::locked() const
{
    return m_locked;
}

void VxLineIn::setLocked(bool locked)
{
    m_locked = locked;
    m_txt->setReadOnly(locked);
    m_txi->setReadOnly(locked);
    m_mem->setReadOnly(locked);
    if (m_cmb->lineEdit())
        m_cmb->lineEdit()->setReadOnly(locked);
}

QString VxLineIn::passwordChar() const
{
    return m_passwordChar;
}

void VxLineIn::setPasswordChar(const QString &character)
{
    m_passwordChar = character.left(1);
    for (QLineEdit *edit : {m_txt, m_txi}) {
        if (m_passwordChar.isEmpty()) {
            edit->setEchoMode(QLineEdit::Normal);
            edit->setStyleSheet(QString());
        } else {
            edit->setEchoMode(QLineEdit::Password);
            edit->setStyleSheet(u"QLineEdit { lineedit-password-character: %1; }"_s.arg(
                m_passwordChar.at(0).unicode()));
        }
    }
}

int VxLineIn::maxLength() const
{
    return m_maxLength;
}

void VxLineIn::setMaxLength(int length)
{
    m_maxLength = qMax(0, length);
    updateRules();
}

bool VxLineIn::textEnabled() const
{
    return m_textEnabled;
}

void VxLineIn::setTextEnabled(bool enabled)
{
    m_textEnabled = enabled;
    for (QWidget *element : {static_cast<QWidget *>(m_txt), static_cast<QWidget *>(m_txi),
                             static_cast<QWidget *>(m_mem), static_cast<QWidget *>(m_cmb),
                             static_cast<QWidget *>(m_anz)})
        element->setEnabled(enabled);
}

QString VxLineIn::textToolTip() const
{
    return m_textToolTip;
}

void VxLineIn::setTextToolTip(const QString &tip)
{
    m_textToolTip = tip;
    for (QWidget *element : {static_cast<QWidget *>(m_txt), static_cast<QWidget *>(m_txi),
                             static_cast<QWidget *>(m_mem), static_cast<QWidget *>(m_cmb),
                             static_cast<QWidget *>(m_anz)})
        element->setToolTip(tip);
}

int VxLineIn::alignment() const
{
    return m_alignment;
}

void VxLineIn::setAlignment(int alignment)
{
    m_alignment = alignment;
    Qt::Alignment horizontal = Qt::AlignLeft;
    if (alignment == 1)
        horizontal = Qt::AlignRight;
    else if (alignment == 2)
        horizontal = Qt::AlignHCenter;
    m_anz->setAlignment(horizontal | Qt::AlignVCenter);
}

bool VxLineIn::useMnemonic() const
{
    return m_useMnemonic;
}

void VxLineIn::setUseMnemonic(bool on)
{
    m_useMnemonic = on;
    // With a buddy the label reads "&" as the mark of an access key that
    // moves the focus to the button; without one it shows "&" as it is.
    m_anz->setBuddy(on ? m_cmd : nullptr);
    syncElements(nullptr);
}

bool VxLineIn::buttonClickOnEnter() const
{
    return m_buttonClickOnEnter;
}

void VxLineIn::setButtonClickOnEnter(bool on)
{
    m_buttonClickOnEnter = on;
}

// --- Button ----------------------------------------------------------------

QString VxLineIn::buttonCaption() const
{
    return m_buttonCaption;
}

void VxLineIn::setButtonCaption(const QString &caption)
{
    m_buttonCaption = caption;
    updateButtonFace();
}

uint VxLineIn::buttonBackColor() const
{
    return m_buttonBackColor;
}

void VxLineIn::setButtonBackColor(uint color)
{
    m_buttonBackColor = color;
    updateColors();
}

QFont VxLineIn::buttonFont() const
{
    return m_cmd->font();
}

void VxLineIn::setButtonFont(const QFont &font)
{
    m_cmd->setFont(font);
}

uint VxLineIn::buttonMaskColor() const
{
    return m_buttonMaskColor;
}

void VxLineIn::setButtonMaskColor(uint color)
{
    m_buttonMaskColor = color;
    updateButtonFace();
}

bool VxLineIn::buttonUseMaskColor() const
{
    return m_buttonUseMaskColor;
}

void VxLineIn::setButtonUseMaskColor(bool on)
{
    m_buttonUseMaskColor = on;
    updateButtonFace();
}

QString VxLineIn::buttonToolTip() const
{
    return m_cmd->toolTip();
}

void VxLineIn::setButtonToolTip(const QString &tip)
{
    m_cmd->setToolTip(tip);
}

QPixmap VxLineIn::buttonPicture() const
{
    return m_buttonPicture;
}

void VxLineIn::setButtonPicture(const QPixmap &picture)
{
    m_buttonPicture = picture;
    updateButtonFace();
}

// --- Whole control ---------------------------------------------------------

uint VxLineIn::backColor() const
{
    return m_backColor;
}

void VxLineIn::setBackColor(uint color)
{
    m_backColor = color;
    updateColors();
}

uint VxLineIn::foreColor() const
{
    return m_foreColor;
}

void VxLineIn::setForeColor(uint color)
{
    m_foreColor = color;
    updateColors();
}

int VxLineIn::ctlUseLng() const
{
    return m_ctlUseLng;
}

void VxLineIn::setCtlUseLng(int use)
{
    m_ctlUseLng = use;
}

int VxLineIn::comboLines() const
{
    return m_comboLines;
}

void VxLineIn::setComboLines(int lines)
{
    m_comboLines = qMax(1, lines);
    m_cmb->setMaxVisibleItems(m_comboLines);
}

int VxLineIn::comboStyle() const
{
    return m_comboStyle;
}

void VxLineIn::setComboStyle(int style)
{
    m_comboStyle = style == 0 ? 0 : 2;
    const bool editable = m_comboStyle == 0;
    if (m_cmb->isEditable() != editable) {
        m_cmb->setEditable(editable);
        if (QLineEdit *edit = m_cmb->lineEdit()) {
            edit->setReadOnly(m_locked);
            connect(edit, &QLineEdit::textEdited, this, [this] {
                m_edited = true;
                if (!m_terminated)
                    Q_EMIT change();
            });
            edit->installEventFilter(this);
        }
        updateColors();
    }
    m_cmb->setObjectName(editable ? u"cmb0"_s : u"cmb2"_s);
}

bool VxLineIn::showImage() const
{
    return m_showImage;
}

void VxLineIn::setShowImage(bool show)
{
    m_showImage = show;
    updateVisibility();
}

QPixmap VxLineIn::linePicture() const
{
    return m_linePicture;
}

void VxLineIn::setLinePicture(const QPixmap &picture)
{
    m_linePicture = picture;
    relayout();
}

QString VxLineIn::tag() const
{
    return m_tag;
}

void VxLineIn::setTag(const QString &tag)
{
    m_tag = tag;
}

QString VxLineIn::tagUser2() const
{
    return m_tagUser2;
}

void VxLineIn::setTagUser2(const QString &tag)
{
    m_tagUser2 = tag;
}

int VxLineIn::cid() const
{
    return m_cid;
}

void VxLineIn::setCid(int id)
{
    m_cid = id;
}

bool VxLineIn::designMode() const
{
    return m_designMode;
}

void VxLineIn::setDesignMode(bool on)
{
    m_designMode = on;
}

// --- Combo list ------------------------------------------------------------

int VxLineIn::addItem(const QString &text, int itemData, const QString &itemTag)
{
    const int index = m_cmb->count();
    const QSignalBlocker blocker(m_cmb); // adding never selects anything by itself
    m_cmb->addItem(text);
    m_cmb->setItemData(index, itemData, itemDataRole);
    m_cmb->setItemData(index, itemTag, itemTagRole);
    if (m_cmb->currentIndex() != -1 && m_cmb->count() == 1) {
        m_cmb->setCurrentIndex(-1);
        if (m_cmb->isEditable())
            m_cmb->setEditText(QString());
    }
    return index;
}

void VxLineIn::removeItem(int index)
{
    if (index >= 0 && index < m_cmb->count())
        m_cmb->removeItem(index);
}

void VxLineIn::clearList()
{
    m_cmb->clear();
}

int VxLineIn::listCount() const
{
    return m_cmb->count();
}

int VxLineIn::listIndex() const
{
    return m_cmb->currentIndex();
}

void VxLineIn::setListIndex(int index)
{
    m_cmb->setCurrentIndex(index >= 0 && index < m_cmb->count() ? index : -1);
}

QString VxLineIn::itemText(int index) const
{
    return m_cmb->itemText(index);
}

int VxLineIn::itemData(int index) const
{
    if (index < 0 || index >= m_cmb->count())
        return 0;
    return m_cmb->itemData(index, itemDataRole).toInt();
}

void VxLineIn::setItemData(int index, int number)
{
    if (index >= 0 && index < m_cmb->count())
        m_cmb->setItemData(index, number, itemDataRole);
}

QString VxLineIn::itemTag(int index) const
{
    if (index < 0 || index >= m_cmb->count())
        return {};
    return m_cmb->itemData(index, itemTagRole).toString();
}

void VxLineIn::setItemTag(int index, const QString &tag)
{
    if (index >= 0 && index < m_cmb->count())
        m_cmb->setItemData(index, tag, itemTagRole);
}

bool VxLineIn::selectByItemTag(const QString &tag)
{
    for (int i = 0; i < m_cmb->count(); ++i) {
        if (itemTag(i) == tag) {
            setListIndex(i);
            return true;
        }
    }
    return false;
}

bool VxLineIn::selectByItemData(int number)
{
    for (int i = 0; i < m_cmb->count(); ++i) {
        if (itemData(i) == number) {
            setListIndex(i);
            return true;
        }
    }
    return false;
}

QString VxLineIn::listFocusItemTag() const
{
    return itemTag(m_cmb->currentIndex());
}

QString VxLineIn::comboText() const
{
    return m_cmb->currentText();
}

// --- Run-time members ------------------------------------------------------

bool VxLineIn::edited() const
{
    return m_edited;
}

void VxLineIn::setEdited(bool edited)
{
    m_edited = edited;
}

void VxLineIn::setActive()
{
    if (QWidget *element = focusElement())
        element->setFocus(Qt::OtherFocusReason);
}

void VxLineIn::fireEventChange()
{
    if (!m_terminated)
        Q_EMIT change();
}

void VxLineIn::sendChangeMsg()
{
    QTimer::singleShot(0, this, &VxLineIn::fireEventChange);
}

void VxLineIn::autoSizeLabel()
{
    const int needed = m_lbl->fontMetrics().horizontalAdvance(m_caption) + 2;
    // Back to 96-DPI pixels, the unit LabelWidth is kept in.
    setLabelWidth(qRound(needed * 96.0 / qMax(1, logicalDpiX())));
}

QPushButton *VxLineIn::buttonControl() const
{
    return m_cmd;
}

int VxLineIn::ctlLeft() const
{
    const QWidget *element = inputElement();
    return element ? element->x() : 0;
}

int VxLineIn::ctlWidth() const
{
    const QWidget *element = inputElement();
    return element ? element->width() : 0;
}

void VxLineIn::setSuppressFocus(bool suppress)
{
    m_suppressFocus = suppress;
}

bool VxLineIn::suppressFocus() const
{
    return m_suppressFocus;
}

QString VxLineIn::dialogFilter() const
{
    return lineInputFilter(m_dlgFileType, m_dlgFileExtension);
}

void VxLineIn::setDialogs(std::shared_ptr<LineInputDialogs> dialogs)
{
    m_dialogs = std::move(dialogs);
}

// --- The click sequence ----------------------------------------------------

void VxLineIn::clickButton()
{
    if (m_terminated)
        return;
    if (m_designMode) {
        showControlMessage(this, controlText(ControlText::NotAtDesignTime));
        return;
    }
    const QString before = m_text;
    Q_EMIT beforeButtonClicked();
    // A host slot may have terminated the control.
    if (!m_terminated) {
        if (m_controlStyle == 1) {
            if (m_commandStyle == 0)
                clearCombo();
            else
                Q_EMIT buttonClicked();
        } else {
            runCommand();
        }
    }
    if (!m_suppressFocus && !m_terminated) {
        setActive();
        QCoreApplication::processEvents();
    }
    Q_EMIT afterButtonClicked();
    if (m_text != before) {
        m_edited = true;
        Q_EMIT change();
    }
    Q_EMIT afterButtonClickedFinished();
}

void VxLineIn::runCommand()
{
    LineInputDialogs &dialogs = m_dialogs ? *m_dialogs : *standardLineInputDialogs();
    const QString start = lineInputStartPath(m_text, m_defaultFilename);
    QString result;
    bool chosen = false;
    switch (m_commandStyle) {
    case 0:
        result.clear();
        chosen = true;
        break;
    case 1: {
        const QString caption = m_dlgOpenCaption.isEmpty() ? controlText(ControlText::OpenCaption) : m_dlgOpenCaption;
        result = dialogs.openFile(dialogOwner(), caption, start, dialogFilter());
        chosen = !result.isEmpty();
        break;
    }
    case 2: {
        const QString caption = m_dlgSaveCaption.isEmpty() ? controlText(ControlText::SaveCaption) : m_dlgSaveCaption;
        result = dialogs.saveFile(dialogOwner(), caption, start, dialogFilter());
        chosen = !result.isEmpty();
        break;
    }
    case 3: {
        const QString caption = m_dlgPathCaption.isEmpty() ? controlText(ControlText::PathCaption) : m_dlgPathCaption;
        const QString startDir = m_text.section(QLatin1Char('|'), 0, 0).trimmed();
        result = dialogs.chooseFolder(dialogOwner(), caption, startDir, m_dlgFolderStyle == 1);
        chosen = !result.isEmpty();
        if (chosen && !m_dlgFolderNamesAsis)
            result = QDir::cleanPath(result);
        break;
    }
    case 4:
        Q_EMIT buttonClicked();
        return;
    case 5:
        if (QClipboard *clipboard = QGuiApplication::clipboard()) {
            clipboard->clear();
            clipboard->setText(m_text);
        }
        return;
    case 6: {
        const QString caption = m_dlgOpenCaption.isEmpty() ? controlText(ControlText::OpenCaption) : m_dlgOpenCaption;
        const QStringList files = dialogs.openFiles(dialogOwner(), caption, start, dialogFilter());
        result = files.join(pathSeparator());
        chosen = !files.isEmpty();
        break;
    }
    default:
        return;
    }
    if (!chosen || m_terminated)
        return; // a cancelled dialog leaves the text as it was
    // The change is reported once, at the end of the click sequence.
    m_quiet = true;
    setText(result);
    m_quiet = false;
}

void VxLineIn::clearCombo()
{
    m_cmb->setCurrentIndex(-1);
    if (m_cmb->isEditable())
        m_cmb->clearEditText();
}

QWidget *VxLineIn::dialogOwner()
{
    QWidget *owner = window();
    Q_EMIT requestMainForm(&owner);
    return owner;
}

// --- Elements --------------------------------------------------------------

QWidget *VxLineIn::inputElement() const
{
    switch (m_controlStyle) {
    case 1:
        return m_cmb;
    case 2:
        return m_mem;
    case 3:
        return m_anz;
    case 4:
        return m_txi;
    default:
        return m_txt;
    }
}

QWidget *VxLineIn::focusElement() const
{
    switch (m_controlStyle) {
    case 1:
        return m_cmb;
    case 2:
        return m_mem;
    case 4:
        return m_txi;
    default:
        return m_txt;
    }
}

void VxLineIn::setTextFromUser(const QString &text, QObject *source)
{
    if (m_terminated || text == m_text)
        return;
    m_text = text;
    m_edited = true;
    syncElements(source);
    Q_EMIT change();
}

void VxLineIn::syncElements(QObject *source)
{
    const bool wasQuiet = m_quiet;
    m_quiet = true;
    m_txtValidator->setPassThrough(true);
    m_txiValidator->setPassThrough(true);
    if (source != m_txt && m_txt->text() != m_text)
        m_txt->setText(m_text);
    if (source != m_txi && m_txi->text() != m_text)
        m_txi->setText(m_text);
    m_txtValidator->setPassThrough(false);
    m_txiValidator->setPassThrough(false);
    if (source != m_mem && m_mem->toPlainText() != m_text)
        m_mem->setPlainText(m_text);
    m_anz->setText(m_text);
    m_quiet = wasQuiet;
}

void VxLineIn::updateVisibility()
{
    m_txt->setVisible(m_controlStyle != 1 && m_controlStyle != 2 && m_controlStyle != 3 && m_controlStyle != 4);
    m_cmb->setVisible(m_controlStyle == 1);
    m_mem->setVisible(m_controlStyle == 2);
    m_anz->setVisible(m_controlStyle == 3);
    m_txi->setVisible(m_controlStyle == 4);
    m_cmd->setVisible(m_buttonShow);
    m_chk->setVisible(m_checkboxShow);
    m_img->setVisible(m_showImage);
    if (QWidget *element = focusElement(); element && element->isVisibleTo(this))
        setFocusProxy(element);
    relayout();
}

void VxLineIn::updateRules()
{
    LineInputRules rules;
    rules.textBoxStyle = m_textBoxStyle;
    rules.mask = m_textMask;
    rules.maxLength = m_maxLength;
    m_txtValidator->setRules(rules);
    m_txiValidator->setRules(rules);
    m_mem->setRules(rules);
}

void VxLineIn::updateColors()
{
    const QPalette host = palette();
    const auto recolor = [](QWidget *widget, QPalette::ColorRole role, const QColor &color) {
        QPalette p = widget->palette();
        p.setColor(QPalette::Active, role, color);
        p.setColor(QPalette::Inactive, role, color);
        widget->setPalette(p);
    };
    recolor(m_lbl, QPalette::WindowText, colorFromValue(m_labelForeColor, host));
    recolor(m_chk, QPalette::WindowText, colorFromValue(m_foreColor, host));
    for (QWidget *element : {static_cast<QWidget *>(m_txt), static_cast<QWidget *>(m_txi),
                             static_cast<QWidget *>(m_mem), static_cast<QWidget *>(m_cmb)}) {
        recolor(element, QPalette::Text, colorFromValue(m_textForeColor, host));
        recolor(element, QPalette::Base, colorFromValue(m_textBackColor, host));
    }
    recolor(m_anz, QPalette::WindowText, colorFromValue(m_textForeColor, host));
    recolor(m_anz, QPalette::Window, colorFromValue(m_textBackColor, host));
    recolor(m_cmd, QPalette::Button, colorFromValue(m_buttonBackColor, host));
    // The control's own background; the children above keep their colours.
    m_con->setAutoFillBackground(true);
    recolor(m_con, QPalette::Window, colorFromValue(m_backColor, host));
}

void VxLineIn::updateButtonFace()
{
    QIcon icon;
    switch (m_pictureType) {
    case 1:
        icon = style()->standardIcon(QStyle::SP_DirOpenIcon, nullptr, this);
        break;
    case 2:
        icon = style()->standardIcon(QStyle::SP_DialogOpenButton, nullptr, this);
        break;
    case 3:
        icon = style()->standardIcon(QStyle::SP_DialogSaveButton, nullptr, this);
        break;
    case 4:
        icon = style()->standardIcon(QStyle::SP_LineEditClearButton, nullptr, this);
        break;
    default:
        if (!m_buttonPicture.isNull()) {
            QPixmap picture = m_buttonPicture;
            if (m_buttonUseMaskColor) {
                const QColor mask = colorFromValue(m_buttonMaskColor, palette());
                picture.setMask(picture.createMaskFromColor(mask, Qt::MaskInColor));
            }
            icon = QIcon(picture);
        }
        break;
    }
    m_cmd->setIcon(icon);
    if (!m_buttonCaption.isEmpty())
        m_cmd->setText(m_buttonCaption);
    else
        m_cmd->setText(icon.isNull() ? u"..."_s : QString());
}

void VxLineIn::updateLabelText()
{
    // A caption wider than its column is cut with "…" rather than in the middle
    // of a letter, and shown whole in the tooltip.
    const QFontMetrics metrics(m_lbl->font());
    const int room = m_lbl->width();
    const bool fits = room <= 0 || metrics.horizontalAdvance(m_caption) <= room;
    m_lbl->setText(fits ? m_caption : metrics.elidedText(m_caption, Qt::ElideRight, room));
    m_lbl->setToolTip(m_labelToolTip.isEmpty() && !fits ? m_caption : m_labelToolTip);
}

void VxLineIn::updateLabelAlignment()
{
    const QString code = m_labelAlignment.trimmed().left(1).toUpper();
    Qt::Alignment horizontal = Qt::AlignLeft;
    if (code == u"R")
        horizontal = Qt::AlignRight;
    else if (code == u"C")
        horizontal = Qt::AlignHCenter;
    m_lbl->setAlignment(horizontal | Qt::AlignVCenter);
}

void VxLineIn::relayout()
{
    m_con->setGeometry(rect());
    m_gry->setGeometry(rect());
    const int gap = scaledPixels(m_controlDistance, this);
    const int top = scaledPixels(m_topDistance, this);
    const int rowHeight = qMax(0, height() - top);
    int x = scaledPixels(m_leftOffset, this);
    const int blockStart = x;

    if (m_showImage) {
        const int side = qMin(rowHeight, scaledPixels(16, this));
        m_img->setGeometry(x, top + (rowHeight - side) / 2, side, side);
        if (!m_linePicture.isNull())
            m_img->setPixmap(m_linePicture.scaled(QSize(side, side) * devicePixelRatioF(), Qt::KeepAspectRatio,
                                                  Qt::SmoothTransformation));
        else
            m_img->clear();
        x += side + gap;
    }
    // Beside a multi-line box, label, check box and button keep to its first line.
    const int sideHeight = m_controlStyle == 2 ? qMin(rowHeight, m_txt->sizeHint().height()) : rowHeight;
    if (m_checkboxShow) {
        const int width = m_chk->sizeHint().width();
        m_chk->setGeometry(x, top, width, sideHeight);
        x += width + gap;
    }
    int labelWidth = scaledPixels(m_labelWidth, this);
    if (m_fixedBlockWidth > 0)
        labelWidth = qMax(0, scaledPixels(m_fixedBlockWidth, this) - (x - blockStart));
    m_lbl->setVisible(labelWidth > 0);
    if (labelWidth > 0) {
        m_lbl->setGeometry(x, top, labelWidth, sideHeight);
        updateLabelText();
        x += labelWidth + gap;
    }

    int right = width();
    if (m_buttonShow) {
        const int buttonWidth = scaledPixels(m_buttonWidth, this);
        m_cmd->setGeometry(right - buttonWidth, top, buttonWidth, sideHeight);
        right -= buttonWidth + gap;
    }
    const QRect element(x, top, qMax(0, right - x), rowHeight);
    for (QWidget *widget : {static_cast<QWidget *>(m_txt), static_cast<QWidget *>(m_txi),
                            static_cast<QWidget *>(m_mem), static_cast<QWidget *>(m_cmb),
                            static_cast<QWidget *>(m_anz)})
        widget->setGeometry(element);
}

QSize VxLineIn::sizeHint() const
{
    const int gap = scaledPixels(m_controlDistance, this);
    int lineHeight = qMax(m_txt->sizeHint().height(), m_cmb->sizeHint().height());
    if (m_controlStyle == 2)
        lineHeight = m_mem->fontMetrics().lineSpacing() * 3 + 2 * m_mem->frameWidth() + 8;
    int width = scaledPixels(m_leftOffset, this)
        + scaledPixels(m_fixedBlockWidth > 0 ? m_fixedBlockWidth : m_labelWidth, this) + gap
        + scaledPixels(160, this);
    if (m_buttonShow)
        width += gap + scaledPixels(m_buttonWidth, this);
    return {width, scaledPixels(m_topDistance, this) + lineHeight};
}

QSize VxLineIn::minimumSizeHint() const
{
    return {scaledPixels(m_leftOffset + 40, this), scaledPixels(m_topDistance, this) + m_txt->minimumSizeHint().height()};
}

// --- Events ----------------------------------------------------------------

bool VxLineIn::isTextElement(const QObject *object) const
{
    return object == m_txt || object == m_txi || object == m_mem || object == m_mem->viewport();
}

bool VxLineIn::eventFilter(QObject *watched, QEvent *event)
{
    if (m_terminated)
        return QWidget::eventFilter(watched, event);
    const bool textElement = isTextElement(watched);
    const bool combo = watched == m_cmb || (m_cmb->lineEdit() && watched == m_cmb->lineEdit());
    switch (event->type()) {
    case QEvent::KeyPress: {
        auto *key = static_cast<QKeyEvent *>(event);
        const bool enter = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter;
        if (combo)
            Q_EMIT comboKeyPress(key->key());
        if (enter && m_buttonClickOnEnter && (combo || (textElement && watched != m_mem))) {
            clickButton();
            return true;
        }
        if (combo && m_locked)
            return true;
        if (textElement && !m_retyping && key->text().size() == 1 && key->text().at(0).isPrint()) {
            QChar character = key->text().at(0);
            Q_EMIT keyPressBeforeCheck(&character);
            if (character.isNull())
                return true;
            if (character != key->text().at(0)) {
                // Hand the element the character the host asked for instead.
                QKeyEvent replaced(QEvent::KeyPress, 0, key->modifiers(), QString(character));
                m_retyping = true;
                QCoreApplication::sendEvent(watched, &replaced);
                m_retyping = false;
                return true;
            }
        }
        break;
    }
    case QEvent::MouseButtonPress:
    case QEvent::Wheel:
        if (combo && m_locked)
            return true;
        if (watched == m_lbl && event->type() == QEvent::MouseButtonPress) {
            auto *mouse = static_cast<QMouseEvent *>(event);
            Q_EMIT labelMouseDown(mouse->button(), mouse->position().toPoint());
        }
        break;
    case QEvent::MouseButtonRelease: {
        auto *mouse = static_cast<QMouseEvent *>(event);
        if (watched == m_lbl) {
            Q_EMIT labelMouseUp(mouse->button(), mouse->position().toPoint());
            if (mouse->button() == Qt::LeftButton && m_lbl->rect().contains(mouse->position().toPoint()))
                Q_EMIT labelClick();
        } else if (watched == m_cmd && mouse->button() == Qt::RightButton) {
            Q_EMIT buttonRightClick();
        }
        break;
    }
    case QEvent::MouseButtonDblClick:
        if (watched == m_lbl)
            Q_EMIT labelDblClick();
        break;
    case QEvent::ContextMenu:
        if (watched == m_lbl) {
            Q_EMIT labelPopMenu(static_cast<QContextMenuEvent *>(event)->globalPos());
            return true;
        }
        break;
    case QEvent::FocusIn:
        if (textElement)
            Q_EMIT gotFocusText();
        else if (watched == m_cmb)
            Q_EMIT gotFocusCombo();
        break;
    case QEvent::FocusOut:
        if (textElement)
            Q_EMIT lostFocusText();
        else if (watched == m_cmb)
            Q_EMIT lostFocusCombo();
        break;
    case QEvent::DragEnter:
    case QEvent::DragMove:
        if ((textElement || watched == m_anz) && acceptsFileDrop(static_cast<QDropEvent *>(event)->mimeData())) {
            static_cast<QDropEvent *>(event)->acceptProposedAction();
            return true;
        }
        break;
    case QEvent::Drop:
        if ((textElement || watched == m_anz) && dropFiles(static_cast<QDropEvent *>(event)->mimeData())) {
            static_cast<QDropEvent *>(event)->acceptProposedAction();
            return true;
        }
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void VxLineIn::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    relayout();
}

void VxLineIn::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    switch (event->type()) {
    case QEvent::PaletteChange:
        if (m_autoAmbientChanges)
            updateColors();
        break;
    case QEvent::StyleChange:
        updateButtonFace();
        relayout();
        break;
    case QEvent::FontChange:
        updateGeometry();
        relayout();
        break;
    default:
        break;
    }
}

void VxLineIn::dragEnterEvent(QDragEnterEvent *event)
{
    if (!m_terminated && acceptsFileDrop(event->mimeData()))
        event->acceptProposedAction();
    else
        QWidget::dragEnterEvent(event);
}

void VxLineIn::dropEvent(QDropEvent *event)
{
    if (!m_terminated && dropFiles(event->mimeData()))
        event->acceptProposedAction();
    else
        QWidget::dropEvent(event);
}

bool VxLineIn::acceptsFileDrop(const QMimeData *mime) const
{
    return m_controlStyle != 1 && !m_locked && m_textEnabled && !m_greyControl && !localFiles(mime).isEmpty();
}

bool VxLineIn::dropFiles(const QMimeData *mime)
{
    if (!acceptsFileDrop(mime))
        return false;
    QStringList files = localFiles(mime);
    if (!m_allowDDMultiFiles)
        files = files.mid(0, 1);
    QString joined = files.join(pathSeparator());
    if (m_appendOleDDFiles && !m_text.isEmpty())
        joined = m_text % pathSeparator() % joined;
    if (joined != m_text) {
        m_text = joined;
        m_edited = true;
        syncElements(nullptr);
        Q_EMIT change();
    }
    Q_EMIT oleDragDropDone();
    return true;
}

// --- Control hooks ---------------------------------------------------------

QString VxLineIn::ctlClassName() const
{
    return u"VxLineIn"_s;
}

void VxLineIn::terminateControl()
{
    if (m_terminated)
        return;
    m_terminated = true;
    for (QObject *watched : {static_cast<QObject *>(m_txt), static_cast<QObject *>(m_txi),
                             static_cast<QObject *>(m_mem), static_cast<QObject *>(m_mem->viewport()),
                             static_cast<QObject *>(m_cmb), static_cast<QObject *>(m_lbl),
                             static_cast<QObject *>(m_cmd), static_cast<QObject *>(m_anz)})
        watched->removeEventFilter(this);
    if (m_cmb->lineEdit())
        m_cmb->lineEdit()->removeEventFilter(this);
    m_dialogs.reset();
    m_buttonPicture = QPixmap();
    m_linePicture = QPixmap();
    m_img->clear();
    m_cmd->setIcon(QIcon());
}

QObject *VxLineIn::hooksObject() const
{
    return const_cast<VxLineIn *>(this);
}

int VxLineIn::useLanguage() const
{
    return m_ctlUseLng;
}

QList<QPair<QString, LngPropertyType>> VxLineIn::lngProperties() const
{
    return {
        {u"Caption"_s, LngPropertyType::Caption},
        {u"ButtonCaption"_s, LngPropertyType::Caption},
        {u"LabelToolTip"_s, LngPropertyType::ToolTip},
        {u"TextToolTip"_s, LngPropertyType::ToolTip},
        {u"ButtonToolTip"_s, LngPropertyType::ToolTip},
        {u"DlgOpenCaption"_s, LngPropertyType::Text},
        {u"DlgSaveCaption"_s, LngPropertyType::Text},
        {u"DlgPathCaption"_s, LngPropertyType::Text},
        {u"DlgFileType"_s, LngPropertyType::Text},
    };
}

} // namespace valtrona
