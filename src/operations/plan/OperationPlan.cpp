#include "operations/plan/OperationPlan.h"

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

QString remark(PlannedChange::Role role) {
    switch (role) {
    case PlannedChange::Role::Dependency:
        return QStringLiteral(" (needed by it)");
    case PlannedChange::Role::Dependent:
        return QStringLiteral(" (needs it)");
    case PlannedChange::Role::Named:
        break;
    }
    return {};
}

} // namespace

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

QStringList describePlan(const OperationRequest &request, const OperationPlan &plan) {
    QStringList lines;
    for (const PlannedChange &change : plan.changes)
        lines.append(change.to.isEmpty()
                         ? QStringLiteral("%1 %2").arg(change.name, change.from).trimmed()
                         : QStringLiteral("%1 %2 -> %3").arg(change.name, change.from, change.to) +
                               remark(change.role));
    if (!plan.dependents.isEmpty())
        lines.append(QStringLiteral("Still needed by %1").arg(plan.dependents.join(QStringLiteral(", "))));
    if (!plan.pinned.isEmpty())
        lines.append((request.kind == OperationKind::UpgradeAll
                          ? QStringLiteral("Left out, because it is pinned: %1")
                          : QStringLiteral("Pinned, and will be again afterwards: %1"))
                         .arg(plan.pinned.join(QStringLiteral(", "))));
    if (plan.downloadSize)
        lines.append(QStringLiteral("To download: %1").arg(*plan.downloadSize));
    if (plan.needsAdministrator())
        lines.append(QStringLiteral("Likely to ask for your administrator password: %1")
                         .arg(plan.privileged.join(QStringLiteral(", "))));
    if (!plan.failure.isEmpty())
        lines.append(QStringLiteral("Homebrew does not tell what will happen: %1").arg(plan.failure));
    return lines;
}

} // namespace larkspur
