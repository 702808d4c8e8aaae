#include "operations/packages/UpgradeAll.h"

#include "core/settings/Preferences.h"
#include "operations/casks/CaskApplications.h"
#include "operations/packages/OutputByPackage.h"
#include "operations/packages/PackageOperation.h"
#include "operations/packages/UpgradeCommand.h"
#include "operations/packages/UpgradeEnd.h"
#include "operations/packages/UpgradePackages.h"
#include "operations/packages/UpgradeSafeguard.h"
#include "operations/plan/DryRun.h"
#include "operations/plan/OperationPlanner.h"

#include <algorithm>

namespace larkspur {

namespace {

/// Everything with Homebrew's own command, whatever that finds.
class UpgradeAllCommand final : public PackageCommand {
  public:
    UpgradeAllCommand(const Preferences &preferences, const QList<PackageTarget> &outdated)
        : m_preferences(preferences) {
        for (const PackageTarget &package : outdated)
            if (package.isCask)
                m_casks.append(shortName(package.name));
    }

    BrewArguments arguments(const PackageTarget &) const override {
        if (m_preferences.boolean(keys::useReinstallForCasks))
            return {"upgrade", "--formula"}; // the casks follow one by one
        return m_preferences.boolean(keys::includeAutoUpdateCasks)
                   ? BrewArguments{"upgrade", "--greedy-auto-updates"}
                   : BrewArguments{"upgrade"};
    }
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
    const Preferences &m_preferences;
    QStringList m_casks; ///< that are known to be outdated
};

class UpgradeAll final : public PackageOperation {
  public:
    UpgradeAll(const PackageServices &services, const QList<PackageTarget> &outdated);

    QString title() const override { return QStringLiteral("Upgrading all packages"); }
    QString terminalCommand() const override {
        return QStringLiteral("brew ") + command().arguments({}).words().join(QLatin1Char(' '));
    }
    std::optional<int> expectedSteps() const override {
        return static_cast<int>(std::ranges::count_if(
            packages(), [](const PackageTarget &package) { return !package.isPinned; }));
    }
    std::optional<PlanQuestion> question() const override {
        return PlanQuestion{.text = QStringLiteral("Upgrade everything that is outdated?"),
                            .action = QStringLiteral("Upgrade")};
    }
    Task<OperationPlan> plan(StopToken stop) const override {
        return services().planner.planUpgradeOfAll(
            packages(), services().preferences.boolean(keys::includeAutoUpdateCasks), std::move(stop));
    }
    void agree(const OperationPlan &plan) override {
        if (plan.failure.isEmpty())
            m_replaced = plan.names();
    }

  protected:
    QStringList casksAtRisk(const InstalledPackages &installed) const override {
        return m_caskCommand.reinstallsCasks() ? QStringList() : installed.currentCasks().keys();
    }
    Task<Result<bool>> prepare(LockedWork work) override {
        co_return co_await services().safeguard.prepare(
            work,
            {.packages = packages(), .dryRun = dryRunOfAll(false, work.context.stop), .replaced = m_replaced},
            &installed());
    }
    Task<Result<bool>> carryOut(LockedWork work, OperationReport *report) override;
    Task<> conclude(LockedWork work, const InstalledPackages *before, const InstalledPackages *after,
                    OperationReport *report) override;

  private:
    /// Casks that the command for all has not upgraded, and that one of their own may.
    QList<PackageTarget> casksToTry(const QString &prefix, const PackageResult &run) const;

    UpgradeCommand m_caskCommand;
    std::optional<QStringList> m_replaced; ///< what the person was shown
};

UpgradeAll::UpgradeAll(const PackageServices &services, const QList<PackageTarget> &outdated)
    : PackageOperation(services, std::make_unique<UpgradeAllCommand>(services.preferences, outdated),
                       outdated)
    , m_caskCommand(services.preferences) {}

QList<PackageTarget> UpgradeAll::casksToTry(const QString &prefix, const PackageResult &run) const {
    QList<PackageTarget> casks;
    const QHash<QString, QStringList> output = outputByPackage(packages(), run.lines);
    for (const PackageTarget &package : packages()) {
        const auto token = PackageName::parse(package.name);
        if (!package.isCask || package.isPinned || !token)
            continue;
        const auto places = caskApplicationPlaces(*token, services().casksAt(prefix));
        const QStringList own = output.value(shortName(package.name));
        if (m_caskCommand.reinstallsCasks() ||
            (!run.isDone() && m_caskCommand.retry(package, own, places.value_or(QStringList()))))
            casks.append(package);
    }
    return casks;
}

Task<Result<bool>> UpgradeAll::carryOut(LockedWork work, OperationReport *report) {
    if (const auto done = co_await treat(work, PackageTarget(), report); !done)
        co_return std::unexpected(done.error());
    for (const PackageTarget &cask : casksToTry(work.prefix, report->packages.first())) {
        if (work.isStopped())
            co_return std::unexpected(BrewError::stopped());
        work.say(QStringLiteral("Upgrading ") + cask.name);
        if (const auto done = co_await runStep(work, &m_caskCommand, cask, report); !done)
            co_return std::unexpected(done.error());
        if (report->packages.last().end == PackageEnd::Cancelled)
            work.context.sudoAuth = nullptr; // who has declined is not asked for each of the rest
    }
    co_return true;
}

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
