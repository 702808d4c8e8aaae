#include "tests/support/OperationWorld.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

/// Operations that report success, and what is on the disk afterwards.
class StateCheckTest : public QObject {
    Q_OBJECT

    static QStringList warnings(const OperationWorld &world) {
        QStringList found;
        for (const QString &line : world.sink->lines())
            if (line.startsWith("==> Warning: Homebrew reported success, but "))
                found.append(line.section("but ", 1));
        return found;
    }

  private Q_SLOTS:
    void whatIsNotSoIsSaid_data() {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        QTest::addColumn<QString>("warning");
        const auto row = [](const char *name, const char *kind, const char *command, const char *before,
                            const char *after, const char *warning) {
            QTest::newRow(name) << QString(kind) << QString(command) << QString(before) << QString(after)
                                << QString(warning);
        };
        row("installed", "install", "install x", "", "2", "");
        row("not installed", "install", "install x", "", "", "x is not installed.");
        row("upgraded", "upgrade", "upgrade --formula x", "1", "2", "");
        row("with a revision", "upgrade", "upgrade --formula x", "1", "2_1", "");
        row("not upgraded", "upgrade", "upgrade --formula x", "1", "1", "x is not at 2: what is there is 1.");
        row("gone", "upgrade", "upgrade --formula x", "1", "", "x is not installed.");
        row("removed", "uninstall", "uninstall x", "1", "", "");
        row("not removed", "uninstall", "uninstall x", "1", "1", "x is still installed: 1.");
        row("not pinned", "pin", "pin x", "1", "1", "x is not pinned.");
    }
    void whatIsNotSoIsSaid() {
        QFETCH(QString, kind);
        QFETCH(QString, command);
        QFETCH(QString, before);
        QFETCH(QString, after);
        QFETCH(QString, warning);
        OperationWorld world;
        if (!before.isEmpty())
            world.addFormula("x", before);
        world.shell.answerOnce(command, "fine\n", 0, [&] {
            world.remove("Cellar/x");
            if (!after.isEmpty())
                world.addFormula("x", after);
        });
        PackageTarget package{.name = "tap/repo/x"};
        package.name = "x";
        package.installedVersion = before;
        if (kind == "upgrade")
            package.latestVersion = "2";
        const auto report = world.perform(kind, {package});
        QCOMPARE(warnings(world), warning.isEmpty() ? QStringList() : QStringList{warning});
        const bool isThereInPart = warning.contains("what is there is") || warning.contains("is unchanged");
        const auto outcome = warning.isEmpty() ? OperationOutcome::Succeeded
                             : isThereInPart   ? OperationOutcome::CompletedWithWarnings
                                               : OperationOutcome::Failed;
        QCOMPARE(report.outcome(), outcome);
    }

    void anAliasCountsAsItsFormula() {
        OperationWorld world;
        world.shell.answerOnce("install python", "fine\n", 0, [&] {
            world.addFormula("python@3.13", "3.13.1");
            QDir().mkpath(world.prefix() + "/opt");
            QFile::link("../Cellar/python@3.13/3.13.1", world.prefix() + "/opt/python");
        });
        QVERIFY(!world.perform("install", {{"python", false}}).failure);
        QCOMPARE(warnings(world), QStringList());
    }

    void upToDateRunsNothing() {
        OperationWorld world;
        const auto report =
            world.perform("upgrade", {{.name = "x", .installedVersion = "1.2", .latestVersion = "1.2"}});
        QVERIFY(world.shell.commands().isEmpty());
        QCOMPARE(world.sink->lines(),
                 QStringList{"==> x is already up to date (installed 1.2, latest 1.2). No "
                             "changes were made."});
        QCOMPARE(report.count(PackageEnd::Done), 1);
    }

