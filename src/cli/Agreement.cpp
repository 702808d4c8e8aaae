#include "cli/Agreement.h"

#include "cli/ControllingTerminal.h"

namespace larkspur::cli {

Task<bool> agrees(CommandContext context, QString question, bool isAgreed, WithoutTerminal otherwise) {
    if (isAgreed)
        co_return true;
    if (!context.terminal.isInteractive() || !ControllingTerminal::exists()) {
        if (otherwise == WithoutTerminal::Refuse)
            context.terminal.error(
                QStringLiteral("this cannot be undone, and nobody can be asked here; --yes does it"));
        co_return otherwise == WithoutTerminal::GoOn;
    }
    const auto answer = co_await ControllingTerminal::readLine(question + QStringLiteral(" [y/N] "),
                                                               ControllingTerminal::Echo::On, context.stop);
    const QString word = answer.value_or(QString()).trimmed().toLower();
    co_return word == QLatin1String("y") || word == QLatin1String("yes");
}

} // namespace larkspur::cli
