#include "app/Larkspur.h"
#include "cli/commands/Commands.h"

namespace larkspur::cli {

namespace {

class HistoryCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("history"),
                .synopsis = QStringLiteral("[--json]"),
                .summary =
                    QStringLiteral("Lists what was installed, upgraded and removed, the newest first."),
                .options = {QStringLiteral("--json")}};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        QJsonArray records;
        QList<QStringList> rows;
        for (const HistoryEntry &entry : context.larkspur.userData().history()) {
            records.append(entry.toJson());
            rows.append({entry.timestamp.toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm")),
                         historyActionName(entry.action),
                         entry.isCask ? entry.packageName + QStringLiteral(" (cask)") : entry.packageName,
                         entry.success ? QString() : QStringLiteral("failed")});
        }
        if (arguments.wantsJson())
            context.terminal.json(records);
        else if (rows.isEmpty())
            context.terminal.line(QStringLiteral("Nothing has happened yet."));
        else
            context.terminal.table(rows);
        const QString damage = context.larkspur.userData().historyDamage();
        if (!damage.isEmpty())
            context.terminal.error(QStringLiteral("Warning: ") + damage);
        co_return damage.isEmpty() ? ExitStatus::Done : ExitStatus::DoneWithWarnings;
    }
};

} // namespace

std::unique_ptr<Command> makeHistoryCommand() {
    return std::make_unique<HistoryCommand>();
}

} // namespace larkspur::cli
