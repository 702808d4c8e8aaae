#include "operations/kegs/KegStore.h"
#include "tests/support/OperationWorld.h"

#include <QDir>
#include <QProcess>
#include <QTest>

#include <sys/stat.h>

using namespace larkspur;
using namespace larkspur::test;

class KegStoreTest : public QObject {
    Q_OBJECT

    struct World : Fixture {
        QString folder = path("kegs");
        RecordingSync sync;
        KegStore store{folder, sync};
        QDateTime now = QDateTime::fromString("2026-11-01T12:00:00.000Z", Qt::ISODateWithMs);

        /// Preserves a keg of one file, each a day younger than the last. `size` is what its entry says.
        bool add(const QString &formula, const QString &version, qint64 size,
                 const std::optional<QUuid> &snapshot = {}, qsizetype blocks = 0) {
            const QString partial = store.partialPath();
            QDir().mkpath(partial);
            write(partial + "/file", formula.toUtf8() + version.toUtf8() + QByteArray(blocks * 4096, 'x'));
            now = now.addDays(1);
            const KegEntry entry{
                .formula = formula, .version = version, .bytes = size, .date = now, .snapshotID = snapshot};
            return store.adopt(partial, *TreeScan::of(partial, TreeScan::Depth::Contents), entry).has_value();
        }
        QStringList names() const {
            QStringList all;
            for (const KegEntry &entry : KegStore(folder, *std::make_unique<FileByFileSync>())
                                             .entries()) // as the next start reads it
                all.append(entry.formula + ' ' + entry.version);
            return all;
        }
    };

    /// The same version is preserved a second time, with other files, and that ends in the middle.
    struct Replacement : World {
        const QString place = folder + "/a/1";
        const QString list = folder + "/a/.1.files";
        const QString kept = path("kept");

        Replacement() {
            if (!add("a", "1", 10) || !QFile::copy(list, kept) ||
                QProcess::execute("cp", {"-a", place, path("earlier")}) != 0 || !add("a", "1", 10, {}, 1))
                qFatal("the test cannot preserve");
        }
        void standAside() const {
            if (!QDir().rename(path("earlier"), folder + "/a/.1.earlier"))
                qFatal("the test cannot move");
        }
    };

