#include "operations/plan/OperationPlanner.h"

#include "core/brew/PackageName.h"
#include "inventory/queries/InventoryQueries.h"
#include "operations/plan/DryRun.h"

#include <algorithm>

namespace larkspur {

namespace {

QStringList namesOf(const QList<PackageTarget> &packages, bool isCask) {
    QStringList names;
    for (const PackageTarget &package : packages)
        if (package.isCask == isCask)
            names.append(package.name);
    return names;
}

/// Why one of them can be named to nobody.
QString refusalOf(const QList<PackageTarget> &packages) {
    const auto refused = std::ranges::find_if_not(
        packages, [](const PackageTarget &package) { return PackageName::parse(package.name).has_value(); });
    return refused == packages.end() ? QString() : BrewError::packageNotFound(refused->name).description();
}

QStringList pinnedOf(const QList<PackageTarget> &packages) {
    QStringList names;
    for (const PackageTarget &package : packages)
        if (package.isPinned)
            names.append(package.name);
    return names;
}

} // namespace

OperationPlanner::OperationPlanner(BrewService &brew, InventoryQueries &queries)
    : m_brew(brew)
    , m_queries(queries) {}

Task<> OperationPlanner::addDryRun(BrewCommand command, OperationPlan *plan) {
    const auto answer = co_await m_brew.execute(std::move(command));
    if (!answer) {
        plan->failure = answer.error().description();
        co_return;
    }
    readDryRun(answer->combinedOutput(), *plan);
    // A pinned package, named, makes the dry run fail; the operation itself unpins it first.
    if (answer->exitCode != 0 && plan->changes.isEmpty() && plan->pinned.isEmpty())
        plan->failure = answer->verdict().error().description();
}

Task<OperationPlan> OperationPlanner::planUpgrade(QList<PackageTarget> packages, StopToken stop) {
    OperationPlan plan{.pinned = pinnedOf(packages), .failure = refusalOf(packages)};
    if (!plan.failure.isEmpty())
        co_return plan;
    const QStringList formulae = namesOf(packages, false);
    const QStringList casks = namesOf(packages, true);
    if (!formulae.isEmpty())
        co_await addDryRun(dryRunOf(formulae, false, stop), &plan);
    if (!casks.isEmpty())
        co_await addDryRun(dryRunOf(casks, true, stop), &plan);
    for (const PackageTarget &package : packages)
        if (package.isPinned)
            plan.changes.append({package.name, package.installedVersion, package.latestVersion});
    QStringList tokens;
    for (const PlannedChange &change : plan.changes)
        if (casks.contains(change.name))
            tokens.append(shortName(change.name));
    if (!casks.isEmpty())
        plan.privileged = co_await privilegedAmong(tokens, stop);
    co_return plan;
}

Task<OperationPlan> OperationPlanner::planUpgradeOfAll(QList<PackageTarget> outdated, bool selfUpdating,
                                                       StopToken stop) {
    OperationPlan plan{.pinned = pinnedOf(outdated), .leavesPinned = true};
    co_await addDryRun(dryRunOfAll(selfUpdating, stop), &plan);
    QStringList names;
    for (const PlannedChange &change : plan.changes)
        names.append(shortName(change.name));
    if (!namesOf(outdated, true).isEmpty())
        plan.privileged = co_await privilegedAmong(names, stop);
    co_return plan;
}

Task<OperationPlan> OperationPlanner::planRemoval(QList<PackageTarget> packages, StopToken stop) {
    OperationPlan plan{.failure = refusalOf(packages)};
    if (!plan.failure.isEmpty())
        co_return plan;
    QStringList removed;
    for (const PackageTarget &package : packages) {
        plan.changes.append({package.name, package.installedVersion, {}});
        removed.append(shortName(package.name));
    }
    for (const QString &name : namesOf(packages, false)) {
        const auto dependents = co_await m_queries.dependents(name, stop);
        if (!dependents) {
            plan.failure = dependents.error().description();
            continue;
        }
        for (const QString &dependent : *dependents)
            if (!removed.contains(shortName(dependent)) && !plan.dependents.contains(dependent))
                plan.dependents.append(dependent);
    }
    if (const QStringList casks = namesOf(packages, true); !casks.isEmpty())
        plan.privileged = co_await privilegedAmong(casks, stop);
    co_return plan;
}

Task<QStringList> OperationPlanner::privilegedAmong(QStringList tokens, StopToken stop) {
    QStringList privileged;
    const auto casks = co_await m_queries.installedCasks(stop);
    if (casks)
        for (const Cask &cask : *casks)
            if (cask.mayNeedAdministrator && tokens.contains(cask.token))
                privileged.append(cask.token);
    co_return QStringList(privileged);
}

} // namespace larkspur
