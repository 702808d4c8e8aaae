#pragma once

#include "core/async/Task.h"
#include "core/authorization/Password.h"
#include "core/brew/BrewArguments.h"
#include "core/brew/OperationContext.h"
#include "core/errors/Result.h"
#include "core/lock/OperationLock.h"
#include "core/process/ShellCommand.h"
#include "core/process/ShellResult.h"

#include <QObject>

namespace larkspur {

class AskpassFiles;
class BrewPathResolver;
class ShellExecutor;

/// One brew command line.
struct BrewCommand {
    BrewArguments arguments;
    EnvironmentMap environment = {};
    bool suppressAutoUpdate = false;
    StopToken stop = {};
    /// For the sudo that brew may run; handed over for this one command only.
    std::optional<Password> password = std::nullopt;
};

/// How a command whose output was streamed has ended.
struct BrewRun {
    int exitCode = 0;
    QStringList lines; ///< its output without colours; the middle of a very long one is left out

    bool succeeded() const { return exitCode == 0; }
    QString text() const { return lines.join(QLatin1Char('\n')); }
};

class BrewService;

/// One operation's hold of the operation lock, retries included. Lets go of the lock when destroyed.
class BrewSession {
  public:
    /// Whether the command runs on a terminal, where today's Homebrew shows how far its downloads are.
    enum class Style { Plain, Terminal };

    /// Runs brew with its output streamed to the context's sink, colours removed. A command that fails
    /// without naming a reason gets one more line that says so, so that the output alone tells the outcome.
    Task<Result<BrewRun>> stream(BrewCommand command, OperationContext context, Style style);

    /// The same for a query that belongs to the operation: its output is not shown.
    Task<Result<ShellResult>> execute(BrewCommand command);

    /// What a child must keep open to hold the lock beyond the program's own end: whatever still changes
    /// files then must be over before anybody else begins.
    int lockDescriptor() const { return m_lock.descriptor(); }

  private:
    friend class BrewService;
    BrewSession(BrewService *service, OperationLock::Permit lock)
        : m_service(service)
        , m_lock(std::move(lock)) {}

    BrewService *m_service; ///< outlives every session
    OperationLock::Permit m_lock;
};

/// The only road to Homebrew: runs its queries side by side and its operations one after another.
class BrewService : public QObject {
    Q_OBJECT
  public:
    /// A query that has printed nothing for this long is ended and fails with a timeout.
    static constexpr std::chrono::milliseconds defaultQueryLimit{120'000};

    BrewService(ShellExecutor &shell, BrewPathResolver &pathResolver, OperationLock &lock,
                const AskpassFiles &askpass, std::chrono::milliseconds queryLimit = defaultQueryLimit);

    /// Runs brew to completion, beside whatever else runs. A non-zero status is a result, not an error;
    /// errors are: no brew, stopped, timed out, not startable.
    Task<Result<ShellResult>> execute(BrewCommand command);

    /// Waits for the operation lock; while another operation holds it, the output says so. The lock is held
    /// until the session is destroyed. Fails if stop is requested first or the lock cannot be taken at all.
    Task<Result<BrewSession>> beginOperation(OperationContext context);

    OperationLock::Others othersOperating() const { return m_lock.others(); }

    bool isBrewOperationRunning() const { return m_lock.isHeld(); }

  private:
    friend class BrewSession;
    Task<Result<ShellResult>> run(BrewCommand command, ShellCommand shape);

    ShellExecutor &m_shell;
    BrewPathResolver &m_pathResolver;
    OperationLock &m_lock;
    const AskpassFiles &m_askpass;
    std::chrono::milliseconds m_queryLimit;
};

/// True if the output names a reason for a failure: a line with "error:" or "fatal:", in any case.
bool namesFailure(const QString &line);
/// The lines that name a reason, or all where none does.
QString failureText(const QStringList &lines);

} // namespace larkspur
