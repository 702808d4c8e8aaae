#pragma once

#include "core/brew/BrewService.h"

#include <QString>

namespace larkspur {

class Logger;

/// What a piece of work has that holds the operation lock: an operation, or what puts right what one has
/// left.
struct LockedWork {
    BrewSession *session;
    OperationContext context;
    QString prefix; ///< of Homebrew; empty where unknown, which only a recovery accepts
    Logger *logger;

    /// For the person and for the log.
    void say(const QString &line) const;
    /// The same for what has failed, or will not be as it should.
    void warn(const QString &text) const;

    bool isStopped() const { return context.stop.stop_requested(); }
    /// For what finishes, undoes or puts right: it does not end with the operation.
    LockedWork repairing() const;
};

} // namespace larkspur
