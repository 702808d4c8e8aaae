#include "operations/packages/UninstallPackages.h"

#include "operations/packages/PackageOperation.h"
#include "operations/packages/RemovalOrder.h"
#include "operations/plan/OperationPlanner.h"

namespace larkspur {

namespace {

class UninstallPackages final : public PackageOperation {
  public:
    using PackageOperation::PackageOperation;

    std::optional<PlanQuestion> question() const override {
        return PlanQuestion{.text = packages().size() == 1
                                        ? QStringLiteral("Uninstall %1?").arg(packages().first().name)
                                        : QStringLiteral("Uninstall %1 packages?").arg(packages().size()),
                            .action = QStringLiteral("Uninstall"),
                            .removes = true,
                            .isMust = true};
    }
    Task<OperationPlan> plan(StopToken stop) const override {
        return services().planner.planRemoval(packages(), std::move(stop));
    }

  protected:
    Task<QList<PackageTarget>> order(QList<PackageTarget> packages, StopToken stop) const override {
        return inRemovalOrder(std::move(packages), &services().queries, std::move(stop));
    }
    Task<Result<bool>> treat(LockedWork work, PackageTarget package, OperationReport *report) override {
        return removeUnlessGone(std::move(work), &command(), std::move(package), report);
    }
    /// Homebrew itself says little there.
    QString batchLine(const PackageResult &result) const override {
        return (result.isDone() ? QStringLiteral("Successfully uninstalled ")
                                : QStringLiteral("Error uninstalling ")) +
               result.package.name;
    }
};

} // namespace

EnvironmentMap UninstallCommand::environment() const {
    if (m_orphans == Orphans::Go)
        return {};
    return {{QStringLiteral("HOMEBREW_NO_AUTOREMOVE"), QStringLiteral("1")}};
}

OperationPtr uninstallPackages(const PackageServices &services, const QList<PackageTarget> &packages) {
    return std::make_shared<UninstallPackages>(services, std::make_unique<UninstallCommand>(), packages);
}

} // namespace larkspur
