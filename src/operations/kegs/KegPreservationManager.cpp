#include "operations/kegs/KegPreservationManager.h"

#include "core/async/Worker.h"
#include "core/log/Logger.h"
#include "core/settings/Preferences.h"
#include "core/trees/TreeChanges.h"
#include "core/trees/TreeCopier.h"
#include "core/trees/TreeSync.h"

#include <QDir>
#include <QFileInfo>
#include <QStorageInfo>

#include <algorithm>

namespace larkspur {

namespace {

/// Where the keg really lies, should its folder in the Cellar be a link; empty if that leads nowhere.
QString kegPath(const KegPreservationManager::Keg &keg) {
    return QFileInfo(keg.prefix + QStringLiteral("/Cellar/") + keg.formula + QLatin1Char('/') + keg.version)
        .canonicalFilePath();
}

/// The volume of a folder that may not exist yet.
QStorageInfo volumeOf(QString folder) {
    while (!QDir(folder).exists() && folder.contains(QLatin1Char('/')))
        folder = folder.section(QLatin1Char('/'), 0, -2);
    return QStorageInfo(folder.isEmpty() ? QStringLiteral("/") : folder);
}

/// Why there is no room for a copy; empty if there is.
QString shortage(const QString &folder, const QString &keg) {
    constexpr qint64 plenty = KegPreservationManager::keptFree * 20; // then the exact size does not matter
    const qint64 available = volumeOf(folder).bytesAvailable();
    if (available < 0 || available > plenty)
        return {};
    const auto scan = TreeScan::of(keg, TreeScan::Depth::Names);
    if (scan && available - scan->bytesOnDisk >= KegPreservationManager::keptFree)
        return {};
    return QStringLiteral("less than 1 GiB would be left on its volume");
}

} // namespace

KegPreservationManager::KegPreservationManager(Parts parts)
    : m_parts(std::move(parts)) {
    publish();
    connect(&m_parts.preferences, &Preferences::changed, this, [this](const QString &key) {
        if (key != keys::kegPreservationLocation)
            return;
        m_store.reset();
        publish();
    });
}

bool KegPreservationManager::isEnabled() const {
    return m_parts.preferences.boolean(keys::kegPreservationEnabled, true);
}

qint64 KegPreservationManager::cap() const {
    return m_parts.preferences.integer(keys::kegPreservationCapBytes, defaultCap);
}

QString KegPreservationManager::folder() const {
    const QString chosen = m_parts.preferences.string(keys::kegPreservationLocation);
    return chosen.isEmpty() ? m_parts.defaultFolder : chosen + QStringLiteral("/Larkspur Rollback Kegs");
}

bool KegPreservationManager::isLocationAvailable() const {
    const QString chosen = m_parts.preferences.string(keys::kegPreservationLocation);
    return chosen.isEmpty() || QDir(chosen).exists();
}

QList<KegEntry> KegPreservationManager::entriesFor(const QString &formula) const {
    QList<Entry> found;
    std::ranges::copy_if(m_entries, std::back_inserter(found),
                         [&formula](const Entry &entry) { return entry.formula == formula; });
    return found;
}

bool KegPreservationManager::canRollBack(const QString &formula, const QString &version) const {
    return !obstacle(formula, version);
}

std::optional<QString> KegPreservationManager::obstacle(const QString &formula,
                                                        const QString &version) const {
    if (!isLocationAvailable())
        return QStringLiteral("This location isn't available right now (drive not mounted). Rollback for "
                              "saved versions is paused until it's reconnected.");
    const bool isThere = std::ranges::any_of(
        m_entries, [&](const Entry &entry) { return entry.formula == formula && entry.version == version; });
    return isThere ? std::nullopt : std::optional(QStringLiteral("no preserved copy of ") + version);
}

std::optional<QString> KegPreservationManager::storedFolder(const QString &formula,
                                                            const QString &version) const {
    if (!canRollBack(formula, version))
        return std::nullopt;
    return m_store->copyPath(formula, version);
}

KegPreservationManager::StorePtr KegPreservationManager::store() {
    if (!m_store)
        m_store = std::make_shared<KegStore>(folder(), m_parts.sync);
    return m_store;
}

void KegPreservationManager::publish() {
    m_entries = store()->entries();
    Q_EMIT changed();
}

Task<std::expected<KegEntry, QString>>
KegPreservationManager::preserve(Keg keg, std::optional<QUuid> snapshotID, Work work) {
    const auto turn = co_await m_queue.acquire(work.stop);
    if (!turn)
        co_return std::unexpected(QStringLiteral("it was stopped"));
    if (!isLocationAvailable())
        co_return std::unexpected(QStringLiteral("the chosen location isn't available right now"));
    const QString path = kegPath(keg);
    if (path.isEmpty())
        co_return std::unexpected(QStringLiteral("its folder in the Cellar leads nowhere"));
    const QString noRoom = co_await runInWorker([to = folder(), path] { return shortage(to, path); });
    if (!noRoom.isEmpty())
        co_return std::unexpected(noRoom);
    const StorePtr target = store();
    const QString partial = target->partialPath();
    // Read while the copy is made: the bytes are in memory then anyway.
    auto scanning = runInWorker([path] { return TreeScan::of(path, TreeScan::Depth::Contents); });
    const auto copied = co_await m_parts.copier.copy(path, partial, work.stop, work.keptOpen);
    const auto scan = co_await scanning;
    if (!copied || !scan) {
        co_await runInWorker([partial, root = target->folder()] { return removeTree(root, partial); });
        co_return std::unexpected(copied ? scan.error() : copied.error());
    }
    const Entry entry{.formula = keg.formula,
                      .version = keg.version,
                      .bytes = scan->bytesOnDisk,
                      .date = QDateTime::currentDateTimeUtc(),
                      .snapshotID = snapshotID,
                      .fullName = keg.fullName == keg.formula ? QString() : keg.fullName};
    const auto adopted = co_await runInWorker(
        [target, partial, scan = *scan, entry] { return target->adopt(partial, scan, entry); });
    publish();
    if (!adopted)
        co_return std::unexpected(adopted.error());
    co_return Entry(entry);
}

Task<> KegPreservationManager::enforceCap(std::optional<QUuid> kept) {
    const auto known = m_parts.preferences.knownInteger(keys::kegPreservationCapBytes, defaultCap);
    if (!known) {
        m_parts.logger.warn(QStringLiteral("[Larkspur] No preserved keg is removed: it is not known how much "
                                           "room they may take"));
        co_return;
    }
    const auto turn = co_await m_queue.acquire({});
    const auto removed = co_await runInWorker(
        [target = store(), limit = *known, kept] { return target->enforceCap(limit, kept); });
    if (!removed)
        m_parts.logger.error(QStringLiteral("[Larkspur] No room could be made for preserved kegs: ") +
                             removed.error());
    for (const Entry &entry : removed.value_or(QList<Entry>()))
        m_parts.logger.info(QStringLiteral("[Larkspur] Removed the preserved keg of %1 %2 to make room")
                                .arg(entry.formula, entry.version));
    publish();
}

Task<std::expected<void, QString>> KegPreservationManager::restoreCopy(QString formula, QString version,
                                                                       QString to, Work work) {
    const auto failed = [](const QString &reason) {
        return std::unexpected(QStringLiteral("failed to restore preserved files: ") + reason);
    };
    const auto turn = co_await m_queue.acquire(work.stop);
    if (!turn)
        co_return failed(QStringLiteral("it was stopped"));
    if (const auto reason = obstacle(formula, version))
        co_return std::unexpected(*reason);
    const StorePtr source = store();
    // Checked while it is copied; the same bytes are read by both.
    auto checking = runInWorker([source, formula, version] { return source->check(formula, version); });
    const auto copied =
        co_await m_parts.copier.copy(source->copyPath(formula, version), to, work.stop, work.keptOpen);
    if (const auto checked = co_await checking; !checked)
        co_return std::unexpected(
            obstacle(formula, version) // the drive may have gone meanwhile
                .value_or(
                    QStringLiteral("no preserved copy of %1 can be used: %2").arg(version, checked.error())));
    if (!copied)
        co_return failed(copied.error());
    const auto synced = co_await runInWorker([sync = &m_parts.sync, to] { return sync->sync(to); });
    if (!synced)
        co_return failed(synced.error());
    co_return std::expected<void, QString>();
}

Task<bool> KegPreservationManager::verify(QString formula, QString version) {
    const auto turn = co_await m_queue.acquire({});
    co_return co_await runInWorker([target = store(), formula, version] {
        return target->entry(formula, version).has_value() && target->isIntact(formula, version);
    });
}

Task<std::expected<void, QString>> KegPreservationManager::remove(QString formula, QString version) {
    const auto turn = co_await m_queue.acquire({});
    auto removed = co_await runInWorker(
        [target = store(), formula, version] { return target->remove(formula, version); });
    publish();
    co_return std::expected<void, QString>(removed);
}

Task<> KegPreservationManager::reload() {
    const auto turn = co_await m_queue.acquire({});
    co_await runInWorker([target = store()] {
        target->load();
        return true;
    });
    if (m_entries != store()->entries())
        publish();
}

bool KegPreservationManager::hasLeftovers() const {
    return isLocationAvailable() && m_store->needsSweep();
}

Task<std::expected<void, QString>> KegPreservationManager::sweep() {
    const auto turn = co_await m_queue.acquire({});
    if (!isLocationAvailable())
        co_return std::expected<void, QString>();
    const auto swept = co_await runInWorker([target = store()] { return target->sweep(); });
    publish();
    co_return std::expected<void, QString>(swept);
}

bool KegStoreLeftover::exists(const QString &) const {
    return m_kegs.hasLeftovers();
}

Task<> KegStoreLeftover::putRight(LockedWork work) {
    if (const auto swept = co_await m_kegs.sweep(); !swept)
        work.warn(QStringLiteral("The saved versions could not be put right: ") + swept.error());
}

} // namespace larkspur
