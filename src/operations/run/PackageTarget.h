#pragma once

#include <QString>

namespace larkspur {

/// A package as it is named to brew: tap-qualified where that is needed.
struct PackageTarget {
    QString name;
    bool isCask = false;
    QString installedVersion = {}; ///< empty where unknown
    QString latestVersion = {};    ///< empty where unknown; of a rollback the version that is wanted
    bool isPinned = false;         ///< to be unpinned for an upgrade and pinned again

    bool operator==(const PackageTarget &) const = default;
};

} // namespace larkspur
