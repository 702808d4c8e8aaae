#include "core/brew/BrewPathResolver.h"
#include "tests/support/Await.h"
#include "tests/support/FakeShellExecutor.h"
#include "tests/support/Fixture.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

class BrewPathResolverTest : public QObject {
    Q_OBJECT

    struct World : Fixture {
        FakeShellExecutor shell;
        Locations locations;
        std::unique_ptr<BrewPathResolver> resolver;

        World() {
            locations.knownBrewPaths = {path("first"), path("second")};
            shell.answer("brew", {}, 1);
        }
        void executable(const char *name) { write(path(name), "#!/bin/sh\n", true); }
        std::optional<QString> resolve() {
            if (!resolver)
                resolver = std::make_unique<BrewPathResolver>(locations, preferences, shell, logger);
            return await(resolver->resolve());
        }
    };

  private Q_SLOTS:
    void firstKnownPathWins() {
        World world;
        world.executable("first");
        world.executable("second");
        QCOMPARE(world.resolve(), world.path("first"));
        QVERIFY(world.logText().contains("brew path resolved: " + world.path("first") + " (known path)"));
        QVERIFY(world.shell.commands().isEmpty());
    }

    void aFileThatCannotBeRunIsPassedOver() {
        World world;
        World::write(world.path("first"), "text");
        world.executable("second");
        QCOMPARE(world.resolve(), world.path("second"));
    }

    void overrideWinsIfItCanBeRun() {
        World world;
        world.executable("second");
        world.preferences.set(keys::brewPathOverride, world.path("mine"));
        QCOMPARE(world.resolve(), world.path("second"));
        QVERIFY(world.logText().contains(
            "brew path override set but not executable, falling back to auto-detect: " + world.path("mine")));
        world.executable("mine");
        world.preferences.set(keys::brewPathOverride, QString()); // a change counts at once
        QCOMPARE(world.resolve(), world.path("second"));
        world.preferences.set(keys::brewPathOverride, world.path("mine"));
        QCOMPARE(world.resolve(), world.path("mine"));
        QVERIFY(world.logText().contains(" (user override)"));
    }

    void searchPathComesLast() {
        World world;
        world.shell.answer("brew", "  /somewhere/brew \n");
        QCOMPARE(world.resolve(), "/somewhere/brew");
        QVERIFY(world.logText().contains("brew path resolved: /somewhere/brew (via which)"));
    }

    void aFailedSearchIsRemembered() {
        World world;
        QCOMPARE(world.resolve(), std::nullopt);
        QVERIFY(world.logText().contains(
            "brew path resolution failed: brew not found at known paths or via which"));
        world.executable("first");
        QCOMPARE(world.resolve(), std::nullopt);
        QCOMPARE(world.shell.commands().size(), 1);
    }

    void concurrentCallersShareOneSearch() {
        World world;
        world.shell.hold("brew");
        world.resolver =
            std::make_unique<BrewPathResolver>(world.locations, world.preferences, world.shell, world.logger);
        auto one = world.resolver->resolve();
        auto two = world.resolver->resolve();
        QCOMPARE(world.shell.commands().size(), 1);
        world.shell.release("brew", "/x/brew\n");
        QCOMPARE(await(std::move(one)), "/x/brew");
        QCOMPARE(await(std::move(two)), "/x/brew");
        QCOMPARE(world.resolve(), "/x/brew"); // and a third gets the same, not an emptied answer
    }

    void anOverrideNamedDuringTheSearchCounts() {
        World world;
        world.executable("mine");
        world.shell.hold("brew");
        world.resolver =
            std::make_unique<BrewPathResolver>(world.locations, world.preferences, world.shell, world.logger);
        auto one = world.resolver->resolve();
        world.preferences.set(keys::brewPathOverride, world.path("mine"));
        world.shell.release("brew", "/x/brew\n");
        QCOMPARE(await(std::move(one)), world.path("mine"));
    }
};

QTEST_GUILESS_MAIN(BrewPathResolverTest)
#include "BrewPathResolver_test.moc"
