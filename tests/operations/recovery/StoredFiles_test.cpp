#include "core/brew/PackageName.h"
#include "core/trees/TreeChanges.h"
#include "inventory/cache/PackageCache.h"
#include "tests/support/OperationWorld.h"
#include "userdata/UserDataManager.h"

#include <QJsonDocument>
#include <QProcess>
#include <QRandomGenerator>
#include <QSettings>
#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

/// Every file that the program reads back, a thousand times changed by somebody else: it is read or refused,
/// and nothing that it names reaches brew or leaves its folder.
class StoredFilesTest : public QObject {
    Q_OBJECT

    static constexpr int mutations = 1000;

    /// One to four of the accidents that befall files.
    static QByteArray mutated(QByteArray text, QRandomGenerator &random) {
        static const QList<QByteArray> pieces{
            "..", "/",     "--force", "\"",       "{",      "]",    "null",
            "-1", "1e999", "\\u0000", "\xff\xfe", "../../", "$(x)", QByteArray(300, 'x')};
        for (int i = 1 + random.bounded(4); i > 0 && !text.isEmpty(); --i) {
            const qsizetype at = random.bounded(static_cast<int>(text.size()));
            switch (random.bounded(5)) {
            case 0:
                text[at] = static_cast<char>(random.bounded(256));
                break;
            case 1:
                text.truncate(at);
                break;
            case 2:
                text.remove(at, 1 + random.bounded(20));
                break;
            case 3:
                text.insert(at, text.mid(random.bounded(static_cast<int>(text.size())), 40));
                break;
            default:
                text.insert(at, pieces[random.bounded(static_cast<int>(pieces.size()))]);
            }
        }
        return text;
    }

    template <typename Check>
    static void forEachMutation(const QByteArray &real, Check check) {
        QRandomGenerator random(2026);
        for (int i = 0; i < mutations; ++i)
            check(mutated(real, random));
    }
    static bool isPlain(const QString &name) {
        const auto parsed = PackageName::parse(name);
        return parsed && !parsed->isQualified();
    }

  private Q_SLOTS:
    void restorePoints() {
        Snapshot real{QUuid::createUuid(), QDateTime::currentDateTimeUtc(), SnapshotTrigger::Manual};
        real.formulae = {{"heron", "8.10.0", false}, {"python@3.13", "3.13.1_2", false}};
        real.casks = {{"tidepool", "1.2,34", true}};
        real.taps = {"acme/tools", "homebrew/core"};
        real.note = "before";
        int read = 0;
        forEachMutation(snapshotText(real), [&read](const QByteArray &text) {
            const auto snapshot = snapshotFromText(text);
            read += snapshot ? 1 : 0;
            for (const SnapshotEntry &entry :
                 snapshot ? snapshot->formulae + snapshot->casks : QList<SnapshotEntry>())
                QVERIFY2(isPlain(entry.name) && isPlainVersion(entry.version), text.constData());
            for (const QString &tap : snapshot ? snapshot->taps : QStringList())
                QVERIFY2(TapName::parse(tap), text.constData());
        });
        QVERIFY(read > 0 && read < mutations);
    }

    void theKegIndexAndItsLists() {
        const QByteArray index =
            kegIndexText({{"heron", "8.10.0", 1000, QDateTime::currentDateTimeUtc(), QUuid::createUuid()},
                          {"x", "1", 5, QDateTime::currentDateTimeUtc(), std::nullopt, "acme/tools/x"}});
        OperationWorld world;
        forEachMutation(index, [](const QByteArray &text) {
            for (const KegEntry &entry : kegIndexFromText(text).entries)
                QVERIFY2(isPlain(entry.formula) && isPlainVersion(entry.version), text.constData());
        });
        // As the store meets it: what lies beside the folder stays.
        QDir().mkpath(world.path("mine/1"));
        QRandomGenerator random(5);
        for (int i = 0; i < 100; ++i) {
            QDir().mkpath(world.path("kegs/heron/8.10.0"));
            Fixture::write(world.path("kegs/index.json"), mutated(index, random));
            KegStore store(world.path("kegs"), world.sync);
            (void)store.sweep();
            (void)store.enforceCap(0, std::nullopt);
            QVERIFY(QDir(world.path("mine/1")).exists());
        }
        TreeScan scan;
        scan.entries = {{.mode = 0644, .size = 3, .path = "bin/x y", .contents = "ab"},
                        {.kind = TreeEntry::Kind::Link, .path = "l", .contents = "../x"}};
        forEachMutation(scan.toText(), [](const QByteArray &text) { (void)TreeScan::fromText(text); });
    }

