#pragma once

#include <QSize>
#include <QStringList>
#include <QTreeWidget>

#include <array>
#include <functional>

class QDragEnterEvent;
class QDragMoveEvent;
class QDropEvent;
class QKeyEvent;
class QLocale;
class QMouseEvent;

namespace valtrona {

/// The list of source images on the first card: one row per file with
/// name, size and pixel dimensions, keyed by the exact path text. Dropped
/// files are added as they are; a dropped folder adds its photos as
/// "Verzeichnis laden" collects them. Sorting alternates per column; the
/// preview follows clicks and presses.
class SourceList : public QTreeWidget
{
    Q_OBJECT

public:
    enum Column { NameColumn = 0, SizeColumn = 1, DimensionColumn = 2, TrailingColumn = 3 };

    /// Pixel size from the file's header; an empty size when unreadable.
    using Measure = std::function<QSize(const QString &path)>;
    /// Gives the imaging layer's resources back; called every 15 files.
    using Restart = std::function<void()>;

    explicit SourceList(QWidget *parent = nullptr);

    void setMeasure(Measure measure);
    void setRestart(Restart restart);

    /// Adds one row per path, in order; paths already listed are dropped.
    /// Shows the wait cursor while it works. Returns the number of rows added.
    int addSourceFiles(const QStringList &paths);

    /// Full paths of all rows, in list order.
    QStringList paths() const;
    /// Full path of the row at position row (0-based); empty when out of range.
    QString pathAt(int row) const;
    int count() const;

    /// Looks again whether each row's file is there (a stat per row); a
    /// row whose file was deleted or moved shows greyed and says so in its
    /// tooltip. Returns the number of rows that changed.
    int refreshAvailability();
    /// True when the row's file was not there at the last look.
    bool isGone(int row) const;

    /// Removes the selected rows, clears the preview row and asks the
    /// preview to clear.
    void removeSelected();
    /// Removes every row without asking; clears the preview row.
    void removeAll();

    /// The row the preview shows or is to show; null when none.
    QTreeWidgetItem *previewItem() const;
    /// Forgets the preview row (the preview itself is left alone).
    void forgetPreviewItem();
    /// Asks the preview to show previewItem() (or to clear).
    void showPreview();

    /// "Keine Bilder", "1 Bild", "n Bilder".
    static QString countText(int count);
    /// Length in KB, at least 1, grouped by the locale, with " KB".
    static QString sizeText(qint64 bytes, const QLocale &locale);
    /// "w x h"; "0 x 0" for an empty size.
    static QString dimensionText(QSize size);

Q_SIGNALS:
    /// The preview should show path; an empty path clears it.
    void previewRequested(const QString &path);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void onItemClicked(QTreeWidgetItem *item);
    void onHeaderClicked(int column);
    void autoSizeColumns();
    QIcon iconFor(const QString &path);

    Measure m_measure;
    Restart m_restart;
    QTreeWidgetItem *m_previewItem = nullptr;
    std::array<Qt::SortOrder, 65> m_columnSortOrder;
    int m_activeSortColumn = -1;
    Qt::SortOrder m_activeSortOrder = Qt::AscendingOrder;
    QHash<QString, QIcon> m_iconCache;
};

} // namespace valtrona
