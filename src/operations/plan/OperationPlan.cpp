#include "operations/plan/OperationPlan.h"

namespace larkspur {

namespace {

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

QStringList OperationPlan::names() const {
    QStringList all;
    for (const PlannedChange &change : changes)
        all.append(change.name);
    return all;
}

QStringList describePlan(const OperationPlan &plan) {
    QStringList lines;
    for (const PlannedChange &change : plan.changes)
        lines.append(change.to.isEmpty()
                         ? QStringLiteral("%1 %2").arg(change.name, change.from).trimmed()
                         : QStringLiteral("%1 %2 -> %3").arg(change.name, change.from, change.to) +
                               remark(change.role));
    if (!plan.dependents.isEmpty())
        lines.append(QStringLiteral("Still needed by %1").arg(plan.dependents.join(QStringLiteral(", "))));
    if (!plan.pinned.isEmpty())
        lines.append((plan.leavesPinned ? QStringLiteral("Left out, because it is pinned: %1")
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
