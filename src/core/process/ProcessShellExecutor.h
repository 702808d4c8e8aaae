#pragma once

#include "core/process/ChildEnvironment.h"
#include "core/process/ProcessTable.h"
#include "core/process/PseudoTerminal.h"
#include "core/process/ShellExecutor.h"

namespace larkspur {

class Logger;
class Preferences;

/// Runs real child processes and logs the end of each.
class ProcessShellExecutor final : public ShellExecutor {
  public:
    struct Settings {
        QString askpassScript;
        bool readLoginShell = true;
        /// Time that a stopped child gets between SIGTERM and SIGKILL.
        std::chrono::milliseconds grace{10'000};
    };

    ProcessShellExecutor(Settings settings, Preferences &preferences, PseudoTerminal &terminal,
                         const ProcessTable &processes, Logger &logger);

    Task<ShellResult> run(ShellCommand command) override;

    /// The person's own HOMEBREW_ variables, asked from the login shell once; empty if that fails.
    Task<EnvironmentMap> loginShellEnvironment();

  private:
    Task<ShellResult> runChild(ShellCommand command, QProcessEnvironment environment);
    Task<bool> captureLoginShell();
    void logEnd(const ShellResult &result, RunMode mode, qint64 milliseconds);

    Settings m_settings;
    Preferences &m_preferences;
    PseudoTerminal &m_terminal;
    const ProcessTable &m_processes;
    Logger &m_logger;
    std::optional<Task<bool>> m_capture;
    EnvironmentMap m_loginShell;
};

} // namespace larkspur
