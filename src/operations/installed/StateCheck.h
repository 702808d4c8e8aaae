#pragma once

#include "operations/OperationRequest.h"
#include "operations/installed/InstalledPackages.h"

namespace larkspur {

/// A package that is not as an operation which reported success should have left it.
struct StateComplaint {
    QString line;                ///< for the output, with what is really there
    bool hasNotHappened = false; ///< nothing of what was wanted; otherwise it is there in another version
};
std::optional<StateComplaint> stateComplaint(const OperationRequest &request, const PackageTarget &package,
                                             const InstalledPackages &before, const InstalledPackages &after);

} // namespace larkspur
