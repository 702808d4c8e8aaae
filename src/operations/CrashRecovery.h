#pragma once

#include "core/async/Task.h"

#include <QString>

namespace larkspur {

class AskpassFiles;
class BrewPathResolver;
class BrewService;
class KegPreservationManager;
class KegRollback;
class Logger;

/// Puts right, at the start of the program, what an operation left behind when the program died: the secret
/// for sudo, Homebrew's script that was replaced, applications that stand aside, copies of kegs in the
/// making, a rollback half-way, a pin that was taken off.
class CrashRecovery {
  public:
    struct Parts {
        BrewPathResolver &resolver;
        BrewService &brew;
        const AskpassFiles &askpass;
        KegPreservationManager &kegs;
        KegRollback &rollback;
        QString movedAsideNote;
        QString heldPinNote;
        Logger &logger;
    };
    explicit CrashRecovery(Parts parts);

    /// Does nothing while an operation of this or another process is alive: then nothing was left behind.
    Task<> run();

  private:
    Parts m_parts;
};

} // namespace larkspur
