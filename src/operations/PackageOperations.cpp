#include "operations/PackageOperations.h"

#include "core/async/Worker.h"
#include "core/brew/PackageName.h"
#include "core/settings/Preferences.h"
#include "inventory/queries/InventoryQueries.h"
#include "operations/OperationHistory.h"
#include "operations/PackageCommands.h"
#include "operations/UpgradeSafeguard.h"
#include "operations/casks/LostApplications.h"
#include "operations/installed/StateCheck.h"
#include "operations/kegs/KegRollback.h"
#include "operations/package/HeldPin.h"
#include "operations/recovery/LostLinks.h"
#include "operations/recovery/Recovery.h"
#include "operations/snapshots/SnapshotRestore.h"

#include <algorithm>

namespace larkspur {

namespace {

Task<std::expected<InstalledPackages, QString>> installedAt(QString prefix) {
    co_return co_await runInWorker([prefix = std::move(prefix)] { return InstalledPackages::at(prefix); });
}

void say(const OperationContext &context, const QString &line) {
    if (context.output)
        context.output->addLine(line);
}

/// Whoever removes a package wants its links gone; a rollback looks after them itself.
bool mayLoseLinks(OperationKind kind) {
    return kind == OperationKind::Install || kind == OperationKind::Upgrade ||
           kind == OperationKind::UpgradeAll || kind == OperationKind::Reinstall ||
           kind == OperationKind::Restore;
}

/// The casks whose applications an interruption can cost: Homebrew takes those away before it installs anew.
/// A reinstallation is looked after by what runs it.
QStringList casksToUpgrade(const OperationRequest &request, const InstalledPackages &installed) {
    if (request.kind == OperationKind::UpgradeAll)
        return installed.currentCasks().keys();
    QStringList tokens;
    if ((request.kind == OperationKind::Upgrade && !request.reinstallsCasks) ||
        request.kind == OperationKind::Install)
        for (const PackageTarget &package : request.packages)
            if (package.isCask)
                tokens.append(package.name);
    return tokens;
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
QString removalLine(const PackageTarget &package, bool isDone) {
    return (isDone ? QStringLiteral("Successfully uninstalled ") : QStringLiteral("Error uninstalling ")) +
           package.name;
}

/// The result of a batch, package by package where they differ.
void sayBatchResult(const OperationContext &context, const OperationReport &report) {
    QStringList failed;
    for (const PackageResult &result : report.packages)
        if (!result.isDone())
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

} // namespace

PackageOperations::PackageOperations(Parts parts)
    : m_parts(std::move(parts)) {}

Task<Result<OperationReport>> PackageOperations::perform(OperationRequest request, OperationContext context,
                                                         std::function<void()> onBegin) {
    const auto refused = std::ranges::find_if_not(request.packages, [](const PackageTarget &package) {
        return PackageName::parse(package.name).has_value();
    });
    if (refused != request.packages.end())
        co_return std::unexpected(BrewError::packageNotFound(refused->name));
    request.reinstallsCasks = m_parts.preferences.boolean(keys::useReinstallForCasks);
    if (request.packages.size() == 1 && isUpToDate(request, request.packages.first())) {
        say(context, upToDateLine(request.packages.first()));
        co_return OperationReport{.packages = {{.package = request.packages.first(), .isUnchanged = true}}};
    }
    auto session = co_await m_parts.recovery.beginOperation(context);
    if (!session)
        co_return std::unexpected(session.error());
    if (onBegin)
        onBegin();
    const auto prefix = co_await m_parts.queries.homebrewPrefix(context.stop);
    if (!prefix) // nothing could be protected, nor looked at afterwards
        co_return std::unexpected(prefix.error());
    co_return co_await performLocked({&*session, std::move(request), std::move(context), *prefix});
}

Task<Result<OperationReport>> PackageOperations::performLocked(Work work) {
    const Installed before = co_await installedAt(work.prefix);
    std::optional<LostLinks> links;
    if (mayLoseLinks(work.request.kind) && before)
        links.emplace(*before, work.prefix, m_parts.casks.noteFolder);
    const bool isNoted = !links || links->complaint().isEmpty();
    if (!isNoted)
        say(work.context, QStringLiteral("==> Warning: ") + links->complaint());
    const LostApplications applications = co_await noteApplications(work, &before);
    OperationReport report;
    const auto done = co_await performGuarded(work, &before, &report);
    const RecoveryWork repair{work.session, work.context, work.prefix, &m_parts.logger};
    const bool areLinked = !links || co_await links->relink(repair);
    const bool areInPlace = co_await applications.putBack(repair);
    const Installed after = co_await installedAt(work.prefix);
    const bool isAsReported = check(work, before, after, &report);
    for (const PackageResult &result : std::as_const(report.packages))
        if (!result.isUnchanged)
            m_parts.history.note(work.request.kind, result.package, result.isDone());
    if (work.request.isUpgrade() && before && after)
        co_await concludeUpgrade(work, &*before, &*after, done.has_value(), &report);
    report.hasWarnings =
        report.hasWarnings ||
        !(isNoted && areLinked && applications.complaints().isEmpty() && areInPlace && isAsReported);
    co_return done ? Result<OperationReport>(report) : std::unexpected(done.error());
}

Task<LostApplications> PackageOperations::noteApplications(Work work, const Installed *before) {
    CaskSetting setting = m_parts.casks;
    setting.prefix = work.prefix;
    const QStringList tokens = *before ? casksToUpgrade(work.request, **before) : QStringList();
    auto applications =
        co_await runInWorker([tokens, setting] { return LostApplications::of(tokens, setting); });
    for (const QString &complaint : applications.complaints())
        say(work.context, QStringLiteral("==> Warning: ") + complaint);
    co_return LostApplications(applications);
}

/// Whether the packages are as Homebrew reported, or can be known to be; says where not, and puts it into the
/// report.
bool PackageOperations::check(const Work &work, const Installed &before, const Installed &after,
                              OperationReport *report) const {
    if (!before || !after) {
        say(work.context,
            QStringLiteral(
                "==> Warning: What is installed could not be read, so it is not known whether all is "
                "as Homebrew reported: %1")
                .arg(after ? before.error() : after.error()));
        return false;
    }
    const auto complaintAbout = [&](const PackageTarget &package) {
        auto complaint = stateComplaint(work.request, package, *before, *after);
        if (complaint)
            say(work.context, complaint->line);
        return complaint;
    };
    bool isAsReported = true;
    for (PackageResult &result : report->packages) {
        if (!result.isDone())
            continue;
        if (work.request.kind == OperationKind::UpgradeAll) { // one command for all of them
            for (const PackageTarget &package : work.request.packages)
                isAsReported = !complaintAbout(package) && isAsReported;
        } else if (const auto complaint = complaintAbout(result.package)) {
            result.end = complaint->hasNotHappened ? PackageEnd::Failed : PackageEnd::DoneWithWarnings;
            result.lines = {complaint->line};
        }
    }
    return isAsReported;
}

Task<Result<bool>> PackageOperations::performGuarded(Work work, const Installed *before,
                                                     OperationReport *report) {
    if (work.request.kind == OperationKind::RollBack)
        co_return co_await rollBackAll(work, report);
    if (work.request.kind == OperationKind::Restore)
        co_return co_await m_parts.restore.run(work.request.restore.value_or(RestoreOrder()), settingOf(work),
                                               report);
    if (work.request.isUpgrade() &&
        !co_await m_parts.safeguard.prepare({work.session, work.request, work.context, work.prefix}, before))
        report->hasWarnings = true;
    co_return co_await performAll(work, report);
}

Task<> PackageOperations::concludeUpgrade(Work work, const InstalledPackages *before,
                                          const InstalledPackages *after, bool cameToEnd,
                                          OperationReport *report) {
    if (work.request.kind == OperationKind::UpgradeAll)
        m_parts.history.noteUpgradeOfAll(work.request.packages, *after, cameToEnd);
    if (!cameToEnd)
        co_return;
    const QStringList services =
        co_await servicesToRestart(after->formulaeNewSince(*before), work.context.stop);
    report->servicesToRestart = services;
    if (!services.isEmpty())
        say(work.context, QStringLiteral("==> Services that still run the old version: %1")
                              .arg(services.join(QStringLiteral(", "))));
}

PackageRun::Setting PackageOperations::settingOf(const Work &work) const {
    return {.session = work.session,
            .context = work.context,
            .prefix = work.prefix,
            .casks = m_parts.casks,
            .logger = &m_parts.logger};
}

Task<Result<bool>> PackageOperations::rollBackAll(Work work, OperationReport *report) {
    for (const PackageTarget &package : work.request.packages) {
        if (work.context.stop.stop_requested())
            co_return std::unexpected(BrewError::stopped());
        const auto formula = PackageName::parse(shortName(package.name));
        KegRollback::End end;
        if (formula)
            end = co_await m_parts.rollback.run({.session = work.session,
                                                 .context = work.context,
                                                 .prefix = work.prefix,
                                                 .formula = *formula,
                                                 .version = package.latestVersion});
        report->packages.append({package, end.packageEnd()});
    }
    co_return true;
}

Task<Result<bool>> PackageOperations::performAll(Work work, OperationReport *report) {
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
        const auto done = co_await performOne(work, package, report);
        if (!done)
            co_return std::unexpected(done.error());
        if (isBatch && work.request.kind == OperationKind::Uninstall)
            say(work.context, removalLine(package, report->packages.last().isDone()));
        if (report->packages.last().end == PackageEnd::Cancelled)
            work.context.sudoAuth = nullptr; // who has declined is not asked for each of the rest
    }
    if (isBatch)
        sayBatchResult(work.context, *report);
    co_return true;
}

/// Adds the package's result to the report.
Task<Result<bool>> PackageOperations::performOne(Work work, PackageTarget package, OperationReport *report) {
    if (isUpToDate(work.request, package)) {
        say(work.context, upToDateLine(package));
        report->packages.append({.package = package, .isUnchanged = true});
        co_return true;
    }
    const PackageRun::Setting setting = settingOf(work);
    const bool isHeld = package.isPinned && work.request.kind == OperationKind::Upgrade;
    HeldPin pin(setting, package);
    if (isHeld) {
        const auto unpinned = co_await pin.takeOff();
        if (!unpinned) {
            co_await pin.putBack();
            co_return std::unexpected(unpinned.error());
        }
    }
    PackageRun run(setting, work.request, package);
    const Result<PackageResult> result = co_await run.run();
    if (isHeld && !co_await pin.putBack())
        report->hasWarnings = true;
    if (!result) {
        m_parts.history.note(work.request.kind, package, false);
        co_return std::unexpected(result.error());
    }
    report->packages.append(*result);
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
