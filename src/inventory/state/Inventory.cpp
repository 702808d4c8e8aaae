#include "inventory/state/Inventory.h"

#include "core/brew/PackageName.h"

#include <algorithm>

namespace larkspur {

namespace {

template <typename List, typename Matches>
auto find(const List &list, Matches matches) {
    const auto found = std::ranges::find_if(list, matches);
    return found == list.end() ? nullptr : &*found;
}

} // namespace

const Formula *Inventory::formula(const QString &shortOrFullName) const {
    const bool isQualified = shortOrFullName.contains(QLatin1Char('/'));
    return find(installedFormulae, [&](const Formula &formula) {
        return (isQualified ? formula.fullName : formula.name) == shortOrFullName;
    });
}

const Cask *Inventory::cask(const QString &token) const {
    const QString wanted = shortName(token);
    return find(installedCasks, [&](const Cask &cask) { return cask.token == wanted; });
}

const OutdatedPackage *Inventory::outdated(const PackageId &id) const {
    return find(outdatedPackages, [&](const OutdatedPackage &package) { return package.id() == id; });
}

} // namespace larkspur
