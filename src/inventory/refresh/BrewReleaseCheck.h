#pragma once

#include "core/async/Task.h"

namespace larkspur {

class InventoryState;
class LatestBrewRelease;

/// Learns which Homebrew is the newest, at most once a day. Says nothing when the service does not answer.
class BrewReleaseCheck {
  public:
    /// `enabled`: off where nothing outside this machine is to be asked.
    BrewReleaseCheck(LatestBrewRelease &release, InventoryState &state, bool enabled);

    Task<> run(StopToken stop = {});

  private:
    LatestBrewRelease &m_release;
    InventoryState &m_state;
    bool m_enabled;
};

} // namespace larkspur
