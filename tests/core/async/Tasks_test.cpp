#include "core/async/FairSemaphore.h"
#include "core/async/TaskScope.h"
#include "core/async/Worker.h"
#include "tests/support/Await.h"
#include "tests/support/Fixture.h"

#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <stdexcept>

using namespace larkspur;
using namespace larkspur::test;

namespace {

Task<> take(FairSemaphore *semaphore, QString name, QStringList *order, Completion<bool> until) {
    const auto permit = co_await semaphore->acquire({});
    order->append(name);
    co_await until;
}

Task<> throwLater(Completion<bool> when) {
    co_await when;
    throw std::runtime_error("broken inside");
}

Task<int> valueOf(Completion<int> completion) {
    co_return co_await completion;
}

} // namespace

class TasksTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void permitsGoRoundInOrder() {
        FairSemaphore semaphore(1);
        QStringList order;
        Completion<bool> first;
        Completion<bool> others;
        others.complete(true);
        auto a = take(&semaphore, "a", &order, first);
        auto b = take(&semaphore, "b", &order, others);
        auto c = take(&semaphore, "c", &order, others);
        QCOMPARE(order, QStringList{"a"});
        QCOMPARE(semaphore.waiting(), 2);
        first.complete(true);
        await(std::move(a));
        await(std::move(b));
        await(std::move(c));
        QCOMPARE(order, QStringList({"a", "b", "c"}));
        QVERIFY(!semaphore.isExhausted());
    }

    void aPermitMayOutliveItsSemaphore() {
        std::optional<FairSemaphore::Permit> permit;
        {
            FairSemaphore semaphore(1);
            permit = await(semaphore.acquire({}));
            QVERIFY(permit->isHeld() && semaphore.isExhausted());
            FairSemaphore::Permit moved = std::move(*permit);
            QVERIFY(!permit->isHeld() && semaphore.isExhausted());
            *permit = std::move(moved);
        }
        permit->release();
        permit->release(); // giving back twice is nothing
    }

    void stopBeforeAndWhileWaiting() {
        FairSemaphore semaphore(1);
        StopSource stopped;
        stopped.request_stop();
        QVERIFY(!await(semaphore.acquire(stopped.get_token())));
        QVERIFY(!semaphore.isExhausted());
        auto held = await(semaphore.acquire({}));
        StopSource later;
        auto waiting = semaphore.acquire(later.get_token());
        later.request_stop();
        QVERIFY(!await(std::move(waiting)));
        held.reset();
        QVERIFY(await(semaphore.acquire({})).has_value());
    }

    void aCompletionCountsOnce() {
        Completion<int> completion;
        auto waiting = valueOf(completion);
        completion.complete(1);
        completion.complete(2);
        QCOMPARE(await(std::move(waiting)), 1);
    }

    void aTaskThatThrowsIsLoggedAndForgotten() {
        Fixture fixture;
        TaskScope scope(fixture.logger);
        const QSignalSpy drained(&scope, &TaskScope::drained);
        Completion<bool> now;
        scope.spawn("The odd job", throwLater(now));
        QCOMPARE(scope.running(), 1);
        now.complete(true);
        QVERIFY(scope.isDrained());
        QCOMPARE(drained.count(), 1);
        QVERIFY(fixture.logText().contains(
            "[ERROR] The odd job ended with an unexpected failure: broken inside"));
    }

    void workersWorkElsewhereAndAnswerHere() {
        QThread *const here = QThread::currentThread();
        QThread *worker = await(runInWorker([] { return QThread::currentThread(); }));
        QVERIFY(worker != here);
        auto box = await(
            runInWorker([] { return std::make_shared<std::unique_ptr<int>>(std::make_unique<int>(7)); }));
        QCOMPARE(**box, 7);
    }
};

QTEST_GUILESS_MAIN(TasksTest)
#include "Tasks_test.moc"
