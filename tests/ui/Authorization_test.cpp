#include "tests/support/OperationWorld.h"
#include "ui/authorization/EnrolmentSheet.h"
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
        QTRY_VERIFY(!world.sheet());
        QVERIFY(world.stored.isEnabled() && world.box()->isChecked());
        QTest::mouseClick(world.box(), Qt::LeftButton, {}, QPoint(8, world.box()->height() / 2));
        QVERIFY(!world.stored.isEnabled() && !world.store.copy);
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
