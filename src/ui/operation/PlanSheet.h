#pragma once

#include "core/async/Task.h"
#include "operations/plan/OperationPlan.h"

#include <QDialog>

class QCheckBox;
class QLabel;
class QPushButton;
class QTreeWidget;

namespace larkspur {
class OperationPlanner;
class Preferences;
class TaskScope;
} // namespace larkspur

namespace larkspur::ui {

/// Shows what an upgrade or a removal will do and lets the person start it or think again.
class PlanSheet : public QDialog {
    Q_OBJECT
  public:
    struct Services {
        OperationPlanner &planner;
        Preferences &preferences;
        TaskScope &tasks;
    };

    PlanSheet(Services services, OperationRequest request, QWidget *parent = nullptr);
    ~PlanSheet() override;

    /// The request, with what Homebrew has told about it.
    const OperationRequest &request() const { return m_request; }

  private:
    void show(const OperationPlan &plan);
    void addRemarks(const OperationPlan &plan);

    OperationRequest m_request;
    StopSource m_stop; ///< of the question to Homebrew
    QLabel *m_state;
    QTreeWidget *m_changes;
    QLabel *m_remarks;
    QCheckBox *m_again;
    QPushButton *m_start;
};

} // namespace larkspur::ui
