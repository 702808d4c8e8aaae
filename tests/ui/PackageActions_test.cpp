#include "ui/widgets/PackageActions.h"

#include "tests/support/OperationWorld.h"
#include "ui/operation/PlanSheet.h"
#include "userdata/UserDataManager.h"

#include <QApplication>
#include <QClipboard>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

using namespace larkspur;
using namespace larkspur::test;
using ui::PackageRow;

/// What a menu offers for which packages, and what is started by it.
class PackageActionsTest : public QObject {
    Q_OBJECT

    struct World : OperationWorld {
        UserDataManager userData{path("data"), logger};
        ui::PackageActions actions{{center, packages, kegs, userData, preferences, tasks}};
        QWidget window;

        World() {
            preferences.set(keys::showOperationPlan, false);
            window.show();
        }
        QStringList offers(const QList<PackageRow> &rows) {
            QMenu menu;
            actions.fillMenu(&menu, rows, &window);
            QStringList texts;
            for (const QAction *action : menu.actions())
                if (!action->isSeparator())
                    texts.append(action->text());
            return texts;
        }
        void choose(const QList<PackageRow> &rows, const QString &text, const QString &below = {}) {
            QMenu menu;
            actions.fillMenu(&menu, rows, &window);
            for (QAction *action : menu.actions()) {
                if (action->text() == text && below.isEmpty())
                    action->trigger();
                if (action->text() != text || !action->menu())
                    continue;
                for (QAction *choice : action->menu()->actions())
                    if (choice->text() == below)
                        choice->trigger();
            }
        }
        /// What was started last; a title and the kind of each target.
        QString started() const { return center.shown() ? center.shown()->title() : QString(); }
        bool settle() {
            return spinUntil([this] { return center.unfinished().isEmpty() && tasks.isDrained(); });
        }
        template <typename Dialog>
        Dialog *open() const {
            auto *dialog = window.findChild<Dialog *>();
            return dialog && dialog->isVisible() ? dialog : nullptr;
        }
    };

    static PackageRow installed(const QString &name, const QString &newVersion = {}) {
        PackageRow row = ui::availableRow(name, false);
        row.installed = true;
        row.version = "1";
        row.newVersion = newVersion;
        return row;
    }

  private Q_SLOTS:
    void theMenuFitsTheRows() {
        World world;
        QCOMPARE(world.offers({ui::availableRow("new", true)}), QStringList({"Install new", "Copy Name"}));
        QCOMPARE(world.offers({installed("a")}),
                 QStringList({"Reinstall a", "Pin a", "Uninstall a…", "Copy Name"}));
        QCOMPARE(world.offers({installed("a", "2")}),
                 QStringList({"Upgrade a", "Snooze a", "Reinstall a", "Pin a", "Uninstall a…", "Copy Name"}));
        PackageRow pinned = installed("p", "2");
        pinned.pinned = true;
        PackageRow snoozed = installed("s", "2");
        snoozed.snooze = "Until version after 2";
        QCOMPARE(world.offers({pinned, snoozed, installed("a"), ui::availableRow("new", false)}),
                 QStringList({"Upgrade 2 Packages", "Unsnooze s", "Snooze p", "Install new",
                              "Reinstall 3 Packages", "Pin 2 Packages", "Unpin p", "Uninstall 3 Packages…",
                              "Copy Names"}));
    }

