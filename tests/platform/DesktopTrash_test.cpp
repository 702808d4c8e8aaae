#include "platform/linux/DesktopTrash.h"
#include "tests/support/Fixture.h"

#include <QDir>
#include <QTest>

#include <unistd.h>

using namespace larkspur;
using namespace larkspur::test;

class DesktopTrashTest : public QObject {
    Q_OBJECT

    /// A data folder and a working folder of its own, and something to throw away.
    struct World {
        QTemporaryDir folder;
        const QByteArray dataBefore = qgetenv("XDG_DATA_HOME");
        const QString workBefore = QDir::currentPath();
        DesktopTrash trash;

        World() {
            QDir(folder.path()).mkpath("work");
            QDir(folder.path()).mkpath("bundle/inside");
            Fixture::write(file(), "mine");
            qputenv("XDG_DATA_HOME", folder.filePath("data/").toUtf8());
            QDir::setCurrent(folder.filePath("work"));
        }
        ~World() {
            QDir::setCurrent(workBefore);
            if (dataBefore.isNull())
                qunsetenv("XDG_DATA_HOME");
            else
                qputenv("XDG_DATA_HOME", dataBefore);
        }
        QString bundle() const { return folder.filePath("bundle"); }
        QString file() const { return bundle() + "/inside/file"; }
        bool isWorkFolderEmpty() const { return QDir(folder.filePath("work")).isEmpty(); }
    };

  private Q_SLOTS:
    void whatIsThrownAwayCanBeFound() {
        World world;
        const auto place = world.trash.take(world.bundle());
        QVERIFY2(place, qPrintable(place ? QString() : place.error()));
        QVERIFY(isInTrash(*place));
        QCOMPARE(Fixture::read(*place + "/inside/file"), "mine");
        QVERIFY(!QFile::exists(world.bundle()) && world.isWorkFolderEmpty());
        // A link goes by itself; what it leads to stays.
        QVERIFY(QFile::link(*place, world.bundle()));
        const auto link = world.trash.take(world.bundle());
        QVERIFY(link && QFileInfo(*link).isSymLink() && *link != *place);
        QCOMPARE(Fixture::read(*place + "/inside/file"), "mine");
    }

    void whereNoTrashCanBeMadeEverythingStays_data() {
        QTest::addColumn<QString>("file");
        for (const char *name : {"data", "data/Trash", "data/Trash/files", "data/Trash/info"})
            QTest::newRow(name) << name;
    }
    void whereNoTrashCanBeMadeEverythingStays() {
        QFETCH(QString, file); // in the place of a folder
        World world;
        QDir().mkpath(QFileInfo(world.folder.filePath(file)).path());
        Fixture::write(world.folder.filePath(file), {});
        const auto place = world.trash.take(world.bundle());
        QVERIFY(!place && place.error().contains("no trash can be made"));
        QCOMPARE(Fixture::read(world.file()), "mine");
        QVERIFY(world.isWorkFolderEmpty());
    }

    void whatCannotBeMovedStays() {
        World world;
        QVERIFY(!world.trash.take(world.folder.filePath("missing")));
        const auto root = world.trash.take("/proc/self/status"); // nobody can move that
        QVERIFY(!root && root.error().contains("/proc/self/status"));
        QVERIFY(QFile::exists("/proc/self/status") && world.isWorkFolderEmpty());
    }

    void onlyATrashCountsAsOne() {
        World world;
        const QString user = QString::number(::getuid());
        QVERIFY(isInTrash(world.folder.filePath("data/Trash/files/x")));
        QVERIFY(isInTrash("/Volume/.Trash-" + user + "/files/x"));
        QVERIFY(isInTrash("/Volume/.Trash/" + user + "/files/x"));
        for (const QString &path : {world.folder.filePath("work/x"), world.folder.filePath("data/Trash/x"),
                                    QString("/Volume/.Trash-77777/files/x"), QString("/Volume/files/x"),
                                    QString("files/x"), QString()})
            QVERIFY2(!isInTrash(path), qPrintable(path));
    }
};

QTEST_GUILESS_MAIN(DesktopTrashTest)
#include "DesktopTrash_test.moc"
