#include "operations/casks/CaskUpgradeRepair.h"

#include "core/files/FolderNames.h"
#include "core/trees/TreeScan.h"
#include "operations/casks/ApplicationBundle.h"
#include "operations/casks/CaskApplications.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>

namespace larkspur {

namespace {

/// The folders of a cask, and the steps from what an upgrade has left there.
class Repair {
  public:
    Repair(const CaskUpgrade &upgrade, const CaskSetting &setting)
        : m_upgrade(upgrade)
        , m_setting(setting)
        , m_home(setting.prefix + QStringLiteral("/Caskroom/") + upgrade.token.shortName())
        , m_old(m_home + QLatin1Char('/') + upgrade.version)
        , m_backup(m_old + CaskUpgrade::backupSuffix) {}

    QList<RepairStep> run();

  private:
    /// One that was there before is of an earlier accident.
    bool hasBackup() const {
        return QFileInfo(m_backup).isDir() &&
               !m_upgrade.versions.contains(m_upgrade.version + CaskUpgrade::backupSuffix);
    }
    bool hasSomethingToReturn(bool isInstalled) const;
    QList<RepairStep> leaveBackup() const;
    bool isWhole(const CaskUpgrade::Application &application, const QStringList &versions) const;
    bool isNewVersionComplete(const QStringList &versions) const;
    RepairStep returnApplication(const CaskUpgrade::Application &application) const;
    RepairStep link(const CaskUpgrade::Application &application, const QString &words) const;
    std::expected<bool, QString> isCopyPartial(const QString &place, const QString &copy) const;
    std::expected<void, QString> restoreRecords(const QStringList &versions) const;
    QList<RepairStep> discardBackup() const;
    std::expected<void, QString> throwAwayVersion(const QString &version) const;

