#include "core/lock/OperationLock.h"
#include "core/process/ProcessTable.h"
#include "tests/support/Await.h"
#include "tests/support/Fixture.h"

#include <QProcess>
#include <QTest>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace larkspur;
using namespace larkspur::test;

/// Two locks on one file stand for two programs: the system tells open files apart, not processes.
class OperationLockTest : public QObject {
    Q_OBJECT

    /// A brew that goes on after its program.
    struct Survivor final : ProcessTable {
        std::optional<GroupMembers> membersOf(qint64) const override { return std::nullopt; }
        QList<qint64> holdersOf(int) const override { return {42}; }
        QString nameOf(qint64) const override { return "ruby"; }
    };

    const NullProcessTable nobody;

  private Q_SLOTS:
    void theSecondProgramWaitsForTheFirst() {
        Fixture fixture;
        OperationLock first(fixture.path("lock"), nobody);
        OperationLock second(fixture.path("lock"), nobody);
        auto taken = await(first.acquire({}, [](const QStringList &) { QFAIL("the lock is free"); }));
        QVERIFY(taken);
        std::optional<OperationLock::Permit> held = std::move(*taken);
        QVERIFY(held && first.isHeld());
        int waits = 0;
        bool isThrough = false;
        const auto other = [](OperationLock *lock, int *said, bool *through) -> Task<> {
            const auto permit = co_await lock->acquire({}, [said](const QStringList &) { ++*said; });
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
        OperationLock first(fixture.path("lock"), nobody);
        OperationLock second(fixture.path("lock"), nobody);
        const auto held = await(first.acquire({}, {}));
        StopSource stop;
        const auto onWait = [&](const QStringList &) { stop.request_stop(); };
        QVERIFY(!await(second.acquire(stop.get_token(), onWait)));
        QVERIFY(!second.isHeld());
    }

    void aLockOfADeadProgramIsTakenOver() {
        Fixture fixture;
        QProcess holder;
        holder.start("flock", {"--no-fork", fixture.path("lock"), "cat"});
        holder.write("held\n"); // comes back once the lock is taken
        QVERIFY(holder.waitForReadyRead());
        OperationLock lock(fixture.path("lock"), nobody);
        StopSource stop;
        QVERIFY(!await(lock.acquire(stop.get_token(), [&](const QStringList &) { stop.request_stop(); })));
        holder.kill();
        QVERIFY(holder.waitForFinished());
        QVERIFY(QFile::exists(fixture.path("lock")));
        QVERIFY(await(lock.acquire({}, {})));
    }

    void whatIsNotHeldByAnotherIsSaid() {
        Fixture fixture;
        Fixture::write(fixture.path("file"), {});
        OperationLock lock(fixture.path("file/lock"), nobody);
        const auto refused = await(lock.acquire({}, [](const QStringList &) { QFAIL("nobody holds it"); }));
        QVERIFY(!refused && refused.error().description().contains(fixture.path("file/lock")));
        QVERIFY(!lock.isHeld());
        // A file system without locks.
        const auto noLocks = LockFile::tryTake(fixture.path("lock"), [](int, int) {
            errno = ENOLCK;
            return -1;
        });
        QVERIFY(!noLocks && !noLocks.error().isHeld && noLocks.error().reason.contains("locks"));
        const auto held = LockFile::tryTake(fixture.path("lock"));
        const auto second = LockFile::tryTake(fixture.path("lock"));
        QVERIFY(held && !second && second.error().isHeld);
    }

    void whoEndsWhileOneWaitsIsStillNamed() {
        Fixture fixture;
        const Survivor processes;
        QProcess gone;
        gone.start("true", QStringList());
        QVERIFY(gone.waitForStarted());
        const QByteArray dead = QByteArray::number(gone.processId());
        QVERIFY(gone.waitForFinished());
        const auto held = LockFile::tryTake(fixture.path("lock")); // by a program that runs
        OperationLock lock(fixture.path("lock"), processes);
        StopSource stop;
        QList<QStringList> told;
        const auto onWait = [&](const QStringList &orphans) {
            told.append(orphans);
            Fixture::write(fixture.path("lock"), dead); // it has ended since
            if (told.size() == 2)
                stop.request_stop();
        };
        QVERIFY(!await(lock.acquire(stop.get_token(), onWait)));
        QCOMPARE(told, QList<QStringList>({{}, {"ruby (PID 42)"}}));
    }

    void aFileThatIsRemovedBeforeItIsLockedIsNoLock() {
        Fixture fixture;
        static QString path; // its last holder lets go between the opening and the locking
        path = fixture.path("lock");
        const auto taken = LockFile::tryTake(path, [](int file, int how) {
            if (const QString gone = std::exchange(path, {}); !gone.isEmpty())
                QFile::remove(gone);
            return ::flock(file, how);
        });
        QVERIFY(taken);
        QVERIFY(!LockFile::tryTake(fixture.path("lock"))); // or two would hold it
    }

    void lettingGoLeavesTheFileOfAnother() {
        Fixture fixture;
        auto first = std::optional(LockFile::tryTake(fixture.path("lock")));
        QVERIFY(*first && QFile::remove(fixture.path("lock"))); // by somebody who takes it for a leftover
        const auto second = LockFile::tryTake(fixture.path("lock"));
        QVERIFY(second);
        first.reset();
        QVERIFY(QFile::exists(fixture.path("lock")));
        QVERIFY(!LockFile::tryTake(fixture.path("lock"))); // or two would hold it
    }

    void aChildThatOutlivesTheProgramHoldsTheLock() {
        Fixture fixture;
        QProcess orphan;
        {
            // The program takes the lock, starts a child that keeps it open, and dies without letting go.
            auto file = LockFile::tryTake(fixture.path("lock"));
            QVERIFY(file);
            const int kept = ::dup(file->descriptor());
            orphan.setChildProcessModifier([kept] { ::fcntl(kept, F_SETFD, 0); });
            orphan.start("sh", {"-c", "echo begun; cat"});
            QVERIFY(orphan.waitForReadyRead());
            ::close(kept);
            QVERIFY(::link(qPrintable(fixture.path("lock")), qPrintable(fixture.path("kept"))) == 0);
        }
        QVERIFY(::rename(qPrintable(fixture.path("kept")), qPrintable(fixture.path("lock"))) == 0);
        const auto refused = LockFile::tryTake(fixture.path("lock"));
        QVERIFY(!refused && refused.error().isHeld);
        orphan.closeWriteChannel();
        QVERIFY(orphan.waitForFinished());
        QVERIFY(LockFile::tryTake(fixture.path("lock")));
    }
};

QTEST_GUILESS_MAIN(OperationLockTest)
#include "OperationLock_test.moc"
