#include "operations/recovery/InterruptedReinstall.h"

#include "core/async/Worker.h"
#include "core/brew/BrewService.h"
#include "core/brew/PackageName.h"
#include "operations/recovery/KegBackup.h"
#include "operations/recovery/LostLinks.h"

#include <QDir>

#include <algorithm>

namespace larkspur {

namespace {

using Backups = std::expected<QList<KegBackup>, QString>;

Backups backupsIn(const QString &prefix) {
    const auto installed = InstalledPackages::at(prefix);
    return installed ? Backups(KegBackup::all(prefix, *installed)) : std::unexpected(installed.error());
}

/// As before, should it have been linked. Homebrew itself passes over what is keg-only.
Task<bool> link(QString formula, LockedWork work) {
    const auto name = PackageName::parse(formula);
    const auto run = name ? co_await work.session->stream({.arguments = {"link", *name}}, work.context,
                                                          BrewSession::Style::Plain)
                          : std::unexpected(BrewError::packageNotFound(formula));
    if (!run || !run->succeeded())
        work.warn(QStringLiteral("%1 could not be linked.").arg(formula));
    co_return run && run->succeeded();
}

} // namespace

Task<bool> settleReinstalls(LinkedBefore linked, LockedWork work) {
    const Backups backups = co_await runInWorker([prefix = work.prefix] { return backupsIn(prefix); });
    if (!backups) {
        work.warn(QStringLiteral("It cannot be told whether a reinstallation was cut off: %1")
                      .arg(backups.error()));
        co_return false;
    }
    bool areSettled = true;
    for (KegBackup backup : *backups) {
        backup.wasLinked = linked && linked->contains(backup.formula);
        const auto done = co_await runInWorker([backup] { return settle(backup); });
        if (done)
            work.say(done->line);
        else
            work.warn(
                QStringLiteral("The interrupted reinstallation of %1 is left as it is: %2. Reinstalling "
                               "%1 settles it.")
                    .arg(backup.formula, done.error()));
        if (!done || (done->isBack && !linked && !co_await link(backup.formula, work)))
            areSettled = false;
    }
    co_return bool(areSettled);
}

bool ReinstallLeftover::exists(const QString &prefix) const {
    const QDir cellar(prefix + QStringLiteral("/Cellar"));
    const QStringList pattern{QLatin1Char('*') + InstalledPackages::backupSuffix};
    return !prefix.isEmpty() &&
           std::ranges::any_of(cellar.entryList(QDir::Dirs | QDir::NoDotAndDotDot), [&](const QString &rack) {
               return !QDir(cellar.filePath(rack)).entryList(pattern, QDir::Dirs).isEmpty();
           });
}

Task<> ReinstallLeftover::putRight(LockedWork work) {
    co_await settleReinstalls(LostLinks::notedIn(m_noteFolder, work.prefix), work);
}

} // namespace larkspur
