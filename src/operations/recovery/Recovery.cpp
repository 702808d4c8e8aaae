#include "operations/recovery/Recovery.h"

#include "core/brew/BrewPathResolver.h"
#include "core/log/Logger.h"

#include <QFileInfo>

#include <algorithm>

namespace larkspur {

Recovery::Recovery(Parts parts, std::vector<std::unique_ptr<Leftover>> leftovers)
    : m_parts(parts)
    , m_leftovers(std::move(leftovers)) {}

/// Where the executable lies tells it without asking, unless somebody has linked to it.
Task<QString> Recovery::likelyPrefix() {
    const std::optional<QString> brew = co_await m_parts.resolver.resolve();
    co_return brew ? QFileInfo(QFileInfo(*brew).absolutePath()).absolutePath() : QString();
}

bool Recovery::hasWork(const QString &prefix) const {
    return std::ranges::any_of(m_leftovers, [&](const auto &leftover) { return leftover->exists(prefix); });
}

Task<Result<BrewSession>> Recovery::beginOperation(OperationContext context) {
    if (m_isPuttingRight && context.output)
        context.output->addLine(
            QStringLiteral("==> What an interrupted operation has left is put right first."));
    auto session = co_await m_parts.brew.beginOperation(context);
    if (!session)
        co_return std::unexpected(session.error());
    if (hasWork(co_await likelyPrefix()))
        co_await putRight(&*session, std::move(context));
    co_return std::move(*session);
}

Task<> Recovery::putRight(BrewSession *session, OperationContext context) {
    m_isPuttingRight = true;
    context = context.repairing();
    const auto answer = co_await session->execute(
        {.arguments = {"--prefix"}, .suppressAutoUpdate = true, .stop = context.stop});
    const bool isAnswer = answer && answer->succeeded();
    const LockedWork work{.session = session,
                          .context = std::move(context),
                          .prefix = isAnswer ? answer->standardOutput().trimmed() : co_await likelyPrefix(),
                          .logger = &m_parts.logger};
    if (work.context.output && std::ranges::any_of(m_leftovers, [&](const auto &leftover) {
            return leftover->concerns(work.prefix);
        }))
        work.context.output->addLine(
            QStringLiteral("==> Putting right what an interrupted operation has left…"));
    for (const auto &leftover : m_leftovers)
        if (!work.context.stop.stop_requested() && leftover->exists(work.prefix))
            co_await leftover->putRight(work);
    m_isPuttingRight = false;
}

Task<> Recovery::run(StopToken stop, OutputSinkPtr output, Patience patience) {
    OperationContext context;
    context.output = std::move(output);
    context.stop = stop;
    context.insist = stop; // nobody has asked for it: whoever wants the program to end is not kept waiting
    if (!hasWork(co_await likelyPrefix()))
        co_return;
    const auto others =
        patience == Patience::Leaves ? m_parts.brew.othersOperating() : OperationLock::Others();
    if (context.output && !others.orphans.isEmpty())
        context.output->addLine(
            QStringLiteral("==> Warning: An operation was interrupted, and what it started still runs: %1. "
                           "What it leaves is put right once that has ended.")
                .arg(others.orphans.join(u", ")));
    if (others.areThere)
        co_return;
    const auto done = co_await beginOperation(context);
    if (!done && done.error().kind != BrewError::Kind::Stopped)
        m_parts.logger.error(QStringLiteral("[Larkspur] Recovery: ") + done.error().description());
    if (context.output && !done)
        context.output->addLine(
            QStringLiteral("==> Warning: What an interrupted operation has left is not put right yet: ") +
            done.error().description());
    else if (context.output && stop.stop_requested())
        context.output->addLine(QStringLiteral(
            "==> Warning: Stopped. What is not put right yet is put right before the next operation."));
}

} // namespace larkspur
