#include "operations/packages/UpgradeEnd.h"

#include "inventory/queries/InventoryQueries.h"
#include "operations/installed/StateCheck.h"

#include <QRegularExpression>

#include <algorithm>

namespace larkspur {

namespace {

/// The lines that speak of the package, else all of them.
QStringList linesAbout(const PackageTarget &package, const QStringList &lines) {
    const QRegularExpression word(QStringLiteral("(?<![\\w@.+-])%1(?![\\w@+-])")
                                      .arg(QRegularExpression::escape(shortName(package.name))));
    QStringList own;
    std::ranges::copy_if(lines, std::back_inserter(own),
                         [&word](const QString &line) { return namesFailure(line) && line.contains(word); });
    return own.isEmpty() ? lines : own;
}

/// Of a package that is not at its newest version; `run`: the result of the command for all.
PackageResult notThere(const PackageTarget &package, const PackageResult &run, const StateFinding &finding,
                       bool isChanged) {
    if (run.end == PackageEnd::Stopped)
        return {package, PackageEnd::Stopped};
    if (!run.isDone())
        return {package, run.end, Deed::Upgraded, linesAbout(package, run.lines)};
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
    if (report->packages.size() != 1)
        return complaints;
    const PackageResult run = report->packages.first();
    QList<PackageResult> results;
    bool isExplained = run.isDone() || run.end == PackageEnd::Stopped;
    for (const PackageTarget &package : packages) {
        if (package.isPinned)
            continue; // left out
        const PackageState state = PackageState::of(package, before, after);
        const StateFinding finding = unlessUpgraded(package, state);
        if (finding.text.isEmpty())
            results.append({package, PackageEnd::Done, Deed::Upgraded});
        else
            results.append(notThere(package, run, finding, state.versions != state.versionsBefore));
        isExplained = isExplained || results.last().end == run.end;
        if (run.isDone() && !finding.text.isEmpty())
            complaints.append(results.last().lines.first());
    }
    if (!isExplained || results.isEmpty())
        results.append(run); // what went wrong concerns none of them
    report->packages = results;
    return complaints;
}

} // namespace larkspur
