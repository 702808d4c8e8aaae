#include "app/Larkspur.h"
#include "operations/packages/UpgradeAll.h"
#include "tests/support/Await.h"
#include "tests/support/Fixture.h"
#include "ui/MainWindow.h"
#include "ui/operation/OperationPanel.h"

#include <QApplication>
#include <QDir>

#include <benchmark/benchmark.h>

// The longest time that the interface's event loop is away while an operation prints 100 MB into the open
// output sheet. Aim: at most 50 ms.

namespace bench {

namespace {

using namespace larkspur;

void stall(benchmark::State &state) {
    int argc = 1;
    char name[] = "bench";
    char *argv[] = {name, nullptr};
    const QApplication application(argc, argv);
    const QTemporaryDir folder;
    auto environment = sampleEnvironment(folder.path(), true);
    const QString brew = folder.filePath(QStringLiteral("homebrew/bin/brew"));
    QFile::remove(brew);
    const QString prefix = folder.filePath(QStringLiteral("homebrew"));
    test::Fixture::write(
        brew,
        "#!/bin/sh\ncase \"$*\" in --prefix) echo " + prefix.toUtf8() +
            ";; upgrade) yes 'a line of output that says nothing new' | head -c 100000000;; esac\n",
        true);
    Larkspur larkspur(std::move(*environment));
    ui::MainWindow window(larkspur);
    window.show();
    double longest = 0;
    for (auto _ : state) {
        OperationRun *run = larkspur.operations().start(upgradeOfAll(larkspur.packages(), {}, false));
        window.findChild<ui::OperationPanel *>()->setOutputVisible(true);
        QElapsedTimer beat;
        QTimer heart;
        QObject::connect(&heart, &QTimer::timeout, [&] {
            longest = std::max(longest, static_cast<double>(beat.nsecsElapsed()) / 1e6);
            beat.start();
        });
        beat.start();
        heart.start(1);
        test::spinUntil([run] { return !run->isRunning(); }, std::chrono::seconds(120));
    }
    state.counters["longest_stall_ms"] = longest;
    larkspur.shutDown();
    test::spinUntil([&] { return larkspur.tasks().isDrained(); });
}

} // namespace

BENCHMARK(stall)
    ->Name("Stall/hundred-megabytes")
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(3);

} // namespace bench
