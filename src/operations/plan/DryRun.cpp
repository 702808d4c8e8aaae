#include "operations/plan/DryRun.h"

#include <QRegularExpression>

#include <algorithm>

namespace larkspur {

namespace {

PlannedChange::Role roleUnder(const QString &header) {
    if (header.contains(QLatin1String("dependenc")))
        return PlannedChange::Role::Dependency;
    return header.contains(QLatin1String("dependent")) ? PlannedChange::Role::Dependent
                                                       : PlannedChange::Role::Named;
}

} // namespace

namespace {

BrewCommand dryRun(BrewArguments arguments, const QStringList &names, StopToken stop) {
    for (const QString &text : names)
        if (const auto name = PackageName::parse(text))
            arguments.append(*name);
    return {.arguments = std::move(arguments), .suppressAutoUpdate = true, .stop = std::move(stop)};
}

} // namespace

BrewCommand dryRunOfAll(bool selfUpdating, StopToken stop) {
    return dryRun(selfUpdating ? BrewArguments{"upgrade", "--dry-run", "--greedy-auto-updates"}
                               : BrewArguments{"upgrade", "--dry-run"},
                  {}, std::move(stop));
}

BrewCommand dryRunOf(const QStringList &names, bool areCasks, StopToken stop) {
    const BrewWord kind = areCasks ? BrewWord("--cask") : BrewWord("--formula");
    return dryRun({"upgrade", "--dry-run", kind}, names, std::move(stop));
}

BrewCommand dryRunOfInstall(const QStringList &names, bool areCasks, StopToken stop) {
    const BrewWord kind = areCasks ? BrewWord("--cask") : BrewWord("--formula");
    return dryRun({"install", "--dry-run", kind}, names, std::move(stop));
}

void readDryRun(const QString &output, OperationPlan &plan) {
    static const QRegularExpression change(QStringLiteral("^(\\S+)\\s+(\\S.*?) -> (\\S+)"));
    static const QRegularExpression size(QStringLiteral("(?:Download|Bottle) Size:\\s+(\\S+)"));
    static const QRegularExpression bare(
        QStringLiteral("^[\\w@.+/-]+$")); // an installation tells no versions
    auto role = PlannedChange::Role::Named;
    bool isListed = false;
    for (const QString &line : output.split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1String("==> "))) {
            role = roleUnder(line);
            isListed = line.startsWith(QLatin1String("==> Would upgrade "));
        }
        if (const auto match = change.match(line); match.hasMatch()) {
            PlannedChange found{match.captured(1), match.captured(2), match.captured(3), role};
            // A package that is named and needed stands in both lists.
            const auto known = std::ranges::find(plan.changes, found.name, &PlannedChange::name);
            if (known == plan.changes.end())
                plan.changes.append(found);
            else if (role == PlannedChange::Role::Named)
                known->role = role;
        } else if (isListed && bare.match(line).hasMatch()) {
            if (std::ranges::find(plan.changes, line, &PlannedChange::name) == plan.changes.end())
                plan.changes.append({line, {}, {}, role});
        } else if (const auto bytes = size.match(line); bytes.hasMatch()) {
            plan.downloadSize = bytes.captured(1);
        }
    }
}

} // namespace larkspur
