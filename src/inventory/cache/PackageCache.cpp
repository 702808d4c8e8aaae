#include "inventory/cache/PackageCache.h"

#include "core/files/AtomicFile.h"
#include "core/files/WholeFile.h"
#include "core/log/Logger.h"
#include "inventory/records/RecordJson.h"

#include <QFile>
#include <QJsonDocument>

namespace larkspur {

namespace {

const QString formulaeCacheFile = QStringLiteral("formulae_cache.json");
const QString casksCacheFile = QStringLiteral("casks_cache.json");
const QString outdatedCacheFile = QStringLiteral("outdated_cache.json");

} // namespace

PackageCache::PackageCache(QString cacheDirectory, Logger &logger, Clock clock)
    : m_cacheDirectory(std::move(cacheDirectory))
    , m_logger(logger)
    , m_clock(std::move(clock)) {}

void PackageCache::saveFormulae(const QList<Formula> &formulae) {
    save(formulaeCacheFile, formulae);
}

void PackageCache::saveCasks(const QList<Cask> &casks) {
    save(casksCacheFile, casks);
}

void PackageCache::saveOutdated(const QList<OutdatedPackage> &packages) {
    save(outdatedCacheFile, packages);
}

std::optional<CachedData<Formula>> PackageCache::loadFormulae() const {
    return load<Formula>(formulaeCacheFile);
}

std::optional<CachedData<Cask>> PackageCache::loadCasks() const {
    return load<Cask>(casksCacheFile);
}

std::optional<CachedData<OutdatedPackage>> PackageCache::loadOutdated() const {
    return load<OutdatedPackage>(outdatedCacheFile);
}

void PackageCache::invalidateFormulae() {
    QFile::remove(path(formulaeCacheFile));
}

void PackageCache::invalidateCasks() {
    QFile::remove(path(casksCacheFile));
}

void PackageCache::invalidateOutdated() {
    QFile::remove(path(outdatedCacheFile));
}

template <typename Record>
void PackageCache::save(const QString &file, const QList<Record> &records) {
    const QJsonObject document{{QStringLiteral("data"), toJson(records)},
                               {QStringLiteral("timestamp"), dateText(m_clock())}};
    const auto written = writeFileAtomically(path(file), QJsonDocument(document).toJson());
    if (!written)
        m_logger.error(QStringLiteral("Failed to save cache: ") + written.error());
}

template <typename Record>
std::optional<CachedData<Record>> PackageCache::load(const QString &file) const {
    constexpr qint64 largest = 256 * 1024 * 1024; // bytes
    const auto text = readWholeFile(path(file), largest);
    if (!text)
        return std::nullopt;
    const QJsonObject document = QJsonDocument::fromJson(*text).object();
    const auto timestamp = dateFromText(document.value(QLatin1String("timestamp")).toString());
    const QJsonValue data = document.value(QLatin1String("data"));
    if (!timestamp || !data.isArray())
        return std::nullopt;
    CachedData<Record> cached;
    cached.timestamp = *timestamp;
    const auto age = static_cast<double>(timestamp->secsTo(m_clock()));
    cached.isExpired = age > cacheValidityDuration;
    for (const QJsonValue &element : data.toArray()) {
        auto record = recordFromJson<Record>(element.toObject());
        if (!record)
            return std::nullopt;
        cached.data.append(std::move(*record));
    }
    return cached;
}

QString PackageCache::path(const QString &file) const {
    return m_cacheDirectory + QLatin1Char('/') + file;
}

} // namespace larkspur
