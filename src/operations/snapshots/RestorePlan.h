#pragma once

#include "operations/snapshots/RestoreOrder.h"
#include "operations/snapshots/Snapshot.h"

namespace larkspur {

class KegPreservationManager;

/// What restoring a restore point would change.
struct RestorePlan {
    QStringList missingTaps = {};
    QList<SnapshotEntry> missing = {}; ///< will be installed again, in their newest versions
    QList<SnapshotEntry> added = {};   ///< installed since; left alone or removed, as the person chooses
    QList<SnapshotVersionChange> rollable = {};    ///< formulae whose keg of then is preserved
    QList<SnapshotVersionChange> notRollable = {}; ///< casks, and formulae without a copy

    /// Installed since, as it seems, but never removed: a list that had to leave something out cannot tell
    /// what was not in it.
    QList<SnapshotEntry> kept = {};
    QStringList refusals = {}; ///< what of the restore point is left out and what follows, in words

    /// Whether nothing is to be done; something may still have been left out.
    bool changesNothing() const {
        return missingTaps.isEmpty() && missing.isEmpty() && added.isEmpty() && rollable.isEmpty() &&
               notRollable.isEmpty();
    }
    bool isEmpty() const { return changesNothing() && refusals.isEmpty(); }
};

/// What somebody has agreed to who was shown this plan.
RestoreAgreement agreementTo(const RestorePlan &plan);

/// Takes out of the plan what nobody has agreed to. Returns it, in the words of the output.
QStringList keepWithin(const RestoreOrder &order, RestorePlan *plan);

RestorePlan planRestore(const Snapshot &snapshot, const Snapshot &now, const KegPreservationManager &kegs);

} // namespace larkspur
