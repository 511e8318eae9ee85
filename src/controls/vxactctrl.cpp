#include "controls/vxactctrl.h"

#include <array>
#include <optional>
#include <utility>

#include <QEvent>
#include <QPainter>
#include <QVariant>

#include "controls/controlproperties.h"
#include "core/appinfo.h"

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

QStringList splitList(const QString &text)
{
    if (text.isEmpty())
        return {};
    return text.split(QLatin1Char(';'));
}

int leadingNumber(const QString &text)
{
    const QString trimmed = text.trimmed();
    int end = 0;
    if (end < trimmed.size() && (trimmed.at(end) == QLatin1Char('-') || trimmed.at(end) == QLatin1Char('+')))
        ++end;
    while (end < trimmed.size() && trimmed.at(end).isDigit())
        ++end;
    bool ok = false;
    const int value = trimmed.left(end).toInt(&ok);
    return ok ? value : 0;
}

QList<int> splitNumbers(const QString &text)
{
    QList<int> numbers;
    const QStringList parts = splitList(text);
    for (const QString &part : parts)
        numbers.append(leadingNumber(part));
    return numbers;
}

QString stringProperty(const QObject *object, const char *name)
{
    const QVariant value = object->property(name);
    return value.isValid() ? value.toString() : QString();
}

// The navigation codes, compared in upper case.
constexpr std::array<std::pair<const char16_t *, VxActCtrl::Navigation>, 6> navigationCodes = {{
    {u"F", VxActCtrl::Navigation::First},
    {u"L", VxActCtrl::Navigation::Last},
    {u"N", VxActCtrl::Navigation::Next},
    {u"NX", VxActCtrl::Navigation::NextStop},
    {u"P", VxActCtrl::Navigation::Previous},
    {u"PX", VxActCtrl::Navigation::PreviousStop},
}};

std::optional<VxActCtrl::Navigation> navigationFromCode(const QString &code)
{
    const QString upper = code.toUpper();
    for (const auto &[text, step] : navigationCodes) {
        if (upper == QStringView(text))
            return step;
    }
    return std::nullopt;
}

} // namespace

VxActCtrl::VxActCtrl(QWidget *parent)
    : QWidget(parent)
{
    setAttribute(Qt::WA_NoSystemBackground);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
    resize(0, 0);
    watchParent();
}

VxActCtrl::~VxActCtrl() = default;

// --- Settings with a rule of their own -------------------------------------

void VxActCtrl::setActiveControl(int number)
{
    if (m_terminated || number == m_activeControl || number < 0 || number > m_controlCount)
        return;
    const int previous = m_activeControl;
    m_activeControl = number;
    switchCard(previous, number);
}

void VxActCtrl::setDesignMode(bool on)
{
    if (!assign(m_designMode, on))
        return;
    update();
    arrangeAll();
}

void VxActCtrl::setActiveControlByKey(const QString &key)
{
    const int number = getControlIndexByKey(key);
    if (number > 0)
        setActiveControl(number);
}

int VxActCtrl::getControlIndexByKey(const QString &key) const
{
    if (key.isEmpty())
        return 0;
    for (int i = 0; i < m_keyList.size(); ++i) {
        if (m_keyList.at(i).compare(key, Qt::CaseInsensitive) == 0)
            return i + 1;
    }
    return 0;
}

// --- Cards -----------------------------------------------------------------

QWidget *VxActCtrl::getControl(int number) const
{
    QWidget *host = parentWidget();
    if (!host || number < 1 || number > m_nameList.size())
        return nullptr;
    QString name = m_nameList.at(number - 1);
    int index = -1;
    const qsizetype bar = name.indexOf(QLatin1Char('|'));
    if (bar >= 0) {
        index = leadingNumber(name.mid(bar + 1));
        name = name.left(bar);
    }
    name = name.trimmed();
    if (name.isEmpty())
        return nullptr;
    const QList<QWidget *> candidates = host->findChildren<QWidget *>(name);
    for (QWidget *candidate : candidates) {
        if (candidate == this)
            continue;
        if (bar < 0 || controlArrayIndex(candidate) == index)
            return candidate;
    }
    return nullptr;
}

