#include "userdata/UpdateSelection.h"

#include "userdata/UserDataManager.h"

namespace larkspur {

QStringList UpdateSelection::snoozedNames() const {
    QStringList names;
    for (const OutdatedPackage &package : snoozed)
        names.append(package.name);
    return names;
}

UpdateSelection selectUpdates(const QList<OutdatedPackage> &outdated, const UserDataManager &userData) {
    UpdateSelection selection;
    for (const OutdatedPackage &package : outdated)
        (userData.isPackageSnoozed(package.name, package.currentVersion) ? selection.snoozed
                                                                         : selection.shown)
            .append(package);
    return selection;
}

} // namespace larkspur
