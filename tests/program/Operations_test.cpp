#include "tests/support/Await.h"
#include "tests/support/Processes.h"
#include "tests/support/Program.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTest>

#include <csignal>

using namespace larkspur::test;

/// Every way in which an operation can go, on the sample package that goes it.
class OperationsTest : public QObject {
    Q_OBJECT

    Program m_program;

  private Q_SLOTS:
    void initTestCase() { QCOMPARE(m_program.run({"--fresh", "status"}).status, 0); }

    void paths_data() {
        QTest::addColumn<QString>("line");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("says");
        QTest::newRow("removed by hand") << "upgrade lichen-notes" << 0
                                         << "==> lichen-notes was removed outside Homebrew, but Homebrew "
                                            "still lists it as installed. Retrying "
                                            "with --force…";
        QTest::newRow("older copy")
            << "upgrade mosswood-photos" << 0
            << "==> An older copy of mosswood-photos is blocking the update. Retrying with "
               "--force…";
        QTest::newRow("App Management")
            << "upgrade nightjar-recorder" << 1 << "macOS blocked Larkspur from modifying this app.";
        QTest::newRow("reverted") << "upgrade osprey-sync" << 1
                                  << "Upgrade rolled back: osprey-sync was restored to the previous version.";
        QTest::newRow("broken download")
            << "upgrade petrel-maps" << 1 << "Petrel Maps.app back as it was before.";
        QTest::newRow("licence") << "install toadflax-odbc" << 1
                                 << "echo 'export HOMEBREW_ACCEPT_EULA=Y' >> ~/.zshrc";
        QTest::newRow("half-way through a batch") << "upgrade yarrow hearthbuild lanternfish" << 1
                                                  << "==> 2 of 3 packages are done. Not done: hearthbuild";
        QTest::newRow("up to date")
            << "upgrade mosscopy" << 0
            << "==> mosscopy is already up to date (installed 3.4.0, latest 3.4.0). No "
               "changes were made.";
        QTest::newRow("pinned, not asked") << "upgrade kelp" << 1 << "a package is pinned; --yes upgrades it";
        QTest::newRow("pinned, agreed") << "upgrade kelp --yes" << 0 << "Done: Upgrading kelp.";
        QTest::newRow("service") << "upgrade meadowdb" << 0
                                 << "==> Services that still run the old version: meadowdb";
        QTest::newRow("adopt and force") << "install --cask copperplate --adopt --force" << 0
                                         << "==> This Homebrew does not adopt and force at once.";
        QTest::newRow("needed by others") << "uninstall libember" << 1 << "Refusing to uninstall";
        QTest::newRow("removals") << "uninstall --cask tidepool bluefinch" << 0
                                  << "Successfully uninstalled bluefinch";
        QTest::newRow("option for a name") << "uninstall -- --force" << 1 << "--force";
        QTest::newRow("shell for a name") << "uninstall a;b" << 1 << "a;b";
    }
    void paths() {
        QFETCH(QString, line);
        QFETCH(int, status);
        QFETCH(QString, says);
        const auto outcome = m_program.run(line.split(' '));
        const QString all = outcome.output + outcome.errors;
        QVERIFY2(all.contains(says), qPrintable(all));
        QVERIFY2(outcome.status == status, qPrintable(all));
        QCOMPARE(QDir(m_program.path("data"))
                     .entryList({"*lock*", ".askpass*"}, QDir::Files | QDir::Hidden | QDir::System),
                 QStringList());
        QCOMPARE(QDir(m_program.path("data/CrashNotes")).entryList(QDir::Files | QDir::Hidden),
                 QStringList());
    }

    void whatTheyLeaveBehind() {
        QVERIFY(QDir(m_program.path("Applications/Petrel Maps.app/Contents")).exists());
        QVERIFY(QDir(m_program.path("Applications/Lichen.app/Contents")).exists());
        QVERIFY(m_program.run({"pinned"}).output.contains("kelp"));
        QVERIFY(m_program.run({"list"}).output.contains("hearthbuild"));
    }

