#pragma once

#include "operations/packages/PackageServices.h"
#include "operations/run/Operation.h"

namespace larkspur {

/// Upgrades what is named. What is pinned is unpinned for it and pinned again.
OperationPtr upgradePackages(const PackageServices &services, const QList<PackageTarget> &packages);

} // namespace larkspur
