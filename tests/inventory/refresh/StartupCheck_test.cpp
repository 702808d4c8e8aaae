#include "inventory/queries/InventoryQueries.h"
#include "inventory/refresh/PackageSizes.h"
#include "inventory/refresh/StartupCheck.h"
#include "tests/support/BrewWorld.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

class StartupCheckTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void outcomes_data() {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<QByteArray>("errors");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<int>("outcome");
        const int ready = static_cast<int>(StartupOutcome::Ready);
        const int xcode = static_cast<int>(StartupOutcome::XcodeSetupRequired);
        QTest::newRow("fine") << QByteArray("Homebrew 6.0.18-dirty\nHomebrew/homebrew-core (git)\n")
                              << QByteArray() << 0 << ready;
        QTest::newRow("shims") << QByteArray()
                               << QByteArray("xcrun: error: invalid active developer path (/x)\n") << 1
                               << xcode;
        QTest::newRow("tools") << QByteArray() << QByteArray("Install the Command Line Tools\n") << 1
                               << xcode;
        QTest::newRow("licence") << QByteArray()
                                 << QByteArray("Error: You have not agreed to the Xcode license.\n") << 1
                                 << xcode;
        QTest::newRow("another failure shows in the queries")
            << QByteArray() << QByteArray("Error: odd\n") << 1 << ready;
    }
    void outcomes() {
        QFETCH(QByteArray, output);
        QFETCH(QByteArray, errors);
        QFETCH(int, exitCode);
        QFETCH(int, outcome);
        BrewWorld world;
        InventoryState state;
        StartupCheck check(world.resolver, world.brew, state, world.preferences);
        world.shell.answer("--version", output, exitCode, errors);
        QCOMPARE(static_cast<int>(await(check.run())), outcome);
        if (!output.isEmpty()) {
            QCOMPARE(state.value().brewVersion, "6.0.18-dirty");
            QCOMPARE(world.preferences.string(keys::lastKnownHomebrewVersion), "6.0.18-dirty");
        }
    }

    void withoutBrew() {
        BrewWorld world;
        QFile::remove(world.path("brew"));
        InventoryState state;
        StartupCheck check(world.resolver, world.brew, state, world.preferences);
        QVERIFY(await(check.run()) == StartupOutcome::BrewNotInstalled);
        QVERIFY(!state.value().brewPath);
    }

    void sizesAreReadByPath() {
        BrewWorld world;
        InventoryState state;
        InventoryQueries queries(world.brew, world.preferences, world.logger);
        PackageSizes sizes(world.shell, queries, state, world.logger);
        Formula formula;
        formula.name = "a b";
        Cask cask;
        cask.token = "c";
        state.update([&](Inventory &inventory) {
            inventory.brewPrefix = "/p";
            inventory.installedFormulae = {formula};
            inventory.installedCasks = {cask};
        });
        const QByteArray output = "12\t/p/Cellar/a b\n4\t/p/Caskroom/c\n";
        world.shell.answer("-sk /p/Cellar/a b /p/Caskroom/c", output, 0);
        world.shell.answer("-sk /p/Caskroom/c /p/Cellar/a b", output, 0);
        await(sizes.measure());
        QCOMPARE(state.value().packageInstalledSizes.value({"a b", false}), 12 * 1024);
        QCOMPARE(state.value().packageInstalledSizes.value({"c", true}), 4 * 1024);
        QVERIFY(state.value().hasLoadedPackageSizes && !state.value().isLoadingPackageSizes);
        // More than fit into one command line.
        QList<Formula> many(101, formula);
        for (int i = 0; i < many.size(); ++i)
            many[i].name = QString("f%1").arg(i);
        state.update([&](Inventory &inventory) {
            inventory.installedFormulae = many;
            inventory.installedCasks = {};
        });
        world.shell.onAny = [](const ShellCommand &command) {
            QByteArray text;
            for (const QString &path : command.arguments.mid(1))
                text += "8\t" + path.toUtf8() + '\n';
            return text;
        };
        await(sizes.measure());
        for (const Formula &each : many)
            QCOMPARE(state.value().packageInstalledSizes.value({each.name, false}), 8 * 1024);
        QVERIFY(sizesFromDu("du: cannot read\nx\t/y\n").isEmpty());
    }
};

QTEST_GUILESS_MAIN(StartupCheckTest)
#include "StartupCheck_test.moc"
