#include "app/sourcelist.h"

#include "core/fileservices.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileIconProvider>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLocale>
#include <QMimeData>
#include <QMimeDatabase>
#include <QMouseEvent>
#include <QSet>
#include <QUrl>

#include <algorithm>
#include <cmath>

namespace valtrona {

namespace {

constexpr int PathRole = Qt::UserRole;
constexpr int GoneRole = Qt::UserRole + 1;

// Rows compare by their shown text, as a list of names would, not by the
// number inside it: "10 KB" sorts before "9 KB". Every cell's tooltip
// names the whole path, so two files of one name can be told apart; a row
// whose file has gone is greyed and says so.
class SourceItem : public QTreeWidgetItem
{
public:
    using QTreeWidgetItem::QTreeWidgetItem;

    bool operator<(const QTreeWidgetItem &other) const override
    {
        const int column = treeWidget() ? treeWidget()->sortColumn() : 0;
        return QString::compare(text(column), other.text(column), Qt::CaseInsensitive) < 0;
    }

    QVariant data(int column, int role) const override
    {
        const bool gone = QTreeWidgetItem::data(SourceList::NameColumn, GoneRole).toBool();
        switch (role) {
        case Qt::ToolTipRole: {
            const QString path = QTreeWidgetItem::data(SourceList::NameColumn, PathRole).toString();
            return gone ? path + QStringLiteral("\nDatei nicht mehr vorhanden (gelöscht oder verschoben)") : path;
        }
        case Qt::ForegroundRole:
            if (gone && treeWidget())
                return treeWidget()->palette().brush(QPalette::Disabled, QPalette::Text);
            break;
        case Qt::FontRole:
            if (gone && treeWidget()) {
                QFont font = treeWidget()->font();
                font.setItalic(true);
                return font;
            }
            break;
        default:
            break;
        }
        return QTreeWidgetItem::data(column, role);
    }
};

// The file a dropped URL names, spelled as the folder walk spells names: a
// name that is not valid UTF-8 keeps its own text instead of collapsing
// into another one.
QString localPathOf(const QUrl &url)
{
    if (!url.host().isEmpty())
        return url.toLocalFile();
    return files::fileNameFromNative(QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()));
}

class WaitCursor
{
public:
    WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
    ~WaitCursor() { QApplication::restoreOverrideCursor(); }
    WaitCursor(const WaitCursor &) = delete;
    WaitCursor &operator=(const WaitCursor &) = delete;
};

} // namespace

SourceList::SourceList(QWidget *parent)
    : QTreeWidget(parent)
{
    m_columnSortOrder.fill(Qt::AscendingOrder);

    setColumnCount(4);
    setHeaderLabels({QStringLiteral("Datei"), QStringLiteral("Größe"), QStringLiteral("Abmessungen"), QString()});
    headerItem()->setTextAlignment(SizeColumn, Qt::AlignRight | Qt::AlignVCenter);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setAllColumnsShowFocus(true);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setAcceptDrops(true);
    setDropIndicatorShown(false);
    setDragDropMode(QAbstractItemView::DropOnly);

    header()->setSectionsClickable(true);
    header()->setSortIndicatorShown(false);
    header()->setStretchLastSection(true);
    connect(header(), &QHeaderView::sectionClicked, this, &SourceList::onHeaderClicked);
    connect(this, &QTreeWidget::itemClicked, this, &SourceList::onItemClicked);

    autoSizeColumns();
}

void SourceList::setMeasure(Measure measure)
{
    m_measure = std::move(measure);
}

void SourceList::setRestart(Restart restart)
{
    m_restart = std::move(restart);
}

int SourceList::addSourceFiles(const QStringList &paths)
{
    if (paths.isEmpty())
        return 0;

    const WaitCursor wait;
    if (m_restart)
        m_restart();

    QSet<QString> known;
    known.reserve(topLevelItemCount() + paths.size());
    for (int i = 0; i < topLevelItemCount(); ++i)
        known.insert(topLevelItem(i)->data(NameColumn, PathRole).toString());

    const QLocale locale;
    QList<QTreeWidgetItem *> rows;
    rows.reserve(paths.size());
    for (qsizetype i = 0; i < paths.size(); ++i) {
        if ((i + 1) % 15 == 0 && m_restart)
            m_restart();

        const QString &path = paths.at(i);
        if (path.isEmpty() || known.contains(path))
            continue;
        known.insert(path);

        auto *row = new SourceItem;
        row->setText(NameColumn, files::fileNamePart(path));
        row->setData(NameColumn, PathRole, path);
        row->setIcon(NameColumn, iconFor(path));
        row->setText(SizeColumn, sizeText(files::fileFacts(path).value_or(files::FileFacts()).size, locale));
        row->setTextAlignment(SizeColumn, Qt::AlignRight | Qt::AlignVCenter);
        row->setText(DimensionColumn, dimensionText(m_measure ? m_measure(path) : QSize()));
        row->setData(NameColumn, GoneRole, !files::pathExists(path));
        rows.append(row);
    }

    addTopLevelItems(rows);
    if (m_activeSortColumn >= 0)
        sortItems(m_activeSortColumn, m_activeSortOrder);
    autoSizeColumns();
    return static_cast<int>(rows.size());
}

QStringList SourceList::paths() const
{
    QStringList result;
    result.reserve(topLevelItemCount());
    for (int i = 0; i < topLevelItemCount(); ++i)
        result.append(topLevelItem(i)->data(NameColumn, PathRole).toString());
    return result;
}

QString SourceList::pathAt(int row) const
{
    const QTreeWidgetItem *item = topLevelItem(row);
    return item ? item->data(NameColumn, PathRole).toString() : QString();
}

