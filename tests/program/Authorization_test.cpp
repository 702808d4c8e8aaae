#include "tests/support/Await.h"
#include "tests/support/Fixture.h"
#include "tests/support/Processes.h"
#include "tests/support/TerminalSession.h"

#include <QDir>
#include <QTest>

#include <csignal>

using namespace larkspur::test;

/// The whole program at a terminal of its own, a Homebrew that filters its environment, and a sudo that runs
/// the askpass program.
class AuthorizationTest : public QObject {
    Q_OBJECT

    std::unique_ptr<Program> m_program;

    /// The running program, without the shell and the terminal around it.
    QList<pid_t> programs() const {
        QList<pid_t> found = processesWith("larkspur --sample-folder=" + m_program->path("").toUtf8());
        found.removeIf([](pid_t id) { // what keeps its memory to itself does not tell more than its name
            QFile name(QString("/proc/%1/comm").arg(id));
            return !name.open(QIODevice::ReadOnly) || name.readAll().trimmed() != "larkspur";
        });
        return found;
    }
    void hangInThePrivilegedStep() {
        m_program->replaceBrew(
            "if [ \"$1\" = upgrade ] && [ -n \"$LARKSPUR_ASKPASS_PASSWORD\" ]; then sleep 60; "
            "fi\nexec -a " +
            m_program->brew().toUtf8() + " $REAL \"$@\"\n");
    }
    QString installed(const QString &token) const {
        return QDir(m_program->path("homebrew/Caskroom/" + token))
            .entryList(QDir::Dirs | QDir::NoDotAndDotDot)
            .value(0);
    }

  private Q_SLOTS:
    void init() {
        m_program = std::make_unique<Program>();
        QCOMPARE(m_program->run({"status"}).status, 0);
    }

    void thePasswordReachesSudoAndNothingElse_data() {
        QTest::addColumn<QByteArray>("password");
        QTest::newRow("plain") << QByteArray("Tr0ub4dor-and-3");
        QTest::newRow("shell") << QByteArray("a \"b' $HOME `id` \\n%s;|&");
        QTest::newRow("letters") << QByteArray("Zwölf Boxkämpfer 密码");
        QTest::newRow("long") << QByteArray(200, 'k');
    }
    void thePasswordReachesSudoAndNothingElse() {
        QFETCH(QByteArray, password);
        m_program->setPassword(password);
        // Looks at everything that a neighbour could see while the command runs.
        m_program->replaceBrew("{ cat /proc/[0-9]*/cmdline || ps -eo args; } 2>/dev/null >> " +
                               m_program->path("arguments").toUtf8() + "\nexec -a " +
                               m_program->brew().toUtf8() + " $REAL \"$@\"\n");
        TerminalSession session(*m_program, {"upgrade", "--yes", "--cask", "granite-vault"});
        QVERIFY(session.prompt());
        session.type("not " + password);
        QVERIFY(session.reach("That password was incorrect. Please try again."));
        QVERIFY(session.prompt());
        session.type(password);
        const int status = session.finish();
        QVERIFY2(status == 0, session.all());
        QCOMPARE(installed("granite-vault"), "4.2");
        QVERIFY(QDir(m_program->path("homebrew/var/privileged/granite-vault")).exists());
        QVERIFY(Fixture::read(m_program->path("arguments")).contains("granite-vault"));
        QCOMPARE(m_program->filesWith(password), QStringList());
        QVERIFY(!session.all().contains(password)); // no echo either
        QVERIFY(!QFile::exists(m_program->path("data/.askpass-secret")));
    }

    void aPasswordThatSudoRejectsIsAskedForAgain() {
        TerminalSession session(*m_program, {"upgrade", "--yes", "--cask", "kestrel-vpn"});
        QVERIFY(session.prompt());
        session.type("sesame");
        QVERIFY(session.reach("==> That password didn't work. Retrying"));
        QVERIFY(session.prompt());
        session.type("sesame");
        const int status = session.finish();
        QVERIFY2(status == 0, session.all());
        QCOMPARE(installed("kestrel-vpn"), "1.9.3");
    }

    void aFormulaThatAsksIsWarnedOf() {
        m_program->replaceBrew(
            "if [ \"$1\" = install ]; then printf 'sudo: a password is required\\n'; exit 1; "
            "fi\nexec -a " +
            m_program->brew().toUtf8() + " $REAL \"$@\"\n");
        TerminalSession session(*m_program, {"install", "dovetail"});
        QVERIFY2(session.prompt(), session.all());
        session.type({});
        QCOMPARE(session.finish(), 1);
        const QByteArray &all = session.all();
        for (const char *line :
             {"\r\n  Package  dovetail\r\n", "\r\n  Command  brew install dovetail\r\n",
              "\r\n  Output   sudo: a password is required",
              "\r\nWarning: Homebrew never needs administrator rights to build a formula."})
            QVERIFY2(all.contains(line), all);
    }

