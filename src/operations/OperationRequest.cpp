#include "operations/OperationRequest.h"

namespace larkspur {

namespace {

QString verb(OperationKind kind) {
    switch (kind) {
    case OperationKind::Install:
        return QStringLiteral("Installing");
    case OperationKind::Upgrade:
    case OperationKind::UpgradeAll:
        return QStringLiteral("Upgrading");
    case OperationKind::Uninstall:
        return QStringLiteral("Uninstalling");
    }
    return {};
}

} // namespace

QString OperationRequest::title() const {
    if (kind == OperationKind::UpgradeAll)
        return QStringLiteral("Upgrading all packages");
    if (packages.size() == 1)
        return verb(kind) + QLatin1Char(' ') + packages.first().name;
    return QStringLiteral("%1 %2 packages").arg(verb(kind)).arg(packages.size());
}

} // namespace larkspur
