#pragma once

#include "operations/packages/PackageCommand.h"
#include "operations/packages/PackageServices.h"
#include "operations/run/Operation.h"

namespace larkspur {

/// For casks only.
struct InstallOptions {
    bool adopt = false; ///< take over an application that is there already
    bool force = false; ///< replace what is in the way
};

class InstallCommand final : public PackageCommand {
  public:
    explicit InstallCommand(InstallOptions options = {})
        : m_options(options) {}

    BrewArguments arguments(const PackageTarget &package) const override;
    BrewSession::Style style() const override { return BrewSession::Style::Terminal; }
    QString verb() const override { return QStringLiteral("Installing"); }
    Deed deed() const override { return Deed::Installed; }
    bool mayLoseLinks() const override { return true; }
    bool replacesApplication(const PackageTarget &package) const override { return package.isCask; }
    StateFinding finding(const PackageTarget &, const PackageState &state) const override {
        return unlessInstalled(state);
    }
    std::optional<ForcedRetry> retry(const PackageTarget &package, const QStringList &output,
                                     const QStringList &) const override {
        return retryWithoutAdopting(package, output);
    }

  private:
    InstallOptions m_options;
};

OperationPtr installPackages(const PackageServices &services, const QList<PackageTarget> &packages,
                             InstallOptions options = {});

/// Installs what is installed once more, in its newest version.
OperationPtr reinstallPackages(const PackageServices &services, const QList<PackageTarget> &packages);

} // namespace larkspur
