#include "controls/vxactctrl.h"

#include "controls/controlproperties.h"

namespace valtrona {

// The plain settings of the card switcher. The five lists are split into
// per-card values whenever one is assigned; the measures take effect at the
// next switch. Settings with a rule of their own live in vxactctrl.cpp.

int VxActCtrl::activeControl() const { return m_activeControl; }
int VxActCtrl::controlCount() const { return m_controlCount; }
void VxActCtrl::setControlCount(int count) { m_controlCount = qMax(0, count); }

QString VxActCtrl::ctlNames() const { return m_names; }
void VxActCtrl::setCtlNames(const QString &names) { store(this, m_names, names, &VxActCtrl::ctlUpdate); }
QString VxActCtrl::ctlDisplays() const { return m_displays; }
void VxActCtrl::setCtlDisplays(const QString &displays) { store(this, m_displays, displays, &VxActCtrl::ctlUpdate); }
QString VxActCtrl::ctlKeys() const { return m_keys; }
void VxActCtrl::setCtlKeys(const QString &keys) { store(this, m_keys, keys, &VxActCtrl::ctlUpdate); }
QString VxActCtrl::ctlWidth() const { return m_widths; }
void VxActCtrl::setCtlWidth(const QString &widths) { store(this, m_widths, widths, &VxActCtrl::ctlUpdate); }
QString VxActCtrl::ctlHeight() const { return m_heights; }
void VxActCtrl::setCtlHeight(const QString &heights) { store(this, m_heights, heights, &VxActCtrl::ctlUpdate); }

int VxActCtrl::cardInvisibleTop() const { return m_cardInvisibleTop; }
void VxActCtrl::setCardInvisibleTop(int twips) { m_cardInvisibleTop = twips; }
int VxActCtrl::cardInvisibleLeft() const { return m_cardInvisibleLeft; }
void VxActCtrl::setCardInvisibleLeft(int twips) { m_cardInvisibleLeft = twips; }
int VxActCtrl::cardOffset() const { return m_cardOffset; }
void VxActCtrl::setCardOffset(int twips) { m_cardOffset = twips; }
int VxActCtrl::containerTop() const { return m_containerTop; }
void VxActCtrl::setContainerTop(int twips) { m_containerTop = twips; }
int VxActCtrl::containerLeft() const { return m_containerLeft; }
void VxActCtrl::setContainerLeft(int twips) { m_containerLeft = twips; }
int VxActCtrl::containerWidth() const { return m_containerWidth; }
void VxActCtrl::setContainerWidth(int twips) { m_containerWidth = twips; }
int VxActCtrl::containerHeight() const { return m_containerHeight; }
void VxActCtrl::setContainerHeight(int twips) { m_containerHeight = twips; }
bool VxActCtrl::bExtendWidth() const { return m_extendWidth; }
void VxActCtrl::setBExtendWidth(bool on) { store(this, m_extendWidth, on, &VxActCtrl::refCtrl); }
bool VxActCtrl::bExtendHeight() const { return m_extendHeight; }
void VxActCtrl::setBExtendHeight(bool on) { store(this, m_extendHeight, on, &VxActCtrl::refCtrl); }
bool VxActCtrl::designMode() const { return m_designMode; }
int VxActCtrl::ctlUseLng() const { return m_ctlUseLng; }
void VxActCtrl::setCtlUseLng(int use) { m_ctlUseLng = use; }

QString VxActCtrl::controlName(int number) const { return m_nameList.value(number - 1); }
QString VxActCtrl::controlDisplay(int number) const { return m_displayList.value(number - 1); }
QString VxActCtrl::controlKey(int number) const { return m_keyList.value(number - 1); }
int VxActCtrl::controlWidth(int number) const { return m_widthList.value(number - 1); }
int VxActCtrl::controlHeight(int number) const { return m_heightList.value(number - 1); }
QString VxActCtrl::activeControlByKey() const { return controlKey(m_activeControl); }

void VxActCtrl::firstControl() { navigate(Navigation::First); }
void VxActCtrl::lastControl() { navigate(Navigation::Last); }
void VxActCtrl::nextControl() { navigate(Navigation::Next); }
void VxActCtrl::nextControlX() { navigate(Navigation::NextStop); }
void VxActCtrl::prevControl() { navigate(Navigation::Previous); }
void VxActCtrl::prevControlX() { navigate(Navigation::PreviousStop); }

} // namespace valtrona
