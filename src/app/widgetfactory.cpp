#include "app/widgetfactory.h"

#include <QComboBox>
#include <QFontMetrics>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

#include "batch/sizerules.h"
#include "controls/pictureloader.h"
#include "controls/vxborder.h"
#include "controls/vxcont.h"
#include "controls/vxlinein.h"
#include "controls/vxpict.h"

namespace valtrona {

QPushButton *makeButton(const QString &name, const QString &caption, QWidget *parent)
{
    auto *button = new QPushButton(caption, parent);
    button->setObjectName(name);
    button->setAutoDefault(false);
    return button;
}

QComboBox *makeChoice(const QString &name, QWidget *parent)
{
    auto *combo = new QComboBox(parent);
    combo->setObjectName(name);
    return combo;
}

VxCont *makeFrame(const QString &caption, QWidget *parent)
{
    auto *frame = new VxCont(parent);
    frame->setBorderStyle(BorderStyleCode::ThreedInOut);
    frame->setCaptionFrame(caption);
    return frame;
}

VxCont *makeCardFrame(QWidget *card, const QString &caption)
{
    auto *outer = new QVBoxLayout(card);
    outer->setContentsMargins(0, 0, 0, 0);
    VxCont *frame = makeFrame(caption, card);
    outer->addWidget(frame);
    return frame;
}

VxPict *makePreview(const QString &name, std::shared_ptr<PictureLoader> loader, QWidget *parent)
{
    auto *preview = new VxPict(parent);
    preview->setObjectName(name);
    preview->setPictureLoader(std::move(loader));
    preview->setShowPictureToolTip(3);
    preview->setMinimumSize(240, 240);
    return preview;
}

VxLineIn *makeTextLine(const QString &name, const QString &caption, QWidget *parent)
{
    auto *line = new VxLineIn(parent);
    line->setObjectName(name);
    line->setCaption(caption);
    line->setButtonShow(false);
    line->setLabelWidth(110);
    return line;
}

VxLineIn *makeChoiceLine(const QString &name, const QString &caption, QWidget *parent)
{
    VxLineIn *line = makeTextLine(name, caption, parent);
    line->setControlStyle(1);
    line->setComboStyle(2);
    line->setComboLines(16);
    return line;
}

QLabel *makeBuddyLabel(const QString &text, QWidget *buddy, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setBuddy(buddy);
    return label;
}

void fillChoice(QComboBox *combo, const QList<ChoiceEntry> &entries)
{
    combo->clear();
    for (const ChoiceEntry &entry : entries)
        combo->addItem(entry.text, entry.itemData);
    combo->setCurrentIndex(-1);
}

void fillChoice(VxLineIn *line, const QList<ChoiceEntry> &entries)
{
    line->clearList();
    for (const ChoiceEntry &entry : entries)
        line->addItem(entry.text, entry.itemData);
    line->setListIndex(-1);
}

void selectItemData(QComboBox *combo, int itemData)
{
    const int index = combo->findData(itemData);
    if (index >= 0)
        combo->setCurrentIndex(index);
}

void selectItemData(VxLineIn *line, int itemData)
{
    for (int i = 0; i < line->listCount(); ++i) {
        if (line->itemData(i) == itemData) {
            line->setListIndex(i);
            return;
        }
    }
}

int selectedItemData(const QComboBox *combo)
{
    return combo->currentIndex() < 0 ? -1 : combo->currentData().toInt();
}

int selectedItemData(const VxLineIn *line)
{
    return line->listIndex() < 0 ? -1 : line->itemData(line->listIndex());
}

void fitLabelColumn(const QList<VxLineIn *> &lines, int minimumWidth)
{
    int width = minimumWidth;
    for (const VxLineIn *line : lines) {
        const QFontMetrics metrics(line->labelFont());
        const int needed = metrics.horizontalAdvance(line->caption()) + metrics.averageCharWidth();
        // The control scales its widths by the screen's DPI; the font
        // already is, so take the needed width back to 96 DPI.
        const int dpi = std::max(1, line->logicalDpiX());
        width = std::max(width, static_cast<int>(std::ceil(needed * 96.0 / dpi)));
    }
    for (VxLineIn *line : lines)
        line->setLabelWidth(width);
}

} // namespace valtrona
