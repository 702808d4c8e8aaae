#pragma once

#include "core/brew/OperationContext.h"
#include "core/errors/Result.h"

namespace larkspur {

class InventoryRefresh;
class OperationHistory;
class Recovery;
class StartupCheck;

/// Fetches Homebrew's newest catalogue, without which no newer versions are ever found, and refreshes the
/// inventory. Waits for its turn among the operations: an update under a running upgrade would pull the rug
/// from under it.
class CatalogueUpdate {
  public:
    CatalogueUpdate(Recovery &recovery, StartupCheck &startupCheck, InventoryRefresh &refresh,
                    OperationHistory &history);

    /// Homebrew's words go to the context's sink. If the update fails the inventory is refreshed all the
    /// same.
    Task<Result<bool>> run(OperationContext context);

  private:
    Task<Result<bool>> updateCatalogue(OperationContext context);

    Recovery &m_recovery;
    StartupCheck &m_startupCheck;
    InventoryRefresh &m_refresh;
    OperationHistory &m_history;
};

} // namespace larkspur
