#include "app/Larkspur.h"
#include "cli/commands/Commands.h"
#include "inventory/records/Caveats.h"
#include "inventory/records/RecordJson.h"

namespace larkspur::cli {

namespace {

void printFormula(const Terminal &terminal, const Formula &formula, const QString &prefix) {
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
        terminal.line(QLatin1Char('\n') + caveatsText(*formula.caveats, prefix));
}

void printCask(const Terminal &terminal, const Cask &cask, const QString &prefix) {
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
        terminal.line(QLatin1Char('\n') + caveatsText(*cask.caveats, prefix));
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
        InventoryQueries &queries = context.larkspur.queries();
        const QString name = arguments.names.first();
        const QString prefix = (co_await queries.homebrewPrefix(context.stop)).value_or(QString());
        Result<Formula> formula = std::unexpected(BrewError::packageNotFound(name));
        if (!arguments.has("--cask"))
            formula = co_await queries.formulaDetails(name, context.stop);
        if (formula) {
            if (arguments.wantsJson())
                context.terminal.json(toJson(*formula));
            else
                printFormula(context.terminal, *formula, prefix);
            co_return ExitStatus::Done;
        }
        if (formula.error().kind != BrewError::Kind::PackageNotFound) {
            context.terminal.error(formula.error());
            co_return statusFor(formula.error());
        }
        const auto cask = co_await queries.caskDetails(name, context.stop);
        if (!cask) {
            context.terminal.error(cask.error());
            co_return statusFor(cask.error());
        }
        if (arguments.wantsJson())
            context.terminal.json(toJson(*cask));
        else
            printCask(context.terminal, *cask, prefix);
        co_return ExitStatus::Done;
    }
};

} // namespace

std::unique_ptr<Command> makeInfoCommand() {
    return std::make_unique<InfoCommand>();
}

} // namespace larkspur::cli
