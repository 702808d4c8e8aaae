#include "core/lock/LockFile.h"
#include "tests/support/OperationWorld.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

/// Homebrew keeps a keg as VERSION.reinstall while it installs the formula anew, and is killed meanwhile.
class InterruptedReinstallTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        World() {
            QDir().mkpath(prefix() + "/bin"); // where brew lies
            write(prefix() + "/bin/brew", "#!/bin/sh\n", true);
            preferences.set(keys::brewPathOverride, prefix() + "/bin/brew");
            keg("1.reinstall", {"file", "program"});
        }
        void keg(const QString &version, const QStringList &files) const {
            addFormula("x", version);
            for (const QString &file : files)
                write(prefix() + "/Cellar/x/" + version + '/' + file, "of " + version.toUtf8());
        }
        void record(const QString &version) const {
            QDir().mkpath(prefix() + "/var/homebrew/linked");
            QFile::link(prefix() + "/Cellar/x/" + version, prefix() + "/var/homebrew/linked/x");
        }
        bool note(const QStringList &linked) const {
            return CrashNote::write(path("notes"), "links",
                                    {{"prefix", prefix()}, {"linked", QJsonArray::fromStringList(linked)}})
                .has_value();
        }
        QString installed() const {
            return QDir(prefix() + "/Cellar/x").entryList(QDir::Dirs | QDir::NoDotAndDotDot).join(' ');
        }
        /// Whose files are in a version's folder now.
        QString file(const QString &version) const {
            return read(prefix() + "/Cellar/x/" + version + "/file");
        }
        QStringList aside() const {
            return QDir(prefix() + "/var/larkspur/unfinished").entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        }
    };

  private Q_SLOTS:
    void theOldKegComesBackAndIsLinked_data() {
        QTest::addColumn<QString>("version");
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<bool>("isKept");
        QTest::newRow("killed before the new keg") << QString() << QStringList() << false;
        QTest::newRow("half of the same version") << "1" << QStringList{"file"} << false;
        QTest::newRow("the same version with another file") << "1" << QStringList{"file", "more"} << true;
        QTest::newRow("a newer version") << "1.10" << QStringList{"file"} << false;
        QTest::newRow("a newer version with another file") << "1.10" << QStringList{"news"} << true;
    }
    void theOldKegComesBackAndIsLinked() {
        QFETCH(QString, version);
        QFETCH(QStringList, files);
        QFETCH(bool, isKept);
        World world;
        if (!version.isEmpty())
            world.keg(version, files);
        QVERIFY(world.note({"x"}));
        world.shell.answerOnce("link --overwrite x", {}, 0, [&] { world.record("1"); });
        await(world.recovery.run({}, world.sink));
        QCOMPARE(world.installed(), "1");
        QCOMPARE(world.file("1"), "of 1.reinstall");
        QCOMPARE(world.changes(), QStringList{"link --overwrite x"});
        QVERIFY(world.sink->transcript.text().contains("==> Put x 1 back after an interrupted reinst"));
        QCOMPARE(world.aside().size(), isKept ? 1 : 0);
        QVERIFY(!isKept || world.sink->transcript.text().contains("unfinished/" + world.aside().first()));
        QVERIFY(world.notes().isEmpty());
    }

    void whatIsLinkedIsWhole_data() {
        QTest::addColumn<QString>("version");
        QTest::newRow("the same version") << "1";
        QTest::newRow("a newer version") << "2";
    }
    void whatIsLinkedIsWhole() {
        QFETCH(QString, version);
        World world;
        world.keg(version, {"file"});
        world.record(version);
        QVERIFY(world.note({"x"}));
        await(world.recovery.run({}, world.sink));
        QCOMPARE(world.installed(), version);
        QCOMPARE(world.file(version), "of " + version);
        QVERIFY(world.changes().isEmpty() && world.notes().isEmpty());
        QVERIFY(world.sink->transcript.text().contains("of x had installed it"));
    }

    /// A formula that is keg-only never has a link that would tell.
    void withoutLinksTheFilesTell_data() {
        QTest::addColumn<QString>("version");
        QTest::addColumn<QStringList>("files");
        QTest::addColumn<QString>("left");
        QTest::addColumn<QString>("whose");
        QTest::newRow("none") << QString() << QStringList() << "1" << "of 1.reinstall";
        QTest::newRow("half a new keg") << "1" << QStringList{"file"} << "1" << "of 1.reinstall";
        QTest::newRow("half an old keg") << "1" << QStringList{"file", "more", "program"} << "1" << "of 1";
        QTest::newRow("either") << "1" << QStringList{"file", "more"} << "1 1.reinstall" << "of 1";
        QTest::newRow("newer") << "2" << QStringList{"file"} << "1.reinstall 2" << QString();
    }
    void withoutLinksTheFilesTell() {
        QFETCH(QString, version);
        QFETCH(QStringList, files);
        QFETCH(QString, left);
        QFETCH(QString, whose);
        World world;
        if (!version.isEmpty())
            world.keg(version, files);
        QVERIFY(world.note({"other"}));
        await(world.recovery.run({}, world.sink));
        QCOMPARE(world.installed(), left);
        QCOMPARE(world.file("1"), whose);
        QVERIFY(world.changes().isEmpty() && world.aside().isEmpty());
        QCOMPARE(world.sink->lines().filter("Warning: The interrupted reinstallation of x is left").size(),
                 left.contains(' ') ? 1 : 0);
    }

    void withoutANoteHomebrewIsAskedToLink() {
        World world;
        world.shell.answer("link x", {});
        await(world.recovery.run({}));
        QCOMPARE(world.changes(), QStringList{"link x"});
        QCOMPARE(world.installed(), "1");
    }

    void whatHomebrewWorksOnIsLeftAlone_data() {
        QTest::addColumn<bool>("isHalfThere");
        QTest::newRow("with half a new keg") << true;
        QTest::newRow("without one") << false;
    }
    void whatHomebrewWorksOnIsLeftAlone() {
        QFETCH(bool, isHalfThere);
        World world;
        QVERIFY(world.note({"x"}));
        if (isHalfThere)
            world.keg("1", {"file"});
        const auto held = LockFile::tryTake(world.prefix() + "/var/homebrew/locks/x.formula.lock");
        QVERIFY(held);
        await(world.recovery.run({}, world.sink));
        QCOMPARE(world.installed(), isHalfThere ? "1 1.reinstall" : "1.reinstall");
        QVERIFY(world.changes().isEmpty() && world.notes().size() == 1); // half a keg is not linked either
        QVERIFY(world.sink->transcript.text().contains("is left as it is: Homebrew is at work on it"));
    }

    void whatALinkLeadsToIsNotTouched() {
        World world;
        QVERIFY(QDir().rename(world.prefix() + "/Cellar/x", world.path("mine")));
        QVERIFY(QFile::link(world.path("mine"), world.prefix() + "/Cellar/x"));
        QVERIFY(world.note({"x"}));
        await(world.recovery.run({}, world.sink));
        QVERIFY(QDir(world.path("mine/1.reinstall")).exists());
        QVERIFY(world.sink->transcript.text().contains("is left as it is"));
    }

    void anOperationWhoseBrewDiedPutsItBack() {
        World world;
        QVERIFY(QDir().rename(world.prefix() + "/Cellar/x/1.reinstall", world.prefix() + "/Cellar/x/1"));
        world.record("1");
        world.shell.answerOnce("reinstall x", {}, 137, [&] {
            QFile::remove(world.prefix() + "/var/homebrew/linked/x");
            QDir().rename(world.prefix() + "/Cellar/x/1", world.prefix() + "/Cellar/x/1.reinstall");
            world.keg("1", {"file"});
        });
        world.shell.answerOnce("link --overwrite x", {}, 0, [&] { world.record("1"); });
        const auto report = world.perform("reinstall", {{"x", false}});
        QCOMPARE(report.count(PackageEnd::Failed), 1);
        QCOMPARE(world.installed(), "1");
        QCOMPARE(world.file("1"), "of 1.reinstall");
        QCOMPARE(world.changes().last(), "link --overwrite x");
        QVERIFY(world.notes().isEmpty());
    }
};

QTEST_GUILESS_MAIN(InterruptedReinstallTest)
#include "InterruptedReinstall_test.moc"
