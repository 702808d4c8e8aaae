#include "operations/TerminalCommand.h"

#include "core/brew/PackageName.h"
#include "operations/PackageCommands.h"

#include <algorithm>

namespace larkspur {

namespace {

const QString placeholder = QStringLiteral(" <package-name>");

} // namespace

QString terminalCommand(const OperationRequest &request) {
    QStringList names;
    for (const PackageTarget &package : request.packages)
        if (PackageName::parse(package.name)) // what goes to the clipboard is pasted into a shell
            names.append(package.name);
    const bool isCask =
        !request.packages.isEmpty() && std::ranges::all_of(request.packages, &PackageTarget::isCask);
    OperationRequest plain = request;
    plain.reinstallsCasks = false;
    const QString subcommand = brewArguments(plain, {.name = QStringLiteral("x")}).subcommand();
    if (subcommand.isEmpty())
        return {}; // no single command does it
    QString command = QStringLiteral("brew ") + subcommand;
    if (request.kind == OperationKind::RestartService)
        command += QStringLiteral(" restart");
    if (request.kind == OperationKind::UpgradeAll)
        return command;
    if (isCask)
        command += QStringLiteral(" --cask");
    return command + (names.isEmpty() ? placeholder : QLatin1Char(' ') + names.join(QLatin1Char(' ')));
}

bool lacksPackageName(const QString &command) {
    return command.endsWith(placeholder);
}

} // namespace larkspur
