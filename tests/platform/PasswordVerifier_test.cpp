#include "platform/Platform.h"
#include "tests/support/Await.h"
#include "tests/support/ProbePassword.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

/// The system's own verification. A right password is known only to the person: LARKSPUR_TEST_PASSWORD.
class PasswordVerifierTest : public QObject {
    Q_OBJECT

    static Verification verify(QByteArray password) {
        const Platform platform = makePlatform();
        return await(platform.passwordVerifier->verify(Password(std::move(password))));
    }

  private Q_SLOTS:
    void aWrongPasswordNeverMatches() {
        QVERIFY(verify("surely not the password of anybody") != Verification::Matches);
    }

    void noCopyStaysInMemory() {
        if (!ProbePassword::canLook())
            QSKIP("this system does not show a process its memory");
        const ProbePassword probe;
        const Platform platform = makePlatform();
        await(platform.passwordVerifier->verify(probe.password()));
        EVENTUALLY_EQUAL(probe.copiesInMemory(), QString()); // the worker may still be putting its input away
    }

    void theRightOneDoes() {
        if (qEnvironmentVariableIsEmpty("LARKSPUR_TEST_PASSWORD"))
            QSKIP("LARKSPUR_TEST_PASSWORD is not set");
        QCOMPARE(verify(qgetenv("LARKSPUR_TEST_PASSWORD")), Verification::Matches);
    }
};

QTEST_GUILESS_MAIN(PasswordVerifierTest)
#include "PasswordVerifier_test.moc"
