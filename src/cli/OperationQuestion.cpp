#include "cli/OperationQuestion.h"

#include "app/Larkspur.h"
#include "cli/ControllingTerminal.h"

#include <algorithm>

namespace larkspur::cli {

namespace {

bool isYes(const QString &answer) {
    const QString word = answer.trimmed().toLower();
    return word == QLatin1String("y") || word == QLatin1String("yes");
}

} // namespace

Task<bool> mayProceed(CommandContext context, OperationPtr operation, bool isAgreed) {
    const auto question = operation->question();
    if (isAgreed || !question)
        co_return true;
    const bool canAsk = context.terminal.isInteractive() && ControllingTerminal::exists();
    if (!canAsk && !question->refusal.isEmpty()) {
        context.terminal.error(question->refusal);
        co_return false;
    }
    const bool isWanted = context.larkspur.preferences().boolean(keys::showOperationPlan, true);
    if (!canAsk || (!isWanted && !question->isMust))
        co_return true;
    const OperationPlan plan = co_await operation->plan(context.stop);
    operation->agree(plan);
    context.terminal.line(operation->title() + QLatin1Char(':'));
    for (const QString &line : describePlan(plan))
        context.terminal.line(QStringLiteral("  ") + line);
    const auto answer = co_await ControllingTerminal::readLine(QStringLiteral("Go on? [y/N] "),
                                                               ControllingTerminal::Echo::On, context.stop);
    co_return answer &&isYes(*answer);
}

} // namespace larkspur::cli
