#include "app/Larkspur.h"
#include "cli/commands/Commands.h"
#include "inventory/records/RecordJson.h"
#include "userdata/UpdateSelection.h"

#include <algorithm>

namespace larkspur::cli {

namespace {

const QString json = QStringLiteral("--json");

class ListCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("list"),
                .synopsis = QStringLiteral("[--formulae|--casks] [--json]"),
                .summary = QStringLiteral("Lists the installed packages."),
                .options = {QStringLiteral("--formulae"), QStringLiteral("--casks"), json}};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        InventoryQueries &queries = context.larkspur.queries();
        // Both are under way before the first is awaited.
        auto formulaQuery =
            arguments.has("--casks") ? nothing<Formula>() : queries.installedFormulae(context.stop);
        auto caskQuery = arguments.has("--formulae") ? nothing<Cask>() : queries.installedCasks(context.stop);
        const auto formulae = co_await formulaQuery;
        const auto casks = co_await caskQuery;
        if (!formulae || !casks) {
            const BrewError failure = formulae ? casks.error() : formulae.error();
            context.terminal.error(failure);
            co_return statusFor(failure);
        }
        if (arguments.wantsJson())
            context.terminal.json(
                {{QStringLiteral("formulae"), toJson(*formulae)}, {QStringLiteral("casks"), toJson(*casks)}});
        else
            print(context.terminal, *formulae, *casks);
        co_return ExitStatus::Done;
    }

  private:
    template <typename Record>
    static Task<Result<QList<Record>>> nothing() {
        co_return QList<Record>();
    }

    static void print(const Terminal &terminal, const QList<Formula> &formulae, const QList<Cask> &casks) {
        QList<QStringList> rows;
        for (const Formula &formula : formulae)
            rows.append({formula.fullName, formula.version, formula.description.value_or(QString())});
        for (const Cask &cask : casks)
            rows.append(
                {cask.token + QStringLiteral(" (cask)"), cask.version, cask.description.value_or(QString())});
        terminal.table(rows);
    }
};

class OutdatedCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("outdated"),
                .synopsis = QStringLiteral("[--json]"),
                .summary = QStringLiteral(
                    "Lists the packages for which there is a newer version, without snoozed ones."),
                .options = {json}};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        const auto packages = co_await context.larkspur.queries().outdated(context.stop);
        if (!packages) {
            context.terminal.error(packages.error());
            co_return statusFor(packages.error());
        }
        const UpdateSelection updates = selectUpdates(*packages, context.larkspur.userData());
        if (arguments.wantsJson())
            context.terminal.json(toJson(updates.shown));
        else
            print(context.terminal, updates);
        co_return ExitStatus::Done;
    }

  private:
    static void print(const Terminal &terminal, const UpdateSelection &updates) {
        QList<QStringList> rows;
        for (const OutdatedPackage &package : updates.shown)
            rows.append({package.isCask ? package.fullName + QStringLiteral(" (cask)") : package.fullName,
                         package.installedVersions.join(QStringLiteral(", ")) + QStringLiteral(" → ") +
                             package.currentVersion,
                         package.pinned ? QStringLiteral("pinned") : QString()});
        terminal.table(rows);
        if (rows.isEmpty())
            terminal.line(updates.snoozed.isEmpty() ? QStringLiteral("Everything is up to date.")
                                                    : QStringLiteral("Everything else is up to date."));
        if (!updates.snoozed.isEmpty())
            terminal.line(
                QStringLiteral("Snoozed: %1").arg(updates.snoozedNames().join(QStringLiteral(", "))));
    }
};

/// Leaves and pinned packages are both plain lists of names.
class NamesCommand final : public Command {
  public:
    using Query = Task<Result<QSet<QString>>> (InventoryQueries::*)(StopToken);

    NamesCommand(QString name, QString summary, Query query)
        : m_name(std::move(name))
        , m_summary(std::move(summary))
        , m_query(query) {}

    CommandShape shape() const override {
        return {
            .name = m_name, .synopsis = QStringLiteral("[--json]"), .summary = m_summary, .options = {json}};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        const auto names = co_await (context.larkspur.queries().*m_query)(context.stop);
        if (!names) {
            context.terminal.error(names.error());
            co_return statusFor(names.error());
        }
        QStringList sorted(names->cbegin(), names->cend());
        sorted.sort();
        if (arguments.wantsJson())
            context.terminal.json(QJsonArray::fromStringList(sorted));
        else
            for (const QString &name : sorted)
                context.terminal.line(name);
        co_return ExitStatus::Done;
    }

  private:
    QString m_name;
    QString m_summary;
    Query m_query;
};

} // namespace

std::unique_ptr<Command> makeListCommand() {
    return std::make_unique<ListCommand>();
}

std::unique_ptr<Command> makeOutdatedCommand() {
    return std::make_unique<OutdatedCommand>();
}

std::unique_ptr<Command> makeLeavesCommand() {
    return std::make_unique<NamesCommand>(QStringLiteral("leaves"),
                                          QStringLiteral("Lists the formulae that no other one needs."),
                                          &InventoryQueries::leaves);
}

std::unique_ptr<Command> makePinnedCommand() {
    return std::make_unique<NamesCommand>(
        QStringLiteral("pinned"), QStringLiteral("Lists the packages that are held at their version."),
        &InventoryQueries::pinned);
}

} // namespace larkspur::cli
