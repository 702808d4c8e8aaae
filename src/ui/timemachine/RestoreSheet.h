#pragma once

#include "operations/snapshots/RestoreOrder.h"
#include "operations/snapshots/RestorePlan.h"

#include <QDialog>

class QCheckBox;

namespace larkspur::ui {

class DiffView;

/// What restoring a restore point would change, with the choices that there are.
class RestoreSheet : public QDialog {
    Q_OBJECT
  public:
    RestoreSheet(const Snapshot &snapshot, RestorePlan plan, QWidget *parent = nullptr);

    RestoreOrder order() const;

  private:
    void update();

    QUuid m_snapshot;
    RestorePlan m_plan;
    QCheckBox *m_removeAdded;
    QCheckBox *m_rollBack;
    DiffView *m_changes;
};

} // namespace larkspur::ui
