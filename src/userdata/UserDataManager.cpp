#include "userdata/UserDataManager.h"

#include <algorithm>

namespace larkspur {

namespace {

void removeSnooze(QList<SnoozedPackage> &snoozed, const QString &name) {
    snoozed.removeIf([&](const SnoozedPackage &entry) { return entry.packageName == name; });
}

} // namespace

UserDataManager::UserDataManager(const QString &folder, Logger &logger, std::function<QDateTime()> clock)
    : m_clock(std::move(clock))
    , m_snoozedPackages(folder + QStringLiteral("/snoozed_packages.json"), logger)
    , m_history(folder + QStringLiteral("/history.json"), logger) {}

void UserDataManager::reload() {
    if (m_snoozedPackages.reload())
        Q_EMIT snoozedPackagesChanged();
    if (m_history.reload())
        Q_EMIT historyChanged();
}

bool UserDataManager::snoozePackage(const QString &name, const QString &version, bool isCask,
                                    const SnoozeType &type) {
    const bool isSaved = m_snoozedPackages.change([&](QList<SnoozedPackage> &snoozed) {
        removeSnooze(snoozed, name);
        snoozed.append({QUuid::createUuid(), name, version, type, m_clock(), isCask});
    });
    Q_EMIT snoozedPackagesChanged();
    return isSaved;
}

bool UserDataManager::unsnoozePackage(const QString &name) {
    const bool isSaved =
        m_snoozedPackages.change([&](QList<SnoozedPackage> &snoozed) { removeSnooze(snoozed, name); });
    Q_EMIT snoozedPackagesChanged();
    return isSaved;
}

bool UserDataManager::isPackageSnoozed(const QString &name, const QString &currentVersion) const {
    return std::ranges::any_of(snoozedPackages(), [&](const SnoozedPackage &entry) {
        return entry.packageName == name && entry.isInForce(currentVersion, m_clock());
    });
}

bool UserDataManager::addHistoryEntry(HistoryAction action, const QString &packageName, bool isCask,
                                      bool success) {
    const bool isSaved = m_history.change([&](QList<HistoryEntry> &history) {
        history.prepend({QUuid::createUuid(), m_clock(), action, packageName, isCask, success});
        history.resize(std::min(history.size(), longestHistory));
    });
    Q_EMIT historyChanged();
    return isSaved;
}

} // namespace larkspur
