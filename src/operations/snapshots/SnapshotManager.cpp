#include "operations/snapshots/SnapshotManager.h"

#include "core/async/Worker.h"
#include "core/log/Logger.h"
#include "core/settings/Preferences.h"
#include "inventory/queries/InventoryQueries.h"
#include "operations/installed/InstalledPackages.h"

#include <QSet>

#include <algorithm>

namespace larkspur {

namespace {

Snapshot snapshotOf(const InstalledPackages &installed, QStringList taps) {
    Snapshot snapshot;
    snapshot.id = QUuid::createUuid();
    snapshot.date = QDateTime::currentDateTimeUtc();
    // As precise as the file: what is written reads back unchanged.
    snapshot.date = QDateTime::fromMSecsSinceEpoch(snapshot.date.toMSecsSinceEpoch(), Qt::UTC);
    const QMap<QString, QString> formulae = installed.currentFormulae();
    for (auto formula = formulae.cbegin(); formula != formulae.cend(); ++formula)
        snapshot.formulae.append({formula.key(), formula.value(), false});
    const QMap<QString, QString> casks = installed.currentCasks();
    for (auto cask = casks.cbegin(); cask != casks.cend(); ++cask)
        snapshot.casks.append({cask.key(), cask.value(), true});
    snapshot.taps = std::move(taps);
    return snapshot;
}

} // namespace

SnapshotManager::SnapshotManager(Parts parts)
    : m_parts(std::move(parts))
    , m_files(m_parts.folder) {}

Task<> SnapshotManager::load() {
    m_contents = co_await runInWorker([files = m_files] { return files.load(); });
    m_hasLoaded = true;
    Q_EMIT changed();
}

const Snapshot *SnapshotManager::find(const QUuid &id) const {
    const auto found = std::ranges::find(m_contents.snapshots, id, &Snapshot::id);
    return found == m_contents.snapshots.end() ? nullptr : &*found;
}

const Snapshot *SnapshotManager::find(const QString &idBeginning) const {
    const Snapshot *found = nullptr;
    for (const Snapshot &snapshot : m_contents.snapshots) {
        if (!snapshot.id.toString(QUuid::WithoutBraces).startsWith(idBeginning, Qt::CaseInsensitive))
            continue;
        if (found)
            return nullptr;
        found = &snapshot;
    }
    return idBeginning.isEmpty() ? nullptr : found;
}

Task<std::expected<Snapshot, QString>> SnapshotManager::current(StopToken stop) {
    const auto prefix = co_await m_parts.queries.homebrewPrefix(stop);
    if (!prefix)
        co_return std::unexpected(prefix.error().description());
    const auto taps = co_await m_parts.queries.tapNames(stop);
    if (!taps)
        co_return std::unexpected(taps.error().description());
    const auto installed = co_await runInWorker([path = *prefix] { return InstalledPackages::at(path); });
    if (!installed)
        co_return std::unexpected(installed.error());
    co_return snapshotOf(*installed, *taps);
}

Task<std::expected<Snapshot, QString>> SnapshotManager::take(SnapshotTrigger trigger,
                                                             std::optional<QString> note, StopToken stop) {
    auto snapshot = co_await current(std::move(stop));
    if (!snapshot)
        co_return std::unexpected(snapshot.error());
    snapshot->trigger = trigger;
    snapshot->note = std::move(note);
    co_return co_await keep(std::move(*snapshot));
}

Task<std::expected<Snapshot, QString>>
SnapshotManager::take(SnapshotTrigger trigger, const InstalledPackages *installed, StopToken stop) {
    const auto taps = co_await m_parts.queries.tapNames(std::move(stop));
    if (!taps)
        co_return std::unexpected(taps.error().description());
    Snapshot snapshot = snapshotOf(*installed, *taps);
    snapshot.trigger = trigger;
    co_return co_await keep(std::move(snapshot));
}

Task<std::expected<Snapshot, QString>> SnapshotManager::keep(Snapshot snapshot) {
    if (!m_hasLoaded || !failure().isEmpty())
        co_await load(); // or the limit would count the new one alone
    if (!failure().isEmpty())
        co_return std::unexpected(failure());
    const auto written = co_await runInWorker([files = m_files, snapshot] { return files.write(snapshot); });
    if (!written)
        co_return std::unexpected(written.error());
    m_contents.snapshots.prepend(snapshot);
    co_await applyRetention();
    Q_EMIT changed();
    co_return Snapshot(snapshot);
}

Task<> SnapshotManager::applyRetention() {
    const auto limit = m_parts.preferences.knownInteger(keys::snapshotRetentionLimit, defaultRetention);
    if (!limit)
        m_parts.logger.warn(QStringLiteral("[Larkspur] No old restore point is removed: it is not known how "
                                           "many are to be kept"));
    QList<QUuid> surplus;
    if (limit.value_or(0) > 0)
        for (qsizetype i = *limit; i < m_contents.snapshots.size(); ++i)
            surplus.append(m_contents.snapshots[i].id);
    if (!surplus.isEmpty() && !co_await remove(surplus))
        m_parts.logger.warn(QStringLiteral("[Larkspur] An old restore point could not be removed"));
}

Task<bool> SnapshotManager::setNote(QUuid id, QString note) {
    const Snapshot *found = find(id);
    if (!found || !found->refused.isEmpty())
        co_return false; // written again without what was left out, it would pass for whole
    Snapshot noted = *found;
    noted.note = note.isEmpty() ? std::nullopt : std::optional(note);
    const auto written = co_await runInWorker([files = m_files, noted] { return files.write(noted); });
    if (written)
        for (Snapshot &snapshot : m_contents.snapshots)
            if (snapshot.id == id)
                snapshot.note = noted.note;
    Q_EMIT changed();
    co_return written.has_value();
}

Task<bool> SnapshotManager::remove(QList<QUuid> ids) {
    const auto gone = co_await runInWorker([files = m_files, ids] {
        QSet<QUuid> removed;
        for (const QUuid &id : ids)
            if (files.remove(id))
                removed.insert(id);
        return removed;
    });
    m_contents.snapshots.removeIf([&gone](const Snapshot &snapshot) { return gone.contains(snapshot.id); });
    Q_EMIT changed();
    co_return gone.size() == ids.size();
}

Task<bool> SnapshotManager::removeAll() {
    QList<QUuid> ids;
    for (const Snapshot &snapshot : m_contents.snapshots)
        ids.append(snapshot.id);
    const bool areGone = co_await remove(ids);
    co_return areGone &&failure().isEmpty();
}

} // namespace larkspur