    const CaskUpgrade &m_upgrade;
    const CaskSetting &m_setting;
    QString m_home;
    QString m_old;
    QString m_backup; ///< what Homebrew calls the old folder while the new version is installed
};

const QString receiptName = QStringLiteral("INSTALL_RECEIPT.json");

QString metadataOf(const QString &home, const QString &version) {
    return home + QStringLiteral("/.metadata/") + version;
}

bool leadsTo(const QString &link, const QString &place) {
    const QFileInfo info(link);
    return info.isSymLink() && QDir::cleanPath(info.dir().absoluteFilePath(info.symLinkTarget())) == place;
}

QList<RepairStep> Repair::run() {
    const auto versions = namesIn(m_home);
    if (!versions)
        return {RepairStep::failed(
            QStringLiteral("It cannot be told whether an upgrade of %1 was interrupted: %2")
                .arg(m_upgrade.token.text(), versions.error()))};
    const bool isWholeAsLinked = std::ranges::all_of(
        m_upgrade.applications, [&](const auto &application) { return isWhole(application, *versions); });
    // Homebrew writes its options down after the last step of an installation, before it removes the old one.
    const bool isInstalled = CaskUpgrade::optionsRecord(m_home) != m_upgrade.options;
    if (hasBackup() && (isInstalled || !QFile::exists(metadataOf(m_home, receiptName))))
        return isInstalled && (isWholeAsLinked || isNewVersionComplete(*versions)) ? discardBackup()
                                                                                   : leaveBackup();
    QList<RepairStep> steps;
    if (hasBackup() || (!isWholeAsLinked && hasSomethingToReturn(isInstalled)))
        for (const CaskUpgrade::Application &application : m_upgrade.applications)
            steps.append(returnApplication(application));
    if (std::ranges::none_of(steps,
                             [](const RepairStep &step) { return step.kind == RepairStep::Kind::Not; }))
        if (const auto restored = restoreRecords(*versions); !restored)
            steps.append(RepairStep::failed(restored.error()));
    steps.removeIf([](const RepairStep &step) { return step.text.isEmpty(); });
    return steps;
}

/// Not where the cask was removed, or replaced by a version without these applications.
bool Repair::hasSomethingToReturn(bool isInstalled) const {
    return QFileInfo(m_old).isDir() &&
           (!isInstalled || std::ranges::any_of(m_upgrade.applications, [&](const auto &application) {
               return isBundle(m_old + QLatin1Char('/') + application.name);
           }));
}

/// Where Homebrew was interrupted while it removed the old version, or took it for removed.
QList<RepairStep> Repair::leaveBackup() const {
    return {
        RepairStep::left(QStringLiteral("An upgrade of %1 was interrupted. What it replaced is kept at %2.")
                             .arg(m_upgrade.token.text(), m_backup))};
}

/// Homebrew takes its link away before it touches an application, and makes the next one when that is whole.
bool Repair::isWhole(const CaskUpgrade::Application &application, const QStringList &versions) const {
    return isBundle(application.place) && std::ranges::any_of(versions, [&](const QString &version) {
               return !version.endsWith(CaskUpgrade::backupSuffix) &&
                      leadsTo(m_home + QLatin1Char('/') + version + QLatin1Char('/') + application.name,
                              application.place);
           });
}

/// Whether a version has come whose applications are all in place, be it under other names than before.
bool Repair::isNewVersionComplete(const QStringList &versions) const {
    bool isAny = false;
    for (const QString &version : versions) {
        if (m_upgrade.versions.contains(version) || version.endsWith(CaskUpgrade::backupSuffix))
            continue;
        const QDir staged(m_home + QLatin1Char('/') + version);
        for (const QString &name : namesIn(staged.path()).value_or(QStringList())) {
            if (!name.endsWith(QLatin1String(".app")))
                continue;
            const QFileInfo link(staged.filePath(name));
            if (!link.isSymLink() || !isBundle(link.symLinkTarget()))
                return false;
            isAny = true;
        }
    }
    return isAny;
}

RepairStep Repair::returnApplication(const CaskUpgrade::Application &application) const {
    const QString &place = application.place;
    if (!isPlausiblePlace(place, m_upgrade.token, m_setting))
        return RepairStep::failed(
            QStringLiteral("%1 is left as it is: it does not look like an application of %2")
                .arg(place, m_upgrade.token.text()));
    const QString kept = (hasBackup() ? m_backup : m_old) + QLatin1Char('/') + application.name;
    const QString unchanged = QStringLiteral("%1 is as it was before an interrupted upgrade.").arg(place);
    // Its link is the first thing that Homebrew takes: the person has thrown away what is not there.
    if (!hasBackup() && leadsTo(kept, place))
        return RepairStep::done({});
    if (!isBundle(kept)) {
        // Homebrew leaves the folder of one whose contents it has taken.
        if (isBundle(place) && !QDir(place).isEmpty())
            return leadsTo(kept, place) ? RepairStep::done({}) : link(application, unchanged);
        return RepairStep::left(
            QStringLiteral("%1 is not there after an interrupted upgrade, and Homebrew has "
                           "kept no copy of it. “brew reinstall --cask %2” brings it back.")
                .arg(place, m_upgrade.token.text()));
    }
    // A folder that was renamed holds whole applications: that is the step after the copying.
    const auto isPartial =
        hasBackup() || !isBundle(place) ? std::expected<bool, QString>(false) : isCopyPartial(place, kept);
    if (!isPartial)
        return RepairStep::failed(QStringLiteral("It cannot be told whether %1 is whole after an interrupted "
                                                 "upgrade; a copy of it is kept at %2: %3")
                                      .arg(place, kept, isPartial.error()));
    const auto done =
        *isPartial ? throwAway(kept, *m_setting.trash) : returnToPlace(place, kept, *m_setting.trash);
    if (!done)
        return RepairStep::failed(done.error());
    return link(application, *isPartial
                                 ? unchanged
                                 : QStringLiteral("Put %1 back after an interrupted upgrade.").arg(place));
}

/// Homebrew empties the place only after it has copied everything: as long as nothing is missing there, it is
/// the whole one.
std::expected<bool, QString> Repair::isCopyPartial(const QString &place, const QString &copy) const {
    const auto inPlace = TreeScan::of(place, TreeScan::Depth::Names);
    const auto copied = TreeScan::of(copy, TreeScan::Depth::Names);
    if (!inPlace || !copied)
        return std::unexpected(inPlace ? copied.error() : inPlace.error());
    QSet<QByteArray> there;
    for (const TreeEntry &entry : inPlace->entries)
        there.insert(entry.path);
    const auto missing = std::ranges::count_if(
        copied->entries, [&](const TreeEntry &entry) { return !there.contains(entry.path); });
    // On the way back it moves the contents one by one.
    if (missing > 0 && copied->entries.size() - missing < inPlace->entries.size())
        return std::unexpected(QStringLiteral("each has something that the other has not"));
    return missing == 0;
}

/// As Homebrew leaves it when an application is in its place.
RepairStep Repair::link(const CaskUpgrade::Application &application, const QString &words) const {
    const QString path = (hasBackup() ? m_backup : m_old) + QLatin1Char('/') + application.name;
    if (!QFile::link(application.place, path))
        return RepairStep::failed(
            QStringLiteral("%1 is in its place, but Homebrew's link to it could not be made at %2")
                .arg(application.place, path));
    return RepairStep::done(words);
}

/// The new version goes, and the old one gets its name again, so that Homebrew knows what is there.
std::expected<void, QString> Repair::restoreRecords(const QStringList &versions) const {
    for (const QString &version : hasBackup() ? versions : QStringList()) {
        const bool isNew =
            !m_upgrade.versions.contains(version) && !version.endsWith(CaskUpgrade::backupSuffix);
        if (!isNew && version != m_upgrade.version)
            continue;
        if (const auto gone = throwAwayVersion(version); !gone)
            return gone;
    }
    const QString metadata = metadataOf(m_home, m_upgrade.version);
    const QString away = metadata + CaskUpgrade::backupSuffix;
    // Homebrew's own way back may have been cut off between the two.
    if ((hasBackup() || QFileInfo(m_old).isDir()) && QFileInfo(away).isDir() && !isOccupied(metadata) &&
        !moveToFreePlace(away, metadata))
        return std::unexpected(QStringLiteral("Homebrew's record of %1 could not be restored: %2")
                                   .arg(m_upgrade.token.text(), away));
    if (hasBackup() && !moveToFreePlace(m_backup, m_old))
        return std::unexpected(QStringLiteral("Homebrew's files of %1 could not be restored: %2")
                                   .arg(m_upgrade.token.text(), m_backup));
    return {};
}

/// What Homebrew removes last. Its applications are in use no more.
QList<RepairStep> Repair::discardBackup() const {
    const auto gone = throwAwayVersion(m_upgrade.version + CaskUpgrade::backupSuffix);
    return gone ? QList<RepairStep>() : QList<RepairStep>{RepairStep::failed(gone.error())};
}

std::expected<void, QString> Repair::throwAwayVersion(const QString &version) const {
    for (const QString &folder : {metadataOf(m_home, version), m_home + QLatin1Char('/') + version})
        if (isOccupied(folder))
            if (const auto gone = throwAway(folder, *m_setting.trash); !gone)
                return std::unexpected(
                    QStringLiteral("%1 of an interrupted upgrade stays: %2").arg(folder, gone.error()));
    return {};
}

} // namespace

QList<RepairStep> putRight(const CaskUpgrade &upgrade, const CaskSetting &setting) {
    return Repair(upgrade, setting).run();
}

} // namespace larkspur
