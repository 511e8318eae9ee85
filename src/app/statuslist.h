#pragma once

#include <QTreeWidget>

#include "batch/conversionhost.h"

namespace valtrona {

/// The run's status list on the third card: one column "Status", one row
/// per report, the newest selected and scrolled into view.
class StatusList : public QTreeWidget
{
    Q_OBJECT

public:
    explicit StatusList(QWidget *parent = nullptr);

    /// Appends a row with the symbol of kind and path as its tag.
    void addStatusRow(const QString &text, StatusKind kind, const QString &path);

    /// Gives the newest row a tooltip (why a file failed).
    void setLastRowToolTip(const QString &text);

    /// Text, symbol key and tag of the row at position row (0-based).
    QString rowText(int row) const;
    QString rowKey(int row) const;
    QString rowPath(int row) const;

Q_SIGNALS:
    /// A row was appended (after it got its text, symbol and tag).
    void rowAdded(const QString &text);
    /// A row with this tag was clicked (the tag may be empty).
    void rowClicked(const QString &path);
};

} // namespace valtrona
