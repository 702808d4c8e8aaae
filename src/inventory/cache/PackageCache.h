#pragma once

#include "inventory/records/Cask.h"
#include "inventory/records/Formula.h"
#include "inventory/records/OutdatedPackage.h"

#include <QDateTime>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

namespace larkspur {

class Logger;

/// A list as it was saved. Expired lists may be shown while fresh ones are on their way.
template <typename Record>
struct CachedData {
    QList<Record> data;
    QDateTime timestamp;
    bool isExpired = false;
};

/// Keeps the last lists on disk, so that the window can show them before any brew has run. Never fails its
/// caller: what cannot be saved is logged, what cannot be read counts as missing.
class PackageCache {
  public:
    static constexpr double cacheValidityDuration = 300.0; ///< seconds

    using Clock = std::function<QDateTime()>;

    PackageCache(QString cacheDirectory, Logger &logger, Clock clock = &QDateTime::currentDateTimeUtc);

    void saveFormulae(const QList<Formula> &formulae);
    void saveCasks(const QList<Cask> &casks);
    void saveOutdated(const QList<OutdatedPackage> &packages);

    std::optional<CachedData<Formula>> loadFormulae() const;
    std::optional<CachedData<Cask>> loadCasks() const;
    std::optional<CachedData<OutdatedPackage>> loadOutdated() const;

    void invalidateFormulae();
    void invalidateCasks();
    void invalidateOutdated();

  private:
    template <typename Record>
    void save(const QString &file, const QList<Record> &records);
    template <typename Record>
    std::optional<CachedData<Record>> load(const QString &file) const;
    QString path(const QString &file) const;

    QString m_cacheDirectory;
    Logger &m_logger;
    Clock m_clock;
};

} // namespace larkspur
