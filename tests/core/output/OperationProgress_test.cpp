#include "core/output/OperationProgress.h"
#include "core/output/TerminalReader.h"

#include <QTest>

using namespace larkspur;

class OperationProgressTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void currentItem_data() {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("item"); // empty: none
        QTest::addColumn<int>("steps");
        QTest::newRow("upgrade") << "==> Upgrading heron" << "heron" << 1;
        QTest::newRow("tap-qualified") << "==> Upgrading acme/tools/chatty" << "chatty" << 1;
        QTest::newRow("from a tap") << "==> Installing widget from acme/tools" << "widget" << 1;
        QTest::newRow("cask") << "==> Installing Cask pretty" << "pretty" << 1;
        QTest::newRow("qualified cask") << "==> Installing Cask acme/tools/pretty" << "pretty" << 1;
        QTest::newRow("fetch") << "==> Fetching downloads for: biga and bigb" << "biga" << 0;
        QTest::newRow("versioned") << "==> Upgrading python-ophis@3" << "python-ophis@3" << 1;
        QTest::newRow("plus and dots") << "==> Reinstalling libsigc++" << "libsigc++" << 1;
        QTest::newRow("dependencies")
            << "==> Installing dependencies for acme/tools/topper: acme/tools/liblow" << "" << 1;
        QTest::newRow("a number of packages") << "==> Upgrading 6 outdated packages:" << "" << 0;
        QTest::newRow("in the middle of a line") << "x ==> Upgrading heron" << "" << 0;
        QTest::newRow("other headers") << "==> Pouring heron--8.11.1.bottle.tar.gz" << "" << 0;
    }
    void currentItem() {
        QFETCH(QString, line);
        QFETCH(QString, item);
        QFETCH(int, steps);
        OperationProgress progress(10);
        progress.apply(OutputChange::line(line));
        QCOMPARE(progress.currentItem().value_or(QString()), item);
        QCOMPARE(progress.stepCount(), steps);
    }

    void percentagesWinOverSteps() {
        OperationProgress progress(4);
        progress.apply(OutputChange::line("==> Upgrading a"));
        QCOMPARE(progress.fraction().value(), 0.25);
        progress.apply({0, {"## 45.5%", "#### 100%"}, false});
        QCOMPARE(progress.fraction().value(), 1.0);
        QVERIFY(progress.hasSeenDownloadPercentage());
        progress.apply(OutputChange::line("12% and then 250%"));
        QCOMPARE(progress.fraction().value(), 1.0); // the last one is out of range
        progress.apply(OutputChange::line("==> Upgrading b"));
        QCOMPARE(progress.fraction().value(), 1.0); // steps no longer move the bar
        QCOMPARE(progress.currentItem().value(), "b");
    }

    void inABatchThePackagesCount() {
        OperationProgress progress;
        progress.beginPackage("a", 0, 4);
        QCOMPARE(progress.fraction().value(), 0.0);
        progress.apply({0, {"==> Upgrading a", "## 50%"}, false});
        QCOMPARE(progress.fraction().value(), 0.125);
        progress.beginPackage("b", 1, 4);
        QCOMPARE(progress.fraction().value(), 0.25);
        QCOMPARE(progress.currentItem().value(), "b");
        QCOMPARE(progress.stepCount(), 2);
        QCOMPARE(progress.totalSteps().value(), 4);
    }

    void unknownTotalShowsNoFraction() {
        OperationProgress progress;
        progress.apply(OutputChange::line("==> Installing a"));
        QVERIFY(!progress.fraction());
        QCOMPARE(progress.stepCount(), 1);
    }

    void queueRowsAddUp() {
        OperationProgress progress(2);
        const QString biga = "⠋ Formula biga (1.0) ###       Downloading %1/  3.0MB";
        const QString bigb = "⠋ Formula bigb (1.0) -------   Downloading %1/  1.0MB";
        progress.apply({0, {"==> Fetching downloads for: biga and bigb"}, false});
        progress.apply({0, {biga.arg("500.0KB"), bigb.arg("500.0KB")}, true});
        QCOMPARE(progress.fraction().value(), 0.25);
        progress.apply({2, {biga.arg("  1.5MB"), "✔︎ Formula bigb (1.0)"}, true});
        QCOMPARE(progress.fraction().value(), 0.625);
    }

    void aRedrawnHeaderCountsOnce() {
        TerminalReader reader;
        OperationProgress progress(4);
        for (const char *piece :
             {"row\r\n==> Upgr", "ading a", "\r\n==> Upgrading b\r\n", "\033[3Fagain\r\n\r\n\r\n"})
            progress.apply(reader.feed(piece));
        QCOMPARE(progress.stepCount(), 2);
        QCOMPARE(progress.currentItem().value(), "b"); // never "Upgr" or half a name
        QCOMPARE(progress.fraction().value(), 0.5);
    }
};

QTEST_GUILESS_MAIN(OperationProgressTest)
#include "OperationProgress_test.moc"