    void cancellingChangesNothing() {
        TerminalSession session(*m_program, {"upgrade", "--yes", "--cask", "granite-vault"});
        QVERIFY(session.prompt());
        QVERIFY(session.all().contains("\r\n  Command  brew upgrade --cask granite-vault\r\n"));
        QVERIFY(!session.all().contains("Homebrew never needs"));
        session.type({});
        QCOMPARE(session.finish(), 1);
        QVERIFY(session.all().contains("was cancelled. No changes were made."));
        QVERIFY(session.all().contains("Cancelled: Upgrading granite-vault."));
        QCOMPARE(installed("granite-vault"), "4.1");
    }

    void interruptingThePrompt_data() {
        QTest::addColumn<int>("signal");
        QTest::newRow("Ctrl-C") << 0;
        QTest::newRow("terminate") << SIGTERM;
        QTest::newRow("hang up") << SIGHUP;
    }
    void interruptingThePrompt() {
        QFETCH(int, signal);
        // A shell beside it, which outlives the interrupt and looks at the terminal afterwards.
        TerminalSession session(*m_program,
                                {"upgrade", "--yes", "--cask", "granite-vault; echo status $?; stty -a"},
                                "trap : INT; ");
        QVERIFY(session.prompt());
        if (!signal)
            session.press("\x03");
        for (const pid_t id : signal ? programs() : QList<pid_t>())
            ::kill(id, signal);
        session.finish();
        QVERIFY2(session.all().contains("Stopped: Upgrading granite-vault."), session.all());
        QVERIFY2(session.all().contains("status 1"), session.all());
        QVERIFY2(session.all().contains(" echo ") && !session.all().contains(" -echo "), session.all());
    }

    void withoutATerminalItSaysWhatToDo() {
        QProcess process;
        process.start("setsid", {"--wait", LARKSPUR_PROGRAM, "--sample-folder=" + m_program->path(""),
                                 "upgrade", "--cask", "granite-vault"});
        const auto outcome = Program::finish(process);
        QCOMPARE(outcome.status, 1);
        QVERIFY(outcome.errors.contains("cannot be asked for without a terminal"));
        QVERIFY(outcome.output.contains("was cancelled"));
    }

    void theProgramIsAskedToEndWhileBrewHasThePassword_data() {
        QTest::addColumn<int>("signal");
        QTest::newRow("the terminal is closed") << 0;
        QTest::newRow("hang up") << SIGHUP;
        QTest::newRow("terminate") << SIGTERM;
    }
    void theProgramIsAskedToEndWhileBrewHasThePassword() {
        QFETCH(int, signal);
        const QByteArray password = "Tr0ub4dor-and-3";
        m_program->setPassword(password);
        hangInThePrivilegedStep();
        TerminalSession session(*m_program, {"upgrade", "--yes", "--cask", "granite-vault"});
        QVERIFY(session.prompt());
        session.type(password);
        const QString secret = m_program->path("data/.askpass-secret");
        const QDir runtime(TerminalSession::runtimeFolder(*m_program));
        EVENTUALLY(QFileInfo(secret).isSymLink() && !runtime.isEmpty());
        for (const pid_t id : signal ? programs() : QList<pid_t>())
            ::kill(id, signal);
        if (!signal)
            session.hangUp();
        EVENTUALLY(programs().isEmpty());
        QVERIFY(!QFileInfo(secret).isSymLink() && !QFile::exists(secret));
        QVERIFY(runtime.isEmpty());
        QCOMPARE(m_program->filesWith(password), QStringList());
        QVERIFY(processesWith(m_program->brew().toUtf8()).isEmpty());
        QVERIFY(!QFile::exists(m_program->path("data/operation.lock")));
    }

    void aSecretOfADeadRunIsSweptAtTheNextStart() {
        hangInThePrivilegedStep(); // and the program dies
        TerminalSession session(*m_program, {"upgrade", "--yes", "--cask", "granite-vault"});
        QVERIFY(session.prompt());
        session.type("sesame");
        const QString secret = m_program->path("data/.askpass-secret");
        EVENTUALLY(QFileInfo(secret).isSymLink() || QFile::exists(secret));
        killProcessesWith("larkspur --sample-folder=" + m_program->path("").toUtf8());
        session.finish();
        QVERIFY(QFileInfo(secret).isSymLink() || QFile::exists(secret));
        QCOMPARE(m_program->run({"list"}).status, 0);
        QVERIFY(!QFileInfo(secret).isSymLink() && !QFile::exists(secret));
        killProcessesWith(m_program->brew().toUtf8());
    }
};

QTEST_GUILESS_MAIN(AuthorizationTest)
#include "Authorization_test.moc"