    void capitalsAndColoursAreUnderstood() {
        Program program;
        QCOMPARE(program.run({"status"}).status, 0);
        program.replaceBrew(
            "if [ \"$1\" = upgrade ]; then printf '\\e[31mWARNING:\\e[0m \\e[1mREVERTING UPGRADE "
            "FOR\\e[0m Cask osprey-sync\\n'; exit 1; fi\nexec -a " +
            program.brew().toUtf8() + " $REAL \"$@\"\n");
        const auto outcome = program.run({"upgrade", "osprey-sync"});
        QCOMPARE(outcome.status, 1);
        QVERIFY(outcome.errors.contains(
            "Upgrade rolled back: osprey-sync was restored to the previous version."));
    }

    void whatHomebrewOnlyClaimsIsNoSuccess() {
        Program program;
        QCOMPARE(program.run({"status"}).status, 0);
        program.replaceBrew("case \"$1\" in install|uninstall) echo fine; exit 0;; esac\nexec -a " +
                            program.brew().toUtf8() + " $REAL \"$@\"\n");
        const auto installed = program.run({"install", "inkcap"});
        QVERIFY2(installed.status == 1 && installed.output.contains("but inkcap is not installed."),
                 qPrintable(installed.output));
        const auto removed = program.run({"uninstall", "--yes", "dunes"});
        QVERIFY2(removed.status == 1 && removed.output.contains("but dunes is still installed"),
                 qPrintable(removed.output));
        QCOMPARE(program.run({"history"}).output.count("failed"), 2);
    }

