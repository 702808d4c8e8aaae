#include "tests/support/OperationWorld.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

/// A Homebrew that cannot be read is not taken for an empty one: neither by a restore point nor by what would
/// remove, link or pin after it.
class InstalledPackagesTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        World() {
            addFormula("a", "1");
            addCask("c", "1");
            for (const char *records : {"opt", "var/homebrew/linked", "var/homebrew/pinned"})
                QDir().mkpath(prefix() + '/' + records);
            QFile::link("../Cellar/a/1", prefix() + "/opt/a");
            QFile::link("../../../Cellar/a/1", prefix() + "/var/homebrew/linked/a");
            QFile::link("../../../Cellar/a/1", prefix() + "/var/homebrew/pinned/a");
        }
        /// From now on a folder of the prefix is there and cannot be read.
        void spoil(const QString &name) const {
            QDir().rename(prefix() + '/' + name, path("hidden"));
            write(prefix() + '/' + name, "no folder");
        }
        void mend(const QString &name) const {
            QFile::remove(prefix() + '/' + name);
            QDir().rename(path("hidden"), prefix() + '/' + name);
        }
        bool says(const QString &text) const { return sink->transcript.text().contains(text); }
    };

  private Q_SLOTS:
    void whatIsMissingIsEmptyAndWhatLeadsNowhereIsNone() {
        World world;
        QVERIFY(QFile::link("../Cellar/a/0", world.prefix() + "/opt/gone"));
        Fixture::write(world.prefix() + "/Cellar/.DS_Store", "x");
        const auto all = InstalledPackages::at(world.prefix());
        QCOMPARE(all->currentFormulae(), (QMap<QString, QString>{{"a", "1"}}));
        QCOMPARE(all->currentCasks(), (QMap<QString, QString>{{"c", "1"}}));
        QVERIFY(all->isLinked("a") && all->hasOptLink("a") && !all->hasOptLink("gone"));
        QVERIFY(all->isPinned("a", false));
        QVERIFY(!InstalledPackages::at(world.path("nowhere")));
        QVERIFY(!InstalledPackages::at(QString()));
        world.remove("Caskroom");
        QVERIFY(InstalledPackages::at(world.prefix())->currentCasks().isEmpty());
    }

    void aKegThatWaitsForItsReinstallationIsNoVersion() {
        World world;
        world.addFormula("a", "1.reinstall");
        world.addFormula("b", "2.0_1.reinstall");
        const auto all = InstalledPackages::at(world.prefix());
        QCOMPARE(all->formulaVersions("a"), QStringList{"1"});
        QVERIFY(all->formulaVersions("b").isEmpty());
        QCOMPARE(all->currentFormulae(), (QMap<QString, QString>{{"a", "1"}, {"b", "2.0_1"}}));
        QVERIFY(all->backupOf("a") == "1" && all->backupOf("b") == "2.0_1" && all->backupOf("c").isEmpty());
    }

    void whatCannotBeReadIsNotEmpty_data() {
        QTest::addColumn<QString>("folder");
        for (const char *name : {"Cellar", "Caskroom", "opt", "var/homebrew/linked", "var/homebrew/pinned",
                                 "var/homebrew/pinned_casks"})
            QTest::newRow(name) << name;
    }
    void whatCannotBeReadIsNotEmpty() {
        QFETCH(QString, folder);
        World world;
        world.spoil(folder);
        const auto read = InstalledPackages::at(world.prefix());
        QVERIFY(!read);
        QVERIFY2(read.error().startsWith(world.prefix() + '/' + folder + " cannot be read: "),
                 qPrintable(read.error()));
    }

    void aLinkThatLeadsNowhereIsNotEmpty_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("target");
        QTest::newRow("Cellar on a disk that is away") << "Cellar" << "/nowhere/Cellar";
        QTest::newRow("Caskroom") << "Caskroom" << "gone";
        QTest::newRow("rack") << "Cellar/a" << "/nowhere/a";
        QTest::newRow("rack that leads to itself") << "Cellar/a" << "a";
        QTest::newRow("rack of a cask") << "Caskroom/c" << "/nowhere/c";
        QTest::newRow("version") << "Cellar/a/1" << "/nowhere/1";
    }
    void aLinkThatLeadsNowhereIsNotEmpty() {
        QFETCH(QString, name);
        QFETCH(QString, target);
        World world;
        QVERIFY(CrashNote::write(world.path("notes"), "held-pin",
                                 {{"prefix", world.prefix()}, {"name", "a"}, {"isCask", false}}));
        world.remove(name);
        QVERIFY(QFile::link(target, world.prefix() + '/' + name));
        const auto read = InstalledPackages::at(world.prefix());
        QVERIFY(!read && read.error().contains('/' + name + " cannot be read: "));
        QVERIFY(!await(world.snapshots.take(SnapshotTrigger::Manual)));
        await(world.recovery.run({}));
        QCOMPARE(world.notes().size(), 1); // not taken for a pin of what was removed
    }

    void oneRackThatCannotBeReadIsEnough() {
        World world;
        QVERIFY(QFile::link(QString(300, 'x'), world.prefix() + "/Cellar/broken"));
        QVERIFY(InstalledPackages::at(world.prefix()).error().contains("/Cellar/broken cannot be read: "));
    }

    void noRestorePointIsTakenOfIt() {
        World world;
        world.spoil("Cellar");
        QVERIFY(!await(world.snapshots.take(SnapshotTrigger::Manual)));
        world.preferences.set(keys::kegPreservationEnabled, true);
        world.shell.answer("upgrade --formula a", {});
        const auto report = world.perform("upgrade", {{.name = "a", .latestVersion = "2"}});
        QVERIFY(report.hasWarnings);
        QVERIFY(world.says("No restore point could be saved: " + world.prefix() + "/Cellar cannot be read"));
        QVERIFY(world.says("What is installed could not be read"));
        QVERIFY(!world.says("is not installed")); // nothing is said of what nobody has seen
        QVERIFY(QDir(world.path("snapshots")).entryList(QDir::Files).isEmpty());
        QVERIFY(world.notes().isEmpty());
    }

    void anUpgradeOfAllThatCannotBeCheckedFailsInNobodysHistory() {
        World world;
        world.shell.answerOnce("upgrade", {}, 0, [&] { world.spoil("Cellar"); });
        const auto report = world.perform("upgrade all", {{.name = "a", .latestVersion = "2"}});
        QVERIFY(report.hasWarnings && report.packages.first().package.name.isEmpty());
        QCOMPARE(world.snapshots.snapshots().first().formulae.size(), 1);
    }

    void nothingIsRestoredOnIt() {
        World world;
        const QUuid point = await(world.snapshots.take(SnapshotTrigger::Manual))->id;
        world.addFormula("b", "1");
        world.spoil("Caskroom");
        QVERIFY(world.perform(restoreSnapshot(world.packages, {.snapshot = point, .removesAdded = true}))
                    .failure);
        QCOMPARE(world.changes(), QStringList());
    }

    void notesOfPinsAndLinksStay() {
        World world;
        world.remove("var/homebrew/linked");
        world.remove("var/homebrew/pinned");
        QVERIFY(CrashNote::write(world.path("notes"), "held-pin",
                                 {{"prefix", world.prefix()}, {"name", "a"}, {"isCask", false}}));
        QVERIFY(CrashNote::write(world.path("notes"), "links",
                                 {{"prefix", world.prefix()}, {"linked", QJsonArray{"a"}}}));
        world.spoil("Cellar");
        await(world.recovery.run({}));
        QCOMPARE(world.notes().size(), 2);
        QVERIFY(world.logText().contains("whether a is still to be pinned: "));
        QVERIFY(world.logText().contains("whether links were lost: "));
        world.mend("Cellar");
        world.shell.answer("pin a", {});
        world.shell.answer("link --overwrite a", {});
        await(world.recovery.run({}));
        QVERIFY(world.notes().isEmpty());
        QVERIFY(world.changes().contains("pin a") && world.changes().contains("link --overwrite a"));
    }

    void withoutANoteOfLinksThePersonIsTold() {
        World world;
        Fixture::write(world.path("notes"), "a file in the place of the folder");
        world.shell.answerOnce("install b", {}, 0, [&] { world.addFormula("b", "1"); });
        const auto report = world.perform("install", {{"b", false}});
        QVERIFY(report.hasWarnings && world.says("==> Warning: No note of what is linked could be written"));
    }
};

QTEST_GUILESS_MAIN(InstalledPackagesTest)
#include "InstalledPackages_test.moc"
