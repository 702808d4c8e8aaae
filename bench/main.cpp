#include "bench/Scenes.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string_view>

int main(int argc, char *argv[]) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const std::string_view scene = argc > 2 ? argv[1] : "";
    if (scene == "--print-lines")
        return bench::printLines(std::atoi(argv[2]));
    if (scene == "--bare-window")
        return bench::showBareWindow(QString::fromLocal8Bit(argv[2]));
    if (scene == "--larkspur-window")
        return bench::showLarkspur(QString::fromLocal8Bit(argv[2]));
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
