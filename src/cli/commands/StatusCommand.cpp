#include "app/Larkspur.h"
#include "cli/commands/Commands.h"
#include "userdata/UpdateSelection.h"

namespace larkspur::cli {

namespace {

QJsonObject statusJson(const Inventory &inventory, const UpdateSelection &updates) {
    return {{QStringLiteral("brewPath"), inventory.brewPath.value_or(QString())},
            {QStringLiteral("brewVersion"), inventory.brewVersion.value_or(QString())},
            {QStringLiteral("installedFormulae"), inventory.installedFormulae.size()},
            {QStringLiteral("installedCasks"), inventory.installedCasks.size()},
            {QStringLiteral("outdatedPackages"), updates.shown.size()},
            {QStringLiteral("snoozedPackages"), updates.snoozed.size()},
            {QStringLiteral("pinnedPackages"), inventory.pinnedPackages.size()},
            {QStringLiteral("services"), inventory.services.size()},
            {QStringLiteral("taps"), inventory.taps.size()},
            {QStringLiteral("hiddenUntrustedTaps"), inventory.hiddenUntrustedTaps.size()},
            {QStringLiteral("failures"), QJsonArray::fromStringList(inventory.refreshFailures)}};
}

void printStatus(const Terminal &terminal, const Inventory &inventory, const UpdateSelection &updates) {
    const auto count = [](qsizetype number) { return QString::number(number); };
    terminal.table({
        {QStringLiteral("Homebrew"), inventory.brewVersion.value_or(QStringLiteral("unknown version"))},
        {QStringLiteral("brew"), inventory.brewPath.value_or(QString())},
        {QStringLiteral("Formulae"), count(inventory.installedFormulae.size())},
        {QStringLiteral("Casks"), count(inventory.installedCasks.size())},
        {QStringLiteral("Updates"),
         updates.snoozed.isEmpty()
             ? count(updates.shown.size())
             : QStringLiteral("%1 (%2 more snoozed)").arg(updates.shown.size()).arg(updates.snoozed.size())},
        {QStringLiteral("Pinned"), count(inventory.pinnedPackages.size())},
        {QStringLiteral("Services"), count(inventory.services.size())},
        {QStringLiteral("Taps"), count(inventory.taps.size())},
    });
    for (const HiddenTap &tap : inventory.hiddenUntrustedTaps)
        terminal.line(QStringLiteral("\nPackages hidden by Homebrew: %1 is not trusted (%2)")
                          .arg(tap.name, tap.packages.isEmpty() ? QStringLiteral("nothing of it is installed")
                                                                : tap.packages.join(QStringLiteral(", "))));
}

class StatusCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("status"),
                .synopsis = QStringLiteral("[--json]"),
                .summary =
                    QStringLiteral("Shows which Homebrew is there and how much is installed and outdated."),
                .options = {QStringLiteral("--json")}};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        Larkspur &larkspur = context.larkspur;
        const StartupOutcome outcome = co_await larkspur.startupCheck().run(context.stop);
        if (outcome == StartupOutcome::BrewNotInstalled) {
            context.terminal.error(BrewError::brewNotInstalled());
            co_return ExitStatus::NoHomebrew;
        }
        if (outcome == StartupOutcome::Ready)
            co_await larkspur.refresh().refresh(context.stop);
        const Inventory &inventory = larkspur.inventory().value();
        if (outcome == StartupOutcome::XcodeSetupRequired || inventory.needsXcodeSetup) {
            context.terminal.error(
                QStringLiteral("Xcode Setup Required. Run these two commands:\n"
                               "sudo xcodebuild -runFirstLaunch\nsudo xcodebuild -license accept"));
            co_return ExitStatus::Failed;
        }
        if (context.stop.stop_requested()) {
            context.terminal.error(BrewError::stopped());
            co_return ExitStatus::Failed;
        }
        const UpdateSelection updates = selectUpdates(inventory.outdatedPackages, larkspur.userData());
        if (arguments.wantsJson())
            context.terminal.json(statusJson(inventory, updates));
        else
            printStatus(context.terminal, inventory, updates);
        for (const QString &failure : inventory.refreshFailures)
            context.terminal.error(failure);
        co_return inventory.refreshFailures.isEmpty() ? ExitStatus::Done : ExitStatus::DoneWithWarnings;
    }
};

} // namespace

std::unique_ptr<Command> makeStatusCommand() {
    return std::make_unique<StatusCommand>();
}

} // namespace larkspur::cli
