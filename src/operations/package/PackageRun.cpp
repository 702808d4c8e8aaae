#include "operations/package/PackageRun.h"

#include "core/async/Worker.h"
#include "core/authorization/PasswordFailure.h"
#include "core/authorization/SudoAuth.h"
#include "operations/PackageCommands.h"
#include "operations/casks/CaskApplications.h"
#include "operations/oclp/CopyXattrsStub.h"
#include "operations/package/AdministratorTexts.h"
#include "operations/package/ForcedRetry.h"

#include <algorithm>

namespace larkspur {

PackageRun::PackageRun(Setting setting, OperationRequest request, PackageTarget package)
    : m_setting(std::move(setting))
    , m_request(std::move(request))
    , m_package(std::move(package))
    , m_arguments(brewArguments(m_request, m_package)) {}

Task<Result<PackageResult>> PackageRun::run() {
    if (m_arguments.isEmpty())
        co_return std::unexpected(BrewError::packageNotFound(m_package.name));
    std::optional<Password> password;
    for (;;) {
        const bool hadPassword = password.has_value();
        const auto run = co_await attempt(std::exchange(password, std::nullopt));
        if (!run)
            co_return std::unexpected(run.error());
        const Judgement judgement = co_await runInWorker([done = *run] { return judge(done); });
        m_hasWarnings = m_hasWarnings || judgement.hasWarnings;
        if (const auto end = endOf(*run, judgement, hadPassword))
            co_return PackageResult{m_package, *end, *end == PackageEnd::Done ? QStringList() : run->lines};
        if (!judgement.passwordFailure)
            continue; // with force
        password = co_await askForPassword(*judgement.passwordFailure);
        if (!password && m_setting.context.stop.stop_requested())
            co_return std::unexpected(BrewError::stopped());
        if (!password) {
            say(cancelledLine(m_request, m_package, m_rejectedPasswords > 0));
            co_return PackageResult{m_package, PackageEnd::Cancelled, {}};
        }
    }
}

PackageRun::Judgement PackageRun::judge(const BrewRun &run) {
    if (run.succeeded())
        return {.outcome = outcomeOf(run.lines), .hasWarnings = hasWarnings(run.lines)};
    const auto failure = std::ranges::find_if(run.lines, &showsPasswordFailure);
    return {.hasWarnings = hasWarnings(run.lines),
            .passwordFailure = failure != run.lines.end() ? std::optional(*failure) : std::nullopt};
}

/// The end that a run has come to; nothing if the command is to be run again.
std::optional<PackageEnd> PackageRun::endOf(const BrewRun &run, const Judgement &judgement,
                                            bool hadPassword) {
    if (run.succeeded()) {
        if (judgement.outcome == OperationOutcome::Failed)
            return PackageEnd::Failed;
        return m_hasWarnings ? PackageEnd::DoneWithWarnings : PackageEnd::Done;
    }
    if (!judgement.passwordFailure)
        return forceNext(run) ? std::nullopt : std::optional(PackageEnd::Failed);
    if (!hadPassword) {
        say(QStringLiteral("==> This step needs administrator privileges. Retrying with your password…"));
    } else if (++m_rejectedPasswords < passwordLimit) {
        say(QStringLiteral("==> That password didn't work. Retrying…"));
    } else {
        say(QStringLiteral("==> Error: sudo has rejected %1 passwords. The operation may be incomplete.")
                .arg(passwordLimit));
        return PackageEnd::Failed;
    }
    return std::nullopt;
}

bool PackageRun::forceNext(const BrewRun &run) {
    if (m_isForced)
        return false;
    const auto token = PackageName::parse(m_package.name);
    CaskSetting setting = m_setting.casks;
    setting.prefix = m_setting.prefix;
    const QStringList places = m_package.isCask && token && !setting.prefix.isEmpty()
                                   ? caskApplicationPlaces(*token, setting).value_or(QStringList())
                                   : QStringList();
    const auto retry = forcedRetryFor(m_request, m_package, run.lines, places);
    if (!retry)
        return false;
    say(retry->announcement);
    m_arguments = retry->arguments;
    m_isForced = true;
    return true;
}

Task<std::optional<Password>> PackageRun::askForPassword(QString trigger) {
    if (!m_setting.context.sudoAuth)
        co_return std::nullopt;
    co_return co_await m_setting.context.sudoAuth->requestPassword(
        passwordRequest(m_request, m_package, m_arguments.words(), std::move(trigger)),
        m_setting.context.stop);
}

Task<Result<BrewRun>> PackageRun::attempt(std::optional<Password> password) {
    BrewCommand command{.arguments = m_arguments, .password = std::move(password)};
    const bool isCaskUpgrade = m_package.isCask && m_request.kind == OperationKind::Upgrade;
    std::optional<CopyXattrsStub> stub;
    if (isCaskUpgrade && m_request.reinstallsCasks && !m_setting.prefix.isEmpty())
        stub.emplace(m_setting.prefix, *m_setting.logger);
    if (m_package.isCask && m_arguments.subcommand() == QLatin1String("reinstall"))
        co_return co_await attemptReinstallation(std::move(command));
    co_return co_await stream(std::move(command));
}

/// Homebrew removes the application before it installs it again, and keeps nothing if that fails.
Task<Result<BrewRun>> PackageRun::attemptReinstallation(BrewCommand command) {
    const auto token = PackageName::parse(m_package.name);
    if (!token || m_setting.prefix.isEmpty())
        co_return co_await stream(std::move(command));
    CaskSetting setting = m_setting.casks;
    setting.prefix = m_setting.prefix;
    struct Begun { // boxed: libstdc++ 12 cannot compare a task of such a value
        std::expected<std::unique_ptr<MovedAside>, QString> aside;
    };
    auto [begun] =
        co_await runInWorker([setting, token] { return Begun{MovedAside::begin(setting, *token)}; });
    if (!begun) {
        // Homebrew would remove the application, and nobody could bring it back.
        say(QStringLiteral("==> Error: %1 cannot be protected, so it is not reinstalled: %2")
                .arg(m_package.name, begun.error()));
        co_return BrewRun{.exitCode = 1, .lines = {}};
    }
    const std::shared_ptr<MovedAside> aside = std::move(*begun);
    for (const QString &warning : aside->warnings())
        say(warning);
    auto run = co_await stream(std::move(command));
    const bool isReported = run && run->succeeded();
    const auto end = co_await runInWorker([aside, isReported] {
        return isReported ? aside->conclude()
                          : MovedAside::Conclusion{.lines = aside->putBack(), .errors = {}};
    });
    for (const QString &line : end.errors + end.lines)
        say(line);
    if (!end.errors.isEmpty()) {
        run->exitCode = 1; // whatever it said
        run->lines += end.errors;
    }
    co_return run;
}

Task<Result<BrewRun>> PackageRun::stream(BrewCommand command) {
    co_return co_await m_setting.session->stream(std::move(command), m_setting.context,
                                                 streamStyle(m_request.kind));
}

void PackageRun::say(const QString &line) const {
    if (!m_setting.context.output)
        return;
    m_setting.context.output->addLine({});
    m_setting.context.output->addLine(line);
}

} // namespace larkspur
