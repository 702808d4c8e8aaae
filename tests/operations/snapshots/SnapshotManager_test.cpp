#include "tests/support/OperationWorld.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

class SnapshotManagerTest : public QObject {
    Q_OBJECT

    static QStringList files(const OperationWorld &world) {
        return QDir(world.path("snapshots")).entryList({"*.json"}, QDir::Files);
    }

  private Q_SLOTS:
    void takesWhatIsThere() {
        OperationWorld world;
        world.addFormula("a", "1.9");
        world.addFormula("a", "1.10"); // newer, though the text sorts before
        world.addFormula("b", "1");
        world.addFormula("b", "2");
        QDir().mkpath(world.prefix() + "/opt");
        QFile::link("../Cellar/b/1", world.prefix() + "/opt/b"); // the older one is in use
        world.addCask("c", "3,1");
        world.shell.answer("tap", "homebrew/core\nacme/tools\n");
        const auto taken = await(world.snapshots.take(SnapshotTrigger::Manual, "note"));
        QCOMPARE(taken->formulae, (QList<SnapshotEntry>{{"a", "1.10", false}, {"b", "1", false}}));
        QCOMPARE(taken->casks, (QList<SnapshotEntry>{{"c", "3,1", true}}));
        QCOMPARE(taken->taps, QStringList({"homebrew/core", "acme/tools"}));
        SnapshotManager next({world.queries, world.preferences, world.logger, world.path("snapshots")});
        await(next.load());
        QCOMPARE(next.snapshots(), QList<Snapshot>{*taken});
    }

    void retention_data() {
        QTest::addColumn<QVariant>("limit");
        QTest::addColumn<int>("kept");
        QTest::newRow("absent") << QVariant() << 30;
        QTest::newRow("three") << QVariant(3) << 3;
        QTest::newRow("zero keeps all") << QVariant(0) << 33;
        QTest::newRow("negative keeps all") << QVariant(-1) << 33;
    }
    void retention() {
        QFETCH(QVariant, limit);
        QFETCH(int, kept);
        OperationWorld world;
        if (limit.isValid())
            world.preferences.set(keys::snapshotRetentionLimit, limit);
        QList<QUuid> ids;
        for (int i = 0; i < 33; ++i)
            ids.prepend(await(world.snapshots.take(SnapshotTrigger::Scheduled))->id);
        QCOMPARE(world.snapshots.snapshots().size(), kept);
        QCOMPARE(files(world).size(), kept);
        for (int i = 0; i < kept; ++i)
            QCOMPARE(world.snapshots.snapshots()[i].id, ids[i]); // the newest, newest first
    }

    void foreignFilesDisturbNobody() {
        OperationWorld world;
        const auto taken = await(world.snapshots.take(SnapshotTrigger::Manual));
        const QString folder = world.path("snapshots") + '/';
        Fixture::write(folder + "notes.json", "{}");
        Fixture::write(folder + QUuid::createUuid().toString(QUuid::WithoutBraces) + ".json",
                       snapshotText(*taken)); // claims to be another
        QFile huge(folder + "huge.json");
        QVERIFY(huge.open(QIODevice::WriteOnly) && huge.resize(100 * 1024 * 1024));
        await(world.snapshots.load());
        QCOMPARE(world.snapshots.snapshots(), QList<Snapshot>{*taken});
        QCOMPARE(world.snapshots.unreadable().size(), 3);
        QVERIFY(await(world.snapshots.removeAll()));
        QCOMPARE(files(world).size(), 3); // what cannot be read is not deleted
    }

    void notesAndRemovals() {
        OperationWorld world;
        const QUuid id = await(world.snapshots.take(SnapshotTrigger::Manual))->id;
        QVERIFY(await(world.snapshots.setNote(id, "before")));
        await(world.snapshots.load());
        QCOMPARE(*world.snapshots.find(id)->note, "before");
        QCOMPARE(world.snapshots.find(id.toString(QUuid::WithoutBraces).left(6)), world.snapshots.find(id));
        QVERIFY(!world.snapshots.find(QString()));
        QVERIFY(await(world.snapshots.remove({id})));
        QVERIFY(files(world).isEmpty() && !world.snapshots.find(id));
        QVERIFY(!await(world.snapshots.setNote(id, "too late")) && files(world).isEmpty());
    }

    void aFolderThatCannotBeWrittenIsSaid() {
        OperationWorld world;
        Fixture::write(world.path("snapshots"), {});
        QVERIFY(!await(world.snapshots.take(SnapshotTrigger::Manual)));
        QVERIFY(world.snapshots.snapshots().isEmpty());
    }
};

QTEST_GUILESS_MAIN(SnapshotManagerTest)
#include "SnapshotManager_test.moc"