int VxActCtrl::getControlWD(int number) const
{
    const QWidget *card = getControl(number);
    return card ? pixelsToTwipsX(card->width(), card) : 0;
}

int VxActCtrl::getControlHG(int number) const
{
    const QWidget *card = getControl(number);
    return card ? pixelsToTwipsY(card->height(), card) : 0;
}

int VxActCtrl::getControlLF(int number) const
{
    const QWidget *card = getControl(number);
    return card ? pixelsToTwipsX(card->x(), card) : 0;
}

int VxActCtrl::getControlTP(int number) const
{
    const QWidget *card = getControl(number);
    return card ? pixelsToTwipsY(card->y(), card) : 0;
}

QString VxActCtrl::getControlDisplay(int number) const
{
    const QString display = controlDisplay(number);
    if (!display.isEmpty())
        return display;
    if (const QWidget *card = getControl(number)) {
        for (const char *name : {"Caption", "CaptionStored", "Tag"}) {
            const QString value = stringProperty(card, name);
            if (!value.isEmpty())
                return value;
        }
    }
    return controlText(ControlText::ControlFallback) % u"%1"_s.arg(number, 2, 10, QLatin1Char('0'));
}

void VxActCtrl::navigate(const QString &code)
{
    if (const std::optional<Navigation> step = navigationFromCode(code))
        navigate(*step);
}

void VxActCtrl::navigate(Navigation step)
{
    const int n = m_controlCount;
    const int c = m_activeControl < 1 ? 1 : m_activeControl;
    int target = m_activeControl;
    switch (step) {
    case Navigation::First: target = 1; break;
    case Navigation::Last: target = n; break;
    case Navigation::Next: target = c >= n ? 1 : c + 1; break;
    case Navigation::NextStop: target = c >= n ? n : c + 1; break;
    case Navigation::Previous: target = c < 2 ? n : c - 1; break;
    case Navigation::PreviousStop: target = c < 2 ? 1 : c - 1; break;
    }
    setActiveControl(target);
}

void VxActCtrl::arrangeAll()
{
    if (m_terminated)
        return;
    for (int number = 1; number <= m_nameList.size(); ++number) {
        if (number == m_activeControl)
            continue;
        if (QWidget *card = getControl(number)) {
            card->setVisible(false);
            if (m_designMode)
                parkControl(number);
        }
    }
    if (QWidget *card = getControl(m_activeControl)) {
        resizeControl(m_activeControl);
        card->setVisible(true);
        card->raise();
    }
    m_arranged = true;
}

void VxActCtrl::refresh()
{
    arrangeAll();
}

void VxActCtrl::refCtrl()
{
    if (!m_terminated && m_activeControl > 0)
        resizeControl(m_activeControl);
}

void VxActCtrl::resizeControl(int number)
{
    QWidget *card = getControl(number);
    if (!card)
        return;
    const int left = twipsToPixelsX(m_containerLeft, card);
    const int top = twipsToPixelsY(m_containerTop, card);
    card->move(left, top);
    QSize size = cardSize(number);
    const QWidget *host = card->parentWidget();
    if (m_extendWidth && host)
        size.setWidth(host->width() - 2 * left);
    if (m_extendHeight && host)
        size.setHeight(host->height() - 2 * top);
    card->resize(size.width() > 0 ? size.width() : card->width(),
                 size.height() > 0 ? size.height() : card->height());
}

void VxActCtrl::activeControlReset()
{
    if (m_terminated || m_activeControl == 0)
        return;
    const int previous = m_activeControl;
    m_activeControl = 0;
    switchCard(previous, 0);
}

