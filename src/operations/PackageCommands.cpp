#include "operations/PackageCommands.h"

namespace larkspur {

namespace {

QStringList words(const QString &command, const PackageTarget &package) {
    return package.isCask ? QStringList{command, QStringLiteral("--cask"), package.name}
                          : QStringList{command, package.name};
}

QStringList installWords(const OperationRequest &request, const PackageTarget &package) {
    QStringList all = words(QStringLiteral("install"), package);
    if (package.isCask && request.force)
        all.insert(all.size() - 1, QStringLiteral("--force"));
    if (package.isCask && request.adopt)
        all.insert(2, QStringLiteral("--adopt"));
    return all;
}

} // namespace

QStringList brewArguments(const OperationRequest &request, const PackageTarget &package) {
    switch (request.kind) {
    case OperationKind::Install:
        return installWords(request, package);
    case OperationKind::Upgrade:
        if (package.isCask && request.reinstallsCasks)
            return words(QStringLiteral("reinstall"), package);
        return {QStringLiteral("upgrade"),
                package.isCask ? QStringLiteral("--cask") : QStringLiteral("--formula"), package.name};
    case OperationKind::UpgradeAll:
        return {QStringLiteral("upgrade")};
    case OperationKind::Reinstall:
        return words(QStringLiteral("reinstall"), package);
    case OperationKind::Uninstall:
        return words(QStringLiteral("uninstall"), package);
    case OperationKind::Pin:
        return words(QStringLiteral("pin"), package);
    case OperationKind::Unpin:
        return words(QStringLiteral("unpin"), package);
    case OperationKind::RestartService:
        return {QStringLiteral("services"), QStringLiteral("restart"), package.name};
    case OperationKind::RollBack:
    case OperationKind::Restore:
        break; // several commands
    }
    return {};
}

BrewSession::Style streamStyle(OperationKind kind) {
    switch (kind) {
    case OperationKind::Install:
    case OperationKind::Upgrade:
    case OperationKind::UpgradeAll:
    case OperationKind::Reinstall:
        return BrewSession::Style::Terminal;
    case OperationKind::Uninstall:
    case OperationKind::Pin:
    case OperationKind::Unpin:
    case OperationKind::RestartService:
    case OperationKind::RollBack:
    case OperationKind::Restore:
        break;
    }
    return BrewSession::Style::Plain;
}

} // namespace larkspur
