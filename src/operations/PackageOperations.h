#pragma once

#include "core/brew/BrewService.h"
#include "operations/OperationReport.h"
#include "operations/package/PackageRun.h"

namespace larkspur {

class InstalledPackages;
class InventoryQueries;
class KegRollback;
class Logger;
class OperationHistory;
class Preferences;
class SnapshotRestore;
class UpgradeSafeguard;

/// Does the work of an operation request: takes the lock for the whole of it, runs brew for one package after
/// the other, goes on after a package that failed, and looks at the end whether what Homebrew reported is so.
class PackageOperations {
  public:
    struct Parts {
        BrewService &brew;
        InventoryQueries &queries;
        Preferences &preferences;
        Logger &logger;
        UpgradeSafeguard &safeguard;
        KegRollback &rollback;
        SnapshotRestore &restore;
        OperationHistory &history;
        QString movedAsideNote; ///< file for what stands aside during a reinstallation
        QString heldPinNote;    ///< file for the package that is unpinned during its upgrade
    };
    explicit PackageOperations(Parts parts);

    /// Fails if the lock was never got or brew could not be run; what failed inside brew is told by the
    /// output. `onBegin` is called once the lock is held.
    Task<Result<OperationReport>> perform(OperationRequest request, OperationContext context,
                                          std::function<void()> onBegin = {});

  private:
    /// One operation that holds the lock.
    struct Work {
        BrewSession *session;
        OperationRequest request;
        OperationContext context;
        QString prefix; ///< of Homebrew; empty where unknown
    };
    Task<Result<OperationReport>> performLocked(Work work);
    Task<Result<OperationReport>> performGuarded(Work work, const InstalledPackages *before);
    Task<Result<OperationReport>> performAll(Work work);
    Task<Result<bool>> performOne(Work work, PackageTarget package, OperationReport *report);
    Task<Result<OperationReport>> rollBackAll(Work work);
    Task<> concludeUpgrade(Work work, const InstalledPackages *before, const InstalledPackages *after,
                           Result<OperationReport> *report);
    PackageRun::Setting settingOf(const Work &work) const;
    Task<QStringList> servicesToRestart(QStringList upgraded, StopToken stop);

    Parts m_parts;
};

} // namespace larkspur
