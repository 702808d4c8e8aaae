#include "operations/OperationCenter.h"
#include "tests/support/OperationWorld.h"

#include <QSignalSpy>
#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

class OperationCenterTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        OperationRun *upgrade(const QString &name) {
            shell.hold("upgrade --formula " + name);
            return center.start(operation("upgrade", {{name, false}}));
        }
        /// Until brew runs what was asked for.
        void reach(const QString &line) {
            QVERIFY(spinUntil([&] { return shell.commandLines().contains(line); }));
        }
        void settle() {
            QVERIFY(spinUntil([this] { return tasks.isDrained(); }));
        }
    };

  private Q_SLOTS:
    void runsGoThroughTheirStates() {
        World world;
        world.addFormula("a", "1");
        const QSignalSpy changes(&world.center, &OperationCenter::packagesWillChange);
        const QSignalSpy ends(&world.center, &OperationCenter::finished);
        OperationRun *first = world.upgrade("a");
        OperationRun *second = world.upgrade("b");
        QVERIFY(first->state() == OperationRun::State::Running);
        QVERIFY(second->state() == OperationRun::State::Queued);
        QCOMPARE(world.center.shown(), first);
        QCOMPARE(changes.count(), 1);
        world.reach("upgrade --formula a");
        world.shell.release("upgrade --formula a", "==> Upgrading a\nWarning: odd\n");
        QVERIFY(spinUntil(
            [&] { return !first->isRunning() && second->state() == OperationRun::State::Running; }));
        QVERIFY(first->outcome() == OperationOutcome::CompletedWithWarnings);
        QCOMPARE(first->progress().currentItem(), "a");
        QCOMPARE(world.center.shown(), second);
        world.reach("upgrade --formula b");
        world.shell.release("upgrade --formula b", {}, 1);
        world.settle();
        QVERIFY(second->outcome() == OperationOutcome::Failed);
        QCOMPARE(second->transcript().lines().last(),
                 "==> Error: Homebrew ended with status 1 without naming a reason.");
        QCOMPARE(ends.count(), 2);
        QVERIFY(world.center.unfinished().isEmpty());
    }

    void stoppingAQueuedAndARunningOne() {
        World world;
        OperationRun *first = world.upgrade("a");
        OperationRun *second = world.upgrade("b");
        second->stop();
        QVERIFY(spinUntil([&] { return !second->isRunning(); }));
        QVERIFY(second->wasStopped());
        QVERIFY(first->isRunning());
        world.center.stopAll();
        world.settle();
        QVERIFY(first->wasStopped() && first->outcome() == OperationOutcome::Failed);
        QVERIFY(!world.brew.isBrewOperationRunning());
        QCOMPARE(first->transcript().lines().last(), "==> Stopped. The operation may be incomplete.");
    }

    void aFailureBeforeBrewIsSaid() {
        World world;
        QFile::remove(world.path("brew"));
        OperationRun *run = world.upgrade("a");
        world.settle();
        QCOMPARE(run->transcript().lines(), QStringList{"==> Error: Homebrew is not installed"});
        QCOMPARE(run->report().failure->kind, BrewError::Kind::BrewNotInstalled);
    }
};

QTEST_GUILESS_MAIN(OperationCenterTest)
#include "OperationCenter_test.moc"
