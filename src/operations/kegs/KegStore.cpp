#include "operations/kegs/KegStore.h"

#include "core/files/AtomicFile.h"
#include "core/trees/TreeChanges.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <algorithm>
#include <chrono>
#include <thread>

namespace larkspur {

namespace {

const QString partialPrefix = QStringLiteral(".partial-");
const QString manifestSuffix = QStringLiteral(".files");

// Another program holds the index for milliseconds.
constexpr int mostAttempts = 200;
constexpr auto pauseBetweenAttempts = std::chrono::milliseconds(25);

QByteArray contentsOf(const QString &path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

KegStore::KegStore(QString folder)
    : m_folder(std::move(folder)) {
    load();
}

void KegStore::load() {
    const QByteArray index = contentsOf(m_folder + QStringLiteral("/index.json"));
    m_hasIndex = QJsonDocument::fromJson(index).isArray();
    m_entries = kegIndexFromText(index);
}

/// Keeps other programs from changing the index, and takes over what they have changed. A folder that takes
/// no lock file takes no other change either.
std::optional<LockFile> KegStore::beginChange() {
    std::optional<LockFile> lock;
    auto why = LockFile::Refusal::HeldByAnother;
    const bool hasFolder = QDir(m_folder).exists();
    for (int i = 0; i < mostAttempts && hasFolder && !lock && why == LockFile::Refusal::HeldByAnother; ++i) {
        if (i > 0)
            std::this_thread::sleep_for(pauseBetweenAttempts);
        lock = LockFile::tryTake(m_folder + QStringLiteral("/index.lock"), why);
    }
    load();
    if (!m_hasIndex)
        rebuild();
    return lock;
}

bool KegStore::save() const {
    return writeFileAtomically(m_folder + QStringLiteral("/index.json"), kegIndexText(m_entries)).has_value();
}

std::optional<KegEntry> KegStore::entry(const QString &formula, const QString &version) const {
    const auto found = std::ranges::find_if(m_entries, [&](const KegEntry &entry) {
        return entry.formula == formula && entry.version == version;
    });
    return found == m_entries.end() ? std::nullopt : std::optional(*found);
}

QString KegStore::copyPath(const QString &formula, const QString &version) const {
    return m_folder + QLatin1Char('/') + formula + QLatin1Char('/') + version;
}

QString KegStore::manifestPath(const QString &formula, const QString &version) const {
    return m_folder + QLatin1Char('/') + formula + QStringLiteral("/.") + version + manifestSuffix;
}

QString KegStore::partialPath() const {
    QDir().mkpath(m_folder);
    return m_folder + QLatin1Char('/') + partialPrefix + QUuid::createUuid().toString(QUuid::WithoutBraces);
}

std::expected<void, QString> KegStore::adopt(const QString &partial, const TreeScan &scan,
                                             const KegEntry &entry) {
    const auto fail = [&partial](const QString &reason) {
        removeTree(partial);
        return std::unexpected(reason);
    };
    const auto copied = TreeScan::of(partial, TreeScan::Depth::Names);
    if (!copied)
        return fail(copied.error());
    if (!copied->matches(scan))
        return fail(QStringLiteral("the copy differs from what was copied"));
    const auto lock = beginChange();
    if (!removeEntry(entry.formula, entry.version))
        return fail(QStringLiteral("an older copy of it cannot be removed"));
    if (const auto written = writeFileAtomically(manifestPath(entry.formula, entry.version), scan.toText());
        !written)
        return fail(written.error());
    if (!moveTree(partial, copyPath(entry.formula, entry.version)))
        return fail(QStringLiteral("%1 cannot be written").arg(m_folder));
    m_entries.append(entry);
    if (save())
        return {};
    removeEntry(entry.formula, entry.version);
    return fail(QStringLiteral("the list of preserved kegs in %1 cannot be written").arg(m_folder));
}

bool KegStore::isIntact(const QString &formula, const QString &version) const {
    const auto wanted = TreeScan::fromText(contentsOf(manifestPath(formula, version)));
    const auto there = TreeScan::of(copyPath(formula, version), TreeScan::Depth::Contents);
    return wanted && there && there->matches(*wanted);
}

bool KegStore::remove(const QString &formula, const QString &version) {
    const auto lock = beginChange();
    return removeEntry(formula, version);
}

bool KegStore::removeEntry(const QString &formula, const QString &version) {
    const auto isMeant = [&](const KegEntry &entry) {
        return entry.formula == formula && entry.version == version;
    };
    // The entry goes first: from here on nobody relies on the files.
    if (m_entries.removeIf(isMeant) > 0 && !save())
        return false;
    const bool isGone = removeTree(copyPath(formula, version));
    QFile::remove(manifestPath(formula, version));
    QDir().rmdir(m_folder + QLatin1Char('/') + formula);
    return isGone;
}

QList<KegEntry> KegStore::enforceCap(qint64 cap, const std::optional<QUuid> &kept) {
    const auto lock = beginChange();
    QList<KegEntry> removed;
    const auto total = [this] {
        qint64 bytes = 0;
        for (const KegEntry &entry : m_entries)
            bytes += entry.bytes;
        return bytes;
    };
    while (total() > cap) {
        const KegEntry *oldest = nullptr;
        for (const KegEntry &entry : m_entries)
            if ((!kept || entry.snapshotID != kept) && (!oldest || entry.date < oldest->date))
                oldest = &entry;
        if (!oldest)
            break;
        removed.append(*oldest);
        if (!removeEntry(removed.last().formula, removed.last().version))
            break;
    }
    return removed;
}

void KegStore::rebuild() {
    const auto folders = QDir::Dirs | QDir::NoDotAndDotDot;
    for (const QString &formula : QDir(m_folder).entryList(folders))
        for (const QString &version : QDir(m_folder + QLatin1Char('/') + formula).entryList(folders)) {
            const auto wanted = TreeScan::fromText(contentsOf(manifestPath(formula, version)));
            const QString copy = copyPath(formula, version);
            const auto there = TreeScan::of(copy, TreeScan::Depth::Names);
            if (wanted && there && there->matches(*wanted))
                m_entries.append({.formula = formula,
                                  .version = version,
                                  .bytes = wanted->bytesOnDisk,
                                  .date = QFileInfo(manifestPath(formula, version)).lastModified(),
                                  .snapshotID = std::nullopt});
        }
    if (!m_entries.isEmpty())
        save();
}

bool KegStore::needsSweep() const {
    int copies = 0;
    for (const QString &name : QDir(m_folder).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot)) {
        if (name.startsWith(partialPrefix))
            return true;
        copies += static_cast<int>(
            QDir(m_folder + QLatin1Char('/') + name).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size());
    }
    return copies != m_entries.size();
}

void KegStore::sweep() {
    const auto lock = beginChange();
    const auto folders = QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot;
    for (const QString &name : QDir(m_folder).entryList(folders)) {
        const QString path = m_folder + QLatin1Char('/') + name;
        if (name.startsWith(partialPrefix)) {
            removeTree(path);
            continue;
        }
        for (const QString &version : QDir(path).entryList(folders))
            if (m_hasIndex && !entry(name, version))
                removeEntry(name, version);
    }
    // An entry whose copy is gone promises what nobody can keep.
    if (m_entries.removeIf([this](const KegEntry &entry) {
            return !QDir(copyPath(entry.formula, entry.version)).exists();
        }) > 0)
        save();
}

} // namespace larkspur
