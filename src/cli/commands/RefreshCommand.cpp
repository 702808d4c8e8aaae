#include "app/Larkspur.h"
#include "cli/LiveOutput.h"
#include "cli/commands/Commands.h"

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
        OperationContext operation;
        operation.output = std::make_shared<LiveOutput>(context.terminal);
        operation.stop = context.stop;
        const auto updated = co_await context.larkspur.catalogueUpdate().run(operation);
        if (!updated) {
            context.terminal.error(updated.error());
            co_return statusFor(updated.error());
        }
        const Inventory &inventory = context.larkspur.inventory().value();
        for (const QString &failure : inventory.refreshFailures)
            context.terminal.error(failure);
        context.terminal.line(
            QStringLiteral("%1 packages can be upgraded.").arg(inventory.outdatedPackages.size()));
        co_return inventory.refreshFailures.isEmpty() ? ExitStatus::Done : ExitStatus::DoneWithWarnings;
    }
};

} // namespace

std::unique_ptr<Command> makeRefreshCommand() {
    return std::make_unique<RefreshCommand>();
}

} // namespace larkspur::cli
