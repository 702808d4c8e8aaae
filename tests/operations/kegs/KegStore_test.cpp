#include "operations/kegs/KegStore.h"
#include "tests/support/Fixture.h"

#include <QDir>
#include <QTest>

#include <sys/stat.h>

using namespace larkspur;
using namespace larkspur::test;

class KegStoreTest : public QObject {
    Q_OBJECT

    struct World : Fixture {
        QString folder = path("kegs");
        KegStore store{folder};
        QDateTime now = QDateTime::fromString("2026-11-01T12:00:00.000Z", Qt::ISODateWithMs);

        /// Preserves a keg of one file, each a day younger than the last.
        bool add(const QString &formula, const QString &version, qint64 size,
                 const std::optional<QUuid> &snapshot = {}) {
            const QString partial = store.partialPath();
            QDir().mkpath(partial);
            write(partial + "/file", formula.toUtf8() + version.toUtf8());
            now = now.addDays(1);
            const KegEntry entry{
                .formula = formula, .version = version, .bytes = size, .date = now, .snapshotID = snapshot};
            return store.adopt(partial, *TreeScan::of(partial, TreeScan::Depth::Contents), entry).has_value();
        }
        QStringList names() const {
            QStringList all;
            for (const KegEntry &entry : KegStore(folder).entries()) // as the next start reads it
                all.append(entry.formula + ' ' + entry.version);
            return all;
        }
    };

  private Q_SLOTS:
    void theIndexReadsBack() {
        World world;
        const QUuid snapshot = QUuid::createUuid();
        QVERIFY(world.add("a", "1.0_1", 5'000'000'000, snapshot));
        const KegStore again(world.folder);
        QCOMPARE(again.entries(), world.store.entries());
        QCOMPARE(again.entries().first().snapshotID, snapshot);
        QVERIFY(again.isIntact("a", "1.0_1"));
    }

    void theOldestMakesRoom() {
        World world;
        const QUuid newest = QUuid::createUuid();
        QVERIFY(world.add("a", "1", 400) && world.add("b", "1", 400) && world.add("c", "1", 900, newest) &&
                world.add("d", "1", 900, newest));
        QCOMPARE(world.store.enforceCap(3000, newest).size(), 0);
        QCOMPARE(world.store.enforceCap(2300, newest).first().formula, "a");
        QCOMPARE(world.names(), QStringList({"b 1", "c 1", "d 1"}));
        world.store.enforceCap(100, newest); // what was just made for an upgrade stays
        QCOMPARE(world.names(), QStringList({"c 1", "d 1"}));
        world.store.enforceCap(1000, std::nullopt);
        QCOMPARE(world.names(), QStringList{"d 1"});
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
        QDir().mkpath(world.folder + "/c/1"); // moved into place, its entry not yet written
        QDir(world.folder + "/b").removeRecursively();
        KegStore next(world.folder);
        QVERIFY(next.needsSweep());
        next.sweep();
        QVERIFY(!next.needsSweep());
        QCOMPARE(world.names(), QStringList{"a 1"});
        QCOMPARE(QDir(world.folder).entryList(QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{"a"});
    }

    void twoProgramsKeepEachOthersCopies() {
        World world;
        QVERIFY(world.add("a", "1", 10));
        KegStore waiting(world.folder); // read the index before the others changed it
        QVERIFY(world.add("b", "1", 10) && world.store.remove("a", "1"));
        const QString partial = waiting.partialPath();
        QDir().mkpath(partial);
        Fixture::write(partial + "/file", "whole");
        const auto scan = TreeScan::of(partial, TreeScan::Depth::Contents);
        QVERIFY(waiting.adopt(partial, *scan, {.formula = "c", .version = "1", .date = world.now}));
        QCOMPARE(world.names(), QStringList({"b 1", "c 1"}));
        QVERIFY(world.store.remove("b", "1"));
        waiting.sweep();
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
        KegStore next(world.folder);
        QVERIFY(next.entries().isEmpty()); // reads as empty
        next.sweep();
        QCOMPARE(world.names(), QStringList{"a 1"});
        QVERIFY(QFile::exists(world.folder + "/b/2/file")); // and nothing is thrown away
    }

    void strangeEntriesAreLeftOut() {
        QCOMPARE(
            kegIndexFromText("[{\"formula\":\"../evil\",\"version\":\"1\",\"date\":\"2026-11-01T12:00:00Z\"},"
                             "{\"formula\":\"a\",\"version\":\"..\",\"date\":\"2026-11-01T12:00:00Z\"},7,"
                             "{\"formula\":\"a\",\"version\":\"1\",\"date\":\"2026-11-01T12:00:00Z\"}]")
                .size(),
            1);
    }
};

QTEST_GUILESS_MAIN(KegStoreTest)
#include "KegStore_test.moc"