    void aPinnedPackageIsHeldAgainWhateverHappens() {
        OperationWorld world;
        world.addFormula("x", "1");
        world.shell.answer("unpin x", {});
        bool isNoted = false; // for the next start, should the program die now
        world.shell.answerOnce("upgrade --formula x", "Error: no\n", 1,
                               [&] { isNoted = world.notes().size() == 1; });
        world.shell.answer("pin x", {});
        const auto report = world.perform(
            "upgrade", {{.name = "x", .installedVersion = "1", .latestVersion = "2", .isPinned = true}});
        QCOMPARE(world.changes(), QStringList({"unpin x", "upgrade --formula x", "pin x"}));
        QVERIFY(isNoted && world.notes().isEmpty());
        QCOMPARE(report.count(PackageEnd::Failed), 1);
    }

    void aPinThatDoesNotComeBackIsSaidAndTriedAgain() {
        OperationWorld world;
        world.addFormula("x", "1");
        world.shell.answer("unpin x", {});
        world.shell.answerOnce("upgrade --formula x", {}, 0, [&] { world.addFormula("x", "2"); });
        world.shell.answerOnce("pin x", "Error: no\n", 1);
        const PackageTarget held{
            .name = "x", .installedVersion = "1", .latestVersion = "2", .isPinned = true};
        const auto report = world.perform("upgrade", {held});
        QVERIFY(report.hasWarnings);
        QVERIFY(world.sink->transcript.text().contains(
            "==> Warning: x was pinned and could not be pinned again."));
        world.shell.answer("pin x", {});
        world.shell.answer("install y", {});
        QVERIFY(!world.perform("install", {{"y"}}).failure); // the next operation
        QVERIFY(world.changes().count("pin x") == 2 && world.notes().isEmpty());
    }

    void aStopDuringTheUpgradeBringsThePinBack() {
        OperationWorld world;
        world.addFormula("x", "1");
        world.shell.answer("unpin x", {});
        world.shell.answer("pin x", {});
        world.shell.hold("upgrade --formula x");
        StopSource stop;
        QTimer::singleShot(50, [&stop] { stop.request_stop(); });
        const PackageTarget held{
            .name = "x", .installedVersion = "1", .latestVersion = "2", .isPinned = true};
        const auto report = world.perform(world.operation("upgrade", {held}), stop.get_token());
        QVERIFY(report.wasStopped());
        QVERIFY(world.changes().contains("pin x") && world.notes().isEmpty());
    }

    void runningServicesOfWhatWasUpgradedAreNamed() {
        OperationWorld world;
        for (const char *name : {"db", "cache", "other"})
            world.addFormula(name, "1");
        world.shell.answer(
            "services list --json",
            "[{\"name\":\"db\",\"status\":\"started\"},{\"name\":\"cache\",\"status\":\"none\"},"
            "{\"name\":\"other\",\"status\":\"started\"}]");
        world.shell.answerOnce("upgrade", "fine\n", 0, [&] {
            world.addFormula("db", "2");
            world.addFormula("cache", "2");
        });
        const auto report = world.perform("upgrade all", {});
        QCOMPARE(report.servicesToRestart, QStringList{"db"});
    }

    void oclpModeReplacesTheScriptForOneUpgrade_data() {
        QTest::addColumn<int>("exitCode");
        QTest::newRow("success") << 0;
        QTest::newRow("failure") << 1;
    }
    void oclpModeReplacesTheScriptForOneUpgrade() {
        QFETCH(int, exitCode);
        OperationWorld world;
        world.addCask("x", "1");
        world.preferences.set(keys::useReinstallForCasks, true);
        const QString folder = world.prefix() + "/Library/Homebrew/cask/utils";
        QDir().mkpath(folder);
        const QString script = folder + "/copy-xattrs.swift";
        Fixture::write(script, "original");
        world.shell.answerOnce("reinstall --cask x", "Error: odd\n", exitCode,
                               [&] { QCOMPARE(Fixture::read(script), "import Foundation\nexit(0)\n"); });
        QVERIFY(!world.perform("upgrade", {{"x", true}}).failure);
        QCOMPARE(Fixture::read(script), "original");
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden), QStringList{"copy-xattrs.swift"});
        QVERIFY(world.logText().contains(
            "[Larkspur] OCLP mode: temporarily disabled copy-xattrs to avoid listxattr errors"));
    }
};

QTEST_GUILESS_MAIN(StateCheckTest)
#include "StateCheck_test.moc"
