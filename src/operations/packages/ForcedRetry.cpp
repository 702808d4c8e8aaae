#include "operations/packages/ForcedRetry.h"

#include <QFileInfo>

#include <algorithm>

namespace larkspur {

namespace {

/// Formulae are never forced.
std::optional<ForcedRetry> forced(const BrewWord &command, const PackageTarget &package,
                                  const QString &announcement) {
    const auto name = PackageName::parse(package.name);
    if (!package.isCask || !name)
        return std::nullopt;
    return ForcedRetry{announcement, {command, "--cask", "--force", *name}};
}

bool contains(const QStringList &output, QLatin1String phrase) {
    return std::ranges::any_of(output, [phrase](const QString &line) { return line.contains(phrase); });
}

bool namesMissingApp(const QString &line, const QStringList &appsAtTheirPlace) {
    if (!line.contains(QLatin1String("source '")) || !line.contains(QLatin1String("is not there")))
        return false;
    return line.contains(QLatin1String("/Caskroom/")) ||
           std::ranges::any_of(appsAtTheirPlace, [&line](const QString &path) {
               return line.contains(QLatin1Char('\'') + path + QLatin1Char('\'')) && !QFileInfo::exists(path);
           });
}

} // namespace

std::optional<ForcedRetry> retryWithoutAdopting(const PackageTarget &package, const QStringList &output) {
    if (!contains(output, QLatin1String("Options --adopt and --force are mutually exclusive")))
        return std::nullopt;
    return forced("install", package,
                  QStringLiteral("This Homebrew does not adopt and force at once. Retrying with --force…"));
}

std::optional<ForcedRetry> retryWithoutApplication(const BrewWord &command, const PackageTarget &package,
                                                   const QStringList &output, const QStringList &places) {
    if (std::ranges::none_of(output, [&](const QString &line) { return namesMissingApp(line, places); }))
        return std::nullopt;
    return forced(command, package,
                  QStringLiteral("%1 was removed outside Homebrew, but Homebrew still lists it as "
                                 "installed. Retrying with --force…")
                      .arg(package.name));
}

std::optional<ForcedRetry> retryOverOlderCopy(const PackageTarget &package, const QStringList &output) {
    if (!contains(output, QLatin1String("It seems there is already a")))
        return std::nullopt;
    return forced("reinstall", package,
                  QStringLiteral("An older copy of %1 is blocking the update. Retrying with --force…")
                      .arg(package.name));
}

} // namespace larkspur
