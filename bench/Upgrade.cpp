#include "tests/support/Fixture.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QRegularExpression>

#include <benchmark/benchmark.h>

#include <chrono>

// Upgrade/brew runs "brew upgrade" of one package of the sample as a process; Upgrade/larkspur the same
// through "larkspur upgrade", less the time of the queries that it asks beside it. Their quotient is what
// Larkspur's own work adds.

namespace {

using namespace larkspur;

/// A sample Homebrew that is made anew for each run.
class Sample {
  public:
    Sample() {
        qputenv("HOMEBREW_SAMPLE_PACE", "off");
        larkspur({QStringLiteral("--fresh"), QStringLiteral("status")});
        run(QStringLiteral("cp"), {QStringLiteral("-a"), m_root, m_root + QStringLiteral(".new")});
    }
    void reset() const {
        QDir(m_root).removeRecursively();
        run(QStringLiteral("cp"), {QStringLiteral("-a"), m_root + QStringLiteral(".new"), m_root});
        QFile::remove(log());
    }
    void larkspur(const QStringList &words) const {
        run(QStringLiteral(LARKSPUR_PROGRAM),
            QStringList{QStringLiteral("--sample-folder=") + m_root} + words);
    }
    void brew(const QStringList &words) const { run(m_root + QStringLiteral("/homebrew/bin/brew"), words); }

    /// Seconds that the queries of the last run took, as the log tells.
    double querySeconds() const {
        static const QRegularExpression pattern(
            QStringLiteral("duration=(\\d+)ms cmd=\\S+ (?!upgrade)(?!preserve)"));
        double seconds = 0;
        auto matches = pattern.globalMatch(test::Fixture::read(log()));
        while (matches.hasNext())
            seconds += matches.next().captured(1).toInt() / 1000.0;
        return seconds;
    }

  private:
    QString log() const { return m_root + QStringLiteral("/data/Logs/larkspur.log"); }
    static void run(const QString &program, const QStringList &arguments) {
        QProcess process;
        process.setStandardOutputFile(QProcess::nullDevice());
        process.setStandardErrorFile(QProcess::nullDevice());
        process.start(program, arguments);
        if (!process.waitForFinished(-1) || process.exitCode() != 0)
            qFatal("%s has failed", qPrintable(program));
    }

    QTemporaryDir m_folder;
    QString m_root = m_folder.filePath(QStringLiteral("sample"));
};

double secondsOf(const auto &work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

const QStringList upgrade{QStringLiteral("upgrade"), QStringLiteral("heron")};

void brew(benchmark::State &state) {
    const Sample sample;
    for (auto _ : state) {
        sample.reset();
        state.SetIterationTime(secondsOf([&] { sample.brew(upgrade); }));
    }
}
BENCHMARK(brew)->Name("Upgrade/brew")->UseManualTime()->Unit(benchmark::kMillisecond);

void throughLarkspur(benchmark::State &state) {
    const Sample sample;
    for (auto _ : state) {
        sample.reset();
        const double seconds = secondsOf([&] { sample.larkspur(upgrade); });
        state.SetIterationTime(seconds - sample.querySeconds());
    }
}
BENCHMARK(throughLarkspur)->Name("Upgrade/larkspur")->UseManualTime()->Unit(benchmark::kMillisecond);

} // namespace
