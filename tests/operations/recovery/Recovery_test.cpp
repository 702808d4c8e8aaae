#include "operations/recovery/Recovery.h"
#include "tests/support/OperationWorld.h"

#include <QTest>

#include <unistd.h>

using namespace larkspur;
using namespace larkspur::test;

/// What a program that died leaves behind, and what the next one does about it.
class RecoveryTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        QString script = prefix() + "/Library/Homebrew/cask/utils/copy-xattrs.swift";

        World() {
            // brew lies at PREFIX/bin/brew
            QDir().mkpath(prefix() + "/bin");
            write(prefix() + "/bin/brew", "#!/bin/sh\n", true);
            preferences.set(keys::brewPathOverride, prefix() + "/bin/brew");
            QDir().mkpath(QFileInfo(script).path());
            write(script, "import Foundation\nexit(0)\n");
            write(script + ".larkspur-backup", "original");
            write(path(".secret"), "sesame\n");
            addFormula("kelp", "1");
            notePin("kelp");
        }
        void notePin(const QString &name) const {
            if (!CrashNote::write(path("notes"), "held-pin", {{"name", name}, {"isCask", false}}))
                qFatal("a note cannot be written");
        }
        int pinsTried() const { return static_cast<int>(shell.commandLines().count("pin kelp")); }
    };

  private Q_SLOTS:
    void everythingIsPutRight() {
        World world;
        world.shell.answer("pin kelp", {});
        await(world.recovery.run({}));
        QCOMPARE(Fixture::read(world.script), "original");
        QVERIFY(!QFile::exists(world.script + ".larkspur-backup"));
        QVERIFY(!world.askpass.hasLeftover());
        QCOMPARE(world.pinsTried(), 1);
        QVERIFY(world.notes().isEmpty());
        await(world.recovery.run({})); // finds nothing more to do
        QCOMPARE(world.pinsTried(), 1);
    }

    void itWaitsForWhatIsLeftOfAnOperation() {
        World world;
        world.shell.answer("pin kelp", {});
        OperationLock other(world.path("operation.lock"), world.processes);
        auto taken = await(other.acquire({}, {}));
        std::optional<OperationLock::Permit> held = std::move(*taken);
        bool hasEnded = false;
        const auto watch = [](Recovery *recovery, bool *ended) -> Task<> {
            co_await recovery->run({});
            *ended = true;
        };
        [[maybe_unused]] const auto running = watch(&world.recovery, &hasEnded);
        QVERIFY(!spinUntil([&] { return hasEnded; }, 500ms));
        QVERIFY(world.askpass.hasLeftover() && world.pinsTried() == 0);
        held.reset();
        QVERIFY(spinUntil([&] { return hasEnded; }));
        QVERIFY(!world.askpass.hasLeftover() && world.pinsTried() == 1);
    }

    void everyOperationBeginsWithIt() {
        World world;
        world.shell.answer("pin kelp", {});
        world.shell.answer("install dovetail", {}, 0);
        QVERIFY(!world.perform("install", {{"dovetail", false}}).failure);
        QVERIFY(world.changes().indexOf("pin kelp") < world.changes().indexOf("install dovetail"));
        QCOMPARE(world.pinsTried(), 1);
        QVERIFY(world.sink->transcript.text().contains("==> Pinning kelp again"));
    }

    void aLinkThatDoesNotComeBackIsSaidAndTriedAgain() {
        World world;
        world.shell.answer("pin kelp", {});
        const QString record = world.prefix() + "/var/homebrew/linked/kelp";
        QDir().mkpath(QFileInfo(record).path());
        QFile::link(world.prefix() + "/Cellar/kelp/1", record);
        world.shell.answerOnce("install dovetail", {}, 0, [&] {
            QFile::remove(record);
            world.addFormula("dovetail", "1");
        });
        world.shell.answerOnce("link --overwrite kelp", "Error: in the way\n", 1);
        const auto report = world.perform("install", {{"dovetail", false}});
        QVERIFY(report.hasWarnings && world.notes().size() == 1);
        world.shell.answer("link --overwrite kelp", {});
        await(world.recovery.run({})); // or the next operation
        QVERIFY(world.changes().count("link --overwrite kelp") == 2 && world.notes().isEmpty());
    }

    void aProgramWithoutItsLinkIsLinkedAnew_data() {
        QTest::addColumn<QString>("before");
        QTest::addColumn<QString>("after");
        QTest::addColumn<bool>("isLinkedAnew");
        const QString own = "../Cellar/kelp/1/bin/kelp";
        QTest::newRow("cut off while unlinking") << own << QString() << true;
        QTest::newRow("still to another version") << own << "../Cellar/kelp/0/bin/kelp" << true;
        QTest::newRow("nothing has happened") << own << own << false;
        QTest::newRow("taken over by another formula") << own << "../Cellar/heron/1/bin/kelp" << false;
        QTest::newRow("removed by the person") << QString() << QString() << false;
    }
    void aProgramWithoutItsLinkIsLinkedAnew() {
        QFETCH(QString, before);
        QFETCH(QString, after);
        QFETCH(bool, isLinkedAnew);
        World world;
        world.shell.answer("pin kelp", {});
        for (const char *keg : {"kelp/1", "kelp/0", "heron/1"}) {
            QDir().mkpath(world.prefix() + "/Cellar/" + keg + "/bin");
            Fixture::write(world.prefix() + "/Cellar/" + keg + "/bin/kelp", "program");
        }
        const QString record = world.prefix() + "/var/homebrew/linked/kelp";
        QDir().mkpath(QFileInfo(record).path());
        QVERIFY(QFile::link(world.prefix() + "/Cellar/kelp/1", record));
        const auto link = [path = world.prefix() + "/bin/kelp"](const QString &target) {
            QFile::remove(path);
            if (!target.isEmpty())
                QFile::link(target, path);
        };
        link(before);
        world.shell.answerOnce("install dovetail", {}, 1, [&] { link(after); });
        world.shell.answer("unlink kelp", {});
        world.shell.answer("link --overwrite kelp", {});
        world.perform("install", {{"dovetail", false}});
        QCOMPARE(world.changes().filter("link").join(", "),
                 isLinkedAnew ? "unlink kelp, link --overwrite kelp" : QString());
    }

    void onlyWhatCouldNotBeLinkedIsTriedAgain() {
        World world;
        QVERIFY(QDir(world.path("notes")).removeRecursively());
        world.addFormula("heron", "1");
        QVERIFY(CrashNote::write(world.path("notes"), "links",
                                 {{"prefix", world.prefix()}, {"linked", QJsonArray{"heron", "kelp"}}}));
        world.shell.answer("link --overwrite heron", {});
        world.shell.answer("link --overwrite kelp", "Error: in the way\n", 1);
        await(world.recovery.run({}));
        await(world.recovery.run({})); // the person has unlinked heron meanwhile
        QCOMPARE(world.changes().count("link --overwrite heron"), 1);
        QCOMPARE(world.changes().count("link --overwrite kelp"), 2);
        QCOMPARE(world.notes().size(), 1);
    }

    void aNoteOfLinksOfAnotherShapeIsKept_data() {
        QTest::addColumn<QJsonValue>("linked");
        QTest::newRow("missing") << QJsonValue(QJsonValue::Undefined);
        QTest::newRow("one name") << QJsonValue("kelp");
        QTest::newRow("a number among names") << QJsonValue(QJsonArray{"kelp", 5});
        QTest::newRow("an option") << QJsonValue(QJsonArray{"--force"});
    }
    void aNoteOfLinksOfAnotherShapeIsKept() {
        QFETCH(QJsonValue, linked);
        World world;
        QVERIFY(QDir(world.path("notes")).removeRecursively());
        QVERIFY(
            CrashNote::write(world.path("notes"), "links", {{"prefix", world.prefix()}, {"linked", linked}}));
        await(world.recovery.run({}));
        QVERIFY(world.notes().value(0).endsWith(".unreadable") && !world.changes().contains("link"));
        QVERIFY(world.logText().contains("what was linked before an interrupted operation cannot be used"));
    }

    void theNoteOfAnotherHomebrewWaitsForIt() {
        World world;
        world.shell.answer("pin kelp", {});
        QVERIFY(CrashNote::write(world.path("notes"), "held-pin",
                                 {{"prefix", "/elsewhere"}, {"name", "kelp"}, {"isCask", false}}));
        QVERIFY(CrashNote::write(world.path("notes"), "links",
                                 {{"prefix", "/elsewhere"}, {"linked", QJsonArray{"kelp"}}}));
        await(world.recovery.run({}));
        QCOMPARE(world.notes().size(), 2);
        QCOMPARE(world.pinsTried(), 1); // its own
        QVERIFY(!world.changes().contains("link --overwrite kelp"));
    }

    void aNoteThatCannotBeSetAsideIsSaidWhereItLies() {
        World world;
        const QString note = world.path("notes") + '/' + world.notes().value(0);
        Fixture::write(note, "half");
        QDir().mkpath(note + ".unreadable/in the way");
        await(world.recovery.run({}));
        QVERIFY(QFile::exists(note) && world.logText().contains("it still lies at " + note + " ("));
    }

    void notesThatCannotBeReadStayAndAreSaid() {
        OperationWorld world;
        QVERIFY(CrashNote::write(world.path("notes"), "held-pin",
                                 {{"prefix", world.prefix()}, {"name", "a"}, {"isCask", false}}));
        const QString note = world.path("notes") + '/' + world.notes().first();
        for (const QString &path : {world.folder.path(), world.path("notes")})
            QFile::setPermissions(
                path, QFile::Permissions::fromInt(0x7755)); // as far as the note, for whoever reads
        QFile::setPermissions(note, {});
        const bool isRoot = ::geteuid() == 0; // to whom every file is open
        QVERIFY(!isRoot || ::seteuid(65534) == 0);
        HeldPinLeftover leftover(world.path("notes"));
        await(leftover.putRight({nullptr, {.output = world.sink}, world.prefix(), &world.logger}));
        QVERIFY(!isRoot || ::seteuid(0) == 0);
        QCOMPARE(world.sink->lines().filter("cannot be read; it stays: ").filter(note).size(), 1);
        QVERIFY(QFile::exists(note));
        QVERIFY(QDir().rename(world.path("notes"), world.path("away")));
        QVERIFY(QFile::link("/nowhere/notes", world.path("notes")));
        QVERIFY(leftover.exists(world.prefix()));
        await(world.recovery.run({}));
        QVERIFY(world.logText().contains("cannot be read; it stays: " + world.path("notes")));
    }

    void whatFailsIsSaidAndStays() {
        World world;
        world.shell.answer("pin kelp", "Error: no\n", 1);
        await(world.recovery.run({}));
        QCOMPARE(world.notes().size(), 1);
        QVERIFY(world.logText().contains("kelp could not be pinned again"));
        world.shell.answer("pin kelp", {});
        await(world.recovery.run({}));
        QVERIFY(world.notes().isEmpty());
    }

    void aPinThatCannotBeLookedUpIsNotForgotten() {
        World world;
        QDir().mkpath(world.prefix() + "/var/homebrew");
        Fixture::write(world.prefix() + "/var/homebrew/pinned", "a file in the place of the folder");
        await(world.recovery.run({}));
        QVERIFY(world.pinsTried() == 0 && world.notes().size() == 1);
        QVERIFY(world.logText().contains("It cannot be told whether kelp is still to be pinned"));
    }

    void whatIsStoppedBeforeItsTurnIsNoFailure() {
        World world;
        StopSource stop;
        world.shell.answerOnce("--prefix", world.prefix().toUtf8() + '\n', 0,
                               [&stop] { stop.request_stop(); });
        await(world.recovery.run(stop.get_token(), world.sink));
        QVERIFY(world.pinsTried() == 0 && world.notes().size() == 1);
        QCOMPARE(world.sink->lines().filter("Warning:").size(), 1); // that it was stopped
    }

    void aNoteAboutWhatIsGoneOrDoneIsDropped() {
        World world;
        world.remove("Cellar/kelp");
        QVERIFY(CrashNote::write(world.path("notes"), "links",
                                 {{"prefix", world.prefix()}, {"linked", QJsonArray{"kelp"}}}));
        await(world.recovery.run({}));
        QVERIFY(!world.changes().contains("link --overwrite kelp"));
        QVERIFY(world.pinsTried() == 0 && world.notes().isEmpty());
        world.addFormula("kelp", "1");
        world.notePin("kelp");
        QDir().mkpath(world.prefix() + "/var/homebrew/pinned");
        QFile::link(world.prefix() + "/Cellar/kelp/1", world.prefix() + "/var/homebrew/pinned/kelp");
        await(world.recovery.run({}));
        QVERIFY(world.pinsTried() == 0 && world.notes().isEmpty());
    }

    void notesOfGarbageAreKeptAndSaid_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("cut") << QByteArray("{\"name\":\"ke");
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("another shape") << QByteArray("[1]");
        QTest::newRow("an option") << QByteArray("{\"name\":\"--force; kelp\",\"isCask\":false}");
        QTest::newRow("neither cask nor formula") << QByteArray("{\"name\":\"kelp\"}");
    }
    void notesOfGarbageAreKeptAndSaid() {
        QFETCH(QByteArray, text);
        World world;
        const QString note = world.path("notes") + '/' + world.notes().value(0);
        Fixture::write(note, text);
        await(world.recovery.run({}));
        QCOMPARE(world.pinsTried(), 0);
        QCOMPARE(Fixture::read(note + ".unreadable").toUtf8(), text);
        QVERIFY(world.logText().contains("it is kept as " + note + ".unreadable. Look whether"));
    }
};

QTEST_GUILESS_MAIN(RecoveryTest)
#include "Recovery_test.moc"
