#include "operations/packages/UpgradeEnd.h"

#include "inventory/queries/InventoryQueries.h"
#include "operations/installed/StateCheck.h"

#include <QRegularExpression>

#include <algorithm>

namespace larkspur {

namespace {

/// Of a package that is not at its newest version; `run`: the result of the command for all.
PackageResult notThere(const PackageTarget &package, const PackageResult &run, const StateFinding &finding,
                       bool isChanged) {
    if (run.end == PackageEnd::Stopped)
        return {package, PackageEnd::Stopped};
    if (!run.isDone()) {
        const QStringList own = failureAbout(package, run.lines);
        return {package, run.end, Deed::Upgraded, own.isEmpty() ? run.lines : own};
    }
    return {package,
            isChanged ? PackageEnd::DoneWithWarnings : PackageEnd::Failed,
            Deed::Upgraded,
            {QStringLiteral("Homebrew reported success, but %1 %2.").arg(package.name, finding.text)}};
}

} // namespace

QStringList failureAbout(const PackageTarget &package, const QStringList &lines) {
    const QRegularExpression word(QStringLiteral("(?<![\\w@.+-])%1(?![\\w@+-])")
                                      .arg(QRegularExpression::escape(shortName(package.name))));
    QStringList own;
    std::ranges::copy_if(lines, std::back_inserter(own),
                         [&word](const QString &line) { return namesFailure(line) && line.contains(word); });
    return own;
}

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
        else
            results.append(notThere(package, run, finding, state.versions != state.versionsBefore));
        isExplained = isExplained || own != later.end() || results.last().end == run.end;
        if (run.isDone() && own == later.end() && !finding.text.isEmpty())
            complaints.append(results.last().lines.first());
    }
    if (!isExplained || results.isEmpty())
        results.append(run); // what went wrong concerns none of them
    report->packages = results;
    return complaints;
}

} // namespace larkspur
