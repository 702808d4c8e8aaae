#include "bench/Scenes.h"
#include "core/output/OperationProgress.h"
#include "core/output/Transcript.h"
#include "core/process/ProcessShellExecutor.h"
#include "platform/Platform.h"
#include "tests/support/Await.h"
#include "tests/support/Fixture.h"

#include <QCoreApplication>
#include <QProcess>

#include <benchmark/benchmark.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <poll.h>
#include <sys/resource.h>
#include <unistd.h>

// Stream/drain-… counts the bytes of a child that prints a million lines; Stream/lines-… takes the same child
// through executor, terminal reader, transcript and progress rules. Aim: at most 4 to 1.

namespace bench {

int printLines(int count) {
    static std::array<char, 64 * 1024> buffer;
    std::setvbuf(stdout, buffer.data(), _IOFBF, buffer.size());
    for (int i = 0; i < count; ++i) {
        if (i % 1000 == 0)
            std::printf("==> Upgrading package-%d\n", i);
        else
            std::printf("/opt/homebrew/Cellar/package/1.0/share/file-%d is linked into place\n", i);
    }
    return 0;
}

QString self() {
    return QString::fromLocal8Bit(program_invocation_name);
}

namespace {

using namespace larkspur;

constexpr int lines = 1'000'000;

QStringList childArguments() {
    return {QStringLiteral("--print-lines"), QString::number(lines)};
}

/// Reads everything from a descriptor as fast as the kernel hands it over.
qint64 drain(int descriptor) {
    static std::array<char, 64 * 1024> buffer;
    qint64 total = 0;
    for (;;) {
        const auto count = ::read(descriptor, buffer.data(), buffer.size());
        if (count > 0) {
            total += count;
        } else if (count < 0 && errno == EAGAIN) {
            pollfd waiting{descriptor, POLLIN, 0};
            ::poll(&waiting, 1, -1);
        } else if (count == 0 || errno != EINTR) {
            return total;
        }
    }
}

void drainPipe(benchmark::State &state) {
    for (auto _ : state) {
        const QByteArray command = self().toLocal8Bit() + " --print-lines " + QByteArray::number(lines);
        std::FILE *pipe = ::popen(command.constData(), "r");
        benchmark::DoNotOptimize(drain(::fileno(pipe)));
        ::pclose(pipe);
    }
}

void drainTerminal(benchmark::State &state) {
    int argc = 1;
    char name[] = "bench";
    char *argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv);
    const Platform platform = makePlatform();
    for (auto _ : state) {
        QProcess process;
        process.setProgram(self());
        process.setArguments(childArguments());
        auto connection = platform.terminal->attach(process);
        process.start();
        process.waitForStarted();
        (*connection)->childStarted();
        benchmark::DoNotOptimize(drain((*connection)->descriptor()));
        process.waitForFinished();
    }
}

void readLines(benchmark::State &state, RunMode mode) {
    int argc = 1;
    char name[] = "bench";
    char *argv[] = {name, nullptr};
    const QCoreApplication application(argc, argv);
    test::Fixture fixture;
    const Platform platform = makePlatform();
    ProcessShellExecutor shell({.askpassScript = QString(), .readLoginShell = false}, fixture.preferences,
                               *platform.terminal, *platform.processes, fixture.logger);
    qint64 seen = 0;
    for (auto _ : state) {
        Transcript transcript;
        OperationProgress progress(lines / 1000);
        seen = 0;
        ShellCommand command{.program = self(), .arguments = childArguments(), .mode = mode};
        command.onOutput = [&](const OutputChange &change) {
            seen += change.lines.size() - change.replaces;
            transcript.apply(change);
            progress.apply(change);
        };
        test::await(shell.run(std::move(command)));
        if (seen != lines || progress.stepCount() != lines / 1000)
            state.SkipWithError("lines were lost");
    }
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    state.counters["peak_memory_MB"] = static_cast<double>(usage.ru_maxrss) / 1024;
}

void linesPipe(benchmark::State &state) {
    readLines(state, RunMode::Stream);
}

void linesTerminal(benchmark::State &state) {
    readLines(state, RunMode::Terminal);
}

} // namespace

BENCHMARK(drainPipe)->Name("Stream/drain-pipe")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(linesPipe)->Name("Stream/lines-pipe")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(drainTerminal)->Name("Stream/drain-terminal")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(linesTerminal)->Name("Stream/lines-terminal")->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace bench
