#pragma once

#include "core/brew/BrewService.h"
#include "operations/OperationReport.h"
#include "operations/installed/InstalledPackages.h"
#include "operations/package/PackageRun.h"

namespace larkspur {

class InventoryQueries;
class KegRollback;
class Logger;
class LostApplications;
class OperationHistory;
class Preferences;
class Recovery;
class SnapshotRestore;
class UpgradeSafeguard;

/// Does the work of an operation request: takes the lock for the whole of it, runs brew for one package after
/// the other, goes on after a package that failed, and looks at the end whether what Homebrew reported is so.
class PackageOperations {
  public:
    struct Parts {
        Recovery &recovery;
        InventoryQueries &queries;
        Preferences &preferences;
        Logger &logger;
        UpgradeSafeguard &safeguard;
        KegRollback &rollback;
        SnapshotRestore &restore;
        OperationHistory &history;
        CaskSetting casks;
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
    using Installed = std::expected<InstalledPackages, QString>;
    Task<LostApplications> noteApplications(Work work, const Installed *before);
    Task<Result<bool>> performGuarded(Work work, const Installed *before, OperationReport *report);
    bool check(const Work &work, const Installed &before, const Installed &after,
               OperationReport *report) const;
    Task<Result<bool>> performAll(Work work, OperationReport *report);
    Task<Result<bool>> performOne(Work work, PackageTarget package, OperationReport *report);
    Task<Result<bool>> rollBackAll(Work work, OperationReport *report);
    Task<> concludeUpgrade(Work work, const InstalledPackages *before, const InstalledPackages *after,
                           bool cameToEnd, OperationReport *report);
    PackageRun::Setting settingOf(const Work &work) const;
    Task<QStringList> servicesToRestart(QStringList upgraded, StopToken stop);

    Parts m_parts;
};

} // namespace larkspur
