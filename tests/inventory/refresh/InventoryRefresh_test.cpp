#include "inventory/cache/PackageCache.h"
#include "inventory/refresh/CaskEnrichment.h"
#include "inventory/refresh/InventoryRefresh.h"
#include "tests/support/BrewWorld.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

class InventoryRefreshTest : public QObject {
    Q_OBJECT

    struct World : BrewWorld {
        QDateTime now = QDateTime(QDate(2026, 11, 22), QTime(12, 0), Qt::UTC);
        InventoryQueries queries{brew, preferences, logger};
        PackageCache cache{path("Cache"), logger, [this] { return now; }};
        CaskEnrichment enrichment{{}};
        InventoryState state;
        InventoryRefresh refresh{queries, cache, enrichment, state, logger};

        World() {
            formulae({"a"});
            shell.answer("info --installed --cask --json=v2",
                         "{\"formulae\":[],\"casks\":[{\"token\":\"c\",\"name\":[],\"version\":\"1\"}]}");
            shell.answer("outdated --json=v2", "{\"formulae\":[],\"casks\":[]}");
            shell.answer("leaves", "a\n");
            shell.answer("list --pinned", "a\n");
            shell.answer("services list --json", "[]");
            shell.answer("tap", "acme/lab\n");
            shell.answer("tap-info --json acme/lab",
                         "[{\"name\":\"acme/lab\",\"installed\":true,\"official\":false,\"trusted\":false}]");
            shell.answer("trust --json=v1", "{\"taps\":[]}");
            shell.answer("list --full-name", "a\nacme/lab/secret\n");
            shell.answer("--prefix", folder.path().toUtf8() + QByteArray("\n"));
        }
        void formulae(const QStringList &names) {
            QStringList entries;
            for (const QString &name : names)
                entries.append("{\"name\":\"" + name + "\",\"installed\":[{\"version\":\"1\"}]}");
            shell.answer("info --installed --json=v2",
                         ("{\"formulae\":[" + entries.join(',') + "],\"casks\":[]}").toUtf8());
        }
        const Inventory &run() {
            await(refresh.refresh());
            return state.value();
        }
    };

  private Q_SLOTS:
    void fillsEveryList() {
        World world;
        const Inventory &inventory = world.run();
        QCOMPARE(inventory.installedFormulae.size(), 1);
        QCOMPARE(inventory.installedCasks.size(), 1);
        QCOMPARE(inventory.leafPackages, QSet<QString>{"a"});
        QCOMPARE(inventory.hiddenUntrustedTaps, QList<HiddenTap>({{"acme/lab", {"acme/lab/secret"}}}));
        QCOMPARE(inventory.trustedTaps, QSet<QString>());
        QVERIFY(inventory.hasLoaded && inventory.hasEnrichedCaskVersions);
        QVERIFY(!inventory.isLoading && !inventory.isRefreshing && inventory.refreshFailures.isEmpty());
        QCOMPARE(world.cache.loadFormulae()->data.size(), 1);
    }

    void aFailedQueryKeepsTheList() {
        World world;
        world.run();
        world.shell.answer("info --installed --json=v2", {}, 1, "Error: broken\n");
        world.shell.answer("outdated --json=v2", "{");
        const Inventory &inventory = world.run();
        QCOMPARE(inventory.installedFormulae.size(), 1);
        QCOMPARE(inventory.refreshFailures.size(), 2);
        QVERIFY(world.logText().contains("[Larkspur] Failed to load formulae: Error: broken"));
        QVERIFY(world.logText().contains("[Larkspur] Failed to load outdated: "));
        QVERIFY(!inventory.needsXcodeSetup && !inventory.isRefreshing);
    }

    void differentFailuresAreAllShownAndTheSameOneOnce() {
        World world;
        for (const char *query : {"leaves", "list --pinned"})
            world.shell.answer(query, {}, 1, "Error: broken\n");
        world.shell.answer("services list --json", {}, 1, "Error: no services here\n");
        QList<int> counts;
        for (const RepeatedError &error : world.run().refreshErrors)
            counts.append(error.count);
        QCOMPARE(counts, QList<int>({2, 1}));
    }

    void anUnknownTrustStateHidesNothing() {
        World world;
        world.shell.answer("trust --json=v1", {}, 1, "Error: Unknown command: brew trust\n");
        const Inventory &inventory = world.run();
        QVERIFY(!inventory.trustedTaps && inventory.hiddenUntrustedTaps.isEmpty());
        QVERIFY(inventory.refreshFailures.isEmpty());
        QVERIFY(world.logText().contains("Failed to run brew trust"));
    }

    void xcodeTroubleIsWhatHomebrewCallsAnError() {
        World world;
        const QByteArray refusal = "You have not agreed to the Xcode license.\n";
        world.shell.answer("outdated --json=v2", {}, 1, "Error: " + refusal);
        QVERIFY(world.run().needsXcodeSetup);
        world.shell.answer("outdated --json=v2", {}, 1, "Warning: " + refusal + "Error: broken\n");
        QVERIFY(!world.run().needsXcodeSetup);
        world.shell.answer("outdated --json=v2", "{\"formulae\":[],\"casks\":[]}");
        world.shell.answer("leaves", {}, 1, "Error: " + refusal); // the lists that matter are there
        QVERIFY(!world.run().needsXcodeSetup);
    }

