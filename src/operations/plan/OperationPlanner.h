#pragma once

#include "core/async/Task.h"
#include "core/brew/BrewService.h"
#include "operations/plan/OperationPlan.h"
#include "operations/run/PackageTarget.h"

namespace larkspur {

class InventoryQueries;

/// Asks Homebrew, without changing anything, what an upgrade or a removal would do.
class OperationPlanner {
  public:
    OperationPlanner(BrewService &brew, InventoryQueries &queries);

    // None of them fails: a plan that could not be made says why.
    Task<OperationPlan> planUpgrade(QList<PackageTarget> packages, StopToken stop);
    Task<OperationPlan> planUpgradeOfAll(QList<PackageTarget> outdated, bool selfUpdating, StopToken stop);
    Task<OperationPlan> planRemoval(QList<PackageTarget> packages, StopToken stop);

  private:
    Task<> addDryRun(BrewCommand command, OperationPlan *plan);
    Task<QStringList> privilegedAmong(QStringList tokens, StopToken stop);

    BrewService &m_brew;
    InventoryQueries &m_queries;
};

} // namespace larkspur
