#pragma once

#include "operations/packages/PackageServices.h"
#include "operations/run/Operation.h"
#include "operations/snapshots/RestoreOrder.h"

namespace larkspur {

/// Restores a restore point under one hold of the lock: taps, missing packages, removals, versions. What is
/// left to do follows from what is installed, so that one that was interrupted can be started again.
OperationPtr restoreSnapshot(const PackageServices &services, RestoreOrder order);

} // namespace larkspur
