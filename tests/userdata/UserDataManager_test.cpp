#include "userdata/UserDataManager.h"

#include "tests/support/Fixture.h"
#include "userdata/UpdateSelection.h"

#include <QDir>
#include <QJsonDocument>
#include <QSignalSpy>
#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

class UserDataManagerTest : public QObject {
    Q_OBJECT

    struct World {
        Fixture fixture;
        QDateTime time = QDateTime(QDate(2026, 11, 1), QTime(12, 0), Qt::UTC);
        UserDataManager data = open();

        UserDataManager open() {
            return UserDataManager(fixture.path("data"), fixture.logger, [this] { return time; });
        }
        QString file(const QString &name) const { return fixture.path("data") + '/' + name; }
        QByteArray bytes(const QString &name) const {
            QFile source(file(name));
            return source.open(QIODevice::ReadOnly) ? source.readAll() : QByteArray();
        }
        QJsonArray json(const QString &name) const { return QJsonDocument::fromJson(bytes(name)).array(); }
    };

  private Q_SLOTS:
    void snoozesEnd_data() {
        QTest::addColumn<int>("choice");
        QTest::addColumn<qint64>("seconds");
        QTest::newRow("day") << static_cast<int>(SnoozeDuration::OneDay) << qint64(86400);
        QTest::newRow("week") << static_cast<int>(SnoozeDuration::OneWeek) << qint64(604800);
        QTest::newRow("month") << static_cast<int>(SnoozeDuration::OneMonth) << qint64(2592000);
    }
    void snoozesEnd() {
        QFETCH(int, choice);
        QFETCH(qint64, seconds);
        World world;
        const QDateTime start = world.time;
        world.data.snoozePackage("heron", "2.0", false, static_cast<SnoozeDuration>(choice));
        world.time = start.addSecs(seconds - 1);
        QVERIFY(world.data.isPackageSnoozed("heron", "2.1")); // whatever is offered
        QVERIFY(!world.data.isPackageSnoozed("dovetail", "2.0"));
        world.time = start.addSecs(seconds);
        QVERIFY(!world.data.isPackageSnoozed("heron", "2.0"));
    }

    void aSkippedVersionIsSkippedAlone() {
        World world;
        world.data.snoozePackage("heron", "2.0", false, SnoozeDuration::OneDay);
        world.data.snoozePackage("heron", "2.0", false, UntilNextVersion()); // instead of the first
        QCOMPARE(world.data.snoozedPackages().size(), 1);
        world.time = world.time.addYears(1);
        QVERIFY(world.data.isPackageSnoozed("heron", "2.0"));
        QVERIFY(!world.data.isPackageSnoozed("heron", "2.1"));
        const auto updates = selectUpdates({{"heron", "a/b/heron", false, {"1.0"}, "2.0", false},
                                            {"kelp", "kelp", false, {"1.0"}, "2.0", false}},
                                           world.data);
        QCOMPARE(updates.snoozedNames(), QStringList{"heron"});
        QCOMPARE(updates.shown.size(), 1);
        QVERIFY(world.data.unsnoozePackage("heron"));
        QVERIFY(!world.data.isPackageSnoozed("heron", "2.0"));
        QCOMPARE(world.json("snoozed_packages.json"), QJsonArray());
    }

    void snoozesSayWhenTheyEnd() {
        World world;
        const auto text = [&](const SnoozeType &type, qint64 secondsLater) {
            return SnoozedPackage{QUuid(), "heron", "2.0", type, world.time}.description(
                world.time.addSecs(secondsLater));
        };
        QCOMPARE(text(UntilNextVersion(), 0), "Until version after 2.0");
        QCOMPARE(text(SnoozeDuration::OneWeek, 86400), "Expires in 6 days");
        QCOMPARE(text(SnoozeDuration::OneWeek, 0), "Expires in 1 week");
        QCOMPARE(text(SnoozeDuration::OneDay, 86400 - 90 * 60), "Expires in 2 hours");
        QCOMPARE(text(SnoozeDuration::OneDay, 86400 - 60), "Expires in 1 minute");
        QCOMPARE(text(SnoozeDuration::OneDay, 90000), "Expires in less than a minute");
    }

    void theFilesHoldWhatOthersCanRead() {
        World world;
        world.data.snoozePackage("heron", "2.0", false, SnoozeDuration::OneWeek);
        world.data.snoozePackage("osprey-sync", "3", true, UntilNextVersion());
        world.data.addHistoryEntry(HistoryAction::Upgrade, "heron", false, true);
        const QJsonArray snoozed = world.json("snoozed_packages.json");
        QCOMPARE(snoozed[0].toObject().value("snoozeType"),
                 QJsonValue(QJsonObject{{"duration", QJsonObject{{"_0", "1_week"}}}}));
        QCOMPARE(snoozed[1].toObject().value("snoozeType"),
                 QJsonValue(QJsonObject{{"untilNextVersion", QJsonObject()}}));
        QJsonObject entry = world.json("history.json")[0].toObject();
        QVERIFY(!QUuid(entry.take("id").toString()).isNull());
        QCOMPARE(entry, (QJsonObject{{"timestamp", "2026-11-01T12:00:00.000Z"},
                                     {"action", "upgrade"},
                                     {"packageName", "heron"},
                                     {"isCask", false},
                                     {"success", true}}));
        const UserDataManager again = world.open();
        QCOMPARE(again.snoozedPackages(), world.data.snoozedPackages());
        QCOMPARE(again.history(), world.data.history());
    }

