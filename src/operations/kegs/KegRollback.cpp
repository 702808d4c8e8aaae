#include "operations/kegs/KegRollback.h"

#include "core/async/Worker.h"
#include "core/log/Logger.h"
#include "core/trees/TreeChanges.h"
#include "operations/installed/InstalledPackages.h"
#include "operations/kegs/KegPreservationManager.h"
#include "operations/kegs/KegReceipt.h"

#include <QDir>
#include <QFileInfo>

namespace larkspur {

namespace {

void say(const OperationContext &context, const QString &line) {
    if (context.output)
        context.output->addLine(line);
}

void sayFailure(const KegRollback::Order &order, const QString &reason) {
    say(order.context, QStringLiteral("==> Could not roll back %1: %2").arg(order.formula, reason));
}

RollbackNote noteFor(const KegRollback::Order &order, const InstalledPackages &installed) {
    RollbackNote note{.prefix = order.prefix, .formula = order.formula, .version = order.version};
    note.previousVersion = installed.currentVersion(order.formula);
    note.wasLinked = installed.isLinked(order.formula) || note.isFirstInstallation();
    note.wasPinned = installed.isPinned(order.formula, false);
    const QString keg =
        note.isFirstInstallation() ? QString() : note.rack() + QLatin1Char('/') + note.previousVersion;
    note.isOnRequest = installedOnRequest(keg).value_or(true);
    return note;
}

/// Homebrew's link command leaves a keg-only formula alone, its link in opt too.
void makeOptLink(const RollbackNote &note, const QString &version) {
    const QString link = note.prefix + QStringLiteral("/opt/") + note.formula;
    const QString target = QStringLiteral("../Cellar/%1/%2").arg(note.formula, version);
    if (QFileInfo(link).isSymLink() &&
        QFileInfo(link).canonicalFilePath() ==
            QFileInfo(note.rack() + QLatin1Char('/') + version).canonicalFilePath())
        return;
    QDir().mkpath(note.prefix + QStringLiteral("/opt"));
    QFile::remove(link);
    QFile::link(target, link);
}

bool isInUse(const RollbackNote &note) {
    const InstalledPackages installed = InstalledPackages::at(note.prefix);
    return installed.currentVersion(note.formula) == note.version && installed.hasOptLink(note.formula) &&
           (!note.wasLinked || installed.isLinked(note.formula));
}

bool hasSucceeded(const Result<BrewRun> &run) {
    return run && run->succeeded();
}

} // namespace

KegRollback::KegRollback(Parts parts)
    : m_parts(std::move(parts)) {}

Task<Result<BrewRun>> KegRollback::brew(Order order, QStringList arguments) {
    // Not stopped half-way: what has begun here is finished or undone.
    order.context.stop = {};
    co_return co_await order.session->stream(
        {.arguments = std::move(arguments),
         .environment = {{QStringLiteral("HOMEBREW_NO_AUTOREMOVE"), QStringLiteral("1")}}},
        order.context, BrewSession::Style::Plain);
}

Task<bool> KegRollback::run(Order order) {
    if (order.prefix.isEmpty()) {
        sayFailure(order, QStringLiteral("Homebrew prefix not found"));
        co_return false;
    }
    const auto sayNoCopy = [&order] {
        sayFailure(order, QStringLiteral("no preserved copy of ") + order.version);
    };
    if (!m_parts.kegs.canRollBack(order.formula, order.version)) {
        sayNoCopy();
        co_return false;
    }
    const RollbackNote note =
        co_await runInWorker([order] { return noteFor(order, InstalledPackages::at(order.prefix)); });
    co_await runInWorker([note] { return removeTree(note.workFolder()); });
    if (!writeRollbackNote(m_parts.noteFile, note)) {
        sayFailure(order, QStringLiteral("%1 cannot be written").arg(m_parts.noteFile));
        co_return false;
    }
    const auto staged =
        co_await m_parts.kegs.restoreCopy(order.formula, order.version, note.staged(), order.context.stop);
    if (staged && !*staged) {
        sayNoCopy();
        co_await finish(note);
        co_return false;
    }
    say(order.context, QStringLiteral("==> Rolling back %1 to %2").arg(order.formula, order.version));
    const auto aside = co_await runInWorker([note]() -> std::expected<void, QString> {
        return note.isFirstInstallation() ? std::expected<void, QString>()
                                          : linkTree(note.rack(), note.aside());
    });
    if (!staged || !aside || order.context.stop.stop_requested()) {
        const QString reason = !staged ? staged.error() : !aside ? aside.error() : QStringLiteral("stopped");
        m_parts.logger.error(QStringLiteral("[Larkspur] Rollback of %1: %2").arg(order.formula, reason));
        sayFailure(order, QStringLiteral("failed to restore preserved files"));
        co_await finish(note);
        co_return false;
    }
    co_return co_await exchange(order, note);
}

/// Takes out what is installed and puts the preserved keg in its place.
Task<bool> KegRollback::exchange(Order order, RollbackNote note) {
    note.phase = RollbackNote::Phase::Exchanging;
    if (!writeRollbackNote(m_parts.noteFile, note)) {
        sayFailure(order, QStringLiteral("%1 cannot be written").arg(m_parts.noteFile));
        co_await finish(note);
        co_return false;
    }
    if (!note.isFirstInstallation() &&
        !hasSucceeded(
            co_await brew(order, {QStringLiteral("uninstall"), QStringLiteral("--ignore-dependencies"),
                                  QStringLiteral("--force"), order.formula}))) {
        sayFailure(order, QStringLiteral("the installed version could not be removed"));
        co_await putBack(order, note);
        co_return false;
    }
    const bool isRestored = co_await runInWorker([note] {
        removeTree(note.rack());
        if (!moveTree(note.staged(), note.keg()))
            return false;
        setInstalledOnRequest(note.keg(), note.isOnRequest);
        return true;
    });
    if (!isRestored) {
        sayFailure(order, QStringLiteral("failed to restore preserved files"));
        co_await putBack(order, note);
        co_return false;
    }
    if (!co_await link(order, note)) {
        sayFailure(order, QStringLiteral("restored files but linking failed"));
        co_await putBack(order, note);
        co_return false;
    }
    co_await finish(note);
    say(order.context, QStringLiteral("==> Rolled back %1 to %2").arg(order.formula, order.version));
    co_return true;
}

/// Judged by looking, not by what Homebrew says: it says success where it has linked nothing.
Task<bool> KegRollback::link(Order order, RollbackNote note) {
    bool hasFailed = false;
    if (note.wasLinked) {
        const auto linked =
            co_await brew(order, {QStringLiteral("link"), QStringLiteral("--overwrite"), order.formula});
        hasFailed = !linked || !linked->succeeded() || std::ranges::any_of(linked->lines, namesFailure);
    }
    if (hasFailed)
        co_return false;
    // A formula that was never here may be keg-only: then its link in opt is all that it gets.
    RollbackNote wanted = note;
    wanted.wasLinked = note.wasLinked && !note.isFirstInstallation();
    const bool isDone = co_await runInWorker([wanted] {
        makeOptLink(wanted, wanted.version);
        return isInUse(wanted);
    });
    if (isDone && note.wasPinned)
        co_await brew(order, {QStringLiteral("pin"), order.formula});
    co_return isDone;
}

/// Undoes everything: the kegs from before, their links and the pin.
Task<> KegRollback::putBack(Order order, RollbackNote note) {
    const bool isBack = co_await runInWorker([note] {
        if (note.isFirstInstallation())
            return removeTree(note.rack());
        if (!QDir(note.aside()).exists())
            return QDir(note.rack()).exists();
        return removeTree(note.rack()) && moveTree(note.aside(), note.rack());
    });
    if (!isBack) {
        // The last resort: the newest version, downloaded again. What lies aside stays there.
        const auto again =
            co_await brew(order, {QStringLiteral("install"), QStringLiteral("--formula"), order.formula});
        if (again && again->succeeded())
            say(order.context,
                QStringLiteral("==> Reinstalled current %1 after failed rollback").arg(order.formula));
        co_return;
    }
    if (note.wasLinked && !note.isFirstInstallation())
        co_await brew(order, {QStringLiteral("link"), QStringLiteral("--overwrite"), order.formula});
    if (!note.isFirstInstallation())
        makeOptLink(note, note.previousVersion);
    if (note.wasPinned)
        co_await brew(order, {QStringLiteral("pin"), order.formula});
    if (!note.isFirstInstallation())
        say(order.context,
            QStringLiteral("==> Put %1 %2 back as it was before").arg(order.formula, note.previousVersion));
    co_await finish(note);
}

/// In a worker: what lay aside can be tens of thousands of files.
Task<> KegRollback::finish(RollbackNote note) {
    co_await runInWorker([note] {
        removeTree(note.workFolder());
        QDir(note.prefix).rmpath(QStringLiteral("var/larkspur/rollback")); // as far as it is empty
        return true;
    });
    QFile::remove(m_parts.noteFile);
}

bool KegRollback::hasUnfinished() const {
    return QFileInfo::exists(m_parts.noteFile);
}

Task<> KegRollback::recover(BrewSession *session) {
    const auto note = readRollbackNote(m_parts.noteFile);
    if (!note) {
        QFile::remove(m_parts.noteFile);
        co_return;
    }
    const Order order{.session = session,
                      .context = {},
                      .prefix = note->prefix,
                      .formula = note->formula,
                      .version = note->version};
    if (note->phase == RollbackNote::Phase::Preparing) {
        co_await finish(*note);
        co_return;
    }
    m_parts.logger.info(
        QStringLiteral("[Larkspur] Finishing an interrupted rollback of %1").arg(note->formula));
    const bool isRestored = QDir(note->keg()).exists() && !QDir(note->staged()).exists();
    if (isRestored)
        setInstalledOnRequest(note->keg(), note->isOnRequest);
    if (isRestored && co_await link(order, *note))
        co_await finish(*note);
    else
        co_await putBack(order, *note);
}

} // namespace larkspur
