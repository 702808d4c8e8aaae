#pragma once

#include "core/async/Task.h"
#include "operations/run/PackageTarget.h"

#include <QList>

namespace larkspur {

class InventoryQueries;

/// What needs another of them before what it needs: Homebrew refuses to remove what is still needed. As they
/// were where Homebrew does not tell who needs whom.
Task<QList<PackageTarget>> inRemovalOrder(QList<PackageTarget> packages, InventoryQueries *queries,
                                          StopToken stop);

} // namespace larkspur
