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

    using Installed = std::expected<InstalledPackages, QString>;
    /// What is about to be changed.
    struct Scope {
        QList<PackageTarget> packages = {}; ///< what is named
        BrewCommand dryRun;                 ///< asks Homebrew what will be replaced; no words: nothing will
        /// The answer, dependencies and dependents included, where Homebrew was asked already.
        std::optional<QStringList> replaced = std::nullopt;
    };
    /// Takes a restore point and preserves every keg that an upgrade will replace; neither where it could not
    /// be read what is installed. What fails is said and logged, and the upgrade goes on. False if something
    /// has failed.
    Task<bool> prepare(LockedWork work, Scope scope, const Installed *installed);
    /// The same without a restore point, for what replaces kegs by the way.
    Task<bool> preserveReplaced(LockedWork work, Scope scope, const Installed *installed);

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
