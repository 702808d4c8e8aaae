#include "inventory/cache/PackageCache.h"
#include "inventory/records/RecordJson.h"
#include "tests/support/Fixture.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

namespace {

Formula someFormula() {
    Formula formula;
    formula.name = "chatty";
    formula.fullName = "acme/tools/chatty";
    formula.version = "1.2_1";
    formula.description = "Übung 🍺";
    formula.dependencies = {"a", "b"};
    formula.installedOn = QDateTime(QDate(2026, 11, 22), QTime(20, 57, 39), Qt::UTC);
    return formula;
}

Cask someCask() {
    Cask cask;
    cask.token = "pretty";
    cask.name = {"Pretty", "P"};
    cask.appNames = {"Pretty.app"};
    cask.requiresRosetta = true;
    cask.actualBuild = "";
    return cask;
}

} // namespace

class PackageCacheTest : public QObject {
    Q_OBJECT

    Fixture m_fixture;
    QDateTime m_now = QDateTime(QDate(2026, 11, 22), QTime(12, 0), Qt::UTC);
    PackageCache m_cache{m_fixture.path("Cache"), m_fixture.logger, [this] { return m_now; }};

  private Q_SLOTS:
    void readsBackWhatItSaved() {
        m_cache.saveFormulae({someFormula(), Formula()});
        m_cache.saveCasks({someCask()});
        m_cache.saveOutdated({{"x", "t/r/x", true, {"1", "2"}, "3", true}});
        QCOMPARE(m_cache.loadFormulae()->data, QList<Formula>({someFormula(), Formula()}));
        QCOMPARE(m_cache.loadCasks()->data, QList<Cask>{someCask()});
        QCOMPARE(m_cache.loadOutdated()->data.first().installedVersions, QStringList({"1", "2"}));
    }

    void listsExpireAfterFiveMinutes() {
        m_cache.saveFormulae({someFormula()});
        m_now = m_now.addSecs(60);
        QVERIFY(!m_cache.loadFormulae()->isExpired);
        m_now = m_now.addSecs(240);
        QVERIFY(!m_cache.loadFormulae()->isExpired); // exactly five minutes
        m_now = m_now.addSecs(1);
        QVERIFY(m_cache.loadFormulae()->isExpired);
        QCOMPARE(m_cache.loadFormulae()->data.size(), 1); // still there to be shown
    }

    void unusableFilesCountAsMissing_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::newRow("garbage") << QByteArray("\x00\xff{{{", 6);
        QTest::newRow("empty") << QByteArray();
        QTest::newRow("other shape") << QByteArray(
            "{\"data\":{},\"timestamp\":\"2026-11-22 12:00:00 +0000\"}");
        QTest::newRow("no time") << QByteArray("{\"data\":[]}");
        QTest::newRow("older records") << QByteArray(
            "{\"data\":[{\"name\":\"a\",\"version\":\"1\"}],\"timestamp\":\"2026-11-22 12:00:00 +0000\"}");
    }
    void unusableFilesCountAsMissing() {
        QFETCH(QByteArray, bytes);
        Fixture::write(m_fixture.path("Cache/formulae_cache.json"), bytes);
        QVERIFY(!m_cache.loadFormulae());
    }

    void invalidating() {
        m_cache.saveFormulae({});
        m_cache.invalidateFormulae();
        m_cache.invalidateFormulae(); // nothing there is no error
        QVERIFY(!m_cache.loadFormulae());
    }

    void aFolderThatCannotBeWrittenIsLogged() {
        Fixture::write(m_fixture.path("blocked"), "x");
        PackageCache cache(m_fixture.path("blocked"), m_fixture.logger);
        cache.saveFormulae({someFormula()});
        QVERIFY(m_fixture.logText().contains("Failed to save cache: "));
        QVERIFY(!cache.loadFormulae());
    }

    void dates() {
        QCOMPARE(dateText(QDateTime(QDate(2026, 1, 2), QTime(3, 4, 5), Qt::UTC)),
                 "2026-01-02 03:04:05 +0000");
        QCOMPARE(dateFromText("2026-01-02 03:04:05 -0130")->toString(Qt::ISODate), "2026-01-02T04:34:05Z");
        QVERIFY(!dateFromText("yesterday"));
    }
};

QTEST_GUILESS_MAIN(PackageCacheTest)
#include "PackageCache_test.moc"
