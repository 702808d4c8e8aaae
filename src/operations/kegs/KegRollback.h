#pragma once

#include "core/brew/BrewService.h"
#include "operations/kegs/RollbackNote.h"
#include "operations/recovery/NoteLeftover.h"
#include "operations/run/OperationReport.h"

namespace larkspur {

class KegPreservationManager;
class Logger;
class TreeSync;

/// Puts a formula back to a version whose keg was preserved, without a rebuild or a download. What was
/// installed stays aside until the end and comes back if a step fails. A note lets the next start, or the
/// next operation of any Larkspur, finish or undo the work if the program dies. Nothing is moved or removed
/// where a link in the prefix leads.
class KegRollback {
  public:
    struct Parts {
        KegPreservationManager &kegs;
        TreeSync &sync;
        Logger &logger;
        QString noteFolder;
    };
    explicit KegRollback(Parts parts);

    struct Order {
        BrewSession *session;
        OperationContext context;
        QString prefix;
        PackageName formula; ///< unqualified
        QString version;
    };
    struct End {
        bool isBack = false;      ///< the formula is at the version, with its links
        bool hasWarnings = false; ///< its pin was lost
        PackageEnd packageEnd() const {
            return !isBack       ? PackageEnd::Failed
                   : hasWarnings ? PackageEnd::DoneWithWarnings
                                 : PackageEnd::Done;
        }
    };
    /// Says in the output how it went, a failure too.
    Task<End> run(Order order);

    /// Finishes or undoes rollbacks during which the program died.
    class Leftover;

  private:
    /// A rollback under way.
    struct Work {
        Order order;
        RollbackNote note;
        CrashNote file;
    };
    Task<bool> stage(Work work);
    Task<End> exchange(Work work);
    Task<std::expected<void, QString>> install(Work work);
    Task<Result<BrewRun>> linkAnew(Work work);
    Task<bool> link(Work work);
    Task<> putBack(Work work);
    Task<> putBackInUse(Work work);
    Task<> installNewest(Work work);
    Task<Result<BrewRun>> brew(Order order, BrewArguments arguments);
    Task<bool> pin(Work work);
    Task<> recover(Work work);
    Task<> leaveAlone(Work work, QString reason);
    enum class Note { Goes, Stays };
    Task<> finish(Work work, Note fate = Note::Goes);
    void warn(const Work &work, const QString &text) const;

    Parts m_parts;
};

class KegRollback::Leftover final : public NoteLeftover {
  public:
    explicit Leftover(KegRollback &rollback);

  protected:
    Task<Settled> settle(CrashNote note, LockedWork work) override;

  private:
    KegRollback &m_rollback;
};

} // namespace larkspur
