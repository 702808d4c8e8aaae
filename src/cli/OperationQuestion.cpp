#include "cli/OperationQuestion.h"

#include "app/Larkspur.h"
#include "cli/ControllingTerminal.h"

#include <algorithm>

namespace larkspur::cli {

namespace {

bool touchesPinned(const OperationRequest &request) {
    return request.kind == OperationKind::Upgrade &&
           std::ranges::any_of(request.packages, &PackageTarget::isPinned);
}

bool isYes(const QString &answer) {
    const QString word = answer.trimmed().toLower();
    return word == QLatin1String("y") || word == QLatin1String("yes");
}

} // namespace

Task<bool> mayProceed(CommandContext context, OperationRequest request, bool isAgreed) {
    if (isAgreed || !OperationPlanner::plans(request.kind))
        co_return true;
    const bool mustAsk = touchesPinned(request);
    const bool canAsk = context.terminal.isInteractive() && ControllingTerminal::exists();
    const bool isWanted = context.larkspur.preferences().boolean(keys::showOperationPlan, true);
    if (mustAsk && !canAsk) {
        context.terminal.error(QStringLiteral("a package is pinned; --yes upgrades it and pins it again"));
        co_return false;
    }
    if (!canAsk || (!isWanted && !mustAsk))
        co_return true;
    const OperationPlan plan = co_await context.larkspur.planner().plan(request, context.stop);
    context.terminal.line(request.title() + QLatin1Char(':'));
    for (const QString &line : describePlan(request, plan))
        context.terminal.line(QStringLiteral("  ") + line);
    const auto answer = co_await ControllingTerminal::readLine(QStringLiteral("Go on? [y/N] "),
                                                               ControllingTerminal::Echo::On, context.stop);
    co_return answer &&isYes(*answer);
}

} // namespace larkspur::cli
