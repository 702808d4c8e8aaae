#include "operations/OperationRequest.h"

namespace larkspur {

QString operationVerb(OperationKind kind) {
    switch (kind) {
    case OperationKind::Install:
        return QStringLiteral("Installing");
    case OperationKind::Upgrade:
    case OperationKind::UpgradeAll:
        return QStringLiteral("Upgrading");
    case OperationKind::Reinstall:
        return QStringLiteral("Reinstalling");
    case OperationKind::Uninstall:
        return QStringLiteral("Uninstalling");
    case OperationKind::Pin:
        return QStringLiteral("Pinning");
    case OperationKind::Unpin:
        return QStringLiteral("Unpinning");
    case OperationKind::RestartService:
        return QStringLiteral("Restarting");
    case OperationKind::RollBack:
        return QStringLiteral("Rolling back");
    case OperationKind::Restore:
        return QStringLiteral("Restoring");
    }
    return {};
}

QString OperationRequest::title() const {
    if (kind == OperationKind::UpgradeAll)
        return QStringLiteral("Upgrading all packages");
    if (kind == OperationKind::Restore)
        return QStringLiteral("Restoring a restore point");
    if (packages.size() == 1)
        return operationVerb(kind) + QLatin1Char(' ') + packages.first().name;
    return QStringLiteral("%1 %2 packages").arg(operationVerb(kind)).arg(packages.size());
}

OperationRequest upgradeOfAll(const QList<PackageTarget> &outdated, bool leavesSomeOut) {
    QList<PackageTarget> upgraded = outdated;
    upgraded.removeIf([](const PackageTarget &package) { return package.isPinned; });
    return {.kind = leavesSomeOut ? OperationKind::Upgrade : OperationKind::UpgradeAll,
            .packages = leavesSomeOut ? upgraded : outdated,
            .expectedSteps = static_cast<int>(upgraded.size())};
}

} // namespace larkspur