    void theHistoryForgetsTheOldest() {
        World world;
        for (int i = 0; i <= 500; ++i)
            world.data.addHistoryEntry(HistoryAction::Install, QString::number(i), false, true);
        QCOMPARE(world.data.history().size(), 500);
        QCOMPARE(world.data.history().first().packageName, "500");
        QCOMPARE(world.json("history.json").last().toObject().value("packageName"), QJsonValue("1"));
    }

    void windowAndTerminalDoNotOverwriteEachOther() {
        World world;
        UserDataManager other = world.open();
        const QSignalSpy changed(&world.data, &UserDataManager::snoozedPackagesChanged);
        other.snoozePackage("heron", "2.0", false, UntilNextVersion());
        other.addHistoryEntry(HistoryAction::Install, "kelp", false, true);
        world.data.addHistoryEntry(HistoryAction::Install, "heron", false, true);
        QCOMPARE(world.data.history().size(), 2);
        QVERIFY(!world.data.isPackageSnoozed("heron", "2.0"));
        const QSignalSpy happened(&world.data, &UserDataManager::historyChanged);
        other.addHistoryEntry(HistoryAction::Uninstall, "kelp", false, true);
        world.data.reload();
        QVERIFY(world.data.isPackageSnoozed("heron", "2.0") && world.data.history().size() == 3);
        QVERIFY(changed.size() == 1 && happened.size() == 1);
        world.data.reload();
        QVERIFY(changed.size() == 1 && happened.size() == 1);
    }

    void whatCannotBeReadIsKept_data() {
        QTest::addColumn<QByteArray>("contents");
        QTest::newRow("half") << QByteArray("[{\"id\":\"{6ab7ab6e-5fd0-4a5c-a");
        QTest::newRow("another type") << QByteArray("{\"heron\":1}");
        QTest::newRow("one bad record")
            << QByteArray("[{\"packageName\":\"heron\",\"snoozeType\":{\"forever\":{}}}]");
        QTest::newRow("not text") << QByteArray("\xff\xfe\x00\x01", 4);
    }
    void whatCannotBeReadIsKept() {
        QFETCH(QByteArray, contents);
        World world;
        QDir().mkpath(world.fixture.path("data"));
        Fixture::write(world.file("snoozed_packages.json"), contents);
        UserDataManager data = world.open();
        QVERIFY(data.snoozedPackages().isEmpty());
        QVERIFY(data.snoozedDamage().contains(world.file("snoozed_packages.json")));
        QVERIFY(world.fixture.logText().contains(world.file("snoozed_packages.json")));
        QCOMPARE(world.bytes("snoozed_packages.json"), contents); // reading changes nothing
        QVERIFY(data.snoozePackage("kelp", "1", false, UntilNextVersion()));
        QCOMPARE(world.json("snoozed_packages.json").size(), 1);
        QCOMPARE(world.bytes("snoozed_packages.json.unreadable"), contents);
        QVERIFY(world.open().snoozedDamage().contains(".unreadable")); // what is missing is missing still
        QVERIFY(QFile::remove(world.file("snoozed_packages.json.unreadable")));
        QVERIFY(world.open().snoozedDamage().isEmpty());
    }

    void oneBadRecordCostsNoOther() {
        World world;
        world.data.snoozePackage("heron", "2.0", false, UntilNextVersion());
        world.data.snoozePackage("kelp", "1", false, UntilNextVersion());
        QVERIFY(world.data.snoozedDamage().isEmpty() && world.data.historyDamage().isEmpty());
        const QByteArray damaged = world.bytes("snoozed_packages.json").replace("\"kelp\"", "7");
        Fixture::write(world.file("snoozed_packages.json"), damaged);
        world.data.reload();
        QVERIFY(world.data.isPackageSnoozed("heron", "2.0"));
        QVERIFY(world.data.snoozedDamage().startsWith("1 of the entries in "));
        QVERIFY(world.data.snoozePackage("dovetail", "1", false, UntilNextVersion()));
        QCOMPARE(world.json("snoozed_packages.json").size(), 2);
        QCOMPARE(world.bytes("snoozed_packages.json.unreadable"), damaged);
    }

    void withoutADiskEverythingHoldsInMemory() {
        World world;
        Fixture::write(world.fixture.path("data"), "a file in the place of the folder");
        QVERIFY(!world.data.snoozePackage("heron", "2.0", false, UntilNextVersion()));
        QVERIFY(!world.data.snoozePackage("kelp", "1", false, UntilNextVersion()));
        world.data.reload();
        QCOMPARE(world.data.snoozedPackages().size(), 2);
        QVERIFY(world.fixture.logText().contains("[UserData]"));
        QVERIFY(QFile::remove(world.fixture.path("data")));
        QVERIFY(world.data.snoozePackage("dovetail", "1", false, UntilNextVersion()));
        QCOMPARE(world.json("snoozed_packages.json").size(), 3);
    }
};

QTEST_GUILESS_MAIN(UserDataManagerTest)
#include "UserDataManager_test.moc"
