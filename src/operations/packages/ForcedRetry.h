#pragma once

#include "core/brew/BrewArguments.h"
#include "operations/run/PackageTarget.h"

#include <QStringList>

#include <optional>

namespace larkspur {

/// A second try of a failed command, with a flag that gets over what stood in the way.
struct ForcedRetry {
    QString announcement; ///< for the output
    BrewArguments arguments;
};

/// The output says that Homebrew does not adopt and force at once.
std::optional<ForcedRetry> retryWithoutAdopting(const PackageTarget &package, const QStringList &output);
/// The output says that an application of the cask is not where Homebrew put it; `command` is forced then.
/// `places`: where the cask's applications belong, which today's Homebrew names instead of the Caskroom.
std::optional<ForcedRetry> retryWithoutApplication(const BrewWord &command, const PackageTarget &package,
                                                   const QStringList &output, const QStringList &places);
/// The output says that an older copy is in the way of an upgrade.
std::optional<ForcedRetry> retryOverOlderCopy(const PackageTarget &package, const QStringList &output);

} // namespace larkspur
