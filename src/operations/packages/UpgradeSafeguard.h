#pragma once

#include "operations/installed/InstalledPackages.h"
#include "operations/run/LockedWork.h"
#include "operations/run/PackageTarget.h"

namespace larkspur {

class KegPreservationManager;
class SnapshotManager;

/// What is done before an upgrade so that it can be undone.
class UpgradeSafeguard {
  public:
    struct Parts {
        SnapshotManager &snapshots;
        KegPreservationManager &kegs;
    };
    explicit UpgradeSafeguard(Parts parts);

    /// What an upgrade is about to change.
    struct Scope {
        bool isEverything = false;
        QList<PackageTarget> packages = {}; ///< what is named otherwise
        /// Formulae that will be replaced, dependencies and dependents included, where Homebrew was asked
        /// already.
        std::optional<QStringList> replaced = std::nullopt;
    };
    /// Takes a restore point and preserves every keg that the upgrade will replace; neither where it could
    /// not be read what is installed. What fails is said and logged, and the upgrade goes on. False if
    /// something has failed.
    Task<bool> prepare(LockedWork work, Scope scope,
                       const std::expected<InstalledPackages, QString> *installed);

  private:
    Task<bool> preserve(LockedWork work, Scope scope, const InstalledPackages *installed,
                        std::optional<QUuid> snapshot);
    struct Replaced {
        QStringList names;
        QString failure = {}; ///< why there may be more; empty if these are all
    };
    Task<Replaced> replacedFormulae(LockedWork work, Scope scope);

    Parts m_parts;
};

} // namespace larkspur
