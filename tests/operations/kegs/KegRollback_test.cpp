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
            const QString partial = path("partial");
            QProcess::execute("cp", {"-a", prefix() + "/Cellar/x/" + version, partial});
            KegStore store(path("kegs"));
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
            return await(rollback.run({&*session, {.output = sink}, prefix(), "x", version}));
        }
        QString installed() const {
            return QDir(prefix() + "/Cellar/x").entryList(QDir::Dirs | QDir::NoDotAndDotDot).join(' ');
        }
        bool isClean() const {
            return !QFile::exists(path("rollback.json")) && !QFile::exists(prefix() + "/var/larkspur");
        }
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
        QDir().mkpath(world.prefix() + "/var/homebrew/pinned");
        QFile::link(world.prefix() + "/Cellar/x/2", world.prefix() + "/var/homebrew/pinned/x");
        world.shell.answerOnce(world.uninstall, {}, 0, [&] {
            world.unuse();
            QFile::remove(world.prefix() + "/var/homebrew/pinned/x");
        });
        world.shell.answerOnce(world.link, {}, 0, [&] { world.use("1"); });
        bool isPinned = false;
        world.shell.answerOnce("pin x", {}, 0, [&] { isPinned = true; });
        QVERIFY(world.rollBack());
        QVERIFY(isPinned);
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
        QTest::addColumn<bool>("isDamaged");
        QTest::newRow("never preserved") << "0.9" << false;
        QTest::newRow("damaged") << "1" << true;
    }
    void nothingIsTouchedWithoutAWholeCopy() {
        QFETCH(QString, version);
        QFETCH(bool, isDamaged);
        World world;
        if (isDamaged)
            Fixture::write(world.path("kegs") + "/x/1/file", "7");
        QVERIFY(!world.rollBack(version));
        for (const ShellCommand &command : world.shell.commands())
            QCOMPARE(command.program, "copy"); // aside, at most
        QCOMPARE(world.sink->lines(),
                 QStringList{"==> Could not roll back x: no preserved copy of " + version});
        QVERIFY(world.isClean());
    }

    void failuresPutEverythingBack_data() {
        QTest::addColumn<QString>("step");
        QTest::addColumn<QString>("reason");
        QTest::newRow("copy") << "copy" << "failed to restore preserved files";
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
        const InstalledPackages installed = InstalledPackages::at(world.prefix());
        QVERIFY(installed.isLinked("x") && installed.hasOptLink("x"));
        QVERIFY2(world.sink->lines().contains("==> Could not roll back x: " + reason),
                 qPrintable(world.sink->lines().join('\n')));
        QVERIFY(world.isClean());
    }

    void aFailedRollbackKeepsThePin() {
        World world;
        QDir().mkpath(world.prefix() + "/var/homebrew/pinned");
        QFile::link(world.prefix() + "/Cellar/x/2", world.prefix() + "/var/homebrew/pinned/x");
        world.shell.answerOnce(world.uninstall, {}, 0, [&] {
            world.unuse();
            QFile::remove(world.prefix() + "/var/homebrew/pinned/x");
        });
        world.shell.answerOnce(world.link, "Error: could not symlink\n", 0);
        world.shell.answerOnce(world.link, {}, 0, [&] { world.use("2"); });
        bool isPinned = false;
        world.shell.answerOnce("pin x", {}, 0, [&] { isPinned = true; });
        QVERIFY(!world.rollBack());
        QVERIFY(isPinned);
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
        QVERIFY(world.rollback.hasUnfinished());
    }

    void nothingBeginsThatCouldNotBeUndone() {
        World world;
        QDir().mkpath(world.path("rollback.json/a folder in its place"));
        QVERIFY(!world.rollBack());
        QVERIFY(world.sink->lines().last().endsWith("rollback.json cannot be written"));
        QCOMPARE(world.installed(), "2");
        for (const ShellCommand &command : world.shell.commands())
            QVERIFY(command.arguments.value(0) != "uninstall");
    }

    void aNoteOfGarbageIsDropped() {
        World world;
        Fixture::write(world.path("rollback.json"), "{\"prefix\":\"/\",\"formula\":\"../../etc\"}");
        auto session = await(world.brew.beginOperation({}));
        await(world.rollback.recover(&*session));
        QVERIFY(world.isClean());
        QCOMPARE(world.installed(), "2");
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
                          .isOnRequest = true};
        note.phase = state == "preparing" ? RollbackNote::Phase::Preparing : RollbackNote::Phase::Exchanging;
        QVERIFY(writeRollbackNote(world.path("rollback.json"), note));
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
        auto session = await(world.brew.beginOperation({}));
        QVERIFY(world.rollback.hasUnfinished());
        await(world.rollback.recover(&*session));
        QCOMPARE(world.installed(), result);
        const InstalledPackages installed = InstalledPackages::at(world.prefix());
        QVERIFY(installed.isLinked("x") && installed.currentVersion("x") == result);
        QVERIFY(world.isClean());
    }
};

QTEST_GUILESS_MAIN(KegRollbackTest)
#include "KegRollback_test.moc"
