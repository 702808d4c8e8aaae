#include "operations/snapshots/RestorePlan.h"
#include "tests/support/OperationWorld.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

/// Restores on a prefix of real folders and a scripted brew.
class RestoreSnapshotTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        QUuid point;

        /// Then: formula a, cask c, a tap. Now: formula b and cask d beside a; c and the tap are gone.
        explicit World(bool isNeeded = false) {
            addFormula("a", "1");
            addCask("c", "1");
            shell.answer("tap", "homebrew/core\nacme/tools\n");
            point = await(snapshots.take(SnapshotTrigger::Manual))->id;
            addFormula("b", "1");
            addCask("d", "1");
            remove("Caskroom/c");
            shell.answer("tap", "homebrew/core\n");
            shell.answer("tap acme/tools", "Tapped\n");
            // Brew does what it says; b may be needed by something.
            shell.answerOnce("install --cask c", "c was successfully installed!\n", 0,
                             [this] { addCask("c", "1"); });
            if (isNeeded)
                shell.answer("uninstall b", {}, 1, "Error: needed\n");
            else
                shell.answerOnce("uninstall b", "Uninstalling b\n", 0, [this] { remove("Cellar/b"); });
            shell.answerOnce("uninstall --cask d", "Uninstalling d\n", 0, [this] { remove("Caskroom/d"); });
        }
        OperationReport restore(bool removesAdded, StopToken stop = {}) {
            return perform(restoreSnapshot(packages, {.snapshot = point, .removesAdded = removesAdded}),
                           std::move(stop));
        }
        /// Somebody has damaged an entry of the restore point.
        void damage(const QString &from, const QString &to) {
            const QString file = path("snapshots") + '/' + QDir(path("snapshots")).entryList(QDir::Files)[0];
            Fixture::write(file, Fixture::read(file).replace(from, to).toUtf8());
            await(snapshots.load());
        }
        QStringList steps() const {
            return changes().filter(QRegularExpression("^(tap|install|uninstall) "));
        }
    };

  private Q_SLOTS:
    void stepsInTheirOrder() {
        World world;
        QVERIFY(!world.restore(false).failure);
        QCOMPARE(world.steps(), QStringList({"tap acme/tools", "install --cask c"}));
        QCOMPARE(world.sink->lines().last(), "==> Restore complete.");
        World thorough;
        QVERIFY(!thorough.restore(true).failure);
        QCOMPARE(thorough.steps(),
                 QStringList({"tap acme/tools", "install --cask c", "uninstall b", "uninstall --cask d"}));
        const QStringList lines = thorough.sink->lines();
        QVERIFY(lines.contains("==> Adding tap acme/tools") && lines.contains("==> Reinstalling c"));
        QVERIFY(lines.contains("==> Removing 1 formula(e) added since the snapshot..."));
        QVERIFY(lines.contains("==> Removing 1 cask(s) added since the snapshot..."));
    }

    void whatNobodyWasShownIsLeftAlone() {
        World world;
        const auto now = await(world.snapshots.current());
        RestoreOrder order{.snapshot = world.point, .removesAdded = true, .rollsBackVersions = true};
        order.agreed = agreementTo(planRestore(*world.snapshots.find(world.point), *now, world.kegs));
        world.addFormula("n", "1"); // installed between the look and the lock
        world.addCask("b", "1");    // of the name that was agreed to, and another thing
        world.remove("Cellar/a");
        world.remove("Caskroom/d"); // agreed to, and gone without us
        const auto report = world.perform(restoreSnapshot(world.packages, order));
        QVERIFY(report.hasWarnings);
        QCOMPARE(world.steps(), QStringList({"tap acme/tools", "install --cask c", "uninstall b"}));
        QVERIFY(world.sink->lines().contains(
            "==> Warning: Changed since the restore was shown, so left alone: a, n, b (cask)"));
        order.removesAdded = false; // then it is no change that n and the cask b stay
        world.addFormula("a", "1");
        world.perform(restoreSnapshot(world.packages, order));
        QCOMPARE(world.sink->lines().filter("left alone: ").size(), 1);
    }

    void whatFailsIsNamedAndTheRestIsDone() {
        World world(true);
        world.shell.answer("tap acme/tools", {}, 1, "Error: no such tap\n");
        const auto report = world.restore(true);
        QCOMPARE(report.count(PackageEnd::Failed), 2);
        QCOMPARE(world.steps().size(), 4);
        QCOMPARE(world.sink->lines().last(),
                 "==> Restore incomplete. Not done: tap acme/tools, b. Start it again to do the rest.");
    }

    void aStopSaysWhatIsDone_data() {
        QTest::addColumn<QString>("during");
        QTest::addColumn<QString>("done");
        QTest::newRow("tap") << "tap acme/tools" << "nothing";
        QTest::newRow("install") << "install --cask c" << "tap acme/tools";
        QTest::newRow("removal") << "uninstall b" << "tap acme/tools, c";
    }
    void aStopSaysWhatIsDone() {
        QFETCH(QString, during);
        QFETCH(QString, done);
        World world;
        world.shell.hold(during);
        OperationRun *run = world.center.start(
            restoreSnapshot(world.packages, {.snapshot = world.point, .removesAdded = true}));
        QVERIFY(spinUntil([&] { return world.shell.running() == 1 && world.steps().contains(during); }));
        run->stop();
        world.shell.release(during, {}, 143);
        QVERIFY(spinUntil([&] { return !run->isRunning(); }));
        QVERIFY(run->wasStopped());
        QCOMPARE(world.steps().last(), during); // nothing is begun after it
        QCOMPARE(run->transcript().lines().at(run->transcript().lines().size() - 2),
                 "==> Restore interrupted. Done: " + done + ". Start it again to do the rest.");
    }

    void aDamagedListRemovesNothingOfItsKind_data() {
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QStringList>("steps");
        QTest::addColumn<QString>("said");
        QTest::newRow("formulae") << "\"name\": \"a\"" << "\"name\": \"b/\""
                                  << QStringList{"tap acme/tools", "install --cask c", "uninstall --cask d"}
                                  << "no formula is removed";
        QTest::newRow("casks") << "\"name\": \"c\"" << "\"name\": \"--c\""
                               << QStringList{"tap acme/tools", "uninstall b"} << "no cask is removed";
        QTest::newRow("taps") << "acme/tools" << "--force"
                              << QStringList{"install --cask c", "uninstall b", "uninstall --cask d"}
                              << "this is no name of a tap";
    }
    void aDamagedListRemovesNothingOfItsKind() {
        QFETCH(QString, from);
        QFETCH(QString, to);
        QFETCH(QStringList, steps);
        QFETCH(QString, said);
        World world;
        world.damage(from, to);
        const auto report = world.restore(true);
        QVERIFY(report.hasWarnings);
        QCOMPARE(world.steps(), steps);
        QVERIFY(world.sink->lines().filter("==> Warning: ").join('\n').contains(said));
    }

    void aRestoreThatOnlyReportsSuccessIsIncomplete() {
        World world;
        world.remove("Cellar/a");
        world.shell.answer("install a", "fine\n");
        const auto report = world.restore(false);
        QCOMPARE(report.outcome(), OperationOutcome::Failed);
        QCOMPARE(world.sink->lines().last(),
                 "==> Restore incomplete. Not done: a. Start it again to do the rest.");
    }

    void aPointThatIsGoneChangesNothing() {
        World world;
        QVERIFY(await(world.snapshots.remove({world.point})));
        QVERIFY(world.restore(true).failure);
        QCOMPARE(world.steps(), QStringList());
    }
};

QTEST_GUILESS_MAIN(RestoreSnapshotTest)
#include "RestoreSnapshot_test.moc"
