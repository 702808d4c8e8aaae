#include "operations/package/AdministratorTexts.h"

#include <algorithm>

namespace larkspur {

namespace {

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

/// Only formulae are concerned, which are built and removed with the person's own rights. Services may run as
/// root.
bool concernsFormulaeOnly(const OperationRequest &request, const PackageTarget &package) {
    if (request.kind == OperationKind::RestartService)
        return false;
    if (request.kind == OperationKind::UpgradeAll)
        return !request.packages.isEmpty() && std::ranges::none_of(request.packages, &PackageTarget::isCask);
    return !package.isCask;
}

} // namespace

PasswordRequest passwordRequest(const OperationRequest &request, const PackageTarget &package,
                                const QStringList &command, QString trigger) {
    return {.reason = passwordReason(request, package),
            .package = package.name,
            .command = QStringLiteral("brew ") + command.join(QLatin1Char(' ')),
            .trigger = std::move(trigger),
            .isUnusual = concernsFormulaeOnly(request, package)};
}

QString cancelledLine(const OperationRequest &request, const PackageTarget &package, bool hasRun) {
    if (!hasRun && request.kind == OperationKind::Upgrade && request.packages.size() == 1)
        return QStringLiteral(
                   "==> Administrator authorization is required to update %1 and was cancelled. No "
                   "changes were made.")
            .arg(package.name);
    return QStringLiteral("==> Administrator authorization was cancelled. The operation may be incomplete.");
}

} // namespace larkspur
