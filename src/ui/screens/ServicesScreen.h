#pragma once

#include "ui/screens/RecordTableScreen.h"

namespace larkspur::ui {

/// The background services of installed formulae and how they are.
class ServicesScreen : public RecordTableScreen {
    Q_OBJECT
  public:
    explicit ServicesScreen(InventoryState &inventory);

  protected:
    QList<QList<QStandardItem *>> rows() const override;
    QString subtitle() const override;
    void showEmptyState(EmptyState *empty) const override;
};

} // namespace larkspur::ui
