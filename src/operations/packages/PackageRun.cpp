#include "operations/packages/PackageRun.h"

#include "core/async/Worker.h"
#include "core/authorization/SudoAuth.h"
#include "operations/casks/CaskApplications.h"
#include "operations/oclp/CopyXattrsStub.h"

#include <algorithm>

namespace larkspur {

PackageRun::PackageRun(LockedWork work, CaskSetting casks, const PackageCommand &command,
                       PackageTarget package)
    : m_work(std::move(work))
    , m_casks(std::move(casks))
    , m_guard(m_casks)
    , m_command(command)
    , m_package(std::move(package))
    , m_arguments(m_command.arguments(m_package)) {}

PackageResult PackageRun::result(PackageEnd end, const QStringList &lines) const {
    return {m_package, end, m_command.deed(), lines};
}

Task<Result<PackageResult>> PackageRun::run() {
    if (m_arguments.isEmpty())
        co_return std::unexpected(BrewError::packageNotFound(m_package.name));
    auto done = co_await attemptAll();
    const auto end = co_await m_guard.conclude(done && done->isDone());
    for (const QString &line : end.errors + end.lines)
        announce(line);
    for (const QString &error : end.errors) {
        done->end = PackageEnd::Failed; // whatever it said
        done->lines.append(QStringLiteral("==> ") + error);
    }
    co_return Result<PackageResult>(std::move(done));
}

Task<Result<PackageResult>> PackageRun::attemptAll() {
    std::optional<Password> password;
    for (;;) {
        const auto run = co_await attempt(password);
        if (!run)
            co_return std::unexpected(run.error());
        const Judgement judgement = co_await runInWorker([done = *run] { return judge(done); });
        m_hasWarnings = m_hasWarnings || judgement.hasWarnings;
        if (const auto end = endOf(*run, judgement, password.has_value()))
            co_return result(*end, *end == PackageEnd::Done ? QStringList() : run->lines);
        if (!judgement.password)
            continue; // with force, which may need the same password
        password.reset();
        password = co_await askForPassword(*judgement.password);
        if (!password && m_work.isStopped())
            co_return std::unexpected(BrewError::stopped());
        if (!password) {
            const bool mayHaveChanged = m_rejectedPasswords > 0 || m_guard.hasBegun();
            announce(m_command.cancelledLine(m_package, mayHaveChanged));
            co_return result(PackageEnd::Cancelled, run->lines);
        }
    }
}

PackageRun::Judgement PackageRun::judge(const BrewRun &run) {
    if (run.succeeded())
        return {.outcome = outcomeOf(run.lines), .hasWarnings = hasWarnings(run.lines)};
    return {.hasWarnings = hasWarnings(run.lines), .password = passwordTrigger(run.lines)};
}

/// The end that a run has come to; nothing if the command is to be run again.
std::optional<PackageEnd> PackageRun::endOf(const BrewRun &run, const Judgement &judgement,
                                            bool hadPassword) {
    if (run.succeeded()) {
        if (judgement.outcome == OperationOutcome::Failed)
            return PackageEnd::Failed;
        return m_hasWarnings ? PackageEnd::DoneWithWarnings : PackageEnd::Done;
    }
    if (!judgement.password)
        return forceNext(run) ? std::nullopt : std::optional(PackageEnd::Failed);
    if (!hadPassword) {
        announce(QStringLiteral("This step needs administrator privileges. Retrying with your password…"));
    } else if (++m_rejectedPasswords < passwordLimit) {
        announce(QStringLiteral("That password didn't work. Retrying…"));
    } else {
        announce(QStringLiteral("Error: sudo has rejected %1 passwords. The operation may be incomplete.")
                     .arg(passwordLimit));
        return PackageEnd::Failed;
    }
    return std::nullopt;
}

bool PackageRun::forceNext(const BrewRun &run) {
    if (m_isForced)
        return false;
    const auto token = PackageName::parse(m_package.name);
    // What stands aside is not there either, but nobody has removed it.
    const QStringList places = m_package.isCask && token && !m_guard.hasBegun()
                                   ? caskApplicationPlaces(*token, m_casks).value_or(QStringList())
                                   : QStringList();
    const auto retry = m_command.retry(m_package, run.lines, places);
    if (!retry)
        return false;
    announce(retry->announcement);
    m_arguments = retry->arguments;
    m_isForced = true;
    return true;
}

Task<std::optional<Password>> PackageRun::askForPassword(PasswordTrigger trigger) {
    if (!m_work.context.sudoAuth)
        co_return std::nullopt;
    const QString name = trigger.package.isEmpty() ? m_package.name : trigger.package;
    co_return co_await m_work.context.sudoAuth->requestPassword(
        {.reason = m_command.passwordReason(m_package),
         .package = name,
         .command = QStringLiteral("brew ") + m_arguments.words().join(QLatin1Char(' ')),
         .trigger = trigger.line,
         .isUnusual = !m_command.expectsPassword(m_package, name)},
        m_work.context.stop);
}

Task<Result<BrewRun>> PackageRun::attempt(std::optional<Password> password) {
    BrewCommand command{
        .arguments = m_arguments, .environment = m_command.environment(), .password = std::move(password)};
    std::optional<CopyXattrsStub> stub;
    if (m_command.avoidsExtendedAttributes(m_package))
        stub.emplace(m_work.prefix, *m_work.logger);
    if (m_package.isCask && m_arguments.subcommand() == QLatin1String("reinstall"))
        co_return co_await attemptReinstallation(std::move(command));
    co_return co_await stream(std::move(command));
}

/// Homebrew removes the application before it installs it again, and keeps nothing if that fails.
Task<Result<BrewRun>> PackageRun::attemptReinstallation(BrewCommand command) {
    const auto token = PackageName::parse(m_package.name);
    if (!token)
        co_return co_await stream(std::move(command));
    const auto [lines, failure] = co_await m_guard.prepare(*token);
    for (const QString &line : lines)
        announce(line);
    if (failure.isEmpty())
        co_return co_await stream(std::move(command));
    // Homebrew would remove the application, and nobody could bring it back.
    announce(QStringLiteral("Error: %1 cannot be protected, so it is not reinstalled: %2")
                 .arg(m_package.name, failure));
    co_return BrewRun{.exitCode = 1, .lines = {}};
}

Task<Result<BrewRun>> PackageRun::stream(BrewCommand command) {
    co_return co_await m_work.session->stream(std::move(command), m_work.context, m_command.style());
}

void PackageRun::announce(const QString &line) const {
    if (m_work.context.output)
        m_work.context.output->addLine({});
    m_work.say(line);
}

} // namespace larkspur
