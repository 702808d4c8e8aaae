#include "core/process/ProcessShellExecutor.h"
#include "tests/support/Await.h"
#include "tests/support/Fixture.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

/// What the person's own shell adds to every child.
class LoginShellTest : public QObject {
    Q_OBJECT

    /// The environment that a child gets when the login shell is the given script.
    static QString environmentWith(const QByteArray &script, Fixture &fixture, int runs = 1) {
        Fixture::write(fixture.path("shell"), "#!/bin/sh\n" + script, true);
        qputenv("SHELL", fixture.path("shell").toLocal8Bit());
        NullPseudoTerminal terminal;
        const NullProcessTable processes;
        ProcessShellExecutor shell({.askpassScript = "/askpass", .readLoginShell = true}, fixture.preferences,
                                   terminal, processes, fixture.logger);
        ShellResult result;
        for (int i = 0; i < runs; ++i)
            result = await(shell.run({.program = "/usr/bin/env"}));
        return result.standardOutput();
    }

  private Q_SLOTS:
    void itsVariablesAreHonoured() {
        Fixture fixture;
        const QString environment =
            environmentWith("[ \"$1\" = -ilc ] && [ \"$2\" = env ] || exit 1\n"
                            "echo HOMEBREW_CASK_OPTS=--fontdir=/f\necho HOMEBREW_PREFIX=/wrong\n"
                            "echo HOMEBREW_COLOR=1\necho OTHER=x\n",
                            fixture);
        QVERIFY(environment.contains("HOMEBREW_CASK_OPTS=--fontdir=/f\n"));
        QVERIFY(!environment.contains("HOMEBREW_PREFIX") && !environment.contains("HOMEBREW_COLOR=") &&
                !environment.contains("OTHER=x"));
        QVERIFY(environment.contains("SUDO_ASKPASS=/askpass\n"));
    }

    void itsAnswerHoldsNothingOfTheProgram() {
        Fixture fixture;
        fixture.preferences.set(keys::customCaskAppdir, "/Apps");
        const QString environment =
            environmentWith("env | tee \"${0%shell}asked\"\n", fixture); // as every shell answers
        QVERIFY2(environment.contains("HOMEBREW_CASK_OPTS=--appdir=\"/Apps\"\n"), qPrintable(environment));
        QCOMPARE(environment.count("HOMEBREW_NO_COLOR"), 1); // of this child alone, which has no terminal
        const QString asked = Fixture::read(fixture.path("asked"));
        for (const char *own : {"HOMEBREW_CASK_OPTS", "HOMEBREW_NO_COLOR", "HOMEBREW_NO_ASK", "SUDO_ASKPASS"})
            QVERIFY2(!asked.isEmpty() && !asked.contains(own), own);
    }

    void itIsAskedOnce() {
        Fixture fixture;
        environmentWith("echo asked >> \"$0.log\"\n", fixture, 3);
        QCOMPARE(Fixture::read(fixture.path("shell.log")), "asked\n");
    }

    void oneThatFailsIsIgnored() {
        for (const char *script : {"exit 3\n", "kill -KILL $$\n", "echo HOMEBREW_X=1; exit 1\n"}) {
            Fixture fixture;
            const QString environment = environmentWith(script, fixture);
            QVERIFY(environment.contains("HOMEBREW_NO_ASK=1"));
            QVERIFY(!environment.contains("HOMEBREW_X"));
        }
    }

    void withoutTerminalsChildrenRunOnOnePipe() {
        Fixture fixture;
        NullPseudoTerminal terminal;
        const NullProcessTable processes;
        ProcessShellExecutor shell({.askpassScript = {}, .readLoginShell = false}, fixture.preferences,
                                   terminal, processes, fixture.logger);
        const ShellResult result = await(shell.run({.program = "/bin/sh",
                                                    .arguments = {"-c", "echo out; echo err >&2"},
                                                    .mode = RunMode::Terminal}));
        QCOMPARE(result.standardOutput(), "out\nerr");
    }
};

QTEST_GUILESS_MAIN(LoginShellTest)
#include "LoginShell_test.moc"
