#include "tests/support/BrewWorld.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

namespace {

const QString waitingLine = QStringLiteral("==> Waiting for another Homebrew operation to finish…");

Task<bool> operation(BrewService *brew, QString name, std::shared_ptr<RecordingSink> sink,
                     StopToken stop = {}) {
    const OperationContext context{.output = sink, .stop = stop};
    auto session = co_await brew->beginOperation(context);
    if (!session)
        co_return false;
    const auto result = co_await session->stream({.arguments = {*PackageName::parse(name)}}, context,
                                                 BrewSession::Style::Plain);
    co_return result && result->exitCode == 0;
}

} // namespace

class BrewServiceTest : public QObject {
    Q_OBJECT

    using World = BrewWorld;

  private Q_SLOTS:
    void operationsRunInTheOrderOfAsking() {
        World world;
        std::vector<std::shared_ptr<RecordingSink>> sinks;
        std::vector<Task<bool>> tasks;
        for (const char *name : {"one", "two", "three"}) {
            world.shell.hold(name);
            sinks.push_back(std::make_shared<RecordingSink>());
            tasks.push_back(operation(&world.brew, name, sinks.back()));
        }
        QCOMPARE(world.shell.commandLines(), QStringList{"one"});
        QVERIFY(sinks[0]->lines().isEmpty());
        QCOMPARE(sinks[1]->lines(), QStringList{waitingLine});
        QCOMPARE(sinks[2]->lines(), QStringList{waitingLine});
        world.shell.release("one", "Error: broken\n", 1); // a failure lets go of the lock too
        QVERIFY(spinUntil([&] { return world.shell.commands().size() == 2; }));
        QCOMPARE(world.shell.commandLines().last(), "two");
        QVERIFY(world.brew.isBrewOperationRunning());
        world.shell.release("two");
        world.shell.release("three");
        QVERIFY(!await(std::move(tasks[0])));
        QVERIFY(await(std::move(tasks[1])));
        QVERIFY(await(std::move(tasks[2])));
        QVERIFY(!world.brew.isBrewOperationRunning());
    }

    void waitingCanBeStopped() {
        World world;
        world.shell.hold("one");
        world.shell.answer("three", {});
        StopSource stop;
        auto one = operation(&world.brew, "one", std::make_shared<RecordingSink>());
        auto two = operation(&world.brew, "two", std::make_shared<RecordingSink>(), stop.get_token());
        auto three = operation(&world.brew, "three", std::make_shared<RecordingSink>());
        stop.request_stop();
        QVERIFY(!await(std::move(two)));
        world.shell.release("one");
        QVERIFY(await(std::move(three)));
        QCOMPARE(world.shell.commandLines(), QStringList({"one", "three"}));
        QVERIFY(!world.brew.isBrewOperationRunning());
    }

    void stoppingARunLetsGoOfTheLock() {
        World world;
        world.shell.hold("one");
        StopSource stop;
        auto one = operation(&world.brew, "one", std::make_shared<RecordingSink>(), stop.get_token());
        stop.request_stop();
        QVERIFY(!await(std::move(one)));
        QVERIFY(!world.brew.isBrewOperationRunning());
    }

    void withoutBrewTheLockIsFreed() {
        World world;
        QFile::remove(world.path("brew"));
        QVERIFY(!await(operation(&world.brew, "one", std::make_shared<RecordingSink>())));
        QVERIFY(!world.brew.isBrewOperationRunning());
        QCOMPARE(await(world.brew.execute({.arguments = {"x"}})).error(), BrewError::brewNotInstalled());
    }

    void aFailureWithoutAReasonIsNamed_data() {
        QTest::addColumn<QByteArray>("output");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<bool>("named");
        QTest::newRow("silent failure") << QByteArray("==> false\nLast 15 lines\n") << 1 << true;
        QTest::newRow("reason given") << QByteArray("ERROR: no\n") << 1 << false;
        QTest::newRow("git's word") << QByteArray("fatal: no\n") << 128 << false;
        QTest::newRow("success") << QByteArray("fine\n") << 0 << false;
    }
    void aFailureWithoutAReasonIsNamed() {
        QFETCH(QByteArray, output);
        QFETCH(int, exitCode);
        QFETCH(bool, named);
        World world;
        world.shell.answer("one", output, exitCode);
        const auto sink = std::make_shared<RecordingSink>();
        await(operation(&world.brew, "one", sink));
        const QString line =
            QString("==> Error: Homebrew ended with status %1 without naming a reason.").arg(exitCode);
        QCOMPARE(sink->lines().contains(line), named);
    }

    void coloursAreRemoved() {
        World world;
        world.shell.answer("one", "\033[32m==>\033[0m \033[1;31mhello\033[m\n");
        const auto sink = std::make_shared<RecordingSink>();
        await(operation(&world.brew, "one", sink));
        QCOMPARE(sink->lines(), QStringList{"==> hello"});
    }

    void queriesRunBesideOperationsWithALimit() {
        World world;
        world.shell.hold("op");
        world.shell.answer("info", "{}");
        auto running = operation(&world.brew, "op", std::make_shared<RecordingSink>());
        const auto result = await(world.brew.execute({.arguments = {"info"}, .suppressAutoUpdate = true}));
        QCOMPARE(result->standardOutput(), "{}");
        QCOMPARE(world.shell.commands().last().silenceLimit, 77ms);
        QVERIFY(world.shell.commands().last().suppressAutoUpdate);
        QCOMPARE(world.shell.commands().first().silenceLimit, 0ms); // operations have none
        world.shell.release("op");
        QVERIFY(await(std::move(running)));
    }
};

QTEST_GUILESS_MAIN(BrewServiceTest)
#include "BrewService_test.moc"
