#pragma once

#include "core/brew/BrewService.h"
#include "operations/kegs/RollbackNote.h"

namespace larkspur {

class InstalledPackages;
class KegPreservationManager;
class Logger;

/// Puts a formula back to a version whose keg was preserved, without a rebuild or a download. What was
/// installed stays aside until the end and comes back if a step fails; a note lets the next start finish or
/// undo the work if the program dies.
class KegRollback {
  public:
    struct Parts {
        KegPreservationManager &kegs;
        Logger &logger;
        QString noteFile;
    };
    explicit KegRollback(Parts parts);

    struct Order {
        BrewSession *session;
        OperationContext context;
        QString prefix;
        QString formula;
        QString version;
    };
    /// True if the formula is at the version afterwards. Says in the output how it went, a failure too.
    Task<bool> run(Order order);

    bool hasUnfinished() const;
    /// Finishes or undoes a rollback during which the program died.
    Task<> recover(BrewSession *session);

  private:
    Task<bool> exchange(Order order, RollbackNote note);
    Task<bool> link(Order order, RollbackNote note);
    Task<> putBack(Order order, RollbackNote note);
    Task<Result<BrewRun>> brew(Order order, QStringList arguments);
    Task<> finish(RollbackNote note);

    Parts m_parts;
};

} // namespace larkspur
