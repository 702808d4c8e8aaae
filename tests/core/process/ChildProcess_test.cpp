#include "core/process/ProcessShellExecutor.h"
#include "platform/Platform.h"
#include "tests/support/Await.h"
#include "tests/support/Fixture.h"
#include "tests/support/ProbePassword.h"

#include <QElapsedTimer>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

using namespace larkspur;
using namespace larkspur::test;

Q_DECLARE_METATYPE(larkspur::RunMode)
Q_DECLARE_METATYPE(larkspur::ProcessEnd)

/// Real children that behave badly.
class ChildProcessTest : public QObject {
    Q_OBJECT

    Fixture m_fixture;
    Platform m_platform = makePlatform();
    ProcessShellExecutor m_shell{{.askpassScript = "/none", .readLoginShell = false, .grace = 400ms},
                                 m_fixture.preferences,
                                 *m_platform.terminal,
                                 *m_platform.processes,
                                 m_fixture.logger};
    QStringList m_lines;

    ShellCommand shell(const QString &script, RunMode mode = RunMode::Stream) {
        m_lines.clear();
        ShellCommand command{.program = "/bin/sh", .arguments = {"-c", script}, .mode = mode};
        command.onOutput = [this](const OutputChange &change) {
            m_lines.resize(m_lines.size() - change.replaces);
            m_lines += change.lines;
        };
        return command;
    }
    ShellResult run(const QString &script, RunMode mode = RunMode::Stream) {
        return await(m_shell.run(shell(script, mode)));
    }

    /// Runs the script and asks it to stop once it has printed a line.
    ShellResult runAndStop(const QString &script, RunMode mode = RunMode::Stream) {
        StopSource stop;
        ShellCommand command = shell(script, mode);
        command.stop = stop.get_token();
        auto task = m_shell.run(std::move(command));
        spinUntil([this] { return !m_lines.isEmpty(); });
        stop.request_stop();
        return await(std::move(task));
    }

    static bool isAlive(const QString &pid) { return ::kill(pid.toInt(), 0) == 0; }

  private Q_SLOTS:
    void collectsBothStreams() {
        const ShellResult result = run("echo out; echo err >&2; printf last; exit 3");
        QCOMPARE(result.exitCode, 3);
        QCOMPARE(result.end, ProcessEnd::Exited);
        QCOMPARE(result.standardOutput(), "out\nlast");
        QCOMPARE(result.standardError(), "err");
        m_lines.sort();
        QCOMPARE(m_lines, QStringList({"err", "last", "out"}));
        QCOMPARE(result.verdict().error(), BrewError::commandFailed("err"));
    }

    void linesOfBothStreamsComeInOrder() {
        run("echo 1; sleep 0.1; echo 2 >&2; sleep 0.1; echo 3");
        QCOMPARE(m_lines, QStringList({"1", "2", "3"}));
    }

    void missingProgramIsAResult() {
        const ShellResult result = await(m_shell.run({.program = "/no/such/program", .arguments = {"x"}}));
        QCOMPARE(result.end, ProcessEnd::FailedToStart);
        QVERIFY(result.exitCode != 0);
        QVERIFY(m_fixture.logText().contains("shell spawn failed: /no/such/program x "));
        const ShellResult terminal =
            await(m_shell.run({.program = "/no/such/program", .mode = RunMode::Terminal}));
        QCOMPARE(terminal.end, ProcessEnd::FailedToStart);
        QVERIFY(m_fixture.logText().contains("shell spawn failed (PTY): /no/such/program"));
    }

    void readsNothingFromThePerson() {
        QCOMPARE(run("if read x; then echo got; else echo end; fi").standardOutput(), "end");
        QCOMPARE(run("if read x; then echo got; else echo end; fi", RunMode::Terminal).standardOutput(),
                 "end");
    }

    void terminalHasASizeAndIsOne() {
        const ShellResult result =
            run("stty size; test -t 1 && test -t 2 && echo tty; echo err >&2", RunMode::Terminal);
        QCOMPARE(result.standardOutput(), "40 120\ntty\nerr");
        QVERIFY(result.errorBytes.isEmpty());
    }

