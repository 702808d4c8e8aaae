#include "core/authorization/AskpassFiles.h"
#include "core/brew/BrewPathResolver.h"
#include "core/brew/BrewService.h"
#include "core/process/ProcessShellExecutor.h"
#include "inventory/cache/PackageCache.h"
#include "inventory/refresh/CaskEnrichment.h"
#include "inventory/refresh/InventoryRefresh.h"
#include "platform/Platform.h"
#include "tests/support/Await.h"
#include "tests/support/Fixture.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

// A brew that takes 300 ms a call. Refresh/one-after-another asks the refresh's questions in turn,
// Refresh/side-by-side as the program does. Aim: at most 0.5 to 1.

namespace bench {

namespace {

using namespace larkspur;

struct World {
    int argc = 1;
    char name[6] = "bench";
    char *argv[2] = {name, nullptr};
    QCoreApplication application{argc, argv};
    test::Fixture fixture;
    Platform platform = makePlatform();
    ProcessShellExecutor shell{{.askpassScript = QString(), .readLoginShell = false},
                               fixture.preferences,
                               *platform.terminal,
                               *platform.processes,
                               fixture.logger};
    BrewPathResolver resolver;
    OperationLock lock{fixture.path("operation.lock"), *platform.processes};
    AskpassFiles askpass{fixture.path("askpass.sh"), fixture.path(".secret"), {}};
    BrewService brew{shell, resolver, lock, askpass};
    InventoryQueries queries{brew, fixture.preferences, fixture.logger};

    World()
        : resolver(locations(fixture), fixture.preferences, shell, fixture.logger) {}

    static Locations locations(const test::Fixture &fixture) {
        const QString brew = fixture.path("brew");
        test::Fixture::write(
            brew,
            "#!/bin/sh\nsleep 0.3\ncase \"$1\" in info|outdated) echo '{\"formulae\":[],\"casks\":[]}';;\n"
            "services|tap-info) echo '[]';; trust) echo '{\"taps\":[]}';; *) echo /nowhere;; esac\n",
            true);
        Locations locations;
        locations.knownBrewPaths = {brew};
        return locations;
    }
};

Task<> oneAfterAnother(InventoryQueries *queries) {
    (void)co_await queries->installedFormulae();
    (void)co_await queries->installedCasks();
    (void)co_await queries->outdated();
    (void)co_await queries->leaves();
    (void)co_await queries->pinned();
    (void)co_await queries->services();
    (void)co_await queries->taps();
    (void)co_await queries->trust();
    (void)co_await queries->installedFullNames();
    (void)co_await queries->homebrewPrefix();
}

void refreshInTurn(benchmark::State &state) {
    World world;
    for (auto _ : state)
        test::await(oneAfterAnother(&world.queries));
}

void refreshSideBySide(benchmark::State &state) {
    World world;
    PackageCache cache(world.fixture.path("Cache"), world.fixture.logger);
    CaskEnrichment enrichment({});
    for (auto _ : state) {
        InventoryState inventory; // a fresh one: the prefix is asked for as well
        InventoryRefresh refresh(world.queries, cache, enrichment, inventory, world.fixture.logger);
        test::await(refresh.refresh());
        if (!inventory.value().refreshFailures.isEmpty())
            state.SkipWithError("a query failed");
    }
}

} // namespace

BENCHMARK(refreshInTurn)->Name("Refresh/one-after-another")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(refreshSideBySide)->Name("Refresh/side-by-side")->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace bench
