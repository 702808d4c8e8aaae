#pragma once

#include "operations/run/PackageTarget.h"

#include <QList>
#include <QStringList>
#include <QUuid>

#include <optional>

namespace larkspur {

/// What of a restore the person has seen and agreed to.
struct RestoreAgreement {
    QStringList taps = {};
    QList<PackageTarget> installs = {};
    QList<PackageTarget> removals = {};
    QList<PackageTarget> rollbacks = {};
};

/// Which restore point is to be restored, and how far.
struct RestoreOrder {
    QUuid snapshot;
    bool removesAdded = false;      ///< also removes what was installed since
    bool rollsBackVersions = false; ///< also takes formulae back to their versions of then
    /// Nothing else is done than this, whatever has become of the packages since it was shown; without it
    /// there was nobody to be shown anything, and all that is found is done.
    std::optional<RestoreAgreement> agreed = std::nullopt;
};

} // namespace larkspur
