#include "operations/plan/OperationPlanner.h"

#include "core/brew/BrewService.h"
#include "core/brew/PackageName.h"
#include "inventory/queries/InventoryQueries.h"

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

bool isNamed(const PackageTarget &package) {
    return PackageName::parse(package.name).has_value();
}

BrewArguments dryRunOf(const BrewWord &kind, const QStringList &names) {
    BrewArguments arguments{"upgrade", "--dry-run", kind};
    for (const QString &text : names)
        if (const auto name = PackageName::parse(text))
            arguments.append(*name);
    return arguments;
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

bool OperationPlanner::plans(OperationKind kind) {
    return kind == OperationKind::Upgrade || kind == OperationKind::UpgradeAll ||
           kind == OperationKind::Uninstall;
}

Task<OperationPlan> OperationPlanner::plan(OperationRequest request, StopToken stop) {
    const auto refused = std::ranges::find_if_not(request.packages, isNamed);
    if (refused != request.packages.end())
        co_return OperationPlan{.failure = BrewError::packageNotFound(refused->name).description()};
    if (request.kind == OperationKind::Uninstall)
        co_return co_await planRemoval(std::move(request), std::move(stop));
    co_return co_await planUpgrade(std::move(request), std::move(stop));
}

Task<OperationPlan> OperationPlanner::planUpgrade(OperationRequest request, StopToken stop) {
    OperationPlan plan;
    plan.pinned = pinnedOf(request.packages);
    const QStringList formulae = namesOf(request.packages, false);
    const QStringList casks = namesOf(request.packages, true);
    QList<BrewArguments> commands;
    if (request.kind == OperationKind::UpgradeAll)
        commands.append(BrewArguments{"upgrade", "--dry-run"});
    if (request.kind == OperationKind::Upgrade && !formulae.isEmpty())
        commands.append(dryRunOf("--formula", formulae));
    if (request.kind == OperationKind::Upgrade && !casks.isEmpty())
        commands.append(dryRunOf("--cask", casks));
    for (const BrewArguments &command : commands) {
        const auto answer =
            co_await m_brew.execute({.arguments = command, .suppressAutoUpdate = true, .stop = stop});
        if (!answer) {
            plan.failure = answer.error().description();
            continue;
        }
        readDryRun(answer->combinedOutput(), plan);
        // A pinned package, named, makes the dry run fail; the operation itself unpins it first.
        if (answer->exitCode != 0 && plan.changes.isEmpty() && plan.pinned.isEmpty())
            plan.failure = answer->verdict().error().description();
    }
    for (const PackageTarget &package : request.packages)
        if (package.isPinned && request.kind == OperationKind::Upgrade)
            plan.changes.append({package.name, package.installedVersion, package.latestVersion});
    QStringList tokens;
    for (const PlannedChange &change : plan.changes)
        if (casks.contains(change.name) || request.kind == OperationKind::UpgradeAll)
            tokens.append(shortName(change.name));
    if (!casks.isEmpty())
        plan.privileged = co_await privilegedAmong(tokens, stop);
    co_return plan;
}

Task<OperationPlan> OperationPlanner::planRemoval(OperationRequest request, StopToken stop) {
    OperationPlan plan;
    QStringList removed;
    for (const PackageTarget &package : request.packages) {
        plan.changes.append({package.name, package.installedVersion, {}});
        removed.append(shortName(package.name));
    }
    for (const QString &name : namesOf(request.packages, false)) {
        const auto dependents = co_await m_queries.dependents(name, stop);
        if (!dependents) {
            plan.failure = dependents.error().description();
            continue;
        }
        for (const QString &dependent : *dependents)
            if (!removed.contains(shortName(dependent)) && !plan.dependents.contains(dependent))
                plan.dependents.append(dependent);
    }
    if (const QStringList casks = namesOf(request.packages, true); !casks.isEmpty())
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
