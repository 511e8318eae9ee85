#pragma once

// The controls the windows are built of, made the same way everywhere, and
// the helpers that fill and read their choice lists. Every control carries
// its program name ("cmdOpen", "txtB", ...) as its objectName.

#include <QList>
#include <QString>

#include <memory>

class QComboBox;
class QLabel;
class QPushButton;
class QWidget;

namespace valtrona {

struct ChoiceEntry;
class PictureLoader;
class VxCont;
class VxLineIn;
class VxPict;

/// A push button that never becomes the dialog default, so Enter in a
/// field cannot press it.
QPushButton *makeButton(const QString &name, const QString &caption, QWidget *parent);

/// A plain choice list.
QComboBox *makeChoice(const QString &name, QWidget *parent);

/// A framed area: the caption sits in the frame line, the children in a
/// layout inside the frame's work area.
VxCont *makeFrame(const QString &caption, QWidget *parent);

/// Fills a card edge to edge with one framed area and returns the frame,
/// which the card's controls go into.
VxCont *makeCardFrame(QWidget *card, const QString &caption);

/// A picture view for previews, read through `loader`, with the file's
/// name as its tooltip.
VxPict *makePreview(const QString &name, std::shared_ptr<PictureLoader> loader, QWidget *parent);

/// A parameter line: label and input in one control, no button.
VxLineIn *makeTextLine(const QString &name, const QString &caption, QWidget *parent);

/// A parameter line whose input is a drop-down list.
VxLineIn *makeChoiceLine(const QString &name, const QString &caption, QWidget *parent);

/// A label whose access key moves the focus to `buddy`.
QLabel *makeBuddyLabel(const QString &text, QWidget *buddy, QWidget *parent);

/// Fills a list with the entries, nothing selected (as the lists start
/// before the saved parameters are read).
void fillChoice(QComboBox *combo, const QList<ChoiceEntry> &entries);
void fillChoice(VxLineIn *line, const QList<ChoiceEntry> &entries);

/// Selects the entry with this item data; without one the list stays as it is.
void selectItemData(QComboBox *combo, int itemData);
void selectItemData(VxLineIn *line, int itemData);

/// The item data of the selected entry; -1 when none is selected.
int selectedItemData(const QComboBox *combo);
int selectedItemData(const VxLineIn *line);

/// Gives every line the same label column, at least minimumWidth (pixels
/// of a 96-DPI screen) and wide enough for the longest caption in the
/// labels' font, so no caption is clipped and the inputs stay aligned.
void fitLabelColumn(const QList<VxLineIn *> &lines, int minimumWidth);

} // namespace valtrona
