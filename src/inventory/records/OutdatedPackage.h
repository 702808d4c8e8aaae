#pragma once

#include "inventory/records/Package.h"

namespace larkspur {

/// An installed package for which Homebrew has a newer version.
struct OutdatedPackage {
    QString name;     ///< short name
    QString fullName; ///< as Homebrew named it; for commands
    bool isCask = false;
    QStringList installedVersions;
    QString currentVersion; ///< the newest available
    bool pinned = false;

    PackageId id() const { return {name, isCask}; }
    bool operator==(const OutdatedPackage &) const = default;
};

} // namespace larkspur