void VxActCtrl::initializeControl()
{
    ctlUpdate();
    arrangeAll();
}

void VxActCtrl::ctlUpdate()
{
    m_nameList = splitList(m_names);
    m_displayList = splitList(m_displays);
    m_keyList = splitList(m_keys);
    m_widthList = splitNumbers(m_widths);
    m_heightList = splitNumbers(m_heights);
    m_controlCount = static_cast<int>(m_nameList.size());
    if (m_activeControl > m_controlCount)
        m_activeControl = 0;
    m_arranged = false;
}

void VxActCtrl::switchCard(int previous, int current)
{
    if (!m_arranged) {
        // First switch since the lists changed: cards the host created shown
        // must not stay visible beside the active one.
        arrangeAll();
        Q_EMIT activeControlChanged(previous, current);
        return;
    }
    if (QWidget *old = getControl(previous)) {
        old->setVisible(false);
        if (m_designMode)
            parkControl(previous);
    }
    if (QWidget *card = getControl(current)) {
        resizeControl(current);
        card->setVisible(true);
        card->raise();
    }
    Q_EMIT activeControlChanged(previous, current);
}

void VxActCtrl::parkControl(int number)
{
    QWidget *card = getControl(number);
    if (!card)
        return;
    card->move(twipsToPixelsX(m_cardInvisibleLeft, card),
               twipsToPixelsY(m_cardInvisibleTop + m_cardOffset * (number - 1), card));
    const QSize size = cardSize(number);
    card->resize(size.width() > 0 ? size.width() : card->width(),
                 size.height() > 0 ? size.height() : card->height());
}

QSize VxActCtrl::cardSize(int number) const
{
    const QWidget *card = getControl(number);
    int width = controlWidth(number);
    if (width == 0)
        width = m_containerWidth;
    int height = controlHeight(number);
    if (height == 0)
        height = m_containerHeight;
    return {width > 0 ? twipsToPixelsX(width, card) : 0, height > 0 ? twipsToPixelsY(height, card) : 0};
}

void VxActCtrl::watchParent()
{
    if (m_watchedParent == parentWidget())
        return;
    if (m_watchedParent)
        m_watchedParent->removeEventFilter(this);
    m_watchedParent = parentWidget();
    if (m_watchedParent && !m_terminated)
        m_watchedParent->installEventFilter(this);
}

// --- Control hooks and events ----------------------------------------------

void VxActCtrl::aboutBox()
{
    showControlMessage(this, ctlClassName() % u" "_s % programVersion());
}

QString VxActCtrl::ctlClassName() const
{
    return u"VxActCtrl"_s;
}

void VxActCtrl::terminateControl()
{
    if (m_watchedParent)
        m_watchedParent->removeEventFilter(this);
    m_watchedParent = nullptr;
    m_chooser = nullptr;
    m_terminated = true;
}

QObject *VxActCtrl::hooksObject() const
{
    return const_cast<VxActCtrl *>(this);
}

int VxActCtrl::useLanguage() const
{
    return m_ctlUseLng;
}

QList<QPair<QString, LngPropertyType>> VxActCtrl::lngProperties() const
{
    return {{u"CTLDisplays"_s, LngPropertyType::Caption}};
}

bool VxActCtrl::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_watchedParent && event->type() == QEvent::Resize && (m_extendWidth || m_extendHeight))
        refCtrl();
    return QWidget::eventFilter(watched, event);
}

void VxActCtrl::paintEvent(QPaintEvent *)
{
    if (!m_designMode)
        return;
    // A small marker so the designer can find the otherwise invisible switcher.
    QPainter painter(this);
    painter.setPen(QPen(palette().color(QPalette::Mid), 1, Qt::DashLine));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

void VxActCtrl::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // Cards may have been created after the lists were assigned.
    if (!m_arranged)
        arrangeAll();
}

void VxActCtrl::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ParentChange)
        watchParent();
}

} // namespace valtrona
