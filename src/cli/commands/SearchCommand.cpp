#include "app/Larkspur.h"
#include "cli/commands/Commands.h"

namespace larkspur::cli {

namespace {

class SearchCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("search"),
                .synopsis = QStringLiteral("TEXT [--json]"),
                .summary = QStringLiteral("Searches the names of everything that can be installed."),
                .options = {QStringLiteral("--json")},
                .fewestNames = 1,
                .mostNames = -1};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        const QString text = arguments.names.join(QLatin1Char(' '));
        const auto hits = co_await context.larkspur.queries().search(text, context.stop);
        if (!hits) {
            context.terminal.error(hits.error());
            co_return statusFor(hits.error());
        }
        if (arguments.wantsJson()) {
            context.terminal.json({{QStringLiteral("formulae"), QJsonArray::fromStringList(hits->formulae)},
                                   {QStringLiteral("casks"), QJsonArray::fromStringList(hits->casks)}});
            co_return ExitStatus::Done;
        }
        for (const QString &name : hits->formulae)
            context.terminal.line(name);
        for (const QString &token : hits->casks)
            context.terminal.line(token + QStringLiteral(" (cask)"));
        if (hits->formulae.isEmpty() && hits->casks.isEmpty())
            context.terminal.line(QStringLiteral("Nothing is called like \"%1\".").arg(text));
        co_return ExitStatus::Done;
    }
};

} // namespace

std::unique_ptr<Command> makeSearchCommand() {
    return std::make_unique<SearchCommand>();
}

} // namespace larkspur::cli
