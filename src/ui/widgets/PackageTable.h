#pragma once

#include "ui/models/PackageTableModel.h"

#include <QStackedWidget>
#include <QTableView>

namespace larkspur::ui {

class EmptyState;
class PackageActions;

/// A list of packages with selection, context menu and an empty state. Keeps selection and place when its
/// rows are replaced.
class PackageTable : public QStackedWidget {
    Q_OBJECT
  public:
    PackageTable(PackageActions &actions, const QString &accessibleName, QWidget *parent = nullptr);

    void setRows(QList<PackageRow> rows);
    void setFilter(const QString &text);
    void setOrder(PackageSortOrder order);
    PackageTableModel &model() { return m_model; }
    EmptyState *emptyState() { return m_empty; }
    QTableView *view() { return m_view; }

    QList<PackageRow> selectedRows() const;
    std::optional<PackageRow> currentRow() const;
    void select(const PackageId &id);

  Q_SIGNALS:
    void currentChanged();
    void rowsChanged();

  private:
    /// Changes the model through `change`, then puts selection and current row back.
    template <typename Change>
    void keepingPlace(Change change);
    void showMenu(QPoint position);

    PackageActions &m_actions;
    PackageTableModel m_model;
    QTableView *m_view;
    EmptyState *m_empty;
};

} // namespace larkspur::ui
