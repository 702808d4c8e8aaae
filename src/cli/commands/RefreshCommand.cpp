#include "app/Larkspur.h"
#include "cli/OperationRunner.h"
#include "cli/commands/Commands.h"
#include "operations/catalogue/UpdateHomebrew.h"

namespace larkspur::cli {

namespace {

class RefreshCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("refresh"),
                .synopsis = QString(),
                .summary = QStringLiteral("Fetches Homebrew's newest catalogue and looks for updates.")};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments) override {
        const ExitStatus updated = co_await runOperation(context, updateHomebrew(), true);
        if (updated != ExitStatus::Done && updated != ExitStatus::DoneWithWarnings)
            co_return updated;
        co_await context.larkspur.startupCheck().readVersion(context.stop);
        co_await context.larkspur.refresh().refresh(context.stop);
        const Inventory &inventory = context.larkspur.inventory().value();
        for (const QString &failure : inventory.refreshFailures)
            context.terminal.error(failure);
        context.terminal.line(
            QStringLiteral("%1 packages can be upgraded.").arg(inventory.outdatedPackages.size()));
        co_return inventory.refreshFailures.isEmpty() ? updated : ExitStatus::DoneWithWarnings;
    }
};

} // namespace

std::unique_ptr<Command> makeRefreshCommand() {
    return std::make_unique<RefreshCommand>();
}

} // namespace larkspur::cli
