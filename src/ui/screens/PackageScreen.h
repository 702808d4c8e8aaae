#pragma once

#include "ui/Screen.h"
#include "ui/widgets/PackageActions.h"

#include <QTimer>

class QSplitter;

namespace larkspur {
class InventoryQueries;
class InventoryState;
class TaskScope;
} // namespace larkspur

namespace larkspur::ui {

class PackageDetails;
class PackageTable;
class ScreenHeader;

/// A list of packages at the left, the selected one's details at the right: the shape of every package
/// screen.
class PackageScreen : public Screen {
    Q_OBJECT
  public:
    PackageScreen(const QString &title, const QString &filterHint, InventoryState &inventory,
                  InventoryQueries &queries, PackageActions::Services actions);

    QLineEdit *filterField() const override;
    bool showPackage(const PackageId &id) override;

  protected:
    /// Brings the rows up to date from the inventory; called when the screen is shown and when the inventory
    /// changes.
    virtual void reload() = 0;
    void showEvent(QShowEvent *event) override;
    /// At the next turn of the event loop, once for however many changes, and only while shown.
    void reloadSoon();

    InventoryState &inventory() { return m_inventory; }
    PackageActions &actions() { return m_actions; }
    ScreenHeader *header() { return m_header; }
    PackageTable *table() { return m_table; }
    QList<PackageRow> rows(PackageSelection selection) const;
    /// " – out of date, refreshing" and the like, for the header's line.
    QString freshness() const;

  private:
    InventoryState &m_inventory;
    PackageActions m_actions;
    ScreenHeader *m_header;
    PackageTable *m_table;
    PackageDetails *m_details;
    QTimer m_reloadTimer;
};

} // namespace larkspur::ui
