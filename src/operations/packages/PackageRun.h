#pragma once

#include "core/authorization/Password.h"
#include "operations/casks/ReinstallGuard.h"
#include "operations/packages/PackageCommand.h"
#include "operations/packages/PasswordTrigger.h"
#include "operations/run/LockedWork.h"

namespace larkspur {

/// The command of an operation for one of its packages, run again with the administrator password or with
/// force where its output calls for that. Lives until its task has ended.
class PackageRun {
  public:
    /// How many passwords that sudo rejects end the operation.
    static constexpr int passwordLimit = 5;

    /// `command` outlives it; `casks`: of the work's prefix.
    PackageRun(LockedWork work, CaskSetting casks, const PackageCommand &command, PackageTarget package);

    /// Fails if the name is none, brew could not be run or was stopped.
    Task<Result<PackageResult>> run();

  private:
    Task<Result<PackageResult>> attemptAll();
    Task<Result<BrewRun>> attempt(std::optional<Password> password);
    Task<Result<BrewRun>> attemptReinstallation(BrewCommand command);
    Task<Result<BrewRun>> stream(BrewCommand command);
    Task<std::optional<Password>> askForPassword(PasswordTrigger trigger);
    /// What the output of a run says; judged off the main thread, for it can be long.
    struct Judgement {
        OperationOutcome outcome = OperationOutcome::Failed;
        bool hasWarnings = false;
        std::optional<PasswordTrigger> password = std::nullopt; ///< it wants one
    };
    static Judgement judge(const BrewRun &run);
    std::optional<PackageEnd> endOf(const BrewRun &run, const Judgement &judgement, bool hadPassword);
    bool forceNext(const BrewRun &run);
    PackageResult result(PackageEnd end, const QStringList &lines = {}) const;
    /// Set off from Homebrew's own words by an empty line.
    void announce(const QString &line) const;

    LockedWork m_work;
    CaskSetting m_casks;
    ReinstallGuard m_guard;
    const PackageCommand &m_command;
    PackageTarget m_package;
    BrewArguments m_arguments;
    int m_rejectedPasswords = 0;
    bool m_isForced = false;
    bool m_hasWarnings = false; ///< in any of its runs
};

} // namespace larkspur
