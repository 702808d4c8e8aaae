#pragma once

#include "userdata/HistoryEntry.h"
#include "userdata/RecordList.h"
#include "userdata/Snooze.h"

#include <QObject>

#include <functional>

namespace larkspur {

/// The one store of what the person adds to the inventory, and of what was done. Each collection lies in
/// memory and in a JSON file of its own, which is written at once.
class UserDataManager : public QObject {
    Q_OBJECT
  public:
    /// `clock` tells the time: the present moment, in tests any.
    UserDataManager(const QString &folder, Logger &logger,
                    std::function<QDateTime()> clock = &QDateTime::currentDateTimeUtc);

    const QList<SnoozedPackage> &snoozedPackages() const { return m_snoozedPackages.records(); }
    /// Replaces an earlier snooze of the package. This and the other changes hold in the program whatever
    /// happens; false if the file could not be written.
    bool snoozePackage(const QString &name, const QString &version, bool isCask, const SnoozeType &type);
    bool unsnoozePackage(const QString &name);
    bool isPackageSnoozed(const QString &name, const QString &currentVersion) const;

    /// Why packages may be snoozed that are not in the list: a sentence, empty if the list is whole.
    QString snoozedDamage() const { return m_snoozedPackages.damage(); }

    /// The newest first, at most `longestHistory`.
    const QList<HistoryEntry> &history() const { return m_history.records(); }
    bool addHistoryEntry(HistoryAction action, const QString &packageName, bool isCask, bool success);
    static constexpr qsizetype longestHistory = 500;
    QString historyDamage() const { return m_history.damage(); }

    /// Takes over what another program has written since.
    void reload();
    QDateTime now() const { return m_clock(); }

  Q_SIGNALS:
    void snoozedPackagesChanged();
    void historyChanged();

  private:
    std::function<QDateTime()> m_clock;
    RecordList<SnoozedPackage> m_snoozedPackages;
    RecordList<HistoryEntry> m_history;
};

} // namespace larkspur
