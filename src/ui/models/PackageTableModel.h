#pragma once

#include "ui/models/PackageRow.h"

#include <QAbstractTableModel>

namespace larkspur::ui {

/// Packages as rows of a table, filtered and sorted here: one pass each, no second model on top.
class PackageTableModel : public QAbstractTableModel {
    Q_OBJECT
  public:
    enum Column { NameColumn, VersionColumn, SizeColumn, DateColumn, ColumnCount };
    enum Role { SortRole = Qt::UserRole };

    using QAbstractTableModel::QAbstractTableModel;

    void setRows(QList<PackageRow> rows);
    const QList<PackageRow> &allRows() const { return m_all; }
    void setFilter(const QString &text);
    void setOrder(PackageSortOrder order);
    PackageSortOrder order() const { return m_order; }

    const PackageRow &row(int index) const { return m_shown[index]; }
    /// Row of a package, or -1.
    int indexOf(const PackageId &id) const;
    qsizetype totalRows() const { return m_all.size(); }
    qint64 largestSize() const { return m_largestSize; }
    /// Whether rows carry a mark for an update; a list of nothing but updates needs none.
    void setMarksUpdates(bool marks) { m_marksUpdates = marks; }
    bool marksUpdates() const { return m_marksUpdates; }
    /// Whether rows carry a mark for being installed, where not all are.
    void setMarksInstalled(bool marks) { m_marksInstalled = marks; }
    bool marksInstalled() const { return m_marksInstalled; }
    /// Leaves the rows in the order in which they are set, until the person sorts by a column.
    void keepGivenOrder() { m_sortColumn = -1; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    void sort(int column, Qt::SortOrder order) override;

  private:
    void rebuild();
    void sortShown();

    QList<PackageRow> m_all;
    QList<PackageRow> m_shown;
    QString m_filter;
    PackageSortOrder m_order = PackageSortOrder::Name;
    Qt::SortOrder m_direction = Qt::AscendingOrder;
    int m_sortColumn = NameColumn;
    qint64 m_largestSize = 0;
    bool m_marksUpdates = true;
    bool m_marksInstalled = false;
};

QString sizeText(qint64 bytes);

} // namespace larkspur::ui
