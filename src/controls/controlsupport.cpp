#include "controls/controlsupport.h"

#include <cmath>

#include <QEvent>
#include <QGuiApplication>
#include <QHash>
#include <QMessageBox>
#include <QScreen>
#include <QVariant>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace valtrona {

namespace {

constexpr double twipsPerInch = 1440.0;
constexpr double referenceDpi = 96.0;

double dpiX(const QWidget *widget)
{
    if (widget)
        return widget->logicalDpiX();
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        return screen->logicalDotsPerInchX();
    return referenceDpi;
}

double dpiY(const QWidget *widget)
{
    if (widget)
        return widget->logicalDpiY();
    if (const QScreen *screen = QGuiApplication::primaryScreen())
        return screen->logicalDotsPerInchY();
    return referenceDpi;
}

QString germanText(ControlText id)
{
    switch (id) {
    case ControlText::AllFiles:
        return u"Alle Dateien"_s;
    case ControlText::OpenCaption:
        return u"Datei öffnen :"_s;
    case ControlText::SaveCaption:
        return u"Datei speichern :"_s;
    case ControlText::PathCaption:
        return u"Wählen Sie ein Verzeichnis :"_s;
    case ControlText::NotAtDesignTime:
        return u"Zur Entwurfszeit nicht gültig !"_s;
    case ControlText::ControlFallback:
        return u"Steuerelement "_s;
    case ControlText::ChooserCaption:
        return u"Steuerelement wählen"_s;
    }
    return {};
}

QHash<int, QString> &replacedTexts()
{
    static QHash<int, QString> texts;
    return texts;
}

ControlMessageHandler &messageHandler()
{
    static ControlMessageHandler handler;
    return handler;
}

} // namespace

int twipsToPixelsX(int twips, const QWidget *widget)
{
    return static_cast<int>(roundHalfEven(twips * dpiX(widget) / twipsPerInch));
}

int twipsToPixelsY(int twips, const QWidget *widget)
{
    return static_cast<int>(roundHalfEven(twips * dpiY(widget) / twipsPerInch));
}

int pixelsToTwipsX(int pixels, const QWidget *widget)
{
    return static_cast<int>(roundHalfEven(pixels * twipsPerInch / dpiX(widget)));
}

int pixelsToTwipsY(int pixels, const QWidget *widget)
{
    return static_cast<int>(roundHalfEven(pixels * twipsPerInch / dpiY(widget)));
}

int scaledPixels(int pixels, const QWidget *widget)
{
    return static_cast<int>(roundHalfEven(pixels * dpiX(widget) / referenceDpi));
}

void setControlArrayIndex(QObject *object, int index)
{
    if (object)
        object->setProperty("Index", index);
}

int controlArrayIndex(const QObject *object)
{
    if (!object)
        return -1;
    const QVariant index = object->property("Index");
    bool ok = false;
    const int value = index.toInt(&ok);
    return index.isValid() && ok ? value : -1;
}

QString controlText(ControlText id)
{
    const QString replaced = replacedTexts().value(static_cast<int>(id));
    return replaced.isEmpty() ? germanText(id) : replaced;
}

void setControlText(ControlText id, const QString &text)
{
    if (text.isEmpty())
        replacedTexts().remove(static_cast<int>(id));
    else
        replacedTexts().insert(static_cast<int>(id), text);
}

void showControlMessage(QWidget *parent, const QString &text)
{
    if (messageHandler()) {
        messageHandler()(parent, text);
        return;
    }
    const QString title = parent ? parent->window()->windowTitle() : QString();
    QMessageBox::warning(parent, title, text);
}

ControlMessageHandler setControlMessageHandler(ControlMessageHandler handler)
{
    ControlMessageHandler previous = std::move(messageHandler());
    messageHandler() = std::move(handler);
    return previous;
}

ControlHooks::~ControlHooks() = default;

QList<QPair<QString, LngPropertyType>> ControlHooks::lngProperties() const
{
    return {};
}

QList<QPair<QString, QString>> ControlHooks::ctlEnumAllCaptionsInUCtl() const
{
    QList<QPair<QString, QString>> captions;
    if (useLanguage() == 0)
        return captions;
    const QObject *object = hooksObject();
    const auto properties = lngProperties();
    for (const auto &entry : properties)
        captions.append({entry.first, object->property(entry.first.toLatin1().constData()).toString()});
    return captions;
}

bool ControlHooks::ctlSetUserControlLanguage(const QString &property, const QString &text)
{
    if (ctlGetLngPropertyType(property) == LngPropertyType::None)
        return false;
    return hooksObject()->setProperty(property.toLatin1().constData(), text);
}

LngPropertyType ControlHooks::ctlGetLngPropertyType(const QString &property) const
{
    const auto properties = lngProperties();
    for (const auto &entry : properties) {
        if (entry.first == property)
            return entry.second;
    }
    return LngPropertyType::None;
}

void followLookChange(QWidget *control, const QEvent *event, const std::function<void()> &relayout)
{
    switch (event->type()) {
    case QEvent::PaletteChange:
    case QEvent::FontChange:
        relayout();
        break;
    case QEvent::EnabledChange:
        control->update();
        break;
    default:
        break;
    }
}

int terminateControls(QWidget *window)
{
    if (!window)
        return 0;
    int count = 0;
    QList<QWidget *> widgets = window->findChildren<QWidget *>();
    widgets.prepend(window);
    for (QWidget *widget : std::as_const(widgets)) {
        if (auto *hooks = dynamic_cast<ControlHooks *>(widget)) {
            hooks->terminateControl();
            ++count;
        }
    }
    return count;
}

} // namespace valtrona
