#pragma once

#include "core/brew/BrewService.h"
#include "operations/recovery/Leftover.h"

#include <memory>
#include <vector>

namespace larkspur {

class BrewPathResolver;
class Logger;

/// The way to the operation lock: whoever takes it first puts right what an operation left behind whose
/// program died.
class Recovery {
  public:
    struct Parts {
        BrewService &brew;
        BrewPathResolver &resolver;
        Logger &logger;
    };
    Recovery(Parts parts, std::vector<std::unique_ptr<Leftover>> leftovers);

    /// The operation lock, with nothing left over. Fails as `BrewService::beginOperation` does.
    Task<Result<BrewSession>> beginOperation(OperationContext context);

    /// Whether the end of another program's operation is awaited.
    enum class Patience {
        Waits,
        Leaves, ///< what stands is that program's affair; only what a dead one has left running is told
    };
    /// At the start of the program. `output` is told what was found, and nothing where nothing was. Ends soon
    /// after a stop, even in the middle: the notes stay.
    Task<> run(StopToken stop, OutputSinkPtr output = {}, Patience patience = Patience::Waits);

  private:
    Task<QString> likelyPrefix();
    Task<> putRight(BrewSession *session, OperationContext context);
    bool hasWork(const QString &prefix) const;

    Parts m_parts;
    bool m_isPuttingRight = false;
    std::vector<std::unique_ptr<Leftover>> m_leftovers;
};

} // namespace larkspur
