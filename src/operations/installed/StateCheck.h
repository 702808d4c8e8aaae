#pragma once

#include "operations/OperationRequest.h"
#include "operations/installed/InstalledPackages.h"

namespace larkspur {

/// What is not as an operation that reported success should have left it: one warning line per package, with
/// what is really there.
QStringList stateWarnings(const OperationRequest &request, const QList<PackageTarget> &reportedDone,
                          const InstalledPackages &before, const InstalledPackages &after);

} // namespace larkspur
