#include "operations/kegs/KegRollback.h"

#include "core/async/Worker.h"
#include "core/log/Logger.h"
#include "core/trees/TreeChanges.h"
#include "core/trees/TreeSync.h"
#include "operations/installed/InstalledPackages.h"
#include "operations/kegs/KegPreservationManager.h"
#include "operations/kegs/KegReceipt.h"
#include "operations/kegs/RollbackState.h"

#include <QDir>

#include <algorithm>

namespace larkspur {

namespace {

const QString kind = QStringLiteral("rollback");

void say(const OperationContext &context, const QString &line) {
    if (context.output)
        context.output->addLine(line);
}

void sayFailure(const KegRollback::Order &order, const QString &reason) {
    say(order.context, QStringLiteral("==> Could not roll back %1: %2").arg(order.formula.text(), reason));
}

RollbackNote noteFor(const KegRollback::Order &order, const InstalledPackages &installed) {
    RollbackNote note{.prefix = order.prefix, .formula = order.formula.text(), .version = order.version};
    note.previousVersion = installed.currentVersion(note.formula);
    note.wasLinked = installed.isLinked(note.formula) || note.isFirstInstallation();
    note.wasPinned = installed.isPinned(note.formula, false);
    const QString keg =
        note.isFirstInstallation() ? QString() : note.rack() + QLatin1Char('/') + note.previousVersion;
    note.isOnRequest = installedOnRequest(keg).value_or(true);
    return note;
}

bool hasSucceeded(const Result<BrewRun> &run) {
    return run && run->succeeded();
}

} // namespace

KegRollback::KegRollback(Parts parts)
    : m_parts(std::move(parts)) {}

Task<Result<BrewRun>> KegRollback::brew(Order order, BrewArguments arguments) {
    // Not stopped half-way: what has begun here is finished or undone.
    order.context = order.context.repairing();
    co_return co_await order.session->stream(
        {.arguments = std::move(arguments),
         .environment = {{QStringLiteral("HOMEBREW_NO_AUTOREMOVE"), QStringLiteral("1")}}},
        order.context, BrewSession::Style::Plain);
}

Task<KegRollback::End> KegRollback::run(Order order) {
    if (order.prefix.isEmpty()) {
        sayFailure(order, QStringLiteral("Homebrew prefix not found"));
        co_return End{};
    }
    if (const auto obstacle = m_parts.kegs.obstacle(order.formula.text(), order.version)) {
        sayFailure(order, *obstacle);
        co_return End{};
    }
    const auto installed =
        co_await runInWorker([prefix = order.prefix] { return InstalledPackages::at(prefix); });
    if (!installed) {
        sayFailure(order, installed.error());
        co_return End{};
    }
    const RollbackNote note =
        co_await runInWorker([order, before = *installed] { return noteFor(order, before); });
    if (const auto checked = checkPlaces(note); !checked) {
        sayFailure(order, checked.error());
        co_return End{};
    }
    if (QDir(note.aside()).exists()) {
        // An earlier rollback could not put everything back: what it kept there is the last that is left of
        // it.
        sayFailure(
            order,
            QStringLiteral("an earlier rollback is not finished; what it kept lies in %1").arg(note.aside()));
        co_return End{};
    }
    co_await runInWorker([note] { return removeTree(note.prefix, note.workFolder()); });
    const auto file = CrashNote::write(m_parts.noteFolder, kind, note.toJson());
    if (!file) {
        sayFailure(order, file.error());
        co_return End{};
    }
    const Work work{.order = order, .note = note, .file = *file};
    if (!co_await stage(work)) {
        co_await finish(work);
        co_return End{};
    }
    co_return co_await exchange(work);
}

/// Brings the copy beside the Cellar and keeps what is installed; says why not.
Task<bool> KegRollback::stage(Work work) {
    const Order order = work.order;
    const auto staged = co_await m_parts.kegs.restoreCopy(
        work.note.formula, order.version, work.note.staged(),
        {.stop = order.context.stop, .keptOpen = order.session->lockDescriptor()});
    if (!staged) {
        m_parts.logger.error(
            QStringLiteral("[Larkspur] Rollback of %1: %2").arg(work.note.formula, staged.error()));
        sayFailure(order, staged.error());
        co_return false;
    }
    say(order.context, QStringLiteral("==> Rolling back %1 to %2").arg(work.note.formula, order.version));
    const auto aside = co_await runInWorker([note = work.note]() -> std::expected<void, QString> {
        return note.isFirstInstallation() ? std::expected<void, QString>()
                                          : linkTree(note.prefix, note.rack(), note.aside());
    });
    if (aside && !order.context.stop.stop_requested())
        co_return true;
    const QString reason = aside ? QStringLiteral("stopped") : aside.error();
    m_parts.logger.error(QStringLiteral("[Larkspur] Rollback of %1: %2").arg(work.note.formula, reason));
    sayFailure(order, QStringLiteral("failed to restore preserved files: ") + reason);
    co_return false;
}

/// Takes out what is installed and puts the preserved keg in its place.
Task<KegRollback::End> KegRollback::exchange(Work work) {
    work.note.phase = RollbackNote::Phase::Exchanging;
    if (const auto written = work.file.update(work.note.toJson()); !written) {
        sayFailure(work.order, written.error());
        co_await finish(work);
        co_return End{};
    }
    if (!work.note.isFirstInstallation() &&
        !hasSucceeded(co_await brew(work.order,
                                    {"uninstall", "--ignore-dependencies", "--force", work.order.formula}))) {
        sayFailure(work.order, QStringLiteral("the installed version could not be removed"));
        co_await putBack(work);
        co_return End{};
    }
    if (const auto installed = co_await install(work); !installed) {
        sayFailure(work.order, QStringLiteral("failed to restore preserved files: ") + installed.error());
        co_await putBack(work);
        co_return End{};
    }
    if (!co_await link(work)) {
        sayFailure(work.order, QStringLiteral("restored files but linking failed"));
        co_await putBack(work);
        co_return End{};
    }
    const bool hasPin = co_await pin(work);
    co_await finish(work, hasPin ? Note::Goes : Note::Stays);
    say(work.order.context,
        QStringLiteral("==> Rolled back %1 to %2").arg(work.note.formula, work.note.version));
    co_return End{.isBack = true, .hasWarnings = !hasPin};
}

/// The staged keg takes its place and is on the disk before the way back goes.
Task<std::expected<void, QString>> KegRollback::install(Work work) {
    auto installed =
        co_await runInWorker([note = work.note, sync = &m_parts.sync]() -> std::expected<void, QString> {
            if (const auto gone = removeTree(note.prefix, note.rack()); !gone)
                return gone;
            if (const auto moved = moveTree(note.prefix, note.staged(), note.keg()); !moved)
                return moved;
            setInstalledOnRequest(note.keg(), note.isOnRequest);
            return sync->sync(note.rack());
        });
    if (!installed)
        m_parts.logger.error(
            QStringLiteral("[Larkspur] Rollback of %1: %2").arg(work.note.formula, installed.error()));
    co_return std::expected<void, QString>(installed);
}

/// Homebrew links nothing as long as its record says that all is linked.
Task<Result<BrewRun>> KegRollback::linkAnew(Work work) {
    if (co_await runInWorker([note = work.note] { return isHalfLinked(note); }))
        co_await brew(work.order, {"unlink", work.order.formula});
    co_return co_await brew(work.order, {"link", "--overwrite", work.order.formula});
}

/// Judged by looking, not by what Homebrew says: it says success where it has linked nothing.
Task<bool> KegRollback::link(Work work) {
    const RollbackNote note = work.note;
    if (co_await runInWorker([note] { return isInUse(note); }))
        co_return true;
    bool hasFailed = false;
    if (note.wasLinked) {
        const auto linked = co_await linkAnew(work);
        hasFailed = !linked || !linked->succeeded() || std::ranges::any_of(linked->lines, namesFailure);
    }
    if (hasFailed)
        co_return false;
    // A formula that was never here may be keg-only: then its link in opt is all that it gets.
    RollbackNote wanted = note;
    wanted.wasLinked = note.wasLinked && !note.isFirstInstallation();
    co_return co_await runInWorker([wanted] {
        makeOptLink(wanted, wanted.version);
        return isInUse(wanted);
    });
}

/// Pins again what was pinned; says if that fails.
Task<bool> KegRollback::pin(Work work) {
    const auto look = [note = work.note] { return hasItsPin(note); };
    if (co_await runInWorker(look))
        co_return true;
    co_await brew(work.order, {"pin", work.order.formula});
    if (co_await runInWorker(look))
        co_return true;
    warn(work, QStringLiteral("%1 was pinned and could not be pinned again. The next operation tries it once "
                              "more.")
                   .arg(work.note.formula));
    co_return false;
}

/// Undoes everything: the kegs from before, their links and the pin.
Task<> KegRollback::putBack(Work work) {
    const RollbackNote note = work.note;
    const bool isBack = co_await runInWorker([note] {
        if (note.isFirstInstallation())
            return removeTree(note.prefix, note.rack()).has_value();
        if (!QDir(note.aside()).exists())
            return QDir(note.rack()).exists();
        // What is there is moved, not removed, before the kegs from before have their place again.
        const QString failed = note.workFolder() + QStringLiteral("/failed");
        if (!removeTree(note.prefix, failed) ||
            (QDir(note.rack()).exists() && !moveTree(note.prefix, note.rack(), failed)))
            return false;
        return moveTree(note.prefix, note.aside(), note.rack()).has_value();
    });
    if (!isBack)
        co_await installNewest(work);
    else if (note.isFirstInstallation())
        co_await finish(work);
    else
        co_await putBackInUse(work);
}

/// The kegs from before are in their place. The note stays until the links and the pin are back too.
Task<> KegRollback::putBackInUse(Work work) {
    const RollbackNote note = work.note;
    const auto look = [note] { return hasItsLinks(note); };
    if (note.wasLinked && !co_await runInWorker(look))
        co_await linkAnew(work);
    const bool hasLinks = co_await runInWorker([note, look] {
        if (!look())
            makeOptLink(note, note.previousVersion);
        return look();
    });
    if (!hasLinks)
        warn(work, QStringLiteral("%1 %2 is back, but could not be linked again. The next operation tries it "
                                  "once more.")
                       .arg(note.formula, note.previousVersion));
    const bool hasPin = co_await pin(work);
    if (hasLinks && hasPin)
        say(work.order.context,
            QStringLiteral("==> Put %1 %2 back as it was before").arg(note.formula, note.previousVersion));
    co_await finish(work, hasLinks && hasPin ? Note::Goes : Note::Stays);
}

/// The last resort: the newest version, downloaded again. What lies aside stays there.
Task<> KegRollback::installNewest(Work work) {
    const RollbackNote note = work.note;
    if (QDir(note.aside()).exists())
        warn(work, QStringLiteral("%1 as it was before is kept at %2").arg(note.formula, note.aside()));
    if (hasSucceeded(co_await brew(work.order, {"install", "--formula", work.order.formula})))
        say(work.order.context,
            QStringLiteral("==> Reinstalled current %1 after failed rollback").arg(note.formula));
}

/// In a worker: what lay aside can be tens of thousands of files.
Task<> KegRollback::finish(Work work, Note fate) {
    co_await runInWorker([note = work.note] {
        clearWorkFolder(note);
        return true;
    });
    if (fate == Note::Goes)
        work.file.remove();
}

void KegRollback::warn(const Work &work, const QString &text) const {
    m_parts.logger.error(QStringLiteral("[Larkspur] Rollback: ") + text);
    say(work.order.context, QStringLiteral("==> Warning: ") + text);
}

/// Ends an interrupted rollback without a change to what is installed. What lies aside stays, and keeps the
/// formula from being rolled back until somebody has looked at it: that failure names it.
Task<> KegRollback::leaveAlone(Work work, QString reason) {
    const RollbackNote note = work.note;
    const bool isKept = QDir(note.aside()).exists();
    const QString kept =
        isKept ? QStringLiteral(" What was there before the rollback is kept at %1").arg(note.aside())
               : QString();
    warn(work, QStringLiteral("%1 is left as it is now: %2.%3").arg(note.formula, reason, kept));
    if (!isKept) {
        co_await finish(work);
        co_return;
    }
    co_await runInWorker([note] {
        clearAllButAside(note);
        return true;
    });
    work.file.remove();
}

Task<> KegRollback::recover(Work work) {
    const RollbackNote note = work.note;
    const auto remains = co_await runInWorker([note] { return RollbackRemains::of(note); });
    if (!remains) {
        warn(work, QStringLiteral("The interrupted rollback of %1 cannot be finished: %2")
                       .arg(note.formula, remains.error()));
        co_return;
    }
    const QStringList others = remains->installedSince(note);
    if (note.phase == RollbackNote::Phase::Preparing) {
        if (remains->aside.isEmpty() || remains->installed.contains(note.previousVersion))
            co_await finish(work);
        else
            co_await leaveAlone(work, QStringLiteral("it was changed after an interrupted rollback"));
        co_return;
    }
    if (!others.isEmpty()) {
        co_await leaveAlone(work, QStringLiteral("%1 was installed after an interrupted rollback")
                                      .arg(others.join(QStringLiteral(", "))));
        co_return;
    }
    if (remains->installed.isEmpty() && remains->aside.isEmpty()) {
        co_await finish(work); // removed since
        co_return;
    }
    const bool isRestored = remains->installed.contains(note.version) && !remains->isStaged;
    if (isRestored)
        co_await runInWorker([note] {
            setInstalledOnRequest(note.keg(), note.isOnRequest);
            return true;
        });
    if (isRestored && co_await link(work))
        co_await finish(work, co_await pin(work) ? Note::Goes : Note::Stays);
    else
        co_await putBack(work);
}

KegRollback::Leftover::Leftover(KegRollback &rollback)
    : NoteLeftover({.folder = rollback.m_parts.noteFolder,
                    .kind = kind,
                    .about = QStringLiteral("an interrupted rollback")})
    , m_rollback(rollback) {}

Task<NoteLeftover::Settled> KegRollback::Leftover::settle(CrashNote note, LockedWork work) {
    const auto contents = RollbackNote::fromJson(note.contents(), work.prefix);
    const auto formula = contents ? PackageName::parse(contents->formula) : std::nullopt;
    if (!formula)
        co_return Settled::Unusable;
    if (const auto checked = checkPlaces(*contents); !checked) {
        work.warn(QStringLiteral("The interrupted rollback of %1 cannot be finished: %2")
                      .arg(contents->formula, checked.error()));
        co_return Settled::Not;
    }
    work.say(QStringLiteral("Finishing an interrupted rollback of %1").arg(contents->formula));
    co_await m_rollback.recover({.order = {.session = work.session,
                                           .context = work.context,
                                           .prefix = work.prefix,
                                           .formula = *formula,
                                           .version = contents->version},
                                 .note = *contents,
                                 .file = note});
    co_return Settled::Not; // the rollback itself takes the note away
}

} // namespace larkspur
