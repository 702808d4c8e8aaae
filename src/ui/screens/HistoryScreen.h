#pragma once

#include "ui/screens/RecordTableScreen.h"
#include "ui/widgets/PackageActions.h"

class QPushButton;

namespace larkspur::ui {

/// What was installed, upgraded and removed, the newest first, and the way back where there is one.
class HistoryScreen : public RecordTableScreen {
    Q_OBJECT
  public:
    HistoryScreen(InventoryState &inventory, PackageActions::Services actions);

  protected:
    QList<QList<QStandardItem *>> rows() const override;
    QString subtitle() const override;
    void showEmptyState(EmptyState *empty) const override;
    void reload() override;
    void onSelectionChanged() override;

  private:
    std::optional<PackageRow> selectedPackage() const;

    PackageActions m_actions;
    QPushButton *m_rollBack;
};

} // namespace larkspur::ui
