#include "controls/vxlinein.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "controls/controlproperties.h"

namespace valtrona {

// The plain settings of the line input. Each setter stores its value and
// lets the part of the line that shows it catch up, even when the value is
// the same. Settings with a rule of their own live in vxlinein.cpp.

int VxLineIn::buttonWidth() const { return m_buttonWidth; }
void VxLineIn::setButtonWidth(int pixels) { store(this, m_buttonWidth, qMax(0, pixels), &VxLineIn::relayout); }
int VxLineIn::labelWidth() const { return m_labelWidth; }
void VxLineIn::setLabelWidth(int pixels) { store(this, m_labelWidth, qMax(0, pixels), &VxLineIn::relayout); }
int VxLineIn::fixedBlockWidth() const { return m_fixedBlockWidth; }
void VxLineIn::setFixedBlockWidth(int pixels) { store(this, m_fixedBlockWidth, qMax(0, pixels), &VxLineIn::relayout); }
int VxLineIn::controlDistance() const { return m_controlDistance; }
void VxLineIn::setControlDistance(int pixels) { store(this, m_controlDistance, qMax(0, pixels), &VxLineIn::relayout); }
int VxLineIn::topDistance() const { return m_topDistance; }
void VxLineIn::setTopDistance(int pixels) { store(this, m_topDistance, qMax(0, pixels), &VxLineIn::resizeRow); }
int VxLineIn::leftOffset() const { return m_leftOffset; }
void VxLineIn::setLeftOffset(int pixels) { store(this, m_leftOffset, qMax(0, pixels), &VxLineIn::relayout); }

QString VxLineIn::dlgFileType() const { return m_dlgFileType; }
void VxLineIn::setDlgFileType(const QString &types) { m_dlgFileType = types; }
QString VxLineIn::dlgFileExtension() const { return m_dlgFileExtension; }
void VxLineIn::setDlgFileExtension(const QString &extensions) { m_dlgFileExtension = extensions; }
QString VxLineIn::dlgOpenCaption() const { return m_dlgOpenCaption; }
void VxLineIn::setDlgOpenCaption(const QString &caption) { m_dlgOpenCaption = caption; }
QString VxLineIn::dlgSaveCaption() const { return m_dlgSaveCaption; }
void VxLineIn::setDlgSaveCaption(const QString &caption) { m_dlgSaveCaption = caption; }
QString VxLineIn::dlgPathCaption() const { return m_dlgPathCaption; }
void VxLineIn::setDlgPathCaption(const QString &caption) { m_dlgPathCaption = caption; }
int VxLineIn::dlgFolderStyle() const { return m_dlgFolderStyle; }
void VxLineIn::setDlgFolderStyle(int style) { m_dlgFolderStyle = style; }
bool VxLineIn::dlgFolderNamesAsis() const { return m_dlgFolderNamesAsis; }
void VxLineIn::setDlgFolderNamesAsis(bool asis) { m_dlgFolderNamesAsis = asis; }
QString VxLineIn::defaultFilename() const { return m_defaultFilename; }
void VxLineIn::setDefaultFilename(const QString &name) { m_defaultFilename = name; }

bool VxLineIn::buttonShow() const { return m_buttonShow; }
void VxLineIn::setButtonShow(bool show) { store(this, m_buttonShow, show, &VxLineIn::updateVisibility); }
int VxLineIn::textBoxStyle() const { return m_textBoxStyle; }
void VxLineIn::setTextBoxStyle(int style) { store(this, m_textBoxStyle, style, &VxLineIn::updateRules); }
QString VxLineIn::textMask() const { return m_textMask; }
void VxLineIn::setTextMask(const QString &mask) { store(this, m_textMask, mask, &VxLineIn::updateRules); }
int VxLineIn::controlStyle() const { return m_controlStyle; }
bool VxLineIn::greyControl() const { return m_greyControl; }
int VxLineIn::commandStyle() const { return m_commandStyle; }
void VxLineIn::setCommandStyle(int style) { store(this, m_commandStyle, style, &VxLineIn::updateButtonFace); }
int VxLineIn::pictureType() const { return m_pictureType; }
void VxLineIn::setPictureType(int type) { store(this, m_pictureType, type, &VxLineIn::updateButtonFace); }
bool VxLineIn::autoAmbientChanges() const { return m_autoAmbientChanges; }
bool VxLineIn::appendOleDDFiles() const { return m_appendOleDDFiles; }
void VxLineIn::setAppendOleDDFiles(bool append) { m_appendOleDDFiles = append; }
bool VxLineIn::allowDDMultiFiles() const { return m_allowDDMultiFiles; }
void VxLineIn::setAllowDDMultiFiles(bool allow) { m_allowDDMultiFiles = allow; }

QString VxLineIn::caption() const { return m_caption; }
void VxLineIn::setCaption(const QString &caption) { store(this, m_caption, caption, &VxLineIn::updateLabelText); }
uint VxLineIn::labelForeColor() const { return m_labelForeColor; }
void VxLineIn::setLabelForeColor(uint color) { store(this, m_labelForeColor, color, &VxLineIn::updateColors); }
QFont VxLineIn::labelFont() const { return m_lbl->font(); }
QString VxLineIn::labelAlignment() const { return m_labelAlignment; }
void VxLineIn::setLabelAlignment(const QString &alignment)
{
    store(this, m_labelAlignment, alignment, &VxLineIn::updateLabelAlignment);
}
QString VxLineIn::labelToolTip() const { return m_labelToolTip; }
void VxLineIn::setLabelToolTip(const QString &tip) { store(this, m_labelToolTip, tip, &VxLineIn::updateLabelText); }

bool VxLineIn::checkboxShow() const { return m_checkboxShow; }
void VxLineIn::setCheckboxShow(bool show) { store(this, m_checkboxShow, show, &VxLineIn::updateVisibility); }
bool VxLineIn::value() const { return m_value; }
void VxLineIn::setValue(bool checked) { m_chk->setChecked(checked); }

QString VxLineIn::text() const { return m_text; }
uint VxLineIn::textForeColor() const { return m_textForeColor; }
void VxLineIn::setTextForeColor(uint color) { store(this, m_textForeColor, color, &VxLineIn::updateColors); }
uint VxLineIn::textBackColor() const { return m_textBackColor; }
void VxLineIn::setTextBackColor(uint color) { store(this, m_textBackColor, color, &VxLineIn::updateColors); }
QFont VxLineIn::textFont() const { return m_txt->font(); }
bool VxLineIn::locked() const { return m_locked; }
QString VxLineIn::passwordChar() const { return m_passwordChar; }
int VxLineIn::maxLength() const { return m_maxLength; }
void VxLineIn::setMaxLength(int length) { store(this, m_maxLength, qMax(0, length), &VxLineIn::updateRules); }
bool VxLineIn::textEnabled() const { return m_textEnabled; }
QString VxLineIn::textToolTip() const { return m_textToolTip; }
int VxLineIn::alignment() const { return m_alignment; }
bool VxLineIn::useMnemonic() const { return m_useMnemonic; }
bool VxLineIn::buttonClickOnEnter() const { return m_buttonClickOnEnter; }
void VxLineIn::setButtonClickOnEnter(bool on) { m_buttonClickOnEnter = on; }

QString VxLineIn::buttonCaption() const { return m_buttonCaption; }
void VxLineIn::setButtonCaption(const QString &caption)
{
    store(this, m_buttonCaption, caption, &VxLineIn::updateButtonFace);
}
uint VxLineIn::buttonBackColor() const { return m_buttonBackColor; }
void VxLineIn::setButtonBackColor(uint color) { store(this, m_buttonBackColor, color, &VxLineIn::updateColors); }
QFont VxLineIn::buttonFont() const { return m_cmd->font(); }
void VxLineIn::setButtonFont(const QFont &font) { m_cmd->setFont(font); }
uint VxLineIn::buttonMaskColor() const { return m_buttonMaskColor; }
void VxLineIn::setButtonMaskColor(uint color) { store(this, m_buttonMaskColor, color, &VxLineIn::updateButtonFace); }
bool VxLineIn::buttonUseMaskColor() const { return m_buttonUseMaskColor; }
void VxLineIn::setButtonUseMaskColor(bool on) { store(this, m_buttonUseMaskColor, on, &VxLineIn::updateButtonFace); }
QString VxLineIn::buttonToolTip() const { return m_cmd->toolTip(); }
void VxLineIn::setButtonToolTip(const QString &tip) { m_cmd->setToolTip(tip); }
QPixmap VxLineIn::buttonPicture() const { return m_buttonPicture; }
void VxLineIn::setButtonPicture(const QPixmap &picture)
{
    store(this, m_buttonPicture, picture, &VxLineIn::updateButtonFace);
}

uint VxLineIn::backColor() const { return m_backColor; }
void VxLineIn::setBackColor(uint color) { store(this, m_backColor, color, &VxLineIn::updateColors); }
uint VxLineIn::foreColor() const { return m_foreColor; }
void VxLineIn::setForeColor(uint color) { store(this, m_foreColor, color, &VxLineIn::updateColors); }
int VxLineIn::ctlUseLng() const { return m_ctlUseLng; }
void VxLineIn::setCtlUseLng(int use) { m_ctlUseLng = use; }
int VxLineIn::comboLines() const { return m_comboLines; }
int VxLineIn::comboStyle() const { return m_comboStyle; }
bool VxLineIn::showImage() const { return m_showImage; }
void VxLineIn::setShowImage(bool show) { store(this, m_showImage, show, &VxLineIn::updateVisibility); }
QPixmap VxLineIn::linePicture() const { return m_linePicture; }
void VxLineIn::setLinePicture(const QPixmap &picture) { store(this, m_linePicture, picture, &VxLineIn::relayout); }

QString VxLineIn::tag() const { return m_tag; }
void VxLineIn::setTag(const QString &tag) { m_tag = tag; }
QString VxLineIn::tagUser2() const { return m_tagUser2; }
void VxLineIn::setTagUser2(const QString &tag) { m_tagUser2 = tag; }
int VxLineIn::cid() const { return m_cid; }
void VxLineIn::setCid(int id) { m_cid = id; }
bool VxLineIn::designMode() const { return m_designMode; }
void VxLineIn::setDesignMode(bool on) { m_designMode = on; }

bool VxLineIn::edited() const { return m_edited; }
void VxLineIn::setEdited(bool edited) { m_edited = edited; }
QPushButton *VxLineIn::buttonControl() const { return m_cmd; }
void VxLineIn::setSuppressFocus(bool suppress) { m_suppressFocus = suppress; }
bool VxLineIn::suppressFocus() const { return m_suppressFocus; }
void VxLineIn::setDialogs(std::shared_ptr<LineInputDialogs> dialogs) { m_dialogs = std::move(dialogs); }

} // namespace valtrona
