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

    void withoutTheChosenLimitNothingIsRemoved() {
        OperationWorld world;
        world.preferences.set(keys::snapshotRetentionLimit, 2);
        const QString path = world.path("preferences.json");
        Fixture::write(path, Fixture::read(path).toUtf8().chopped(3));
        Preferences next(std::make_unique<FilePreferenceStore>(world.folder.path()));
        SnapshotManager snapshots({world.queries, next, world.logger, world.path("snapshots")});
        for (int i = 0; i < 32; ++i)
            await(snapshots.take(SnapshotTrigger::Scheduled));
        QCOMPARE(files(world).size(), 32);
        next.set(keys::snapshotRetentionLimit, 31); // chosen anew
        await(snapshots.take(SnapshotTrigger::Scheduled));
        QCOMPARE(files(world).size(), 31);
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

    void whatCouldNotBeReadAgainIsNotSaved() {
        OperationWorld world;
        QByteArray taps;
        for (int i = 0; i <= mostSnapshotEntries; ++i)
            taps += "acme/t" + QByteArray::number(i) + '\n';
        world.shell.answer("tap", taps);
        QVERIFY(!await(world.snapshots.take(SnapshotTrigger::Manual)));
        QVERIFY(world.snapshots.snapshots().isEmpty() && files(world).isEmpty());
    }

    void aNoteDoesNotMakeADamagedOneWhole() {
        OperationWorld world;
        world.addFormula("a", "1");
        const QUuid id = await(world.snapshots.take(SnapshotTrigger::Manual))->id;
        const QString path = world.path("snapshots") + '/' + files(world).value(0);
        const QByteArray damaged = Fixture::read(path).replace("\"a\"", "\"--a\"").toUtf8();
        Fixture::write(path, damaged);
        await(world.snapshots.load());
        QVERIFY(!await(world.snapshots.setNote(id, "mine")));
        QCOMPARE(Fixture::read(path).toUtf8(), damaged);
    }

    void aFolderThatLeadsNowhereIsNotEmpty() {
        OperationWorld world;
        const auto taken = await(world.snapshots.take(SnapshotTrigger::Manual));
        QVERIFY(QDir().rename(world.path("snapshots"), world.path("away")));
        QVERIFY(QFile::link("/nowhere/snapshots", world.path("snapshots")));
        await(world.snapshots.load());
        QVERIFY(world.snapshots.failure().startsWith(world.path("snapshots") + " cannot be read: "));
        QVERIFY(!await(world.snapshots.removeAll()));
        QCOMPARE(await(world.snapshots.take(SnapshotTrigger::Manual)).error(), world.snapshots.failure());
        const auto report =
            world.perform(restoreSnapshot(world.packages, RestoreOrder{.snapshot = taken->id}));
        QVERIFY(report.failure && report.failure->text.contains("cannot be read"));
        QVERIFY(QFile::remove(world.path("snapshots")));
        QVERIFY(QDir().rename(world.path("away"), world.path("snapshots")));
        QVERIFY(await(world.snapshots.take(SnapshotTrigger::Manual)));
        QCOMPARE(world.snapshots.snapshots().size(), 2); // it is looked at again by itself
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
