#include "operations/packages/UpgradeEnd.h"

#include "inventory/queries/InventoryQueries.h"
#include "operations/installed/StateCheck.h"
#include "operations/packages/OutputByPackage.h"
#include "operations/packages/PasswordTrigger.h"

#include <algorithm>

namespace larkspur {

namespace {

/// Of a package that is not at its newest version; `run`: the result of the command for all, `own`: what of
/// its output concerns the package.
PackageResult notThere(const PackageTarget &package, const PackageResult &run, const QStringList &own) {
    if (run.end == PackageEnd::Stopped)
        return {package, PackageEnd::Stopped};
    const bool wantedPassword = own.isEmpty() || passwordTrigger(own);
    const bool wasCancelled = run.end == PackageEnd::Cancelled && wantedPassword;
    return {package, wasCancelled ? PackageEnd::Cancelled : PackageEnd::Failed, Deed::Upgraded,
            own.isEmpty() ? run.lines : own};
}

/// The same although the command has reported success.
PackageResult notAsReported(const PackageTarget &package, const PackageState &state,
                            const StateFinding &finding) {
    const bool isChanged = state.versions != state.versionsBefore;
    return {package,
            isChanged ? PackageEnd::DoneWithWarnings : PackageEnd::Failed,
            Deed::Upgraded,
            {QStringLiteral("Homebrew reported success, but %1 %2.").arg(package.name, finding.text)}};
}

} // namespace

Task<QStringList> servicesToRestart(LockedWork work, QStringList upgraded, InventoryQueries *queries) {
    if (upgraded.isEmpty())
        co_return QStringList();
    const auto services = co_await queries->services(work.context.stop);
    QStringList names;
    if (services)
        for (const BrewServiceInfo &service : *services)
            if (service.status == ServiceStatus::Running && upgraded.contains(service.name))
                names.append(service.name);
    if (!names.isEmpty())
        work.say(QStringLiteral("Services that still run the old version: %1")
                     .arg(names.join(QStringLiteral(", "))));
    co_return QStringList(names);
}

QStringList tellApart(const QList<PackageTarget> &packages, const InstalledPackages &before,
                      const InstalledPackages &after, OperationReport *report) {
    QStringList complaints;
    if (report->packages.isEmpty())
        return complaints;
    const QList<PackageResult> later = report->packages.sliced(1);
    const PackageResult run = report->packages.first();
    QList<PackageResult> results;
    const QHash<QString, QStringList> output = outputByPackage(packages, run.lines);
    bool isExplained = run.isDone() || run.end == PackageEnd::Stopped;
    for (const PackageTarget &package : packages) {
        if (package.isPinned)
            continue; // left out
        const PackageState state = PackageState::of(package, before, after);
        const StateFinding finding = unlessUpgraded(package, state);
        const auto own = std::ranges::find(later, package, &PackageResult::package);
        if (own != later.end())
            results.append(*own);
        else if (finding.text.isEmpty())
            results.append({package, PackageEnd::Done, Deed::Upgraded});
        else if (run.isDone())
            complaints.append(results.emplace_back(notAsReported(package, state, finding)).lines);
        else
            results.append(notThere(package, run, output.value(shortName(package.name))));
        isExplained = isExplained || own != later.end() || !results.last().isDone();
    }
    if (!isExplained || results.isEmpty())
        results.append(run); // what went wrong concerns none of them
    report->packages = results;
    return complaints;
}

} // namespace larkspur
