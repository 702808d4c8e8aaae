#include "tests/support/OperationWorld.h"
#include "ui/settings/SettingsDialog.h"

#include <QCheckBox>
#include <QFileDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>

using namespace larkspur;
using namespace larkspur::test;

class SettingsTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        ui::SettingsDialog dialog{{preferences, stored, kegs, tasks}};

        World() { dialog.show(); }
        QCheckBox *box(const QString &text) const {
            for (auto *box : dialog.findChildren<QCheckBox *>())
                if (box->text() == text)
                    return box;
            return nullptr;
        }
        QLineEdit *field(const QString &name) const {
            for (auto *field : dialog.findChildren<QLineEdit *>())
                if (field->accessibleName() == name)
                    return field;
            return nullptr;
        }
    };

  private Q_SLOTS:
    void everySwitchIsKept_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("fallback");
        QTest::newRow("auto-update") << "Include applications that update themselves"
                                     << keys::includeAutoUpdateCasks << false;
        QTest::newRow("activation") << "Refresh when Larkspur becomes active" << keys::refreshOnActivate
                                    << false;
        QTest::newRow("plan") << "Show what will happen before upgrades and removals"
                              << keys::showOperationPlan << true;
        QTest::newRow("reinstall") << "Use reinstall for cask upgrades" << keys::useReinstallForCasks
                                   << false;
    }
    void everySwitchIsKept() {
        QFETCH(QString, text);
        QFETCH(QString, key);
        QFETCH(bool, fallback);
        World world;
        QVERIFY(world.box(text));
        QCOMPARE(world.box(text)->isChecked(), fallback); // what holds where nobody has chosen
        world.box(text)->setChecked(!fallback);
        QCOMPARE(world.preferences.boolean(key, fallback), !fallback);
        const ui::SettingsDialog again({world.preferences, world.stored, world.kegs, world.tasks});
        for (const auto *box : again.findChildren<QCheckBox *>())
            if (box->text() == text)
                QCOMPARE(box->isChecked(), !fallback);
    }

    void aPathIsTakenWhenTheFieldIsLeft() {
        World world;
        QLineEdit *field = world.field("Custom Brew Path");
        field->setFocus();
        QTest::keyClicks(field, "  /somewhere/bin/brew ");
        QCOMPARE(world.preferences.string(keys::brewPathOverride), QString()); // not at every key
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(world.preferences.string(keys::brewPathOverride), "/somewhere/bin/brew");
        QVERIFY(world.dialog.isVisible()); // the key does not close the dialog as well
        field->clear();
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(world.preferences.string(keys::brewPathOverride), QString());
    }

    void aFolderCanBeChosen() {
        World world;
        for (auto *button : world.dialog.findChildren<QPushButton *>())
            if (button->accessibleName() == "Choose Application Folder for Casks")
                button->click();
        auto *chooser = world.dialog.findChild<QFileDialog *>();
        QVERIFY(chooser);
        QCOMPARE(chooser->fileMode(), QFileDialog::Directory);
        Q_EMIT chooser->fileSelected("/elsewhere/Applications");
        QCOMPARE(world.field("Application Folder for Casks")->text(), "/elsewhere/Applications");
        QCOMPARE(world.preferences.string(keys::customCaskAppdir), "/elsewhere/Applications");
    }

    void everyPageFits() {
        World world;
        auto *pages = world.dialog.findChild<QTabWidget *>();
        for (int i = 0; i < pages->count(); ++i) {
            pages->setCurrentIndex(i);
            QApplication::processEvents();
            for (const auto *widget : pages->widget(i)->findChildren<QWidget *>())
                if (widget->isVisible()) {
                    const QPoint corner = widget->mapTo(&world.dialog, widget->rect().bottomRight());
                    QVERIFY2(world.dialog.rect().contains(corner), qPrintable(pages->tabText(i)));
                }
        }
    }
};

QTEST_MAIN(SettingsTest)
#include "Settings_test.moc"
