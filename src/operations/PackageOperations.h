#pragma once

#include "core/brew/BrewService.h"
#include "operations/OperationReport.h"

namespace larkspur {

class InstalledPackages;
class InventoryQueries;
class Logger;
class Preferences;

/// Does the work of an operation request: takes the lock for the whole of it, runs brew for one package after
/// the other, goes on after a package that failed, and looks at the end whether what Homebrew reported is so.
class PackageOperations {
  public:
    struct Parts {
        BrewService &brew;
        InventoryQueries &queries;
        Preferences &preferences;
        Logger &logger;
        QString movedAsideNote; ///< file for what stands aside during a reinstallation
    };
    explicit PackageOperations(Parts parts);

    /// Fails if the lock was never got or brew could not be run; what failed inside brew is told by the
    /// output. `onBegin` is called once the lock is held.
    Task<Result<OperationReport>> perform(OperationRequest request, OperationContext context,
                                          std::function<void()> onBegin = {});

  private:
    Task<Result<OperationReport>> performAll(BrewSession *session, OperationRequest request,
                                             OperationContext context, QString prefix);
    Task<Result<bool>> performOne(BrewSession *session, OperationRequest request, PackageTarget package,
                                  OperationContext context, QString prefix, OperationReport *report);
    Task<QStringList> servicesToRestart(QStringList upgraded, StopToken stop);

    Parts m_parts;
};

} // namespace larkspur
