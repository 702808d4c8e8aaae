#pragma once

#include "operations/packages/PackageServices.h"
#include "operations/run/Operation.h"

namespace larkspur {

/// Restarts the services of formulae, so that they run the files of today.
OperationPtr restartServices(const PackageServices &services, const QStringList &formulae);

} // namespace larkspur