    void whatIsChosenIsStarted_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("command");
        QTest::newRow("upgrade") << "Upgrade a" << "upgrade --formula a";
        QTest::newRow("reinstall") << "Reinstall a" << "reinstall a";
        QTest::newRow("pin") << "Pin a" << "pin a";
    }
    void whatIsChosenIsStarted() {
        QFETCH(QString, text);
        QFETCH(QString, command);
        World world;
        world.shell.answer("upgrade --dry-run --formula a", {});
        world.shell.answer(command, "fine\n");
        world.choose({installed("a", "2")}, text);
        QVERIFY(world.settle());
        QVERIFY2(world.changes().contains(command), qPrintable(world.changes().join('\n')));
    }

    void snoozing() {
        World world;
        world.choose({installed("a", "2")}, "Snooze a", "For a Week");
        QVERIFY(world.userData.isPackageSnoozed("a", "3")); // whatever is offered meanwhile
        world.choose({installed("a", "2")}, "Snooze a", "Until the Next Version");
        QVERIFY(world.userData.isPackageSnoozed("a", "2") && !world.userData.isPackageSnoozed("a", "3"));
        PackageRow row = installed("a", "2");
        row.snooze = "Until version after 2";
        world.choose({row}, "Unsnooze a");
        QVERIFY(world.userData.snoozedPackages().isEmpty());
    }

    void removalsAndPinnedUpgradesAskEvenIfSwitchedOff() {
        World world;
        world.shell.answer("uses --installed a", {});
        world.choose({installed("a")}, "Uninstall a…");
        auto *sheet = world.open<ui::PlanSheet>();
        QVERIFY(sheet && world.started().isEmpty());
        QCOMPARE(sheet->operation()->terminalCommand(), "brew uninstall a");
        sheet->reject();
        QVERIFY(world.settle() && world.started().isEmpty());
        delete sheet;
        world.shell.answer("upgrade --dry-run --formula p", {});
        PackageRow pinned = installed("p", "2");
        pinned.pinned = true;
        world.choose({pinned}, "Upgrade p");
        QVERIFY(world.open<ui::PlanSheet>() && world.started().isEmpty());
        world.open<ui::PlanSheet>()->reject();
        QVERIFY(world.settle());
    }

    void theUpgradeOfAllLeavesOutWhatIsSnoozed() {
        World world;
        Inventory inventory;
        for (const char *name : {"a", "b", "c"})
            inventory.outdatedPackages.append({name, name, false, {"1"}, "2", name == QByteArray("c")});
        world.preferences.set(keys::showOperationPlan, true);
        const auto planned = [&] {
            world.shell.answer("upgrade --dry-run", {});
            world.shell.answer("upgrade --dry-run --formula a", {});
            world.actions.upgradeAll(inventory, &world.window);
            auto *sheet = world.open<ui::PlanSheet>();
            const OperationPtr operation = sheet->operation();
            sheet->reject();
            world.settle();
            delete sheet;
            return operation;
        };
        QCOMPARE(planned()->terminalCommand(), "brew upgrade");
        QCOMPARE(planned()->expectedSteps(), 2); // the pinned one is not upgraded
        world.userData.snoozePackage("b", "2", false, UntilNextVersion());
        QCOMPARE(planned()->terminalCommand(), "brew upgrade a"); // by name: brew upgrade would take b too
        const QString list = world.path("data/snoozed_packages.json");
        Fixture::write(list, Fixture::read(list).replace("\"b\"", "7").toUtf8());
        world.userData.reload(); // what was snoozed is not known any more
        world.actions.upgradeAll(inventory, &world.window);
        QVERIFY(!world.open<ui::PlanSheet>());
        QVERIFY(world.open<QMessageBox>()->informativeText().contains(list));
    }

    void rollingBackAsksFirst_data() {
        QTest::addColumn<bool>("agrees");
        QTest::newRow("yes") << true;
        QTest::newRow("no") << false;
    }
    void rollingBackAsksFirst() {
        QFETCH(bool, agrees);
        World world;
        world.actions.rollBack(installed("a"), "0.9", &world.window);
        auto *question = world.open<QMessageBox>();
        QVERIFY(question && world.started().isEmpty());
        for (QAbstractButton *button : question->buttons())
            if ((button->text() == "Roll Back") == agrees)
                QTest::mouseClick(button, Qt::LeftButton);
        QVERIFY(world.settle());
        QCOMPARE(world.started(), agrees ? "Rolling back a" : QString());
        if (agrees) { // nothing was preserved here: it says so and touches nothing
            QCOMPARE(world.center.shown()->outcome(), OperationOutcome::Failed);
            QCOMPARE(world.changes(), QStringList());
        }
    }

    void namesAreCopied() {
        World world;
        world.choose({installed("acme/tools/a"), installed("b")}, "Copy Names");
        QCOMPARE(QApplication::clipboard()->text(), "acme/tools/a\nb");
    }
};

QTEST_MAIN(PackageActionsTest)
#include "PackageActions_test.moc"
