#pragma once

#include "operations/snapshots/Snapshot.h"

namespace larkspur {

class KegPreservationManager;

/// What restoring a restore point would change.
struct RestorePlan {
    QStringList missingTaps;
    QList<SnapshotEntry> missing;          ///< will be installed again, in their newest versions
    QList<SnapshotEntry> added;            ///< installed since; left alone or removed, as the person chooses
    QList<SnapshotVersionChange> rollable; ///< formulae whose keg of then is preserved
    QList<SnapshotVersionChange> notRollable; ///< casks, and formulae without a copy

    bool isEmpty() const {
        return missingTaps.isEmpty() && missing.isEmpty() && added.isEmpty() && rollable.isEmpty() &&
               notRollable.isEmpty();
    }
};

RestorePlan planRestore(const Snapshot &snapshot, const Snapshot &now, const KegPreservationManager &kegs);

} // namespace larkspur
