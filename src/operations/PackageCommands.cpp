#include "operations/PackageCommands.h"

namespace larkspur {

namespace {

BrewArguments words(const BrewWord &command, bool isCask, const PackageName &name) {
    return isCask ? BrewArguments{command, "--cask", name} : BrewArguments{command, name};
}

BrewArguments installWords(const OperationRequest &request, bool isCask, const PackageName &name) {
    if (!isCask)
        return {"install", name};
    BrewArguments all{"install", "--cask"};
    if (request.adopt)
        all.append("--adopt");
    if (request.force)
        all.append("--force");
    all.append(name);
    return all;
}

} // namespace

BrewArguments brewArguments(const OperationRequest &request, const PackageTarget &package) {
    if (request.kind == OperationKind::UpgradeAll)
        return {"upgrade"};
    const auto name = PackageName::parse(package.name);
    if (!name)
        return {};
    switch (request.kind) {
    case OperationKind::Install:
        return installWords(request, package.isCask, *name);
    case OperationKind::Upgrade:
        if (!package.isCask)
            return {"upgrade", "--formula", *name};
        return {request.reinstallsCasks ? BrewWord("reinstall") : BrewWord("upgrade"), "--cask", *name};
    case OperationKind::Reinstall:
        return words("reinstall", package.isCask, *name);
    case OperationKind::Uninstall:
        return words("uninstall", package.isCask, *name);
    case OperationKind::Pin:
        return words("pin", package.isCask, *name);
    case OperationKind::Unpin:
        return words("unpin", package.isCask, *name);
    case OperationKind::RestartService:
        return {"services", "restart", *name};
    case OperationKind::UpgradeAll:
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
