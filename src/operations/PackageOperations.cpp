#include "operations/PackageOperations.h"

#include "core/async/Worker.h"
#include "core/brew/PackageName.h"
#include "core/settings/Preferences.h"
#include "inventory/queries/InventoryQueries.h"
#include "operations/OperationHistory.h"
#include "operations/PackageCommands.h"
#include "operations/UpgradeSafeguard.h"
#include "operations/installed/StateCheck.h"
#include "operations/kegs/KegRollback.h"
#include "operations/package/HeldPin.h"
#include "operations/snapshots/SnapshotRestore.h"

#include <algorithm>

namespace larkspur {

namespace {

Task<InstalledPackages> installedAt(QString prefix) {
    co_return co_await runInWorker([prefix = std::move(prefix)] { return InstalledPackages::at(prefix); });
}

void say(const OperationContext &context, const QString &line) {
    if (context.output)
        context.output->addLine(line);
}

bool isUpToDate(const OperationRequest &request, const PackageTarget &package) {
    return request.kind == OperationKind::Upgrade && !package.latestVersion.isEmpty() &&
           package.installedVersion == package.latestVersion;
}

QString upToDateLine(const PackageTarget &package) {
    return QStringLiteral("==> %1 is already up to date (installed %2, latest %3). No changes were made.")
        .arg(package.name, package.installedVersion, package.latestVersion);
}

/// How each package of a batch removal ended, for the eyes of a person: Homebrew itself says little there.
QString removalLine(const PackageTarget &package, PackageEnd end) {
    return (end == PackageEnd::Done ? QStringLiteral("Successfully uninstalled ")
                                    : QStringLiteral("Error uninstalling ")) +
           package.name;
}

/// The result of a batch, package by package where they differ.
void sayBatchResult(const OperationContext &context, const OperationReport &report) {
    QStringList failed;
    for (const PackageResult &result : report.packages)
        if (result.end != PackageEnd::Done)
            failed.append(result.package.name);
    const auto total = report.packages.size();
    if (failed.isEmpty())
        say(context, QStringLiteral("==> All %1 packages are done.").arg(total));
    else
        say(context, QStringLiteral("==> %1 of %2 packages are done. Not done: %3")
                         .arg(total - failed.size())
                         .arg(total)
                         .arg(failed.join(QStringLiteral(", "))));
}

/// The packages whose state is worth a look: everything that Homebrew says is done.
QList<PackageTarget> reportedDone(const OperationRequest &request, const OperationReport &report) {
    QList<PackageTarget> done;
    for (const PackageResult &result : report.packages)
        if (result.end == PackageEnd::Done)
            done.append(result.package);
    if (request.kind == OperationKind::UpgradeAll)
        return done.isEmpty() ? QList<PackageTarget>() : request.packages;
    return done;
}

} // namespace

PackageOperations::PackageOperations(Parts parts)
    : m_parts(std::move(parts)) {}

Task<Result<OperationReport>> PackageOperations::perform(OperationRequest request, OperationContext context,
                                                         std::function<void()> onBegin) {
    const auto refused = std::ranges::find_if_not(request.packages, isValidPackageName, &PackageTarget::name);
    if (refused != request.packages.end())
        co_return std::unexpected(BrewError::packageNotFound(refused->name));
    request.reinstallsCasks = m_parts.preferences.boolean(keys::useReinstallForCasks);
    if (request.packages.size() == 1 && isUpToDate(request, request.packages.first())) {
        say(context, upToDateLine(request.packages.first()));
        co_return OperationReport{{{request.packages.first(), PackageEnd::Done}}};
    }
    auto session = co_await m_parts.brew.beginOperation(context);
    if (!session)
        co_return std::unexpected(session.error());
    if (onBegin)
        onBegin();
    if (m_parts.rollback.hasUnfinished())
        co_await m_parts.rollback.recover(&*session);
    const auto prefix = co_await m_parts.queries.homebrewPrefix(context.stop);
    if (!prefix && prefix.error().kind != BrewError::Kind::CommandFailed)
        co_return std::unexpected(prefix.error());
    co_return co_await performLocked(
        {&*session, std::move(request), std::move(context), prefix.value_or(QString())});
}

Task<Result<OperationReport>> PackageOperations::performLocked(Work work) {
    const InstalledPackages before = co_await installedAt(work.prefix);
    auto report = co_await performGuarded(work, &before);
    if (work.prefix.isEmpty())
        co_return report;
    const InstalledPackages after = co_await installedAt(work.prefix);
    if (work.request.isUpgrade())
        co_await concludeUpgrade(work, &before, &after, &report);
    if (!report)
        co_return report;
    const QStringList warnings =
        stateWarnings(work.request, reportedDone(work.request, *report), before, after);
    report->hasWarnings = report->hasWarnings || !warnings.isEmpty();
    for (const QString &warning : warnings)
        say(work.context, warning);
    co_return report;
}

Task<Result<OperationReport>> PackageOperations::performGuarded(Work work, const InstalledPackages *before) {
    if (work.request.kind == OperationKind::RollBack)
        co_return co_await rollBackAll(work);
    if (work.request.kind == OperationKind::Restore) {
        OperationReport report;
        const auto restored = co_await m_parts.restore.run(work.request.restore.value_or(RestoreOrder()),
                                                           settingOf(work), &report);
        co_return restored ? Result<OperationReport>(report) : std::unexpected(restored.error());
    }
    bool isSafe = true;
    if (work.request.isUpgrade() && !work.prefix.isEmpty())
        isSafe = co_await m_parts.safeguard.prepare({work.session, work.request, work.context, work.prefix},
                                                    before);
    auto report = co_await performAll(work);
    if (report && !isSafe)
        report->hasWarnings = true;
    co_return report;
}

Task<> PackageOperations::concludeUpgrade(Work work, const InstalledPackages *before,
                                          const InstalledPackages *after, Result<OperationReport> *report) {
    co_await m_parts.safeguard.relinkLost({work.session, work.request, work.context, work.prefix}, before,
                                          after);
    if (work.request.kind == OperationKind::UpgradeAll)
        m_parts.history.noteUpgradeOfAll(work.request.packages, *after, report->has_value());
    if (!*report)
        co_return;
    const QStringList services =
        co_await servicesToRestart(after->formulaeNewSince(*before), work.context.stop);
    (*report)->servicesToRestart = services;
    if (!services.isEmpty())
        say(work.context, QStringLiteral("==> Services that still run the old version: %1")
                              .arg(services.join(QStringLiteral(", "))));
}

PackageRun::Setting PackageOperations::settingOf(const Work &work) const {
    return {.session = work.session,
            .context = work.context,
            .prefix = work.prefix,
            .noteFile = m_parts.movedAsideNote,
            .logger = &m_parts.logger};
}

Task<Result<OperationReport>> PackageOperations::rollBackAll(Work work) {
    OperationReport report;
    for (const PackageTarget &package : work.request.packages) {
        if (work.context.stop.stop_requested())
            co_return std::unexpected(BrewError::stopped());
        const bool isBack = co_await m_parts.rollback.run({.session = work.session,
                                                           .context = work.context,
                                                           .prefix = work.prefix,
                                                           .formula = shortName(package.name),
                                                           .version = package.latestVersion});
        report.packages.append({package, isBack ? PackageEnd::Done : PackageEnd::Failed});
    }
    co_return report;
}

Task<Result<OperationReport>> PackageOperations::performAll(Work work) {
    OperationReport report;
    QList<PackageTarget> packages = work.request.packages;
    if (work.request.kind == OperationKind::UpgradeAll)
        packages = {PackageTarget{}}; // one command for all of them
    const bool isBatch = packages.size() > 1;
    for (qsizetype i = 0; i < packages.size(); ++i) {
        const PackageTarget package = packages[i];
        if (isBatch)
            say(work.context,
                QStringLiteral("==> %1 %2").arg(operationVerb(work.request.kind), package.name));
        if (isBatch && work.context.onPackage)
            work.context.onPackage(package.name, static_cast<int>(i), static_cast<int>(packages.size()));
        const auto done = co_await performOne(work, package, &report);
        if (!done)
            co_return std::unexpected(done.error());
        if (isBatch && work.request.kind == OperationKind::Uninstall)
            say(work.context, removalLine(package, report.packages.last().end));
    }
    if (isBatch)
        sayBatchResult(work.context, report);
    co_return report;
}

/// Adds the package's result to the report.
Task<Result<bool>> PackageOperations::performOne(Work work, PackageTarget package, OperationReport *report) {
    if (isUpToDate(work.request, package)) {
        say(work.context, upToDateLine(package));
        report->packages.append({package, PackageEnd::Done});
        co_return true;
    }
    const PackageRun::Setting setting = settingOf(work);
    const bool isHeld = package.isPinned && work.request.kind == OperationKind::Upgrade;
    HeldPin pin(setting, m_parts.heldPinNote, package);
    if (isHeld) {
        const auto unpinned = co_await pin.takeOff();
        if (!unpinned) {
            co_await pin.putBack();
            co_return std::unexpected(unpinned.error());
        }
    }
    PackageRun run(setting, work.request, package);
    const Result<PackageEnd> end = co_await run.run();
    if (isHeld && !co_await pin.putBack())
        report->hasWarnings = true;
    m_parts.history.note(work.request.kind, package, end == PackageEnd::Done);
    if (!end)
        co_return std::unexpected(end.error());
    report->packages.append({package, *end});
    report->hasWarnings = report->hasWarnings || run.hasWarnings();
    co_return true;
}

Task<QStringList> PackageOperations::servicesToRestart(QStringList upgraded, StopToken stop) {
    if (upgraded.isEmpty())
        co_return QStringList();
    const auto services = co_await m_parts.queries.services(stop);
    QStringList names;
    if (services)
        for (const BrewServiceInfo &service : *services)
            if (service.status == ServiceStatus::Running && upgraded.contains(service.name))
                names.append(service.name);
    co_return QStringList(names);
}

} // namespace larkspur
