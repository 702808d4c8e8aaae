#pragma once

#include "core/brew/BrewService.h"
#include "operations/OperationRequest.h"
#include "operations/installed/InstalledPackages.h"

namespace larkspur {

class KegPreservationManager;
class Logger;
class SnapshotManager;

/// What is done before an upgrade so that it can be undone.
class UpgradeSafeguard {
  public:
    struct Parts {
        SnapshotManager &snapshots;
        KegPreservationManager &kegs;
        Logger &logger;
    };
    explicit UpgradeSafeguard(Parts parts);

    struct Upgrade {
        BrewSession *session;
        OperationRequest request;
        OperationContext context;
        QString prefix;
    };
    /// Takes a restore point and preserves every keg that the upgrade will replace; neither where it could
    /// not be read what is installed. What fails is said and logged, and the upgrade goes on. False if
    /// something has failed.
    Task<bool> prepare(Upgrade upgrade, const std::expected<InstalledPackages, QString> *installed);

  private:
    Task<bool> preserve(Upgrade upgrade, const InstalledPackages *installed, std::optional<QUuid> snapshot);
    struct Replaced {
        QStringList names;
        QString failure = {}; ///< why there may be more; empty if these are all
    };
    Task<Replaced> replacedFormulae(Upgrade upgrade);

    Parts m_parts;
};

} // namespace larkspur
