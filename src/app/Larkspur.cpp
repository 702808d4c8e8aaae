#include "app/Larkspur.h"

namespace larkspur {

Larkspur::Larkspur(Environment environment)
    : m_environment(std::move(environment))
    , m_logger(m_environment.locations.logFolder())
    , m_preferences(std::move(m_environment.preferenceStore))
    , m_shell({.askpassScript = m_environment.locations.askpassScript(),
               .readLoginShell = m_environment.locations.readLoginShell},
              m_preferences, *m_environment.terminal, m_logger)
    , m_resolver(m_environment.locations, m_preferences, m_shell, m_logger)
    , m_operationLock(m_environment.locations.operationLock(), m_logger)
    , m_askpass(m_environment.locations.askpassScript(), m_environment.locations.askpassSecret(),
                m_environment.locations.memoryFolder)
    , m_brew(m_shell, m_resolver, m_operationLock, m_askpass)
    , m_queries(m_brew, m_preferences, m_logger)
    , m_cache(m_environment.locations.cacheFolder(), m_logger)
    , m_enrichment(m_environment.locations.applicationFolders)
    , m_userData(m_environment.locations.dataFolder, m_logger)
    , m_history(m_userData)
    , m_refresh(m_queries, m_cache, m_enrichment, m_inventory, m_logger)
    , m_startupCheck(m_resolver, m_brew, m_inventory, m_preferences)
    , m_catalogueUpdate(m_brew, m_startupCheck, m_refresh, m_history)
    , m_packageSizes(m_shell, m_queries, m_inventory, m_logger)
    , m_latestRelease(m_network)
    , m_releaseCheck(m_latestRelease, m_inventory, m_environment.locations.asksTheNet)
    , m_tasks(m_logger)
    , m_storedPassword(*m_environment.passwordStore, *m_environment.passwordVerifier, m_preferences)
    , m_sudoAuth(
          {*m_environment.passwordVerifier, m_storedPassword, *m_environment.memoryProtection, m_tasks})
    , m_copier(m_shell, m_environment.locations.copyTool)
    , m_kegs({.preferences = m_preferences,
              .logger = m_logger,
              .copier = m_copier,
              .defaultFolder = m_environment.locations.preservedKegs()})
    , m_rollback({.kegs = m_kegs, .logger = m_logger, .noteFile = m_environment.locations.rollbackNote()})
    , m_snapshots({.queries = m_queries,
                   .preferences = m_preferences,
                   .logger = m_logger,
                   .folder = m_environment.locations.snapshots()})
    , m_restore({m_snapshots, m_kegs, m_rollback, m_history})
    , m_safeguard({m_snapshots, m_kegs, m_logger})
    , m_packageOperations({.brew = m_brew,
                           .queries = m_queries,
                           .preferences = m_preferences,
                           .logger = m_logger,
                           .safeguard = m_safeguard,
                           .rollback = m_rollback,
                           .restore = m_restore,
                           .history = m_history,
                           .movedAsideNote = m_environment.locations.movedAsideNote(),
                           .heldPinNote = m_environment.locations.heldPinNote()})
    , m_planner(m_brew, m_queries)
    , m_recovery({.resolver = m_resolver,
                  .brew = m_brew,
                  .askpass = m_askpass,
                  .kegs = m_kegs,
                  .rollback = m_rollback,
                  .movedAsideNote = m_environment.locations.movedAsideNote(),
                  .heldPinNote = m_environment.locations.heldPinNote(),
                  .logger = m_logger})
    , m_operations(m_packageOperations, m_sudoAuth, m_tasks) {
    if (const auto written = m_askpass.writeScript(); !written)
        m_logger.error(QStringLiteral("[Larkspur] The askpass script: ") + written.error());
    // Whatever becomes of an operation: no list that it made stale may be shown at the next start.
    connect(&m_operations, &OperationCenter::packagesWillChange, this,
            [this] { m_refresh.invalidateCache(); });
}

Larkspur::~Larkspur() = default;

void Larkspur::recoverFromCrash() {
    m_tasks.spawn(QStringLiteral("The recovery after a crash"), m_recovery.run());
}

void Larkspur::readFilesAgain() {
    m_userData.reload();
    m_tasks.spawn(QStringLiteral("The list of preserved kegs"), m_kegs.reload());
    if (m_snapshots.hasLoaded())
        m_tasks.spawn(QStringLiteral("The list of restore points"), m_snapshots.load());
}

void Larkspur::keepInventoryFresh() {
    connect(&m_operations, &OperationCenter::finished, this, [this] {
        m_inventory.update([](Inventory &inventory) { inventory.hasLoadedPackageSizes = false; });
        refreshInBackground(QStringLiteral("The refresh after an operation"));
    });
    connect(&m_preferences, &Preferences::changed, this, [this](const QString &key) {
        if (key == keys::brewPathOverride)
            m_inventory.update([](Inventory &inventory) { inventory.brewPrefix.reset(); });
        if (key == keys::includeAutoUpdateCasks || key == keys::brewPathOverride)
            refreshInBackground(QStringLiteral("The refresh after a changed preference"));
    });
}

void Larkspur::refreshInBackground(const QString &reason) {
    m_tasks.spawn(reason, m_refresh.refresh(stopToken()));
}

void Larkspur::shutDown() {
    m_operations.stopAll();
    m_stop.request_stop();
    if (m_tasks.isDrained())
        QMetaObject::invokeMethod(this, &Larkspur::drained, Qt::QueuedConnection);
    else
        connect(&m_tasks, &TaskScope::drained, this, &Larkspur::drained, Qt::QueuedConnection);
}

} // namespace larkspur
