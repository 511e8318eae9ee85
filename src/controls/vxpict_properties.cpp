#include "controls/vxpict.h"

#include "controls/controlproperties.h"

namespace valtrona {

// The plain settings of the picture view: each is stored and the picture placed
// and drawn again. Settings with a rule of their own live in vxpict.cpp.

int VxPict::backStyle() const { return m_backStyle; }
void VxPict::setBackStyle(int value) { assign(this, m_backStyle, value, &VxPict::relayout); }
uint VxPict::backColor() const { return m_backColor; }
void VxPict::setBackColor(uint value) { assign(this, m_backColor, value, &VxPict::relayout); }
uint VxPict::foreColor() const { return m_foreColor; }
void VxPict::setForeColor(uint value) { assign(this, m_foreColor, value, &VxPict::relayout); }
QString VxPict::caption() const { return m_caption; }
void VxPict::setCaption(const QString &value) { assign(this, m_caption, value, &VxPict::relayout); }
bool VxPict::frameInner() const { return m_frameInner; }
void VxPict::setFrameInner(bool value) { assign(this, m_frameInner, value, &VxPict::relayout); }
bool VxPict::frameOuter() const { return m_frameOuter; }
void VxPict::setFrameOuter(bool value) { assign(this, m_frameOuter, value, &VxPict::relayout); }
int VxPict::borderWidth() const { return m_borderWidth; }
void VxPict::setBorderWidth(int value) { assign(this, m_borderWidth, value, &VxPict::relayout); }
int VxPict::frameWidth() const { return m_frameWidth; }
void VxPict::setFrameWidth(int value) { assign(this, m_frameWidth, value, &VxPict::relayout); }
int VxPict::borderStyle() const { return m_borderStyle; }
void VxPict::setBorderStyle(int value) { assign(this, m_borderStyle, value, &VxPict::relayout); }
int VxPict::topOffset() const { return m_topOffset; }
void VxPict::setTopOffset(int value) { assign(this, m_topOffset, value, &VxPict::relayout); }
int VxPict::workHeight() const { return m_workHeight; }
void VxPict::setWorkHeight(int value) { assign(this, m_workHeight, value, &VxPict::relayout); }
bool VxPict::lightBorders() const { return m_lightBorders; }
void VxPict::setLightBorders(bool value) { assign(this, m_lightBorders, value, &VxPict::relayout); }
bool VxPict::showBorderShape() const { return m_showBorderShape; }
void VxPict::setShowBorderShape(bool value) { assign(this, m_showBorderShape, value, &VxPict::relayout); }
int VxPict::pictureOffset() const { return m_pictureOffset; }
void VxPict::setPictureOffset(int value) { assign(this, m_pictureOffset, value, &VxPict::relayout); }
bool VxPict::showPictureFrame() const { return m_showPictureFrame; }
void VxPict::setShowPictureFrame(bool value) { assign(this, m_showPictureFrame, value, &VxPict::relayout); }
int VxPict::thumbnailHeight() const { return m_thumbnailHeight; }
void VxPict::setThumbnailHeight(int value) { assign(this, m_thumbnailHeight, value, &VxPict::relayout); }
bool VxPict::usePopUpMenu() const { return m_usePopUpMenu; }
void VxPict::setUsePopUpMenu(bool value) { assign(this, m_usePopUpMenu, value, &VxPict::relayout); }
int VxPict::pictureAlignment() const { return m_pictureAlignment; }
void VxPict::setPictureAlignment(int value) { assign(this, m_pictureAlignment, value, &VxPict::relayout); }
bool VxPict::doEventsOnLoadPicture() const { return m_doEventsOnLoadPicture; }
void VxPict::setDoEventsOnLoadPicture(bool value) { assign(this, m_doEventsOnLoadPicture, value, &VxPict::relayout); }
bool VxPict::useMaskColor() const { return m_useMaskColor; }
void VxPict::setUseMaskColor(bool value) { assign(this, m_useMaskColor, value, &VxPict::relayout); }
uint VxPict::maskColor() const { return m_maskColor; }
void VxPict::setMaskColor(uint value) { assign(this, m_maskColor, value, &VxPict::relayout); }
bool VxPict::takesFocusOnShow() const { return m_setFocusOnShow; }
void VxPict::setSetFocusOnShow(bool value) { assign(this, m_setFocusOnShow, value, &VxPict::relayout); }
bool VxPict::pictureFrameFlat() const { return m_pictureFrameFlat; }
void VxPict::setPictureFrameFlat(bool value) { assign(this, m_pictureFrameFlat, value, &VxPict::relayout); }
uint VxPict::borderColor() const { return m_borderColor; }
void VxPict::setBorderColor(uint value) { assign(this, m_borderColor, value, &VxPict::relayout); }
bool VxPict::showPictureName() const { return m_showPictureName; }
void VxPict::setShowPictureName(bool value) { assign(this, m_showPictureName, value, &VxPict::relayout); }
uint VxPict::pictureNameTextColor() const { return m_pictureNameTextColor; }
void VxPict::setPictureNameTextColor(uint value) { assign(this, m_pictureNameTextColor, value, &VxPict::relayout); }
int VxPict::ctlUseLng() const { return m_ctlUseLng; }
void VxPict::setCtlUseLng(int value) { assign(this, m_ctlUseLng, value, &VxPict::relayout); }
bool VxPict::reloadFileName() const { return m_reloadFileName; }
void VxPict::setReloadFileName(bool value) { assign(this, m_reloadFileName, value, &VxPict::relayout); }
bool VxPict::designMode() const { return m_designMode; }
void VxPict::setDesignMode(bool value) { assign(this, m_designMode, value, &VxPict::relayout); }
int VxPict::outerOffset() const { return m_outerOffset; }
int VxPict::previewSize() const { return m_previewSize; }
double VxPict::zoomfaktor() const { return m_zoomfaktor; }
int VxPict::showPictureToolTip() const { return m_showPictureToolTip; }
void VxPict::setShowPictureToolTip(int value) { store(this, m_showPictureToolTip, value, &VxPict::updateToolTip); }
QString VxPict::fileName() const { return m_fileName; }
QImage VxPict::picture() const { return m_direct; }
QString VxPict::fileNameB64() const { return m_fileNameB64; }
QByteArray VxPict::pictureB64Buffer() const { return m_pictureB64Buffer; }
QImage VxPict::pictureOrg() const { return m_held; }
int VxPict::pictureWidth() const { return m_held.isNull() ? 0 : m_ownSize.width(); }
int VxPict::pictureHeight() const { return m_held.isNull() ? 0 : m_ownSize.height(); }
int VxPict::displayWidth() const { return m_shownRect.width(); }
int VxPict::displayHeight() const { return m_shownRect.height(); }
QRect VxPict::pictureRect() const { return m_shownRect; }
bool VxPict::hasPicture() const { return !m_held.isNull(); }
void VxPict::setPictureLoader(std::shared_ptr<PictureLoader> loader) { m_loader = std::move(loader); }
void VxPict::setTickCounter(std::function<quint32()> ticks) { m_ticks = std::move(ticks); }

} // namespace valtrona
