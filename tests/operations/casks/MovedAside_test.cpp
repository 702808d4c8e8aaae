#include "core/brew/PackageName.h"
#include "operations/casks/CaskApplications.h"
#include "operations/casks/MovedAside.h"
#include "tests/support/OperationWorld.h"

#include <QJsonDocument>
#include <QTest>

#include <unistd.h>

using namespace larkspur;
using namespace larkspur::test;

/// What stands aside while its cask is reinstalled, and what must never be touched.
class MovedAsideTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        PackageName token = *PackageName::parse("x");
        QString app = addCask("x", "1");
        CaskSetting setting = settingWith(&trash);
        NullTrash noTrash;

        World() { write(app + "/Contents/version", "old"); }
        CaskSetting settingWith(Trash *where) {
            CaskSetting made = casks;
            made.prefix = prefix();
            made.trash = where;
            return made;
        }
        void installNew(const QString &version = "new") const {
            QDir().mkpath(app + "/Contents");
            write(app + "/Contents/version", version.toUtf8());
        }
        /// Homebrew links to an application once it is in place.
        void unlink() const { QFile::remove(prefix() + "/Caskroom/x/1/x.app"); }
        QStringList apps() const {
            QStringList names =
                QDir(path("apps")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
            for (QString &name : names)
                name.replace(QRegularExpression("aside-[0-9a-f]{8}-"), "aside-");
            return names;
        }
        QString version() const { return read(app + "/Contents/version"); }
        QStringList thrownAway() const {
            QStringList versions;
            for (const QString &name : QDir(path("trash")).entryList(QDir::Dirs | QDir::NoDotAndDotDot))
                versions.append(read(path("trash") + '/' + name + "/Contents/version"));
            return versions;
        }
        /// A program that dies while the application stands aside.
        void dieAside(const char *name = "x") {
            m_dead.push_back(*MovedAside::begin(setting, *PackageName::parse(name)));
        }
        ~World() {
            // As if they had died: nothing is put back.
            for (auto &each : m_dead)
                graves().push_back(each.release());
        }

      private:
        static std::vector<MovedAside *> &graves() {
            static auto *all = new std::vector<MovedAside *>; // never emptied
            return *all;
        }
        std::vector<std::unique_ptr<MovedAside>> m_dead;
    };

  private Q_SLOTS:
    void aFailureBringsTheOldOneBackAndKeepsTheHalf() {
        World world;
        const auto owner = MovedAside::begin(world.setting, world.token);
        MovedAside &aside = **owner;
        QVERIFY(!QFile::exists(world.app));
        world.unlink();
        world.installNew("half");
        QCOMPARE(aside.conclude(false).lines, QStringList{"Put " + world.app + " back as it was before."});
        QCOMPARE(world.version(), "old");
        QCOMPARE(world.thrownAway(), QStringList{"half"});
        QVERIFY(world.notes().isEmpty());
    }

    void aReplacedOneGoesToTheTrash() {
        World world;
        const auto owner = MovedAside::begin(world.setting, world.token);
        MovedAside &aside = **owner;
        world.installNew();
        QVERIFY(aside.conclude(true).lines.isEmpty());
        QCOMPARE(world.version(), "new");
        QCOMPARE(world.thrownAway(), QStringList{"old"});
        QVERIFY(world.notes().isEmpty());
        QCOMPARE(world.apps(), QStringList{"x.app"});
    }

    void whatWasReportedIsJudgedApplicationByApplication() {
        World world;
        const QString other = world.path("apps/other.app");
        const auto addOther = [&](const char *version) {
            QDir().mkpath(other + "/Contents");
            Fixture::write(other + "/Contents/version", version);
        };
        addOther("old other");
        QVERIFY(QFile::link(other, world.prefix() + "/Caskroom/x/1/other.app"));
        const QString receipt = world.prefix() + "/Caskroom/x/.metadata/INSTALL_RECEIPT.json";
        Fixture::write(receipt, R"({"uninstall_artifacts":[{"app":["x.app"]},{"app":["other.app"]}]})");
        const auto begin = [&] { return *MovedAside::begin(world.setting, world.token); };
        auto aside = begin();
        QVERIFY(!QFile::exists(world.app) && !QFile::exists(other));
        world.installNew();
        const auto end = aside->conclude(true);
        QCOMPARE(end.errors.size(), 1);
        QVERIFY(end.errors.first().contains(other + " is not there"));
        QCOMPARE(world.apps(), QStringList({"other.app", "x.app"}));
        QVERIFY(world.version() == "new" && Fixture::read(other + "/Contents/version") == "old other");
        QCOMPARE(world.thrownAway(), QStringList{"old"});
        // One that the cask now has under another name is not missing.
        aside = begin();
        world.installNew("newer");
        QDir().mkpath(world.path("apps/renamed.app"));
        QVERIFY(QFile::remove(world.prefix() + "/Caskroom/x/1/other.app"));
        QVERIFY(QFile::link(world.path("apps/renamed.app"), world.prefix() + "/Caskroom/x/1/renamed.app"));
        Fixture::write(receipt, R"({"uninstall_artifacts":[{"app":["x.app"]},{"app":["renamed.app"]}]})");
        QVERIFY(aside->conclude(true).errors.isEmpty());
        QCOMPARE(world.apps(), QStringList({"renamed.app", "x.app"}));
        QVERIFY(world.notes().isEmpty());
    }

    /// Stopped, or failed in what came after the application: Homebrew knows the new one.
    void theNewOneStaysWhateverWasReported() {
        World world;
        const auto aside = *MovedAside::begin(world.setting, world.token);
        world.installNew();
        const auto end = aside->conclude(false);
        QVERIFY(end.errors.isEmpty() && end.lines.isEmpty());
        QVERIFY(world.version() == "new" && world.thrownAway() == QStringList{"old"});
        QVERIFY(world.notes().isEmpty());
    }

    void afterACrashAnotherNameIsNoLossEither() {
        World world;
        world.dieAside();
        world.unlink();
        QDir().mkpath(world.path("apps/renamed.app"));
        QVERIFY(QFile::link(world.path("apps/renamed.app"), world.prefix() + "/Caskroom/x/1/renamed.app"));
        Fixture::write(world.prefix() + "/Caskroom/x/.metadata/INSTALL_RECEIPT.json",
                       R"({"uninstall_artifacts":[{"app":["renamed.app"]}]})");
        await(world.recovery.run({}));
        QCOMPARE(world.apps(), QStringList{"renamed.app"});
        QCOMPARE(world.thrownAway(), QStringList{"old"});
    }

    void withoutATrashNothingIsRemovedAndThePersonIsTold() {
        World world;
        {
            const auto owner = MovedAside::begin(world.settingWith(&world.noTrash), world.token);
            MovedAside &aside = **owner;
            world.unlink();
            world.installNew("half");
            const QStringList lines = aside.conclude(false).lines;
            QVERIFY(lines.size() == 1 && lines[0].startsWith("Warning: x.app from before is kept at "));
        }
        QCOMPARE(world.apps(), QStringList({".larkspur-aside-x.app", "x.app"}));
        QCOMPARE(world.notes().size(), 1);
        await(world.recovery.run({})); // with a trash again
        QCOMPARE(world.version(), "old");
        QCOMPARE(world.thrownAway(), QStringList{"half"});
        QVERIFY(world.notes().isEmpty());
    }

    void withoutANoteNothingIsMovedNorReinstalled() {
        World world;
        Fixture::write(world.path("notes"), "a file in the place of the folder");
        QVERIFY(!MovedAside::begin(world.setting, world.token));
        QCOMPARE(world.version(), "old");
        const auto report = world.perform("reinstall", {{"x", true}});
        QCOMPARE(report.count(PackageEnd::Failed), 1);
        QVERIFY(world.sink->transcript.text().contains("==> Error: x cannot be protected"));
        QVERIFY(!world.changes().contains("reinstall --cask x"));
    }

    void whatAVendorLinksToIsNotTheCasks_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("target");
        QTest::newRow("documents") << "Documents.app" << "Documents";
        QTest::newRow("documents, called an application") << "Documents.app" << "Documents.app";
        QTest::newRow("another application") << "other.app" << "apps/other.app";
        QTest::newRow("another under the cask's name") << "x.app" << "apps/other.app";
        QTest::newRow("the cask's name elsewhere") << "x.app" << "elsewhere/x.app";
    }
    void whatAVendorLinksToIsNotTheCasks() {
        QFETCH(QString, name);
        QFETCH(QString, target);
        World world;
        const QString staged = world.prefix() + "/Caskroom/x/1/" + name;
        QFile::remove(staged);
        const QString place = world.folder.filePath(target);
        QDir().mkpath(place + "/mine");
        QVERIFY(QFile::link(place, staged));
        QVERIFY(!isWholeApplication(place, world.token, world.setting).value_or(true));
        const auto aside = MovedAside::begin(world.setting, world.token);
        QVERIFY(aside && QDir(place + "/mine").exists());
    }

    void anOldReceiptIsHelpedOutByTheLink_data() {
        QTest::addColumn<QByteArray>("receipt");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("target");
        QTest::addColumn<bool>("isMoved");
        const QByteArray null = R"({"uninstall_artifacts":null})";
        QTest::newRow("no list") << null << "x.app" << "apps/x.app" << true;
        QTest::newRow("nothing of a list") << QByteArray("{}") << "x.app" << "apps/x.app" << true;
        QTest::newRow("other things") << QByteArray(R"({"uninstall_artifacts":[{"pkg":["x.pkg"]}]})")
                                      << "x.app" << "apps/x.app" << false;
        QTest::newRow("another name") << null << "y.app" << "apps/x.app" << false;
        QTest::newRow("documents") << null << "Documents.app" << "Documents" << false;
        QTest::newRow("elsewhere") << null << "x.app" << "elsewhere/x.app" << false;
        QTest::newRow("deeper") << null << "x.app" << "apps/suite/x.app" << false;
    }
    void anOldReceiptIsHelpedOutByTheLink() {
        QFETCH(QByteArray, receipt);
        QFETCH(QString, name);
        QFETCH(QString, target);
        QFETCH(bool, isMoved);
        World world;
        Fixture::write(world.prefix() + "/Caskroom/x/.metadata/INSTALL_RECEIPT.json", receipt);
        world.unlink();
        const QString place = world.folder.filePath(target);
        QDir().mkpath(place + "/mine");
        QVERIFY(QFile::link(place, world.prefix() + "/Caskroom/x/1/" + name));
        const auto aside = *MovedAside::begin(world.setting, world.token);
        QCOMPARE(!QDir(place).exists(), isMoved);
        QCOMPARE(aside->conclude(false).lines.size(), isMoved ? 1 : 0);
        QVERIFY(QDir(place + "/mine").exists());
    }

    /// Homebrew writes the receipt last: without it a second application may still be missing.
    void withoutAReceiptNothingIsTakenForRenamed() {
        World world;
        world.dieAside();
        QVERIFY(QFile::remove(world.prefix() + "/Caskroom/x/.metadata/INSTALL_RECEIPT.json"));
        world.unlink();
        QDir().mkpath(world.path("apps/other.app"));
        QVERIFY(QFile::link(world.path("apps/other.app"), world.prefix() + "/Caskroom/x/1/other.app"));
        await(world.recovery.run({}));
        QCOMPARE(world.apps(), QStringList({"other.app", "x.app"}));
        QVERIFY(world.version() == "old" && world.thrownAway().isEmpty());
    }

    void aLinkInTheApplicationFolderStays() {
        World world;
        QVERIFY(QDir().rename(world.app, world.path("Documents")));
        QVERIFY(QFile::link(world.path("Documents"), world.app));
        const auto owner = MovedAside::begin(world.setting, world.token);
        MovedAside &aside = **owner;
        QVERIFY(QFileInfo(world.app).isSymLink());
        QVERIFY(aside.conclude(true).lines.isEmpty());
        QCOMPARE(Fixture::read(world.path("Documents/Contents/version")), "old");
    }

    void afterACrash_data() {
        QTest::addColumn<bool>("isThere");
        QTest::addColumn<bool>("isWhole");
        QTest::addColumn<QString>("version");
        QTest::addColumn<QStringList>("thrown");
        QTest::newRow("before the new one") << false << false << "old" << QStringList();
        QTest::newRow("half of the new one") << true << false << "old" << QStringList{"new"};
        QTest::newRow("the whole new one") << true << true << "new" << QStringList{"old"};
    }
    void afterACrash() {
        QFETCH(bool, isThere);
        QFETCH(bool, isWhole);
        QFETCH(QString, version);
        QFETCH(QStringList, thrown);
        World world;
        world.dieAside();
        if (isThere)
            world.installNew();
        if (!isWhole)
            world.unlink();
        await(world.recovery.run({}));
        QCOMPARE(world.version(), version);
        QCOMPARE(world.thrownAway(), thrown);
        QVERIFY(world.notes().isEmpty());
        QCOMPARE(world.apps(), QStringList{"x.app"});
    }

    void whatHomebrewHasForgottenIsToldOnce() {
        World world;
        world.dieAside();
        world.remove("Caskroom/x");
        await(world.recovery.run({}, world.sink));
        QCOMPARE(world.version(), "old");
        QVERIFY(world.sink->transcript.text().contains(
            "==> Warning: Homebrew no longer lists x; “brew install --cask --adopt x” brings it back."));
        QVERIFY(world.notes().isEmpty());
    }

    void whatCannotBeToldKeepsBoth_data() {
        QTest::addColumn<QString>("record");
        QTest::newRow("the receipt") << "/Caskroom/x/.metadata/INSTALL_RECEIPT.json";
        QTest::newRow("the settings") << "/Caskroom/x/.metadata/config.json";
        QTest::newRow("the folder of the cask") << "/Caskroom/x";
    }
    void whatCannotBeToldKeepsBoth() {
        QFETCH(QString, record);
        World world;
        world.dieAside();
        world.installNew();
        const QString path = world.prefix() + record;
        QDir().rename(path, world.path("hidden"));
        QVERIFY(QFile::link(path, path)); // there, and not to be read
        await(world.recovery.run({}));
        QCOMPARE(world.apps(), QStringList({".larkspur-aside-x.app", "x.app"}));
        QVERIFY(world.version() == "new" && world.thrownAway().isEmpty());
        QVERIFY(world.logText().contains("so the one from before is kept at " + world.path("apps")));
        QFile::remove(path);
        QDir().rename(world.path("hidden"), path);
        await(world.recovery.run({}));
        QCOMPARE(world.thrownAway(), QStringList{"old"});
        QVERIFY(world.notes().isEmpty());
    }

    void aDamagedReceiptProvesNothing() {
        for (const char *text : {"{\"uninst", "", "[]"}) {
            World world;
            const QString receipt = world.prefix() + "/Caskroom/x/.metadata/INSTALL_RECEIPT.json";
            world.dieAside();
            world.installNew();
            Fixture::write(receipt, text);
            await(world.recovery.run({}));
            QCOMPARE(world.apps(), QStringList({".larkspur-aside-x.app", "x.app"}));
            QVERIFY(world.logText().contains(receipt + " is damaged"));
            // Nor does it tell what to protect.
            const auto aside = MovedAside::begin(world.setting, world.token);
            QVERIFY((*aside)->warnings().join(QString()).contains("cannot be moved aside"));
            const auto lost = LostApplications::of({"x"}, world.setting);
            QVERIFY(lost.complaints().join(QString()).contains("are not protected"));
        }
    }

    void recordsThatCannotBeReadLeaveItUnprotectedAndSaySo() {
        World world;
        const QString receipt = world.prefix() + "/Caskroom/x/.metadata/INSTALL_RECEIPT.json";
        QVERIFY(QFile::remove(receipt) && QFile::link(receipt, receipt));
        const auto aside = MovedAside::begin(world.setting, world.token);
        QVERIFY((*aside)->warnings().join(QString()).startsWith("Warning: The applications of x cannot"));
        QCOMPARE(world.version(), "old");
    }

    void aCaskroomThatCannotBeListedSaysSo() {
        if (::geteuid() == 0)
            QSKIP("root may list everything");
        World world;
        const QString home = world.prefix() + "/Caskroom/x";
        QFile::setPermissions(home, QFile::ExeOwner);
        const auto aside = MovedAside::begin(world.setting, world.token);
        QFile::setPermissions(home, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        QVERIFY((*aside)->warnings().join(QString()).contains("cannot be moved aside"));
        QCOMPARE(world.version(), "old");
    }

    void anApplicationFolderThatIsAwayIsWaitedFor_data() {
        QTest::addColumn<bool>("isUnreadable");
        QTest::newRow("away") << false;
        QTest::newRow("unreadable") << true;
    }
    void anApplicationFolderThatIsAwayIsWaitedFor() {
        QFETCH(bool, isUnreadable);
        World world;
        world.dieAside();
        QVERIFY(QDir().rename(world.path("apps"), world.path("elsewhere")));
        if (isUnreadable)
            QVERIFY(QFile::link(world.path("apps"), world.path("apps")));
        await(world.recovery.run({}));
        QCOMPARE(world.notes().size(), 1);
        QVERIFY(world.logText().contains("It cannot be told what became of " + world.app));
        QFile::remove(world.path("apps"));
        QVERIFY(QDir().rename(world.path("elsewhere"), world.path("apps")));
        await(world.recovery.run({}));
        QVERIFY(world.version() == "old" && world.notes().isEmpty());
        // Where all can be seen and nothing is left there is nothing to wait for.
        world.dieAside();
        QDir(world.path("apps")).removeRecursively();
        QDir().mkpath(world.path("apps"));
        await(world.recovery.run({}));
        QVERIFY(world.notes().isEmpty());
    }

    void aNoteOfAnotherShapeIsKept_data() {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QJsonValue>("value");
        for (const char *field : {"applications", "token", "prefix", "isReplaced"}) {
            QTest::addRow("%s missing", field) << field << QJsonValue(QJsonValue::Undefined);
            QTest::addRow("%s mistyped", field) << field << QJsonValue(5);
        }
        QTest::newRow("an application without a place")
            << "applications" << QJsonValue(QJsonArray{QJsonObject{{"aside", "/a"}}});
    }
    void aNoteOfAnotherShapeIsKept() {
        QFETCH(QString, field);
        QFETCH(QJsonValue, value);
        World world;
        world.dieAside();
        const QString note = world.path("notes") + '/' + world.notes().value(0);
        QJsonObject contents = QJsonDocument::fromJson(Fixture::read(note).toUtf8()).object();
        contents.insert(field, value);
        Fixture::write(note, QJsonDocument(contents).toJson());
        await(world.recovery.run({}));
        QVERIFY(QFile::exists(note + ".unreadable"));
        QCOMPARE(world.apps(), QStringList{".larkspur-aside-x.app"});
        QVERIFY(world.logText().contains("A note about an application that was moved aside cannot be used"));
    }

    void anotherHomebrewsApplicationWaitsForIt() {
        World world;
        world.setting.prefix = world.path("other");
        QVERIFY(QDir().rename(world.prefix(), world.setting.prefix));
        world.dieAside();
        world.installNew("half");
        QDir().mkpath(world.prefix());
        await(world.recovery.run({})); // by the one whose prefix is empty
        QCOMPARE(world.apps(), QStringList({".larkspur-aside-x.app", "x.app"}));
        QVERIFY(world.notes().size() == 1 && world.logText().contains("is about another Homebrew"));
    }

    void twoCrashesLoseNeither() {
        World world;
        const QString other = world.addCask("y", "1");
        world.dieAside();
        world.dieAside("y");
        QVERIFY(!QFile::exists(other) && !QFile::exists(world.app));
        QCOMPARE(world.notes().size(), 2);
        await(world.recovery.run({}));
        QVERIFY(QFile::exists(other) && QFile::exists(world.app));
    }

    void aForeignNoteMovesNothing_data() {
        QTest::addColumn<QString>("place");
        QTest::addColumn<QString>("aside");
        QTest::newRow("elsewhere") << "elsewhere/x.app" << "elsewhere/.larkspur-aside-1-x.app";
        QTest::newRow("another name") << "apps/x" << "apps/.larkspur-aside-1-x";
        QTest::newRow("not aside") << "apps/x.app" << "apps/secret.app";
        QTest::newRow("through another folder")
            << "apps/../elsewhere/x.app" << "apps/../elsewhere/.larkspur-aside-1-x.app";
    }
    void aForeignNoteMovesNothing() {
        QFETCH(QString, place);
        QFETCH(QString, aside);
        World world;
        QDir(world.app).removeRecursively();
        QDir().mkpath(world.folder.filePath(aside) + "/mine");
        const QJsonObject entry{{"place", world.folder.filePath(place)},
                                {"aside", world.folder.filePath(aside)}};
        QVERIFY(CrashNote::write(world.path("notes"), "moved-aside",
                                 {{"prefix", world.prefix()},
                                  {"token", "x"},
                                  {"isReplaced", false},
                                  {"applications", QJsonArray{entry}}}));
        await(world.recovery.run({}));
        QVERIFY(QDir(world.folder.filePath(aside) + "/mine").exists());
        QVERIFY(!QFile::exists(world.folder.filePath(place)));
        QVERIFY(world.logText().contains("is left where it is"));
    }
};

QTEST_GUILESS_MAIN(MovedAsideTest)
#include "MovedAside_test.moc"