    void terminalRedrawsReplaceLines() {
        run("printf 'a 10%%\\ra 90%%\\r\\n'; printf 'half'; sleep 0.2; printf ' done\\n'", RunMode::Terminal);
        QCOMPARE(m_lines, QStringList({"a 90%", "half done"}));
    }

    void hugeOutputStaysBounded() {
        const ShellResult result = run("yes 'a line of some length that repeats' | head -c 100000000");
        QCOMPARE(result.exitCode, 0);
        QVERIFY(result.outputBytes.size() < 10'000'000);
        QVERIFY(result.standardOutput().contains("lines are left out here"));
    }

    void capturesEverythingOfAQuery() {
        const ShellResult result =
            run("head -c 20000000 /dev/zero | tr '\\0' x; head -c 3000000 /dev/zero >&2", RunMode::Capture);
        QCOMPARE(result.outputBytes.size(), 20'000'000);
        QCOMPARE(result.errorBytes.size(), 3'000'000);
    }

    void aQueryThatPrintsTooMuchFails_data() {
        QTest::addColumn<QString>("script");
        QTest::addColumn<ProcessEnd>("end");
        QTest::newRow("just enough") << "head -c 1048576 /dev/zero" << ProcessEnd::Exited;
        QTest::newRow("a byte more") << "head -c 1048577 /dev/zero" << ProcessEnd::TooLong;
        QTest::newRow("for ever") << "trap '' PIPE; yes" << ProcessEnd::TooLong;
        QTest::newRow("errors for ever") << "echo '[]'; yes >&2" << ProcessEnd::TooLong;
        QTest::newRow("and listens to nothing") << "trap '' TERM; yes" << ProcessEnd::TooLong;
    }
    void aQueryThatPrintsTooMuchFails() {
        QFETCH(QString, script);
        QFETCH(ProcessEnd, end);
        ShellCommand command = shell(script, RunMode::Capture);
        command.captureLimit = 1024 * 1024;
        const ShellResult result = await(m_shell.run(std::move(command)));
        QCOMPARE(result.end, end);
        QCOMPARE(result.succeeded(), end == ProcessEnd::Exited);
        if (end == ProcessEnd::Exited)
            return;
        QVERIFY(result.outputBytes.isEmpty() && result.exitCode != 0);
        QCOMPARE(result.verdict().error(),
                 BrewError::commandFailed("/bin/sh -c " + script + " was ended: It printed more than 1 MB."));
    }

    void noLineEndAndHalfACharacter() {
        const ShellResult result = run("printf 'x\\360\\237'; sleep 0.1; printf '\\215\\272y\\303'");
        QCOMPARE(m_lines, QStringList{QString::fromUtf8("x🍺y\uFFFD")});
        QVERIFY(result.succeeded());
    }

    void stopEndsTheWholeGroup() {
        // Neither the child nor its child listens to SIGTERM, and the latter holds the pipe.
        const ShellResult result =
            runAndStop("trap '' TERM; sh -c 'trap \"\" TERM; echo $$; sleep 60; sleep 60' & wait; sleep 60");
        QCOMPARE(result.end, ProcessEnd::Stopped);
        QCOMPARE(result.verdict().error(), BrewError::stopped());
        QVERIFY(spinUntil([this] { return !isAlive(m_lines.first()); }));
    }

    void stopIsGentleFirst() {
        QElapsedTimer clock;
        clock.start();
        const ShellResult result = runAndStop(
            "trap 'echo cleaned; exit 1' TERM; echo begun; while :; do sleep 0.05; done", RunMode::Terminal);
        QCOMPARE(result.end, ProcessEnd::Stopped);
        QVERIFY(m_lines.contains("cleaned"));
    }

    void stopBeforeTheStart() {
        StopSource stop;
        stop.request_stop();
        ShellCommand command = shell("sleep 60");
        command.stop = stop.get_token();
        QCOMPARE(await(m_shell.run(std::move(command))).end, ProcessEnd::Stopped);
    }

