#include "operations/packages/PackageOperation.h"

#include "core/async/Worker.h"
#include "operations/packages/PackageRun.h"
#include "operations/packages/TerminalCommand.h"
#include "operations/recovery/LostLinks.h"

#include <algorithm>

namespace larkspur {

namespace {

Task<std::expected<InstalledPackages, QString>> installedAt(QString prefix) {
    co_return co_await runInWorker([prefix = std::move(prefix)] { return InstalledPackages::at(prefix); });
}

void sayLine(const LockedWork &work, const QString &line) {
    if (work.context.output && !line.isEmpty())
        work.context.output->addLine(line);
}

/// The result of a batch, package by package where they differ.
void sayBatchResult(const LockedWork &work, const OperationReport &report) {
    QStringList failed;
    for (const PackageResult &result : report.packages)
        if (!result.isDone())
            failed.append(result.package.name);
    const auto total = report.packages.size();
    if (failed.isEmpty())
        work.say(QStringLiteral("All %1 packages are done.").arg(total));
    else
        work.say(QStringLiteral("%1 of %2 packages are done. Not done: %3")
                     .arg(total - failed.size())
                     .arg(total)
                     .arg(failed.join(QStringLiteral(", "))));
}

} // namespace

PackageOperation::PackageOperation(const PackageServices &services, std::unique_ptr<PackageCommand> command,
                                   QList<PackageTarget> packages)
    : m_services(services)
    , m_command(std::move(command))
    , m_packages(std::move(packages)) {}

QString PackageOperation::title() const {
    if (m_packages.size() == 1)
        return m_command->verb() + QLatin1Char(' ') + m_packages.first().name;
    return QStringLiteral("%1 %2 packages").arg(m_command->verb()).arg(m_packages.size());
}

QString PackageOperation::terminalCommand() const {
    return larkspur::terminalCommand(*m_command, m_packages);
}

std::optional<OperationReport> PackageOperation::endWithoutLock(const OutputSinkPtr &) const {
    const auto refused = std::ranges::find_if_not(m_packages, [](const PackageTarget &package) {
        return PackageName::parse(package.name).has_value();
    });
    if (refused == m_packages.end())
        return std::nullopt;
    return OperationReport{.failure = BrewError::packageNotFound(refused->name)};
}

QStringList PackageOperation::casksAtRisk(const InstalledPackages &) const {
    QStringList tokens;
    for (const PackageTarget &package : m_packages)
        if (m_command->replacesApplication(package))
            tokens.append(package.name);
    return tokens;
}

Task<Result<bool>> PackageOperation::prepare(LockedWork) {
    co_return true;
}

Task<QList<PackageTarget>> PackageOperation::order(QList<PackageTarget> packages, StopToken) const {
    co_return QList<PackageTarget>(packages);
}

Task<> PackageOperation::conclude(LockedWork, const InstalledPackages *, const InstalledPackages *,
                                  OperationReport *) {
    co_return;
}

Task<OperationReport> PackageOperation::perform(LockedWork work) {
    OperationReport report;
    co_await look(work, &report);
    m_before = m_installed;
    std::optional<LostLinks> links;
    if (m_command->mayLoseLinks() && m_before)
        links.emplace(*m_before, work.prefix, m_services.casks.noteFolder);
    const bool isNoted = !links || links->complaint().isEmpty();
    if (!isNoted)
        work.warn(links->complaint());
    const LostApplications applications = co_await noteApplications(work);
    auto prepared = co_await prepare(work);
    report.hasWarnings = report.hasWarnings || (prepared && !*prepared);
    const auto done = prepared ? co_await carryOut(work, &report) : std::move(prepared);
    if (!done)
        report.failure = done.error();
    const LockedWork repair = work.repairing();
    const bool areLinked = !links || co_await links->relink(repair);
    const bool areInPlace = co_await applications.putBack(repair);
    co_await look(work, &report);
    co_await conclude(work, m_before ? &*m_before : nullptr, m_installed ? &*m_installed : nullptr, &report);
    report.hasWarnings =
        report.hasWarnings || !isNoted || !areLinked || !areInPlace || !applications.complaints().isEmpty();
    co_return report;
}

Task<LostApplications> PackageOperation::noteApplications(LockedWork work) const {
    const CaskSetting setting = m_services.casksAt(work.prefix);
    const QStringList tokens = m_installed ? casksAtRisk(*m_installed) : QStringList();
    auto applications =
        co_await runInWorker([tokens, setting] { return LostApplications::of(tokens, setting); });
    for (const QString &complaint : applications.complaints())
        work.warn(complaint);
    co_return LostApplications(applications);
}

/// Reads what is installed; where that cannot be told the person is, once.
Task<> PackageOperation::look(LockedWork work, OperationReport *report) {
    m_installed = co_await installedAt(work.prefix);
    if (m_installed)
        co_return;
    report->hasWarnings = true;
    if (!std::exchange(m_hasToldOfBlindness, true))
        work.warn(QStringLiteral("What is installed could not be read, so it is not known whether all is as "
                                 "Homebrew reports: %1")
                      .arg(m_installed.error()));
}

/// Whether the package whose result came last is as Homebrew reported; says where not, and puts it into the
/// report.
void PackageOperation::check(const LockedWork &work, const PackageCommand &command, const Installed &before,
                             OperationReport *report) const {
    PackageResult &result = report->packages.last();
    if (!before || !m_installed || !result.isDone())
        return;
    const StateFinding found =
        command.finding(result.package, PackageState::of(result.package, *before, *m_installed));
    if (found.text.isEmpty())
        return;
    const QString complaint =
        QStringLiteral("Homebrew reported success, but %1 %2.").arg(result.package.name, found.text);
    work.warn(complaint);
    result.end = found.hasNotHappened ? PackageEnd::Failed : PackageEnd::DoneWithWarnings;
    result.lines = {complaint};
}

Task<Result<bool>> PackageOperation::carryOut(LockedWork work, OperationReport *report) {
    const QList<PackageTarget> packages = co_await order(m_packages, work.context.stop);
    const bool isBatch = packages.size() > 1;
    for (qsizetype i = 0; i < packages.size(); ++i) {
        const PackageTarget package = packages[i];
        if (work.isStopped())
            co_return std::unexpected(BrewError::stopped());
        if (isBatch)
            work.say(QStringLiteral("%1 %2").arg(m_command->verb(), package.name));
        if (isBatch && work.context.onPackage)
            work.context.onPackage(package.name, static_cast<int>(i), static_cast<int>(packages.size()));
        if (const auto done = co_await treat(work, package, report); !done)
            co_return std::unexpected(done.error());
        if (isBatch)
            sayLine(work, batchLine(report->packages.last()));
        if (report->packages.last().end == PackageEnd::Cancelled)
            work.context.sudoAuth = nullptr; // who has declined is not asked for each of the rest
    }
    if (isBatch)
        sayBatchResult(work, *report);
    co_return true;
}

Task<Result<bool>> PackageOperation::treat(LockedWork work, PackageTarget package, OperationReport *report) {
    return runStep(std::move(work), m_command.get(), std::move(package), report);
}

Task<Result<bool>> PackageOperation::runStep(LockedWork work, const PackageCommand *command,
                                             PackageTarget package, OperationReport *report) {
    const Installed before = m_installed;
    PackageRun run(work, m_services.casksAt(work.prefix), *command, package);
    const auto result = co_await run.run();
    if (!result) {
        const bool wasStopped = result.error().kind == BrewError::Kind::Stopped;
        report->packages.append({.package = package,
                                 .end = wasStopped ? PackageEnd::Stopped : PackageEnd::Failed,
                                 .deed = command->deed(),
                                 .lines = {QStringLiteral("Error: ") + result.error().description()}});
        co_return std::unexpected(result.error());
    }
    report->packages.append(*result);
    co_await look(work, report);
    check(work, *command, before, report);
    co_return true;
}

Task<Result<bool>> PackageOperation::removeUnlessGone(LockedWork work, const PackageCommand *command,
                                                      PackageTarget package, OperationReport *report) {
    const auto isIn = [&package](const Installed &installed) {
        return installed && !installed->versions(package.name, package.isCask).isEmpty();
    };
    if (isIn(m_before) && m_installed && !isIn(m_installed)) {
        work.say(QStringLiteral("%1 is gone already").arg(package.name));
        report->packages.append({package, PackageEnd::Done, command->deed()});
        co_return true;
    }
    co_return co_await runStep(std::move(work), command, std::move(package), report);
}

QStringList formulaNames(const QList<PackageTarget> &packages) {
    QStringList names;
    for (const PackageTarget &package : packages)
        if (!package.isCask)
            names.append(package.name);
    return names;
}

} // namespace larkspur
