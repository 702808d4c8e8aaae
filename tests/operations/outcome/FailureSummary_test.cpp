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
            "Upgrade rolled back: a was restored to the previous version.");
        row("app management", {"Error: Operation not permitted @ apply2files - /A"},
            "macOS blocked Larkspur from modifying this app.");
        row("app management in other case", {"error: operation not permitted @ apply2files"},
            "error: operation not permitted");
        row("password", {"sudo: a Password is required"},
            "This operation requires administrator privileges to upgrade a.");
        row("permission", {"Error: Permission denied"}, "This operation requires administrator privileges");
        row("licence", {"You must accept the license terms"},
            "This package asks you to accept its license terms");
        row("lock", {"noise", "Error: x has locked y", "Please wait for it"}, "Error: x has locked y");
        row("anything", {"Warning: a", "Error: b", "c", "fatal: d"}, "Error: b\nfatal: d");
    }
    void summaries() {
        QFETCH(QStringList, output);
        QFETCH(QString, text);
        const FailureSummary summary =
            summarizeFailure(PackageResult{{"a"}, PackageEnd::Failed, Deed::Upgraded, output});
        QVERIFY2(summary.text.startsWith(text), qPrintable(summary.text));
    }

    void whatANamelessCommandTells() {
        const auto summary = [](const QStringList &output) {
            return summarizeFailure(PackageResult{{}, PackageEnd::Failed, Deed::Upgraded, output});
        };
        QCOMPARE(summary({"Warning: Reverting upgrade for Cask a"}).text,
                 "Upgrade rolled back: a was restored to the previous version.");
        QCOMPARE(summary({"sudo: a password is required"}).text,
                 "This operation requires administrator privileges.");
        QVERIFY(summary({"HOMEBREW_ACCEPT_EULA=Y"}).commandToCopy.startsWith("echo 'export"));
    }

    void onlyWhatFailedIsNamed() {
        OperationReport report{
            .packages = {
                {{"a", true}, PackageEnd::Done, Deed::Upgraded},
                {{"b", true}, PackageEnd::Failed, Deed::Upgraded, {"Reverting upgrade for Cask b"}}}};
        // What the program itself says about a retry with a password is no reason.
        const QStringList output{
            "==> This step needs administrator privileges. Retrying with your password…"};
        QCOMPARE(summarizeFailure(report, output).text,
                 "Upgrade rolled back: b was restored to the previous version.");
        report.packages.append({{"c", false}, PackageEnd::Failed, Deed::Upgraded, {"Error: no room"}});
        report.packages.append({{"d", false}, PackageEnd::Failed, Deed::Upgraded, {"Error: no room"}});
        report.packages.append({{"e", true}, PackageEnd::Cancelled, Deed::Upgraded});
        QCOMPARE(summarizeFailure(report, output).text,
                 "b: Upgrade rolled back: b was restored to the previous version.\nc, d: Error: no room\n"
                 "e: The administrator password that it needs was not given.");
        QCOMPARE(report.tally(), "1 done, 3 failed, 1 cancelled");
    }

    void aBuildThatFailsIsCalledThat() {
        const auto summary = summarizeFailure(PackageResult{
            {"c"},
            PackageEnd::Failed,
            Deed::Installed,
            {"==> make install", "Last 2 lines from /logs/c/02.make.log:", "c.c:4: undefined", "make: *** 1",
             "READ THIS: https://docs", "==> Error: Homebrew ended with status 1 without naming a reason."}});
        QCOMPARE(summary.text, "c could not be built:\nc.c:4: undefined\nmake: *** 1");
        QCOMPARE(summary.suggestion, "The log of the build is /logs/c/02.make.log");
    }

    void theOutcomeIsNoBetterThanTheWorst() {
        using enum PackageEnd;
        const auto outcomeWith = [](const QList<PackageEnd> &ends, bool warns = false) {
            OperationReport report{.hasWarnings = warns};
            for (const PackageEnd end : ends)
                report.packages.append({{"x", false}, end});
            return report.outcome();
        };
        QCOMPARE(outcomeWith({Done, Done}), OperationOutcome::Succeeded);
        QCOMPARE(outcomeWith({}, true), OperationOutcome::CompletedWithWarnings);
        QCOMPARE(outcomeWith({Done, DoneWithWarnings}), OperationOutcome::CompletedWithWarnings);
        QCOMPARE(outcomeWith({Done, Cancelled}), OperationOutcome::Failed);
        QCOMPARE(outcomeWith({Done, Failed, DoneWithWarnings}, true), OperationOutcome::Failed);
    }
};

QTEST_GUILESS_MAIN(FailureSummaryTest)
#include "FailureSummary_test.moc"
