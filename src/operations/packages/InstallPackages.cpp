#include "operations/packages/InstallPackages.h"

#include "operations/packages/PackageOperation.h"

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
    return std::make_shared<PackageOperation>(services, std::make_unique<InstallCommand>(options), packages);
}

OperationPtr reinstallPackages(const PackageServices &services, const QList<PackageTarget> &packages) {
    return std::make_shared<PackageOperation>(services, std::make_unique<ReinstallCommand>(), packages);
}

} // namespace larkspur