    void notesOfCrashes() {
        OperationWorld world;
        const QString app = world.addCask("x", "1");
        world.addFormula("x", "2");
        QDir().mkpath(world.path("mine/1"));
        const RollbackNote note{
            .prefix = world.prefix(), .formula = "x", .version = "1", .previousVersion = "2"};
        forEachMutation(QJsonDocument(note.toJson()).toJson(), [&world](const QByteArray &text) {
            const auto read = RollbackNote::fromJson(QJsonDocument::fromJson(text).object(), world.prefix());
            if (!read)
                return;
            for (const QString &path : {read->keg(), read->staged(), read->aside()})
                QVERIFY2(QDir::cleanPath(path) == path && path.startsWith(world.prefix() + '/'),
                         text.constData());
        });
        const CaskUpgrade upgrade{.token = *PackageName::parse("x"),
                                  .version = "1",
                                  .versions = {"1"},
                                  .applications = {{.name = "x.app", .place = app}},
                                  .options = "7-12"};
        forEachMutation(QJsonDocument(upgrade.toJson()).toJson(), [](const QByteArray &text) {
            const auto read = CaskUpgrade::fromJson(QJsonDocument::fromJson(text).object());
            QStringList names = read ? read->versions + QStringList(read->version) : QStringList();
            for (const CaskUpgrade::Application &application :
                 read ? read->applications : QList<CaskUpgrade::Application>())
                names.append(application.name);
            for (const QString &name : names)
                QVERIFY2(!name.isEmpty() && !name.contains('/') && !name.startsWith('.'), text.constData());
        });
        // The others through a whole recovery; a brew that refuses everything.
        world.shell.onAny = [&world](const ShellCommand &command) {
            return command.arguments.value(0) == "--prefix" ? world.prefix().toUtf8() : QByteArray();
        };
        // An application that really stands aside, so that a note which is hardly changed is acted on.
        const QString aside = world.path("apps") + "/.larkspur-aside-12345678-x.app";
        const QString foreign = world.path("apps") + "/.larkspur-aside-12345678-mine.app";
        QDir().mkpath(foreign + "/Contents");
        const QList<std::pair<QString, QJsonObject>> notes{
            {"held-pin", {{"prefix", world.prefix()}, {"name", "x"}, {"isCask", false}}},
            {"held-pin", {{"prefix", world.prefix()}, {"name", "removed"}, {"isCask", false}}},
            {"links", {{"prefix", world.prefix()}, {"linked", QJsonArray{"x", "x"}}}},
            {"links", {{"prefix", world.prefix()}, {"linked", QJsonArray{"removed"}}}},
            {"moved-aside",
             {{"prefix", world.prefix()},
              {"token", "x"},
              {"isReplaced", false},
              {"isToReturn", true},
              {"applications", QJsonArray{QJsonObject{{"place", app}, {"aside", aside}}}}}},
            {"cask-upgrades", {{"prefix", world.prefix()}, {"upgrades", QJsonArray{upgrade.toJson()}}}}};
        QRandomGenerator random(9);
        QMap<QString, int> settled;
        int moved = 0;
        for (int i = 0; i < 240; ++i) {
            const auto &[kind, contents] = notes[i % notes.size()];
            QDir().mkpath(aside + "/Contents");
            const auto file = CrashNote::write(world.path("notes"), kind, contents);
            QVERIFY(file);
            QByteArray text = QJsonDocument(contents).toJson();
            if (i >= notes.size()) // one of each stays whole: how many others are acted on is chance
                text = mutated(text, random);
            Fixture::write(file->path(), text);
            await(world.recovery.run({}));
            moved += QDir(aside).exists() ? 0 : 1;
            settled[kind] += world.notes().isEmpty() ? 1 : 0;
            // One of the two may go to the trash for the other, and nothing else moves.
            QVERIFY2(QDir(app).exists() && QDir(foreign).exists(), text.constData());
            const QStringList apps =
                QDir(world.path("apps")).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot);
            QVERIFY2(apps.size() == 3 || (apps.size() == 2 && !QDir(aside).exists()), text.constData());
            (void)removeTree(world.folder.path(), world.path("notes"));
            (void)removeTree(world.folder.path(), world.path("trash"));
        }
        for (const char *kind : {"held-pin", "links", "moved-aside", "cask-upgrades"})
            QVERIFY2(settled[kind] > 0, kind);
        QVERIFY(moved > 0);
        QVERIFY(QDir(world.path("mine/1")).exists());
        for (const ShellCommand &command : world.shell.commands())
            QVERIFY(command.arguments.size() < 2 || isPlain(command.arguments.last()));
    }

    /// Where nothing is installed there is no work for brew, so that notes can be read by the thousand.
    void notesOfWhatIsGone() {
        OperationWorld world;
        const QString app = world.path("apps") + "/x.app";
        const QString aside = world.path("apps") + "/.larkspur-aside-12345678-x.app";
        const QString mine = world.path("apps") + "/mine.app";
        QDir().mkpath(mine + "/Contents");
        const CaskUpgrade upgrade{.token = *PackageName::parse("x"),
                                  .version = "1",
                                  .versions = {"1"},
                                  .applications = {{.name = "x.app", .place = app}},
                                  .options = "7-12"};
        HeldPinLeftover pins(world.path("notes"));
        LostLinksLeftover links(world.path("notes"));
        MovedAsideLeftover applications(world.casks);
        LostApplicationsLeftover upgrades(world.casks);
        const QList<std::tuple<QString, QJsonObject, Leftover *>> notes{
            {"held-pin", {{"prefix", world.prefix()}, {"name", "x"}, {"isCask", false}}, &pins},
            {"links", {{"prefix", world.prefix()}, {"linked", QJsonArray{"x", "y"}}}, &links},
            {"moved-aside",
             {{"prefix", world.prefix()},
              {"token", "x"},
              {"isReplaced", false},
              {"isToReturn", true},
              {"applications", QJsonArray{QJsonObject{{"place", app}, {"aside", aside}}}}},
             &applications},
            {"cask-upgrades",
             {{"prefix", world.prefix()}, {"upgrades", QJsonArray{upgrade.toJson()}}},
             &upgrades}};
        const LockedWork work{
            .session = nullptr, .context = {}, .prefix = world.prefix(), .logger = &world.logger};
        for (const auto &[kind, contents, leftover] : notes) {
            int used = 0;
            forEachMutation(QJsonDocument(contents).toJson(), [&](const QByteArray &text) {
                QDir().mkpath(world.path("notes"));
                const QString path = world.path("notes") + "/1-" + kind + "-1.json";
                Fixture::write(path, text);
                await(leftover->putRight(work));
                used += QFile::exists(path) || QFile::exists(path + ".unreadable") ? 0 : 1;
                QVERIFY2(QDir(mine + "/Contents").exists() && !QFile::exists(world.path("trash")),
                         text.constData());
                (void)removeTree(world.folder.path(), world.path("notes"));
            });
            QVERIFY2(used < mutations, qPrintable(kind));
        }
    }

    void preferences_data() {
        QTest::addColumn<QString>("name");
        QTest::newRow("ours") << "preferences.json";
        QTest::newRow("of earlier versions") << "preferences.ini";
    }
    /// What can be read is there after a change as before, and what cannot be is kept.
    void preferences() {
        QFETCH(QString, name);
        const QVariantMap values{{keys::simpleMode, true},
                                 {keys::snapshotRetentionLimit, 30},
                                 {keys::kegPreservationCapBytes, 5'000'000'000.0},
                                 {keys::knownRootServices, QStringList{"a,b", "meadowdb"}},
                                 {keys::brewPathOverride, "/opt/homebrew/bin/brew"},
                                 {keys::windowGeometry, QByteArray("\x01\xd9\xd0\xcb\x00", 5)}};
        QTemporaryDir folder;
        QVERIFY(FilePreferenceStore(folder.path()).change(values));
        const QString path = folder.filePath(name);
        if (name.endsWith(".ini")) {
            QVERIFY(QFile::remove(folder.filePath("preferences.json")));
            QSettings earlier(path, QSettings::IniFormat);
            for (auto entry = values.begin(); entry != values.end(); ++entry)
                earlier.setValue(entry.key(), entry.value());
        }
        int read = 0;
        forEachMutation(Fixture::read(path).toUtf8(), [&](const QByteArray &text) {
            Fixture::write(path, text);
            FilePreferenceStore store(folder.path());
            const auto found = store.read();
            read += found ? 1 : 0;
            QCOMPARE(Fixture::read(path), QString::fromUtf8(text)); // reading changes nothing
            const auto changed = store.change({{"new", 1}});
            QVERIFY2(changed, text.constData());
            QVERIFY2(found || !store.keptAside().isEmpty(), text.constData());
            const auto again = FilePreferenceStore(folder.path()).read();
            QVERIFY2(again && again->keys() == changed->keys() && again->value("new") == 1, text.constData());
            for (const char *made : {"preferences.json", "preferences.json.unreadable"})
                QFile::remove(folder.filePath(made));
        });
        QVERIFY(read > 0 && (read < mutations || name.endsWith(".ini"))); // of those each line stands alone
    }

    void whatThePersonAddedAndTheCaches() {
        Fixture fixture;
        {
            UserDataManager real(fixture.path("data"), fixture.logger);
            real.snoozePackage("heron", "8.11.1", false, SnoozeDuration::OneDay);
            real.addHistoryEntry(HistoryAction::Install, "heron", false, true);
            PackageCache cache(fixture.path("cache"), fixture.logger);
            Formula formula;
            formula.name = formula.fullName = "heron";
            formula.version = "8.10.0";
            cache.saveFormulae({formula});
            Cask cask;
            cask.token = "tidepool";
            cask.name = {"Tidepool"};
            cask.version = "1.2,34";
            cask.appNames = {"Tidepool.app"};
            cask.installedOn = QDateTime::currentDateTimeUtc();
            cache.saveCasks({cask});
            cache.saveOutdated({{.name = "heron",
                                 .fullName = "acme/tools/heron",
                                 .installedVersions = {"8.10.0"},
                                 .currentVersion = "8.11.1",
                                 .pinned = true}});
        }
        QStringList files;
        for (const char *folder : {"data", "cache"})
            for (const QString &name : QDir(fixture.path(folder)).entryList(QDir::Files))
                files.append(fixture.path(folder) + '/' + name);
        QCOMPARE(files.size(), 5);
        for (const QString &path : files) {
            const QByteArray real = Fixture::read(path).toUtf8();
            forEachMutation(real, [&](const QByteArray &text) {
                Fixture::write(path, text);
                const UserDataManager data(fixture.path("data"), fixture.logger);
                QVERIFY(data.history().size() <= 10);
                const PackageCache cache(fixture.path("cache"), fixture.logger);
                const bool hasFormulae = cache.loadFormulae().has_value();
                const bool hasCasks = cache.loadCasks().has_value();
                const bool hasOutdated = cache.loadOutdated().has_value();
                QVERIFY(hasFormulae || path.contains("formulae"));
                QVERIFY(hasCasks || path.contains("casks"));
                QVERIFY(hasOutdated || path.contains("outdated"));
                QFile file(path);
                QVERIFY(file.open(QIODevice::ReadOnly) && file.readAll() == text); // reading changes nothing
            });
            Fixture::write(path, real);
        }
    }
};

QTEST_GUILESS_MAIN(StoredFilesTest)
#include "StoredFiles_test.moc"