    void twoProgramsTakeTurns() {
        Program program;
        QCOMPARE(program.run({"status"}).status, 0);
        const auto first = program.start({"install", "inkcap"}, {"HOMEBREW_SAMPLE_PACE=on"});
        EVENTUALLY(QFile::exists(program.path("data/operation.lock")));
        const auto reading =
            program.run({"snoozed"}); // what only reads neither waits nor speaks of accidents
        QVERIFY2(reading.status == 0 && reading.errors.isEmpty(), qPrintable(reading.errors));
        QVERIFY(QFile::exists(program.path("data/operation.lock")));
        const auto second = program.run({"install", "dovetail"});
        QCOMPARE(second.status, 0);
        QCOMPARE(second.output.section('\n', 0, 0), "==> Waiting for another Homebrew operation to finish…");
        QCOMPARE(first->state() == QProcess::NotRunning || first->waitForFinished(30'000), true);
        QVERIFY(QDir(program.path("homebrew/Cellar/inkcap")).exists());
        // Two upgrades behind one operation: both run, one after the other, each with its preserved keg.
        const auto holder = program.start({"install", "nightjar"}, {"HOMEBREW_SAMPLE_PACE=on"});
        EVENTUALLY(QFile::exists(program.path("data/operation.lock")));
        const auto heron = program.start({"upgrade", "heron"});
        const auto quillmark = program.start({"upgrade", "quillmark"});
        for (QProcess *upgrade : {heron.get(), quillmark.get()}) {
            const auto outcome = Program::finish(*upgrade);
            QVERIFY2(outcome.status == 0, qPrintable(outcome.output + outcome.errors));
            QVERIFY(outcome.output.contains("==> Waiting for another Homebrew operation to finish…"));
        }
        QCOMPARE(Program::finish(*holder).status, 0);
        QStringList preserved;
        for (const QJsonValue &entry : program.run({"kegs", "list", "--json"}).json().array())
            preserved.append(entry.toObject()["formula"].toString());
        QVERIFY2(preserved.contains("heron") && preserved.contains("quillmark"),
                 qPrintable(preserved.join(' ')));
    }

    void aBrewThatOutlivesItsProgramIsWaitedFor() {
        Program program;
        QCOMPARE(program.run({"status"}).status, 0);
        program.replaceBrew("if [ \"$1\" = install ] && [ \"$2\" = larchgrove ]; then touch \"$0.begun\"; "
                            "sleep 2; exec >/dev/null 2>&1; fi\nexec -a " +
                            program.brew().toUtf8() + " $REAL \"$@\"\n");
        const auto killed = program.start({"install", "larchgrove"});
        EVENTUALLY(QFile::exists(program.brew() + ".begun"));
        killed->kill();
        QVERIFY(killed->waitForFinished());
        const auto next = program.run({"install", "widdershins"});
        QVERIFY2(next.status == 0 && next.output.contains("Waiting"), qPrintable(next.output));
        // Who holds it is named, for the person to judge.
        QVERIFY2(QRegularExpression("what it started still runs: \\S.* \\(PID \\d+\\)")
                     .match(next.errors)
                     .hasMatch(),
                 qPrintable(next.errors));
        QVERIFY(
            QDir(program.path("homebrew/Cellar/larchgrove")).exists()); // the orphan came to its end first
        // One that died with its brew holds nothing.
        const auto both = program.start({"install", "inkcap"}, {"HOMEBREW_SAMPLE_PACE=on"});
        const QByteArray itsBrew = program.brew().toUtf8() + " install inkcap";
        EVENTUALLY(!processesWith(itsBrew).isEmpty());
        both->kill();
        QVERIFY(both->waitForFinished());
        EVENTUALLY(processesWith(program.brew().toUtf8()).isEmpty() ||
                   (killProcessesWith(program.brew().toUtf8()), false));
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(program.run({"install", "dovetail"}).status, 0);
        QVERIFY(clock.elapsed() < 20'000);
    }

    /// A program in the middle of pinning what was pinned before, with a brew that hangs there.
    static std::unique_ptr<QProcess> startWithAHangingPin(Program &program, const QStringList &words) {
        program.replaceBrew("if [ \"$1\" = pin ]; then touch \"$0.begun\"; exec sleep 107; fi\nexec -a " +
                            program.brew().toUtf8() + " $REAL \"$@\"\n");
        auto run = program.start(words);
        if (!spinUntil([&] { return QFile::exists(program.brew() + ".begun"); }))
            qFatal("nothing is pinned");
        return run;
    }
    static void verifyPinIsRemembered(Program &program) {
        const QDir notes(program.path("data/CrashNotes"));
        QCOMPARE(notes.entryList({"*held-pin*.json"}).size(), 1);
        QVERIFY(!QFile::exists(program.path("data/operation.lock")));
        program.replaceBrew("exec -a " + program.brew().toUtf8() + " $REAL \"$@\"\n");
        const auto pinned = program.run({"pinned"}); // an answer about what is put right
        QVERIFY2(pinned.errors.contains("Pinning kelp again") && pinned.output.contains("kelp"),
                 qPrintable(pinned.errors));
        QCOMPARE(notes.entryList({"*held-pin*.json"}).size(), 0);
    }
    void aRepairThatHangsCanBeLeft() {
        Program program;
        QCOMPARE(program.run({"status"}).status, 0);
        const auto upgrade = startWithAHangingPin(program, {"upgrade", "--yes", "kelp"});
        ::kill(static_cast<pid_t>(upgrade->processId()), SIGTERM);
        QVERIFY(!upgrade->waitForFinished(1000)); // what is put right is not left for one word
        ::kill(static_cast<pid_t>(upgrade->processId()), SIGTERM);
        const auto outcome = Program::finish(*upgrade);
        QVERIFY2(outcome.status == 3 && outcome.output.contains("kelp was pinned and could not be pinned"),
                 qPrintable(outcome.output));
        verifyPinIsRemembered(program);
    }
    void aRecoveryThatHangsKeepsNobody() {
        Program program;
        QCOMPARE(program.run({"status"}).status, 0);
        const auto killed = startWithAHangingPin(program, {"upgrade", "--yes", "kelp"});
        killed->kill();
        QVERIFY(killed->waitForFinished());
        killProcessesWith("sleep 107");
        EVENTUALLY(processesWith("sleep 107").isEmpty()); // it held the lock
        QFile::remove(program.brew() + ".begun");
        const auto list = startWithAHangingPin(program, {"list"});
        ::kill(static_cast<pid_t>(list->processId()), SIGTERM);
        const auto outcome = Program::finish(*list);
        QVERIFY2(outcome.errors.contains("put right before the next"), qPrintable(outcome.errors));
        verifyPinIsRemembered(program);
    }
};

QTEST_GUILESS_MAIN(OperationsTest)
#include "Operations_test.moc"
