#include "controls/vxcont.h"

#include "controls/controlproperties.h"

namespace valtrona {

// The plain settings of the framed container: each is stored and the frame
// laid out and drawn again. Settings with a rule of their own live in vxcont.cpp.

int VxCont::controlStyle() const { return m_controlStyle; }
void VxCont::setControlStyle(int value) { assign(this, m_controlStyle, value, &VxCont::refreshFrame); }
bool VxCont::frameOuter() const { return m_frameOuter; }
void VxCont::setFrameOuter(bool value) { assign(this, m_frameOuter, value, &VxCont::refreshFrame); }
bool VxCont::frameInner() const { return m_frameInner; }
void VxCont::setFrameInner(bool value) { assign(this, m_frameInner, value, &VxCont::refreshFrame); }
int VxCont::frameWidth() const { return m_frameWidth; }
void VxCont::setFrameWidth(int value) { assign(this, m_frameWidth, value, &VxCont::refreshFrame); }
int VxCont::borderStyle() const { return m_borderStyle; }
void VxCont::setBorderStyle(int value) { assign(this, m_borderStyle, value, &VxCont::refreshFrame); }
int VxCont::borderWidth() const { return m_borderWidth; }
void VxCont::setBorderWidth(int value) { assign(this, m_borderWidth, value, &VxCont::refreshFrame); }
int VxCont::outerOffset() const { return m_outerOffset; }
void VxCont::setOuterOffset(int value) { assign(this, m_outerOffset, value, &VxCont::refreshFrame); }
bool VxCont::lightBorders() const { return m_lightBorders; }
void VxCont::setLightBorders(bool value) { assign(this, m_lightBorders, value, &VxCont::refreshFrame); }
int VxCont::alignment() const { return m_alignment; }
void VxCont::setAlignment(int value) { assign(this, m_alignment, value, &VxCont::refreshFrame); }
int VxCont::alignmentVertical() const { return m_alignmentVertical; }
void VxCont::setAlignmentVertical(int value) { assign(this, m_alignmentVertical, value, &VxCont::refreshFrame); }
uint VxCont::foreColor() const { return m_foreColor; }
void VxCont::setForeColor(uint value) { assign(this, m_foreColor, value, &VxCont::refreshFrame); }
uint VxCont::floodColor() const { return m_floodColor; }
void VxCont::setFloodColor(uint value) { assign(this, m_floodColor, value, &VxCont::refreshFrame); }
uint VxCont::backColor() const { return m_backColor; }
void VxCont::setBackColor(uint value) { assign(this, m_backColor, value, &VxCont::refreshFrame); }
bool VxCont::wordWrap() const { return m_wordWrap; }
void VxCont::setWordWrap(bool value) { assign(this, m_wordWrap, value, &VxCont::refreshFrame); }
bool VxCont::useMnemonic() const { return m_useMnemonic; }
void VxCont::setUseMnemonic(bool value) { assign(this, m_useMnemonic, value, &VxCont::refreshFrame); }
int VxCont::backStyle() const { return m_backStyle; }
void VxCont::setBackStyle(int value) { assign(this, m_backStyle, value, &VxCont::refreshFrame); }
QString VxCont::captionFrame() const { return m_captionFrame; }
void VxCont::setCaptionFrame(const QString &value) { assign(this, m_captionFrame, value, &VxCont::refreshFrame); }
uint VxCont::frameForeColor() const { return m_frameForeColor; }
void VxCont::setFrameForeColor(uint value) { assign(this, m_frameForeColor, value, &VxCont::refreshFrame); }
bool VxCont::showBorderShape() const { return m_showBorderShape; }
void VxCont::setShowBorderShape(bool value) { assign(this, m_showBorderShape, value, &VxCont::refreshFrame); }
int VxCont::topOffset() const { return m_topOffset; }
void VxCont::setTopOffset(int value) { assign(this, m_topOffset, value, &VxCont::refreshFrame); }
int VxCont::workHeight() const { return m_workHeight; }
void VxCont::setWorkHeight(int value) { assign(this, m_workHeight, value, &VxCont::refreshFrame); }
uint VxCont::windowColor() const { return m_windowColor; }
void VxCont::setWindowColor(uint value) { assign(this, m_windowColor, value, &VxCont::refreshFrame); }
uint VxCont::shadowColor() const { return m_shadowColor; }
void VxCont::setShadowColor(uint value) { assign(this, m_shadowColor, value, &VxCont::refreshFrame); }
int VxCont::shadowOffset() const { return m_shadowOffset; }
void VxCont::setShadowOffset(int value) { assign(this, m_shadowOffset, value, &VxCont::refreshFrame); }
int VxCont::shadowSize() const { return m_shadowSize; }
void VxCont::setShadowSize(int value) { assign(this, m_shadowSize, value, &VxCont::refreshFrame); }
QString VxCont::captionText() const { return m_captionText; }
void VxCont::setCaptionText(const QString &value) { assign(this, m_captionText, value, &VxCont::refreshFrame); }
uint VxCont::foreColorText() const { return m_foreColorText; }
void VxCont::setForeColorText(uint value) { assign(this, m_foreColorText, value, &VxCont::refreshFrame); }
int VxCont::rasterDistance() const { return m_rasterDistance; }
void VxCont::setRasterDistance(int value) { assign(this, m_rasterDistance, value, &VxCont::refreshFrame); }
double VxCont::rasterFaktor() const { return m_rasterFaktor; }
void VxCont::setRasterFaktor(double value) { assign(this, m_rasterFaktor, value, &VxCont::refreshFrame); }
int VxCont::seperatorOffset() const { return m_seperatorOffset; }
void VxCont::setSeperatorOffset(int value) { assign(this, m_seperatorOffset, value, &VxCont::refreshFrame); }
bool VxCont::caBorderStyle() const { return m_caBorderStyle; }
void VxCont::setCaBorderStyle(bool value) { assign(this, m_caBorderStyle, value, &VxCont::refreshFrame); }
uint VxCont::caBorderColor() const { return m_caBorderColor; }
void VxCont::setCaBorderColor(uint value) { assign(this, m_caBorderColor, value, &VxCont::refreshFrame); }
uint VxCont::caColor() const { return m_caColor; }
void VxCont::setCaColor(uint value) { assign(this, m_caColor, value, &VxCont::refreshFrame); }
int VxCont::designIndexDisplayStyle() const { return m_designIndexDisplayStyle; }
void VxCont::setDesignIndexDisplayStyle(int value)
{
    assign(this, m_designIndexDisplayStyle, value, &VxCont::refreshFrame);
}
int VxCont::floodOffset() const { return m_floodOffset; }
void VxCont::setFloodOffset(int value) { assign(this, m_floodOffset, value, &VxCont::refreshFrame); }
bool VxCont::floodShowPercent() const { return m_floodShowPercent; }
void VxCont::setFloodShowPercent(bool value) { assign(this, m_floodShowPercent, value, &VxCont::refreshFrame); }
int VxCont::ctlUseLng() const { return m_ctlUseLng; }
void VxCont::setCtlUseLng(int value) { assign(this, m_ctlUseLng, value, &VxCont::refreshFrame); }
QString VxCont::caption() const { return m_caption; }
void VxCont::setCaption(const QString &value) { assign(this, m_caption, value, &VxCont::refreshFrame); }
QString VxCont::captionStored() const { return m_captionStored; }
void VxCont::setCaptionStored(const QString &value) { m_captionStored = value; }
QFont VxCont::fontFlood() const { return m_fontFlood.value_or(font()); }
void VxCont::setFontFlood(const QFont &value) { store(this, m_fontFlood, value, &VxCont::refreshFrame); }
QFont VxCont::fontFrame() const { return m_fontFrame.value_or(font()); }
void VxCont::setFontFrame(const QFont &value) { store(this, m_fontFrame, value, &VxCont::refreshFrame); }
QFont VxCont::fontText() const { return m_fontText.value_or(font()); }
void VxCont::setFontText(const QFont &value) { store(this, m_fontText, value, &VxCont::refreshFrame); }
QPixmap VxCont::picture() const { return m_picture; }
void VxCont::setPicture(const QPixmap &value) { store(this, m_picture, value, &VxCont::refreshFrame); }
QPixmap VxCont::pictureBack() const { return m_pictureBack; }
void VxCont::setPictureBack(const QPixmap &value) { store(this, m_pictureBack, value, &VxCont::refreshFrame); }

// The flood's inputs: a new percentage or value redraws only when the shown
// percentage changes; a new range or look always redraws.
QPixmap VxCont::floodBackImage() const { return m_floodBackImage; }
void VxCont::setFloodBackImage(const QPixmap &value) { store(this, m_floodBackImage, value, &VxCont::redrawFlood); }
int VxCont::floodType() const { return m_floodType; }
int VxCont::floodBarType() const { return m_floodBarType; }
void VxCont::setFloodBarType(int value) { store(this, m_floodBarType, value, &VxCont::redrawFlood); }
void VxCont::setFloodPercent(int value) { store(this, m_floodPercent, value, &VxCont::followFlood); }
int VxCont::value() const { return m_value; }
void VxCont::setValue(int value) { store(this, m_value, value, &VxCont::followFlood); }
int VxCont::min() const { return m_min; }
void VxCont::setMin(int value) { store(this, m_min, value, &VxCont::redrawFlood); }
int VxCont::max() const { return m_max; }
void VxCont::setMax(int value) { store(this, m_max, value, &VxCont::redrawFlood); }
void VxCont::setFloodClock(FloodClock clock) { m_clock = std::move(clock); }

} // namespace valtrona
