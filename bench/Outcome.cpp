#include "operations/outcome/FailureSummary.h"
#include "operations/outcome/Verdict.h"

#include <benchmark/benchmark.h>

// Outcome/search passes once over a transcript for a phrase that is not there, whatever the case;
// Outcome/verdict judges the same transcript and makes its summary. Aim: at most 3 to 1.

namespace {

const QStringList &transcript() {
    static const QStringList lines = [] {
        QStringList all;
        for (int i = 0; i < 200'000; ++i)
            all.append(QStringLiteral("/opt/homebrew/Cellar/package-%1/1.0: linking share/file").arg(i));
        all.append(QStringLiteral("Error: it did not work"));
        return all;
    }();
    return lines;
}

void search(benchmark::State &state) {
    for (auto _ : state) {
        qsizetype found = 0;
        for (const QString &line : transcript())
            found += line.contains(QLatin1String("a phrase that is nowhere"), Qt::CaseInsensitive);
        benchmark::DoNotOptimize(found);
    }
}
BENCHMARK(search)->Name("Outcome/search")->Unit(benchmark::kMillisecond);

void verdict(benchmark::State &state) {
    const larkspur::PackageResult result{{.name = QStringLiteral("heron")},
                                         larkspur::PackageEnd::Failed,
                                         larkspur::Deed::Upgraded,
                                         transcript()};
    for (auto _ : state) {
        benchmark::DoNotOptimize(larkspur::outcomeOf(transcript()));
        benchmark::DoNotOptimize(larkspur::summarizeFailure(result));
    }
}
BENCHMARK(verdict)->Name("Outcome/verdict")->Unit(benchmark::kMillisecond);

} // namespace
