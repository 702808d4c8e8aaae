#include "operations/packages/TerminalCommand.h"
#include "operations/plan/DryRun.h"
#include "tests/support/OperationWorld.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;
using Role = PlannedChange::Role;

class OperationPlannerTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        OperationPlan plan(const QString &kind, const QList<PackageTarget> &targets) {
            const OperationPtr planned = operation(kind, targets);
            return await(planned->plan({}));
        }
    };

  private Q_SLOTS:
    void readsADryRun() {
        OperationPlan plan;
        readDryRun("==> Would upgrade 2 dependencies for topper:\nacme/tools/liblow  1.1 -> 1.2\n"
                   "shared 1.0, 1.1 -> 2.0\n==> Would upgrade 2 outdated packages\n"
                   "acme/tools/topper 1.1 -> 1.2\nshared 1.0, 1.1 -> 2.0\n"
                   "==> Would upgrade 1 dependent of upgraded formulae:\nroof 3 -> 4\n"
                   "Download Size: 12.5MB\nno arrow here\n",
                   plan);
        QCOMPARE(plan.changes, (QList<PlannedChange>{{"acme/tools/liblow", "1.1", "1.2", Role::Dependency},
                                                     {"shared", "1.0, 1.1", "2.0", Role::Named},
                                                     {"acme/tools/topper", "1.1", "1.2", Role::Named},
                                                     {"roof", "3", "4", Role::Dependent}}));
        QCOMPARE(*plan.downloadSize, "12.5MB");
    }

    void aMixedUpgradeAsksForEachKind() {
        World world;
        world.shell.answer("upgrade --dry-run --formula a",
                           "==> Would upgrade 1 outdated package\na 1 -> 2\n");
        world.shell.answer("upgrade --dry-run --cask b", "==> Would upgrade 1 outdated package\nb 1 -> 2\n");
        world.shell.answer(
            "info --installed --cask --json=v2",
            "{\"formulae\":[],\"casks\":[{\"token\":\"b\",\"version\":\"2\",\"installed\":\"1\","
            "\"artifacts\":[{\"pkg\":[\"b.pkg\"]}]}]}");
        const OperationPlan plan = world.plan("upgrade", {{"a", false}, {"b", true}});
        QCOMPARE(plan.changes.size(), 2);
        QCOMPARE(plan.privileged, QStringList{"b"});
        QVERIFY(plan.failure.isEmpty());
    }

    void aRemovalNamesWhoNeedsIt() {
        World world;
        world.shell.answer("uses --installed a", "acme/tools/b\nc\n");
        world.shell.answer("uses --installed b", "");
        const OperationPlan plan = world.plan("uninstall", {{"a", false, "1"}, {"b", false, "2"}});
        QCOMPARE(plan.dependents, QStringList{"c"}); // b goes too
        QCOMPARE(describePlan(plan), QStringList({"a 1", "b 2", "Still needed by c"}));
    }

    void aFailureIsPartOfThePlan() {
        World world;
        world.shell.answer("upgrade --dry-run --formula a", {}, 1, "Error: No available formula\n");
        QVERIFY(world.plan("upgrade", {{"a", false}}).failure.contains("No available formula"));
        QVERIFY(!world.plan("upgrade", {{"--evil", false}}).failure.isEmpty());
    }

    void aPinnedPackageIsNoFailure() {
        World world;
        world.shell.answer("upgrade --dry-run --formula a", {}, 1,
                           "Error: a is pinned. You must unpin it.\n");
        const OperationPlan plan = world.plan(
            "upgrade", {{.name = "a", .installedVersion = "1", .latestVersion = "2", .isPinned = true}});
        QVERIFY(plan.failure.isEmpty());
        QCOMPARE(plan.pinned, QStringList{"a"});
        QCOMPARE(plan.changes.size(), 1);
    }

    void commandsForATerminal() {
        World world;
        const auto command = [&](const QString &kind, const QList<PackageTarget> &targets) {
            return world.operation(kind, targets)->terminalCommand();
        };
        QCOMPARE(command("upgrade", {{"a", true}}), "brew upgrade --cask a");
        QCOMPARE(command("upgrade", {{"a", false}}), "brew upgrade a");
        QCOMPARE(command("uninstall", {{"a", false}, {"b", false}}), "brew uninstall a b");
        QCOMPARE(command("upgrade all", {{"a", true}}), "brew upgrade");
        QCOMPARE(command("rollback", {{"a", false}}), ""); // no single command does it
        QCOMPARE(restartServices(world.packages, {"db"})->terminalCommand(), "brew services restart db");
        // What ends in a shell is never built from a name that means more than a name.
        QCOMPARE(command("install", {{"a; rm -rf ~", true}}), "brew install --cask <package-name>");
        QVERIFY(lacksPackageName(command("install", {})));
    }
};

QTEST_GUILESS_MAIN(OperationPlannerTest)
#include "OperationPlanner_test.moc"