int SourceList::count() const
{
    return topLevelItemCount();
}

int SourceList::refreshAvailability()
{
    int changed = 0;
    for (int i = 0; i < topLevelItemCount(); ++i) {
        QTreeWidgetItem *row = topLevelItem(i);
        const bool gone = !files::pathExists(row->data(NameColumn, PathRole).toString());
        if (row->data(NameColumn, GoneRole).toBool() != gone) {
            row->setData(NameColumn, GoneRole, gone);
            ++changed;
        }
    }
    return changed;
}

bool SourceList::isGone(int row) const
{
    const QTreeWidgetItem *item = topLevelItem(row);
    return item && item->data(NameColumn, GoneRole).toBool();
}

void SourceList::removeSelected()
{
    for (int i = topLevelItemCount() - 1; i >= 0; --i) {
        if (topLevelItem(i)->isSelected())
            delete takeTopLevelItem(i);
    }
    m_previewItem = nullptr;
    showPreview();
}

void SourceList::removeAll()
{
    m_previewItem = nullptr;
    clear();
}

QTreeWidgetItem *SourceList::previewItem() const
{
    return m_previewItem;
}

void SourceList::forgetPreviewItem()
{
    m_previewItem = nullptr;
}

void SourceList::showPreview()
{
    Q_EMIT previewRequested(m_previewItem ? m_previewItem->data(NameColumn, PathRole).toString() : QString());
}

QString SourceList::countText(int count)
{
    if (count <= 0)
        return QStringLiteral("Keine Bilder");
    if (count == 1)
        return QStringLiteral("1 Bild");
    return QString::number(count) + QStringLiteral(" Bilder");
}

QString SourceList::sizeText(qint64 bytes, const QLocale &locale)
{
    const double kilobytes = std::max(static_cast<double>(bytes) / 1024.0, 1.0);
    // nearbyint rounds halves to even, like every other rounding here.
    const auto whole = static_cast<qlonglong>(std::nearbyint(kilobytes));
    QLocale grouped = locale;
    grouped.setNumberOptions(grouped.numberOptions() & ~QLocale::OmitGroupSeparator);
    return grouped.toString(whole) + QStringLiteral(" KB");
}

QString SourceList::dimensionText(QSize size)
{
    const int width = size.isValid() ? size.width() : 0;
    const int height = size.isValid() ? size.height() : 0;
    return QString::number(width) + QStringLiteral(" x ") + QString::number(height);
}

void SourceList::mousePressEvent(QMouseEvent *event)
{
    m_previewItem = itemAt(event->position().toPoint());
    if (!m_previewItem)
        Q_EMIT previewRequested(QString());
    QTreeWidget::mousePressEvent(event);
}

void SourceList::keyPressEvent(QKeyEvent *event)
{
    // Moving through the list with the keyboard previews like a click.
    QTreeWidgetItem *before = currentItem();
    QTreeWidget::keyPressEvent(event);
    QTreeWidgetItem *after = currentItem();
    if (after && after != before)
        onItemClicked(after);
}

void SourceList::dragEnterEvent(QDragEnterEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
    else
        event->ignore();
}

void SourceList::dragMoveEvent(QDragMoveEvent *event)
{
    if (event->mimeData()->hasUrls())
        event->acceptProposedAction();
    else
        event->ignore();
}

void SourceList::dropEvent(QDropEvent *event)
{
    if (!event->mimeData()->hasUrls()) {
        event->ignore();
        return;
    }
    QStringList names;
    const QList<QUrl> urls = event->mimeData()->urls();
    for (const QUrl &url : urls) {
        if (url.isLocalFile())
            names.append(localPathOf(url));
    }
    event->acceptProposedAction();
    // A dropped folder brings its photos, as "Verzeichnis laden" would.
    addSourceFiles(files::expandFolders(names, false));
}

void SourceList::onItemClicked(QTreeWidgetItem *item)
{
    m_previewItem = item;
    if (selectedItems().size() < 2)
        showPreview();
}

void SourceList::onHeaderClicked(int column)
{
    if (column < 0 || column >= static_cast<int>(m_columnSortOrder.size()))
        return;
    const Qt::SortOrder order = m_columnSortOrder[static_cast<size_t>(column)];
    m_activeSortColumn = column;
    m_activeSortOrder = order;
    header()->setSortIndicatorShown(true);
    header()->setSortIndicator(column, order);
    sortItems(column, order);
    // The arrow takes room in the header; the columns make room for it.
    autoSizeColumns();
    m_columnSortOrder[static_cast<size_t>(column)] =
        order == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder;
}

void SourceList::autoSizeColumns()
{
    setUpdatesEnabled(false);
    for (int c = 0; c < columnCount(); ++c)
        resizeColumnToContents(c);
    setUpdatesEnabled(true);
}

QIcon SourceList::iconFor(const QString &path)
{
    // Looked up by name only: no file is opened to choose a symbol.
    static const QMimeDatabase mimeDatabase;
    const QMimeType type = mimeDatabase.mimeTypeForFile(path, QMimeDatabase::MatchExtension);
    auto it = m_iconCache.find(type.name());
    if (it != m_iconCache.end())
        return it.value();

    QIcon icon = QIcon::fromTheme(type.iconName());
    if (icon.isNull())
        icon = QIcon::fromTheme(type.genericIconName());
    if (icon.isNull()) {
        static const QFileIconProvider provider;
        icon = provider.icon(QFileIconProvider::File);
    }
    m_iconCache.insert(type.name(), icon);
    return icon;
}

} // namespace valtrona
