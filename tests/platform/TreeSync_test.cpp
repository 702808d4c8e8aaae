#include "platform/Platform.h"
#include "tests/support/Fixture.h"

#include <QDir>
#include <QTest>

#include <sys/stat.h>

using namespace larkspur;
using namespace larkspur::test;

/// What brings trees to the disk: the system's own way, and the one that works everywhere.
class TreeSyncTest : public QObject {
    Q_OBJECT

  private Q_SLOTS:
    void aTreeWithEverything_data() {
        QTest::addColumn<bool>("isSystems");
        QTest::newRow("the system's") << true;
        QTest::newRow("file by file") << false;
    }
    void aTreeWithEverything() {
        QFETCH(bool, isSystems);
        const std::unique_ptr<TreeSync> way =
            isSystems ? makePlatform().treeSync : std::make_unique<FileByFileSync>();
        const Fixture fixture;
        const QString keg = fixture.path("keg");
        QVERIFY(QDir().mkpath(keg + "/empty") && QDir().mkpath(keg + "/bin"));
        Fixture::write(keg + "/bin/tool", "bytes", true);
        QFile::setPermissions(keg + "/bin/tool", QFile::ReadOwner);
        QVERIFY(QFile::link("/nowhere", keg + "/dangling") && QFile::link(keg, keg + "/bin/circle"));
        QCOMPARE(::mkfifo(qPrintable(keg + "/pipe"), 0600), 0); // not waited for
        const auto synced = way->sync(keg);
        QVERIFY2(synced, qPrintable(synced ? QString() : synced.error()));
        QVERIFY(QFile::link(fixture.folder.path(), fixture.path("link")));
        QVERIFY(way->sync(fixture.path("link/keg"))); // the folder around may be reached through a link
        for (const QString &none : {fixture.path("none"), keg + "/bin/tool", keg + "/dangling"}) {
            const auto failed = way->sync(none);
            QVERIFY2(!failed && failed.error().contains(none), qPrintable(none));
        }
    }
};

QTEST_GUILESS_MAIN(TreeSyncTest)
#include "TreeSync_test.moc"
