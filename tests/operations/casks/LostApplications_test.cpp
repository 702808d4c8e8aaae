#include "core/trees/TreeScan.h"
#include "operations/casks/LostApplications.h"
#include "tests/support/OperationWorld.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

namespace {

/// An upgrade of the cask "x" in the steps in which Homebrew does it.
class Upgrade {
  public:
    Upgrade(OperationWorld &world, QString newVersion)
        : m_world(world)
        , m_app(world.addCask("x", "1"))
        , m_version(std::move(newVersion)) {
        fill(m_app, "old");
        QDir().mkpath(home() + ".metadata/1/20261101/Casks");
        writeOptions();
    }

    static constexpr int installed = 12; ///< so many steps make the new version whole
    static constexpr int last = 15;
    void run(int steps) {
        for (int step = 0; step < steps; ++step)
            perform(step);
    }
    QString app() const { return m_app; }
    QString home() const { return m_world.prefix() + "/Caskroom/x/"; }
    QString appVersion() const { return Fixture::read(m_app + "/Contents/version"); }
    bool isWhole() const {
        return QFile::exists(m_app + "/Contents/MacOS/x") && QFile::exists(m_app + "/Contents/version");
    }
    /// The version whose folder has Homebrew's link, with its record.
    QStringList recorded() const {
        QStringList found;
        for (const QString &name : QDir(home()).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
            if (QFileInfo(home() + name + "/x.app").symLinkTarget() == m_app &&
                QDir(home() + ".metadata/" + name).exists())
                found.append(name);
        return found;
    }

  private:
    void writeOptions() const {
        Fixture::write(home() + ".metadata/config.new", "{}");
        QFile::remove(home() + ".metadata/config.json");
        QFile::rename(home() + ".metadata/config.new", home() + ".metadata/config.json");
    }
    static void fill(const QString &bundle, const QByteArray &version) {
        QDir().mkpath(bundle + "/Contents/MacOS");
        Fixture::write(bundle + "/Contents/version", version);
        Fixture::write(bundle + "/Contents/MacOS/x", version);
    }
    void perform(int step) {
        const QString old = home() + "1";
        const QString backup = old + ".upgrading";
        const QString next = home() + m_version;
        switch (step) {
        case 0:
            QFile::remove(old + "/x.app");
            break;
        case 1:
            QDir().mkpath(old + "/x.app/Contents");
            Fixture::write(old + "/x.app/Contents/version", "old");
            break;
        case 2:
            fill(old + "/x.app", "old");
            break;
        case 3:
            QDir(m_app + "/Contents/MacOS").removeRecursively();
            break;
        case 4:
            QDir(m_app + "/Contents").removeRecursively();
            break;
        case 5:
            QDir().rename(old, backup);
            break;
        case 6:
            QDir().rename(home() + ".metadata/1", home() + ".metadata/1.upgrading");
            break;
        case 7:
            fill(next + "/x.app", "new");
            break;
        case 8:
            QDir().mkpath(home() + ".metadata/" + m_version + "/20261123");
            break;
        case 9: // the contents go one by one
            QDir().mkpath(m_app + "/Contents");
            QFile::rename(next + "/x.app/Contents/version", m_app + "/Contents/version");
            break;
        case 10:
            QDir(next + "/x.app").removeRecursively();
            fill(m_app, "new");
            QFile::link(m_app, next + "/x.app");
            break;
        case 11:
            writeOptions();
            break;
        case 12:
            QDir(backup + "/x.app/Contents/MacOS").removeRecursively();
            break;
        case 13:
            QDir(backup).removeRecursively();
            break;
        case 14:
            QDir(home() + ".metadata/1.upgrading").removeRecursively();
            break;
        }
    }

    OperationWorld &m_world;
    QString m_app;
    QString m_version;
};

} // namespace

/// Upgrades of casks that are cut off, wherever that happens.
class LostApplicationsTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        CaskSetting setting = casks;
        World() {
            setting.prefix = prefix();
            QDir().mkpath(prefix() + "/bin");
            write(prefix() + "/bin/brew", "#!/bin/sh\n", true);
            preferences.set(keys::brewPathOverride, prefix() + "/bin/brew");
        }
        QString output() const { return sink->transcript.text(); }
    };

  private Q_SLOTS:
    void cutOffAfterAnyStep_data() {
        QTest::addColumn<int>("steps");
        QTest::addColumn<QString>("version");
        for (int steps = 0; steps <= Upgrade::last; ++steps)
            for (const char *version : {"2", "1"}) // a cask can have the same "version" for ever
                QTest::addRow("%d steps to %s", steps, version) << steps << version;
    }
    void cutOffAfterAnyStep() {
        QFETCH(int, steps);
        QFETCH(QString, version);
        World world;
        Upgrade upgrade(world, version);
        (void)LostApplications::of({"x"}, world.setting); // noted, and the program dies
        QCOMPARE(world.notes().size(), 1);
        upgrade.run(steps);
        await(world.recovery.run({}, world.sink));
        const bool isNew = steps >= Upgrade::installed;
        QVERIFY2(upgrade.isWhole() && upgrade.appVersion() == (isNew ? "new" : "old"),
                 qPrintable(world.output()));
        QCOMPARE(upgrade.recorded(), QStringList{isNew ? version : "1"});
        QVERIFY(!QDir(upgrade.home() + "1.upgrading").exists());
        // Half of it may be left where brew removes it.
        if (steps != Upgrade::last - 1)
            QVERIFY(!QDir(upgrade.home() + ".metadata/1.upgrading").exists());
        QVERIFY(world.notes().isEmpty());
        // What was done to an application is told.
        QCOMPARE(world.output().contains("after an interrupted upgrade"), steps > 3 && !isNew);
        QCOMPARE(world.output().contains("Warning"), false);
    }

    void brewDiesAndTheProgramDoesNot() {
        World world;
        Upgrade upgrade(world, "2");
        world.shell.onAny = [&](const ShellCommand &command) {
            if (command.arguments.contains("upgrade"))
                upgrade.run(8);
            return command.arguments.contains("--prefix") ? world.prefix().toUtf8() : QByteArray();
        };
        const auto report = world.perform("upgrade", {{"x", true}});
        QVERIFY2(upgrade.isWhole() && upgrade.appVersion() == "old", qPrintable(world.output()));
        QVERIFY2(world.output().contains("==> Put " + upgrade.app() + " back after an interrupted upgrade."),
                 qPrintable(world.output() + world.shell.commandLines().join('\n')));
        QVERIFY(world.notes().isEmpty());
        QVERIFY(report.outcome() != OperationOutcome::Succeeded);
    }

    void whatCannotBePutRightIsSaidOnce() {
        World world;
        Upgrade upgrade(world, "2");
        const auto lost = LostApplications::of({"x"}, world.setting);
        upgrade.run(5);
        QVERIFY(QDir(upgrade.home() + "1/x.app").removeRecursively()); // nobody has it any more
        await(world.recovery.run({}, world.sink));
        QVERIFY2(world.output().contains("“brew reinstall --cask x” brings it back"),
                 qPrintable(world.output()));
        QVERIFY(world.notes().isEmpty()); // what nobody can put right is not said again
    }

    void whatThePersonRemovesIsNotMissed() {
        for (const bool isUninstalled : {false, true}) {
            World world;
            Upgrade upgrade(world, "2");
            (void)LostApplications::of({"x"}, world.setting); // and Homebrew does not get to it
            QVERIFY(QDir(upgrade.app()).removeRecursively());
            if (isUninstalled)
                QVERIFY(QDir(upgrade.home()).removeRecursively());
            await(world.recovery.run({}, world.sink));
            QVERIFY2(!world.output().contains("Warning"), qPrintable(world.output()));
            QVERIFY(!QFile::exists(upgrade.app()) && world.notes().isEmpty());
        }
    }

    void withoutATrashNothingIsRemoved() {
        World world;
        Upgrade upgrade(world, "2");
        NullTrash none;
        CaskSetting setting = world.setting;
        setting.trash = &none;
        const auto lost = LostApplications::of({"x"}, setting);
        upgrade.run(8);
        const LockedWork work{nullptr, {.output = world.sink}, world.prefix(), &world.logger};
        QVERIFY(!await(lost.putBack(work)));
        QVERIFY(world.output().contains("==> Warning: ") &&
                world.output().contains(upgrade.home() + "1.upgrading/x.app"));
        QVERIFY(QFile::exists(upgrade.home() + "1.upgrading/x.app/Contents/MacOS/x"));
        QCOMPARE(world.notes().size(), 1);
    }

    /// What an interruption of the repair leaves, the next repair finishes.
    void theRepairIsCutOffToo() {
        for (int fallBack = 0; fallBack < 3; ++fallBack) {
            World world;
            Upgrade upgrade(world, "2");
            (void)LostApplications::of({"x"}, world.setting);
            upgrade.run(9);
            const QString backup = upgrade.home() + "1.upgrading";
            QVERIFY(QDir(upgrade.app()).removeRecursively());
            QVERIFY(QDir().rename(backup + "/x.app", upgrade.app()));
            if (fallBack > 0)
                QVERIFY(QFile::link(upgrade.app(), backup + "/x.app"));
            if (fallBack > 1)
                QVERIFY(QDir(upgrade.home() + "2").removeRecursively());
            await(world.recovery.run({}, world.sink));
            QVERIFY(upgrade.isWhole() && upgrade.appVersion() == "old");
            QCOMPARE(upgrade.recorded(), QStringList("1"));
            QVERIFY(world.notes().isEmpty());
        }
    }

    void aForeignNoteMovesNothing_data() {
        QTest::addColumn<QJsonObject>("changed");
        const auto application = [](const char *name, const QString &place) {
            return QJsonArray{QJsonObject{{"name", name}, {"place", place}}};
        };
        QTest::newRow("no cask") << QJsonObject{{"token", "../x"}};
        QTest::newRow("out of the Caskroom") << QJsonObject{{"version", "../../mine"}};
        QTest::newRow("a link elsewhere") << QJsonObject{{"applications", application("../../x.app", "x")}};
        QTest::newRow("a place elsewhere")
            << QJsonObject{{"applications", application("x.app", "PATH/mine/x.app")}};
        QTest::newRow("no list") << QJsonObject{{"versions", 1}};
    }
    void aForeignNoteMovesNothing() {
        QFETCH(QJsonObject, changed);
        World world;
        Upgrade upgrade(world, "2");
        QDir().mkpath(world.path("mine/x.app/Contents"));
        auto note = CaskUpgrade::of(*PackageName::parse("x"), world.setting)->first().toJson();
        for (auto change = changed.begin(); change != changed.end(); ++change)
            note[change.key()] = change.value();
        const QByteArray text =
            QJsonDocument(QJsonObject{{"prefix", world.prefix()}, {"upgrades", QJsonArray{note}}})
                .toJson()
                .replace("PATH", world.folder.path().toUtf8());
        QVERIFY(
            CrashNote::write(world.path("notes"), "cask-upgrades", QJsonDocument::fromJson(text).object()));
        upgrade.run(8);
        const auto tree = [&](const QString &folder) {
            return TreeScan::of(folder, TreeScan::Depth::Names)->toText();
        };
        const QByteArray before = tree(world.prefix()) + tree(world.path("apps")) + tree(world.path("mine"));
        await(world.recovery.run({}, world.sink));
        QCOMPARE(tree(world.prefix()) + tree(world.path("apps")) + tree(world.path("mine")), before);
        QVERIFY(world.output().contains("==> Warning: "));
    }

    /// What was left by an accident of before is not this upgrade's.
    void anOldBackupIsNotTakenForThisOnes() {
        World world;
        Upgrade upgrade(world, "2");
        QDir().mkpath(upgrade.home() + "1.upgrading/x.app/Contents");
        Fixture::write(upgrade.home() + "1.upgrading/x.app/Contents/version", "ancient");
        (void)LostApplications::of({"x"}, world.setting);
        upgrade.run(5);
        await(world.recovery.run({}, world.sink));
        QVERIFY2(upgrade.isWhole() && upgrade.appVersion() == "old", qPrintable(world.output()));
        QVERIFY(QDir(upgrade.home() + "1.upgrading").exists());
        QVERIFY(world.notes().isEmpty());
    }

    void homebrewsOwnWayBackIsCutOff() {
        World world;
        Upgrade upgrade(world, "2");
        (void)LostApplications::of({"x"}, world.setting);
        upgrade.run(8);
        QVERIFY(QDir(upgrade.home() + "2").removeRecursively());
        QVERIFY(QDir().rename(upgrade.home() + "1.upgrading", upgrade.home() + "1"));
        await(world.recovery.run({}, world.sink));
        QVERIFY2(upgrade.isWhole() && upgrade.appVersion() == "old", qPrintable(world.output()));
        QCOMPARE(upgrade.recorded(), QStringList("1")); // with its metadata
        // Half of the contents are on either side: nobody guesses.
        World other;
        Upgrade half(other, "2");
        (void)LostApplications::of({"x"}, other.setting);
        half.run(5);
        QVERIFY(QDir().mkpath(half.app() + "/Contents/MacOS"));
        QVERIFY(QFile::rename(half.home() + "1/x.app/Contents/MacOS/x", half.app() + "/Contents/MacOS/x"));
        await(other.recovery.run({}, other.sink));
        QVERIFY(other.output().contains("It cannot be told whether " + half.app() + " is whole"));
        QVERIFY(QFile::exists(half.app() + "/Contents/MacOS/x") &&
                QFile::exists(half.home() + "1/x.app/Contents/version"));
        QCOMPARE(other.notes().size(), 1);
    }

    /// Installed whole, under a name that the links do not tell: the new one stays, and the old one is named.
    void whatIsInstalledIsNotTakenBack() {
        World world;
        Upgrade upgrade(world, "2");
        (void)LostApplications::of({"x"}, world.setting);
        upgrade.run(13);
        QVERIFY(QFile::remove(upgrade.home() + "2/x.app")); // as for one whose link lies deeper
        await(world.recovery.run({}, world.sink));
        QCOMPARE(upgrade.appVersion(), "new");
        QVERIFY(world.output().contains("==> Warning: An upgrade of x was interrupted. What it replaced is "
                                        "kept at " +
                                        upgrade.home() + "1.upgrading"));
        QVERIFY(world.notes().isEmpty());
    }

    void anotherNameInTheNewVersionIsNoLoss() {
        World world;
        Upgrade upgrade(world, "2");
        (void)LostApplications::of({"x"}, world.setting);
        upgrade.run(7);
        const QString renamed = world.path("apps") + "/y.app";
        QVERIFY(QDir().mkpath(renamed + "/Contents") && QDir().mkpath(upgrade.home() + "2") &&
                QFile::link(renamed, upgrade.home() + "2/y.app"));
        Fixture::write(upgrade.home() + ".metadata/config.json", "{\"default\":{}}");
        await(world.recovery.run({}, world.sink));
        QVERIFY(QDir(renamed).exists() && QFile::exists(upgrade.home() + "2/y.app"));
        QVERIFY(!QDir(upgrade.home() + "1.upgrading").exists());
    }
};

QTEST_GUILESS_MAIN(LostApplicationsTest)
#include "LostApplications_test.moc"
