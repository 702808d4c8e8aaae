#include "app/Larkspur.h"
#include "cli/commands/Commands.h"
#include "core/brew/PackageName.h"

#include <algorithm>
#include <array>

namespace larkspur::cli {

namespace {

const QString json = QStringLiteral("--json");

struct Choice {
    QString option;
    SnoozeDuration duration;
};

const std::array choices{Choice{QStringLiteral("--day"), SnoozeDuration::OneDay},
                         Choice{QStringLiteral("--week"), SnoozeDuration::OneWeek},
                         Choice{QStringLiteral("--month"), SnoozeDuration::OneMonth}};

ExitStatus saved(const CommandContext &context, bool isSaved) {
    if (isSaved)
        return ExitStatus::Done;
    context.terminal.error(
        QStringLiteral("The list of snoozed packages cannot be written; the log says why."));
    return ExitStatus::Failed;
}

class SnoozeCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("snooze"),
                .synopsis = QStringLiteral("NAME [--day|--week|--month]"),
                .summary = QStringLiteral("Leaves an update out of the list for a while, or until the next "
                                          "version."),
                .options = {choices[0].option, choices[1].option, choices[2].option},
                .fewestNames = 1,
                .mostNames = 1};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        if (arguments.options.size() > 1) {
            context.terminal.error(QStringLiteral("say one of --day, --week and --month"));
            co_return ExitStatus::WrongUsage;
        }
        const auto outdated = co_await context.larkspur.queries().outdated(context.stop);
        if (!outdated) {
            context.terminal.error(outdated.error());
            co_return statusFor(outdated.error());
        }
        const QString name = shortName(arguments.names.first());
        const auto found = std::ranges::find(*outdated, name, &OutdatedPackage::name);
        if (found == outdated->end()) {
            context.terminal.error(QStringLiteral("there is no update of %1 to snooze").arg(name));
            co_return ExitStatus::Failed;
        }
        UserDataManager &userData = context.larkspur.userData();
        const bool isSaved =
            userData.snoozePackage(name, found->currentVersion, found->isCask, chosenType(arguments));
        if (isSaved)
            context.terminal.line(QStringLiteral("%1 %2 is snoozed. %3")
                                      .arg(name, found->currentVersion,
                                           userData.snoozedPackages().last().description(userData.now())));
        co_return saved(context, isSaved);
    }

  private:
    static SnoozeType chosenType(const CommandArguments &arguments) {
        for (const auto &[option, duration] : choices)
            if (arguments.options.contains(option))
                return duration;
        return UntilNextVersion();
    }
};

class UnsnoozeCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("unsnooze"),
                .synopsis = QStringLiteral("NAME"),
                .summary = QStringLiteral("Shows the updates of a package again."),
                .fewestNames = 1,
                .mostNames = 1};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        UserDataManager &userData = context.larkspur.userData();
        const QString name = shortName(arguments.names.first());
        const auto &snoozed = userData.snoozedPackages();
        if (std::ranges::find(snoozed, name, &SnoozedPackage::packageName) == snoozed.end()) {
            context.terminal.error(QStringLiteral("%1 is not snoozed").arg(name));
            co_return ExitStatus::Failed;
        }
        co_return saved(context, userData.unsnoozePackage(name));
    }
};

class SnoozedCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("snoozed"),
                .synopsis = QStringLiteral("[--json]"),
                .summary = QStringLiteral("Lists the packages whose updates are snoozed."),
                .options = {json}};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        const UserDataManager &userData = context.larkspur.userData();
        QJsonArray records;
        QList<QStringList> rows;
        for (const SnoozedPackage &snooze : userData.snoozedPackages()) {
            if (!snooze.isInForce(snooze.snoozedVersion, userData.now()))
                continue; // over
            records.append(snooze.toJson());
            rows.append({snooze.packageName, snooze.snoozedVersion, snooze.description(userData.now())});
        }
        if (arguments.wantsJson())
            context.terminal.json(records);
        else if (rows.isEmpty())
            context.terminal.line(QStringLiteral("Nothing is snoozed."));
        else
            context.terminal.table(rows);
        const QString damage = userData.snoozedDamage();
        if (!damage.isEmpty())
            context.terminal.error(QStringLiteral("Warning: ") + damage);
        co_return damage.isEmpty() ? ExitStatus::Done : ExitStatus::DoneWithWarnings;
    }
};

} // namespace

std::unique_ptr<Command> makeSnoozeCommand() {
    return std::make_unique<SnoozeCommand>();
}

std::unique_ptr<Command> makeUnsnoozeCommand() {
    return std::make_unique<UnsnoozeCommand>();
}

std::unique_ptr<Command> makeSnoozedCommand() {
    return std::make_unique<SnoozedCommand>();
}

} // namespace larkspur::cli
