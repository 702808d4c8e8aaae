#pragma once

#include "core/async/Task.h"
#include "operations/snapshots/Snapshot.h"
#include "ui/Screen.h"

class QLabel;
class QPushButton;
class QStackedWidget;
class QTreeWidget;

namespace larkspur {
class KegPreservationManager;
class OperationCenter;
struct PackageServices;
class SnapshotManager;
class TaskScope;
} // namespace larkspur

namespace larkspur::ui {

class DiffView;
class EmptyState;
class PackagesChart;
class ScreenHeader;

/// The restore points in their order, what has changed since the chosen one, and the way back to it.
class TimeMachineScreen : public Screen {
    Q_OBJECT
  public:
    struct Services {
        SnapshotManager &snapshots;
        KegPreservationManager &kegs;
        OperationCenter &operations;
        const PackageServices &packages;
        TaskScope &tasks;
    };
    explicit TimeMachineScreen(Services services);

    QLineEdit *filterField() const override;

  protected:
    void showEvent(QShowEvent *event) override;

  private:
    QWidget *makeTimeline();
    QWidget *makeDetails();
    void reload();
    void applyFilter();
    void onSelected();
    /// Runs a change of the files and says so if it failed.
    void change(Task<bool> task, const QString &failure);
    const Snapshot *selected() const;
    /// A line above the list.
    void say(const QString &text);
    void compareWithNow();
    void showNow(const Snapshot &now);
    void take();
    void restore();
    void compare();
    void removeSelected();
    void removeAll();
    void confirm(const QString &title, const QString &text, const std::function<void()> &action);

    Services m_services;
    ScreenHeader *m_header;
    QStackedWidget *m_stack;
    EmptyState *m_empty;
    PackagesChart *m_chart;
    QTreeWidget *m_timeline;
    QLabel *m_title;
    QLabel *m_problem;
    DiffView *m_changes;
    QPushButton *m_take;
    QPushButton *m_compare;
    QPushButton *m_removeAll;
    QPushButton *m_restore;
    QPushButton *m_remove;
    std::optional<Snapshot> m_now; ///< what is installed, read when the screen is shown
};

} // namespace larkspur::ui
