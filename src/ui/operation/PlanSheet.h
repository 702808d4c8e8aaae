#pragma once

#include "operations/run/Operation.h"

#include <QDialog>

class QCheckBox;
class QLabel;
class QPushButton;
class QTreeWidget;

namespace larkspur {
class Preferences;
class TaskScope;
} // namespace larkspur

namespace larkspur::ui {

/// Shows what an operation that asks beforehand will do and lets the person start it or think again.
class PlanSheet : public QDialog {
    Q_OBJECT
  public:
    struct Services {
        Preferences &preferences;
        TaskScope &tasks;
    };

    PlanSheet(Services services, OperationPtr operation, QWidget *parent = nullptr);
    ~PlanSheet() override;

    /// What it is about; it knows what the person was shown.
    const OperationPtr &operation() const { return m_operation; }

  private:
    void show(const OperationPlan &plan);
    void addRemarks(const OperationPlan &plan);

    OperationPtr m_operation;
    PlanQuestion m_question;
    StopSource m_stop; ///< of the question to Homebrew
    QLabel *m_state;
    QTreeWidget *m_changes;
    QLabel *m_remarks;
    QCheckBox *m_again;
    QPushButton *m_start;
};

} // namespace larkspur::ui
