#pragma once

#include "core/async/Task.h"

#include <QString>

namespace larkspur {

class BrewPathResolver;
class BrewService;
class InventoryState;
class Preferences;

/// What the look at Homebrew before the first refresh found.
enum class StartupOutcome { Ready, BrewNotInstalled, XcodeSetupRequired };

/// Finds brew and asks it for its version, before anything else is asked of it.
class StartupCheck {
  public:
    StartupCheck(BrewPathResolver &resolver, BrewService &brew, InventoryState &state,
                 Preferences &preferences);

    Task<StartupOutcome> run(StopToken stop = {});

    /// Asks for the version alone, after Homebrew may have updated itself.
    Task<StartupOutcome> readVersion(StopToken stop = {});

  private:
    BrewPathResolver &m_resolver;
    BrewService &m_brew;
    InventoryState &m_state;
    Preferences &m_preferences;
};

/// The version in the output of `brew --version`, without the word Homebrew; empty if there is none.
QString versionFromOutput(const QString &output);

} // namespace larkspur
