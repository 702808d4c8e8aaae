#pragma once

#include "core/brew/BrewService.h"
#include "operations/OperationReport.h"
#include "operations/casks/MovedAside.h"
#include "operations/outcome/Verdict.h"

namespace larkspur {

class Logger;

/// The command of an operation for one of its packages, run again with the administrator password or with
/// force where its output calls for that. Lives until its task has ended.
class PackageRun {
  public:
    struct Setting {
        BrewSession *session;
        OperationContext context;
        QString prefix; ///< of Homebrew; empty where unknown
        CaskSetting casks;
        Logger *logger;
    };

    /// How many passwords that sudo rejects end the operation.
    static constexpr int passwordLimit = 5;

    PackageRun(Setting setting, OperationRequest request, PackageTarget package);

    /// Fails if the name is none, brew could not be run or was stopped.
    Task<Result<PackageResult>> run();

  private:
    Task<Result<BrewRun>> attempt(std::optional<Password> password);
    Task<Result<BrewRun>> attemptReinstallation(BrewCommand command);
    Task<Result<BrewRun>> stream(BrewCommand command);
    Task<std::optional<Password>> askForPassword(QString trigger);
    /// What the output of a run says; judged off the main thread, for it can be long.
    struct Judgement {
        OperationOutcome outcome = OperationOutcome::Failed;
        bool hasWarnings = false;
        std::optional<QString> passwordFailure = std::nullopt; ///< the line that shows it
    };
    static Judgement judge(const BrewRun &run);
    std::optional<PackageEnd> endOf(const BrewRun &run, const Judgement &judgement, bool hadPassword);
    bool forceNext(const BrewRun &run);
    void say(const QString &line) const;

    Setting m_setting;
    OperationRequest m_request;
    PackageTarget m_package;
    BrewArguments m_arguments;
    int m_rejectedPasswords = 0;
    bool m_isForced = false;
    bool m_hasWarnings = false; ///< in any of its runs
};

} // namespace larkspur
