#include "operations/packages/UpgradeCommand.h"

#include "core/settings/Preferences.h"

namespace larkspur {

bool UpgradeCommand::reinstallsCasks() const {
    return m_preferences.boolean(keys::useReinstallForCasks);
}

BrewArguments UpgradeCommand::arguments(const PackageTarget &package) const {
    if (package.isCask)
        return plainArguments(reinstallsCasks() ? BrewWord("reinstall") : BrewWord("upgrade"), package);
    const auto name = PackageName::parse(package.name);
    return name ? BrewArguments{"upgrade", "--formula", *name} : BrewArguments();
}

std::optional<ForcedRetry> UpgradeCommand::retry(const PackageTarget &package, const QStringList &output,
                                                 const QStringList &places) const {
    if (auto retry = retryWithoutApplication("reinstall", package, output, places))
        return retry;
    return retryOverOlderCopy(package, output);
}

QString UpgradeCommand::cancelledLine(const PackageTarget &package, bool mayHaveChanged) const {
    if (mayHaveChanged)
        return PackageCommand::cancelledLine(package, mayHaveChanged);
    return QStringLiteral(
               "Administrator authorization is required to update %1 and was cancelled. No changes "
               "were made.")
        .arg(package.name);
}

} // namespace larkspur
