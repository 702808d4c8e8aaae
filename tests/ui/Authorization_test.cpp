#include "tests/support/OperationWorld.h"
#include "tests/support/ProbePassword.h"
#include "ui/authorization/EnrolmentSheet.h"
#include "ui/authorization/PasswordSheet.h"
#include "ui/authorization/TouchIDSetting.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

/// The settings of the stored password, on a fake safe.
class AuthorizationTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        ui::TouchIDSetting setting{stored, tasks};

        World() { setting.show(); }
        QCheckBox *box() const { return setting.findChild<QCheckBox *>(); }
        ui::EnrolmentSheet *sheet() const { return setting.findChild<ui::EnrolmentSheet *>(); }
        void enter(const char *password) {
            QTest::keyClicks(sheet()->findChild<QLineEdit *>(), password);
            for (auto *button : sheet()->findChildren<QPushButton *>())
                if (button->text() == "Enable")
                    QTest::mouseClick(button, Qt::LeftButton);
            QVERIFY(spinUntil([this] { return tasks.isDrained(); }));
        }
        bool says(const QString &text) const {
            for (const QLabel *label : setting.findChildren<QLabel *>())
                if (label->isVisible() && label->text() == text)
                    return true;
            return false;
        }
    };

    static Task<> request(SudoAuth *auth, std::optional<std::optional<Password>> *answer,
                          PasswordRequest what = {.reason = "because"}) {
        *answer = co_await auth->requestPassword(std::move(what));
    }

  private Q_SLOTS:
    void turningItOnAndOff() {
        World world;
        QTest::mouseClick(world.box(), Qt::LeftButton, {}, QPoint(8, world.box()->height() / 2));
        QVERIFY(world.sheet() && !world.box()->isChecked()); // not before there is a copy
        world.enter("wrong");
        QVERIFY(world.says("That doesn't match your macOS account password."));
        world.store.keeps = false;
        world.enter("sesame");
        QVERIFY(world.says("The password couldn't be saved to the Keychain."));
        QVERIFY(!world.stored.isEnabled() && !world.box()->isChecked());
        world.store.keeps = true;
        world.enter("sesame");
        EVENTUALLY(!world.sheet());
        QVERIFY(world.stored.isEnabled() && world.box()->isChecked());
        QTest::mouseClick(world.box(), Qt::LeftButton, {}, QPoint(8, world.box()->height() / 2));
        QVERIFY(!world.stored.isEnabled() && !world.store.copy);
    }

    void theSheetSaysWhoAsks() {
        OperationWorld world;
        ui::PasswordSheet sheet(world.sudoAuth);
        const auto shown = [&] {
            QStringList texts;
            for (const QLabel *label : sheet.findChildren<QLabel *>())
                if (label->isVisible())
                    texts.append(label->text());
            return texts;
        };
        std::optional<std::optional<Password>> answer;
        world.tasks.spawn("request", request(&world.sudoAuth, &answer));
        QVERIFY(sheet.isVisible() && shown().contains("because"));
        QVERIFY(!shown().contains("Package") && shown().filter("never needs").isEmpty());
        const int narrow = sheet.sizeHint().width();
        world.sudoAuth.cancel();
        world.tasks.spawn("request",
                          request(&world.sudoAuth, &answer,
                                  {.reason = "because",
                                   .package = "x",
                                   .command = "brew install x",
                                   .trigger = "<b>sudo</b>: a password is required\n" + QString(10'000, 'y'),
                                   .isUnusual = true}));
        for (const char *text : {"Package", "x", "Command", "brew install x", "Output"})
            QVERIFY2(shown().contains(text), text);
        QVERIFY(shown().filter("<b>sudo</b>: a password is required yyy").value(0).size() <= 300);
        const auto warning = shown().filter("Homebrew never needs administrator rights to build a formula.");
        QCOMPARE(warning.size(), 1);
        QCOMPARE(sheet.sizeHint().width(), narrow);
        world.sudoAuth.cancel();
        QVERIFY(spinUntil([&] { return world.tasks.isDrained(); }));
    }

    void whatIsTypedStaysNowhere_data() {
        QTest::addColumn<bool>("isPasted");
        QTest::addColumn<bool>("isGiven");
        QTest::newRow("typed") << false << true;
        QTest::newRow("pasted") << true << true;
        QTest::newRow("typed and cancelled") << false << false;
        QTest::newRow("pasted and cancelled") << true << false;
    }
    void whatIsTypedStaysNowhere() {
        QFETCH(bool, isPasted);
        QFETCH(bool, isGiven);
        if (!ProbePassword::canLook())
            QSKIP("this system does not show a process its memory");
        const ProbePassword probe;
        OperationWorld world;
        world.verifier.held.emplace();
        ui::PasswordSheet sheet(world.sudoAuth);
        std::optional<std::optional<Password>> answer;
        world.tasks.spawn("request", request(&world.sudoAuth, &answer));
        QVERIFY(sheet.isVisible());
        auto *field = sheet.findChild<QLineEdit *>();
        QString pasted;
        pasted.reserve(100);
        probe.spell([&](QChar letter) {
            if (isPasted)
                pasted += letter;
            else
                QTest::keyClick(field, letter.toLatin1());
        });
        field->insert(pasted);
        wipe(pasted);
        QVERIFY(!probe.copiesInMemory().isEmpty()); // what is there is found
        QTest::keyClick(field, isGiven ? Qt::Key_Return : Qt::Key_Escape);
        world.verifier.held->complete(Verification::CannotTell);
        QVERIFY(spinUntil([&] { return answer.has_value(); }));
        QVERIFY(answer->has_value() == isGiven && !sheet.isVisible());
        answer.reset();
        QVERIFY(spinUntil([&] { return world.tasks.isDrained(); }));
        constexpr int hardlyByChance = 6;
        QCOMPARE(probe.copiesInMemory(hardlyByChance), QString());
    }

    void whereThereIsNoFingerprint() {
        OperationWorld world;
        NullPasswordStore none;
        StoredPassword stored(none, world.verifier, world.preferences);
        ui::TouchIDSetting setting(stored, world.tasks);
        QVERIFY(!setting.findChild<QCheckBox *>()->isEnabled());
        QCOMPARE(setting.findChild<QLabel *>()->text(),
                 "Touch ID isn't available on this Mac, or no fingerprints are enrolled.");
    }
};

QTEST_MAIN(AuthorizationTest)
#include "Authorization_test.moc"
