#include "operations/packages/UpgradeAll.h"

#include "operations/packages/PackageOperation.h"
#include "operations/packages/UpgradeEnd.h"
#include "operations/packages/UpgradePackages.h"
#include "operations/packages/UpgradeSafeguard.h"
#include "operations/plan/OperationPlanner.h"

#include <algorithm>

namespace larkspur {

namespace {

/// Everything with Homebrew's own command, whatever that finds.
class UpgradeAllCommand final : public PackageCommand {
  public:
    explicit UpgradeAllCommand(const QList<PackageTarget> &outdated) {
        for (const PackageTarget &package : outdated)
            if (package.isCask)
                m_casks.append(shortName(package.name));
    }

    BrewArguments arguments(const PackageTarget &) const override { return {"upgrade"}; }
    BrewSession::Style style() const override { return BrewSession::Style::Terminal; }
    QString verb() const override { return QStringLiteral("Upgrading"); }
    Deed deed() const override { return Deed::Upgraded; }
    bool mayLoseLinks() const override { return true; }
    QString passwordReason(const PackageTarget &) const override {
        return QStringLiteral("Larkspur needs your administrator password to finish updating your packages.");
    }
    bool expectsPassword(const PackageTarget &, const QString &name) const override {
        return m_casks.contains(shortName(name));
    }

  private:
    QStringList m_casks; ///< that are known to be outdated
};

class UpgradeAll final : public PackageOperation {
  public:
    UpgradeAll(const PackageServices &services, const QList<PackageTarget> &outdated);

    QString title() const override { return QStringLiteral("Upgrading all packages"); }
    QString terminalCommand() const override { return QStringLiteral("brew upgrade"); }
    std::optional<int> expectedSteps() const override {
        return static_cast<int>(std::ranges::count_if(
            packages(), [](const PackageTarget &package) { return !package.isPinned; }));
    }
    std::optional<PlanQuestion> question() const override {
        return PlanQuestion{.text = QStringLiteral("Upgrade everything that is outdated?"),
                            .action = QStringLiteral("Upgrade")};
    }
    Task<OperationPlan> plan(StopToken stop) const override {
        return services().planner.planUpgradeOfAll(packages(), std::move(stop));
    }
    void agree(const OperationPlan &plan) override {
        if (plan.failure.isEmpty())
            m_replaced = plan.names();
    }

  protected:
    QStringList casksAtRisk(const InstalledPackages &installed) const override {
        return installed.currentCasks().keys();
    }
    Task<Result<bool>> prepare(LockedWork work) override {
        co_return co_await services().safeguard.prepare(
            work, {.isEverything = true, .packages = packages(), .replaced = m_replaced}, &installed());
    }
    Task<Result<bool>> carryOut(LockedWork work, OperationReport *report) override {
        return treat(std::move(work), PackageTarget(), report);
    }
    Task<> conclude(LockedWork work, const InstalledPackages *before, const InstalledPackages *after,
                    OperationReport *report) override;

  private:
    std::optional<QStringList> m_replaced; ///< what the person was shown
};

UpgradeAll::UpgradeAll(const PackageServices &services, const QList<PackageTarget> &outdated)
    : PackageOperation(services, std::make_unique<UpgradeAllCommand>(outdated), outdated) {}

Task<> UpgradeAll::conclude(LockedWork work, const InstalledPackages *before, const InstalledPackages *after,
                            OperationReport *report) {
    if (!before || !after)
        co_return;
    const QStringList complaints = tellApart(packages(), *before, *after, report);
    for (const QString &complaint : complaints)
        work.warn(complaint);
    if (!report->failure)
        report->servicesToRestart =
            co_await servicesToRestart(work, after->formulaeNewSince(*before), &services().queries);
}

} // namespace

OperationPtr upgradeOfAll(const PackageServices &services, const QList<PackageTarget> &outdated,
                          bool leavesSomeOut) {
    if (!leavesSomeOut)
        return std::make_shared<UpgradeAll>(services, outdated);
    QList<PackageTarget> upgraded = outdated;
    upgraded.removeIf([](const PackageTarget &package) { return package.isPinned; });
    return upgradePackages(services, upgraded);
}

} // namespace larkspur
