#include "operations/package/AdministratorTexts.h"

namespace larkspur {

QString passwordReason(const OperationRequest &request, const PackageTarget &package) {
    const QString start = QStringLiteral("Larkspur needs your administrator password to finish ");
    const QString end = QLatin1Char(' ') + package.name + QLatin1Char('.');
    switch (request.kind) {
    case OperationKind::Install:
        return start + QStringLiteral("installing") + end;
    case OperationKind::Upgrade:
        return start + QStringLiteral("updating") + end;
    case OperationKind::UpgradeAll:
        return start + QStringLiteral("updating your packages.");
    case OperationKind::Reinstall:
        return start + QStringLiteral("reinstalling") + end;
    case OperationKind::Uninstall:
        return start + QStringLiteral("uninstalling") + end;
    case OperationKind::Pin:
    case OperationKind::Unpin:
    case OperationKind::RestartService:
    case OperationKind::RollBack:
    case OperationKind::Restore:
        break;
    }
    return start + operationVerb(request.kind).toLower() + end;
}

QString cancelledLine(const OperationRequest &request, const PackageTarget &package) {
    if (request.kind == OperationKind::Upgrade && request.packages.size() == 1)
        return QStringLiteral(
                   "==> Administrator authorization is required to update %1 and was cancelled. No "
                   "changes were made.")
            .arg(package.name);
    return QStringLiteral("==> Administrator authorization was cancelled. The operation may be incomplete.");
}

} // namespace larkspur
