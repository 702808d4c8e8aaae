#include "tests/support/Fixture.h"
#include "tests/support/Processes.h"
#include "tests/support/Program.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <csignal>
#include <unistd.h>

using namespace larkspur::test;

/// The whole program with a Homebrew, a disk or a person that misbehaves.
class FaultsTest : public QObject {
    Q_OBJECT

    std::unique_ptr<Program> m_program;

    /// A brew that behaves as `script` for upgrades and as itself for everything else.
    void misbehave(const QByteArray &script) {
        m_program->replaceBrew("if [ \"$1\" = upgrade ] && [ \"$2\" != --dry-run ]; then\n" + script +
                               "\nfi\nexec -a " + m_program->brew().toUtf8() + " $REAL \"$@\"\n");
    }
    static bool waitForText(QProcess &process, const QByteArray &text) {
        QByteArray all;
        QElapsedTimer clock;
        clock.start();
        while (!all.contains(text) && clock.elapsed() < 20'000) {
            process.waitForReadyRead(200);
            all += process.readAllStandardOutput();
        }
        return all.contains(text);
    }

  private Q_SLOTS:
    void init() {
        m_program = std::make_unique<Program>();
        QCOMPARE(m_program->run({"status"}).status, 0);
    }

    void brewIsKilledHalfWay() {
        misbehave("echo '==> Upgrading heron'; kill -KILL $$");
        const auto outcome = m_program->run({"upgrade", "heron"});
        QCOMPARE(outcome.status, 1);
        QVERIFY(
            outcome.output.contains("==> Error: Homebrew ended with status 137 without naming a reason."));
    }

    void brewPrintsAHundredMegabytes() {
        misbehave("yes 'a line of output that says nothing new' | head -c 100000000; exit 0");
        auto process = m_program->start({"upgrade", "heron"});
        process->setReadChannel(QProcess::StandardOutput);
        qint64 bytes = 0;
        while (process->waitForReadyRead(30'000))
            bytes += process->readAllStandardOutput().size();
        QCOMPARE(Program::finish(*process).status, 3); // it did not do what it said
        QVERIFY(bytes >= 100'000'000);
    }

    void brewPrintsHalfCharactersAndNoLineEnd() {
        misbehave("printf '==> Upgrading heron \\360\\237'; exit 0");
        const auto outcome = m_program->run({"upgrade", "heron"});
        QCOMPARE(outcome.status, 3);
        QVERIFY(outcome.output.contains("==> Upgrading heron \uFFFD"));
        QVERIFY(outcome.output.contains(
            "==> Warning: Homebrew reported success, but heron is not at 8.11.1: what is there is 8.10.0."));
    }

    void interruptStopsABrewThatListensToNothing_data() {
        QTest::addColumn<int>("signal");
        QTest::newRow("Ctrl-C") << SIGINT;
        QTest::newRow("terminate") << SIGTERM;
        QTest::newRow("hang up") << SIGHUP;
    }
    void interruptStopsABrewThatListensToNothing() {
        QFETCH(int, signal);
        misbehave("trap '' TERM INT; sh -c 'trap \"\" TERM INT; echo child $$; sleep 100' & echo begun; "
                  "sleep 100; sleep 100");
        auto process = m_program->start({"upgrade", "heron"});
        QVERIFY(waitForText(*process, "begun"));
        ::kill(static_cast<pid_t>(process->processId()), signal);
        const auto outcome = Program::finish(*process);
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.errors.contains("Stopped: Upgrading heron."), qPrintable(outcome.errors));
        // Nothing is left behind, and the next operation can run.
        QVERIFY(processesWith(m_program->brew().toUtf8()).isEmpty());
        QCOMPARE(m_program->run({"install", "dovetail"}).status, 0);
    }

    void whatTheProgramWasStartedToIgnoreItIgnores() {
        misbehave("echo begun; sleep 1; exit 1");
        QProcess process;
        process.start("sh", {"-c", "trap '' HUP; exec " LARKSPUR_PROGRAM " --sample-folder=" +
                                       m_program->path("") + " upgrade heron"});
        QVERIFY(waitForText(process, "begun"));
        ::kill(static_cast<pid_t>(process.processId()), SIGHUP);
        const auto outcome = Program::finish(process);
        QVERIFY2(outcome.errors.contains("Failed: Upgrading heron."), qPrintable(outcome.errors));
    }

    void anOutputThatTakesNothingStopsTheOperation_data() {
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("says");
        QTest::newRow("a reader that has seen enough") << "| head -1" << "";
        QTest::newRow("a full disk") << "> /dev/full" << "larkspur: The output cannot be written.";
        QTest::newRow("none") << ">&-" << "larkspur: The output cannot be written.";
    }
    void anOutputThatTakesNothingStopsTheOperation() {
        QFETCH(QString, output);
        QFETCH(QString, says);
        if (output.contains("/dev/full") && !QFile::exists("/dev/full"))
            QSKIP("this system has no /dev/full");
        misbehave("echo one; sleep 0.5; echo two; echo three; sleep 100");
        QProcess process;
        process.start("bash", {"-o", "pipefail", "-c",
                               LARKSPUR_PROGRAM " --sample-folder=" + m_program->path("") +
                                   " upgrade --yes heron " + output});
        const auto outcome = Program::finish(process);
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.errors.contains("Stopped: Upgrading heron."), qPrintable(outcome.errors));
        QVERIFY(outcome.errors.contains("so what runs is stopped."));
        QCOMPARE(outcome.errors.contains("output cannot be written"), !says.isEmpty());
        QVERIFY(processesWith(m_program->brew().toUtf8()).isEmpty());
        QVERIFY(!QFile::exists(m_program->path("data/operation.lock")));
        QVERIFY(!Fixture::read(m_program->path("data/Logs/larkspur.log")).contains("\none\n"));
    }

