#pragma once

#include "core/async/FairSemaphore.h"
#include "core/errors/Result.h"
#include "core/lock/LockFile.h"

#include <QString>

#include <functional>

namespace larkspur {

/// Lets one operation at a time change what is installed: within the program in the order of asking, and
/// between programs through a lock file beside the data.
class OperationLock {
  public:
    OperationLock(QString lockFilePath, const ProcessTable &processes);

    /// Both halves of the lock; let go when destroyed.
    class Permit {
      public:
        Permit(FairSemaphore::Permit turn, LockFile file)
            : m_turn(std::move(turn))
            , m_file(std::move(file)) {}

        /// For children that are to hold the lock as long as they live, should the program die under them.
        int descriptor() const { return m_file.descriptor(); }

      private:
        FairSemaphore::Permit m_turn; // let go last: the file is free when the next in turn looks for it
        LockFile m_file;
    };

    /// Waits for the lock; `onWait` is called if it is not free, with the processes that a dead program has
    /// left and that hold it on, if that is the reason; once for each reason. Fails if stop was requested
    /// first, and where the file system takes no lock.
    Task<Result<Permit>> acquire(StopToken stop, std::function<void(const QStringList &)> onWait);

    /// Who holds the lock in other programs, as far as can be told without waiting.
    struct Others {
        bool areThere = false;
        QStringList orphans = {}; ///< as for `acquire`; empty while the program that took it lives
    };
    Others others() const;

    bool isHeld() const { return m_turn.isExhausted(); }

  private:
    QString m_path;
    const ProcessTable &m_processes;
    FairSemaphore m_turn{1};
};

} // namespace larkspur
