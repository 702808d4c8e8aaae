#include "app/Larkspur.h"
#include "cli/commands/Commands.h"
#include "inventory/records/RecordJson.h"

namespace larkspur::cli {

namespace {

const QString json = QStringLiteral("--json");

class ServicesCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("services"),
                .synopsis = QStringLiteral("[NAME] [--json]"),
                .summary = QStringLiteral("Lists the background services, or one of them, and how they are."),
                .options = {json},
                .fewestNames = 0,
                .mostNames = 1};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        const auto services =
            co_await ask(&context.larkspur.queries(), arguments.names.value(0), context.stop);
        if (!services) {
            context.terminal.error(services.error());
            co_return statusFor(services.error());
        }
        if (arguments.wantsJson()) {
            context.terminal.json(toJson(*services));
            co_return ExitStatus::Done;
        }
        QList<QStringList> rows;
        for (const BrewServiceInfo &service : *services)
            rows.append({service.name, serviceStatusName(service.status), service.user.value_or(QString())});
        context.terminal.table(rows);
        if (rows.isEmpty())
            context.terminal.line(QStringLiteral("No services available"));
        co_return ExitStatus::Done;
    }

  private:
    static Task<Result<QList<BrewServiceInfo>>> ask(InventoryQueries *queries, QString name, StopToken stop) {
        if (name.isEmpty())
            co_return co_await queries->services(std::move(stop));
        const auto one = co_await queries->service(std::move(name), std::move(stop));
        co_return one ? Result<QList<BrewServiceInfo>>(QList{*one}) : std::unexpected(one.error());
    }
};

class TapsCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("taps"),
                .synopsis = QStringLiteral("[--json]"),
                .summary = QStringLiteral("Lists the sources of packages."),
                .options = {json}};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        const auto taps = co_await context.larkspur.queries().taps(context.stop);
        if (!taps) {
            context.terminal.error(taps.error());
            co_return statusFor(taps.error());
        }
        if (arguments.wantsJson()) {
            context.terminal.json(toJson(*taps));
            co_return ExitStatus::Done;
        }
        QList<QStringList> rows;
        for (const TapInfo &tap : *taps)
            rows.append({tap.name,
                         QStringLiteral("%1 formulae, %2 casks").arg(tap.formulaCount).arg(tap.caskCount),
                         trustWord(tap)});
        context.terminal.table(rows);
        co_return ExitStatus::Done;
    }

  private:
    static QString trustWord(const TapInfo &tap) {
        if (tap.isOfficial)
            return QStringLiteral("official");
        if (!tap.isTrusted)
            return {};
        return *tap.isTrusted ? QStringLiteral("trusted") : QStringLiteral("not trusted");
    }
};

} // namespace

std::unique_ptr<Command> makeServicesCommand() {
    return std::make_unique<ServicesCommand>();
}

std::unique_ptr<Command> makeTapsCommand() {
    return std::make_unique<TapsCommand>();
}

} // namespace larkspur::cli
