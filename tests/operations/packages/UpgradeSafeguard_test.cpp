#include "tests/support/OperationWorld.h"

#include <QProcess>
#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

/// What happens before an upgrade, and after one that broke off.
class UpgradeSafeguardTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        World() {
            preferences.set(keys::kegPreservationEnabled, true);
            shell.onCopy = [](const QString &from, const QString &to) {
                QProcess::execute("cp", {"-a", from, to});
            };
            addFormula("x", "1");
            addFormula("lib", "1");
            shell.answer("upgrade --dry-run --formula acme/tools/x",
                         "==> Would upgrade 1 dependency for x:\nlib  1 -> 2\n==> Would upgrade 1 outdated "
                         "package\nacme/tools/x 1 -> 2\n");
            shell.answerOnce("upgrade --formula acme/tools/x", "fine\n", 0, [this] { addFormula("x", "2"); });
        }
        OperationReport upgrade() {
            return perform("upgrade", {{.name = "acme/tools/x", .latestVersion = "2"}});
        }
        QStringList preserved() const {
            QStringList names;
            for (const KegEntry &entry : kegs.entries())
                names.append(entry.formula + ' ' + entry.version);
            names.sort();
            return names;
        }
    };

  private Q_SLOTS:
    void everythingThatIsReplacedIsKept() {
        World world;
        const auto report = world.upgrade();
        QCOMPARE(world.preserved(), QStringList({"lib 1", "x 1"}));
        QCOMPARE(world.sink->lines().first(), "==> Saved a restore point before upgrading (Time Machine)");
        QCOMPARE(world.snapshots.snapshots().first().trigger, SnapshotTrigger::PreUpgrade);
        for (const KegEntry &entry : world.kegs.entries()) {
            QCOMPARE(entry.snapshotID, world.snapshots.snapshots().first().id);
            QCOMPARE(entry.fullName, entry.formula == "x" ? "acme/tools/x" : "");
        }
        QVERIFY(!report.hasWarnings);
    }

    void aPlanThatIsKnownIsNotAskedForAgain() {
        World world;
        const OperationPtr operation = world.operation("upgrade", {{.name = "acme/tools/x"}});
        operation->agree({.changes = {{.name = "lib", .from = "1", .to = "2"}}});
        world.perform(operation);
        QCOMPARE(world.preserved(), QStringList{"lib 1"});
        QVERIFY(!world.shell.commandLines().contains("upgrade --dry-run --formula acme/tools/x"));
    }

    void whatAnInstallationReplacesIsKeptToo() {
        World world;
        world.shell.answer("install --dry-run --formula y",
                           "==> Would install 1 formula:\ny\n==> Would upgrade 1 dependency for y:\nlib\n");
        world.shell.answerOnce("install y", {}, 0, [&] { world.addFormula("y", "1"); });
        QVERIFY(!world.perform("install", {{.name = "y"}}).hasWarnings);
        QCOMPARE(world.preserved(), QStringList{"lib 1"});
        world.shell.answer("upgrade --dry-run --formula x",
                           "==> Would upgrade 1 outdated package\nx 1 -> 2\n");
        world.shell.answerOnce("reinstall x", {}, 0, [&] { world.addFormula("x", "2"); });
        world.perform("reinstall", {{.name = "x"}});
        QCOMPARE(world.preserved(), QStringList({"lib 1", "x 1"}));
        QVERIFY(world.snapshots.snapshots().isEmpty()); // those are for upgrades
    }

    void aPinIsOffBeforeHomebrewIsAsked() {
        World world;
        bool isOff = false;
        world.shell.answerOnce("unpin x", {}, 0, [&] { isOff = true; });
        world.shell.answerOnce("upgrade --dry-run --formula x",
                               "==> Would upgrade 1 dependency for x:\nlib  1 -> 2\nx 1 -> 2\n", 0,
                               [&] { QVERIFY(isOff); });
        world.shell.answerOnce("upgrade --formula x", {}, 0, [&] { world.addFormula("x", "2"); });
        world.shell.answer("pin x", {});
        QVERIFY(!world.perform("upgrade", {{"x", false, "1", "2", true}}).hasWarnings);
        QCOMPARE(world.preserved(), QStringList({"lib 1", "x 1"}));
    }

    void aDryRunThatFailsIsSaid() {
        World world;
        world.shell.answer("upgrade --dry-run --formula acme/tools/x", {}, 1, "Error: broken tap\n");
        const auto report = world.upgrade();
        QCOMPARE(report.count(PackageEnd::Done), 1);
        QVERIFY(report.hasWarnings);
        QCOMPARE(world.preserved(), QStringList{"x 1"});
        const QString said = world.sink->lines().filter("does not tell what else").join('\n');
        QVERIFY2(said.startsWith("==> Warning: Homebrew ") && said.contains("broken tap"), qPrintable(said));
    }

    void whatFailsIsSaidAndTheUpgradeGoesOn_data() {
        QTest::addColumn<QString>("what");
        QTest::newRow("copy") << "copy";
        QTest::newRow("location") << "location";
        QTest::newRow("restore point") << "snapshot";
    }
    void whatFailsIsSaidAndTheUpgradeGoesOn() {
        QFETCH(QString, what);
        World world;
        if (what == "copy")
            world.shell.answer("copy", {}, 1);
        if (what == "location")
            world.preferences.set(keys::kegPreservationLocation, world.path("unmounted"));
        if (what == "snapshot")
            Fixture::write(world.path("snapshots"), {});
        const auto report = world.upgrade();
        QCOMPARE(report.count(PackageEnd::Done), 1);
        QVERIFY(report.hasWarnings);
        const QString text = world.sink->lines().join('\n');
        QVERIFY2(text.contains("==> Warning: ") && text.contains("fine"), qPrintable(text));
        QCOMPARE(world.preserved().size(), what == "snapshot" ? 2 : 0);
    }

    void theCapSparesWhatThisUpgradeReplaces_data() {
        QTest::addColumn<bool>("hasRestorePoint");
        QTest::newRow("with a restore point") << true;
        QTest::newRow("without one") << false;
    }
    void theCapSparesWhatThisUpgradeReplaces() {
        QFETCH(bool, hasRestorePoint);
        World world;
        if (!hasRestorePoint)
            Fixture::write(world.path("snapshots"), {});
        world.preferences.set(keys::kegPreservationCapBytes, 1);
        Fixture::write(world.prefix() + "/Cellar/x/1/file", QByteArray(10'000, 'x'));
        Fixture::write(world.prefix() + "/Cellar/lib/1/file", QByteArray(10'000, 'x'));
        QVERIFY(!world.upgrade().failure);
        QCOMPARE(world.preserved(), QStringList({"lib 1", "x 1"}));
    }

    void aCapThatIsNotKnownRemovesNothing() {
        World world;
        world.preferences.set(keys::kegPreservationCapBytes, "damaged");
        QVERIFY(!world.upgrade().failure);
        await(world.kegs.enforceCap({}));
        QCOMPARE(world.preserved().size(), 2);
        world.preferences.set(keys::kegPreservationCapBytes, 0);
        Fixture::write(world.kegs.storedFolder("x", "1").value_or(QString()) + "/file", "x");
        await(world.kegs.enforceCap({}));
        QVERIFY(world.preserved().size() < 2);
    }

    void aVersionThatIsALinkIsKeptAsWhatItLeadsTo() {
        World world;
        world.remove("Cellar/x/1");
        QDir().mkpath(world.path("built/bin"));
        Fixture::write(world.path("built/bin/x"), "real");
        QVERIFY(QFile::link(world.path("built"), world.prefix() + "/Cellar/x/1"));
        QVERIFY(!world.upgrade().failure);
        QCOMPARE(Fixture::read(world.kegs.storedFolder("x", "1").value_or(QString()) + "/bin/x"), "real");
        QVERIFY(!QFileInfo(world.kegs.storedFolder("x", "1").value_or(QString())).isSymLink());
    }

    void switchedOff() {
        World world;
        world.preferences.set(keys::kegPreservationEnabled, false);
        QVERIFY(!world.upgrade().hasWarnings);
        QVERIFY(world.preserved().isEmpty());
        QCOMPARE(world.snapshots.snapshots().size(), 1);
    }

    void aFormulaThatLostItsLinksGetsThemBack() {
        World world;
        const QString record = world.prefix() + "/var/homebrew/linked/x";
        QDir().mkpath(QFileInfo(record).path());
        QFile::link(world.prefix() + "/Cellar/x/1", record);
        world.shell.answerOnce("upgrade --formula x", "Error: SIGTERM\n", 1, [&] { QFile::remove(record); });
        world.shell.answer("upgrade --dry-run --formula x", {});
        world.shell.answer("link --overwrite x", {});
        world.perform("upgrade", {{.name = "x"}});
        QCOMPARE(world.changes().last(), "link --overwrite x");
        QVERIFY(world.sink->lines().contains("==> Linking x again"));
    }
};

QTEST_GUILESS_MAIN(UpgradeSafeguardTest)
#include "UpgradeSafeguard_test.moc"
