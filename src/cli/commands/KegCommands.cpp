#include "app/Larkspur.h"
#include "cli/Agreement.h"
#include "cli/OperationRunner.h"
#include "cli/commands/Commands.h"
#include "core/brew/PackageName.h"
#include "operations/kegs/RollBackKegs.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QLocale>

namespace larkspur::cli {

namespace {

class RollbackCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("rollback"),
                .synopsis = QStringLiteral("NAME VERSION [--yes]"),
                .summary =
                    QStringLiteral("Puts a formula back to a version that was preserved before an upgrade."),
                .options = {QStringLiteral("--yes")},
                .fewestNames = 2,
                .mostNames = 2};
    }
    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        const PackageTarget formula{.name = arguments.names[0], .latestVersion = arguments.names[1]};
        const QString question = QStringLiteral("Replace the installed %1 by the preserved %2?")
                                     .arg(formula.name, formula.latestVersion);
        if (!co_await agrees(context, question, arguments.has("--yes"))) {
            context.terminal.error(QStringLiteral("Nothing was changed."));
            co_return ExitStatus::Failed;
        }
        const ExitStatus status =
            co_await runOperation(context, rollBackKegs(context.larkspur.packages(), {formula}), true);
        if (status == ExitStatus::Done || status == ExitStatus::DoneWithWarnings)
            context.terminal.line(QStringLiteral("The next upgrade undoes this. \"larkspur snooze %1\" skips "
                                                 "the version, \"larkspur pin %1\" keeps this one.")
                                      .arg(formula.name));
        co_return status;
    }
};

class KegsCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("kegs"),
                .synopsis = QStringLiteral("list [--json] | verify | remove NAME VERSION [--yes]"),
                .summary = QStringLiteral("Shows, checks and removes the preserved kegs of formulae."),
                .verbs = {{QStringLiteral("list"), {QStringLiteral("--json")}},
                          {QStringLiteral("verify"), {}},
                          {QStringLiteral("remove"), {QStringLiteral("--yes")}}},
                .fewestNames = 1,
                .mostNames = 3};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        KegPreservationManager &kegs = context.larkspur.kegs();
        if (!kegs.isLocationAvailable()) {
            context.terminal.error(QStringLiteral(
                "This location isn't available right now (drive not mounted). Rollback for saved "
                "versions is paused until it's reconnected."));
            co_return ExitStatus::Failed;
        }
        if (!kegs.failure().isEmpty()) {
            context.terminal.error(QStringLiteral("The saved versions cannot be read: ") + kegs.failure());
            co_return ExitStatus::Failed;
        }
        const QString verb = arguments.names.first();
        if (verb == QLatin1String("list"))
            co_return list(context, arguments);
        if (verb == QLatin1String("verify"))
            co_return co_await verify(context);
        if (verb == QLatin1String("remove") && arguments.names.size() == 3)
            co_return co_await remove(context, arguments);
        context.terminal.error(QStringLiteral("say list, verify, or remove NAME VERSION"));
        co_return ExitStatus::WrongUsage;
    }

  private:
    static ExitStatus list(const CommandContext &context, const CommandArguments &arguments) {
        const QList<KegEntry> &entries = context.larkspur.kegs().entries();
        if (arguments.wantsJson()) {
            context.terminal.json(QJsonDocument::fromJson(kegIndexText(entries)).array());
            return ExitStatus::Done;
        }
        QList<QStringList> rows;
        for (const KegEntry &entry : entries)
            rows.append({entry.formula, entry.version, QLocale().formattedDataSize(entry.bytes),
                         entry.date.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm"))});
        context.terminal.table(rows);
        return ExitStatus::Done;
    }

    static Task<ExitStatus> verify(CommandContext context) {
        KegPreservationManager &kegs = context.larkspur.kegs();
        bool areWhole = true;
        for (const KegEntry &entry : QList<KegEntry>(kegs.entries())) {
            const bool isWhole = co_await kegs.verify(entry.formula, entry.version);
            areWhole = areWhole && isWhole;
            context.terminal.line(QStringLiteral("%1 %2: %3")
                                      .arg(entry.formula, entry.version,
                                           isWhole ? QStringLiteral("whole") : QStringLiteral("damaged")));
        }
        co_return areWhole ? ExitStatus::Done : ExitStatus::Failed;
    }

    static Task<ExitStatus> remove(CommandContext context, CommandArguments arguments) {
        const QString formula = arguments.names[1];
        const QString version = arguments.names[2];
        KegPreservationManager &kegs = context.larkspur.kegs();
        if (!kegs.canRollBack(shortName(formula), version)) {
            context.terminal.error(
                QStringLiteral("there is no preserved copy of %1 %2").arg(formula, version));
            co_return ExitStatus::Failed;
        }
        const QString question =
            QStringLiteral("Remove the preserved copy of %1 %2? This can't be undone.").arg(formula, version);
        if (!co_await agrees(context, question, arguments.has("--yes"), WithoutTerminal::Refuse))
            co_return ExitStatus::Failed;
        const auto removed = co_await kegs.remove(shortName(formula), version);
        if (removed)
            context.terminal.line(
                QStringLiteral("The preserved copy of %1 %2 is removed.").arg(formula, version));
        else
            context.terminal.error(removed.error());
        co_return removed ? ExitStatus::Done : ExitStatus::Failed;
    }
};

} // namespace

std::unique_ptr<Command> makeRollbackCommand() {
    return std::make_unique<RollbackCommand>();
}

std::unique_ptr<Command> makeKegsCommand() {
    return std::make_unique<KegsCommand>();
}

} // namespace larkspur::cli
