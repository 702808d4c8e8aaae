#include "core/authorization/AskpassFiles.h"
#include "core/authorization/SudoPasswordVerifier.h"
#include "tests/support/Await.h"
#include "tests/support/Fixture.h"
#include "tests/support/ProbePassword.h"

#include <QDir>
#include <QProcess>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

using namespace larkspur;
using namespace larkspur::test;

class AskpassFilesTest : public QObject {
    Q_OBJECT

    static QByteArray run(const QString &script, const QByteArray &variable = {}) {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("LARKSPUR_ASKPASS_PASSWORD", QString::fromUtf8(variable));
        process.setProcessEnvironment(environment);
        process.start(script, {});
        if (!process.waitForFinished() || process.exitCode() != 0)
            qFatal("the askpass script has failed");
        return process.readAllStandardOutput();
    }
    static mode_t mode(const QString &path) {
        struct stat info{};
        ::stat(QFile::encodeName(path).constData(), &info);
        return info.st_mode & 0777;
    }

  private Q_SLOTS:
    void theScriptHasItsSixLines() {
        Fixture fixture;
        const QString secret = fixture.path("data/.askpass-secret");
        const AskpassFiles files(fixture.path("data/askpass.sh"), secret, {});
        QVERIFY(files.writeScript());
        QCOMPARE(Fixture::read(files.scriptPath()),
                 QString("#!/bin/bash\nif [ -n \"$LARKSPUR_ASKPASS_PASSWORD\" ]; then\n"
                         "  printf '%s\\n' \"$LARKSPUR_ASKPASS_PASSWORD\"\n"
                         "elif [ -f \"" +
                         secret + "\" ]; then\n  cat \"" + secret + "\"\nfi"));
        QCOMPARE(mode(files.scriptPath()), mode_t(0755));
        QCOMPARE(run(files.scriptPath()), QByteArray()); // neither variable nor file: nothing, and no failure
    }

    void anyPasswordPassesUnchanged_data() {
        QTest::addColumn<QByteArray>("password");
        QTest::newRow("blanks and quotes") << QByteArray(" a \"b\" 'c' ");
        QTest::newRow("shell") << QByteArray("$HOME `id` $(id) \\n %s -n");
        QTest::newRow("letters") << QByteArray("pässwörd 密码 🔑");
        QTest::newRow("long") << QByteArray(200, 'x');
    }
    void anyPasswordPassesUnchanged() {
        QFETCH(QByteArray, password);
        Fixture fixture;
        // A folder whose name means something to a shell.
        const AskpassFiles files(fixture.path("a $HOME \"b`c") + "/askpass.sh",
                                 fixture.path("a $HOME \"b`c") + "/.secret", {});
        const auto secret = files.keepSecret(Password(QByteArray(password.constData(), password.size())));
        QVERIFY2(secret, qPrintable(secret ? QString() : secret.error()));
        QCOMPARE(run(files.scriptPath()), password + '\n');
        QCOMPARE(run(files.scriptPath(), password), password + '\n');
    }

    void theSecretLivesAsLongAsItsObject_data() {
        QTest::addColumn<bool>("inMemory");
        QTest::newRow("in the data folder") << false;
        QTest::newRow("in a folder in memory") << true;
    }
    void theSecretLivesAsLongAsItsObject() {
        QFETCH(bool, inMemory);
        Fixture fixture;
        const QString memory = fixture.path("run");
        QDir().mkpath(memory);
        const QString path = fixture.path("data/.secret");
        const AskpassFiles files(fixture.path("data/askpass.sh"), path, inMemory ? memory : QString());
        {
            const auto secret = files.keepSecret(Password(QByteArray("sesame")));
            QVERIFY(secret);
            QCOMPARE(QFileInfo(path).isSymLink(), inMemory);
            QCOMPARE(mode(path), mode_t(0600));
            QVERIFY(files.hasLeftover());
            const QByteArray file = QFile::encodeName(QFileInfo(path).canonicalFilePath());
            QCOMPARE(::link(file.constData(), qPrintable(fixture.path("remains"))), 0);
        }
        QVERIFY(!files.hasLeftover());
        QVERIFY(QDir(memory).isEmpty());
        QCOMPARE(Fixture::read(fixture.path("remains")), QString(7, QChar(0))); // wiped where it lay
    }

