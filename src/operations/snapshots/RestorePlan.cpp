#include "operations/snapshots/RestorePlan.h"

#include "operations/kegs/KegPreservationManager.h"

namespace larkspur {

namespace {

/// Whether the restore point may have meant packages that it does not name. Which ones nobody can tell: an
/// entry that was damaged need not look like what it was.
bool isUnsure(const Snapshot &snapshot, bool isCask) {
    return snapshot.hasRefused(isCask ? RefusedEntry::Kind::Cask : RefusedEntry::Kind::Formula);
}

PackageTarget targetOf(const SnapshotEntry &entry) {
    return {.name = entry.name, .isCask = entry.isCask};
}

PackageTarget targetOf(const SnapshotVersionChange &change) {
    return targetOf(change.entry);
}

template <typename Entry>
QList<PackageTarget> targetsOf(const QList<Entry> &entries) {
    QList<PackageTarget> targets;
    for (const Entry &entry : entries)
        targets.append(targetOf(entry));
    return targets;
}

/// Takes out of the list what was not agreed to; it is named in `left`.
template <typename Entry>
void keepAgreed(const QList<PackageTarget> &agreed, QList<Entry> *entries, QStringList *left) {
    entries->removeIf([&](const Entry &entry) {
        const PackageTarget target = targetOf(entry);
        const bool isNew = !agreed.contains(target);
        if (isNew)
            left->append(target.isCask ? target.name + QStringLiteral(" (cask)") : target.name);
        return isNew;
    });
}

} // namespace

RestoreAgreement agreementTo(const RestorePlan &plan) {
    return {.taps = plan.missingTaps,
            .installs = targetsOf(plan.missing),
            .removals = targetsOf(plan.added),
            .rollbacks = targetsOf(plan.rollable)};
}

QStringList keepWithin(const RestoreOrder &order, RestorePlan *plan) {
    QStringList left;
    if (!order.agreed)
        return left;
    plan->missingTaps.removeIf([&](const QString &tap) {
        const bool isNew = !order.agreed->taps.contains(tap);
        if (isNew)
            left.append(QStringLiteral("tap ") + tap);
        return isNew;
    });
    keepAgreed(order.agreed->installs, &plan->missing, &left);
    // What is left alone anyhow needs no word.
    QStringList untouched;
    keepAgreed(order.agreed->removals, &plan->added, order.removesAdded ? &left : &untouched);
    keepAgreed(order.agreed->rollbacks, &plan->rollable, order.rollsBackVersions ? &left : &untouched);
    return left;
}

RestorePlan planRestore(const Snapshot &snapshot, const Snapshot &now, const KegPreservationManager &kegs) {
    RestorePlan plan;
    for (const QString &tap : snapshot.taps)
        if (!now.taps.contains(tap))
            plan.missingTaps.append(tap);
    const SnapshotDiff diff = compareSnapshots(snapshot, now);
    plan.missing = diff.removed;
    plan.refusals = snapshot.refusals();
    for (const bool isCask : {false, true})
        if (isUnsure(snapshot, isCask))
            plan.refusals.append(isCask ? QStringLiteral("because of this, no cask is removed")
                                        : QStringLiteral("because of this, no formula is removed"));
    for (const SnapshotEntry &entry : diff.added)
        (isUnsure(snapshot, entry.isCask) ? plan.kept : plan.added).append(entry);
    for (const SnapshotVersionChange &change : diff.changed) {
        const bool isRollable =
            !change.entry.isCask && kegs.canRollBack(change.entry.name, change.entry.version);
        (isRollable ? plan.rollable : plan.notRollable).append(change);
    }
    return plan;
}

} // namespace larkspur
