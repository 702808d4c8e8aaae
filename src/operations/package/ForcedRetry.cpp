#include "operations/package/ForcedRetry.h"

#include <QFileInfo>

#include <algorithm>

namespace larkspur {

namespace {

BrewArguments forcedArguments(const BrewWord &command, const PackageName &name) {
    return {command, "--cask", "--force", name};
}

bool namesMissingApp(const QString &line, const QStringList &appsAtTheirPlace) {
    if (!line.contains(QLatin1String("source '")) || !line.contains(QLatin1String("is not there")))
        return false;
    return line.contains(QLatin1String("/Caskroom/")) ||
           std::ranges::any_of(appsAtTheirPlace, [&line](const QString &path) {
               return line.contains(QLatin1Char('\'') + path + QLatin1Char('\'')) && !QFileInfo::exists(path);
           });
}

bool refusesAdoptWithForce(const QStringList &output) {
    return std::ranges::any_of(output, [](const QString &line) {
        return line.contains(QLatin1String("Options --adopt and --force are mutually exclusive"));
    });
}

} // namespace

std::optional<ForcedRetry> forcedRetryFor(const OperationRequest &request, const PackageTarget &package,
                                          const QStringList &output, const QStringList &appsAtTheirPlace) {
    const auto name = PackageName::parse(package.name);
    if (!package.isCask || !name)
        return std::nullopt;
    if (request.kind == OperationKind::Install && refusesAdoptWithForce(output))
        return ForcedRetry{
            QStringLiteral("==> This Homebrew does not adopt and force at once. Retrying with --force…"),
            forcedArguments("install", *name)};
    const bool isUpdate = request.isUpgrade();
    if (!isUpdate && request.kind != OperationKind::Uninstall)
        return std::nullopt;
    const BrewWord command = isUpdate ? BrewWord("reinstall") : BrewWord("uninstall");
    if (std::ranges::any_of(output,
                            [&](const QString &line) { return namesMissingApp(line, appsAtTheirPlace); }))
        return ForcedRetry{
            QStringLiteral("==> %1 was removed outside Homebrew, but Homebrew still lists it as "
                           "installed. Retrying with --force…")
                .arg(package.name),
            forcedArguments(command, *name)};
    if (isUpdate && std::ranges::any_of(output, [](const QString &line) {
            return line.contains(QLatin1String("It seems there is already a"));
        }))
        return ForcedRetry{
            QStringLiteral("==> An older copy of %1 is blocking the update. Retrying with --force…")
                .arg(package.name),
            forcedArguments(command, *name)};
    return std::nullopt;
}

} // namespace larkspur
