#pragma once

#include "core/brew/BrewService.h"
#include "operations/OperationReport.h"
#include "operations/package/PackageRun.h"
#include "operations/snapshots/RestorePlan.h"

namespace larkspur {

class KegRollback;
class OperationHistory;
class SnapshotManager;

/// Restores a restore point under one hold of the lock: taps, missing packages, removals, versions. What is
/// left to do follows from what is installed, so that one that was interrupted can be started again.
class SnapshotRestore {
  public:
    struct Parts {
        SnapshotManager &snapshots;
        KegPreservationManager &kegs;
        KegRollback &rollback;
        OperationHistory &history;
    };
    explicit SnapshotRestore(Parts parts);

    /// Adds what became of each package to the report. Fails if brew could not be run or was stopped; the
    /// output then says what was done until then.
    Task<Result<bool>> run(RestoreOrder order, PackageRun::Setting setting, OperationReport *report);

  private:
    struct Work {
        PackageRun::Setting setting;
        OperationReport *report = nullptr;
        QStringList done = {}; ///< in the words of the output
    };
    Task<Result<bool>> addTaps(QStringList taps, Work *work);
    Task<Result<bool>> perform(OperationKind kind, QList<SnapshotEntry> entries, Work *work);
    Task<Result<bool>> removeAdded(QList<SnapshotEntry> added, Work *work);
    Task<Result<bool>> rollBack(QList<SnapshotVersionChange> changes, Work *work);
    Task<Result<bool>> runSteps(RestoreOrder order, RestorePlan plan, Work *work);

    Parts m_parts;
};

} // namespace larkspur
