#include "operations/PackageCommands.h"
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
        QTest::addColumn<int>("kind");
        QTest::addColumn<bool>("isCask");
        QTest::addColumn<QString>("line");
        const auto row = [](OperationKind kind, bool isCask, const QString &line) {
            QTest::newRow(qPrintable(line)) << static_cast<int>(kind) << isCask << line;
        };
        row(OperationKind::Install, false, "install x");
        row(OperationKind::Install, true, "install --cask x");
        row(OperationKind::Upgrade, false, "upgrade --formula x");
        row(OperationKind::Upgrade, true, "upgrade --cask x");
        row(OperationKind::Reinstall, false, "reinstall x");
        row(OperationKind::Reinstall, true, "reinstall --cask x");
        row(OperationKind::Pin, false, "pin x");
        row(OperationKind::Unpin, true, "unpin --cask x");
        row(OperationKind::Uninstall, false, "uninstall x");
        row(OperationKind::Uninstall, true, "uninstall --cask x");
    }
    void commandLines() {
        QFETCH(int, kind);
        QFETCH(bool, isCask);
        QFETCH(QString, line);
        World world;
        world.shell.answer(line, {});
        QVERIFY(world.perform(static_cast<OperationKind>(kind), {{"x", isCask}}));
        QCOMPARE(world.changes(), QStringList{line});
        const bool downloads = !QStringList({"uninstall", "pin", "unpin"}).contains(line.section(' ', 0, 0));
        QCOMPARE(world.shell.commands().at(world.shell.commandLines().indexOf(line)).mode,
                 downloads ? RunMode::Terminal : RunMode::Stream);
    }

    void installFlagsAreForCasks() {
        OperationRequest request{.kind = OperationKind::Install, .adopt = true, .force = true};
        QCOMPARE(brewArguments(request, {"x", true}).words(),
                 QStringList({"install", "--cask", "--adopt", "--force", "x"}));
        QCOMPARE(brewArguments(request, {"x", false}).words(), QStringList({"install", "x"}));
        request.adopt = false;
        QCOMPARE(brewArguments(request, {"x", true}).words(),
                 QStringList({"install", "--cask", "--force", "x"}));
    }

    void adoptAndForceFallBackToForce() {
        World world;
        world.shell.answer("install --cask --adopt --force x", {}, 1,
                           "Error: Invalid usage: Options --adopt and --force are mutually exclusive.\n");
        world.shell.answer("install --cask --force x", "was successfully installed!\n");
        world.addCask("x", "1");
        const auto report = world.perform(
            {.kind = OperationKind::Install, .packages = {{"x", true}}, .adopt = true, .force = true});
        QCOMPARE(report->count(PackageEnd::Done), 1);
        QVERIFY(outcomeOf(world.sink->lines()) == OperationOutcome::Succeeded);
    }

    void whatIsDoneIsWrittenDown() {
        World world;
        world.shell.answer("uninstall a", {}, 1, "Error: needed\n");
        world.shell.answer("uninstall --cask b", {});
        world.shell.answer("reinstall c", "fine\n");
        world.shell.answer("pin c", {});
        world.perform(OperationKind::Uninstall, {{"a", false}, {"b", true}});
        world.addFormula("c", "1");
        world.perform(OperationKind::Reinstall, {{"c", false}});
        world.perform(OperationKind::Pin, {{"c", false}}); // changes nothing that is installed
        world.addFormula("d", "2");
        world.addFormula("e", "1");
        world.addFormula("f", "1");
        world.shell.answer("upgrade", "==> Upgrading 2 outdated packages\n");
        world.perform(OperationKind::UpgradeAll, {{"d", false, "1", "2"},
                                                  {"e", false, "1", "2"},
                                                  {"f", false, "1", "2", true}}); // the last one is pinned
        QStringList lines;
        for (const HistoryEntry &entry : world.userData.history())
            lines.prepend(historyActionName(entry.action) + ' ' + entry.packageName +
                          (entry.isCask ? " cask" : "") + (entry.success ? "" : " failed"));
        QCOMPARE(lines, QStringList({"uninstall a failed", "uninstall b cask", "install c", "upgrade d",
                                     "upgrade e failed"}));
    }

    void upgradeOfAllIsOneCommand() {
        World world;
        world.shell.answer("upgrade", "==> Upgraded 2 outdated packages\n");
        QVERIFY(world.perform(OperationKind::UpgradeAll, {}));
        QCOMPARE(world.changes(), QStringList{"upgrade"});
    }

    /// What is where is not known: nothing could be protected, so nothing is begun.
    void withoutThePrefixNothingIsDone() {
        OperationWorld world;
        world.shell.answer("--prefix", "", 137);
        const auto report = world.perform({.kind = OperationKind::UpgradeAll});
        QVERIFY(!report);
        QCOMPARE(world.changes(), QStringList());
    }

    void aBatchGoesOnAfterAFailure() {
        World world;
        world.shell.answer("uninstall a", {}, 1, "Error: needed\n");
        world.shell.answer("uninstall --cask b", {});
        const auto report = world.perform(OperationKind::Uninstall, {{"a", false}, {"b", true}});
        QCOMPARE(report->count(PackageEnd::Failed), 1);
        QCOMPARE(
            world.sink->lines(),
            QStringList({"==> Uninstalling a", "Error: needed", "Error uninstalling a", "==> Uninstalling b",
                         "Successfully uninstalled b", "==> 1 of 2 packages are done. Not done: a"}));
    }

    void aServiceIsRestarted() {
        World world;
        world.shell.answer("services restart db", "fine\n");
        QVERIFY(world.perform(OperationKind::RestartService, {{"db"}}));
        QCOMPARE(world.changes(), QStringList{"services restart db"});
    }

    void aStopEndsABatchBetweenItsPackages() {
        World world;
        StopSource stop;
        world.shell.answerOnce("uninstall a", {}, 0, [&stop] { stop.request_stop(); });
        const auto report =
            await(world.operations.perform({.kind = OperationKind::Uninstall, .packages = {{"a"}, {"b"}}},
                                           {.output = world.sink, .stop = stop.get_token()}));
        QVERIFY(!report && report.error().kind == BrewError::Kind::Stopped);
        QCOMPARE(world.changes(), QStringList{"uninstall a"}); // b was not begun
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
        const auto report = await(world.operations.perform(
            {.kind = OperationKind::Upgrade, .packages = {{"x", false, "1", "2", true}}},
            {.output = world.sink, .stop = stop.get_token()}));
        QVERIFY(!report && report.error().kind == BrewError::Kind::Stopped);
        QCOMPARE(world.changes().last(), "pin x");
        QVERIFY(world.notes().isEmpty());
    }

    void hostileNamesReachNoCommand() {
        World world;
        for (const char *name : {"--force", "a b", "a;b", "a\nb", "$(x)"}) {
            const auto report = world.perform(OperationKind::Install, {{"fine", false}, {name, false}});
            QCOMPARE(report.error(), BrewError::packageNotFound(name));
        }
        QVERIFY(world.shell.commands().isEmpty());
        QVERIFY(!world.brew.isBrewOperationRunning());
    }
};

QTEST_GUILESS_MAIN(PackageOperationsTest)
#include "PackageOperations_test.moc"
