#pragma once

#include "operations/casks/CaskSetting.h"

namespace larkspur {

class InventoryQueries;
class KegPreservationManager;
class KegRollback;
class OperationPlanner;
class Preferences;
class SnapshotManager;
class UpgradeSafeguard;

/// What operations on packages are made with. Outlives every operation.
struct PackageServices {
    InventoryQueries &queries;
    const Preferences &preferences;
    OperationPlanner &planner;
    UpgradeSafeguard &safeguard;
    KegPreservationManager &kegs;
    KegRollback &rollback;
    SnapshotManager &snapshots;
    CaskSetting casks; ///< `prefix` is not set: it is the work's

    CaskSetting casksAt(const QString &prefix) const {
        CaskSetting setting = casks;
        setting.prefix = prefix;
        return setting;
    }
};

} // namespace larkspur
