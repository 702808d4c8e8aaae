#include "core/process/Descendants.h"
#include "core/process/ProcessShellExecutor.h"
#include "platform/Platform.h"
#include "tests/support/Await.h"
#include "tests/support/Fixture.h"

#include <QDir>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace larkspur;
using namespace larkspur::test;

Q_DECLARE_METATYPE(larkspur::RunMode)

/// Children whose group does not end as it should. On Linux, where a test can bring that about.
class GroupEndTest : public QObject {
    Q_OBJECT

    Fixture m_fixture;
    Platform m_platform = makePlatform();
    ProcessShellExecutor m_shell{{.askpassScript = "/none", .readLoginShell = false, .grace = 400ms},
                                 m_fixture.preferences,
                                 *m_platform.terminal,
                                 *m_platform.processes,
                                 m_fixture.logger};
    QStringList m_lines;

    ShellCommand shell(const QString &script, RunMode mode) {
        m_lines.clear();
        ShellCommand command{.program = "/bin/sh", .arguments = {"-c", script}, .mode = mode};
        command.onOutput = [this](const OutputChange &change) {
            m_lines.resize(m_lines.size() - change.replaces);
            m_lines += change.lines;
        };
        return command;
    }

    /// Shows nobody, as /proc does where other users' processes are hidden.
    struct HidingProcessTable final : ProcessTable {
        std::optional<GroupMembers> membersOf(qint64) const override { return GroupMembers(); }
        QList<qint64> holdersOf(int) const override { return {}; }
        QString nameOf(qint64) const override { return {}; }
    };

    /// Gives the test the rights of an ordinary user and takes them back.
    static bool becomeNobody() {
        constexpr uid_t nobody = 65534;
        return ::setresuid(nobody, nobody, 0) == 0;
    }
    static bool becomeRoot() { return ::setresuid(0, 0, 0) == 0; }

    /// A program that changes its user, as sudo does, and what it needs; empty where there can be none.
    QString userChanger() {
        if (::geteuid() != 0 || !QFile::exists("/usr/bin/setpriv"))
            return {};
        const QString changer = m_fixture.path("setpriv");
        QFile::remove(changer);
        QDir().mkpath(m_fixture.path("Logs"));
        if (!QFile::exists(m_fixture.path("Logs/larkspur.log")))
            Fixture::write(m_fixture.path("Logs/larkspur.log"), {});
        for (const char *path : {"", "Logs", "Logs/larkspur.log"})
            if (::chown(m_fixture.path(path).toLocal8Bit().constData(), 65534, 65534) != 0)
                return {};
        const bool isMade = QFile::copy("/usr/bin/setpriv", changer) &&
                            ::chmod(changer.toLocal8Bit().constData(), 04755) == 0;
        return isMade ? changer + " --reuid=0 --clear-groups" : QString();
    }

  private Q_SLOTS:
    void aProcessOfAnotherUserIsWaitedFor_data() {
        QTest::addColumn<RunMode>("mode");
        QTest::addColumn<QString>("table");
        QTest::newRow("two pipes") << RunMode::Stream << "shows all";
        QTest::newRow("terminal") << RunMode::Terminal << "shows all";
        QTest::newRow("hidden") << RunMode::Stream << "hides some";
        QTest::newRow("no list of processes") << RunMode::Stream << "none";
    }
    void aProcessOfAnotherUserIsWaitedFor() {
        QFETCH(RunMode, mode);
        QFETCH(QString, table);
        const HidingProcessTable hiding;
        const NullProcessTable none;
        const ProcessTable *processes = m_platform.processes.get();
        if (table != "shows all")
            processes = table == "none" ? static_cast<const ProcessTable *>(&none) : &hiding;
        ProcessShellExecutor executor({.askpassScript = "/none", .readLoginShell = false, .grace = 400ms},
                                      m_fixture.preferences, *m_platform.terminal, *processes,
                                      m_fixture.logger);
        const QString changer = userChanger();
        if (changer.isEmpty())
            QSKIP("needs root and setpriv");
        QFile::remove(m_fixture.path("go"));
        QVERIFY(becomeNobody());
        StopSource stop;
        ShellCommand command = shell(changer + " sh -c 'trap \"\" HUP; id -u; while [ ! -e " +
                                         m_fixture.path("go") + " ]; do sleep 0.1; done' & wait; sleep 60",
                                     mode);
        command.stop = stop.get_token();
        auto task = executor.run(std::move(command));
        const bool hasBegun = spinUntil([this] { return !m_lines.isEmpty(); });
        stop.request_stop();
        const QString warning = "started as another user is still running";
        const auto told = [&] {
            return m_lines.filter(table == "shows all" ? warning + " (PID" : warning + ';').size();
        };
        const bool hasTold = spinUntil([&] { return told() > 0; });
        QTest::qWait(1000);
        const bool waits = !task.isReady();
        QVERIFY(becomeRoot());
        Fixture::write(m_fixture.path("go"), {});
        QCOMPARE(await(std::move(task)).end, ProcessEnd::Stopped);
        if (m_lines.value(0) != "0")
            QSKIP("programs cannot change their user here");
        QVERIFY(hasBegun && hasTold && waits);
        QCOMPARE(told(), 1);
        QVERIFY(m_fixture.logText().contains(
            "Warning: A process that this operation has started as another user"));
    }

