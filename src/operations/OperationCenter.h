#pragma once

#include "core/async/TaskScope.h"
#include "operations/OperationRun.h"
#include "operations/PackageOperations.h"

#include <QObject>

namespace larkspur {

class SudoAuth;

/// Starts operations and keeps the object that tells about each. They run one after another, in the order of
/// asking.
class OperationCenter : public QObject {
    Q_OBJECT
  public:
    OperationCenter(PackageOperations &operations, SudoAuth &sudoAuth, TaskScope &scope);

    /// Starts an operation, or queues it behind the one that runs. The run stays until the center is
    /// destroyed or its successor has finished.
    OperationRun *start(OperationRequest request);

    /// The same in two steps, for who wants to listen before anything happens.
    OperationRun *create(OperationRequest request);
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
    void forgetOldRuns();

    PackageOperations &m_operations;
    SudoAuth &m_sudoAuth;
    TaskScope &m_scope;
    QList<OperationRun *> m_runs;
    bool m_wantsRedraws = true;
};

} // namespace larkspur