    void aLeftoverIsRemovedAndNothingElse() {
        Fixture fixture;
        const QString path = fixture.path(".secret");
        const AskpassFiles files(fixture.path("askpass.sh"), path, {});
        Fixture::write(path, "old");
        files.removeLeftover();
        QVERIFY(!QFile::exists(path));
        // A link to a file that is not ours loses the link only.
        Fixture::write(fixture.path("precious"), "keep");
        QVERIFY(QFile::link(fixture.path("precious"), path));
        files.removeLeftover();
        QVERIFY(!files.hasLeftover());
        QCOMPARE(Fixture::read(fixture.path("precious")), "keep");
    }

    void aFolderThatCannotBeWrittenIsSaid() {
        Fixture fixture;
        Fixture::write(fixture.path("data"), {}); // a file in its place
        const AskpassFiles files(fixture.path("data/askpass.sh"), fixture.path("data/.secret"), {});
        QVERIFY(!files.writeScript());
        QVERIFY(!files.keepSecret(Password(QByteArray("sesame"))));
    }

    void sudoTellsWhetherAPasswordIsRight() {
        Fixture fixture;
        const QString sudo = fixture.path("sudo");
        Fixture::write(sudo,
                       "#!/bin/bash\n[ \"$*\" = '-k -S -p  -v' ] || exit 9\nread -r line\n"
                       "[ \"$line\" = 'ses $x\"me' ]\n",
                       true);
        const auto verify = [](const QString &program, const char *text) {
            SudoPasswordVerifier verifier(program);
            return await(verifier.verify(Password(QByteArray(text))));
        };
        QCOMPARE(verify(sudo, "ses $x\"me"), Verification::Matches);
        QCOMPARE(verify(sudo, "wrong"), Verification::Differs);
        QCOMPARE(verify(fixture.path("none"), "ses $x\"me"), Verification::CannotTell);
        // A sudo that does not wait for the password, and one that has no program.
        Fixture::write(sudo, "#!/bin/sh\nexec <&-\nexit 1\n", true);
        QCOMPARE(verify(sudo, "x"), Verification::Differs);
        Fixture::write(sudo, "#!/no/such/shell\n", true);
        QCOMPARE(verify(sudo, "x"), Verification::CannotTell);
    }

    void noCopyStaysInMemory() {
        if (!ProbePassword::canLook())
            QSKIP("this system does not show a process its memory");
        const ProbePassword probe;
        Fixture fixture;
        const QString sudo = fixture.path("sudo");
        Fixture::write(sudo,
                       "#!/bin/bash\nread -r line\n[ \"$(printf %s \"$line\" | tr a-z n-za-m)\" = " +
                           probe.disguise() + " ]\n",
                       true);
        for (const bool isRight : {true, false}) {
            if (!isRight)
                Fixture::write(sudo, "#!/bin/sh\nexit 1\n", true);
            SudoPasswordVerifier verifier(sudo);
            QCOMPARE(await(verifier.verify(probe.password())),
                     isRight ? Verification::Matches : Verification::Differs);
            EVENTUALLY_EQUAL(probe.copiesInMemory(), QString()); // a worker may still hold its input
        }
        const AskpassFiles files(fixture.path("askpass.sh"), fixture.path("data/.secret"), {});
        QVERIFY(files.keepSecret(probe.password()));
        Fixture::write(fixture.path("file"), {});
        const AskpassFiles unwritable(fixture.path("askpass.sh"), fixture.path("file/.secret"), {});
        QVERIFY(!unwritable.keepSecret(probe.password()));
        QCOMPARE(probe.copiesInMemory(), QString());
        QCOMPARE(probe.filesWith(fixture.folder.path()), QString());
    }
};

QTEST_GUILESS_MAIN(AskpassFilesTest)
#include "AskpassFiles_test.moc"
