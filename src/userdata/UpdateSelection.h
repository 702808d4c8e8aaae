#pragma once

#include "inventory/records/OutdatedPackage.h"

#include <QList>

namespace larkspur {

class UserDataManager;

/// The outdated packages, as the person wants to see them.
struct UpdateSelection {
    QList<OutdatedPackage> shown;
    QList<OutdatedPackage> snoozed;

    QStringList snoozedNames() const;
};

UpdateSelection selectUpdates(const QList<OutdatedPackage> &outdated, const UserDataManager &userData);

} // namespace larkspur
