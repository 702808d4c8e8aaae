#include "operations/package/PackageRun.h"

#include "core/async/Worker.h"
#include "core/authorization/PasswordFailure.h"
#include "core/authorization/SudoAuth.h"
#include "operations/PackageCommands.h"
#include "operations/installed/InstalledPackages.h"
#include "operations/oclp/CopyXattrsStub.h"
#include "operations/package/AdministratorTexts.h"
#include "operations/package/ForcedRetry.h"
#include "operations/package/MovedAside.h"

namespace larkspur {

PackageRun::PackageRun(Setting setting, OperationRequest request, PackageTarget package)
    : m_setting(std::move(setting))
    , m_request(std::move(request))
    , m_package(std::move(package))
    , m_arguments(brewArguments(m_request, m_package)) {}

Task<Result<PackageEnd>> PackageRun::run() {
    std::optional<Password> password;
    for (;;) {
        const bool hadPassword = password.has_value();
        const auto run = co_await attempt(std::exchange(password, std::nullopt));
        if (!run)
            co_return std::unexpected(run.error());
        const Judgement judgement = co_await runInWorker([done = *run] { return judge(done); });
        if (const auto end = endOf(*run, judgement, hadPassword))
            co_return PackageEnd(*end);
        if (!judgement.wantsPassword)
            continue; // with force
        password = co_await askForPassword();
        if (!password && m_setting.context.stop.stop_requested())
            co_return std::unexpected(BrewError::stopped());
        if (!password) {
            say(cancelledLine(m_request, m_package));
            co_return PackageEnd::Cancelled;
        }
    }
}

PackageRun::Judgement PackageRun::judge(const BrewRun &run) {
    if (run.succeeded())
        return {.outcome = outcomeOf(run.lines)};
    return {.wantsPassword = showsPasswordFailure(run.text())};
}

/// The end that a run has come to; nothing if the command is to be run again.
std::optional<PackageEnd> PackageRun::endOf(const BrewRun &run, Judgement judgement, bool hadPassword) {
    if (run.succeeded()) {
        m_hasWarnings = judgement.outcome == OperationOutcome::CompletedWithWarnings;
        return judgement.outcome == OperationOutcome::Failed ? PackageEnd::Failed : PackageEnd::Done;
    }
    if (!judgement.wantsPassword)
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
    const QStringList applications = m_package.isCask && !m_setting.prefix.isEmpty()
                                         ? applicationsOf(m_setting.prefix, m_package.name)
                                         : QStringList();
    const auto retry = forcedRetryFor(m_request, m_package, run.lines, applications);
    if (!retry)
        return false;
    say(retry->announcement);
    m_arguments = retry->arguments;
    m_isForced = true;
    return true;
}

Task<std::optional<Password>> PackageRun::askForPassword() {
    if (!m_setting.context.sudoAuth)
        co_return std::nullopt;
    co_return co_await m_setting.context.sudoAuth->requestPassword(passwordReason(m_request, m_package),
                                                                   m_setting.context.stop);
}

Task<Result<BrewRun>> PackageRun::attempt(std::optional<Password> password) {
    BrewCommand command{.arguments = m_arguments, .password = std::move(password)};
    const bool isCaskUpgrade = m_package.isCask && m_request.kind == OperationKind::Upgrade;
    std::optional<CopyXattrsStub> stub;
    if (isCaskUpgrade && m_request.reinstallsCasks && !m_setting.prefix.isEmpty())
        stub.emplace(m_setting.prefix, *m_setting.logger);
    if (m_package.isCask && m_arguments.first() == QLatin1String("reinstall"))
        co_return co_await attemptReinstallation(std::move(command));
    co_return co_await stream(std::move(command));
}

/// Homebrew removes the application before it installs it again, and keeps nothing if that fails.
Task<Result<BrewRun>> PackageRun::attemptReinstallation(BrewCommand command) {
    const auto aside = std::make_shared<MovedAside>(
        m_setting.prefix.isEmpty() ? QStringList() : applicationsOf(m_setting.prefix, m_package.name),
        m_setting.noteFile, *m_setting.logger);
    auto run = co_await stream(std::move(command));
    if (run && run->succeeded())
        co_await runInWorker([aside] {
            aside->discard();
            return true;
        });
    for (const QString &application : aside->putBack())
        say(QStringLiteral("==> Put %1 back as it was before.").arg(application));
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
