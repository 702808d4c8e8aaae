#include "operations/outcome/Verdict.h"
#include "tests/support/OperationWorld.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

class PackageOperationsTest : public QObject {
    Q_OBJECT

    using World = OperationWorld;

  private Q_SLOTS:
    void commandLines_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<bool>("isCask");
        QTest::addColumn<QString>("line");
        const auto row = [](const QString &kind, bool isCask, const QString &line) {
            QTest::newRow(qPrintable(line)) << kind << isCask << line;
        };
        row("install", false, "install x");
        row("install", true, "install --cask x");
        row("upgrade", false, "upgrade --formula x");
        row("upgrade", true, "upgrade --cask x");
        row("reinstall", false, "reinstall x");
        row("reinstall", true, "reinstall --cask x");
        row("pin", false, "pin x");
        row("unpin", true, "unpin --cask x");
        row("uninstall", false, "uninstall x");
        row("uninstall", true, "uninstall --cask x");
    }
    void commandLines() {
        QFETCH(QString, kind);
        QFETCH(bool, isCask);
        QFETCH(QString, line);
        World world;
        world.shell.answer(line, {});
        QVERIFY(!world.perform(kind, {{"x", isCask}}).failure);
        QCOMPARE(world.changes(), QStringList{line});
        const bool downloads = !QStringList({"uninstall", "pin", "unpin"}).contains(line.section(' ', 0, 0));
        QCOMPARE(world.shell.commands().at(world.shell.commandLines().indexOf(line)).mode,
                 downloads ? RunMode::Terminal : RunMode::Stream);
    }

    void installFlagsAreForCasks() {
        const InstallCommand both({.adopt = true, .force = true});
        QCOMPARE(both.arguments({"x", true}).words(),
                 QStringList({"install", "--cask", "--adopt", "--force", "x"}));
        QCOMPARE(both.arguments({"x", false}).words(), QStringList({"install", "x"}));
        QCOMPARE(InstallCommand({.force = true}).arguments({"x", true}).words(),
                 QStringList({"install", "--cask", "--force", "x"}));
    }

    void adoptAndForceFallBackToForce() {
        World world;
        world.shell.answer("install --cask --adopt --force x", {}, 1,
                           "Error: Invalid usage: Options --adopt and --force are mutually exclusive.\n");
        world.shell.answer("install --cask --force x", "was successfully installed!\n");
        world.addCask("x", "1");
        const auto report =
            world.perform(installPackages(world.packages, {{"x", true}}, {.adopt = true, .force = true}));
        QCOMPARE(report.count(PackageEnd::Done), 1);
        QVERIFY(outcomeOf(world.sink->lines()) == OperationOutcome::Succeeded);
    }

    void whatWasDoneIsReportedPackageByPackage() {
        World world;
        for (const char *name : {"d", "e", "f", "g"})
            world.addFormula(name, "1");
        const QList<PackageTarget> outdated{{"d", false, "1", "2"},
                                            {"e", false, "1", "2"},
                                            {"f", false, "1", "2", true}, // pinned
                                            {"g", false, "1", "2"}};
        world.shell.answerOnce("upgrade", "==> Upgrading e\n==> Upgrading g\nother\nError: e: no room\n", 1,
                               [&] { world.addFormula("d", "2"); });
        const auto failed = world.perform("upgrade all", outdated);
        QCOMPARE(failed.tally(), "1 done, 2 failed");
        QCOMPARE(failed.packages[1].lines, QStringList({"==> Upgrading e", "Error: e: no room"}));
        QCOMPARE(summarizeFailure(failed, {}).text, "e: Error: e: no room\ng: ==> Upgrading g\nother");
        // Nobody gives the password that e wants; that is not why g failed.
        connect(&world.sudoAuth, &SudoAuth::changed, this, [&] { world.sudoAuth.cancel(); });
        world.shell.answerOnce(
            "upgrade", "==> Upgrading e\nsudo: a password is required\n==> Upgrading g\nError: g: no\n", 1);
        const auto cancelled = world.perform("upgrade all", outdated);
        QCOMPARE(cancelled.tally(), "1 done, 1 failed, 1 cancelled");
        QCOMPARE(cancelled.packages[2].lines.last(), "Error: g: no");
        // Homebrew knows nothing to do, and yet they are outdated.
        world.shell.answerOnce("upgrade", {}, 0, [&] { world.addFormula("g", "1.5"); });
        const auto idle = world.perform("upgrade all", outdated);
        QVERIFY(idle.packages[0].isDone() && idle.packages[1].end == PackageEnd::Failed);
        QVERIFY(idle.packages[2].end == PackageEnd::DoneWithWarnings);
        QVERIFY(world.sink->lines().contains(
            "==> Warning: Homebrew reported success, but e is not at 2: what is there is 1."));
    }

    /// What one command for all cannot do, the casks' own commands do.
    void casksOfAnUpgradeOfAllHaveTheirRetries() {
        World world;
        const auto become = [&world](const QString &version) {
            world.remove("Caskroom/x");
            world.addCask("x", version);
        };
        world.addCask("x", "1");
        const QList<PackageTarget> outdated{{"x", true, "1", "2"}};
        const QByteArray blocked = "Error: x: It seems there is already an App at '/a/x.app'.\n";
        world.shell.answer("upgrade", blocked, 1);
        world.shell.answer("upgrade --cask x", blocked, 1);
        world.shell.answerOnce("reinstall --cask --force x", "fine\n", 0, [&] { become("2"); });
        QCOMPARE(world.perform("upgrade all", outdated).outcome(), OperationOutcome::Succeeded);
        become("1");
        world.preferences.set(keys::useReinstallForCasks, true);
        world.shell.answer("upgrade --formula", {});
        world.shell.answerOnce("reinstall --cask x", "fine\n", 0, [&] { become("2"); });
        QCOMPARE(world.perform("upgrade all", outdated).outcome(), OperationOutcome::Succeeded);
        world.preferences.set(keys::useReinstallForCasks, false);
        world.preferences.set(keys::includeAutoUpdateCasks, true);
        world.shell.answer("upgrade --greedy-auto-updates", {});
        QCOMPARE(world.perform("upgrade all", outdated).tally(), "1 done");
        QCOMPARE(world.changes().filter("upgrade"),
                 QStringList(
                     {"upgrade", "upgrade --cask x", "upgrade --formula", "upgrade --greedy-auto-updates"}));
    }

    void upgradeOfAllIsOneCommand() {
        World world;
        world.shell.answer("upgrade", "==> Upgraded 2 outdated packages\n");
        QVERIFY(!world.perform("upgrade all", {}).failure);
        QCOMPARE(world.changes(), QStringList{"upgrade"});
    }

    /// What is where is not known: nothing could be protected, so nothing is begun.
    void withoutThePrefixNothingIsDone() {
        OperationWorld world;
        world.shell.answer("--prefix", "", 137);
        QVERIFY(world.perform("upgrade all", {}).failure);
        QCOMPARE(world.changes(), QStringList());
    }

    void aBatchGoesOnAfterAFailure() {
        World world;
        world.shell.answer("uninstall a", {}, 1, "Error: needed\n");
        world.shell.answer("uninstall --cask b", {});
        const auto report = world.perform("uninstall", {{"a", false}, {"b", true}});
        QCOMPARE(report.count(PackageEnd::Failed), 1);
        QCOMPARE(
            world.sink->lines(),
            QStringList({"==> Uninstalling a", "Error: needed", "Error uninstalling a", "==> Uninstalling b",
                         "Successfully uninstalled b", "==> 1 of 2 packages are done. Not done: a"}));
    }

    /// What needs another goes first, and what autoremove took along is gone.
    void removalsAreOrdered() {
        World world;
        for (const char *name : {"lib", "mid", "top"})
            world.addFormula(name, "1");
        const QByteArray formulae =
            "{\"formulae\":[{\"name\":\"top\",\"full_name\":\"top\",\"dependencies\":[\"mid\"],"
            "\"installed\":[{\"version\":\"1\"}]},{\"name\":\"mid\",\"full_name\":\"mid\",\"dependencies\":"
            "[\"lib\"],\"installed\":[{\"version\":\"1\"}]},{\"name\":\"lib\",\"full_name\":\"lib\","
            "\"dependencies\":[],\"installed\":[{\"version\":\"1\"}]}],\"casks\":[]}";
        world.shell.answer("info --installed --json=v2", formulae);
        world.shell.answerOnce("uninstall top", {}, 0, [&] { world.remove("Cellar/top"); });
        world.shell.answerOnce("uninstall mid", {}, 0, [&] {
            world.remove("Cellar/mid");
            world.remove("Cellar/lib");
        });
        const auto report = world.perform("uninstall", {{"lib"}, {"mid"}, {"top"}});
        QCOMPARE(world.changes().filter("uninstall"), QStringList({"uninstall top", "uninstall mid"}));
        QCOMPARE(report.count(PackageEnd::Done), 3);
    }

    void aServiceIsRestarted() {
        World world;
        world.shell.answer("services restart db", "fine\n");
        QVERIFY(!world.perform(restartServices(world.packages, {"db"})).failure);
        QCOMPARE(world.changes(), QStringList{"services restart db"});
    }

    void aStopEndsABatchBetweenItsPackages() {
        World world;
        world.addFormula("a", "1");
        world.addFormula("b", "1");
        StopSource stop;
        world.shell.answer("info --installed --json=v2", {}, 1); // then they are taken as they come
        world.shell.answerOnce("uninstall a", {}, 0, [&stop] { stop.request_stop(); });
        const auto report = world.perform(world.operation("uninstall", {{"a"}, {"b"}}), stop.get_token());
        QVERIFY(report.wasStopped());
        QCOMPARE(world.changes().filter("uninstall"), QStringList{"uninstall a"}); // b was not begun
    }

    void aStopPutsThePinBack_data() {
        QTest::addColumn<QString>("stoppedAt");
        for (const char *command : {"unpin x", "upgrade --formula x"})
            QTest::newRow(command) << command;
    }
    void aStopPutsThePinBack() {
        QFETCH(QString, stoppedAt);
        World world;
        world.addFormula("x", "1");
        StopSource stop;
        world.shell.answer("unpin x", {});
        world.shell.answer("pin x", {});
        world.shell.answerOnce(stoppedAt, {}, -1, [&stop] { stop.request_stop(); });
        const auto report =
            world.perform(world.operation("upgrade", {{"x", false, "1", "2", true}}), stop.get_token());
        QVERIFY(report.wasStopped());
        QCOMPARE(world.changes().last(), "pin x");
        QVERIFY(world.notes().isEmpty());
    }

    void hostileNamesReachNoCommand() {
        World world;
        for (const char *name : {"--force", "a b", "a;b", "a\nb", "$(x)"}) {
            const auto report = world.perform("install", {{"fine", false}, {name, false}});
            QCOMPARE(*report.failure, BrewError::packageNotFound(name));
        }
        QVERIFY(world.shell.commands().isEmpty());
        QVERIFY(!world.brew.isBrewOperationRunning());
    }
};

QTEST_GUILESS_MAIN(PackageOperationsTest)
#include "PackageOperations_test.moc"
