#include "operations/snapshots/RestoreSnapshot.h"

#include "operations/kegs/RollBackKegs.h"
#include "operations/packages/InstallPackages.h"
#include "operations/packages/PackageOperation.h"
#include "operations/packages/RemovalOrder.h"
#include "operations/packages/UninstallPackages.h"
#include "operations/packages/UpgradeSafeguard.h"
#include "operations/plan/DryRun.h"
#include "operations/snapshots/RestorePlan.h"
#include "operations/snapshots/SnapshotManager.h"

#include <algorithm>

namespace larkspur {

namespace {

/// A restore is made of many commands.
class RestoreCommand final : public PackageCommand {
  public:
    BrewArguments arguments(const PackageTarget &) const override { return {}; }
    QString verb() const override { return QStringLiteral("Restoring"); }
    bool mayLoseLinks() const override { return true; }
};

class RestoreSnapshot final : public PackageOperation {
  public:
    RestoreSnapshot(const PackageServices &services, RestoreOrder order)
        : PackageOperation(services, std::make_unique<RestoreCommand>(), {})
        , m_order(std::move(order)) {}

    QString title() const override { return QStringLiteral("Restoring a restore point"); }
    FailureSummary explain(const OperationReport &report, const QStringList &output) const override {
        return summarizeRollback(report, output);
    }

  protected:
    Task<Result<bool>> carryOut(LockedWork work, OperationReport *report) override;

  private:
    Task<Result<bool>> runSteps(LockedWork work, RestorePlan plan, OperationReport *report);
    Task<Result<bool>> addTaps(LockedWork work, QStringList taps, OperationReport *report);
    Task<Result<bool>> installMissing(LockedWork work, QList<SnapshotEntry> missing, OperationReport *report);
    Task<Result<bool>> removeAdded(LockedWork work, QList<SnapshotEntry> added, OperationReport *report);
    Task<Result<bool>> rollBack(LockedWork work, QList<SnapshotVersionChange> changes,
                                OperationReport *report);

