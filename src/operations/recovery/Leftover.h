#pragma once

#include "core/async/Task.h"
#include "core/brew/OperationContext.h"

#include <QString>

namespace larkspur {

class BrewSession;
class Logger;

/// What a recovery works with.
struct RecoveryWork {
    BrewSession *session;     ///< holds the operation lock
    OperationContext context; ///< a repairing one
    QString prefix;           ///< of Homebrew; empty where unknown
    Logger *logger;

    /// For the person and for the log.
    void say(const QString &line) const;
    /// The same for what could not be put right.
    void warn(const QString &text) const;
};

/// Something that an operation can leave behind when the program dies under it.
class Leftover {
  public:
    virtual ~Leftover() = default;

    /// Cheap: asked at every start and before every operation.
    virtual bool exists(const QString &prefix) const = 0;

    /// Whether any of it is this Homebrew's; as cheap.
    virtual bool concerns(const QString &prefix) const { return exists(prefix); }

    /// Under the lock. What cannot be put right is said, and stays for the next time.
    virtual Task<> putRight(RecoveryWork work) = 0;
};

} // namespace larkspur
