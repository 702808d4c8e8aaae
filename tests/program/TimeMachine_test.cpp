#include "core/trees/TreeScan.h"
#include "tests/support/Await.h"
#include "tests/support/Fixture.h"
#include "tests/support/Processes.h"
#include "tests/support/Program.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTest>

#include <csignal>

using namespace larkspur;
using namespace larkspur::test;

/// Undoing things, on real files.
class TimeMachineTest : public QObject {
    Q_OBJECT

    std::unique_ptr<Program> m_program;

    TreeScan prefix() const {
        auto scan = TreeScan::of(m_program->path("homebrew"), TreeScan::Depth::Contents);
        if (!scan)
            qFatal("%s", qPrintable(scan.error()));
        return *scan;
    }
    static QByteArray differences(const TreeScan &left, const TreeScan &right) {
        QByteArray text;
        for (const TreeEntry &entry : left.entries)
            if (!right.entries.contains(entry))
                text += "- " + entry.path + '\n';
        for (const TreeEntry &entry : right.entries)
            if (!left.entries.contains(entry))
                text += "+ " + entry.path + '\n';
        return text;
    }
    QString version(const QString &formula) const {
        return QDir(m_program->path("homebrew/Cellar/" + formula))
            .entryList(QDir::Dirs | QDir::NoDotAndDotDot)
            .join(' ');
    }
    Program::Outcome run(const QString &line) { return m_program->run(line.split(' ')); }
    void waitForBrew() const {
        // A brew whose Larkspur was killed goes on for a moment.
        EVENTUALLY(processesWith(m_program->brew().toUtf8()).isEmpty());
    }

  private Q_SLOTS:
    void init() {
        m_program = std::make_unique<Program>();
        QCOMPARE(m_program->run({"status"}).status, 0);
    }

    void upgradesAreUndoneToTheByte() {
        const TreeScan start = prefix();
        QCOMPARE(run("upgrade quillmark heron lanternfish").status, 0);
        QCOMPARE(version("heron"), "8.11.1");
        QCOMPARE(run("rollback heron 8.10.0").status, 0);
        QCOMPARE(version("heron"), "8.10.0");
        QCOMPARE(run("install dovetail").status, 0);
        const QString id = run("snapshot list --json").json().array().first().toObject()["id"].toString();
        const auto restored = run("snapshot restore " + id.left(8) + " --roll-back --remove-added");
        QVERIFY2(restored.status == 0, qPrintable(restored.output + restored.errors));
        QVERIFY(restored.output.contains("==> Restore complete."));
        QCOMPARE(differences(start, prefix()), QByteArray());
        QVERIFY(run("snapshot restore " + id).output.startsWith("Nothing to restore\n"));
    }

    void aDamagedRestorePointSaysWhatItLacks() {
        const QString id = run("snapshot take --json").json().object()["id"].toString();
        const QString path = m_program->path("data/Snapshots/" + id + ".json");
        const QString text = Fixture::read(path);
        QVERIFY(text.contains("\"heron\""));
        Fixture::write(path, QString(text).replace("\"heron\"", "\"--heron\"").toUtf8());
        const QString reason = "\"--heron\" is left out: this is no name of a formula";
        const auto shown = run("snapshot show " + id);
        QVERIFY(shown.status == 3 && shown.errors.contains(reason));
        for (const char *option : {"", " --remove-added"}) { // heron may be what was meant
            const auto restored = run("snapshot restore " + id + option);
            QVERIFY2(restored.status == 3 && restored.errors.contains(reason),
                     qPrintable(restored.output + restored.errors));
            QVERIFY(restored.output.startsWith("Nothing to restore\n") && version("heron") == "8.10.0");
            QVERIFY(restored.errors.contains("no formula is removed"));
        }
        QCOMPARE(run("uninstall foliograph --cask").status, 0);
        const auto restored = run("snapshot restore --remove-added " + id);
        QVERIFY2(restored.status == 3, qPrintable(restored.output + restored.errors));
        QVERIFY(restored.output.contains("Restore complete.") && version("heron") == "8.10.0");
    }

