#pragma once

#include "app/Environment.h"
#include "app/OperationJournal.h"
#include "core/async/TaskScope.h"
#include "core/authorization/AskpassFiles.h"
#include "core/authorization/StoredPassword.h"
#include "core/authorization/SudoAuth.h"
#include "core/brew/BrewPathResolver.h"
#include "core/brew/BrewService.h"
#include "core/brew/LatestBrewRelease.h"
#include "core/lock/OperationLock.h"
#include "core/log/Logger.h"
#include "core/process/ProcessShellExecutor.h"
#include "core/settings/Preferences.h"
#include "core/trees/TreeCopier.h"
#include "inventory/cache/PackageCache.h"
#include "inventory/queries/InventoryQueries.h"
#include "inventory/refresh/BrewReleaseCheck.h"
#include "inventory/refresh/CaskEnrichment.h"
#include "inventory/refresh/InventoryRefresh.h"
#include "inventory/refresh/PackageSizes.h"
#include "inventory/refresh/StartupCheck.h"
#include "inventory/state/InventoryState.h"
#include "operations/OperationCenter.h"
#include "operations/kegs/KegPreservationManager.h"
#include "operations/kegs/KegRollback.h"
#include "operations/packages/PackageServices.h"
#include "operations/packages/UpgradeSafeguard.h"
#include "operations/plan/OperationPlanner.h"
#include "operations/recovery/Recovery.h"
#include "operations/snapshots/SnapshotManager.h"
#include "userdata/UserDataManager.h"

#include <QNetworkAccessManager>

namespace larkspur {

/// The one place where the program's objects are made and joined. Window and terminal take from here the
/// services that they need. Everything lives on the main thread.
class Larkspur : public QObject {
    Q_OBJECT
  public:
    explicit Larkspur(Environment environment);
    ~Larkspur() override;

    const Locations &locations() const { return m_environment.locations; }
    Logger &logger() { return m_logger; }
    Preferences &preferences() { return m_preferences; }
    BrewService &brew() { return m_brew; }
    InventoryQueries &queries() { return m_queries; }
    InventoryState &inventory() { return m_inventory; }
    InventoryRefresh &refresh() { return m_refresh; }
    StartupCheck &startupCheck() { return m_startupCheck; }
    UserDataManager &userData() { return m_userData; }
    PackageSizes &packageSizes() { return m_packageSizes; }
    OperationCenter &operations() { return m_operations; }
    KegPreservationManager &kegs() { return m_kegs; }
    SnapshotManager &snapshots() { return m_snapshots; }
    /// What operations on packages are made with.
    const PackageServices &packages() const { return m_packages; }
    SudoAuth &sudoAuth() { return m_sudoAuth; }
    StoredPassword &storedPassword() { return m_storedPassword; }
    BrewReleaseCheck &releaseCheck() { return m_releaseCheck; }
    TaskScope &tasks() { return m_tasks; }

    /// Puts right what an earlier run of the program left behind when it died, and tells `output` about it.
    /// Call it once at the start.
    Task<> recoverFromCrash(StopToken stop, OutputSinkPtr output, Recovery::Patience patience);

    /// Takes over what another Larkspur has written since: a command in a terminal, while the window was
    /// open.
    void readFilesAgain();

    /// From now on the inventory is refreshed after each operation and each preference that changes it: for
    /// the window, which stays.
    void keepInventoryFresh();

    /// Asked to end by `shutDown`; queries that nobody else stops take it.
    StopToken stopToken() const { return m_stop.get_token(); }

    /// Asks everything that runs to end. The object may be destroyed once `drained` was emitted; if nothing
    /// runs that happens at the next turn of the event loop.
    void shutDown();

  Q_SIGNALS:
    void drained();

  private:
    void refreshInBackground(const QString &reason);
    Task<> readVersion();
    void keepKegsWithinTheirCap();
    std::vector<std::unique_ptr<Leftover>> leftovers();

    Environment m_environment;
    StopSource m_stop;
    Logger m_logger;
    Preferences m_preferences;
    ProcessShellExecutor m_shell;
    BrewPathResolver m_resolver;
    OperationLock m_operationLock;
    AskpassFiles m_askpass;
    BrewService m_brew;
    InventoryQueries m_queries;
    PackageCache m_cache;
    CaskEnrichment m_enrichment;
    InventoryState m_inventory;
    UserDataManager m_userData;
    InventoryRefresh m_refresh;
    StartupCheck m_startupCheck;
    PackageSizes m_packageSizes;
    QNetworkAccessManager m_network;
    LatestBrewRelease m_latestRelease;
    BrewReleaseCheck m_releaseCheck;
    TaskScope m_tasks;
    StoredPassword m_storedPassword;
    SudoAuth m_sudoAuth;
    TreeCopier m_copier;
    KegPreservationManager m_kegs;
    KegRollback m_rollback;
    CaskSetting m_casks;
    Recovery m_recovery;
    SnapshotManager m_snapshots;
    UpgradeSafeguard m_safeguard;
    OperationPlanner m_planner;
    PackageServices m_packages;
    OperationCenter m_operations;
    OperationJournal m_journal;
};

} // namespace larkspur
