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
    , m_brew(m_shell, m_resolver, m_logger)
    , m_queries(m_brew, m_preferences, m_logger)
    , m_cache(m_environment.locations.cacheFolder(), m_logger)
    , m_enrichment(m_environment.locations.applicationFolders)
    , m_refresh(m_queries, m_cache, m_enrichment, m_inventory, m_logger)
    , m_startupCheck(m_resolver, m_brew, m_inventory, m_preferences)
    , m_catalogueUpdate(m_brew, m_startupCheck, m_refresh)
    , m_packageSizes(m_shell, m_queries, m_inventory, m_logger)
    , m_latestRelease(m_network)
    , m_releaseCheck(m_latestRelease, m_inventory, m_environment.locations.asksTheNet)
    , m_packageOperations(m_brew)
    , m_tasks(m_logger)
    , m_operations(m_packageOperations, m_tasks) {
    // Whatever becomes of an operation: no list that it made stale may be shown at the next start.
    connect(&m_operations, &OperationCenter::packagesWillChange, this,
            [this] { m_refresh.invalidateCache(); });
}

Larkspur::~Larkspur() = default;

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
