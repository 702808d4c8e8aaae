#include "core/lock/OperationLock.h"
#include "tests/support/Await.h"
#include "tests/support/Fixture.h"

#include <QProcess>
#include <QTest>

#include <csignal>

using namespace larkspur;
using namespace larkspur::test;

/// Two locks on one file stand for two programs: the system tells open files apart, not processes.
class OperationLockTest : public QObject {
    Q_OBJECT

  private Q_SLOTS:
    void theSecondProgramWaitsForTheFirst() {
        Fixture fixture;
        OperationLock first(fixture.path("lock"), fixture.logger);
        OperationLock second(fixture.path("lock"), fixture.logger);
        auto held = await(first.acquire({}, [] { QFAIL("the lock is free"); }));
        QVERIFY(held && !await(second.tryAcquire()) && !await(first.tryAcquire()));
        int waits = 0;
        bool isThrough = false;
        const auto other = [](OperationLock *lock, int *said, bool *through) -> Task<> {
            const auto permit = co_await lock->acquire({}, [said] { ++*said; });
            *through = permit.has_value();
        };
        [[maybe_unused]] const auto waiting = other(&second, &waits, &isThrough);
        QVERIFY(!spinUntil([&] { return isThrough; }, 500ms));
        QCOMPARE(waits, 1); // said once, however long it takes
        held.reset();
        QVERIFY(spinUntil([&] { return isThrough; }));
        QVERIFY(!QFile::exists(fixture.path("lock"))); // nothing stays behind
    }

    void waitingCanBeStopped() {
        Fixture fixture;
        OperationLock first(fixture.path("lock"), fixture.logger);
        OperationLock second(fixture.path("lock"), fixture.logger);
        const auto held = await(first.acquire({}, {}));
        StopSource stop;
        const auto onWait = [&] { stop.request_stop(); };
        QVERIFY(!await(second.acquire(stop.get_token(), onWait)));
        QVERIFY(!second.isHeld());
    }

    void aLockOfADeadProgramIsTakenOver() {
        Fixture fixture;
        QProcess holder;
        holder.start("flock", {"--no-fork", fixture.path("lock"), "cat"});
        holder.write("held\n"); // comes back once the lock is taken
        QVERIFY(holder.waitForReadyRead());
        OperationLock lock(fixture.path("lock"), fixture.logger);
        QVERIFY(!await(lock.tryAcquire()));
        holder.kill();
        QVERIFY(holder.waitForFinished());
        QVERIFY(QFile::exists(fixture.path("lock")));
        QVERIFY(await(lock.acquire({}, {})));
    }

    void withoutAFileTheLockHoldsInTheProgram() {
        Fixture fixture;
        Fixture::write(fixture.path("file"), {});
        OperationLock lock(fixture.path("file/lock"), fixture.logger);
        const auto held = await(lock.acquire({}, {}));
        QVERIFY(held && lock.isHeld());
        QVERIFY(fixture.logText().contains("cannot be written"));
    }
};

QTEST_GUILESS_MAIN(OperationLockTest)
#include "OperationLock_test.moc"
