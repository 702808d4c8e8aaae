#include "tests/support/Await.h"
#include "tests/support/Fixture.h"
#include "tests/support/Processes.h"
#include "tests/support/Program.h"

#include <QDir>
#include <QDirIterator>
#include <QTest>

#include <csignal>

using namespace larkspur::test;

/// The whole program at a terminal of its own, a Homebrew that filters its environment, and a sudo that runs
/// the askpass program.
class AuthorizationTest : public QObject {
    Q_OBJECT

    std::unique_ptr<Program> m_program;

    /// The program under `script`, which gives it a controlling terminal.
    class Session {
      public:
        Session(Program &program, const QStringList &words, const QString &before = "exec ") {
            QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
            environment.insert("XDG_RUNTIME_DIR", runtimeFolder(program));
            m_process.setProcessEnvironment(environment);
            m_process.setProcessChannelMode(QProcess::MergedChannels);
            // "exec": a shell in between would answer the interrupt with a status of its own.
            const QString line =
                before + LARKSPUR_PROGRAM + " --sample-folder=" + program.path("") + ' ' + words.join(' ');
            m_process.start("script", {"-qec", line, "/dev/null"});
        }
        /// What has come until the text came; fails the test if it never does.
        bool reach(const QByteArray &text) {
            QElapsedTimer clock;
            clock.start();
            while (!m_new.contains(text) && clock.elapsed() < 20'000) {
                m_process.waitForReadyRead(100);
                m_new += m_process.readAll();
            }
            const bool found = m_new.contains(text);
            m_all += m_new;
            m_new = m_new.mid(found ? m_new.indexOf(text) + text.size() : 0);
            return found;
        }
        bool prompt() {
            const bool found = reach("Password (empty to cancel): ");
            QTest::qWait(150); // typing ahead of a password prompt is thrown away
            return found;
        }
        void type(const QByteArray &line) { press(line + '\n'); }
        void press(const QByteArray &keys) { m_process.write(keys); }
        int finish() {
            if (!m_process.waitForFinished(30'000))
                qFatal("the program has not ended");
            m_all += m_new + m_process.readAll();
            return m_process.exitCode();
        }
        /// Closes the terminal, as a window is closed.
        void hangUp() {
            m_process.kill();
            m_process.waitForFinished();
        }
        /// A folder in memory, or what stands in for one.
        static QString runtimeFolder(Program &program) {
            const QString folder = program.path("runtime");
            QDir().mkpath(folder);
            QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
            return folder;
        }
        const QByteArray &all() const { return m_all; }

      private:
        QProcess m_process;
        QByteArray m_new;
        QByteArray m_all;
    };

    void setPassword(const QByteArray &password) {
        QProcess process;
        process.start(m_program->path("homebrew/bin/brew"), {"--sudo-password", m_program->path("homebrew")});
        process.write(password);
        process.closeWriteChannel();
        QVERIFY(process.waitForFinished() && process.exitCode() == 0);
    }
    QStringList filesWith(const QByteArray &text) const {
        QStringList found;
        QDirIterator entries(m_program->path(""), QDir::Files | QDir::Hidden | QDir::System,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            QFile file(entries.next());
            if (file.open(QIODevice::ReadOnly) && file.readAll().contains(text))
                found.append(file.fileName());
        }
        return found;
    }
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
        setPassword(password);
        // Looks at everything that a neighbour could see while the command runs.
        m_program->replaceBrew("{ cat /proc/[0-9]*/cmdline || ps -eo args; } 2>/dev/null >> " +
                               m_program->path("arguments").toUtf8() + "\nexec -a " +
                               m_program->brew().toUtf8() + " $REAL \"$@\"\n");
        Session session(*m_program, {"upgrade", "--yes", "--cask", "granite-vault"});
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
        QCOMPARE(filesWith(password), QStringList());
        QVERIFY(!session.all().contains(password)); // no echo either
        QVERIFY(!QFile::exists(m_program->path("data/.askpass-secret")));
    }

    void aPasswordThatSudoRejectsIsAskedForAgain() {
        Session session(*m_program, {"upgrade", "--yes", "--cask", "kestrel-vpn"});
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
        Session session(*m_program, {"install", "dovetail"});
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
        Session session(*m_program, {"upgrade", "--yes", "--cask", "granite-vault"});
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
        Session session(*m_program, {"upgrade", "--yes", "--cask", "granite-vault; echo status $?; stty -a"},
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
        hangInThePrivilegedStep();
        Session session(*m_program, {"upgrade", "--yes", "--cask", "granite-vault"});
        QVERIFY(session.prompt());
        session.type("sesame");
        const QString secret = m_program->path("data/.askpass-secret");
        const QDir runtime(Session::runtimeFolder(*m_program));
        EVENTUALLY(QFileInfo(secret).isSymLink() && !runtime.isEmpty());
        for (const pid_t id : signal ? programs() : QList<pid_t>())
            ::kill(id, signal);
        if (!signal)
            session.hangUp();
        EVENTUALLY(programs().isEmpty());
        QVERIFY(!QFileInfo(secret).isSymLink() && !QFile::exists(secret));
        QVERIFY(runtime.isEmpty());
        QVERIFY(processesWith(m_program->brew().toUtf8()).isEmpty());
        QVERIFY(!QFile::exists(m_program->path("data/operation.lock")));
    }

    void aSecretOfADeadRunIsSweptAtTheNextStart() {
        hangInThePrivilegedStep(); // and the program dies
        Session session(*m_program, {"upgrade", "--yes", "--cask", "granite-vault"});
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