    RestoreOrder m_order;
};

QStringList namesOf(const QList<SnapshotEntry> &entries, bool isCask) {
    QStringList names;
    for (const SnapshotEntry &entry : entries)
        if (entry.isCask == isCask)
            names.append(entry.name);
    return names;
}

/// What the packages of the report that have come to such an end are called.
QStringList namesWhere(const OperationReport &report, bool isDone) {
    QStringList names;
    for (const PackageResult &result : report.packages)
        if (result.isDone() == isDone)
            names.append(result.deed == Deed::RolledBack && isDone
                             ? result.package.name + QLatin1Char(' ') + result.package.latestVersion
                             : result.package.name);
    return names;
}

/// The end of the output, which says how far it has come.
void conclude(const LockedWork &work, const OperationReport &report, bool cameToEnd) {
    const QStringList done = namesWhere(report, true);
    const QStringList failed = namesWhere(report, false);
    if (!cameToEnd)
        work.say(QStringLiteral("Restore interrupted. Done: %1. Start it again to do the rest.")
                     .arg(done.isEmpty() ? QStringLiteral("nothing") : done.join(QStringLiteral(", "))));
    else if (!failed.isEmpty())
        work.say(QStringLiteral("Restore incomplete. Not done: %1. Start it again to do the rest.")
                     .arg(failed.join(QStringLiteral(", "))));
    else if (done.isEmpty())
        work.say(QStringLiteral("Nothing was to be restored."));
    else
        work.say(QStringLiteral("Restore complete."));
}

Task<Result<bool>> RestoreSnapshot::carryOut(LockedWork work, OperationReport *report) {
    SnapshotManager &snapshots = services().snapshots;
    if (!snapshots.hasLoaded() || !snapshots.failure().isEmpty())
        co_await snapshots.load();
    if (!snapshots.failure().isEmpty())
        co_return std::unexpected(BrewError::commandFailed(snapshots.failure()));
    const Snapshot *found = snapshots.find(m_order.snapshot);
    if (!found)
        co_return std::unexpected(BrewError::commandFailed(QStringLiteral("This restore point is gone.")));
    const Snapshot wanted = *found;
    const auto now = co_await snapshots.current(work.context.stop);
    if (!now)
        co_return std::unexpected(BrewError::commandFailed(now.error()));
    RestorePlan plan = planRestore(wanted, *now, services().kegs);
    const QStringList left = keepWithin(m_order, &plan);
    if (!left.isEmpty())
        work.warn(QStringLiteral("Changed since the restore was shown, so left alone: %1")
                      .arg(left.join(QStringLiteral(", "))));
    for (const QString &refusal : plan.refusals)
        work.warn(refusal);
    report->hasWarnings = report->hasWarnings || !wanted.refused.isEmpty() || !left.isEmpty();
    const auto result = co_await runSteps(work, plan, report);
    larkspur::conclude(work, *report, result.has_value());
    co_return result;
}

Task<Result<bool>> RestoreSnapshot::runSteps(LockedWork work, RestorePlan plan, OperationReport *report) {
    if (const auto tapped = co_await addTaps(work, plan.missingTaps, report); !tapped)
        co_return std::unexpected(tapped.error());
    if (const auto installed = co_await installMissing(work, plan.missing, report); !installed)
        co_return std::unexpected(installed.error());
    if (m_order.removesAdded)
        if (const auto removed = co_await removeAdded(work, plan.added, report); !removed)
            co_return std::unexpected(removed.error());
    if (m_order.rollsBackVersions && !plan.rollable.isEmpty())
        if (const auto rolled = co_await rollBack(work, plan.rollable, report); !rolled)
            co_return std::unexpected(rolled.error());
    QStringList casks;
    for (const SnapshotVersionChange &change : plan.notRollable)
        if (change.entry.isCask)
            casks.append(change.entry.name);
    if (!casks.isEmpty())
        work.say(QStringLiteral("%1 cask(s) can't be rolled back automatically: %2")
                     .arg(casks.size())
                     .arg(casks.join(QStringLiteral(", "))));
    co_return true;
}

Task<Result<bool>> RestoreSnapshot::addTaps(LockedWork work, QStringList taps, OperationReport *report) {
    for (const QString &tap : taps) {
        const auto name = TapName::parse(tap);
        if (!name)
            continue; // refused when the restore point was read
        work.say(QStringLiteral("Adding tap ") + tap);
        const auto run = co_await work.session->stream({.arguments = {"tap", *name}}, work.context,
                                                       BrewSession::Style::Plain);
        if (!run)
            co_return std::unexpected(run.error());
        report->packages.append({.package = {.name = QStringLiteral("tap ") + tap},
                                 .end = run->succeeded() ? PackageEnd::Done : PackageEnd::Failed,
                                 .lines = run->succeeded() ? QStringList() : run->lines});
    }
    co_return true;
}

Task<Result<bool>> RestoreSnapshot::installMissing(LockedWork work, QList<SnapshotEntry> missing,
                                                   OperationReport *report) {
    const InstallCommand command;
    for (const bool isCask : {false, true})
        if (const QStringList names = namesOf(missing, isCask); !names.isEmpty())
            if (!co_await services().safeguard.preserveReplaced(
                    work, {.dryRun = dryRunOfInstall(names, isCask, work.context.stop)}, &installed()))
                report->hasWarnings = true;
    for (const SnapshotEntry &entry : missing) {
        work.say(QStringLiteral("Reinstalling ") + entry.name);
        const auto done =
            co_await runStep(work, &command, {.name = entry.name, .isCask = entry.isCask}, report);
        if (!done)
            co_return std::unexpected(done.error());
        if (report->packages.last().end == PackageEnd::Cancelled)
            work.context.sudoAuth = nullptr; // who has declined is not asked for each of the rest
    }
    co_return true;
}

Task<Result<bool>> RestoreSnapshot::removeAdded(LockedWork work, QList<SnapshotEntry> added,
                                                OperationReport *report) {
    // What the restore point holds stays, also if nobody else needs it for now.
    const UninstallCommand command(UninstallCommand::Orphans::Stay);
    for (const bool isCask : {false, true}) {
        QList<PackageTarget> packages;
        for (const SnapshotEntry &entry : added)
            if (entry.isCask == isCask)
                packages.append({.name = entry.name, .isCask = isCask});
        if (packages.isEmpty())
            continue;
        work.say(QStringLiteral("Removing %1 %2 added since the snapshot...")
                     .arg(packages.size())
                     .arg(isCask ? QStringLiteral("cask(s)") : QStringLiteral("formula(e)")));
        packages = co_await inRemovalOrder(packages, &services().queries, work.context.stop);
        for (const PackageTarget &package : packages)
            if (const auto done = co_await removeUnlessGone(work, &command, package, report); !done)
                co_return std::unexpected(done.error());
    }
    co_return true;
}

Task<Result<bool>> RestoreSnapshot::rollBack(LockedWork work, QList<SnapshotVersionChange> changes,
                                             OperationReport *report) {
    work.say(QStringLiteral("Rolling back %1 formula version(s)…").arg(changes.size()));
    int succeeded = 0;
    for (const SnapshotVersionChange &change : changes) {
        const PackageTarget formula{.name = change.entry.name, .latestVersion = change.entry.version};
        if (const auto done = co_await rollBackKeg(work, &services().rollback, formula, report); !done)
            co_return std::unexpected(done.error());
        succeeded += report->packages.last().isDone() ? 1 : 0;
    }
    const auto failed = changes.size() - succeeded;
    work.say(QStringLiteral("Version rollback: %1 succeeded").arg(succeeded) +
             (failed > 0 ? QStringLiteral(", %1 couldn't be rolled back").arg(failed) : QString()));
    co_return true;
}

} // namespace

OperationPtr restoreSnapshot(const PackageServices &services, RestoreOrder order) {
    return std::make_shared<RestoreSnapshot>(services, std::move(order));
}

} // namespace larkspur
