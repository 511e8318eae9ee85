#include "controls/vxlinein.h"

#include <QBitmap>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPushButton>
#include <QStyle>

#include "controls/controlproperties.h"

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

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

VxLineIn::ControlStyle VxLineIn::controlStyleKind() const
{
    return enumFromCode(m_controlStyle, ControlStyle::Text);
}

VxLineIn::CommandStyle VxLineIn::commandStyleKind() const
{
    return enumFromCode(m_commandStyle, CommandStyle::None);
}

// --- Settings with a rule of their own -------------------------------------

void VxLineIn::setControlStyle(int style)
{
    m_controlStyle = style;
    const bool memo = controlStyleKind() == ControlStyle::Memo;
    setSizePolicy(QSizePolicy::Expanding, memo ? QSizePolicy::Preferred : QSizePolicy::Fixed);
    updateVisibility();
    updateGeometry();
}

void VxLineIn::setGreyControl(bool grey)
{
    m_greyControl = grey;
    m_con->setEnabled(!grey);
    m_gry->setVisible(grey);
    if (grey)
        m_gry->raise();
}

void VxLineIn::setAutoAmbientChanges(bool on)
{
    if (!assign(m_autoAmbientChanges, on))
        return;
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

void VxLineIn::setText(const QString &text)
{
    if (text == m_text)
        return;
    m_text = text;
    syncElements(nullptr);
    if (!m_quiet && !m_terminated)
        Q_EMIT change();
}

void VxLineIn::setLabelFont(const QFont &font)
{
    m_lbl->setFont(font);
    updateLabelText();
}

void VxLineIn::setTextFont(const QFont &font)
{
    for (QWidget *element : inputElements())
        element->setFont(font);
    updateGeometry();
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

void VxLineIn::setTextEnabled(bool enabled)
{
    m_textEnabled = enabled;
    for (QWidget *element : inputElements())
        element->setEnabled(enabled);
}

void VxLineIn::setTextToolTip(const QString &tip)
{
    m_textToolTip = tip;
    for (QWidget *element : inputElements())
        element->setToolTip(tip);
}

void VxLineIn::setAlignment(int alignment)
{
    m_alignment = alignment;
    Qt::Alignment horizontal = Qt::AlignLeft;
    switch (enumFromCode(alignment, HorizontalAlignment::Left)) {
    case HorizontalAlignment::Left: horizontal = Qt::AlignLeft; break;
    case HorizontalAlignment::Right: horizontal = Qt::AlignRight; break;
    case HorizontalAlignment::Center: horizontal = Qt::AlignHCenter; break;
    }
    m_anz->setAlignment(horizontal | Qt::AlignVCenter);
}

void VxLineIn::setUseMnemonic(bool on)
{
    m_useMnemonic = on;
    // With a buddy the label reads "&" as the mark of an access key that
    // moves the focus to the button; without one it shows "&" as it is.
    m_anz->setBuddy(on ? m_cmd : nullptr);
    syncElements(nullptr);
}

void VxLineIn::setComboLines(int lines)
{
    m_comboLines = qMax(1, lines);
    m_cmb->setMaxVisibleItems(m_comboLines);
}

void VxLineIn::setComboStyle(int style)
{
    m_comboStyle = int(enumFromCode(style, ComboStyle::DropDownList));
    const bool editable = m_comboStyle == int(ComboStyle::Editable);
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

// --- Elements --------------------------------------------------------------

QWidget *VxLineIn::inputElement() const
{
    switch (controlStyleKind()) {
    case ControlStyle::Text: return m_txt;
    case ControlStyle::Combo: return m_cmb;
    case ControlStyle::Memo: return m_mem;
    case ControlStyle::Display: return m_anz;
    case ControlStyle::SecondText: return m_txi;
    }
    return m_txt;
}

QWidget *VxLineIn::focusElement() const
{
    // The display field takes no focus; its hidden text box is named instead.
    switch (controlStyleKind()) {
    case ControlStyle::Text:
    case ControlStyle::Display: return m_txt;
    case ControlStyle::Combo: return m_cmb;
    case ControlStyle::Memo: return m_mem;
    case ControlStyle::SecondText: return m_txi;
    }
    return m_txt;
}

QList<QWidget *> VxLineIn::inputElements() const
{
    return {m_txt, m_cmb, m_mem, m_anz, m_txi};
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
    for (QWidget *element : inputElements())
        element->setVisible(element == inputElement());
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
    switch (enumFromCode(m_pictureType, PictureType::OwnPicture)) {
    case PictureType::Folder:
        icon = style()->standardIcon(QStyle::SP_DirOpenIcon, nullptr, this);
        break;
    case PictureType::OpenFile:
        icon = style()->standardIcon(QStyle::SP_DialogOpenButton, nullptr, this);
        break;
    case PictureType::SaveFile:
        icon = style()->standardIcon(QStyle::SP_DialogSaveButton, nullptr, this);
        break;
    case PictureType::Clear:
        icon = style()->standardIcon(QStyle::SP_LineEditClearButton, nullptr, this);
        break;
    case PictureType::OwnPicture:
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