    void aVersionIsSkipped() {
        QCOMPARE(run("upgrade sparrowgit").status, 0);
        QVERIFY(run("rollback sparrowgit 2.47.0")
                    .output.contains("\"larkspur snooze sparrowgit\" skips the version"));
        QCOMPARE(run("snooze sparrowgit").output,
                 "sparrowgit 2.48.1 is snoozed. Until version after 2.48.1\n");
        QVERIFY(run("outdated").output.endsWith("Snoozed: sparrowgit\n"));
        for (const QJsonValue &package : run("outdated --json").json().array())
            QVERIFY(package.toObject()["name"].toString() != "sparrowgit");
        const auto all = run("upgrade --all");
        QCOMPARE(all.output.section('\n', 0, 0),
                 "Snoozed, so upgraded only if another package needs it: sparrowgit");
        QCOMPARE(version("sparrowgit"), "2.47.0");
        QVERIFY(!version("quillmark").isEmpty() && !run("outdated").output.contains("quillmark"));
        QCOMPARE(run("snooze nothing-of-the-kind").status, 1);
        QCOMPARE(run("snooze sparrowgit --day --week").status, 2);
        QCOMPARE(run("unsnooze sparrowgit").status, 0);
        QCOMPARE(run("unsnooze sparrowgit").status, 1);
        QVERIFY(run("outdated").output.contains("sparrowgit"));
        const QString history = run("history").output;
        QVERIFY(history.contains("quillmark") && history.section('\n', -2, -2).contains("sparrowgit"));
    }

    void whatNobodyCanPutBackIsSaid() {
        QCOMPARE(run("upgrade amberdesk --cask").status, 0);
        QCOMPARE(run("snapshot take before").status, 0);
        QCOMPARE(run("uninstall --cask tidepool").status, 0);
        const QJsonArray list = run("snapshot list --json").json().array();
        QCOMPARE(list.first().toObject()["note"].toString(), "before");
        const auto compared = run("snapshot compare --json " + list.first().toObject()["id"].toString());
        QCOMPARE(compared.json().object()["removed"].toArray().first().toObject()["name"].toString(),
                 "tidepool");
        const auto restored = run("snapshot restore " + list.last().toObject()["id"].toString());
        QVERIFY2(restored.output.contains("==> 1 cask(s) can't be rolled back automatically: amberdesk"),
                 qPrintable(restored.output));
        QVERIFY(restored.output.contains("==> Reinstalling tidepool"));
        QCOMPARE(restored.status, 0);
    }

    void aRestoreThatFailsSaysWhatIsLeft() {
        QCOMPARE(run("snapshot take").status, 0);
        QCOMPARE(run("uninstall --cask tidepool foliograph").status, 0);
        m_program->replaceBrew(
            "if [ \"$1\" = install ] && [[ \"$*\" = *tidepool ]]; then echo 'Error: no network' >&2; "
            "exit 1; fi\nexec -a " +
            m_program->brew().toUtf8() + " $REAL \"$@\"\n");
        const QString id = run("snapshot list --json").json().array().first().toObject()["id"].toString();
        const auto failed = run("snapshot restore " + id);
        QCOMPARE(failed.status, 1);
        QVERIFY2(failed.output.contains("==> Restore incomplete. Not done: tidepool."),
                 qPrintable(failed.output));
        m_program->replaceBrew("exec -a " + m_program->brew().toUtf8() + " $REAL \"$@\"\n");
        const auto rest = run("snapshot restore " + id);
        QVERIFY(rest.status == 0 && !rest.output.contains("foliograph"));
    }

    void theCommandsAndTheirMistakes() {
        for (const char *line : {"snapshot frob", "snapshot show zzz", "snapshot restore", "kegs frob",
                                 "kegs remove heron", "rollback heron"})
            QVERIFY2(run(line).status == 2, line);
        QCOMPARE(run("snapshot take one").status, 0);
        QCOMPARE(run("install dovetail").status, 0);
        QCOMPARE(run("snapshot take two").status, 0);
        const QJsonArray list = run("snapshot list --json").json().array();
        const QString newer = list.first().toObject()["id"].toString();
        const QString older = list.last().toObject()["id"].toString();
        QCOMPARE(run("snapshot compare " + newer + ' ' + older).output, "+ dovetail 1.1.4\n");
        QCOMPARE(run("snapshot compare " + newer).output, "These two snapshots have the same packages.\n");
        QCOMPARE(run("snapshot compare " + newer + ' ' + newer).status, 2);
        QVERIFY(run("snapshot show " + older).output.contains("one\n"));
        // What cannot be undone is done where nobody can be asked only with --yes.
        QCOMPARE(run("snapshot delete " + newer.left(8)).status, 1);
        QCOMPARE(run("snapshot delete --all").status, 1);
        QCOMPARE(run("snapshot list --json").json().array().size(), 2);
        QCOMPARE(run("snapshot delete --yes " + newer.left(8)).output, "1 restore point deleted.\n");
        QFile foreign(m_program->path("data/Snapshots/foreign.json"));
        QVERIFY(foreign.open(QIODevice::WriteOnly));
        const auto listed = run("snapshot list");
        QCOMPARE(listed.status, 3);
        QVERIFY(listed.output.contains(older.left(8)) && listed.errors.contains("foreign.json"));
        QCOMPARE(run("snapshot delete --all --yes").status, 0);
        QCOMPARE(run("snapshot list --json").json().array().size(), 0);
    }

