#include "app/Larkspur.h"
#include "cli/commands/Commands.h"

#include <QLocale>

#include <algorithm>

namespace larkspur::cli {

namespace {

class SizesCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("sizes"),
                .synopsis = QStringLiteral("[--json]"),
                .summary = QStringLiteral("Measures how much disk space each installed package takes."),
                .options = {QStringLiteral("--json")}};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        Larkspur &larkspur = context.larkspur;
        auto formulaQuery = larkspur.queries().installedFormulae(context.stop);
        auto caskQuery = larkspur.queries().installedCasks(context.stop);
        const auto formulae = co_await formulaQuery;
        const auto casks = co_await caskQuery;
        if (!formulae || !casks) {
            const BrewError failure = formulae ? casks.error() : formulae.error();
            context.terminal.error(failure);
            co_return statusFor(failure);
        }
        larkspur.inventory().update([&](Inventory &inventory) {
            inventory.installedFormulae = *formulae;
            inventory.installedCasks = *casks;
        });
        co_await larkspur.packageSizes().measure(context.stop);
        const auto &sizes = larkspur.inventory().value().packageInstalledSizes;
        if (sizes.isEmpty() && !(formulae->isEmpty() && casks->isEmpty())) {
            context.terminal.error(QStringLiteral("The sizes could not be measured."));
            co_return ExitStatus::Failed;
        }
        print(context.terminal, sizes, arguments.wantsJson());
        co_return ExitStatus::Done;
    }

  private:
    static void print(const Terminal &terminal, const QHash<PackageId, qint64> &sizes, bool asJson) {
        QList<std::pair<qint64, PackageId>> sorted;
        for (auto entry = sizes.cbegin(); entry != sizes.cend(); ++entry)
            sorted.append({entry.value(), entry.key()});
        std::ranges::sort(sorted, [](const auto &left, const auto &right) {
            return left.first != right.first ? left.first > right.first
                                             : left.second.name < right.second.name;
        });
        if (asJson) {
            QJsonArray array;
            for (const auto &[bytes, id] : sorted)
                array.append(QJsonObject{{QStringLiteral("name"), id.name},
                                         {QStringLiteral("isCask"), id.isCask},
                                         {QStringLiteral("bytes"), bytes}});
            terminal.json(array);
            return;
        }
        QList<QStringList> rows;
        for (const auto &[bytes, id] : sorted)
            rows.append({QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeSIFormat).rightJustified(10),
                         id.isCask ? id.name + QStringLiteral(" (cask)") : id.name});
        terminal.table(rows);
    }
};

} // namespace

std::unique_ptr<Command> makeSizesCommand() {
    return std::make_unique<SizesCommand>();
}

} // namespace larkspur::cli
