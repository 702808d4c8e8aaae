#include "operations/kegs/KegStore.h"

#include "core/files/AtomicFile.h"
#include "core/trees/LinkCheck.h"
#include "core/trees/TreeChanges.h"
#include "core/trees/TreeSync.h"
#include "operations/kegs/KegCopy.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace larkspur {

KegStore::KegStore(QString folder, TreeSync &sync)
    : m_places(std::move(folder))
    , m_index(m_places)
    , m_sync(sync) {
    load();
}

void KegStore::load() {
    m_failure = m_places.unreadable();
    m_entries = m_index.read();
    if (m_failure.isEmpty())
        m_failure = m_index.failure();
}

/// Keeps other programs from changing the index, and takes over what they have changed.
std::expected<LockFile, QString> KegStore::beginChange() {
    if (const QString reason = m_places.unreadable(); !reason.isEmpty())
        return std::unexpected(reason); // then the lock could not be had either, for a worse reason
    auto lock = m_index.lock();
    if (!lock)
        return lock;
    load();
    if (!m_failure.isEmpty())
        return std::unexpected(m_failure);
    if (!m_index.isWhole())
        rebuild();
    return lock;
}

std::optional<KegEntry> KegStore::entry(const QString &formula, const QString &version) const {
    const auto found = std::ranges::find_if(m_entries, [&](const KegEntry &entry) {
        return entry.formula == formula && entry.version == version;
    });
    return found == m_entries.end() ? std::nullopt : std::optional(*found);
}

QString KegStore::partialPath() const {
    QDir().mkpath(folder());
    return m_places.partial();
}

std::expected<void, QString> KegStore::adopt(const QString &partial, const TreeScan &scan,
                                             const KegEntry &entry) {
    const QString manifest = KegPlaces::manifestOfPartial(partial);
    const auto fail = [&](const QString &reason) {
        (void)removeTree(folder(), partial);
        QFile::remove(manifest);
        return std::unexpected(reason);
    };
    const auto copied = TreeScan::of(partial, TreeScan::Depth::Names);
    if (!copied)
        return fail(copied.error());
    if (!copied->matches(scan))
        return fail(QStringLiteral("the copy differs from what was copied"));
    if (const auto written = writeFileAtomically(manifest, scan.toText()); !written)
        return fail(written.error());
    if (const auto synced = m_sync.sync(partial); !synced)
        return fail(synced.error());
    const auto lock = beginChange();
    if (!lock)
        return fail(lock.error());
    if (const auto placed = place(partial, entry); !placed)
        return fail(placed.error());
    return {};
}

/// Renames only, until the new copy stands: the earlier one goes last.
std::expected<void, QString> KegStore::place(const QString &partial, const KegEntry &entry) {
    const QString copy = copyPath(entry.formula, entry.version);
    const QString earlier = m_places.earlier(entry.formula, entry.version);
    const bool hadEntry = this->entry(entry.formula, entry.version).has_value();
    if (const auto isOurs = withoutLinks(folder(), copy); !isOurs)
        return isOurs;
    if (QFileInfo::exists(copy) && !(removeTree(folder(), earlier) && moveTree(folder(), copy, earlier)))
        return std::unexpected(QStringLiteral("an older copy in %1 cannot be moved aside").arg(copy));
    const FileCalls calls;
    const QByteArray manifest = QFile::encodeName(KegPlaces::manifestOfPartial(partial));
    const bool isListed =
        moveTree(folder(), partial, copy) &&
        calls.rename(manifest, QFile::encodeName(m_places.manifest(entry.formula, entry.version))) == 0;
    if (!isListed || calls.syncFolder(QFile::encodeName(QFileInfo(copy).path())) != 0 ||
        calls.syncFolder(QFile::encodeName(folder())) != 0) {
        if (!isListed) {
            (void)moveTree(folder(), copy, m_places.discarded());
            (void)moveTree(folder(), earlier, copy);
        } else if (!QFileInfo::exists(earlier)) { // else the next sweep sees which of the two is on the disk
            (void)moveOut(entry.formula, entry.version, m_places.discarded());
        }
        return std::unexpected(QStringLiteral("%1 cannot be written").arg(folder()));
    }
    m_entries.removeIf([&entry](const KegEntry &other) {
        return other.formula == entry.formula && other.version == entry.version;
    });
    m_entries.append(entry);
    // With an earlier entry of the same version the index names this copy already.
    if (const auto saved = m_index.write(m_entries); !saved && !hadEntry) {
        m_entries.removeLast();
        (void)moveOut(entry.formula, entry.version, m_places.discarded());
        return saved;
    }
    (void)removeTree(folder(), earlier); // what is left of it goes with the next sweep
    return {};
}

bool KegStore::isIntact(const QString &formula, const QString &version) const {
    return check(formula, version).has_value();
}

std::expected<void, QString> KegStore::check(const QString &formula, const QString &version) const {
    return checkCopy(m_places, {formula, version});
}

std::expected<void, QString> KegStore::remove(const QString &formula, const QString &version) {
    if (!QDir(folder()).exists() && m_places.unreadable().isEmpty())
        return {};
    const auto lock = beginChange();
    if (!lock)
        return std::unexpected(lock.error());
    return removeEntry(formula, version);
}

std::expected<void, QString> KegStore::removeEntry(const QString &formula, const QString &version) {
    if (const auto isOurs = withoutLinks(folder(), copyPath(formula, version)); !isOurs)
        return isOurs;
    const auto isMeant = [&](const KegEntry &entry) {
        return entry.formula == formula && entry.version == version;
    };
    // The entry goes first: from here on nobody relies on the files.
    if (m_entries.removeIf(isMeant) > 0)
        if (const auto saved = m_index.write(m_entries); !saved)
            return saved;
    const QString discarded = m_places.discarded();
    if (const auto moved = moveOut(formula, version, discarded); !moved)
        return moved;
    if (const auto gone = removeTree(folder(), discarded); !gone)
        return std::unexpected(QStringLiteral("%1 cannot be removed entirely: %2")
                                   .arg(copyPath(formula, version), gone.error()));
    return {};
}

