#include "core/authorization/PasswordFailure.h"
#include "tests/support/OperationWorld.h"

#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

/// How the password is asked for, on a fake account and a fake safe.
class SudoAuthTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        std::optional<std::optional<QByteArray>> answer; ///< outer: has the caller been resumed
        int resumed = 0;

        void request(StopToken stop = {}, bool isUnusual = false) {
            tasks.spawn("request", ask(this, std::move(stop), isUnusual));
        }
        static Task<> ask(World *world, StopToken stop, bool isUnusual) {
            const auto password = co_await world->sudoAuth.requestPassword(
                {.reason = "because", .isUnusual = isUnusual}, std::move(stop));
            ++world->resumed;
            // A copy of its own: a shared one would be wiped with the password.
            world->answer = password ? std::optional(QByteArray(password->utf8().constData())) : std::nullopt;
        }
        void type(const char *text) { sudoAuth.proceed(Password(QString::fromUtf8(text))); }
        void settle() {
            QVERIFY(spinUntil([this] { return tasks.isDrained(); }));
            QCOMPARE(resumed, 1);
            QVERIFY(!sudoAuth.isPrompting());
        }
        void enableStore(const QByteArray &copy) {
            preferences.set(keys::touchIDSudoAuth, true);
            store.copy = copy;
        }
    };

  private Q_SLOTS:
    void aWrongEntryKeepsThePromptOpen() {
        World world;
        world.request();
        QVERIFY(world.sudoAuth.isPrompting());
        QCOMPARE(world.sudoAuth.request().reason, "because");
        QVERIFY(world.sudoAuth.note().contains("discarded as soon as it finishes"));
        world.type("wrong");
        QCOMPARE(world.sudoAuth.error(), "That password was incorrect. Please try again.");
        QVERIFY(!world.answer);
        world.type("sesame");
        world.settle();
        QCOMPARE(world.answer->value(), "sesame");
        QVERIFY(!world.store.copy); // nothing is kept that was not asked for
    }

    void foreignTextStaysOnItsLine_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shown");
        QTest::newRow("plain") << "brew install ünïcode-🔑" << "brew install ünïcode-🔑";
        QTest::newRow("line ends") << " a\nb\r\n\u2028c\u0085 " << "a b c";
        QTest::newRow("escapes") << "\u001B[2Ksudo\u0007\u009B1m" << "[2Ksudo 1m";
        QTest::newRow("turned round") << "a\u202Eb\u2066c\u200Bd" << "a b c d";
        QTest::newRow("half a character") << QString("a") + QChar(0xD800) + "b" << "a\uFFFDb";
        QTest::newRow("long") << QString(5'000'000, 'x') << QString(299, 'x') + "…";
    }
    void foreignTextStaysOnItsLine() {
        QFETCH(QString, text);
        QFETCH(QString, shown);
        const PasswordRequest request =
            presentable({.reason = "because", .package = text, .command = text, .trigger = text});
        QCOMPARE(request.package, shown);
        QCOMPARE(request.command, shown);
        QCOMPARE(request.trigger, shown);
        QVERIFY(warningOf(request).isEmpty());
        QVERIFY(warningOf({.isUnusual = true})
                    .startsWith("Homebrew never needs administrator rights to build a formula. "));
    }

    void cancelling() {
        World world;
        world.request();
        world.sudoAuth.cancel();
        world.sudoAuth.cancel();
        world.settle();
        QVERIFY(!*world.answer);
    }

    void cancellingWhileThePasswordIsVerified() {
        World world;
        world.verifier.held.emplace();
        world.request();
        world.type("sesame");
        QVERIFY(world.sudoAuth.isVerifying());
        world.type("sesame"); // a second "Continue" counts for nothing
        QCOMPARE(world.verifier.asked, 1);
        world.sudoAuth.cancel();
        QVERIFY(!*world.answer);
        world.verifier.held->complete(Verification::Matches);
        world.settle();
        QVERIFY(!*world.answer);
    }

    void theCheckOfACancelledEntryDoesNotAnswerTheNextQuestion() {
        World world;
        world.verifier.held.emplace();
        world.request();
        world.type("sesame");
        world.sudoAuth.cancel();
        world.request();
        QVERIFY(spinUntil([&] { return world.resumed == 1 && world.sudoAuth.isPrompting(); }));
        world.verifier.held->complete(Verification::Matches);
        QTest::qWait(50);
        QVERIFY(world.resumed == 1 && world.sudoAuth.isPrompting());
        world.sudoAuth.cancel();
        QVERIFY(spinUntil([&] { return world.tasks.isDrained(); }));
        QVERIFY(!*world.answer);
    }

    void stoppingTheOperation() {
        World world;
        StopSource stop;
        world.request(stop.get_token());
        stop.request_stop();
        world.settle();
        QVERIFY(!*world.answer);
        world.resumed = 0;
        world.request(stop.get_token()); // already stopped: no prompt at all
        world.settle();
    }

    void aSecondRequestWaitsForTheFirst() {
        World world;
        world.request();
        world.request();
        world.type("sesame");
        QVERIFY(spinUntil([&] { return world.resumed == 1; }));
        QVERIFY(world.sudoAuth.isPrompting());
        world.sudoAuth.cancel();
        QVERIFY(spinUntil([&] { return world.resumed == 2; }));
        QVERIFY(!*world.answer);
    }

    void whatCannotBeVerifiedIsLeftToSudo() {
        World world;
        world.preferences.set(keys::touchIDSudoAuth, true);
        world.verifier.held.emplace();
        world.request();
        world.type("anything");
        world.verifier.held->complete(Verification::CannotTell);
        world.settle();
        QCOMPARE(world.answer->value(), "anything");
        QVERIFY(!world.store.copy); // but is not kept
    }

    void theStoredCopyIsEnough() {
        World world;
        world.enableStore("sesame");
        world.request();
        world.settle();
        QCOMPARE(world.answer->value(), "sesame");
        QCOMPARE(world.store.reason, "authorize an administrator action");
    }

    void theStoredCopyDoesNotAnswerWhatThePersonIsWarnedOf() {
        World world;
        world.enableStore("sesame");
        world.request({}, true);
        QVERIFY(world.sudoAuth.isPrompting());
        QVERIFY(!warningOf(world.sudoAuth.request()).isEmpty());
        QVERIFY(world.store.reason.isEmpty()); // no finger was asked for
        world.sudoAuth.cancel();
        world.settle();
        QVERIFY(!*world.answer);
    }

    void aStoredCopyThatDoesNotHelpLeadsToThePrompt_data() {
        QTest::addColumn<QByteArray>("copy");
        QTest::addColumn<bool>("unlocks");
        QTest::newRow("the finger is not recognised") << QByteArray("sesame") << false;
        QTest::newRow("the account's password was changed") << QByteArray("old") << true;
    }
    void aStoredCopyThatDoesNotHelpLeadsToThePrompt() {
        QFETCH(QByteArray, copy);
        QFETCH(bool, unlocks);
        World world;
        world.enableStore(copy);
        world.store.unlocks = unlocks;
        world.request();
        QVERIFY(world.sudoAuth.isPrompting());
        QVERIFY(world.sudoAuth.note().contains("refreshes the Touch ID copy"));
        world.type("sesame");
        world.settle();
        QCOMPARE(world.answer->value(), "sesame");
        QCOMPARE(*world.store.copy, "sesame"); // refreshed
    }

    void enrolling() {
        World world;
        const auto enrol = [&](const char *text) {
            return await(world.stored.enrol(Password(QByteArray(text))));
        };
        QCOMPARE(enrol("wrong"), StoredPassword::Enrolment::WrongPassword);
        world.store.keeps = false;
        QCOMPARE(enrol("sesame"), StoredPassword::Enrolment::NotSaved);
        QVERIFY(!world.stored.isEnabled());
        world.store.keeps = true;
        QCOMPARE(enrol("sesame"), StoredPassword::Enrolment::Saved);
        QVERIFY(world.stored.isEnabled() && world.store.copy);
        world.stored.forget();
        QVERIFY(!world.stored.isEnabled() && !world.store.copy);
    }

    void theBufferIsWiped() {
        QByteArray bytes("correct horse");
        const char *place = bytes.constData();
        const QByteArray alias = bytes; // keeps the memory alive to look at
        {
            const Password password(std::move(bytes));
        }
        QCOMPARE(QByteArray(place, alias.size()), QByteArray(alias.size(), '\0'));
    }

    void passwordFailures_data() {
        QTest::addColumn<QString>("output");
        QTest::addColumn<bool>("shows");
        QTest::newRow("capital") << "Sorry, try again." << true;
        QTest::newRow("tries") << "sudo: 3 incorrect password attempts" << true;
        QTest::newRow("required") << "sudo: a password is required" << true;
        QTest::newRow("terminal") << "sudo: a terminal is required to read the password; either use" << true;
        QTest::newRow("echo") << "Failure while executing; `/usr/bin/sudo -A -E -- /bin/cp" << true;
        QTest::newRow("pipe") << "x: Broken pipe" << true;
        QTest::newRow("shouted") << "SUDO: A PASSWORD IS REQUIRED" << true;
        QTest::newRow("licence") << "Error: You have not agreed to the Xcode license." << false;
        QTest::newRow("none provided") << "sudo: no password was provided" << false;
    }
    void passwordFailures() {
        QFETCH(QString, output);
        QFETCH(bool, shows);
        QCOMPARE(showsPasswordFailure(output), shows);
    }
};

QTEST_GUILESS_MAIN(SudoAuthTest)
#include "SudoAuth_test.moc"
