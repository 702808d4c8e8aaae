#pragma once

#include "core/brew/BrewService.h"
#include "operations/OperationRequest.h"

namespace larkspur {

class InstalledPackages;
class KegPreservationManager;
class Logger;
class SnapshotManager;

/// What is done before an upgrade so that it can be undone, and after one that broke off.
class UpgradeSafeguard {
  public:
    struct Parts {
        SnapshotManager &snapshots;
        KegPreservationManager &kegs;
        Logger &logger;
    };
    explicit UpgradeSafeguard(Parts parts);

    struct Upgrade {
        BrewSession *session;
        OperationRequest request;
        OperationContext context;
        QString prefix;
    };
    /// Takes a restore point and preserves every keg that the upgrade will replace. What fails is said and
    /// logged, and the upgrade goes on. False if something has failed.
    Task<bool> prepare(Upgrade upgrade, const InstalledPackages *installed);

    /// Links what was linked before and has lost its links: Homebrew that is killed during an upgrade leaves
    /// a formula so.
    Task<> relinkLost(Upgrade upgrade, const InstalledPackages *before, const InstalledPackages *after);

  private:
    Task<QStringList> replacedFormulae(Upgrade upgrade);

    Parts m_parts;
};

} // namespace larkspur
