#include "operations/packages/TerminalCommand.h"

#include <algorithm>

namespace larkspur {

namespace {

const QString placeholder = QStringLiteral(" <package-name>");

} // namespace

QString terminalCommand(const PackageCommand &command, const QList<PackageTarget> &packages) {
    const QString standIn = QStringLiteral("x");
    QStringList words = command.arguments({.name = standIn}).words();
    if (words.isEmpty())
        return {}; // no single command does it
    words.removeAll(standIn);
    words.removeAll(QStringLiteral("--formula")); // Homebrew finds out by itself
    if (!packages.isEmpty() && std::ranges::all_of(packages, &PackageTarget::isCask))
        words.append(QStringLiteral("--cask"));
    for (const PackageTarget &package : packages)
        if (PackageName::parse(package.name)) // what goes to the clipboard is pasted into a shell
            words.append(package.name);
    const QString line = QStringLiteral("brew ") + words.join(QLatin1Char(' '));
    const bool isNamed = std::ranges::any_of(
        packages, [&words](const PackageTarget &package) { return words.contains(package.name); });
    return isNamed ? line : line + placeholder;
}

bool lacksPackageName(const QString &command) {
    return command.endsWith(placeholder);
}

} // namespace larkspur
