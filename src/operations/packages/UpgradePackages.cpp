#include "operations/packages/UpgradePackages.h"

#include "operations/packages/HeldPin.h"
#include "operations/packages/PackageOperation.h"
#include "operations/packages/UpgradeCommand.h"
#include "operations/packages/UpgradeEnd.h"
#include "operations/packages/UpgradeSafeguard.h"
#include "operations/plan/DryRun.h"
#include "operations/plan/OperationPlanner.h"

#include <algorithm>
#include <map>

namespace larkspur {

namespace {

bool isUpToDate(const PackageTarget &package) {
    return !package.latestVersion.isEmpty() && package.installedVersion == package.latestVersion;
}

QString upToDateLine(const PackageTarget &package) {
    return QStringLiteral("==> %1 is already up to date (installed %2, latest %3). No changes were made.")
        .arg(package.name, package.installedVersion, package.latestVersion);
}

class UpgradePackages final : public PackageOperation {
  public:
    UpgradePackages(const PackageServices &services, const QList<PackageTarget> &packages)
        : PackageOperation(services, std::make_unique<UpgradeCommand>(services.preferences), packages) {}

    std::optional<int> expectedSteps() const override {
        return packages().size() > 1 ? std::optional(static_cast<int>(packages().size())) : std::nullopt;
    }
    std::optional<PlanQuestion> question() const override;
    Task<OperationPlan> plan(StopToken stop) const override {
        return services().planner.planUpgrade(packages(), std::move(stop));
    }
    void agree(const OperationPlan &plan) override;
    std::optional<OperationReport> endWithoutLock(const OutputSinkPtr &output) const override;

  protected:
    Task<Result<bool>> prepare(LockedWork work) override;
    Task<Result<bool>> treat(LockedWork work, PackageTarget package, OperationReport *report) override;
    Task<> conclude(LockedWork work, const InstalledPackages *before, const InstalledPackages *after,
                    OperationReport *report) override;

  private:
    bool hasPinned() const { return std::ranges::any_of(packages(), &PackageTarget::isPinned); }

    std::optional<QStringList> m_replaced; ///< what the person was shown
    std::map<QString, HeldPin> m_pins;     ///< taken off, by the package's name
};

std::optional<PlanQuestion> UpgradePackages::question() const {
    return PlanQuestion{
        .text = packages().size() == 1 ? QStringLiteral("Upgrade %1?").arg(packages().first().name)
                                       : QStringLiteral("Upgrade %1 packages?").arg(packages().size()),
        .action = QStringLiteral("Upgrade"),
        .isMust = hasPinned(),
        .refusal = hasPinned() ? QStringLiteral("a package is pinned; --yes upgrades it and pins it again")
                               : QString()};
}

void UpgradePackages::agree(const OperationPlan &plan) {
    // Homebrew does not plan for what is pinned: it tells only once the pin is off.
    if (plan.failure.isEmpty() && !hasPinned())
        m_replaced = plan.names();
}

std::optional<OperationReport> UpgradePackages::endWithoutLock(const OutputSinkPtr &output) const {
    if (auto refused = PackageOperation::endWithoutLock(output))
        return refused;
    if (packages().size() != 1 || !isUpToDate(packages().first()))
        return std::nullopt;
    if (output)
        output->addLine(upToDateLine(packages().first()));
    return OperationReport{.packages = {{.package = packages().first(), .isUnchanged = true}}};
}

Task<Result<bool>> UpgradePackages::prepare(LockedWork work) {
    for (const PackageTarget &package : packages()) {
        if (!package.isPinned || isUpToDate(package))
            continue;
        const auto pin = m_pins.try_emplace(package.name, work, services().casks.noteFolder, package).first;
        if (const auto taken = co_await pin->second.takeOff(); !taken)
            co_return std::unexpected(taken.error());
    }
    const QStringList formulae = formulaNames(packages());
    BrewCommand dryRun;
    if (!formulae.isEmpty())
        dryRun = dryRunOf(formulae, false, work.context.stop);
    co_return co_await services().safeguard.prepare(
        work, {.packages = packages(), .dryRun = dryRun, .replaced = m_replaced}, &installed());
}

Task<Result<bool>> UpgradePackages::treat(LockedWork work, PackageTarget package, OperationReport *report) {
    if (isUpToDate(package)) {
        if (work.context.output)
            work.context.output->addLine(upToDateLine(package));
        report->packages.append({.package = package, .isUnchanged = true});
        co_return true;
    }
    const auto done = co_await PackageOperation::treat(work, package, report);
    if (const auto pin = m_pins.find(package.name); pin != m_pins.end())
        if (!co_await pin->second.putBack())
            report->hasWarnings = true;
    co_return done;
}

Task<> UpgradePackages::conclude(LockedWork work, const InstalledPackages *before,
                                 const InstalledPackages *after, OperationReport *report) {
    for (auto &[name, pin] : m_pins) // of what was never come to
        if (!co_await pin.putBack())
            report->hasWarnings = true;
    if (before && after && !report->failure)
        report->servicesToRestart =
            co_await servicesToRestart(work, after->formulaeNewSince(*before), &services().queries);
}

} // namespace

OperationPtr upgradePackages(const PackageServices &services, const QList<PackageTarget> &packages) {
    return std::make_shared<UpgradePackages>(services, packages);
}

} // namespace larkspur
