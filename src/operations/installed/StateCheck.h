#pragma once

#include "operations/installed/InstalledPackages.h"
#include "operations/run/PackageTarget.h"

namespace larkspur {

/// A package around an operation that reported success.
struct PackageState {
    QStringList versionsBefore;
    QStringList versions;
    bool isPinned = false;

    static PackageState of(const PackageTarget &package, const InstalledPackages &before,
                           const InstalledPackages &after);
};

/// What is not as the operation should have left it, as the end of a sentence about the package.
struct StateFinding {
    QString text = {};           ///< empty: all is as it should be
    bool hasNotHappened = false; ///< nothing of what was wanted; otherwise it is there in another version
};

StateFinding unlessInstalled(const PackageState &state);
StateFinding unlessUpgraded(const PackageTarget &package, const PackageState &state);
StateFinding unlessRemoved(const PackageState &state);
StateFinding unlessPinned(const PackageState &state);
StateFinding unlessUnpinned(const PackageState &state);

} // namespace larkspur
