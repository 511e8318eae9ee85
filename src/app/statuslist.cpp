#include "app/statuslist.h"

#include <QHeaderView>

#include "app/statusicons.h"

namespace valtrona {

namespace {
constexpr int PathRole = Qt::UserRole;
constexpr int KeyRole = Qt::UserRole + 1;
} // namespace

StatusList::StatusList(QWidget *parent)
    : QTreeWidget(parent)
{
    setColumnCount(1);
    setHeaderLabels({QStringLiteral("Status")});
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    header()->setStretchLastSection(true);
    connect(this, &QTreeWidget::itemClicked, this, [this](QTreeWidgetItem *item) {
        Q_EMIT rowClicked(item->data(0, PathRole).toString());
    });
    // Enter on a row shows its file as a click does.
    connect(this, &QTreeWidget::itemActivated, this, [this](QTreeWidgetItem *item) {
        Q_EMIT rowClicked(item->data(0, PathRole).toString());
    });
}

void StatusList::addStatusRow(const QString &text, StatusKind kind, const QString &path)
{
    auto *row = new QTreeWidgetItem(this);
    row->setText(0, text);
    row->setIcon(0, statusSymbol(kind));
    row->setData(0, PathRole, path);
    row->setData(0, KeyRole, statusIconKey(kind));
    setCurrentItem(row);
    scrollToItem(row);
    Q_EMIT rowAdded(text);
}

void StatusList::setLastRowToolTip(const QString &text)
{
    if (QTreeWidgetItem *row = topLevelItem(topLevelItemCount() - 1))
        row->setToolTip(0, text);
}

QString StatusList::rowText(int row) const
{
    const QTreeWidgetItem *item = topLevelItem(row);
    return item ? item->text(0) : QString();
}

QString StatusList::rowKey(int row) const
{
    const QTreeWidgetItem *item = topLevelItem(row);
    return item ? item->data(0, KeyRole).toString() : QString();
}

QString StatusList::rowPath(int row) const
{
    const QTreeWidgetItem *item = topLevelItem(row);
    return item ? item->data(0, PathRole).toString() : QString();
}

} // namespace valtrona
