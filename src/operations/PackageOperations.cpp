#include "operations/PackageOperations.h"

#include "core/async/Worker.h"
#include "core/brew/PackageName.h"
#include "core/settings/Preferences.h"
#include "inventory/queries/InventoryQueries.h"
#include "operations/PackageCommands.h"
#include "operations/installed/StateCheck.h"
#include "operations/retry/PackageRun.h"

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
    const auto known = co_await m_parts.queries.homebrewPrefix(context.stop);
    if (!known && known.error().kind != BrewError::Kind::CommandFailed)
        co_return std::unexpected(known.error());
    const QString prefix = known.value_or(QString());
    const InstalledPackages before = co_await installedAt(prefix);
    auto report = co_await performAll(&*session, request, context, prefix);
    if (!report || prefix.isEmpty())
        co_return report;
    const InstalledPackages after = co_await installedAt(prefix);
    const QStringList warnings = stateWarnings(request, reportedDone(request, *report), before, after);
    report->hasWarnings = report->hasWarnings || !warnings.isEmpty();
    for (const QString &warning : warnings)
        say(context, warning);
    if (request.isUpgrade())
        report->servicesToRestart = co_await servicesToRestart(after.formulaeNewSince(before), context.stop);
    if (!report->servicesToRestart.isEmpty())
        say(context, QStringLiteral("==> Services that still run the old version: %1")
                         .arg(report->servicesToRestart.join(QStringLiteral(", "))));
    co_return report;
}

Task<Result<OperationReport>> PackageOperations::performAll(BrewSession *session, OperationRequest request,
                                                            OperationContext context, QString prefix) {
    OperationReport report;
    QList<PackageTarget> packages = request.packages;
    if (request.kind == OperationKind::UpgradeAll)
        packages = {PackageTarget{}}; // one command for all of them
    const bool isBatch = packages.size() > 1;
    for (qsizetype i = 0; i < packages.size(); ++i) {
        const PackageTarget package = packages[i];
        if (isBatch)
            say(context, QStringLiteral("==> %1 %2").arg(operationVerb(request.kind), package.name));
        if (isBatch && context.onPackage)
            context.onPackage(package.name, static_cast<int>(i), static_cast<int>(packages.size()));
        const auto done = co_await performOne(session, request, package, context, prefix, &report);
        if (!done)
            co_return std::unexpected(done.error());
        if (isBatch && request.kind == OperationKind::Uninstall)
            say(context, removalLine(package, report.packages.last().end));
    }
    if (isBatch)
        sayBatchResult(context, report);
    co_return report;
}

/// Adds the package's result to the report.
Task<Result<bool>> PackageOperations::performOne(BrewSession *session, OperationRequest request,
                                                 PackageTarget package, OperationContext context,
                                                 QString prefix, OperationReport *report) {
    if (isUpToDate(request, package)) {
        say(context, upToDateLine(package));
        report->packages.append({package, PackageEnd::Done});
        co_return true;
    }
    const PackageRun::Setting setting{.session = session,
                                      .context = context,
                                      .prefix = std::move(prefix),
                                      .noteFile = m_parts.movedAsideNote,
                                      .logger = &m_parts.logger};
    const bool isHeld = package.isPinned && request.kind == OperationKind::Upgrade;
    if (isHeld) {
        PackageRun unpinning(setting, {.kind = OperationKind::Unpin}, package);
        const auto unpinned = co_await unpinning.run();
        if (!unpinned)
            co_return std::unexpected(unpinned.error());
    }
    PackageRun run(setting, request, package);
    const Result<PackageEnd> end = co_await run.run();
    if (isHeld) {
        // Whatever became of the upgrade, also if it was stopped: what was held stays held.
        PackageRun::Setting unstoppable = setting;
        unstoppable.context.stop = {};
        PackageRun pinning(unstoppable, {.kind = OperationKind::Pin}, package);
        const auto pinned = co_await pinning.run();
        report->hasWarnings = report->hasWarnings || !pinned || *pinned != PackageEnd::Done;
    }
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
