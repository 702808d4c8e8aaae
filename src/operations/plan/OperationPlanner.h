#pragma once

#include "core/async/Task.h"
#include "operations/plan/OperationPlan.h"

namespace larkspur {

class BrewService;
class InventoryQueries;

/// Asks Homebrew, without changing anything, what an upgrade or a removal would do.
class OperationPlanner {
  public:
    OperationPlanner(BrewService &brew, InventoryQueries &queries);

    /// Whether there is anything to tell about this kind of operation beforehand.
    static bool plans(OperationKind kind);

    /// Never fails: a plan that could not be made says why.
    Task<OperationPlan> plan(OperationRequest request, StopToken stop = {});

  private:
    Task<OperationPlan> planUpgrade(OperationRequest request, StopToken stop);
    Task<OperationPlan> planRemoval(OperationRequest request, StopToken stop);
    Task<QStringList> privilegedAmong(QStringList tokens, StopToken stop);

    BrewService &m_brew;
    InventoryQueries &m_queries;
};

} // namespace larkspur
