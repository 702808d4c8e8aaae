#pragma once

#include "operations/packages/PackageServices.h"
#include "operations/run/Operation.h"

namespace larkspur {

/// Upgrades what is outdated: with Homebrew's own command for everything, or, where something else is
/// outdated that is to be left alone, by naming each package that is not pinned.
OperationPtr upgradeOfAll(const PackageServices &services, const QList<PackageTarget> &outdated,
                          bool leavesSomeOut);

} // namespace larkspur