    void aSessionOfItsOwnIsNoWayOut_data() {
        QTest::addColumn<QString>("script");
        QTest::newRow("obeys") << "setsid sleep 60 & echo $!; wait";
        QTest::newRow("ignores")
            << "setsid sh -c 'trap \"\" TERM; echo $$; while :; do sleep 1; done' & wait";
        QTest::newRow("its child")
            << "setsid sh -c 'sh -c \"echo \\$\\$; exec sleep 60\" & exit' & wait; sleep 60";
    }
    /// As Homebrew's sandbox starts a build; it holds the operation lock for as long as it runs.
    void aSessionOfItsOwnIsNoWayOut() {
        QFETCH(QString, script);
        QFile lock(m_fixture.path("lock"));
        QVERIFY(lock.open(QIODevice::ReadWrite));
        StopSource stop;
        ShellCommand command = shell(script, RunMode::Stream);
        command.stop = stop.get_token();
        command.keptOpen = lock.handle();
        auto task = m_shell.run(std::move(command));
        QVERIFY(spinUntil([this] { return !m_lines.isEmpty(); }));
        const pid_t runaway = m_lines.first().toInt();
        const Platform platform = makePlatform();
        QVERIFY(platform.processes->holdersOf(lock.handle()).contains(runaway));
        QVERIFY(!platform.processes->nameOf(runaway).isEmpty());
        stop.request_stop();
        QCOMPARE(await(std::move(task)).end, ProcessEnd::Stopped);
        QTest::qWait(50); // its entry in the list of processes goes a moment later
        QVERIFY(!platform.processes->holdersOf(lock.handle()).contains(runaway));
    }

    /// Who holds the pipe is killed with the child: that must be nobody else, such as the person's browser.
    void noOtherChildHoldsThePipe() {
        Descendants descendants;
        descendants.prepare();
        QProcess other;
        other.start("cat", QStringList());
        QVERIFY(other.waitForStarted());
        QCOMPARE(m_platform.processes->holdersOf(descendants.descriptor()), QList<qint64>());
        other.closeWriteChannel();
        QVERIFY(other.waitForFinished());
    }

    void aChildLeavesNoDescriptorOpen() {
        const auto open = [] {
            return QDir("/proc/self/fd").entryList(QDir::System | QDir::AllEntries).size();
        };
        const auto before = open();
        {
            Descendants descendants;
            descendants.prepare();
            descendants.childStarted();
            QCOMPARE(open(), before + 1);
        }
        QCOMPARE(open(), before);
    }

    void processesThatEndedUnnoticedAreNotWaitedFor_data() {
        QTest::addColumn<bool>("isForeign");
        QTest::newRow("own") << false;
        QTest::newRow("another user's") << true;
    }
    void processesThatEndedUnnoticedAreNotWaitedFor() {
        QFETCH(bool, isForeign);
        const QString changer = isForeign ? userChanger() : QString();
        if (isForeign && (changer.isEmpty() || !becomeNobody()))
            QSKIP("needs root and setpriv");
        // This process becomes the parent of what its children leave, and takes no note of their ends.
        QCOMPARE(::prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
        StopSource stop;
        ShellCommand command =
            shell(isForeign ? changer + " sh -c 'echo $$; sleep 2' & wait" : "sleep 60 & echo $!; wait",
                  RunMode::Stream);
        command.stop = stop.get_token();
        auto task = m_shell.run(std::move(command));
        spinUntil([this] { return !m_lines.isEmpty(); });
        stop.request_stop();
        const ShellResult result = await(std::move(task));
        ::prctl(PR_SET_CHILD_SUBREAPER, 0);
        QVERIFY(!isForeign || becomeRoot());
        QCOMPARE(result.end, ProcessEnd::Stopped);
        QVERIFY(m_lines.size() >= 1); // a warning may follow while another user's still runs
        QVERIFY(::kill(m_lines.first().toInt(), 0) == 0); // as an entry in the list of processes
        ::waitpid(m_lines.first().toInt(), nullptr, 0);
    }
};

QTEST_GUILESS_MAIN(GroupEndTest)
#include "GroupEnd_test.moc"
