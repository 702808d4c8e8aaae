#include "operations/kegs/KegPreservationManager.h"

#include "core/async/Worker.h"
#include "core/log/Logger.h"
#include "core/settings/Preferences.h"
#include "core/trees/TreeChanges.h"
#include "core/trees/TreeCopier.h"

#include <QDir>
#include <QStorageInfo>

#include <algorithm>

namespace larkspur {

namespace {

QString kegPath(const KegPreservationManager::Keg &keg) {
    return keg.prefix + QStringLiteral("/Cellar/") + keg.formula + QLatin1Char('/') + keg.version;
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
    return isLocationAvailable() && std::ranges::any_of(m_entries, [&](const Entry &entry) {
               return entry.formula == formula && entry.version == version;
           });
}

std::optional<QString> KegPreservationManager::storedFolder(const QString &formula,
                                                            const QString &version) const {
    if (!canRollBack(formula, version))
        return std::nullopt;
    return m_store->copyPath(formula, version);
}

KegPreservationManager::StorePtr KegPreservationManager::store() {
    if (!m_store)
        m_store = std::make_shared<KegStore>(folder());
    return m_store;
}

void KegPreservationManager::publish() {
    m_entries = store()->entries();
    Q_EMIT changed();
}

Task<std::expected<KegEntry, QString>>
KegPreservationManager::preserve(Keg keg, std::optional<QUuid> snapshotID, StopToken stop) {
    const auto turn = co_await m_queue.acquire(stop);
    if (!turn)
        co_return std::unexpected(QStringLiteral("it was stopped"));
    if (!isLocationAvailable())
        co_return std::unexpected(QStringLiteral("the chosen location isn't available right now"));
    const QString noRoom =
        co_await runInWorker([to = folder(), from = kegPath(keg)] { return shortage(to, from); });
    if (!noRoom.isEmpty())
        co_return std::unexpected(noRoom);
    const StorePtr target = store();
    const QString partial = target->partialPath();
    // Read while the copy is made: the bytes are in memory then anyway.
    auto scanning =
        runInWorker([path = kegPath(keg)] { return TreeScan::of(path, TreeScan::Depth::Contents); });
    const auto copied = co_await m_parts.copier.copy(kegPath(keg), partial, stop);
    const auto scan = co_await scanning;
    if (!copied || !scan) {
        co_await runInWorker([partial] { return removeTree(partial); });
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
    const auto turn = co_await m_queue.acquire({});
    const auto removed = co_await runInWorker(
        [target = store(), limit = cap(), kept] { return target->enforceCap(limit, kept); });
    for (const Entry &entry : removed)
        m_parts.logger.info(QStringLiteral("[Larkspur] Removed the preserved keg of %1 %2 to make room")
                                .arg(entry.formula, entry.version));
    publish();
}

Task<std::expected<bool, QString>> KegPreservationManager::restoreCopy(QString formula, QString version,
                                                                       QString to, StopToken stop) {
    const auto turn = co_await m_queue.acquire(stop);
    if (!turn)
        co_return std::unexpected(QStringLiteral("it was stopped"));
    if (!canRollBack(formula, version))
        co_return false;
    const StorePtr source = store();
    // Checked while it is copied; the same bytes are read by both.
    auto checking = runInWorker([source, formula, version] { return source->isIntact(formula, version); });
    const auto copied = co_await m_parts.copier.copy(source->copyPath(formula, version), to, stop);
    if (!co_await checking)
        co_return false;
    if (!copied)
        co_return std::unexpected(copied.error());
    co_return true;
}

Task<bool> KegPreservationManager::verify(QString formula, QString version) {
    const auto turn = co_await m_queue.acquire({});
    co_return co_await runInWorker([target = store(), formula, version] {
        return target->entry(formula, version).has_value() && target->isIntact(formula, version);
    });
}

Task<bool> KegPreservationManager::remove(QString formula, QString version) {
    const auto turn = co_await m_queue.acquire({});
    const bool isGone = co_await runInWorker(
        [target = store(), formula, version] { return target->remove(formula, version); });
    publish();
    co_return isGone;
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

Task<> KegPreservationManager::sweep() {
    const auto turn = co_await m_queue.acquire({});
    if (!isLocationAvailable())
        co_return;
    co_await runInWorker([target = store()] {
        target->sweep();
        return true;
    });
    publish();
}

} // namespace larkspur
