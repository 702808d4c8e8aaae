#include "operations/installed/InstalledPackages.h"
#include "operations/snapshots/SnapshotFiles.h"
#include "tests/support/Fixture.h"

#include <QDir>
#include <QJsonDocument>

#include <benchmark/benchmark.h>

// Snapshots/compare-… compares two restore points. Aim: 5,000 entries under 5 ms, and linear.
// Snapshots/parse reads 1,000 files of 500 entries and parses their JSON; Snapshots/load makes restore points
// of them. Aim: at most 1.5 to 1.

namespace {

using namespace larkspur;

Snapshot snapshot(int entries, int version) {
    Snapshot made;
    made.id = QUuid::createUuid();
    made.date = QDateTime::fromSecsSinceEpoch(1'790'000'000 + version, Qt::UTC);
    for (int i = 0; i < entries; ++i)
        made.formulae.append({QStringLiteral("package-%1").arg(i),
                              QStringLiteral("1.%1").arg(i % 10 == 0 ? version : 0), false});
    return made;
}

void compare(benchmark::State &state) {
    const Snapshot older = snapshot(static_cast<int>(state.range(0)), 1);
    const Snapshot newer = snapshot(static_cast<int>(state.range(0)), 2);
    for (auto _ : state)
        benchmark::DoNotOptimize(compareSnapshots(older, newer));
}
BENCHMARK(compare)->Name("Snapshots/compare")->Arg(5'000)->Arg(50'000)->Unit(benchmark::kMillisecond);

struct Folder : test::Fixture {
    Folder() {
        const SnapshotFiles files(path("snapshots"));
        for (int i = 0; i < 1000; ++i)
            if (!files.write(snapshot(500, i)))
                qFatal("the benchmark's files cannot be written");
    }
    static Folder &instance() {
        static Folder folder;
        return folder;
    }
};

// Snapshots/take is what taking a restore point of 500 packages costs beside the query for the taps: reading
// the prefix and writing the file. Aim: under 50 ms.
void take(benchmark::State &state) {
    const test::Fixture fixture;
    for (int i = 0; i < 500; ++i)
        QDir().mkpath(fixture.path("prefix") + QStringLiteral("/Cellar/package-%1/1.0").arg(i));
    const SnapshotFiles files(fixture.path("snapshots"));
    for (auto _ : state) {
        const auto installed = InstalledPackages::at(fixture.path("prefix")).currentFormulae();
        Snapshot taken = snapshot(0, 1);
        for (auto formula = installed.cbegin(); formula != installed.cend(); ++formula)
            taken.formulae.append({formula.key(), formula.value(), false});
        if (!files.write(taken))
            qFatal("nothing was written");
    }
}
BENCHMARK(take)->Name("Snapshots/take")->Unit(benchmark::kMillisecond)->UseRealTime();

void parse(benchmark::State &state) {
    const QDir folder(Folder::instance().path("snapshots"));
    for (auto _ : state)
        for (const QString &name : folder.entryList({QStringLiteral("*.json")}, QDir::Files)) {
            QFile file(folder.filePath(name));
            if (file.open(QIODevice::ReadOnly))
                benchmark::DoNotOptimize(QJsonDocument::fromJson(file.readAll()));
        }
}
BENCHMARK(parse)->Name("Snapshots/parse")->Unit(benchmark::kMillisecond);

void load(benchmark::State &state) {
    const SnapshotFiles files(Folder::instance().path("snapshots"));
    for (auto _ : state)
        benchmark::DoNotOptimize(files.load());
}
BENCHMARK(load)->Name("Snapshots/load")->Unit(benchmark::kMillisecond);

} // namespace