    void anAnswerWithoutItsListIsNoEmptyList_data() {
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("no key") << QByteArray("{\"casks\":[]}");
        QTest::newRow("null") << QByteArray("{\"formulae\":null,\"casks\":[]}");
        QTest::newRow("nothing readable") << QByteArray("{\"formulae\":[{\"nome\":\"a\"},7],\"casks\":[]}");
    }
    void anAnswerWithoutItsListIsNoEmptyList() {
        QFETCH(QByteArray, answer);
        World world;
        world.run();
        world.shell.answer("info --installed --json=v2", answer);
        const Inventory &inventory = world.run();
        QCOMPARE(inventory.installedFormulae.size(), 1);
        QCOMPARE(inventory.refreshFailures.size(), 1);
        QCOMPARE(world.cache.loadFormulae()->data.size(), 1);
        QVERIFY(world.logText().contains("formulae"));
    }

    void whatCouldNotBeReadIsCounted() {
        World world;
        world.shell.answer("info --installed --json=v2",
                           "{\"formulae\":[{\"name\":\"a\",\"installed\":[{\"version\":\"1\"}]},{},3],"
                           "\"casks\":[]}");
        const Inventory &inventory = world.run();
        QCOMPARE(inventory.installedFormulae.size(), 1);
        QCOMPARE(inventory.unreadablePackages, 2);
        world.formulae({"a"});
        QCOMPARE(world.run().unreadablePackages, 0);
    }

    void requestsDuringARunAreMergedIntoOne() {
        World world;
        world.shell.hold("leaves");
        auto first = world.refresh.refresh();
        auto second = world.refresh.refresh();
        auto third = world.refresh.refresh();
        world.formulae({"a", "b"}); // changes after the first run has asked
        spinUntil([&] { return world.shell.running() == 1; });
        world.shell.release("leaves", "a\n");
        await(std::move(first));
        spinUntil([&] { return world.shell.running() == 1; });
        world.shell.release("leaves", "a\n");
        await(std::move(second));
        await(std::move(third));
        QCOMPARE(world.shell.commandLines().count("leaves"), 2);
        QCOMPARE(world.state.value().installedFormulae.size(), 2);
    }

    void showsTheCacheBeforeAnyBrewEvenExpired() {
        World world;
        world.run();
        world.now = world.now.addDays(3);
        InventoryState fresh;
        InventoryRefresh later(world.queries, world.cache, world.enrichment, fresh, world.logger);
        const auto before = world.shell.commands().size();
        later.showCache();
        QCOMPARE(fresh.value().installedFormulae.size(), 1);
        QVERIFY(fresh.value().isStale && fresh.value().hasLoaded);
        QCOMPARE(world.shell.commands().size(), before);
        world.shell.answer("outdated --json=v2", {}, 1, "Error: broken\n");
        await(later.refresh());
        QVERIFY(fresh.value().isStale); // what could not be read anew is as old as before
        world.shell.answer("outdated --json=v2", "{\"formulae\":[],\"casks\":[]}");
        await(later.refresh());
        QVERIFY(!fresh.value().isStale);
    }

    void answersFromBeforeAChangeAreNotCached() {
        World world;
        world.run();
        const QStringList held{"info --installed --json=v2", "info --installed --cask --json=v2",
                               "outdated --json=v2"};
        for (const QString &query : held)
            world.shell.hold(query);
        auto running = world.refresh.refresh();
        spinUntil([&] { return world.shell.running() > 0; }, 1s);
        world.refresh.invalidateCache(); // an operation begins meanwhile
        for (const QString &query : held) {
            QVERIFY(spinUntil([&] { return world.shell.isHeld(query); }));
            world.shell.release(query, "{\"formulae\":[{\"name\":\"old\",\"current_version\":\"1\"}],"
                                       "\"casks\":[]}");
        }
        await(std::move(running));
        QVERIFY(!world.cache.loadFormulae() && !world.cache.loadCasks() && !world.cache.loadOutdated());
    }

    void whatABundleSaidOfItsOldVersionIsForgotten() {
        World world;
        world.run();
        world.state.update([](Inventory &inventory) {
            inventory.installedCasks.first().actualVersion = "1.0";
            inventory.installedCasks.first().actualBuild = "100";
        });
        QCOMPARE(world.run().installedCasks.first().actualVersion, "1.0"); // the same version: still true
        world.shell.answer("info --installed --cask --json=v2",
                           "{\"formulae\":[],\"casks\":[{\"token\":\"c\",\"name\":[],\"version\":\"2\"}]}");
        QVERIFY(!world.run().installedCasks.first().actualVersion);
        QVERIFY(!world.state.value().installedCasks.first().actualBuild);
    }

    void aStoppedRefreshLeavesNoBusyFlag() {
        World world;
        for (const char *query : {"info --installed --json=v2", "outdated --json=v2"})
            world.shell.hold(query);
        StopSource stop;
        auto running = world.refresh.refresh(stop.get_token());
        stop.request_stop();
        await(std::move(running));
        QVERIFY(!world.state.value().isLoading && !world.state.value().isRefreshing);
        QCOMPARE(world.shell.running(), 0);
    }
};

QTEST_GUILESS_MAIN(InventoryRefreshTest)
#include "InventoryRefresh_test.moc"
