#include "operations/packages/PinPackages.h"

#include "operations/packages/PackageOperation.h"

namespace larkspur {

namespace {

class PinCommand final : public PackageCommand {
  public:
    BrewArguments arguments(const PackageTarget &package) const override {
        return plainArguments("pin", package);
    }
    QString verb() const override { return QStringLiteral("Pinning"); }
    StateFinding finding(const PackageTarget &, const PackageState &state) const override {
        return unlessPinned(state);
    }
};

class UnpinCommand final : public PackageCommand {
  public:
    BrewArguments arguments(const PackageTarget &package) const override {
        return plainArguments("unpin", package);
    }
    QString verb() const override { return QStringLiteral("Unpinning"); }
    StateFinding finding(const PackageTarget &, const PackageState &state) const override {
        return unlessUnpinned(state);
    }
};

} // namespace

OperationPtr pinPackages(const PackageServices &services, const QList<PackageTarget> &packages) {
    return std::make_shared<PackageOperation>(services, std::make_unique<PinCommand>(), packages);
}

OperationPtr unpinPackages(const PackageServices &services, const QList<PackageTarget> &packages) {
    return std::make_shared<PackageOperation>(services, std::make_unique<UnpinCommand>(), packages);
}

} // namespace larkspur
