#include "core/brew/BrewService.h"

#include "core/brew/BrewPathResolver.h"
#include "core/log/Logger.h"
#include "core/output/Colours.h"
#include "core/process/ShellExecutor.h"

#include <memory>

namespace larkspur {

namespace {

/// Passes an output on without colours and remembers whether it named a failure.
struct StreamWatch {
    OutputSinkPtr sink;
    bool failureNamed = false;

    void take(OutputChange change) {
        for (QString &line : change.lines) {
            line = withoutColours(std::move(line));
            failureNamed = failureNamed || namesFailure(line);
        }
        if (sink)
            sink->receive(change);
    }
};

} // namespace

bool namesFailure(const QString &line) {
    return line.contains(QLatin1String("error:"), Qt::CaseInsensitive) ||
           line.contains(QLatin1String("fatal:"), Qt::CaseInsensitive);
}

BrewService::BrewService(ShellExecutor &shell, BrewPathResolver &pathResolver, Logger &logger,
                         std::chrono::milliseconds queryLimit)
    : m_shell(shell)
    , m_pathResolver(pathResolver)
    , m_logger(logger)
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
    shape.program = *path;
    shape.arguments = command.arguments;
    shape.environment = command.environment;
    shape.suppressAutoUpdate = command.suppressAutoUpdate;
    shape.stop = command.stop;
    ShellResult result = co_await m_shell.run(std::move(shape));
    if (result.end == ProcessEnd::Exited || result.end == ProcessEnd::Crashed)
        co_return result;
    co_return std::unexpected(result.verdict().error());
}

Task<Result<BrewSession>> BrewService::beginOperation(OperationContext context) {
    if (isBrewOperationRunning() && context.output)
        context.output->addLine(QStringLiteral("==> Waiting for another Homebrew operation to finish…"));
    auto permit = co_await m_operationLock.acquire(context.stop);
    if (!permit)
        co_return std::unexpected(BrewError::stopped());
    co_return BrewSession(this, std::move(*permit));
}

Task<Result<ShellResult>> BrewSession::stream(BrewCommand command, OperationContext context, Style style) {
    const auto watch = std::make_shared<StreamWatch>(context.output);
    ShellCommand shape;
    shape.mode = style == Style::Terminal && context.wantsRedraws ? RunMode::Terminal : RunMode::Stream;
    shape.onOutput = [watch](const OutputChange &change) { watch->take(change); };
    shape.onSilence = context.onSilence;
    command.stop = context.stop;
    Result<ShellResult> result = co_await m_service->run(std::move(command), std::move(shape));
    if (result && result->exitCode != 0 && !watch->failureNamed && context.output)
        context.output->addLine(
            QStringLiteral("==> Error: Homebrew ended with status %1 without naming a reason.")
                .arg(result->exitCode));
    co_return result;
}

Task<Result<ShellResult>> BrewSession::execute(BrewCommand command) {
    co_return co_await m_service->execute(std::move(command));
}

} // namespace larkspur
