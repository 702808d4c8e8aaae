#include "core/process/ProcessShellExecutor.h"
#include "core/trees/TreeChanges.h"
#include "core/trees/TreeCopier.h"
#include "core/trees/TreeSync.h"
#include "operations/kegs/KegPreservationManager.h"
#include "platform/Platform.h"
#include "tests/support/Await.h"
#include "tests/support/Fixture.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QRandomGenerator>

#include <benchmark/benchmark.h>

// Kegs/copy is "cp -a" of a keg of 20,000 files and 500 MB; Kegs/preserve copies, checks and indexes the same
// keg. Kegs/copy-back is "cp -a" of the preserved copy; Kegs/put-back checks that copy to the byte beside
// copying it. Aim of both pairs: at most 1.1 to 1. On a slow disk the pairs differ by chance more than by
// work: set TMPDIR to a folder in memory.

namespace {

using namespace larkspur;

struct World {
    int argc = 1;
    char name[6] = "bench";
    char *argv[2] = {name, nullptr};
    QCoreApplication application{argc, argv};
    test::Fixture fixture;
    Platform platform = makePlatform();
    ProcessShellExecutor shell{{.askpassScript = QString(), .readLoginShell = false},
                               fixture.preferences,
                               *platform.terminal,
                               *platform.processes,
                               fixture.logger};
    TreeCopier copier{shell, platform.copyTool};
    KegPreservationManager kegs{
        {fixture.preferences, fixture.logger, copier, *platform.treeSync, fixture.path("kegs")}};
    KegPreservationManager::Keg keg{fixture.path("prefix"), QStringLiteral("big"), QStringLiteral("1.0")};

    World() {
        constexpr int folders = 200;
        constexpr int filesEach = 100;
        QByteArray bytes(25'000, '\0');
        QRandomGenerator random(1);
        random.fillRange(reinterpret_cast<quint32 *>(bytes.data()), bytes.size() / 4);
        for (int i = 0; i < folders; ++i) {
            const QString folder = path() + QStringLiteral("/share/%1").arg(i);
            QDir().mkpath(folder);
            for (int j = 0; j < filesEach; ++j) {
                bytes[j] = static_cast<char>(i);
                test::Fixture::write(folder + QStringLiteral("/%1").arg(j), bytes);
            }
        }
    }
    QString path() const { return fixture.path("prefix") + QStringLiteral("/Cellar/big/1.0"); }
    static World &instance() {
        static World world;
        return world;
    }
};

void copy(benchmark::State &state) {
    World &world = World::instance();
    const QString to = world.fixture.path("copy");
    for (auto _ : state) {
        QProcess::execute(QStringLiteral("cp"), {QStringLiteral("-a"), world.path(), to});
        state.PauseTiming();
        (void)removeTree(world.fixture.folder.path(), to);
        state.ResumeTiming();
    }
}
BENCHMARK(copy)->Name("Kegs/copy")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

void preserve(benchmark::State &state) {
    World &world = World::instance();
    for (auto _ : state) {
        if (!test::await(world.kegs.preserve(world.keg, std::nullopt, {})))
            qFatal("nothing was preserved");
        state.PauseTiming();
        (void)test::await(world.kegs.remove(world.keg.formula, world.keg.version));
        state.ResumeTiming();
    }
}
BENCHMARK(preserve)->Name("Kegs/preserve")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

/// What it costs that a copy is on the disk before anybody relies on it: of the whole volume, as here, and
/// file by file, as where the system has no call for the whole.
void sync(benchmark::State &state) {
    World &world = World::instance();
    const QString to = world.fixture.path("copy");
    FileByFileSync fileByFile;
    TreeSync &way = state.range(0) == 0 ? *world.platform.treeSync : fileByFile;
    for (auto _ : state) {
        state.PauseTiming();
        QProcess::execute(QStringLiteral("cp"), {QStringLiteral("-a"), world.path(), to});
        state.ResumeTiming();
        if (!way.sync(to))
            qFatal("the copy cannot be synced");
        state.PauseTiming();
        (void)removeTree(world.fixture.folder.path(), to);
        state.ResumeTiming();
    }
}
BENCHMARK(sync)
    ->Name("Kegs/sync")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

void copyBack(benchmark::State &state) {
    World &world = World::instance();
    if (!test::await(world.kegs.preserve(world.keg, std::nullopt, {})))
        qFatal("nothing was preserved");
    const QString from = *world.kegs.storedFolder(world.keg.formula, world.keg.version);
    const QString to = world.fixture.path("back");
    for (auto _ : state) {
        QProcess::execute(QStringLiteral("cp"), {QStringLiteral("-a"), from, to});
        state.PauseTiming();
        (void)removeTree(world.fixture.folder.path(), to);
        state.ResumeTiming();
    }
    (void)test::await(world.kegs.remove(world.keg.formula, world.keg.version));
}
BENCHMARK(copyBack)->Name("Kegs/copy-back")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

void putBack(benchmark::State &state) {
    World &world = World::instance();
    if (!test::await(world.kegs.preserve(world.keg, std::nullopt, {})))
        qFatal("nothing was preserved");
    const QString to = world.fixture.path("back");
    for (auto _ : state) {
        const auto copied = test::await(world.kegs.restoreCopy(world.keg.formula, world.keg.version, to, {}));
        if (!copied || !*copied)
            qFatal("nothing was put back");
        state.PauseTiming();
        (void)removeTree(world.fixture.folder.path(), to);
        state.ResumeTiming();
    }
    (void)test::await(world.kegs.remove(world.keg.formula, world.keg.version));
}
BENCHMARK(putBack)->Name("Kegs/put-back")->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

} // namespace
