#include "operations/services/RestartServices.h"

#include "operations/packages/PackageOperation.h"

namespace larkspur {

namespace {

class RestartCommand final : public PackageCommand {
  public:
    BrewArguments arguments(const PackageTarget &package) const override {
        const auto name = PackageName::parse(package.name);
        return name ? BrewArguments{"services", "restart", *name} : BrewArguments();
    }
    QString verb() const override { return QStringLiteral("Restarting"); }
    /// Some run as root.
    bool expectsPassword(const PackageTarget &, const QString &) const override { return true; }
};

} // namespace

OperationPtr restartServices(const PackageServices &services, const QStringList &formulae) {
    QList<PackageTarget> packages;
    for (const QString &name : formulae)
        packages.append({.name = name});
    return std::make_shared<PackageOperation>(services, std::make_unique<RestartCommand>(), packages);
}

} // namespace larkspur
