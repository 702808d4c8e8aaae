#include "operations/recovery/KegBackup.h"

#include "core/trees/LinkCheck.h"
#include "core/trees/TreeChanges.h"
#include "core/trees/TreeScan.h"

#include <QCollator>
#include <QDir>
#include <QFile>
#include <QUuid>

#include <algorithm>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace larkspur {

namespace {

using Step = std::expected<void, QString>;

/// Homebrew holds a lock of the formula meanwhile; the file alone means nothing.
bool isAtWork(const KegBackup &backup) {
    const QString lock =
        backup.prefix + QStringLiteral("/var/homebrew/locks/%1.formula.lock").arg(backup.formula);
    const int file = ::open(QFile::encodeName(lock).constData(), O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return false;
    const bool isHeld = ::flock(file, LOCK_SH | LOCK_NB) != 0;
    ::close(file);
    return isHeld;
}

/// Whether all that is in one folder is in the other too, by name.
bool isPartOf(const QString &folder, const QString &whole) {
    const auto some = TreeScan::of(folder, TreeScan::Depth::Names);
    const auto all = TreeScan::of(whole, TreeScan::Depth::Names);
    return some && all &&
           std::ranges::includes(all->entries, some->entries, {}, &TreeEntry::path, &TreeEntry::path);
}

/// Takes a keg out of the Cellar that was not finished. Where it may hold something else than the one from
/// before it is kept, and the place is returned.
std::expected<QString, QString> takeOut(const KegBackup &backup, const QString &version) {
    const QString keg = backup.rack() + QLatin1Char('/') + version;
    const QString aside =
        QStringLiteral("%1/var/larkspur/unfinished/%2-%3-%4")
            .arg(backup.prefix, backup.formula, version, QUuid::createUuid().toString(QUuid::Id128).left(8));
    const bool isKept = !isPartOf(keg, backup.path());
    const Step done = isKept ? moveTree(backup.prefix, keg, aside) : removeTree(backup.prefix, keg);
    return done ? std::expected<QString, QString>(isKept ? aside : QString()) : std::unexpected(done.error());
}

std::expected<SettledBackup, QString> putBack(const KegBackup &backup, const QStringList &unfinished) {
    QString line = QStringLiteral("Put %1 %2 back after an interrupted reinstallation.")
                       .arg(backup.formula, backup.version);
    for (const QString &version : unfinished) {
        const auto kept = takeOut(backup, version);
        if (!kept)
            return std::unexpected(kept.error());
        if (!kept->isEmpty())
            line += QStringLiteral(" What Homebrew had begun to install is kept at %1").arg(*kept);
    }
    if (const auto moved = moveTree(backup.prefix, backup.path(), backup.keg()); !moved)
        return std::unexpected(moved.error());
    return SettledBackup{.line = line, .isBack = true};
}

std::expected<SettledBackup, QString> conclude(const KegBackup &backup) {
    if (const auto gone = removeTree(backup.prefix, backup.path()); !gone)
        return std::unexpected(gone.error());
    return SettledBackup{.line =
                             QStringLiteral("The interrupted reinstallation of %1 had installed it; removed "
                                            "what was kept of %2.")
                                 .arg(backup.formula, backup.version)};
}

} // namespace

QList<KegBackup> KegBackup::all(const QString &prefix, const InstalledPackages &installed) {
    QCollator order{QLocale(QLocale::English)};
    order.setNumericMode(true);
    QList<KegBackup> backups;
    for (const QString &formula : installed.formulaeWithBackup()) {
        KegBackup backup{.prefix = prefix, .formula = formula, .version = installed.backupOf(formula)};
        for (const QString &version : installed.formulaVersions(formula))
            if (order(backup.version, version))
                backup.newer.append(version);
        backup.isReplaced = installed.isLinked(formula);
        backups.append(backup);
    }
    return backups;
}

std::expected<SettledBackup, QString> settle(const KegBackup &backup) {
    for (const QString &path : {backup.path(), backup.keg()})
        if (const auto isOurs = withoutLinks(backup.prefix, path); !isOurs)
            return std::unexpected(isOurs.error());
    if (isAtWork(backup))
        return std::unexpected(QStringLiteral("Homebrew is at work on it"));
    if (backup.isReplaced)
        return conclude(backup);
    const bool isAgainThere = QDir(backup.keg()).exists();
    QStringList unfinished = backup.newer;
    if (isAgainThere)
        unfinished.append(backup.version);
    // Of one without links nobody knows when it is finished. As long as it holds nothing but what was there
    // before it is not needed, and what holds all of that is whole.
    const bool isTold = backup.wasLinked || unfinished.isEmpty() ||
                        (backup.newer.isEmpty() && isPartOf(backup.keg(), backup.path()));
    if (isTold)
        return putBack(backup, unfinished);
    if (backup.newer.isEmpty() && isPartOf(backup.path(), backup.keg()))
        return conclude(backup);
    return std::unexpected(QStringLiteral("what was installed before is kept at %1, and %2 may be whole")
                               .arg(backup.path(), unfinished.join(QStringLiteral(", "))));
}

} // namespace larkspur
