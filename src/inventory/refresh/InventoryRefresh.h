#pragma once

#include "inventory/queries/InventoryQueries.h"
#include "inventory/state/InventoryState.h"

#include <memory>

namespace larkspur {

class CaskEnrichment;
class Logger;
class PackageCache;

/// Brings the inventory up to date: first from the cache, then from Homebrew, all queries side by side. A
/// request that comes while a refresh runs is merged into one more run at its end.
class InventoryRefresh : public QObject {
    Q_OBJECT
  public:
    InventoryRefresh(InventoryQueries &queries, PackageCache &cache, CaskEnrichment &enrichment,
                     InventoryState &state, Logger &logger);

    /// Shows the cached lists, expired ones too, before any brew has run.
    void showCache();

    /// Ends when a run that began after this call has ended.
    Task<> refresh(StopToken stop = {});

    /// The installed set has changed or is about to: no list that this made stale may be shown at the next
    /// start.
    void invalidateCache();

  private:
    Task<> runOnce(StopToken stop);
    Task<bool> loadFormulae(StopToken stop);
    Task<bool> loadCasks(StopToken stop);
    Task<bool> loadOutdated(StopToken stop);
    /// Lists that are simply replaced.
    template <typename List>
    Task<bool> load(Task<Result<List>> query, QString what, List Inventory::*into);
    Task<bool> loadTaps(StopToken stop);
    Task<bool> loadPrefix(StopToken stop);
    Task<> enrichCasks(StopToken stop);
    void begin();
    void finish();
    void noteFailure(const QString &prefix, const BrewError &error);

    InventoryQueries &m_queries;
    PackageCache &m_cache;
    CaskEnrichment &m_enrichment;
    InventoryState &m_state;
    Logger &m_logger;
    std::shared_ptr<Task<>> m_current;
    bool m_isRunning = false;
    int m_started = 0;
    int m_finished = 0;
    int m_cacheGeneration = 0; ///< grows when the installed set changes: answers from before are not cached
    QStringList m_failures;
    QList<RepeatedError> m_errors;
    bool m_xcodeFailure = false;
};

} // namespace larkspur