  private Q_SLOTS:
    void theIndexReadsBack() {
        World world;
        const QUuid snapshot = QUuid::createUuid();
        QVERIFY(world.add("a", "1.0_1", 5'000'000'000, snapshot));
        const KegStore again(world.folder, world.sync);
        QCOMPARE(again.entries(), world.store.entries());
        QCOMPARE(again.entries().first().snapshotID, snapshot);
        QVERIFY(again.isIntact("a", "1.0_1"));
    }

    void aFolderThatLeadsNowhereIsNotEmpty() {
        World world;
        QVERIFY(world.add("a", "1", 1));
        QVERIFY(QDir().rename(world.folder, world.path("away")));
        QVERIFY(QFile::link("/nowhere/kegs", world.folder));
        world.store.load();
        QVERIFY(world.store.failure().startsWith(world.folder + " cannot be read: "));
        QVERIFY(world.store.needsSweep());
        QCOMPARE(world.store.sweep().error(), world.store.failure());
        QCOMPARE(world.store.enforceCap(0, std::nullopt).error(), world.store.failure());
        QCOMPARE(world.store.remove("a", "1").error(), world.store.failure());
        QVERIFY(QFile::remove(world.folder) && QDir().rename(world.path("away"), world.folder));
        world.store.load();
        QVERIFY(world.store.failure().isEmpty() && world.store.entries().size() == 1);
    }

    void theOldestMakesRoom_data() {
        QTest::addColumn<qint64>("lie");
        QTest::newRow("entries say nothing") << qint64{0};
        QTest::newRow("entries say far too much") << (qint64{1} << 40);
    }
    void theOldestMakesRoom() {
        QFETCH(qint64, lie); // the copies are measured, whatever the index says
        World world;
        const QUuid newest = QUuid::createUuid();
        constexpr qint64 block = 4096;
        const qint64 said = block * lie;
        QVERIFY(world.add("a", "1", said, {}, 40) && world.add("b", "1", said, {}, 40) &&
                world.add("c", "1", said, newest, 90) && world.add("d", "1", said, newest, 90));
        QCOMPARE(world.store.enforceCap(300 * block, newest)->size(), 0);
        QCOMPARE(world.store.enforceCap(230 * block, newest)->value(0).formula, "a");
        QCOMPARE(world.names(), QStringList({"b 1", "c 1", "d 1"}));
        QVERIFY(world.store.enforceCap(10 * block, newest)); // what was just made for an upgrade stays
        QCOMPARE(world.names(), QStringList({"c 1", "d 1"}));
        QVERIFY(world.store.enforceCap(100 * block, std::nullopt));
        QCOMPARE(world.names(), QStringList{"d 1"});
        // What the entry says is put right on the way.
        QVERIFY(world.store.entries().first().bytes >= 90 * block &&
                world.store.entries().first().bytes < 100 * block);
        QVERIFY(!QFile::exists(world.folder + "/c"));
    }

    void theSameVersionAgainReplacesItsCopy() {
        World world;
        QVERIFY(world.add("a", "1", 10) && world.add("a", "1", 20));
        QCOMPARE(world.names(), QStringList{"a 1"});
        QCOMPARE(world.store.entries().first().bytes, 20);
    }

    void aByteThatChangedIsSeen() {
        World world;
        QVERIFY(world.add("a", "1", 10));
        Fixture::write(world.folder + "/a/1/file", "a2");
        QVERIFY(!world.store.isIntact("a", "1"));
    }

    void aCopyThatDiffersIsNotAdopted() {
        World world;
        const QString partial = world.store.partialPath();
        QDir().mkpath(partial);
        Fixture::write(partial + "/file", "whole");
        const auto scan = TreeScan::of(partial, TreeScan::Depth::Contents);
        Fixture::write(partial + "/file", "hal");
        QVERIFY(!world.store.adopt(partial, *scan, {.formula = "a", .version = "1", .date = world.now}));
        QVERIFY(!QFile::exists(partial) && world.names().isEmpty());
    }

    void leftoversAreSwept() {
        World world;
        QVERIFY(world.add("a", "1", 10) && world.add("b", "1", 10));
        QVERIFY(!world.store.needsSweep());
        QDir().mkpath(world.store.partialPath() + "/half");
        QDir().mkpath(world.folder + "/.discarded-x/c"); // its removal was cut off
        QDir().mkpath(world.folder + "/c/1");            // nobody knows whose
        QDir(world.folder + "/b").removeRecursively();
        KegStore next(world.folder, world.sync);
        QVERIFY(next.needsSweep());
        QVERIFY(next.sweep());
        QVERIFY(!next.needsSweep());
        QCOMPARE(world.names(), QStringList{"a 1"});
        QCOMPARE(QDir(world.folder).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList({"a", "c"}));
    }

    void anEntryThatCannotBeReadIsMadeAnewFromItsCopy() {
        World world;
        const QString partial = world.store.partialPath();
        QDir().mkpath(partial);
        Fixture::write(partial + "/INSTALL_RECEIPT.json", "{\"source\":{\"tap\":\"acme/tools\"}}");
        QVERIFY(world.store.adopt(partial, *TreeScan::of(partial, TreeScan::Depth::Contents),
                                  {.formula = "c", .version = "1", .date = world.now}));
        QVERIFY(world.add("a", "1", 10));
        QByteArray index = Fixture::read(world.folder + "/index.json").toUtf8();
        Fixture::write(world.folder + "/index.json", index.replace("\"c\"", "{}"));
        KegStore next(world.folder, world.sync);
        QVERIFY(next.needsSweep() && next.sweep());
        QCOMPARE(world.names(), QStringList({"a 1", "c 1"}));
        QCOMPARE(next.entry("c", "1")->fullName, "acme/tools/c");
        QVERIFY(next.isIntact("c", "1"));
        QCOMPARE(Fixture::read(world.folder + "/index.json.unreadable").toUtf8(), index); // nothing is lost
    }

    void whatIsGoneAndWhatIsNewDoNotCancel() {
        World world;
        QVERIFY(world.add("a", "1", 10) && world.add("b", "1", 10));
        QVERIFY(world.store.remove("b", "1") && world.add("b", "1", 10));
        const QByteArray index = Fixture::read(world.folder + "/index.json").toUtf8();
        Fixture::write(world.folder + "/index.json", QByteArray(index).replace("\"b\"", "\"gone\""));
        KegStore next(world.folder, world.sync);
        QVERIFY(next.needsSweep() && next.sweep());
        QCOMPARE(world.names(), QStringList({"a 1", "b 1"}));
        // One that is neither whole nor listed is nobody's, and is not looked at for ever.
        QFile::remove(world.folder + "/b/1/file");
        Fixture::write(world.folder + "/index.json", "[]");
        QVERIFY(next.sweep() && !next.needsSweep());
    }

    void anEarlierCopyStaysUntilTheNewOneStands() {
        World world;
        QVERIFY(world.add("a", "1", 10));
        QVERIFY(QDir(world.folder + "/a").rename("1", ".1.earlier")); // died right after that
        KegStore next(world.folder, world.sync);
        QVERIFY(next.needsSweep() && next.sweep());
        QVERIFY(next.isIntact("a", "1") && !next.needsSweep());
        QCOMPARE(world.names(), QStringList{"a 1"});
    }

    void whatItsListIsAboutStays_data() {
        QTest::addColumn<bool>("isListed");
        QTest::newRow("died before the list was exchanged") << false;
        QTest::newRow("died after that") << true;
    }
    void whatItsListIsAboutStays() {
        QFETCH(bool, isListed);
        Replacement world;
        world.standAside();
        if (!isListed)
            QVERIFY(QFile::remove(world.list) && QFile::copy(world.kept, world.list));
        KegStore next(world.folder, world.sync);
        QVERIFY(next.needsSweep() && next.sweep());
        QVERIFY(next.isIntact("a", "1") && !next.needsSweep());
        QCOMPARE(QFileInfo(world.place + "/file").size() > 100, isListed);
        QCOMPARE(world.names(), QStringList{"a 1"});
    }

    void aReplacementThatFailsLeavesAWholeCopy_data() {
        QTest::addColumn<bool>("isFirst");
        QTest::newRow("of an earlier copy") << false;
        QTest::newRow("of none") << true;
    }
    void aReplacementThatFailsLeavesAWholeCopy() {
        QFETCH(bool, isFirst);
        World world;
        QVERIFY(isFirst || world.add("a", "1", 10));
        const QString list = world.folder + "/a/.1.files"; // something is in its place that stays there
        if (isFirst)
            QVERIFY(QDir().mkpath(list + "/in the way"));
        else
            QVERIFY(QFile::rename(list, world.path("list")) && QDir().mkpath(list + "/in the way"));
        QVERIFY(!world.add("a", "1", 10, {}, 1));
        QVERIFY(QDir(list).removeRecursively());
        QCOMPARE(QFile::exists(world.folder + "/a/1"), !isFirst);
        QVERIFY(isFirst || QFile::rename(world.path("list"), list));
        QCOMPARE(world.store.isIntact("a", "1"), !isFirst);
    }

    void aCopyIsOnTheDiskBeforeItsEntry() {
        World world;
        const QString partial = world.store.partialPath();
        QDir().mkpath(partial);
        const auto scan = TreeScan::of(partial, TreeScan::Depth::Contents);
        world.sync.failsAt = partial;
        QVERIFY(!world.store.adopt(partial, *scan, {.formula = "a", .version = "1", .date = world.now}));
        QVERIFY(world.names().isEmpty() && !QFile::exists(partial) && !QFile::exists(world.folder + "/a/1"));
    }

    void whatTheIndexCannotTellIsNotDone() {
        World world;
        QVERIFY(world.add("a", "1", 10));
        const QString index = world.folder + "/index.json"; // something in its place that stays there
        QVERIFY(QFile::remove(index) && QDir().mkpath(index) && QDir().mkpath(index + ".unreadable"));
        QVERIFY(!world.add("b", "1", 10) && !QFile::exists(world.folder + "/b"));
        QVERIFY(!world.store.remove("a", "1") && world.store.isIntact("a", "1"));
        QVERIFY(!world.store.sweep());
    }

    void withoutTheLockNothingChanges() {
        World world;
        QVERIFY(world.add("a", "1", 10));
        const auto held = LockFile::tryTake(world.folder + "/index.lock");
        const auto removed = world.store.remove("a", "1"); // waits for a while first
        QVERIFY(!removed && removed.error().contains("another program"));
        QVERIFY(world.store.isIntact("a", "1"));
    }

    void twoProgramsKeepEachOthersCopies() {
        World world;
        QVERIFY(world.add("a", "1", 10));
        KegStore waiting(world.folder, world.sync); // read the index before the others changed it
        QVERIFY(world.add("b", "1", 10) && world.store.remove("a", "1"));
        const QString partial = waiting.partialPath();
        QDir().mkpath(partial);
        Fixture::write(partial + "/file", "whole");
        const auto scan = TreeScan::of(partial, TreeScan::Depth::Contents);
        QVERIFY(waiting.adopt(partial, *scan, {.formula = "c", .version = "1", .date = world.now}));
        QCOMPARE(world.names(), QStringList({"b 1", "c 1"}));
        QVERIFY(world.store.remove("b", "1"));
        QVERIFY(waiting.sweep());
        QCOMPARE(world.names(), QStringList{"c 1"});
        QVERIFY(!QFile::exists(world.folder + "/index.lock"));
    }

    void aLostIndexIsMadeAnew_data() {
        QTest::addColumn<QByteArray>("index");
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("half") << QByteArray("[{\"formula\":\"a\",\"ver");
        QTest::newRow("another shape") << QByteArray("{\"a\":1}");
    }
    void aLostIndexIsMadeAnew() {
        QFETCH(QByteArray, index);
        World world;
        QVERIFY(world.add("a", "1", 10) && world.add("b", "2", 10));
        QFile::remove(world.folder + "/index.json");
        if (!index.isEmpty())
            Fixture::write(world.folder + "/index.json", index);
        Fixture::write(world.folder + "/b/2/file", "cut"); // not what its list says
        KegStore next(world.folder, world.sync);
        QVERIFY(next.entries().isEmpty()); // reads as empty
        QVERIFY(next.sweep());
        QCOMPARE(world.names(), QStringList{"a 1"});
        QVERIFY(QFile::exists(world.folder + "/b/2/file")); // and nothing is thrown away
    }

    void whatALinkLeadsToIsNotTouched() {
        World world;
        QVERIFY(world.add("a", "1", 10) && world.add("b", "1", 10));
        const QString documents = world.path("Documents");
        QVERIFY(QDir(world.folder).rename("a", documents));
        QDir().mkpath(documents + "/.2.earlier");
        const auto before = TreeScan::of(documents, TreeScan::Depth::Contents);
        QVERIFY(QFile::link(documents, world.folder + "/a"));
        QVERIFY(QFile::link(documents, world.folder + "/.discarded-x"));
        const auto removed = world.store.remove("a", "1");
        QVERIFY(!removed && removed.error().contains("/a is a link"));
        QVERIFY(!world.add("a", "1", 10) && !world.add("a", "3", 10));
        QVERIFY(world.store.sweep() && world.store.enforceCap(0, std::nullopt));
        QVERIFY(before->matches(*TreeScan::of(documents, TreeScan::Depth::Contents)));
        QCOMPARE(world.names(), QStringList{"a 1"}); // b made room all the same
        // The whole store may lie behind a link.
        QVERIFY(QDir().rename(world.folder, world.path("elsewhere")));
        QVERIFY(QFile::link(world.path("elsewhere"), world.folder));
        QVERIFY(world.add("c", "1", 10));
        const auto gone = world.store.remove("c", "1");
        QVERIFY2(gone, qPrintable(gone.error()));
        QVERIFY(!QFile::exists(world.folder + "/c"));
    }

    void strangeEntriesAreLeftOut() {
        QCOMPARE(
            kegIndexFromText("[{\"formula\":\"../evil\",\"version\":\"1\",\"date\":\"2026-11-01T12:00:00Z\"},"
                             "{\"formula\":\"a\",\"version\":\"..\",\"date\":\"2026-11-01T12:00:00Z\"},7,"
                             "{\"formula\":\"a\",\"version\":\"1\",\"date\":\"2026-11-01T12:00:00Z\"}]")
                .entries.size(),
            1);
    }
};

QTEST_GUILESS_MAIN(KegStoreTest)
#include "KegStore_test.moc"
