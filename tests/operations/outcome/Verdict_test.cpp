#include "operations/outcome/Verdict.h"

#include <QTest>

using namespace larkspur;

class VerdictTest : public QObject {
    Q_OBJECT
  private Q_SLOTS:
    void outcomes_data() {
        QTest::addColumn<QStringList>("lines");
        QTest::addColumn<int>("outcome");
        const auto row = [](const char *name, const QStringList &lines, OperationOutcome outcome) {
            QTest::newRow(name) << lines << static_cast<int>(outcome);
        };
        row("nothing", {}, OperationOutcome::Succeeded);
        row("quiet", {"==> Upgrading x", "done"}, OperationOutcome::Succeeded);
        row("error", {"ERROR: no"}, OperationOutcome::Failed);
        row("git", {"fatal: no"}, OperationOutcome::Failed);
        row("sudo and password", {"Sudo: x", "the Password is required"}, OperationOutcome::Failed);
        row("sudo alone", {"sudo: fine"}, OperationOutcome::Succeeded);
        row("warning", {"Warning: something"}, OperationOutcome::CompletedWithWarnings);
        row("harmless warnings",
            {"Warning: Skipping x", "warning: x not installed", "Warning: there; overwriting."},
            OperationOutcome::Succeeded);
        row("one of several", {"Warning: skipping x", "Warning: y"}, OperationOutcome::CompletedWithWarnings);
        row("already installed", {"x 1.1 already installed"}, OperationOutcome::CompletedWithWarnings);
        row("retried with force", {"Error: source '/x'", "==> x Retrying with --force…", "done"},
            OperationOutcome::Succeeded);
        row("retried with password", {"Error: sudo", "Retrying with your password…", "Error: again"},
            OperationOutcome::Failed);
        row("the last retry counts",
            {"Retrying with --force", "Error: a", "Retrying with your password", "fine"},
            OperationOutcome::Succeeded);
    }
    void outcomes() {
        QFETCH(QStringList, lines);
        QFETCH(int, outcome);
        QCOMPARE(static_cast<int>(outcomeOf(lines)), outcome);
    }
};

QTEST_GUILESS_MAIN(VerdictTest)
#include "Verdict_test.moc"
