#pragma once

#include "core/async/Task.h"
#include "operations/installed/InstalledPackages.h"
#include "operations/run/LockedWork.h"
#include "operations/run/OperationReport.h"

namespace larkspur {

class InventoryQueries;

/// The running services among these formulae, which were upgraded; says them.
Task<QStringList> servicesToRestart(LockedWork work, QStringList upgraded, InventoryQueries *queries);

/// One command was run for all of these packages: puts in place of its result, the first of the report, what
/// became of each of them, where no later result tells it: as far as the versions that are installed tell.
/// Returns what is not as it was reported, in words.
QStringList tellApart(const QList<PackageTarget> &packages, const InstalledPackages &before,
                      const InstalledPackages &after, OperationReport *report);

} // namespace larkspur
