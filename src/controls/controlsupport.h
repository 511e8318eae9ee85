#pragma once

#include <functional>

#include <QList>
#include <QPair>
#include <QString>

#include "core/numeric.h"

class QEvent;
class QObject;
class QWidget;

namespace valtrona {

// --- Measures --------------------------------------------------------------

// Rounding halves to even is core/numeric.h's roundHalfEven(), shared with
// the rest of the program.

/// Twips (1440 per inch) to pixels at the widget's logical DPI. Without a
/// widget the primary screen's logical DPI is used, 96 without a screen.
int twipsToPixelsX(int twips, const QWidget *widget);
int twipsToPixelsY(int twips, const QWidget *widget);
/// Pixels back to twips at the widget's logical DPI.
int pixelsToTwipsX(int pixels, const QWidget *widget);
int pixelsToTwipsY(int pixels, const QWidget *widget);

/// Scales a measure given in pixels of a 96-DPI screen to the widget's
/// logical DPI, so layouts keep their proportions on larger text settings.
int scaledPixels(int pixels, const QWidget *widget);

// --- Control arrays --------------------------------------------------------

/// Marks a widget as element `index` of the control array named by its
/// objectName (stored as the dynamic property "Index").
void setControlArrayIndex(QObject *object, int index);
/// The control-array index of an object, -1 when it is no array element.
int controlArrayIndex(const QObject *object);

// --- Texts of the control library -----------------------------------------

/// Texts the controls show of their own (dialog captions, filter entries,
/// messages). German by default; a host may replace them for another language.
enum class ControlText {
    AllFiles,          ///< "Alle Dateien"
    OpenCaption,       ///< "Datei öffnen :"
    SaveCaption,       ///< "Datei speichern :"
    PathCaption,       ///< "Wählen Sie ein Verzeichnis :"
    NotAtDesignTime,   ///< "Zur Entwurfszeit nicht gültig !"
    ControlFallback,   ///< "Steuerelement " (followed by a two-digit number)
    ChooserCaption,    ///< "Steuerelement wählen"
};

/// The current text for an id.
QString controlText(ControlText id);
/// Replaces the text for an id; an empty text restores the German one.
void setControlText(ControlText id, const QString &text);

// --- Messages --------------------------------------------------------------

/// Shows a control's message to the user (a warning box over `parent`).
/// Tests and hosts without a screen may divert messages with a handler.
void showControlMessage(QWidget *parent, const QString &text);

using ControlMessageHandler = std::function<void(QWidget *parent, const QString &text)>;
/// Installs a handler for control messages (an empty one restores the
/// message box) and returns the previous handler.
ControlMessageHandler setControlMessageHandler(ControlMessageHandler handler);

// --- Hooks every control of the library offers ----------------------------

/// How a language-switchable property is to be translated.
enum class LngPropertyType {
    None = 0,    ///< not a language property
    Caption = 1, ///< a caption or label text
    ToolTip = 2, ///< a tooltip
    Text = 3,    ///< a dialog caption or other free text
};

/// The language hooks and the release call of the control library. A host
/// finds them on its widgets with dynamic_cast (see terminateControls()).
class ControlHooks
{
public:
    virtual ~ControlHooks();

    /// The control's class name ("VxLineIn", ...).
    virtual QString ctlClassName() const = 0;

    /// The language-switchable texts of the control as (property, text),
    /// empty when the control's `CTLUseLng` switch is 0.
    virtual QList<QPair<QString, QString>> ctlEnumAllCaptionsInUCtl() const;
    /// Sets a translated text for one of the properties enumerated above;
    /// unknown properties are ignored. Returns whether the text was taken.
    virtual bool ctlSetUserControlLanguage(const QString &property, const QString &text);
    /// The kind of a property for a translation tool.
    virtual LngPropertyType ctlGetLngPropertyType(const QString &property) const;

    /// Called by the host window before it goes away: the control stops
    /// reacting, forgets the widgets it refers to and frees what it holds.
    virtual void terminateControl() = 0;

protected:
    /// The control as a QObject, for reading and writing its properties.
    virtual QObject *hooksObject() const = 0;
    /// The control's `CTLUseLng` switch.
    virtual int useLanguage() const = 0;
    /// The control's language-switchable properties with their kinds.
    virtual QList<QPair<QString, LngPropertyType>> lngProperties() const;
};

/// What a control does when its look changes (call it from changeEvent()):
/// `relayout` on a palette or font change, a repaint when it is enabled or
/// disabled.
void followLookChange(QWidget *control, const QEvent *event, const std::function<void()> &relayout);

/// Calls terminateControl() on every control below `window` that offers it
/// (the window itself included). Returns how many were terminated.
int terminateControls(QWidget *window);

} // namespace valtrona