    void aKilledChildTakesItsGroupWithIt() {
        const ShellResult result = run("sh -c 'echo $$; exec sleep 60' & sleep 0.2; kill -KILL $$");
        QCOMPARE(result.end, ProcessEnd::Crashed);
        QCOMPARE(result.exitCode, 128 + SIGKILL);
        QVERIFY(spinUntil([this] { return !isAlive(m_lines.first()); }));
    }

    void aDaemonThatKeepsThePipeDoesNotHoldUsUp() {
        for (const RunMode mode : {RunMode::Stream, RunMode::Terminal}) {
            QElapsedTimer clock;
            clock.start();
            const ShellResult result = run("trap '' HUP; sleep 30 & echo $!; exit 0", mode);
            QVERIFY(result.succeeded());
            QVERIFY(clock.elapsed() < 20'000);
            ::kill(m_lines.value(0).toInt(), SIGKILL);
        }
    }

    void aDescriptorStaysOpenInAllThatTheChildStarts_data() {
        QTest::addColumn<RunMode>("mode");
        QTest::newRow("captured") << RunMode::Capture;
        QTest::newRow("two pipes") << RunMode::Stream;
        QTest::newRow("terminal") << RunMode::Terminal;
    }
    void aDescriptorStaysOpenInAllThatTheChildStarts() {
        QFETCH(RunMode, mode);
        const QByteArray path = m_fixture.path("lock").toLocal8Bit();
        const auto isFree = [&] {
            const int other = ::open(path.constData(), O_RDWR | O_CLOEXEC);
            const bool got = ::flock(other, LOCK_EX | LOCK_NB) == 0;
            ::close(other);
            return got;
        };
        for (const bool isGiven : {true, false}) {
            const int held = ::open(path.constData(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
            QCOMPARE(::flock(held, LOCK_EX | LOCK_NB), 0);
            // The child ends at once; what it has left in the background goes on until it is let go.
            QFile::remove(m_fixture.path("go"));
            ShellCommand command = shell("trap '' HUP; while [ ! -e " + m_fixture.path("go") +
                                             " ]; do sleep 0.05; done & exit 0",
                                         mode);
            command.keptOpen = isGiven ? held : -1;
            const ShellResult result = await(m_shell.run(std::move(command)));
            QVERIFY(result.succeeded());
            ::close(held);
            QCOMPARE(isFree(), !isGiven);
            Fixture::write(m_fixture.path("go"), {});
            QVERIFY(spinUntil(isFree));
        }
    }

    void thePasswordReachesTheChildAndStaysNowhere_data() {
        QTest::addColumn<RunMode>("mode");
        QTest::addColumn<QString>("script");
        QTest::addColumn<ProcessEnd>("end");
        const QString tell = "printf %s \"$LARKSPUR_ASKPASS_PASSWORD\" | tr a-z n-za-m > OUT; echo told; ";
        QTest::newRow("captured") << RunMode::Capture << tell << ProcessEnd::Exited;
        QTest::newRow("two pipes") << RunMode::Stream << tell << ProcessEnd::Exited;
        QTest::newRow("terminal") << RunMode::Terminal << tell << ProcessEnd::Exited;
        QTest::newRow("failed") << RunMode::Terminal << tell + "exit 1" << ProcessEnd::Exited;
        QTest::newRow("killed") << RunMode::Stream << tell + "kill -KILL $$" << ProcessEnd::Crashed;
        QTest::newRow("stopped") << RunMode::Stream << tell + "sleep 60" << ProcessEnd::Stopped;
        QTest::newRow("timed out") << RunMode::Stream << tell + "sleep 60" << ProcessEnd::TimedOut;
        QTest::newRow("never ran") << RunMode::Stream << QString() << ProcessEnd::FailedToStart;
    }
    void thePasswordReachesTheChildAndStaysNowhere() {
        QFETCH(RunMode, mode);
        QFETCH(QString, script);
        QFETCH(ProcessEnd, end);
        if (!ProbePassword::canLook())
            QSKIP("this system does not show a process its memory");
        const ProbePassword probe;
        QFile::remove(m_fixture.path("told"));
        {
            StopSource stop;
            ShellCommand command = shell(script.replace("OUT", m_fixture.path("told")), mode);
            if (end == ProcessEnd::FailedToStart)
                command.program = "/no/such/program";
            command.password = probe.password();
            QVERIFY(!probe.copiesInMemory().isEmpty()); // the scan finds what is there
            command.stop = stop.get_token();
            if (end == ProcessEnd::TimedOut)
                command.silenceLimit = 500ms;
            auto task = m_shell.run(std::move(command));
            if (end == ProcessEnd::Stopped) {
                spinUntil([this] { return !m_lines.isEmpty(); });
                stop.request_stop();
            }
            QCOMPARE(await(std::move(task)).end, end);
        }
        QCOMPARE(Fixture::read(m_fixture.path("told")).toUtf8(),
                 end == ProcessEnd::FailedToStart ? QByteArray() : probe.disguise());
        QCOMPARE(probe.copiesInMemory(), QString());
    }

    void theEnvironmentIsPassedOn() {
        qputenv("LARKSPUR_ASKPASS_PASSWORD", "left over");
        qputenv("LARKSPUR_TEST_BYTES", "no \xff text");
        for (const char *password : {"", "sesame"}) {
            ShellCommand command = shell(
                "echo \"[$LARKSPUR_ASKPASS_PASSWORD]\"; printf %s \"$LARKSPUR_TEST_BYTES\" | od -An -tx1",
                RunMode::Capture);
            if (*password)
                command.password = Password(QByteArray(password));
            QCOMPARE(await(m_shell.run(std::move(command))).standardOutput(),
                     QString("[%1]\n 6e 6f 20 ff 20 74 65 78 74\n").arg(password));
        }
        qunsetenv("LARKSPUR_ASKPASS_PASSWORD");
        qunsetenv("LARKSPUR_TEST_BYTES");
    }

    void childrenListenToSignals() {
        const auto before = std::signal(SIGPIPE, SIG_IGN);
        const auto hangUp = std::signal(SIGHUP, SIG_IGN);
        const ShellResult result = run("sh -c 'kill -PIPE $$'; echo $?; sh -c 'kill -HUP $$'; echo $?");
        std::signal(SIGPIPE, before);
        std::signal(SIGHUP, hangUp);
        QCOMPARE(result.standardOutput(), "141\n129");
    }

    void silenceTimesOut() {
        ShellCommand command = shell("echo begun; sleep 60");
        command.silenceLimit = 300ms;
        const ShellResult result = await(m_shell.run(std::move(command)));
        QCOMPARE(result.end, ProcessEnd::TimedOut);
        QCOMPARE(result.verdict().error().kind, BrewError::Kind::Timeout);
        // A child that goes on printing is left alone.
        command = shell("for i in 1 2 3 4 5 6; do echo $i; sleep 0.1; done");
        command.silenceLimit = 400ms;
        QVERIFY(await(m_shell.run(std::move(command))).succeeded());
    }

    void silenceIsReported() {
        std::chrono::seconds reported{-1};
        ShellCommand command = shell("sleep 2.5");
        command.silenceNotice = 900ms;
        command.onSilence = [&](std::chrono::seconds silence) { reported = silence; };
        QVERIFY(await(m_shell.run(std::move(command))).succeeded());
        QVERIFY(reported >= 0s);
    }

    void logsTheEnd() {
        run("head -c 10000 /dev/zero | tr '\\0' e >&2; exit 7");
        const QString entry = m_fixture.logText().trimmed().section('\n', -1);
        QVERIFY(entry.contains("shell exit=7 duration="));
        QVERIFY(entry.endsWith(" stderr=" + QString(500, 'e') + "…"));
        run("printf 'a\\nb\\n' >&2; exit 7");
        QVERIFY(m_fixture.logText().trimmed().endsWith(" stderr=a b"));
    }
};

QTEST_GUILESS_MAIN(ChildProcessTest)
#include "ChildProcess_test.moc"
