#pragma once

#include "core/brew/BrewArguments.h"
#include "operations/OperationRequest.h"

#include <QStringList>

#include <optional>

namespace larkspur {

/// A second try of a failed command, with a flag that gets over what stood in the way.
struct ForcedRetry {
    QString announcement; ///< line for the output
    BrewArguments arguments;
};

/// The retry that the output of a failed command calls for, if any. `appsAtTheirPlace` are the paths where
/// the cask's applications belong: today's Homebrew names them, and not the Caskroom, for an application that
/// was removed by hand.
std::optional<ForcedRetry> forcedRetryFor(const OperationRequest &request, const PackageTarget &package,
                                          const QStringList &output, const QStringList &appsAtTheirPlace);

} // namespace larkspur
