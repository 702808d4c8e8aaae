#include "operations/PackageCommands.h"

namespace larkspur {

QStringList brewArguments(OperationKind kind, const PackageTarget &package) {
    const QString cask = QStringLiteral("--cask");
    const QString formula = QStringLiteral("--formula");
    switch (kind) {
    case OperationKind::Install:
        return package.isCask ? QStringList{QStringLiteral("install"), cask, package.name}
                              : QStringList{QStringLiteral("install"), package.name};
    case OperationKind::Upgrade:
        return {QStringLiteral("upgrade"), package.isCask ? cask : formula, package.name};
    case OperationKind::UpgradeAll:
        return {QStringLiteral("upgrade")};
    case OperationKind::Uninstall:
        return package.isCask ? QStringList{QStringLiteral("uninstall"), cask, package.name}
                              : QStringList{QStringLiteral("uninstall"), package.name};
    }
    return {};
}

BrewSession::Style streamStyle(OperationKind kind) {
    return kind == OperationKind::Uninstall ? BrewSession::Style::Plain : BrewSession::Style::Terminal;
}

} // namespace larkspur
