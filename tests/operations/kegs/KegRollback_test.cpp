#include "operations/installed/InstalledPackages.h"
#include "tests/support/OperationWorld.h"

#include <QProcess>
#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

/// Rollbacks on a prefix of real folders and a scripted brew.
class KegRollbackTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        const QString uninstall = "uninstall --ignore-dependencies --force x";
        const QString link = "link --overwrite x";
        KegRollback::End end;

        /// Version 2 is installed and in use; version 1 was preserved.
        World() {
            preferences.set(keys::kegPreservationEnabled, true);
            keg("1");
            preserve("1");
            remove("Cellar/x");
            keg("2");
            use("2");
        }
        void keg(const QString &version) const {
            addFormula("x", version);
            write(prefix() + "/Cellar/x/" + version + "/file", version.toUtf8());
            write(prefix() + "/Cellar/x/" + version + "/INSTALL_RECEIPT.json",
                  "{\"installed_on_request\":true}");
        }
        void preserve(const QString &version) {
            KegStore store(path("kegs"), sync);
            const QString partial = store.partialPath();
            QProcess::execute("cp", {"-a", prefix() + "/Cellar/x/" + version, partial});
            const auto scan = TreeScan::of(partial, TreeScan::Depth::Contents);
            if (!store.adopt(partial, *scan,
                             {.formula = "x", .version = version, .date = QDateTime::currentDateTimeUtc()}))
                qFatal("the test cannot preserve");
            preferences.set(keys::kegPreservationLocation, "/nowhere"); // read again
            preferences.set(keys::kegPreservationLocation, QString());
        }
        void use(const QString &version, bool isKegOnly = false) const {
            for (const char *folder : {"opt", "var/homebrew/linked"}) {
                const QString place = prefix() + '/' + folder;
                QDir().mkpath(place);
                QFile::remove(place + "/x");
                if (folder == QByteArray("opt") || !isKegOnly)
                    QFile::link(prefix() + "/Cellar/x/" + version, place + "/x");
            }
        }
        void unuse() const {
            remove("Cellar/x");
            QFile::remove(prefix() + "/opt/x");
            QFile::remove(prefix() + "/var/homebrew/linked/x");
        }
        void expectCopy() {
            shell.onCopy = [](const QString &from, const QString &to) {
                QProcess::execute("cp", {"-a", from, to});
            };
        }
        bool rollBack(const QString &version = "1") {
            expectCopy();
            auto session = await(brew.beginOperation({}));
            end = await(
                rollback.run({&*session, {.output = sink}, prefix(), *PackageName::parse("x"), version}));
            return end.isBack;
        }
        QString installed() const {
            return QDir(prefix() + "/Cellar/x").entryList(QDir::Dirs | QDir::NoDotAndDotDot).join(' ');
        }
        void pin(const QString &version) const {
            QDir().mkpath(prefix() + "/var/homebrew/pinned");
            QFile::link(prefix() + "/Cellar/x/" + version, prefix() + "/var/homebrew/pinned/x");
        }
        void unpin() const { QFile::remove(prefix() + "/var/homebrew/pinned/x"); }
        /// A rollback from 2 to 1 that has died.
        RollbackNote note(RollbackNote::Phase phase = RollbackNote::Phase::Exchanging) const {
            return {.prefix = prefix(),
                    .formula = "x",
                    .version = "1",
                    .previousVersion = "2",
                    .wasLinked = true,
                    .isOnRequest = true,
                    .phase = phase};
        }
        bool write(const QJsonObject &contents) const {
            return CrashNote::write(path("notes"), "rollback", contents).has_value();
        }
        using Fixture::write;
        bool isClean() const { return notes().isEmpty() && !QFile::exists(prefix() + "/var/larkspur"); }
    };

  private Q_SLOTS:
    void putsTheVersionBack() {
        World world;
        world.shell.answerOnce(world.uninstall, "Uninstalling x\n", 0, [&] { world.unuse(); });
        world.shell.answerOnce(world.link, "Linking\n", 0, [&] { world.use("1"); });
        QVERIFY(world.rollBack());
        QCOMPARE(world.installed(), "1");
        QCOMPARE(world.sink->lines().first(), "==> Rolling back x to 1");
        QCOMPARE(world.sink->lines().last(), "==> Rolled back x to 1");
        for (const ShellCommand &command : world.shell.commands())
            if (command.arguments.value(0) == "uninstall")
                QCOMPARE(command.environment.value("HOMEBREW_NO_AUTOREMOVE"), "1");
        QVERIFY(world.isClean());
    }

    void whatWasKnownOfTheFormulaStays() {
        World world;
        Fixture::write(world.prefix() + "/Cellar/x/2/INSTALL_RECEIPT.json",
                       "{\"installed_on_request\":false}");
        world.pin("2");
        world.shell.answerOnce(world.uninstall, {}, 0, [&] {
            world.unuse();
            world.unpin();
        });
        world.shell.answerOnce(world.link, {}, 0, [&] { world.use("1"); });
        world.shell.answerOnce("pin x", {}, 0, [&] { world.pin("1"); });
        QVERIFY(world.rollBack() && !world.end.hasWarnings);
        QVERIFY(InstalledPackages::at(world.prefix())->isPinned("x", false) && world.isClean());
        QVERIFY(Fixture::read(world.prefix() + "/Cellar/x/1/INSTALL_RECEIPT.json").contains("false"));
    }

    void aKegOnlyFormulaGetsItsOptLink() {
        World world;
        world.use("2", true);
        world.shell.answerOnce(world.uninstall, {}, 0, [&] { world.unuse(); });
        QVERIFY(world.rollBack());
        QCOMPARE(QFileInfo(world.prefix() + "/opt/x").canonicalFilePath(),
                 QFileInfo(world.prefix() + "/Cellar/x/1").canonicalFilePath());
        QVERIFY(!QFile::exists(world.prefix() + "/var/homebrew/linked/x"));
    }

    void nothingIsTouchedWithoutAWholeCopy_data() {
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("flaw");
        QTest::addColumn<QString>("reason");
        QTest::newRow("never preserved") << "0.9" << "" << "no preserved copy of 0.9";
        QTest::newRow("damaged") << "1" << "damaged" << "no preserved copy of 1 can be used: it is damaged";
        QTest::newRow("unreadable") << "1" << "unreadable" << "no preserved copy of 1 can be used: ";
        QTest::newRow("drive away") << "1" << "away"
                                    << "This location isn't available right now (drive not mounted). "
                                       "Rollback for saved versions is paused until it's reconnected.";
    }
    void nothingIsTouchedWithoutAWholeCopy() {
        QFETCH(QString, version);
        QFETCH(QString, flaw);
        QFETCH(QString, reason);
        World world;
        const QString copy = world.path("kegs") + "/x/1";
        if (flaw == "damaged")
            Fixture::write(copy + "/file", "7");
        if (flaw == "unreadable") {
            QDir(copy).removeRecursively();
            QVERIFY(QFile::link(copy, copy));
        }
        if (flaw == "away")
            world.preferences.set(keys::kegPreservationLocation, "/nowhere");
        QVERIFY(!world.rollBack(version));
        for (const ShellCommand &command : world.shell.commands())
            QCOMPARE(command.program, "copy"); // aside, at most
        QCOMPARE(world.sink->lines().size(), 1);
        const QString line = world.sink->lines().first();
        const QString wanted = "==> Could not roll back x: " + reason;
        QVERIFY2(line.startsWith(wanted) && (flaw == "unreadable") == (line != wanted), qPrintable(line));
        QVERIFY(world.isClean());
    }

    void failuresPutEverythingBack_data() {
        QTest::addColumn<QString>("step");
        QTest::addColumn<QString>("reason");
        QTest::newRow("copy") << "copy" << "failed to restore preserved files: ";
        QTest::newRow("uninstall") << "uninstall" << "the installed version could not be removed";
        QTest::newRow("uninstall half-way") << "half" << "the installed version could not be removed";
        QTest::newRow("link") << "link" << "restored files but linking failed";
        QTest::newRow("link that does nothing") << "nothing" << "restored files but linking failed";
    }
    void failuresPutEverythingBack() {
        QFETCH(QString, step);
        QFETCH(QString, reason);
        World world;
        if (step == "copy")
            world.shell.answer("copy", {}, 1);
        const bool removes = step != "uninstall" && step != "copy";
        const bool fails = step == "uninstall" || step == "half";
        world.shell.answerOnce(world.uninstall, fails ? "Error: no\n" : "", fails ? 1 : 0, [&] {
            if (removes)
                world.unuse();
        });
        if (step == "link" || step == "nothing")
            world.shell.answerOnce(world.link, step == "link" ? "Error: could not symlink\n" : "", 0, {});
        world.shell.answerOnce(world.link, {}, 0, [&] { world.use("2"); }); // to put it back
        QVERIFY(!world.rollBack());
        QCOMPARE(world.installed(), "2");
        QCOMPARE(Fixture::read(world.prefix() + "/Cellar/x/2/file"), "2");
        const InstalledPackages installed = *InstalledPackages::at(world.prefix());
        QVERIFY(installed.isLinked("x") && installed.hasOptLink("x"));
        QVERIFY2(world.sink->transcript.text().contains("==> Could not roll back x: " + reason),
                 qPrintable(world.sink->lines().join('\n')));
        QVERIFY(world.isClean());
    }

    void aFailedRollbackKeepsThePin() {
        World world;
        world.pin("2");
        world.shell.answerOnce(world.uninstall, {}, 0, [&] {
            world.unuse();
            world.unpin();
        });
        world.shell.answerOnce(world.link, "Error: could not symlink\n", 0);
        world.shell.answerOnce(world.link, {}, 0, [&] { world.use("2"); });
        world.shell.answerOnce("pin x", {}, 0, [&] { world.pin("2"); });
        QVERIFY(!world.rollBack());
        QVERIFY(InstalledPackages::at(world.prefix())->isPinned("x", false) && world.isClean());
        QCOMPARE(world.installed(), "2");
    }

    void whenNothingCanBePutBackTheNewestIsInstalled() {
        World world;
        world.shell.answerOnce(world.uninstall, {}, 0, [&] {
            world.unuse();
            world.remove("Cellar");
            Fixture::write(world.prefix() + "/Cellar", "a file in the place of the folder");
        });
        world.shell.answer("install --formula x", "fine\n");
        QVERIFY(!world.rollBack());
        QCOMPARE(world.sink->lines().last(), "==> Reinstalled current x after failed rollback");
        // What was there before still lies aside, and is not forgotten.
        QVERIFY(QFile::exists(world.prefix() + "/var/larkspur/rollback/x/before/2/file"));
        QCOMPARE(world.notes().size(), 1);
        QVERIFY(world.sink->transcript.text().contains("/before"));
    }

    void nothingBeginsThatCouldNotBeUndone() {
        World world;
        Fixture::write(world.path("notes"), "a file in the place of the folder");
        QVERIFY(!world.rollBack());
        QVERIFY(world.sink->lines().last().startsWith("==> Could not roll back x: the folder"));
        QCOMPARE(world.installed(), "2");
        for (const ShellCommand &command : world.shell.commands())
            QVERIFY(command.arguments.value(0) != "uninstall");
    }

    void aForeignNoteMovesNothing_data() {
        QTest::addColumn<QString>("formula");
        QTest::addColumn<QString>("version");
        QTest::addColumn<QString>("previous");
        QTest::newRow("formula above") << ".." << "1" << "2";
        QTest::newRow("formula elsewhere") << "../../mine" << "1" << "2";
        QTest::newRow("qualified") << "acme/tools/x" << "1" << "2";
        QTest::newRow("version above") << "x" << ".." << "2";
        QTest::newRow("earlier version elsewhere") << "x" << "1" << "../../mine";
    }
    void aForeignNoteMovesNothing() {
        QFETCH(QString, formula);
        QFETCH(QString, version);
        QFETCH(QString, previous);
        World world;
        QDir().mkpath(world.path("mine/documents"));
        RollbackNote note{.prefix = world.prefix(), .formula = formula, .version = version};
        note.previousVersion = previous;
        note.phase = RollbackNote::Phase::Exchanging;
        QVERIFY(CrashNote::write(world.path("notes"), "rollback", note.toJson()));
        const auto before = TreeScan::of(world.folder.path(), TreeScan::Depth::Names);
        await(world.recovery.run({}));
        QCOMPARE(world.shell.commandLines(), QStringList{"--prefix"});
        QVERIFY(QDir(world.path("mine/documents")).exists());
        QCOMPARE(world.installed(), "2");
        QVERIFY(world.notes().value(0).endsWith(".unreadable")); // kept, and never looked at again
        QVERIFY(world.logText().contains("cannot be used"));
    }

    void whatALinkLeadsToIsNotTouched_data() {
        QTest::addColumn<QString>("place");
        for (const char *place :
             {"var", "var/larkspur", "var/larkspur/rollback/x", "Cellar", "Cellar/x", "opt"})
            QTest::newRow(place) << place;
    }
    void whatALinkLeadsToIsNotTouched() {
        QFETCH(QString, place);
        World world;
        const QString documents = world.path("Documents");
        const QString link = world.prefix() + '/' + place;
        if (QFile::exists(link))
            QVERIFY(QDir().rename(link, documents));
        for (const char *name : {"/larkspur/rollback/x/target", "/rollback/x/target", "/target", "/letters"})
            QDir().mkpath(documents + name);
        Fixture::write(documents + "/letters/file", "mine");
        QDir().mkpath(QFileInfo(link).path());
        QVERIFY(QFile::link(documents, link));
        const auto before = TreeScan::of(documents, TreeScan::Depth::Contents);
        QVERIFY(!world.rollBack());
        QVERIFY2(world.sink->lines().last().contains('/' + place + " is a link"),
                 qPrintable(world.sink->lines().last()));
        QVERIFY(world.notes().isEmpty());
        // Nor does a note of one that died have anything removed there.
        RollbackNote note{.prefix = world.prefix(), .formula = "x", .version = "1"};
        QVERIFY(CrashNote::write(world.path("notes"), "rollback", note.toJson()));
        note.phase = RollbackNote::Phase::Exchanging;
        QVERIFY(CrashNote::write(world.path("notes"), "rollback", note.toJson()));
        await(world.recovery.run({}));
        QCOMPARE(world.notes().size(), 2);
        QVERIFY(world.logText().contains("cannot be finished"));
        QVERIFY(before->matches(*TreeScan::of(documents, TreeScan::Depth::Contents)));
        QVERIFY(QFileInfo(link).isSymLink());
        for (const ShellCommand &command : world.shell.commands())
            QVERIFY(command.arguments.value(0) != "uninstall");
    }

    void theNoteOfAnotherHomebrewWaitsForIt() {
        World world;
        const RollbackNote note{.prefix = "/elsewhere", .formula = "x", .version = "1"};
        QVERIFY(CrashNote::write(world.path("notes"), "rollback", note.toJson()));
        await(world.recovery.run({}));
        QVERIFY(world.notes().value(0).endsWith(".json"));
    }

    void whatAnEarlierRollbackKeptIsNotRemoved() {
        World world;
        const QString kept = world.prefix() + "/var/larkspur/rollback/x/before/2/file";
        QDir().mkpath(QFileInfo(kept).path());
        Fixture::write(kept, "the last of it");
        QVERIFY(!world.rollBack());
        QCOMPARE(Fixture::read(kept), "the last of it");
        QVERIFY(world.sink->lines().last().contains("an earlier rollback is not finished"));
        QVERIFY(world.notes().isEmpty());
        QCOMPARE(world.installed(), "2");
    }

    void aStopHalfWayLeavesNothingUnlinked() {
        World world;
        StopSource stop;
        world.shell.answerOnce(world.uninstall, {}, 0, [&] {
            world.unuse();
            stop.request_stop();
        });
        world.shell.answerOnce(world.link, {}, 0, [&] { world.use("1"); });
        world.expectCopy();
        auto session = await(world.brew.beginOperation({}));
        QVERIFY(await(world.rollback.run({&*session,
                                          {.output = world.sink, .stop = stop.get_token()},
                                          world.prefix(),
                                          *PackageName::parse("x"),
                                          "1"}))
                    .isBack);
        for (const ShellCommand &command : world.shell.commands())
            if (command.arguments.value(0) == "uninstall" || command.arguments.value(0) == "link")
                QVERIFY(!command.stop.stop_possible());
        QVERIFY(InstalledPackages::at(world.prefix())->isLinked("x") && world.isClean());
    }

    void theCopyIsOnTheDiskBeforeTheWayBackGoes() {
        World world;
        world.sync.failsAt = world.prefix() + "/Cellar/x";
        world.shell.answerOnce(world.uninstall, {}, 0, [&] { world.unuse(); });
        world.shell.answerOnce(world.link, {}, 0, [&] { world.use("2"); });
        QVERIFY(!world.rollBack());
        QVERIFY(world.sync.synced.contains(world.prefix() + "/var/larkspur/rollback/x/target"));
        QCOMPARE(world.installed(), "2");
    }

    void whatDoesNotReachTheDiskReplacesNothing() {
        World world;
        world.sync.failsAt = world.prefix() + "/var/larkspur/rollback/x/target";
        QVERIFY(!world.rollBack());
        QVERIFY(world.sink->lines().last().contains("failed to restore preserved files"));
        for (const ShellCommand &command : world.shell.commands())
            QVERIFY(command.arguments.value(0) != "uninstall");
        QVERIFY(world.installed() == "2" && world.isClean());
    }

    void aRollbackThatDiedIsFinishedOrUndone_data() {
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("result");
        QTest::newRow("while preparing") << "preparing" << "2";
        QTest::newRow("before removing") << "before" << "2";
        QTest::newRow("after removing") << "removed" << "2";
        QTest::newRow("after restoring") << "restored" << "1";
        QTest::newRow("while putting back") << "back" << "2";
    }
    void aRollbackThatDiedIsFinishedOrUndone() {
        QFETCH(QString, state);
        QFETCH(QString, result);
        World world;
        RollbackNote note{.prefix = world.prefix(),
                          .formula = "x",
                          .version = "1",
                          .previousVersion = "2",
                          .wasLinked = true,
                          .isOnRequest = false}; // the copy says otherwise
        note.phase = state == "preparing" ? RollbackNote::Phase::Preparing : RollbackNote::Phase::Exchanging;
        QVERIFY(CrashNote::write(world.path("notes"), "rollback", note.toJson()));
        QDir().mkpath(note.workFolder());
        QProcess::execute("cp", {"-a", world.path("kegs") + "/x/1", note.staged()});
        if (state != "preparing")
            QProcess::execute("cp", {"-a", note.rack(), note.aside()});
        if (state == "removed" || state == "restored")
            world.unuse();
        if (state == "restored") {
            QDir().mkpath(note.rack());
            QVERIFY(QDir().rename(note.staged(), note.keg()));
        }
        if (state == "back") {
            QDir(note.aside()).removeRecursively();
            QDir(note.staged()).removeRecursively();
        }
        world.shell.answerOnce(world.link, {}, 0, [&] { world.use(world.installed()); });
        await(world.recovery.run({}));
        QCOMPARE(world.installed(), result);
        const InstalledPackages installed = *InstalledPackages::at(world.prefix());
        QVERIFY(installed.isLinked("x") && installed.currentVersion("x") == result);
        QVERIFY(result == "2" || Fixture::read(note.keg() + "/INSTALL_RECEIPT.json").contains(": false"));
        QVERIFY(world.isClean());
    }

    void whatDoesNotComeBackIsSaidAndTriedAgain_data() {
        QTest::addColumn<bool>("isLinked");
        QTest::addColumn<bool>("isPinned");
        QTest::newRow("its links") << false << true;
        QTest::newRow("its pin") << true << false;
    }
    void whatDoesNotComeBackIsSaidAndTriedAgain() {
        QFETCH(bool, isLinked);
        QFETCH(bool, isPinned);
        World world;
        world.pin("2");
        world.shell.answerOnce(world.uninstall, {}, 0, [&] {
            world.unuse();
            world.unpin();
        });
        world.shell.answerOnce(world.link, "Error: could not symlink\n", 0);
        world.shell.answerOnce(world.link, {}, 0, [&] {
            if (isLinked)
                world.use("2");
        });
        world.shell.answerOnce("pin x", {}, 0, [&] {
            if (isPinned)
                world.pin("2");
        });
        QVERIFY(!world.rollBack());
        QVERIFY(!world.sink->transcript.text().contains("back as it was before"));
        QVERIFY(world.sink->transcript.text().contains("The next operation tries it once more."));
        QCOMPARE(world.notes().size(), 1);
        QVERIFY(!QFile::exists(world.prefix() + "/var/larkspur"));
        world.shell.answerOnce(world.link, {}, 0, [&] { world.use("2"); });
        world.shell.answerOnce("pin x", {}, 0, [&] { world.pin("2"); });
        await(world.recovery.run({}));
        const InstalledPackages installed = *InstalledPackages::at(world.prefix());
        QVERIFY(installed.isLinked("x") && installed.isPinned("x", false) && world.isClean());
        QCOMPARE(world.installed(), "2");
    }

    void aPinThatIsLostIsAWarningAndTriedAgain() {
        World world;
        world.pin("2");
        world.shell.answerOnce(world.uninstall, {}, 0, [&] {
            world.unuse();
            world.unpin();
        });
        world.shell.answerOnce(world.link, {}, 0, [&] { world.use("1"); });
        world.shell.answerOnce("pin x", "Error: no\n", 1);
        QVERIFY(world.rollBack() && world.end.hasWarnings);
        QVERIFY(world.sink->transcript.text().contains("==> Warning: x was pinned and could not be pinned"));
        QCOMPARE(world.notes().size(), 1);
        world.shell.answerOnce("pin x", {}, 0, [&] { world.pin("1"); });
        await(world.recovery.run({}));
        QVERIFY(InstalledPackages::at(world.prefix())->isPinned("x", false) && world.isClean());
        QCOMPARE(world.installed(), "1");
    }

    void whatWasRemovedSinceIsNotInstalledAgain() {
        World world;
        QVERIFY(world.write(world.note().toJson()));
        world.unuse();
        await(world.recovery.run({}));
        QCOMPARE(world.changes(), QStringList());
        QVERIFY(world.isClean());
    }

    void whatWasInstalledSinceIsLeftAlone_data() {
        QTest::addColumn<QString>("previous");
        QTest::addColumn<QString>("since");
        QTest::addColumn<bool>("isStaged");
        QTest::newRow("a newer one") << "2" << "3" << true;
        QTest::newRow("beside what came back") << "2" << "3" << false;
        QTest::newRow("the one that was wanted") << "2" << "1" << true;
        QTest::newRow("after a first installation") << "" << "3" << true;
    }
    void whatWasInstalledSinceIsLeftAlone() {
        QFETCH(QString, previous);
        QFETCH(QString, since);
        QFETCH(bool, isStaged);
        World world;
        RollbackNote note = world.note();
        note.previousVersion = previous;
        QVERIFY(world.write(note.toJson()));
        QDir().mkpath(note.workFolder());
        if (isStaged)
            QProcess::execute("cp", {"-a", world.path("kegs") + "/x/1", note.staged()});
        if (!previous.isEmpty())
            QProcess::execute("cp", {"-a", note.rack(), note.aside()});
        world.unuse();
        world.keg(since);
        world.use(since);
        await(world.recovery.run({}));
        QCOMPARE(world.installed(), since);
        QCOMPARE(Fixture::read(note.rack() + '/' + since + "/file"), since);
        QCOMPARE(world.changes(), QStringList());
        QVERIFY(world.notes().isEmpty() && world.logText().contains("x is left as it is now: " + since));
        if (previous.isEmpty()) {
            QVERIFY(world.isClean());
            return;
        }
        QCOMPARE(Fixture::read(note.aside() + "/2/file"), "2");
        QVERIFY(world.logText().contains("is kept at " + note.aside()));
        QVERIFY(!QFile::exists(note.staged()));
        QVERIFY(!world.rollBack()); // and whoever rolls back again hears of it
        QVERIFY(world.sink->lines().last().contains(note.aside()));
    }

    void whatWasCutOffWhileUnlinkingIsLinkedAnew_data() {
        QTest::addColumn<bool>("comesBack");
        QTest::newRow("linked again") << true;
        QTest::newRow("not linked again") << false;
    }
    void whatWasCutOffWhileUnlinkingIsLinkedAnew() {
        QFETCH(bool, comesBack);
        World world;
        const QString program = world.prefix() + "/Cellar/x/2/bin/x";
        QVERIFY(QDir().mkpath(QFileInfo(program).path()) && QDir().mkpath(world.prefix() + "/bin"));
        Fixture::write(program, "x");
        QVERIFY(world.write(world.note().toJson())); // the record stands, and the link is gone
        world.shell.answerOnce("unlink x", {}, 0,
                               [&] { QFile::remove(world.prefix() + "/var/homebrew/linked/x"); });
        world.shell.answerOnce(world.link, {}, 0, [&] {
            world.use("2");
            if (comesBack)
                QFile::link("../Cellar/x/2/bin/x", world.prefix() + "/bin/x");
        });
        await(world.recovery.run({}, world.sink));
        const QString said = world.sink->transcript.text();
        QCOMPARE(said.contains("Put x 2 back as it was before"), comesBack);
        QCOMPARE(said.contains("could not be linked again"), !comesBack);
        QCOMPARE(world.notes().isEmpty(), comesBack);
        QCOMPARE(QFile::exists(world.prefix() + "/bin/x"), comesBack);
    }

    void theLastCopyIsKeptWhateverTheNoteSays() {
        World world;
        const RollbackNote note = world.note(RollbackNote::Phase::Preparing);
        QVERIFY(world.write(note.toJson()));
        QDir().mkpath(note.workFolder());
        QVERIFY(QDir().rename(note.rack(), note.aside()));
        await(world.recovery.run({}));
        QCOMPARE(Fixture::read(note.aside() + "/2/file"), "2");
        QVERIFY(world.logText().contains("is kept at " + note.aside()));
    }

    void aNoteOfAnotherShapeIsKept() {
        for (const QString &field : World().note().toJson().keys())
            for (const QJsonValue &value : {QJsonValue(QJsonValue::Undefined), QJsonValue(5)}) {
                World world;
                QJsonObject contents = world.note().toJson();
                contents.insert(field, value);
                QVERIFY(world.write(contents));
                QDir().mkpath(world.note().workFolder());
                QProcess::execute("cp", {"-a", world.note().rack(), world.note().aside()});
                await(world.recovery.run({}));
                QVERIFY2(world.notes().value(0).endsWith(".unreadable"), qPrintable(field));
                QVERIFY(QFile::exists(world.note().aside() + "/2/file"));
                QVERIFY(QFile::exists(world.prefix() + "/Cellar/x/2/file"));
                QCOMPARE(world.changes(), QStringList());
            }
    }
};

QTEST_GUILESS_MAIN(KegRollbackTest)
#include "KegRollback_test.moc"
