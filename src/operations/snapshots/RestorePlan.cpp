#include "operations/snapshots/RestorePlan.h"

#include "operations/kegs/KegPreservationManager.h"

namespace larkspur {

RestorePlan planRestore(const Snapshot &snapshot, const Snapshot &now, const KegPreservationManager &kegs) {
    RestorePlan plan;
    for (const QString &tap : snapshot.taps)
        if (!now.taps.contains(tap))
            plan.missingTaps.append(tap);
    const SnapshotDiff diff = compareSnapshots(snapshot, now);
    plan.missing = diff.removed;
    plan.added = diff.added;
    for (const SnapshotVersionChange &change : diff.changed) {
        const bool isRollable =
            !change.entry.isCask && kegs.canRollBack(change.entry.name, change.entry.version);
        (isRollable ? plan.rollable : plan.notRollable).append(change);
    }
    return plan;
}

} // namespace larkspur
