#pragma once

#include "ui/Screen.h"

#include <QStackedWidget>
#include <QStandardItemModel>
#include <QTableView>
#include <QTimer>

namespace larkspur {
class InventoryState;
}

namespace larkspur::ui {

class EmptyState;
class ScreenHeader;

/// A plain table of records with a filter, for the lists that are not packages.
class RecordTableScreen : public Screen {
    Q_OBJECT
  public:
    RecordTableScreen(const QString &title, const QString &filterHint, const QStringList &columns,
                      InventoryState &inventory);

    QLineEdit *filterField() const override;

  protected:
    /// One list of cells per record.
    virtual QList<QList<QStandardItem *>> rows() const = 0;
    virtual QString subtitle() const = 0;
    virtual void showEmptyState(EmptyState *empty) const = 0;
    virtual void reload();
    void showEvent(QShowEvent *event) override;
    virtual void onSelectionChanged() {}
    /// At the next turn of the event loop, once for however many changes, and only while shown.
    void reloadSoon();

    InventoryState &inventory() const { return m_inventory; }
    void addBanner(QWidget *banner);
    /// A button in the header.
    void addControl(QWidget *control);
    /// Until the person sorts otherwise.
    void sortFirstBy(int column, Qt::SortOrder order);
    /// Of the selected record's first cell; invalid if none is selected.
    QVariant currentData(int role) const;

  private:
    void applyFilter();

    InventoryState &m_inventory;
    ScreenHeader *m_header;
    QStandardItemModel m_model;
    QStackedWidget *m_stack;
    QTableView *m_view;
    EmptyState *m_empty;
    QTimer m_reloadTimer;
};

} // namespace larkspur::ui
