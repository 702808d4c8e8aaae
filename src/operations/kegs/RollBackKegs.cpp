#include "operations/kegs/RollBackKegs.h"

#include "operations/kegs/KegRollback.h"
#include "operations/packages/PackageOperation.h"

namespace larkspur {

namespace {

/// A rollback is made of several commands, and looks after links and the state by itself.
class RollBackCommand final : public PackageCommand {
  public:
    BrewArguments arguments(const PackageTarget &) const override { return {}; }
    QString verb() const override { return QStringLiteral("Rolling back"); }
    Deed deed() const override { return Deed::RolledBack; }
};

class RollBackKegs final : public PackageOperation {
  public:
    RollBackKegs(const PackageServices &services, const QList<PackageTarget> &formulae)
        : PackageOperation(services, std::make_unique<RollBackCommand>(), formulae) {}

    FailureSummary explain(const OperationReport &report, const QStringList &output) const override {
        return summarizeRollback(report, output);
    }

  protected:
    Task<Result<bool>> treat(LockedWork work, PackageTarget package, OperationReport *report) override {
        return rollBackKeg(work, &services().rollback, std::move(package), report);
    }
};

} // namespace

OperationPtr rollBackKegs(const PackageServices &services, const QList<PackageTarget> &formulae) {
    return std::make_shared<RollBackKegs>(services, formulae);
}

Task<Result<bool>> rollBackKeg(LockedWork work, KegRollback *rollback, PackageTarget formula,
                               OperationReport *report) {
    if (work.isStopped())
        co_return std::unexpected(BrewError::stopped());
    const auto name = PackageName::parse(shortName(formula.name));
    KegRollback::End end;
    if (name)
        end = co_await rollback->run({.session = work.session,
                                      .context = work.context,
                                      .prefix = work.prefix,
                                      .formula = *name,
                                      .version = formula.latestVersion});
    report->packages.append({formula, end.packageEnd(), Deed::RolledBack});
    co_return true;
}

} // namespace larkspur
