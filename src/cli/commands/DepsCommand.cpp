#include "app/Larkspur.h"
#include "cli/commands/Commands.h"
#include "inventory/state/DependencyGraph.h"

namespace larkspur::cli {

namespace {

void printBranches(const Terminal &terminal, const DependencyNode &node, const QString &indent) {
    for (qsizetype i = 0; i < node.children.size(); ++i) {
        const DependencyNode &child = node.children[i];
        const bool isLast = i + 1 == node.children.size();
        terminal.line(indent + (isLast ? QStringLiteral("└── ") : QStringLiteral("├── ")) + child.formula.id +
                      (child.isRepeat ? QStringLiteral(" (see above)") : QString()));
        printBranches(terminal, child, indent + (isLast ? QStringLiteral("    ") : QStringLiteral("│   ")));
    }
}

QJsonObject nodeJson(const DependencyNode &node) {
    QJsonArray children;
    for (const DependencyNode &child : node.children)
        children.append(nodeJson(child));
    QJsonObject json{{QStringLiteral("id"), node.formula.id},
                     {QStringLiteral("name"), node.formula.name},
                     {QStringLiteral("children"), children}};
    if (node.isRepeat)
        json.insert(QStringLiteral("repeated"), true);
    return json;
}

class DepsCommand final : public Command {
  public:
    CommandShape shape() const override {
        return {.name = QStringLiteral("deps"),
                .synopsis = QStringLiteral("NAME [--json]"),
                .summary = QStringLiteral("Shows what a formula needs, as a tree, and who needs it."),
                .details =
                    QStringLiteral("What a formula of the tree needs is shown where it comes first. Further "
                                   "on it is marked\n\"(see above)\"; with --json its children are empty "
                                   "and \"repeated\" is true."),
                .options = {QStringLiteral("--json")},
                .fewestNames = 1,
                .mostNames = 1};
    }

    Task<ExitStatus> run(CommandContext context, CommandArguments arguments) override {
        const QString name = arguments.names.first();
        auto installedQuery = context.larkspur.queries().installedFormulae(context.stop);
        auto detailsQuery = context.larkspur.queries().formulaDetails(name, context.stop);
        const auto installed = co_await installedQuery;
        const auto formula = co_await detailsQuery;
        if (!installed || !formula) {
            const BrewError failure = installed ? formula.error() : installed.error();
            context.terminal.error(failure);
            co_return statusFor(failure);
        }
        const DependencyGraph graph(*installed);
        const DependencyNode tree = graph.tree(*formula);
        const QStringList dependents = graph.dependents(formula->name);
        if (arguments.wantsJson()) {
            context.terminal.json({{QStringLiteral("tree"), nodeJson(tree)},
                                   {QStringLiteral("dependents"), QJsonArray::fromStringList(dependents)}});
            co_return ExitStatus::Done;
        }
        context.terminal.line(tree.formula.id);
        printBranches(context.terminal, tree, {});
        if (!dependents.isEmpty())
            context.terminal.line(QStringLiteral("\nNeeded by ") + dependents.join(QStringLiteral(", ")));
        co_return ExitStatus::Done;
    }
};

} // namespace

std::unique_ptr<Command> makeDepsCommand() {
    return std::make_unique<DepsCommand>();
}

} // namespace larkspur::cli
