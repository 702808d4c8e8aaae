#include "operations/snapshots/SnapshotRestore.h"

#include "operations/OperationHistory.h"
#include "operations/kegs/KegRollback.h"
#include "operations/snapshots/SnapshotManager.h"

#include <algorithm>

namespace larkspur {

namespace {

void say(const PackageRun::Setting &setting, const QString &line) {
    if (setting.context.output)
        setting.context.output->addLine(line);
}

} // namespace

SnapshotRestore::SnapshotRestore(Parts parts)
    : m_parts(parts) {}

Task<Result<bool>> SnapshotRestore::run(RestoreOrder order, PackageRun::Setting setting,
                                        OperationReport *report) {
    if (!m_parts.snapshots.hasLoaded() || !m_parts.snapshots.failure().isEmpty())
        co_await m_parts.snapshots.load();
    if (!m_parts.snapshots.failure().isEmpty())
        co_return std::unexpected(BrewError::commandFailed(m_parts.snapshots.failure()));
    const Snapshot *found = m_parts.snapshots.find(order.snapshot);
    if (!found)
        co_return std::unexpected(BrewError::commandFailed(QStringLiteral("This restore point is gone.")));
    const Snapshot wanted = *found;
    const auto now = co_await m_parts.snapshots.current(setting.context.stop);
    if (!now)
        co_return std::unexpected(BrewError::commandFailed(now.error()));
    Work work{.setting = setting, .report = report};
    RestorePlan plan = planRestore(wanted, *now, m_parts.kegs);
    const QStringList left = keepWithin(order, &plan);
    if (!left.isEmpty())
        say(setting, QStringLiteral("==> Warning: Changed since the restore was shown, so left alone: %1")
                         .arg(left.join(QStringLiteral(", "))));
    for (const QString &refusal : plan.refusals)
        say(setting, QStringLiteral("==> Warning: ") + refusal);
    report->hasWarnings = !wanted.refused.isEmpty() || !left.isEmpty();
    const auto result = co_await runSteps(order, plan, &work);
    QStringList failed;
    for (const PackageResult &entry : report->packages)
        if (!entry.isDone())
            failed.append(entry.package.name);
    if (!result)
        say(setting,
            QStringLiteral("==> Restore interrupted. Done: %1. Start it again to do the rest.")
                .arg(work.done.isEmpty() ? QStringLiteral("nothing") : work.done.join(QStringLiteral(", "))));
    else if (!failed.isEmpty())
        say(setting, QStringLiteral("==> Restore incomplete. Not done: %1. Start it again to do the rest.")
                         .arg(failed.join(QStringLiteral(", "))));
    else
        say(setting, QStringLiteral("==> Restore complete."));
    co_return result;
}

Task<Result<bool>> SnapshotRestore::runSteps(RestoreOrder order, RestorePlan plan, Work *work) {
    if (const auto tapped = co_await addTaps(plan.missingTaps, work); !tapped)
        co_return std::unexpected(tapped.error());
    if (const auto installed = co_await perform(OperationKind::Install, plan.missing, work); !installed)
        co_return std::unexpected(installed.error());
    if (order.removesAdded)
        if (const auto removed = co_await removeAdded(plan.added, work); !removed)
            co_return std::unexpected(removed.error());
    if (order.rollsBackVersions && !plan.rollable.isEmpty())
        if (const auto rolled = co_await rollBack(plan.rollable, work); !rolled)
            co_return std::unexpected(rolled.error());
    QStringList casks;
    for (const SnapshotVersionChange &change : plan.notRollable)
        if (change.entry.isCask)
            casks.append(change.entry.name);
    if (!casks.isEmpty())
        say(work->setting, QStringLiteral("==> %1 cask(s) can't be rolled back automatically: %2")
                               .arg(casks.size())
                               .arg(casks.join(QStringLiteral(", "))));
    co_return true;
}

Task<Result<bool>> SnapshotRestore::addTaps(QStringList taps, Work *work) {
    for (const QString &tap : taps) {
        const auto name = TapName::parse(tap);
        if (!name)
            continue; // refused when the restore point was read
        say(work->setting, QStringLiteral("==> Adding tap ") + tap);
        const auto run = co_await work->setting.session->stream(
            {.arguments = {"tap", *name}}, work->setting.context, BrewSession::Style::Plain);
        if (!run)
            co_return std::unexpected(run.error());
        work->report->packages.append(
            {{.name = tap}, run->succeeded() ? PackageEnd::Done : PackageEnd::Failed});
        if (run->succeeded())
            work->done.append(QStringLiteral("tap ") + tap);
    }
    co_return true;
}

Task<Result<bool>> SnapshotRestore::perform(OperationKind kind, QList<SnapshotEntry> entries, Work *work) {
    for (const SnapshotEntry &entry : entries) {
        const PackageTarget package{.name = entry.name, .isCask = entry.isCask};
        if (kind == OperationKind::Install)
            say(work->setting, QStringLiteral("==> Reinstalling ") + entry.name);
        PackageRun run(work->setting, {.kind = kind}, package);
        const auto end = co_await run.run();
        m_parts.history.note(kind, package, end && end->isDone());
        if (!end)
            co_return std::unexpected(end.error());
        work->report->packages.append(*end);
        if (end->isDone())
            work->done.append(entry.name);
    }
    co_return true;
}

Task<Result<bool>> SnapshotRestore::removeAdded(QList<SnapshotEntry> added, Work *work) {
    for (const bool isCask : {false, true}) {
        QList<SnapshotEntry> kind;
        std::ranges::copy_if(added, std::back_inserter(kind),
                             [isCask](const SnapshotEntry &entry) { return entry.isCask == isCask; });
        if (kind.isEmpty())
            continue;
        say(work->setting, QStringLiteral("==> Removing %1 %2 added since the snapshot...")
                               .arg(kind.size())
                               .arg(isCask ? QStringLiteral("cask(s)") : QStringLiteral("formula(e)")));
        if (const auto removed = co_await perform(OperationKind::Uninstall, kind, work); !removed)
            co_return std::unexpected(removed.error());
    }
    co_return true;
}

Task<Result<bool>> SnapshotRestore::rollBack(QList<SnapshotVersionChange> changes, Work *work) {
    say(work->setting, QStringLiteral("==> Rolling back %1 formula version(s)…").arg(changes.size()));
    int succeeded = 0;
    for (const SnapshotVersionChange &change : changes) {
        if (work->setting.context.stop.stop_requested())
            co_return std::unexpected(BrewError::stopped());
        const auto formula = PackageName::parse(change.entry.name);
        KegRollback::End end;
        if (formula)
            end = co_await m_parts.rollback.run({.session = work->setting.session,
                                                 .context = work->setting.context,
                                                 .prefix = work->setting.prefix,
                                                 .formula = *formula,
                                                 .version = change.entry.version});
        succeeded += end.isBack ? 1 : 0;
        work->report->packages.append({{.name = change.entry.name}, end.packageEnd()});
        if (end.isBack)
            work->done.append(change.entry.name + QLatin1Char(' ') + change.entry.version);
    }
    const auto failed = changes.size() - succeeded;
    say(work->setting,
        QStringLiteral("==> Version rollback: %1 succeeded").arg(succeeded) +
            (failed > 0 ? QStringLiteral(", %1 couldn't be rolled back").arg(failed) : QString()));
    co_return true;
}

} // namespace larkspur