    void aListThatCannotBePrintedFails_data() {
        QTest::addColumn<QString>("output");
        QTest::addColumn<QString>("says");
        QTest::newRow("a reader that has seen enough") << "| true" << "";
        QTest::newRow("none") << ">&-" << "larkspur: The output cannot be written.\n";
    }
    void aListThatCannotBePrintedFails() {
        QFETCH(QString, output);
        QFETCH(QString, says);
        QProcess process;
        process.start("bash",
                      {"-o", "pipefail", "-c",
                       LARKSPUR_PROGRAM " --sample-folder=" + m_program->path("") + " list " + output});
        const auto outcome = Program::finish(process);
        QCOMPARE(outcome.status, 1);
        QCOMPARE(outcome.errors, says); // and of nothing that would run
    }

    void answersAreCut() {
        m_program->replaceBrew("if [ \"$1\" = info ] || [ \"$1\" = outdated ]; then exec -a " +
                               m_program->brew().toUtf8() + " $REAL \"$@\" | head -c 5000; else exec -a " +
                               m_program->brew().toUtf8() + " $REAL \"$@\"; fi\n");
        const auto outcome = m_program->run({"status"});
        QCOMPARE(outcome.status, 3);
        QVERIFY(outcome.errors.contains("Failed to load formulae: Homebrew's answer could not be read"));
        QCOMPARE(m_program->run({"list"}).status, 1);
    }

