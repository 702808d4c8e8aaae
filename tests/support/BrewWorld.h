#pragma once

#include "core/brew/BrewPathResolver.h"
#include "core/brew/BrewService.h"
#include "tests/support/Await.h"
#include "tests/support/FakeShellExecutor.h"
#include "tests/support/Fixture.h"

namespace larkspur::test {

/// A BrewService on scripted answers.
struct BrewWorld : Fixture {
    FakeShellExecutor shell;
    Locations locations;
    BrewPathResolver resolver;
    BrewService brew;

    BrewWorld()
        : locations(brewIn(path("brew")))
        , resolver(locations, preferences, shell, logger)
        , brew(shell, resolver, logger, 77ms) {}

  private:
    static Locations brewIn(const QString &path) {
        write(path, "#!/bin/sh\n", true);
        Locations locations;
        locations.knownBrewPaths = {path};
        locations.searchPathForBrew = false;
        return locations;
    }
};

} // namespace larkspur::test
