#pragma once

#include "core/async/TaskScope.h"
#include "operations/OperationRun.h"

#include <QObject>

namespace larkspur {

class InventoryQueries;
class Logger;
class Recovery;
class SudoAuth;

/// Runs operations of whatever kind, one after another in the order of asking, under the operation lock, and
/// keeps the object that tells about each. Everything that changes what is installed goes through it.
class OperationCenter : public QObject {
    Q_OBJECT
  public:
    struct Parts {
        Recovery &recovery; ///< the way to the lock
        InventoryQueries &queries;
        SudoAuth &sudoAuth;
        TaskScope &tasks;
        Logger &logger;
    };
    explicit OperationCenter(Parts parts);

    /// Starts an operation, or queues it behind the one that runs. The run stays until the center is
    /// destroyed or its successor has finished.
    OperationRun *start(OperationPtr operation);

    /// The same in two steps, for who wants to listen before anything happens.
    OperationRun *create(OperationPtr operation);
    void start(OperationRun *run);

    /// Runs that have not finished, the oldest first.
    QList<OperationRun *> unfinished() const;
    /// The one to show: the oldest unfinished, else the one that finished last; null before the first.
    OperationRun *shown() const;

    /// Asks all to end; asked again, those that are ending to leave what they put right for later.
    void stopAll();

    /// Operations that start from now on run on a terminal where that shows more; on by default.
    void setWantsRedraws(bool wants) { m_wantsRedraws = wants; }

  Q_SIGNALS:
    void started(larkspur::OperationRun *run);
    /// The lock is held: from now on the installed set may change.
    void packagesWillChange();
    void finished(larkspur::OperationRun *run);

  private:
    Task<> perform(OperationRun *run);
    Task<OperationReport> performLocked(OperationRun *run, OperationContext context);
    OperationContext contextFor(OperationRun *run);
    void forgetOldRuns();

    Parts m_parts;
    QList<OperationRun *> m_runs;
    bool m_wantsRedraws = true;
};

} // namespace larkspur
