#pragma once

#include "operations/packages/PackageCommand.h"
#include "operations/packages/PackageServices.h"
#include "operations/run/Operation.h"

namespace larkspur {

class UninstallCommand final : public PackageCommand {
  public:
    /// What becomes of dependencies that nobody needs any more: Homebrew removes them if it is let.
    enum class Orphans { Go, Stay };
    explicit UninstallCommand(Orphans orphans = Orphans::Go)
        : m_orphans(orphans) {}

    EnvironmentMap environment() const override;
    BrewArguments arguments(const PackageTarget &package) const override {
        return plainArguments("uninstall", package);
    }
    QString verb() const override { return QStringLiteral("Uninstalling"); }
    Deed deed() const override { return Deed::Uninstalled; }
    StateFinding finding(const PackageTarget &, const PackageState &state) const override {
        return unlessRemoved(state);
    }
    std::optional<ForcedRetry> retry(const PackageTarget &package, const QStringList &output,
                                     const QStringList &places) const override {
        return retryWithoutApplication("uninstall", package, output, places);
    }

  private:
    Orphans m_orphans;
};

OperationPtr uninstallPackages(const PackageServices &services, const QList<PackageTarget> &packages);

} // namespace larkspur
