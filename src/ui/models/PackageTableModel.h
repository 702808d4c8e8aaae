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
    void setFilter(const QString &text);
    void setOrder(PackageSortOrder order);
    PackageSortOrder order() const { return m_order; }

    const PackageRow &row(int index) const { return m_shown[index]; }
    /// Row of a package, or -1.
    int indexOf(const PackageId &id) const;
    qsizetype totalRows() const { return m_all.size(); }
    qint64 largestSize() const { return m_largestSize; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    void sort(int column, Qt::SortOrder order) override;

  private:
    void rebuild();

    QList<PackageRow> m_all;
    QList<PackageRow> m_shown;
    QString m_filter;
    PackageSortOrder m_order = PackageSortOrder::Name;
    Qt::SortOrder m_direction = Qt::AscendingOrder;
    int m_sortColumn = NameColumn;
    qint64 m_largestSize = 0;
};

QString sizeText(qint64 bytes);

} // namespace larkspur::ui
