#include "operations/packages/InstallPackages.h"

#include "operations/packages/PackageOperation.h"
#include "operations/packages/UpgradeSafeguard.h"
#include "operations/plan/DryRun.h"

namespace larkspur {

namespace {

class ReinstallCommand final : public PackageCommand {
  public:
    BrewArguments arguments(const PackageTarget &package) const override {
        return plainArguments("reinstall", package);
    }
    BrewSession::Style style() const override { return BrewSession::Style::Terminal; }
    QString verb() const override { return QStringLiteral("Reinstalling"); }
    Deed deed() const override { return Deed::Installed; }
    bool mayLoseLinks() const override { return true; }
    StateFinding finding(const PackageTarget &, const PackageState &state) const override {
        return unlessInstalled(state);
    }
};

/// What is new needs no way back; what comes along may.
class InstallPackages final : public PackageOperation {
  public:
    using PackageOperation::PackageOperation;

  protected:
    Task<Result<bool>> prepare(LockedWork work) override {
        bool isComplete = true;
        for (const bool isCask : {false, true}) {
            QStringList names;
            for (const PackageTarget &package : packages())
                if (package.isCask == isCask)
                    names.append(package.name);
            if (names.isEmpty())
                continue;
            const BrewCommand dryRun = dryRunOfInstall(names, isCask, work.context.stop);
            isComplete =
                co_await services().safeguard.preserveReplaced(work, {.dryRun = dryRun}, &installed()) &&
                isComplete;
        }
        co_return isComplete;
    }
};

/// A reinstallation of what is outdated is an upgrade.
class ReinstallPackages final : public PackageOperation {
  public:
    using PackageOperation::PackageOperation;

  protected:
    Task<Result<bool>> prepare(LockedWork work) override {
        const QStringList formulae = formulaNames(packages());
        if (formulae.isEmpty())
            co_return true;
        co_return co_await services().safeguard.preserveReplaced(
            work, {.dryRun = dryRunOf(formulae, false, work.context.stop)}, &installed());
    }
};

} // namespace

BrewArguments InstallCommand::arguments(const PackageTarget &package) const {
    const auto name = PackageName::parse(package.name);
    if (!name)
        return {};
    if (!package.isCask)
        return {"install", *name};
    BrewArguments all{"install", "--cask"};
    if (m_options.adopt)
        all.append("--adopt");
    if (m_options.force)
        all.append("--force");
    all.append(*name);
    return all;
}

OperationPtr installPackages(const PackageServices &services, const QList<PackageTarget> &packages,
                             InstallOptions options) {
    return std::make_shared<InstallPackages>(services, std::make_unique<InstallCommand>(options), packages);
}

OperationPtr reinstallPackages(const PackageServices &services, const QList<PackageTarget> &packages) {
    return std::make_shared<ReinstallPackages>(services, std::make_unique<ReinstallCommand>(), packages);
}

} // namespace larkspur
