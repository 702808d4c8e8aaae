#pragma once

#include "core/authorization/AskpassFiles.h"
#include "core/brew/BrewPathResolver.h"
#include "core/brew/BrewService.h"
#include "core/lock/OperationLock.h"
#include "core/process/ProcessTable.h"
#include "tests/support/Await.h"
#include "tests/support/FakeShellExecutor.h"
#include "tests/support/Fixture.h"

namespace larkspur::test {

/// A BrewService on scripted answers.
struct BrewWorld : Fixture {
    FakeShellExecutor shell;
    Locations locations;
    BrewPathResolver resolver;
    NullProcessTable processes;
    OperationLock lock;
    AskpassFiles askpass;
    BrewService brew;

    BrewWorld()
        : locations(brewIn(path("brew")))
        , resolver(locations, preferences, shell, logger)
        , lock(path("operation.lock"), processes)
        , askpass(path("askpass.sh"), path(".secret"), {})
        , brew(shell, resolver, lock, askpass, 77ms) {}

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
