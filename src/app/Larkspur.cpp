#include "app/Larkspur.h"

#include "operations/casks/LostApplications.h"
#include "operations/casks/MovedAsideLeftover.h"
#include "operations/oclp/CopyXattrsStub.h"
#include "operations/packages/HeldPin.h"
#include "operations/recovery/FileLeftovers.h"
#include "operations/recovery/LostLinks.h"

#include <algorithm>

namespace larkspur {

Larkspur::Larkspur(Environment environment)
    : m_environment(std::move(environment))
    , m_logger(m_environment.locations.logFolder())
    , m_preferences(std::move(m_environment.platform.preferenceStore))
    , m_shell({.askpassScript = m_environment.locations.askpassScript(),
               .readLoginShell = m_environment.locations.readLoginShell},
              m_preferences, *m_environment.platform.terminal, *m_environment.platform.processes, m_logger)
    , m_resolver(m_environment.locations, m_preferences, m_shell, m_logger)
    , m_operationLock(m_environment.locations.operationLock(), *m_environment.platform.processes)
    , m_askpass(m_environment.locations.askpassScript(), m_environment.locations.askpassSecret(),
                m_environment.locations.memoryFolder)
    , m_brew(m_shell, m_resolver, m_operationLock, m_askpass)
    , m_queries(m_brew, m_preferences, m_logger)
    , m_cache(m_environment.locations.cacheFolder(), m_logger)
    , m_enrichment(m_environment.locations.applicationFolders)
    , m_userData(m_environment.locations.dataFolder, m_logger)
    , m_refresh(m_queries, m_cache, m_enrichment, m_inventory, m_logger)
    , m_startupCheck(m_resolver, m_brew, m_inventory, m_preferences)
    , m_packageSizes(m_shell, m_queries, m_inventory, m_logger)
    , m_latestRelease(m_network)
    , m_releaseCheck(m_latestRelease, m_inventory, m_environment.locations.asksTheNet)
    , m_tasks(m_logger)
    , m_storedPassword(*m_environment.platform.passwordStore, *m_environment.platform.passwordVerifier,
                       m_preferences)
    , m_sudoAuth({*m_environment.platform.passwordVerifier, m_storedPassword,
                  *m_environment.platform.memoryProtection, m_tasks})
    , m_copier(m_shell, m_environment.locations.copyTool)
    , m_kegs({.preferences = m_preferences,
              .logger = m_logger,
              .copier = m_copier,
              .sync = *m_environment.platform.treeSync,
              .defaultFolder = m_environment.locations.preservedKegs()})
    , m_rollback({.kegs = m_kegs,
                  .sync = *m_environment.platform.treeSync,
                  .logger = m_logger,
                  .noteFolder = m_environment.locations.crashNotes()})
    , m_casks({.noteFolder = m_environment.locations.crashNotes(),
               .trash = m_environment.platform.trash.get(),
               .prefix = {},
               .applicationFolders = m_environment.locations.applicationFolders})
    , m_recovery({.brew = m_brew, .resolver = m_resolver, .logger = m_logger}, leftovers())
    , m_snapshots({.queries = m_queries,
                   .preferences = m_preferences,
                   .logger = m_logger,
                   .folder = m_environment.locations.snapshots()})
    , m_safeguard({m_snapshots, m_kegs})
    , m_planner(m_brew, m_queries)
    , m_packages({.queries = m_queries,
                  .preferences = m_preferences,
                  .planner = m_planner,
                  .safeguard = m_safeguard,
                  .kegs = m_kegs,
                  .rollback = m_rollback,
                  .snapshots = m_snapshots,
                  .casks = m_casks})
    , m_operations({.recovery = m_recovery,
                    .queries = m_queries,
                    .sudoAuth = m_sudoAuth,
                    .tasks = m_tasks,
                    .logger = m_logger})
    , m_journal(m_operations, m_userData) {
    if (const auto written = m_askpass.writeScript(); !written)
        m_logger.error(QStringLiteral("[Larkspur] The askpass script: ") + written.error());
    if (const QString damage = m_preferences.damage(); !damage.isEmpty())
        m_logger.error(QStringLiteral("[Larkspur] ") + damage);
    connect(&m_preferences, &Preferences::notSaved, this, [this](const QString &reason) {
        m_logger.error(QStringLiteral("[Larkspur] A preference could not be saved: ") + reason);
    });
    keepKegsWithinTheirCap();
    // Whatever becomes of an operation: no list that it made stale may be shown at the next start.
    connect(&m_operations, &OperationCenter::packagesWillChange, this,
            [this] { m_refresh.invalidateCache(); });
}

Larkspur::~Larkspur() = default;

/// In the order in which they are put right: what a person misses most comes first.
std::vector<std::unique_ptr<Leftover>> Larkspur::leftovers() {
    const Locations &places = m_environment.locations;
    std::vector<std::unique_ptr<Leftover>> all;
    all.push_back(std::make_unique<SecretLeftover>(m_askpass));
    all.push_back(std::make_unique<CopyXattrsLeftover>());
    all.push_back(std::make_unique<MovedAsideLeftover>(m_casks));
    all.push_back(std::make_unique<LostApplicationsLeftover>(m_casks));
    all.push_back(std::make_unique<KegStoreLeftover>(m_kegs));
    all.push_back(std::make_unique<KegRollback::Leftover>(m_rollback));
    all.push_back(std::make_unique<ReinstallLeftover>(places.crashNotes()));
    all.push_back(std::make_unique<LostLinksLeftover>(places.crashNotes()));
    all.push_back(std::make_unique<HeldPinLeftover>(places.crashNotes()));
    all.push_back(std::make_unique<UnfinishedFilesLeftover>(
        QStringList{places.dataFolder, places.cacheFolder(), places.snapshots(), places.crashNotes()}));
    return all;
}

Task<> Larkspur::recoverFromCrash(StopToken stop, OutputSinkPtr output, Recovery::Patience patience) {
    return m_recovery.run(std::move(stop), std::move(output), patience);
}

void Larkspur::readFilesAgain() {
    m_preferences.reload();
    m_userData.reload();
    m_tasks.spawn(QStringLiteral("The list of preserved kegs"), m_kegs.reload());
    if (m_snapshots.hasLoaded())
        m_tasks.spawn(QStringLiteral("The list of restore points"), m_snapshots.load());
}

void Larkspur::keepInventoryFresh() {
    connect(&m_operations, &OperationCenter::finished, this, [this](const OperationRun *run) {
        m_inventory.update([](Inventory &inventory) { inventory.hasLoadedPackageSizes = false; });
        const bool isNewer = std::ranges::any_of(run->report().packages, [](const PackageResult &result) {
            return result.deed == Deed::CatalogueUpdated;
        });
        if (isNewer)
            m_tasks.spawn(QStringLiteral("The reading of Homebrew's version"), readVersion());
        refreshInBackground(QStringLiteral("The refresh after an operation"));
    });
    connect(&m_preferences, &Preferences::changed, this, [this](const QString &key) {
        if (key == keys::brewPathOverride)
            m_inventory.update([](Inventory &inventory) { inventory.brewPrefix.reset(); });
        if (key == keys::includeAutoUpdateCasks || key == keys::brewPathOverride)
            refreshInBackground(QStringLiteral("The refresh after a changed preference"));
    });
}

void Larkspur::keepKegsWithinTheirCap() {
    connect(&m_preferences, &Preferences::changed, this, [this](const QString &key) {
        // An upgrade that runs sees to it itself, and spares what it has just preserved.
        if (key == keys::kegPreservationCapBytes && m_operations.unfinished().isEmpty())
            m_tasks.spawn(QStringLiteral("The limit of preserved kegs"), m_kegs.enforceCap({}));
    });
}

void Larkspur::refreshInBackground(const QString &reason) {
    m_tasks.spawn(reason, m_refresh.refresh(stopToken()));
}

Task<> Larkspur::readVersion() {
    co_await m_startupCheck.readVersion(stopToken());
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
