#pragma once

#include "core/async/Task.h"
#include "inventory/state/InventoryState.h"

namespace larkspur {

class InventoryQueries;
class Logger;
class ShellExecutor;

/// Measures how much disk space each installed package takes, when somebody wants to know.
class PackageSizes {
  public:
    PackageSizes(ShellExecutor &shell, InventoryQueries &queries, InventoryState &state, Logger &logger);

    /// Fills the inventory's sizes. A request that comes while a measurement runs changes nothing.
    Task<> measure(StopToken stop = {});

  private:
    Task<QString> prefix(StopToken stop);

    ShellExecutor &m_shell;
    InventoryQueries &m_queries;
    InventoryState &m_state;
    Logger &m_logger;
};

/// The sizes in bytes that the output of "du -sk" states, by path.
QHash<QString, qint64> sizesFromDu(const QString &output);

} // namespace larkspur
