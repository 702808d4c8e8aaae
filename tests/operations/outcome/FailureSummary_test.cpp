#include "operations/outcome/FailureSummary.h"

#include <QTest>

using namespace larkspur;

class FailureSummaryTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void summaries_data() {
        QTest::addColumn<QStringList>("output");
        QTest::addColumn<QString>("text"); // its beginning
        const auto row = [](const char *name, const QStringList &output, const QString &text) {
            QTest::newRow(name) << output << text;
        };
        row("reverted", {"WARNING: REVERTING UPGRADE FOR Cask a"},
            "Upgrade rolled back: a, b were restored to the previous version.");
        row("app management", {"Error: Operation not permitted @ apply2files - /A"},
            "macOS blocked Larkspur from modifying this app.");
        row("app management in other case", {"error: operation not permitted @ apply2files"},
            "error: operation not permitted");
        row("password", {"sudo: a Password is required"},
            "This operation requires administrator privileges to upgrade a, b.");
        row("permission", {"Error: Permission denied"}, "This operation requires administrator privileges");
        row("licence", {"You must accept the license terms"},
            "This package asks you to accept its license terms");
        row("lock", {"noise", "Error: x has locked y", "Please wait for it"}, "Error: x has locked y");
        row("anything", {"Warning: a", "Error: b", "c", "fatal: d"}, "Error: b\nfatal: d");
    }
    void summaries() {
        QFETCH(QStringList, output);
        QFETCH(QString, text);
        const OperationRequest request{.kind = OperationKind::Upgrade,
                                       .packages = {{"a", false}, {"b", true}}};
        const FailureSummary summary = summarizeFailure(request, output);
        QVERIFY2(summary.text.startsWith(text), qPrintable(summary.text));
    }

    void oneAndAllPackages() {
        const QStringList output{"Warning: Reverting upgrade for Cask a"};
        QCOMPARE(summarizeFailure({.kind = OperationKind::Upgrade, .packages = {{"a", true}}}, output).text,
                 "Upgrade rolled back: a was restored to the previous version.");
        QCOMPARE(summarizeFailure({.kind = OperationKind::UpgradeAll}, {"sudo: a password is required"}).text,
                 "This operation requires administrator privileges.");
        QVERIFY(summarizeFailure({.kind = OperationKind::Install}, {"HOMEBREW_ACCEPT_EULA=Y"})
                    .commandToCopy.startsWith("echo 'export"));
    }
};

QTEST_GUILESS_MAIN(FailureSummaryTest)
#include "FailureSummary_test.moc"
