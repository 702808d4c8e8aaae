#include "app/Larkspur.h"
#include "cli/commands/Commands.h"
#include "inventory/records/RecordJson.h"

namespace larkspur::cli {

namespace {

void printFormula(const Terminal &terminal, const Formula &formula) {
    terminal.line(QStringLiteral("%1 %2").arg(formula.fullName, formula.version));
    if (formula.description)
        terminal.line(*formula.description);
    terminal.table({{QStringLiteral("Home page"), formula.homepage.value_or(QString())},
                    {QStringLiteral("Licence"), formula.license.value_or(QString())},
                    {QStringLiteral("Source"), formula.sourceURL.value_or(QString())},
                    {QStringLiteral("Needs"), formula.dependencies.join(QStringLiteral(", "))},
                    {QStringLiteral("Installed"),
                     formula.installedOn
                         ? formula.installedOn->toLocalTime().toString(QStringLiteral("yyyy-MM-dd HH:mm"))
                         : QStringLiteral("no")}});
    if (formula.caveats)
        terminal.line(QLatin1Char('\n') + *formula.caveats);
}

void printCask(const Terminal &terminal, const Cask &cask) {
    terminal.line(QStringLiteral("%1 %2").arg(cask.token, cask.version));
    if (cask.description)
        terminal.line(*cask.description);
    terminal.table({{QStringLiteral("Name"), cask.name.join(QStringLiteral(", "))},
                    {QStringLiteral("Home page"), cask.homepage.value_or(QString())},
                    {QStringLiteral("Download"), cask.url.value_or(QString())},
                    {QStringLiteral("Applications"), cask.appNames.join(QStringLiteral(", "))},
                    {QStringLiteral("Reports itself as"), cask.actualVersion.value_or(QString())}});
    if (cask.requiresRosetta)
        terminal.line(QStringLiteral("Needs Rosetta on Apple silicon."));
    if (cask.caveats)
        terminal.line(QLatin1Char('\n') + *cask.caveats);
}

class InfoCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("info"),
                .synopsis = QStringLiteral("NAME [--cask] [--json]"),
                .summary = QStringLiteral("Tells about one package, installed or not."),
                .options = {QStringLiteral("--cask"), QStringLiteral("--json")},
                .fewestNames = 1,
                .mostNames = 1};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        if (!arguments.has("--cask")) {
            const auto formula =
                co_await context.larkspur.queries().formulaDetails(arguments.names.first(), context.stop);
            if (formula) {
                show(context.terminal, *formula, arguments.wantsJson());
                co_return ExitStatus::Done;
            }
            if (formula.error().kind != BrewError::Kind::PackageNotFound) {
                context.terminal.error(formula.error());
                co_return statusFor(formula.error());
            }
        }
        const auto cask =
            co_await context.larkspur.queries().caskDetails(arguments.names.first(), context.stop);
        if (!cask) {
            context.terminal.error(cask.error());
            co_return statusFor(cask.error());
        }
        show(context.terminal, *cask, arguments.wantsJson());
        co_return ExitStatus::Done;
    }

  private:
    static void show(const Terminal &terminal, const Formula &formula, bool asJson) {
        if (asJson)
            terminal.json(toJson(formula));
        else
            printFormula(terminal, formula);
    }
    static void show(const Terminal &terminal, const Cask &cask, bool asJson) {
        if (asJson)
            terminal.json(toJson(cask));
        else
            printCask(terminal, cask);
    }
};

} // namespace

std::unique_ptr<Command> makeInfoCommand() {
    return std::make_unique<InfoCommand>();
}

} // namespace larkspur::cli
