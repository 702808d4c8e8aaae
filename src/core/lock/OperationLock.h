#pragma once

#include "core/async/FairSemaphore.h"
#include "core/lock/LockFile.h"

#include <QString>

#include <functional>

namespace larkspur {

class Logger;

/// Lets one operation at a time change what is installed: within the program in the order of asking, and
/// between programs through a lock file beside the data. Where that file cannot be written the first holds
/// alone.
class OperationLock {
  public:
    OperationLock(QString lockFilePath, Logger &logger);

    /// Both halves of the lock; let go when destroyed.
    class Permit {
      public:
        Permit(FairSemaphore::Permit turn, std::optional<LockFile> file)
            : m_turn(std::move(turn))
            , m_file(std::move(file)) {}

      private:
        FairSemaphore::Permit m_turn; // let go last: the file is free when the next in turn looks for it
        std::optional<LockFile> m_file;
    };

    /// Waits for the lock; `onWait` is called once if it is not free. Nothing if stop was requested first.
    Task<std::optional<Permit>> acquire(StopToken stop, std::function<void()> onWait);
    /// The lock if nobody holds it or waits for it.
    Task<std::optional<Permit>> tryAcquire();

    bool isHeld() const { return m_turn.isExhausted(); }

  private:
    QString m_path;
    Logger &m_logger;
    FairSemaphore m_turn{1};
};

} // namespace larkspur
