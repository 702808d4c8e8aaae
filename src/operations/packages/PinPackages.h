#pragma once

#include "operations/packages/PackageServices.h"
#include "operations/run/Operation.h"

namespace larkspur {

/// Holds packages at their version.
OperationPtr pinPackages(const PackageServices &services, const QList<PackageTarget> &packages);
/// Lets them be upgraded again.
OperationPtr unpinPackages(const PackageServices &services, const QList<PackageTarget> &packages);

} // namespace larkspur
