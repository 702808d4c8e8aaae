#include "operations/packages/PackageCommand.h"

namespace larkspur {

QString PackageCommand::passwordReason(const PackageTarget &package) const {
    return QStringLiteral("Larkspur needs your administrator password to finish %1 %2.")
        .arg(purpose(), package.name);
}

QString PackageCommand::cancelledLine(const PackageTarget &, bool) const {
    return QStringLiteral("Administrator authorization was cancelled. The operation may be incomplete.");
}

BrewArguments plainArguments(const BrewWord &command, const PackageTarget &package) {
    const auto name = PackageName::parse(package.name);
    if (!name)
        return {};
    return package.isCask ? BrewArguments{command, "--cask", *name} : BrewArguments{command, *name};
}

} // namespace larkspur
