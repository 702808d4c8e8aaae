#pragma once

#include "operations/packages/PackageServices.h"
#include "operations/run/Operation.h"

namespace larkspur {

class KegRollback;

/// Puts formulae back to preserved versions: each to its `latestVersion`.
OperationPtr rollBackKegs(const PackageServices &services, const QList<PackageTarget> &formulae);

/// The same for one of them, within another operation; adds its end to the report.
Task<Result<bool>> rollBackKeg(LockedWork work, KegRollback *rollback, PackageTarget formula,
                               OperationReport *report);

} // namespace larkspur