    void theCacheIsGarbage() {
        for (const char *name : {"formulae", "casks", "outdated"}) {
            QFile file(m_program->path(QString("data/Cache/%1_cache.json").arg(name)));
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(QByteArray(10'000, '\xff'));
        }
        QCOMPARE(m_program->run({"status"}).status, 0);
    }

    void damagedPreferencesAreSaidAndCostNothing() {
        const QString path = m_program->path("data/preferences.json");
        Fixture::write(path, "{\"snapshotRetentionLimit\": 0,");
        for (int i = 0; i < 2; ++i)
            QVERIFY(m_program->run({"list"}).errors.contains("Warning: The preferences cannot be read: "));
        QCOMPARE(Fixture::read(path), "{\"snapshotRetentionLimit\": 0,"); // only looked at
    }

    void aDamagedListOfWhatIsSnoozedUpgradesNothing() {
        Fixture::write(m_program->path("data/snoozed_packages.json"), "[{\"packageName\": \"heron\"}]");
        const auto refused = m_program->run({"upgrade", "--all", "--yes"});
        QCOMPARE(refused.status, 1);
        QVERIFY(refused.errors.contains("1 of the entries in "));
        const auto list = m_program->run({"snoozed"});
        QCOMPARE(list.status, 3);
        QVERIFY(list.errors.contains("1 of the entries in "));
        QCOMPARE(m_program->run({"history"}).status, 0);
    }

    void ownFoldersThatAreAwayAreNotEmpty_data() {
        QTest::addColumn<QString>("words");
        QTest::addColumn<QString>("folder");
        QTest::newRow("list") << "snapshot list" << "Snapshots";
        QTest::newRow("delete") << "snapshot delete --all --yes" << "Snapshots";
        QTest::newRow("kegs") << "kegs list" << "PreservedKegs";
    }
    void ownFoldersThatAreAwayAreNotEmpty() {
        QFETCH(QString, words);
        QFETCH(QString, folder);
        const QString path = m_program->path("data/" + folder);
        QDir(path).removeRecursively();
        QVERIFY(QFile::link("/nowhere", path));
        const auto outcome = m_program->run(words.split(' '));
        QCOMPARE(outcome.status, 1);
        QVERIFY2(outcome.errors.contains(path + " cannot be read: "), qPrintable(outcome.errors));
    }

    void theDataFolderCannotBeWritten() {
        QDir(m_program->path("data")).removeRecursively();
        QFile file(m_program->path("data"));
        QVERIFY(file.open(QIODevice::WriteOnly)); // a file in its place: not even root can write below
        file.close();
        QCOMPARE(m_program->run({"status"}).status, 0);
        // Without the lock two programs could change things at once: nothing is begun.
        const auto refused = m_program->run({"install", "dovetail"});
        QCOMPARE(refused.status, 1);
        QVERIFY2(refused.output.contains("The operation lock cannot be taken."), qPrintable(refused.output));
        QVERIFY(!QFile::exists(m_program->path("homebrew/Cellar/dovetail")));
    }

    void aFolderThatIsNoSampleIsLeftAlone() {
        QTemporaryDir mine;
        QDir().mkpath(mine.filePath("data/letters"));
        QDir().mkpath(mine.filePath("Applications/mine.app"));
        for (const QStringList &words : {QStringList{"status"}, QStringList{"--fresh", "status"}}) {
            QProcess process;
            process.start(LARKSPUR_PROGRAM, QStringList{"--sample-folder=" + mine.path()} + words);
            const auto outcome = Program::finish(process);
            QCOMPARE(outcome.status, 1);
            QVERIFY(outcome.errors.contains("holds something else"));
        }
        QVERIFY(QDir(mine.filePath("data/letters")).exists() &&
                QDir(mine.filePath("Applications/mine.app")).exists());
    }

    void theSampleCannotBeMade() {
        QProcess process;
        process.start(LARKSPUR_PROGRAM, {"--sample-folder=/proc/nowhere", "status"});
        const auto outcome = Program::finish(process);
        QCOMPARE(outcome.status, 1);
        QVERIFY(outcome.errors.contains("cannot be made"));
    }

    void rootIsRefusedOutsideTheSample() {
        if (::geteuid() != 0)
            QSKIP("not root");
        QProcess process;
        process.start(LARKSPUR_PROGRAM, {"status"});
        const auto outcome = Program::finish(process);
        QCOMPARE(outcome.status, 1);
        QVERIFY(outcome.errors.contains("does not run as root"));
    }
};

QTEST_GUILESS_MAIN(FaultsTest)
#include "Faults_test.moc"
