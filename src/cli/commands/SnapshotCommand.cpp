#include "app/Larkspur.h"
#include "cli/Agreement.h"
#include "cli/OperationRunner.h"
#include "cli/commands/Commands.h"
#include "operations/snapshots/RestorePlan.h"
#include "operations/snapshots/RestoreSnapshot.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QLocale>

namespace larkspur::cli {

namespace {

const QString json = QStringLiteral("--json");
const QString yes = QStringLiteral("--yes");

QString shortId(const Snapshot &snapshot) {
    return snapshot.id.toString(QUuid::WithoutBraces).left(8).toUpper();
}

QString dateOf(const Snapshot &snapshot) {
    return snapshot.date.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm"));
}

QJsonObject jsonOf(const Snapshot &snapshot) {
    return QJsonDocument::fromJson(snapshotText(snapshot)).object();
}

QString entryText(const SnapshotEntry &entry) {
    return QStringLiteral("%1 %2%3").arg(entry.name, entry.version,
                                         entry.isCask ? QStringLiteral(" (cask)") : QString());
}

QJsonArray jsonOf(const QList<SnapshotEntry> &entries) {
    QJsonArray all;
    for (const SnapshotEntry &entry : entries)
        all.append(QJsonObject{{QStringLiteral("name"), entry.name},
                               {QStringLiteral("version"), entry.version},
                               {QStringLiteral("isCask"), entry.isCask}});
    return all;
}

QJsonObject jsonOf(const SnapshotDiff &diff) {
    QJsonArray changed;
    for (const SnapshotVersionChange &change : diff.changed)
        changed.append(QJsonObject{{QStringLiteral("name"), change.entry.name},
                                   {QStringLiteral("isCask"), change.entry.isCask},
                                   {QStringLiteral("oldVersion"), change.entry.version},
                                   {QStringLiteral("newVersion"), change.currentVersion}});
    return {{QStringLiteral("removed"), jsonOf(diff.removed)},
            {QStringLiteral("added"), jsonOf(diff.added)},
            {QStringLiteral("changed"), changed}};
}

void printDiff(const Terminal &terminal, const SnapshotDiff &diff) {
    if (diff.isEmpty())
        terminal.line(QStringLiteral("These two snapshots have the same packages."));
    for (const SnapshotEntry &entry : diff.removed)
        terminal.line(QStringLiteral("- ") + entryText(entry));
    for (const SnapshotEntry &entry : diff.added)
        terminal.line(QStringLiteral("+ ") + entryText(entry));
    for (const SnapshotVersionChange &change : diff.changed)
        terminal.line(QStringLiteral("~ %1 -> %2").arg(entryText(change.entry), change.currentVersion));
}

void printRefusals(const Terminal &terminal, const QStringList &refusals) {
    for (const QString &refusal : refusals)
        terminal.error(refusal);
}

/// How something ends that stands on a restore point of which entries were left out or not.
ExitStatus statusOf(const Snapshot &snapshot) {
    return snapshot.refused.isEmpty() ? ExitStatus::Done : ExitStatus::DoneWithWarnings;
}

void printPlan(const Terminal &terminal, const RestorePlan &plan, const RestoreOrder &order) {
    for (const QString &tap : plan.missingTaps)
        terminal.line(QStringLiteral("  tap ") + tap);
    for (const SnapshotEntry &entry : plan.missing)
        terminal.line(QStringLiteral("  install ") + entryText(entry));
    for (const SnapshotEntry &entry : plan.added)
        terminal.line((order.removesAdded ? QStringLiteral("  uninstall ") : QStringLiteral("  leave ")) +
                      entryText(entry));
    for (const SnapshotEntry &entry : plan.kept)
        terminal.line(QStringLiteral("  leave ") + entryText(entry));
    for (const SnapshotVersionChange &change : plan.rollable)
        terminal.line(
            QStringLiteral("  %1 %2 -> %3")
                .arg(order.rollsBackVersions ? QStringLiteral("roll back") : QStringLiteral("leave"),
                     entryText({change.entry.name, change.currentVersion, change.entry.isCask}),
                     change.entry.version));
    for (const SnapshotVersionChange &change : plan.notRollable)
        terminal.line(QStringLiteral("  no saved copy of ") + entryText(change.entry));
    printRefusals(terminal, plan.refusals);
}

class SnapshotCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("snapshot"),
                .synopsis =
                    QStringLiteral("take [NOTE…] | list | show ID | compare ID [ID], each with [--json] | "
                                   "restore ID [--remove-added] [--roll-back] [--yes] | "
                                   "delete ID|--all [--yes]"),
                .summary = QStringLiteral("Takes, shows, compares and restores restore points."),
                .verbs = {{QStringLiteral("take"), {json}},
                          {QStringLiteral("list"), {json}},
                          {QStringLiteral("show"), {json}},
                          {QStringLiteral("compare"), {json}},
                          {QStringLiteral("restore"),
                           {QStringLiteral("--remove-added"), QStringLiteral("--roll-back"), yes}},
                          {QStringLiteral("delete"), {QStringLiteral("--all"), yes}}},
                .fewestNames = 1,
                .mostNames = -1};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        co_await context.larkspur.snapshots().load();
        if (const QString &failure = context.larkspur.snapshots().failure(); !failure.isEmpty()) {
            context.terminal.error(QStringLiteral("The restore points cannot be read: ") + failure);
            co_return ExitStatus::Failed;
        }
        const QString verb = arguments.names.takeFirst();
        if (verb == QLatin1String("take"))
            co_return co_await take(context, arguments);
        if (verb == QLatin1String("list"))
            co_return list(context, arguments);
        if (verb == QLatin1String("delete") && arguments.has("--all"))
            co_return co_await removeAll(context, arguments);
        const Snapshot *found =
            arguments.names.isEmpty() ? nullptr : context.larkspur.snapshots().find(arguments.names.first());
        if (!found) {
            context.terminal.error(QStringLiteral("no restore point has this id; \"larkspur snapshot list\" "
                                                  "shows them"));
            co_return ExitStatus::WrongUsage;
        }
        const Snapshot snapshot = *found;
        if (verb == QLatin1String("show"))
            co_return show(context, arguments, snapshot);
        if (verb == QLatin1String("compare"))
            co_return co_await compare(context, arguments, snapshot);
        if (verb == QLatin1String("restore"))
            co_return co_await restore(context, arguments, snapshot);
        co_return co_await removeOne(context, arguments, snapshot);
    }

  private:
    static Task<ExitStatus> take(CommandContext context, CommandArguments arguments) {
        const QString note = arguments.names.join(QLatin1Char(' '));
        const auto taken = co_await context.larkspur.snapshots().take(
            SnapshotTrigger::Manual, note.isEmpty() ? std::nullopt : std::optional(note), context.stop);
        if (!taken) {
            context.terminal.error(taken.error());
            co_return ExitStatus::Failed;
        }
        if (arguments.wantsJson())
            context.terminal.json(jsonOf(*taken));
        else
            context.terminal.line(QStringLiteral("Restore point saved: ") + shortId(*taken));
        co_return ExitStatus::Done;
    }

    static ExitStatus list(const CommandContext &context, const CommandArguments &arguments) {
        const SnapshotManager &manager = context.larkspur.snapshots();
        QJsonArray all;
        QList<QStringList> rows;
        for (const Snapshot &snapshot : manager.snapshots()) {
            all.append(jsonOf(snapshot));
            rows.append({shortId(snapshot), dateOf(snapshot), snapshotTriggerName(snapshot.trigger),
                         QStringLiteral("%1 formulae").arg(snapshot.formulae.size()),
                         QStringLiteral("%1 casks").arg(snapshot.casks.size()),
                         snapshot.note.value_or(QString())});
        }
        if (arguments.wantsJson())
            context.terminal.json(all);
        else
            context.terminal.table(rows);
        for (const QString &name : manager.unreadable())
            context.terminal.error(QStringLiteral("no restore point that can be read: ") + name);
        return manager.unreadable().isEmpty() ? ExitStatus::Done : ExitStatus::DoneWithWarnings;
    }

    static ExitStatus show(const CommandContext &context, const CommandArguments &arguments,
                           const Snapshot &snapshot) {
        if (arguments.wantsJson()) {
            context.terminal.json(jsonOf(snapshot));
            printRefusals(context.terminal, snapshot.refusals());
            return statusOf(snapshot);
        }
        context.terminal.line(
            QStringLiteral("%1  %2  %3")
                .arg(shortId(snapshot), dateOf(snapshot), snapshotTriggerName(snapshot.trigger)));
        if (snapshot.note)
            context.terminal.line(*snapshot.note);
        for (const QList<SnapshotEntry> &entries : {snapshot.formulae, snapshot.casks})
            for (const SnapshotEntry &entry : entries)
                context.terminal.line(QStringLiteral("  ") + entryText(entry));
        context.terminal.line(QStringLiteral("  taps: ") + snapshot.taps.join(QStringLiteral(", ")));
        printRefusals(context.terminal, snapshot.refusals());
        return statusOf(snapshot);
    }

    static Task<ExitStatus> compare(CommandContext context, CommandArguments arguments, Snapshot older) {
        std::optional<Snapshot> newer;
        if (arguments.names.size() > 1) {
            if (const Snapshot *other = context.larkspur.snapshots().find(arguments.names[1]))
                newer = *other;
        } else {
            const auto now = co_await context.larkspur.snapshots().current(context.stop);
            if (!now) {
                context.terminal.error(now.error());
                co_return ExitStatus::Failed;
            }
            newer = *now;
        }
        if (!newer) {
            context.terminal.error(QStringLiteral("there is nothing to compare with"));
            co_return ExitStatus::Failed;
        }
        if (newer->id == older.id) {
            context.terminal.error(QStringLiteral("Pick two different snapshots to compare."));
            co_return ExitStatus::WrongUsage;
        }
        if (newer->date < older.date)
            std::swap(older, *newer);
        const SnapshotDiff diff = compareSnapshots(older, *newer);
        if (arguments.wantsJson())
            context.terminal.json(jsonOf(diff));
        else
            printDiff(context.terminal, diff);
        co_return ExitStatus::Done;
    }

    static Task<ExitStatus> restore(CommandContext context, CommandArguments arguments, Snapshot snapshot) {
        const auto now = co_await context.larkspur.snapshots().current(context.stop);
        if (!now) {
            context.terminal.error(now.error());
            co_return ExitStatus::Failed;
        }
        const RestorePlan plan = planRestore(snapshot, *now, context.larkspur.kegs());
        const RestoreOrder order{.snapshot = snapshot.id,
                                 .removesAdded = arguments.has("--remove-added"),
                                 .rollsBackVersions = arguments.has("--roll-back"),
                                 .agreed = agreementTo(plan)};
        if (plan.changesNothing()) {
            context.terminal.line(QStringLiteral("Nothing to restore"));
            if (plan.isEmpty())
                context.terminal.line(QStringLiteral("Your installed packages already match this snapshot."));
            printPlan(context.terminal, plan, order);
            co_return statusOf(snapshot);
        }
        context.terminal.line(QStringLiteral("Restoring snapshot from %1:").arg(dateOf(snapshot)));
        printPlan(context.terminal, plan, order);
        if (!co_await agrees(context, QStringLiteral("Go on?"), arguments.has("--yes"))) {
            context.terminal.error(QStringLiteral("Nothing was changed."));
            co_return ExitStatus::Failed;
        }
        co_return co_await runOperation(context, restoreSnapshot(context.larkspur.packages(), order), true);
    }

    static Task<ExitStatus> removeOne(CommandContext context, CommandArguments arguments, Snapshot snapshot) {
        if (!co_await agrees(context, QStringLiteral("Delete this restore point?"), arguments.has("--yes"),
                             WithoutTerminal::Refuse))
            co_return ExitStatus::Failed;
        const bool isGone = co_await context.larkspur.snapshots().remove({snapshot.id});
        co_return removed(context, isGone, 1);
    }

    static Task<ExitStatus> removeAll(CommandContext context, CommandArguments arguments) {
        SnapshotManager &manager = context.larkspur.snapshots();
        const QString question =
            QStringLiteral(
                "Delete all %1 restore points? This can't be undone. Automatic snapshots will resume "
                "before your next upgrade.")
                .arg(manager.snapshots().size());
        const auto count = manager.snapshots().size();
        if (!co_await agrees(context, question, arguments.has("--yes"), WithoutTerminal::Refuse))
            co_return ExitStatus::Failed;
        const bool areGone = co_await manager.removeAll();
        co_return removed(context, areGone, count);
    }

    static ExitStatus removed(const CommandContext &context, bool isDone, qsizetype count) {
        if (!isDone)
            context.terminal.error(QStringLiteral("A restore point could not be deleted."));
        else
            context.terminal.line(count == 1 ? QStringLiteral("1 restore point deleted.")
                                             : QStringLiteral("%1 restore points deleted.").arg(count));
        return isDone ? ExitStatus::Done : ExitStatus::Failed;
    }
};

} // namespace

std::unique_ptr<Command> makeSnapshotCommand() {
    return std::make_unique<SnapshotCommand>();
}

} // namespace larkspur::cli
