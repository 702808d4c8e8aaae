#include "operations/packages/UpgradeSafeguard.h"

#include "core/brew/PackageName.h"
#include "operations/kegs/KegPreservationManager.h"
#include "operations/packages/PackageOperation.h"
#include "operations/plan/DryRun.h"
#include "operations/snapshots/SnapshotManager.h"

namespace larkspur {

UpgradeSafeguard::UpgradeSafeguard(Parts parts)
    : m_parts(parts) {}

/// Homebrew's dry run tells which; where it tells nothing, at least what was named.
Task<UpgradeSafeguard::Replaced> UpgradeSafeguard::replacedFormulae(LockedWork work, Scope scope) {
    if (scope.replaced)
        co_return Replaced{*scope.replaced};
    QStringList names = formulaNames(scope.packages);
    if (scope.dryRun.arguments.isEmpty())
        co_return Replaced{names};
    const auto answer = co_await work.session->execute(scope.dryRun);
    const auto verdict = answer ? answer->verdict() : std::unexpected(answer.error());
    OperationPlan plan;
    if (answer) // what was told before it failed is true all the same
        readDryRun(answer->combinedOutput(), plan);
    for (const PlannedChange &change : plan.changes)
        if (!names.contains(change.name))
            names.append(change.name);
    co_return Replaced{names, verdict ? QString() : verdict.error().description()};
}

Task<bool> UpgradeSafeguard::preserveReplaced(LockedWork work, Scope scope, const Installed *installed) {
    if (!m_parts.kegs.isEnabled())
        co_return true;
    if (!*installed) {
        work.warn(QStringLiteral("No version could be preserved: %1").arg(installed->error()));
        co_return false;
    }
    co_return co_await preserve(work, scope, &**installed, std::nullopt);
}

Task<bool> UpgradeSafeguard::prepare(LockedWork work, Scope scope, const Installed *installed) {
    if (!*installed) {
        work.warn(QStringLiteral("No restore point could be saved: %1").arg(installed->error()));
        if (m_parts.kegs.isEnabled())
            work.warn(
                QStringLiteral("No version could be preserved, so this upgrade cannot be rolled back."));
        co_return false;
    }
    const InstalledPackages &packages = **installed;
    const auto snapshot =
        co_await m_parts.snapshots.take(SnapshotTrigger::PreUpgrade, &packages, work.context.stop);
    if (snapshot)
        work.say(QStringLiteral("Saved a restore point before upgrading (Time Machine)"));
    else
        work.warn(QStringLiteral("No restore point could be saved: %1").arg(snapshot.error()));
    bool isComplete = snapshot.has_value();
    if (m_parts.kegs.isEnabled() &&
        !co_await preserve(work, scope, &packages, snapshot ? std::optional(snapshot->id) : std::nullopt))
        isComplete = false;
    co_return isComplete;
}

/// False if a keg could not be preserved.
Task<bool> UpgradeSafeguard::preserve(LockedWork work, Scope scope, const InstalledPackages *installed,
                                      std::optional<QUuid> snapshot) {
    const Replaced replaced = co_await replacedFormulae(work, scope);
    bool isComplete = replaced.failure.isEmpty();
    if (!isComplete)
        work.warn(QStringLiteral("Homebrew does not tell what else this upgrade replaces, so only what is "
                                 "named is preserved: ") +
                  replaced.failure.simplified());
    for (const QString &name : replaced.names) {
        if (work.isStopped())
            co_return isComplete;
        const QString formula = shortName(name);
        const QString version = installed->currentVersion(formula);
        if (version.isEmpty() || !PackageName::parse(name))
            continue; // a dependency that is new
        const auto kept = co_await m_parts.kegs.preserve(
            {work.prefix, formula, version, name}, snapshot,
            {.stop = work.context.stop, .keptOpen = work.session->lockDescriptor()});
        if (kept)
            continue;
        isComplete = false;
        work.warn(QStringLiteral("%1 %2 could not be preserved, so this upgrade of it cannot be rolled "
                                 "back: %3")
                      .arg(formula, version, kept.error()));
    }
    if (snapshot) // else nothing tells which copies are this upgrade's own
        co_await m_parts.kegs.enforceCap(snapshot);
    co_return isComplete;
}

} // namespace larkspur
