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

BrewCommand dryRunOfAll(bool selfUpdating, StopToken stop) {
    BrewCommand command{
        .arguments = {"upgrade", "--dry-run"}, .suppressAutoUpdate = true, .stop = std::move(stop)};
    if (selfUpdating)
        command.arguments.append("--greedy-auto-updates");
    return command;
}

BrewCommand dryRunOf(const QStringList &names, bool areCasks, StopToken stop) {
    BrewCommand command = dryRunOfAll(false, std::move(stop));
    command.arguments.append(areCasks ? BrewWord("--cask") : BrewWord("--formula"));
    for (const QString &text : names)
        if (const auto name = PackageName::parse(text))
            command.arguments.append(*name);
    return command;
}

void readDryRun(const QString &output, OperationPlan &plan) {
    static const QRegularExpression change(QStringLiteral("^(\\S+)\\s+(\\S.*?) -> (\\S+)"));
    static const QRegularExpression size(QStringLiteral("(?:Download|Bottle) Size:\\s+(\\S+)"));
    auto role = PlannedChange::Role::Named;
    for (const QString &line : output.split(QLatin1Char('\n'))) {
        if (line.startsWith(QLatin1String("==> ")))
            role = roleUnder(line);
        if (const auto match = change.match(line); match.hasMatch()) {
            PlannedChange found{match.captured(1), match.captured(2), match.captured(3), role};
            // A package that is named and needed stands in both lists.
            const auto known = std::ranges::find(plan.changes, found.name, &PlannedChange::name);
            if (known == plan.changes.end())
                plan.changes.append(found);
            else if (role == PlannedChange::Role::Named)
                known->role = role;
        } else if (const auto bytes = size.match(line); bytes.hasMatch()) {
            plan.downloadSize = bytes.captured(1);
        }
    }
}

} // namespace larkspur
