#include "core/brew/BrewService.h"

#include "core/authorization/AskpassFiles.h"
#include "core/brew/BrewPathResolver.h"
#include "core/output/Colours.h"
#include "core/output/PhraseSet.h"
#include "core/output/Transcript.h"
#include "core/process/ShellExecutor.h"

#include <memory>

namespace larkspur {

namespace {

/// Passes an output on without colours, keeps it, and remembers whether it named a failure.
struct StreamWatch {
    OutputSinkPtr sink;
    Transcript kept = Transcript();
    bool failureNamed = false;

    void take(OutputChange change) {
        for (QString &line : change.lines) {
            line = withoutColours(std::move(line));
            failureNamed = failureNamed || namesFailure(line);
        }
        kept.apply(change);
        if (sink)
            sink->receive(change);
    }
};

} // namespace

bool namesFailure(const QString &line) {
    static const PhraseSet phrases{"error:", "fatal:"};
    return phrases.in(line) != 0;
}

QString failureText(const QStringList &lines) {
    QStringList reasons;
    for (const QString &line : lines)
        if (namesFailure(line))
            reasons.append(line.startsWith(QLatin1String("==> ")) ? line.mid(4) : line);
    reasons.removeDuplicates(); // a retry often fails for the same one
    return (reasons.isEmpty() ? lines : reasons).join(QLatin1Char('\n'));
}

BrewService::BrewService(ShellExecutor &shell, BrewPathResolver &pathResolver, OperationLock &lock,
                         const AskpassFiles &askpass, std::chrono::milliseconds queryLimit)
    : m_shell(shell)
    , m_pathResolver(pathResolver)
    , m_lock(lock)
    , m_askpass(askpass)
    , m_queryLimit(queryLimit) {}

Task<Result<ShellResult>> BrewService::execute(BrewCommand command) {
    ShellCommand shape;
    shape.mode = RunMode::Capture;
    shape.silenceLimit = m_queryLimit;
    co_return co_await run(std::move(command), std::move(shape));
}

Task<Result<ShellResult>> BrewService::run(BrewCommand command, ShellCommand shape) {
    const std::optional<QString> path = co_await m_pathResolver.resolve();
    if (!path)
        co_return std::unexpected(BrewError::brewNotInstalled());
    if (command.stop.stop_requested())
        co_return std::unexpected(BrewError::stopped()); // a child that is not started needs no killing
    shape.program = *path;
    shape.arguments = command.arguments.words();
    shape.environment = command.environment;
    shape.suppressAutoUpdate = command.suppressAutoUpdate;
    shape.stop = command.stop;
    shape.password = command.password;
    // Homebrew drops foreign variables before its sudo runs; as long as this child lives, the secret file
    // stands in for the one with the password.
    std::unique_ptr<AskpassFiles::Secret> secret;
    if (command.password) {
        auto kept = m_askpass.keepSecret(*command.password);
        if (!kept)
            co_return std::unexpected(BrewError::commandFailed(
                QStringLiteral("The password cannot be handed to sudo: ") + kept.error()));
        secret = std::move(*kept);
    }
    ShellResult result = co_await m_shell.run(std::move(shape));
    if (result.end == ProcessEnd::Exited || result.end == ProcessEnd::Crashed)
        co_return result;
    co_return std::unexpected(result.verdict().error());
}

Task<Result<BrewSession>> BrewService::beginOperation(OperationContext context) {
    const auto onWait = [output = context.output, told = false](const QStringList &orphans) mutable {
        if (!output)
            return;
        if (!std::exchange(told, true))
            output->addLine(QStringLiteral("==> Waiting for another Homebrew operation to finish…"));
        if (!orphans.isEmpty())
            output->addLine(
                QStringLiteral("==> Its Larkspur has ended, but what it started still runs: %1. Wait for it, "
                               "or end it yourself if it is not meant to go on.")
                    .arg(orphans.join(u", ")));
    };
    auto permit = co_await m_lock.acquire(context.stop, onWait);
    if (!permit)
        co_return std::unexpected(permit.error());
    co_return BrewSession(this, std::move(*permit));
}

Task<Result<BrewRun>> BrewSession::stream(BrewCommand command, OperationContext context, Style style) {
    const auto watch = std::make_shared<StreamWatch>(context.output);
    ShellCommand shape;
    shape.mode = style == Style::Terminal && context.wantsRedraws ? RunMode::Terminal : RunMode::Stream;
    shape.onOutput = [watch](const OutputChange &change) { watch->take(change); };
    shape.onSilence = context.onSilence;
    shape.silenceLimit = context.silenceLimit;
    shape.keptOpen = lockDescriptor();
    command.stop = context.stop;
    const Result<ShellResult> result = co_await m_service->run(std::move(command), std::move(shape));
    if (!result)
        co_return std::unexpected(result.error());
    if (result->exitCode != 0 && !watch->failureNamed)
        watch->take(OutputChange::line(
            QStringLiteral("==> Error: Homebrew ended with status %1 without naming a reason.")
                .arg(result->exitCode)));
    co_return BrewRun{result->exitCode, watch->kept.lines()};
}

Task<Result<ShellResult>> BrewSession::execute(BrewCommand command) {
    co_return co_await m_service->execute(std::move(command));
}

} // namespace larkspur
