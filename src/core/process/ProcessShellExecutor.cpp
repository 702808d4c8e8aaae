#include "core/process/ProcessShellExecutor.h"

#include "core/log/Logger.h"
#include "core/process/ChildProcess.h"
#include "core/settings/Preferences.h"

#include <QDir>
#include <QElapsedTimer>

namespace larkspur {

using namespace std::chrono_literals;

namespace {

constexpr auto loginShellLimit = 10s;
constexpr qsizetype loggedErrorLength = 500;

QString spawnFailurePrefix(RunMode mode) {
    switch (mode) {
    case RunMode::Stream:
        return QStringLiteral("shell spawn failed (stream): ");
    case RunMode::Terminal:
        return QStringLiteral("shell spawn failed (PTY): ");
    case RunMode::Capture:
        break;
    }
    return QStringLiteral("shell spawn failed: ");
}

QString shortenedErrors(const ShellResult &result) {
    QString errors = result.standardError().trimmed();
    if (errors.size() > loggedErrorLength)
        errors = errors.left(loggedErrorLength) + QStringLiteral("…");
    return errors.replace(QLatin1Char('\n'), QLatin1Char(' '));
}

} // namespace

ProcessShellExecutor::ProcessShellExecutor(Settings settings, Preferences &preferences,
                                           PseudoTerminal &terminal, const ProcessTable &processes,
                                           Logger &logger)
    : m_settings(std::move(settings))
    , m_preferences(preferences)
    , m_terminal(terminal)
    , m_processes(processes)
    , m_logger(logger) {}

Task<ShellResult> ProcessShellExecutor::run(ShellCommand command) {
    const ChildEnvironmentInputs inputs{
        .system = QProcessEnvironment::systemEnvironment(),
        .loginShell = co_await loginShellEnvironment(),
        .askpassScript = m_settings.askpassScript,
        .customCaskAppdir = m_preferences.string(keys::customCaskAppdir),
        .homeFolder = QDir::homePath(),
    };
    const QProcessEnvironment environment = childEnvironment(inputs, command);
    co_return co_await runChild(std::move(command), environment);
}

Task<EnvironmentMap> ProcessShellExecutor::loginShellEnvironment() {
    if (!m_settings.readLoginShell)
        co_return EnvironmentMap();
    if (!m_capture)
        m_capture = captureLoginShell();
    co_await *m_capture;
    co_return EnvironmentMap(m_loginShell); // a copy: QCoro moves out of what co_return names
}

Task<bool> ProcessShellExecutor::captureLoginShell() {
    ShellCommand command;
    command.program = qEnvironmentVariable("SHELL", QStringLiteral("/bin/zsh"));
    command.arguments = {QStringLiteral("-ilc"), QStringLiteral("env")};
    command.silenceLimit = loginShellLimit;
    // Without the program's own additions, which would come back as the person's.
    const ShellResult result =
        co_await runChild(std::move(command), QProcessEnvironment::systemEnvironment());
    if (result.succeeded())
        m_loginShell = homebrewVariables(result.standardOutput());
    co_return result.succeeded();
}

Task<ShellResult> ProcessShellExecutor::runChild(ShellCommand command, QProcessEnvironment environment) {
    const RunMode mode = command.mode;
    QElapsedTimer clock;
    clock.start();
    // Deleted later: the run's end is reported from inside the child's own signals.
    const std::unique_ptr<ChildProcess, QScopedPointerDeleteLater> child(
        new ChildProcess(command, environment, {m_terminal, m_processes, m_settings.grace}));
    QObject::connect(child.get(), &ChildProcess::noticed, child.get(),
                     [this](const QString &line) { m_logger.warn(line); });
    ShellResult result = co_await child->start();
    logEnd(result, mode, clock.elapsed());
    co_return result;
}

void ProcessShellExecutor::logEnd(const ShellResult &result, RunMode mode, qint64 milliseconds) {
    if (result.end == ProcessEnd::FailedToStart) {
        m_logger.error(spawnFailurePrefix(mode) + result.commandLine + QLatin1Char(' ') +
                       result.standardError());
        return;
    }
    QString line =
        QStringLiteral("shell exit=%1 duration=%2ms cmd=%3")
            .arg(QString::number(result.exitCode), QString::number(milliseconds), result.commandLine);
    if (result.exitCode != 0)
        if (const QString errors = shortenedErrors(result); !errors.isEmpty())
            line += QStringLiteral(" stderr=") + errors;
    m_logger.log(result.exitCode == 0 ? LogLevel::Info : LogLevel::Error, line);
}

} // namespace larkspur