    void aDamagedCopyIsNotUsed() {
        QCOMPARE(run("upgrade heron").status, 0);
        QFile file(m_program->path("data/PreservedKegs/heron/8.10.0/lib/heron.data"));
        QVERIFY(file.open(QIODevice::ReadWrite) && file.seek(1000) && file.putChar('x'));
        file.close();
        QVERIFY(run("kegs verify").output.contains("heron 8.10.0: damaged"));
        const auto outcome = run("rollback heron 8.10.0");
        QCOMPARE(outcome.status, 1);
        QVERIFY(outcome.output.contains("==> Could not roll back heron: no preserved copy of 8.10.0"));
        QCOMPARE(version("heron"), "8.11.1");
        QCOMPARE(run("kegs remove heron 8.10.0").status, 1);
        QVERIFY(run("kegs list").output.contains("heron"));
        QCOMPARE(run("kegs remove heron 8.10.0 --yes").status, 0);
        QVERIFY(!run("kegs list").output.contains("heron"));
    }

    void theDiskIsFullWhileCopying() {
        m_program->replaceBrew("exec -a " + m_program->brew().toUtf8() + " $REAL \"$@\"\n");
        // No file of the program may grow beyond 64 blocks: cp ends as on a full disk.
        QProcess process;
        process.start("bash", {"-c", "ulimit -f 1200; trap '' XFSZ; exec \"$0\" \"$@\"", LARKSPUR_PROGRAM,
                               "--sample-folder=" + m_program->path(""), "upgrade", "quillmark"});
        const auto outcome = Program::finish(process);
        QVERIFY2(outcome.output.contains("==> Warning: quillmark 3.5.0 could not be preserved"),
                 qPrintable(outcome.output));
        QVERIFY(!run("kegs list").output.contains("quillmark"));
        QCOMPARE(
            QDir(m_program->path("data/PreservedKegs")).entryList({".partial-*"}, QDir::Dirs | QDir::Hidden),
            QStringList());
    }

    /// KILLS=200 for a run at length.
    void killedAtAnyMoment() {
        const int kills =
            qEnvironmentVariableIntValue("KILLS") > 0 ? qEnvironmentVariableIntValue("KILLS") : 12;
        QRandomGenerator random(20'261'123);
        const QStringList work{"upgrade heron", "rollback heron 8.10.0"};
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(run(work[0]).status, 0);
        QCOMPARE(run(work[1]).status, 0);
        int longest = static_cast<int>(clock.elapsed() * 6 / 10);
        int killed = 0;
        for (int i = 0; i < kills; ++i) {
            QString line = work[version("heron") == "8.10.0" ? 0 : 1];
            if (line == work[1] && i % 2 == 0) // every restore point here is from before an upgrade
                line = "snapshot restore --roll-back " +
                       run("snapshot list --json").json().array().first().toObject()["id"].toString();
            const auto process = m_program->start(line.split(' '));
            QVERIFY(process->waitForStarted());
            QTest::qWait(random.bounded(longest));
            if (process->state() == QProcess::Running &&
                ::kill(static_cast<pid_t>(process->processId()), SIGKILL) == 0)
                ++killed;
            else // the machine has become faster since it was timed
                longest = qMax(2, longest * 2 / 3);
            EVENTUALLY_EQUAL(process->state(), QProcess::NotRunning);
            waitForBrew();
            // The next start finishes or undoes what was begun.
            QCOMPARE(run("kegs verify").status, 0);
            const QString there = version("heron");
            QVERIFY2(there == "8.10.0" || there == "8.11.1" || there == "8.10.0 8.11.1", qPrintable(there));
            const QString keg = m_program->path("homebrew/Cellar/heron/") + there.section(' ', -1);
            QVERIFY(QFile::exists(keg + "/bin/heron") && QFile::exists(keg + "/INSTALL_RECEIPT.json") &&
                    QFile::exists(keg + "/lib/heron.data"));
            QVERIFY(run("kegs list --json").json().isArray());
            if (there.contains(' ')) // the old keg stays until the next clean-up
                QVERIFY(QDir(m_program->path("homebrew/Cellar/heron/8.10.0")).removeRecursively());
        }
        QVERIFY(killed > 0);
        QCOMPARE(QDir(m_program->path("data/CrashNotes")).entryList(QDir::Files | QDir::Hidden),
                 QStringList());
        QVERIFY(!QFile::exists(m_program->path("homebrew/var/larkspur")));
        if (version("heron") == "8.10.0")
            QCOMPARE(run("upgrade heron").status, 0);
        QCOMPARE(run("rollback heron 8.10.0").status, 0);
    }
};

QTEST_GUILESS_MAIN(TimeMachineTest)
#include "TimeMachine_test.moc"