/// Under a name from which nobody takes it for a copy, whatever happens next.
std::expected<void, QString> KegStore::moveOut(const QString &formula, const QString &version,
                                               const QString &to) const {
    const QString copy = copyPath(formula, version);
    if (const auto isOurs = withoutLinks(folder(), copy); !isOurs)
        return isOurs;
    if (QFileInfo::exists(copy))
        if (const auto moved = moveTree(folder(), copy, to); !moved)
            return moved;
    QFile::remove(m_places.manifest(formula, version));
    QDir().rmdir(m_places.rack(formula));
    return {};
}

/// The index may say anything of their sizes: what counts is what the copies take.
QHash<QString, qint64> KegStore::measuredSizes() const {
    QHash<QString, qint64> sizes;
    for (const KegEntry &entry : m_entries)
        sizes.insert(copyPath(entry.formula, entry.version),
                     bytesOfCopy(m_places, {entry.formula, entry.version}));
    return sizes;
}

/// The oldest copy that may be removed.
const KegEntry *KegStore::oldest(const std::optional<QUuid> &kept) const {
    const KegEntry *found = nullptr;
    for (const KegEntry &entry : m_entries) {
        const bool isFree = !kept || entry.snapshotID != kept;
        const bool isOurs = withoutLinks(folder(), copyPath(entry.formula, entry.version)).has_value();
        if (isFree && isOurs && (!found || entry.date < found->date))
            found = &entry;
    }
    return found;
}

std::expected<QList<KegEntry>, QString> KegStore::enforceCap(qint64 cap, const std::optional<QUuid> &kept) {
    QList<KegEntry> removed;
    if (!QDir(folder()).exists() && m_places.unreadable().isEmpty())
        return removed;
    load();
    const auto sizes = measuredSizes(); // before the lock is taken: it lasts
    const auto lock = beginChange();
    if (!lock)
        return std::unexpected(lock.error());
    const QList<KegEntry> before = m_entries;
    qint64 total = 0;
    for (KegEntry &entry : m_entries) {
        entry.bytes = sizes.value(copyPath(entry.formula, entry.version), entry.bytes);
        total += entry.bytes;
    }
    if (m_entries != before)
        if (const auto saved = m_index.write(m_entries); !saved)
            return std::unexpected(saved.error());
    while (total > cap) {
        const KegEntry *next = oldest(kept);
        if (!next)
            break;
        const KegEntry entry = *next;
        if (const auto gone = removeEntry(entry.formula, entry.version); !gone)
            return std::unexpected(gone.error());
        total -= entry.bytes;
        removed.append(entry);
    }
    return removed;
}

/// Gives every whole copy that the index does not name an entry.
void KegStore::rebuild() {
    for (const KegPlaces::Copy &copy : m_places.copies())
        if (!entry(copy.formula, copy.version))
            if (const auto found = entryOfCopy(m_places, copy))
                m_entries.append(*found);
}

/// An earlier copy that stands aside comes back if the new one never took its place, or took it without its
/// list of files: of the two the one stays that the list is about.
void KegStore::settleReplacement(const KegPlaces::Copy &replaced) const {
    const QString copy = copyPath(replaced.formula, replaced.version);
    const QString earlier = m_places.earlier(replaced.formula, replaced.version);
    const bool isEarlierMeant = QFileInfo::exists(copy) && !checkCopy(m_places, replaced) &&
                                checkFiles(earlier, m_places.manifest(replaced.formula, replaced.version));
    if (isEarlierMeant)
        (void)moveTree(folder(), copy, m_places.discarded());
    if (!moveTree(folder(), earlier, copy))
        (void)moveTree(folder(), earlier, m_places.discarded());
}

bool KegStore::needsSweep() const {
    const QList<KegPlaces::Copy> copies = m_places.copies();
    const bool isOneUnknown = std::ranges::any_of(copies, [this](const KegPlaces::Copy &copy) {
        return !entry(copy.formula, copy.version) && entryOfCopy(m_places, copy);
    });
    const bool isOneGone = std::ranges::any_of(m_entries, [this](const KegEntry &entry) {
        return !QDir(copyPath(entry.formula, entry.version)).exists();
    });
    return !m_places.unreadable().isEmpty() || !m_index.failure().isEmpty() || isOneUnknown || isOneGone ||
           !m_places.underWay().isEmpty() || !m_places.earlierCopies().isEmpty() ||
           hasUnfinishedFiles(folder());
}

std::expected<void, QString> KegStore::sweep() {
    const auto lock = beginChange();
    if (!lock)
        return std::unexpected(lock.error());
    for (const KegPlaces::Copy &replaced : m_places.earlierCopies())
        settleReplacement(replaced);
    const QList<KegEntry> before = m_entries;
    rebuild();
    // An entry whose copy is gone promises what nobody can keep.
    m_entries.removeIf(
        [this](const KegEntry &entry) { return !QDir(copyPath(entry.formula, entry.version)).exists(); });
    if (m_entries != before || !m_index.isWhole())
        if (const auto saved = m_index.write(m_entries); !saved)
            return saved; // nothing is removed before the index is right
    for (const QString &path : m_places.underWay())
        (void)removeTree(folder(), path);
    removeUnfinishedFiles(folder());
    return {};
}

} // namespace larkspur
