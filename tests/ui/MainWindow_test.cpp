#include "app/Larkspur.h"
#include "operations/packages/UninstallPackages.h"
#include "operations/packages/UpgradeAll.h"
#include "operations/packages/UpgradePackages.h"
#include "tests/support/Await.h"
#include "ui/MainWindow.h"
#include "ui/Screen.h"
#include "ui/ScreenRegistry.h"
#include "ui/Sidebar.h"
#include "ui/authorization/PasswordSheet.h"
#include "ui/details/PackageDetails.h"
#include "ui/operation/OperationPanel.h"
#include "ui/operation/OutputView.h"
#include "ui/operation/PlanSheet.h"
#include "ui/settings/SettingsDialog.h"
#include "ui/startup/StartupScreen.h"
#include "ui/timemachine/CompareSheet.h"
#include "ui/timemachine/DiffView.h"
#include "ui/timemachine/RestoreSheet.h"
#include "ui/timemachine/TimeMachineScreen.h"
#include "ui/widgets/PackageTable.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeWidget>

using namespace larkspur;
using namespace larkspur::test;

/// The window, without a display, on a sample Homebrew of its own.
class MainWindowTest : public QObject {
    Q_OBJECT

    struct World {
        QTemporaryDir folder;
        std::unique_ptr<Larkspur> larkspur;
        std::unique_ptr<ui::MainWindow> window;

        World() { open(); }
        ~World() { close(); }
        QString brew() const { return folder.filePath("homebrew/bin/brew"); }
        void open() {
            auto environment = sampleEnvironment(folder.path(), false);
            if (!environment)
                qFatal("%s", qPrintable(environment.error()));
            larkspur = std::make_unique<Larkspur>(std::move(*environment));
            window = std::make_unique<ui::MainWindow>(*larkspur);
            window->show();
        }
        void close() {
            larkspur->shutDown();
            spinUntil([this] { return larkspur->tasks().isDrained(); }, 30s);
            window.reset();
            larkspur.reset();
        }
        bool startAndLoad() {
            window->start();
            return spinUntil([this] {
                const Inventory &inventory = larkspur->inventory().value();
                return inventory.hasEnrichedCaskVersions && !inventory.isLoading && !inventory.isRefreshing &&
                       larkspur->tasks().isDrained();
            });
        }
        template <typename Widget>
        Widget *visible() const {
            for (Widget *widget : window->findChildren<Widget *>())
                if (widget->isVisible())
                    return widget;
            return nullptr;
        }
        QAbstractButton *button(const QString &text) const {
            for (QAbstractButton *button : window->findChildren<QAbstractButton *>())
                if (button->isVisible() && button->text() == text)
                    return button;
            return nullptr;
        }
        bool shows(const QString &text) const {
            for (QLabel *label : window->findChildren<QLabel *>())
                if (label->isVisible() && label->text().contains(text))
                    return true;
            return false;
        }
        void replaceBrew(const QByteArray &script) const {
            if (!QFile::exists(brew() + "-real"))
                QFile::rename(brew(), brew() + "-real");
            QFile::remove(brew());
            QFile file(brew());
            if (!file.open(QIODevice::WriteOnly))
                qFatal("brew cannot be replaced");
            file.write("#!/bin/bash\n" + script + "\nexec -a " + brew().toUtf8() + " " + brew().toUtf8() +
                       "-real \"$@\"\n");
            file.setPermissions(file.permissions() | QFile::ExeOwner | QFile::ExeUser);
        }
    };

  private Q_SLOTS:
    void damagedPreferencesAreTold() {
        World world;
        QFile file(world.folder.filePath("data/preferences.json"));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("{") == 1);
        file.close();
        world.close();
        world.open();
        QVERIFY(world.startAndLoad());
        const auto *alert = world.visible<QMessageBox>();
        QVERIFY(alert && alert->informativeText().contains("preferences.json"));
    }

    void everyScreenShowsTheInventory() {
        World world;
        QVERIFY(world.startAndLoad());
        for (const ui::ScreenEntry &entry : ui::screenRegistry()) {
            world.window->showScreen(entry.id);
            EVENTUALLY(world.visible<ui::Screen>());
            QVERIFY(world.shows(entry.title));
            if (auto *table = world.visible<ui::PackageTable>(); table && entry.count)
                QCOMPARE(table->model().rowCount(),
                         entry.count(world.larkspur->inventory().value(), world.larkspur->userData()));
        }
        world.window->showScreen("taps");
        QVERIFY(world.shows("Packages hidden by Homebrew"));
    }

    void aFailedRefreshIsSeen() {
        World world;
        QVERIFY(world.startAndLoad());
        QVERIFY(!world.button("Retry"));
        world.replaceBrew(
            "case \"$1\" in info|outdated) echo 'Error: the disk is on fire' >&2; exit 1;; esac");
        await(world.larkspur->refresh().refresh());
        QVERIFY(world.shows("the disk is on fire") && world.shows("(3 times)"));
        QVERIFY(!world.larkspur->inventory().value().installedFormulae.isEmpty());
        world.replaceBrew("");
        world.button("Retry")->click();
        QVERIFY(spinUntil([&] { return !world.button("Retry"); }));
    }

    void anEmptyListAfterAFailureSaysWhy() {
        World world;
        world.replaceBrew(
            "case \"$1\" in info|outdated) echo 'Error: the disk is on fire' >&2; exit 1;; esac");
        world.window->start();
        QVERIFY(spinUntil([&] { return world.button("Retry") != nullptr; }));
        world.window->showScreen("casks");
        QVERIFY(spinUntil([&] { return world.shows("The List Could Not Be Read"); }));
        QVERIFY(!world.shows("Nothing Installed Yet"));
    }

    void everyControlHasAName() {
        World world;
        QVERIFY(world.startAndLoad());
        for (const ui::ScreenEntry &entry : ui::screenRegistry()) {
            world.window->showScreen(entry.id);
            for (QWidget *widget : world.window->findChildren<QWidget *>()) {
                if (!widget->isVisible() || widget->focusPolicy() == Qt::NoFocus ||
                    widget->inherits("QScrollBar"))
                    continue;
                const auto *button = qobject_cast<QAbstractButton *>(widget);
                const bool isNamed = !widget->accessibleName().isEmpty() ||
                                     (button && !button->text().isEmpty()) ||
                                     qobject_cast<QLabel *>(widget) || widget->inherits("QMenuBar");
                QVERIFY2(isNamed, qPrintable(entry.id + ": " + widget->metaObject()->className()));
            }
        }
    }

    void detailsFollowTheSelection() {
        World world;
        QVERIFY(world.startAndLoad());
        world.window->showScreen("formulae");
        auto *table = world.visible<ui::PackageTable>();
        table->select({"heron", false});
        EVENTUALLY(world.shows("Patient HTTP client that retries politely"));
        QVERIFY(world.shows("cobweb")); // a dependent
        // A refresh that changes nothing leaves selection and details as they are.
        auto *details = world.visible<ui::PackageDetails>();
        const QWidget *pane = details->widget();
        await(world.larkspur->refresh().refresh());
        QTest::qWait(50);
        QCOMPARE(details->widget(), pane);
        QCOMPARE(table->selectedRows().size(), 1);
        world.visible<ui::Screen>()->filterField()->setText("no such package");
        EVENTUALLY(world.shows("Nothing Found"));
        world.visible<ui::Screen>()->filterField()->clear();
        QVERIFY(table->model().rowCount() > 30);
    }

    void searchFindsInstalledAtOnceAndAvailableSoon() {
        World world;
        QVERIFY(world.startAndLoad());
        world.window->showScreen("search");
        auto *table = world.visible<ui::PackageTable>();
        world.visible<ui::Screen>()->filterField()->setText("heron");
        QCOMPARE(table->model().row(0).id.name, "heron");
        world.visible<ui::Screen>()->filterField()->setText("widget");
        QVERIFY(spinUntil([&] { return table->model().rowCount() == 2; }));
        table->select({"widget-board", true});
        QVERIFY(spinUntil([&] { return world.shows("Small windows for small facts"); })); // asked of Homebrew
        QVERIFY(world.button("Install"));
    }

    void upgradesWithLiveOutputAndRefreshes() {
        World world;
        QVERIFY(world.startAndLoad());
        auto *table = world.visible<ui::PackageTable>();
        table->select({"heron", false});
        QTest::mouseClick(world.button("Upgrade Selected"), Qt::LeftButton);
        QVERIFY(spinUntil([&] { return world.shows("Upgrade heron?"); }));
        QVERIFY(spinUntil(
            [&] { return world.visible<ui::PlanSheet>()->findChild<QTreeWidget *>()->isVisible(); }));
        const auto *changes = world.visible<ui::PlanSheet>()->findChild<QTreeWidget *>();
        QCOMPARE(changes->topLevelItem(changes->topLevelItemCount() - 1)->text(0), "heron");
        QVERIFY(!world.larkspur->operations().shown()); // nothing happens before the answer
        world.visible<ui::PlanSheet>()->accept();
        QVERIFY(spinUntil([&] { return world.larkspur->operations().shown(); }));
        const OperationRun *run = world.larkspur->operations().shown();
        QVERIFY(spinUntil([&] { return !run->isRunning() && world.larkspur->tasks().isDrained(); }));
        QVERIFY(run->outcome() == OperationOutcome::Succeeded);
        EVENTUALLY_EQUAL(table->model().indexOf({"heron", false}), -1);
        QVERIFY(table->model().rowCount() > 5);
        QVERIFY(world.shows("Done"));
        world.window->findChild<ui::OperationPanel *>()->setOutputVisible(true);
        EVENTUALLY(
            world.window->findChild<ui::OutputView *>()->toPlainText().contains("==> Upgrading heron"));
    }

    void thePasswordSheet() {
        World world;
        QVERIFY(world.startAndLoad());
        OperationRun *run = world.larkspur->operations().start(
            upgradePackages(world.larkspur->packages(), {{"granite-vault", true}}));
        QVERIFY(spinUntil([&] { return world.visible<ui::PasswordSheet>(); }));
        QCOMPARE(run->state(), OperationRun::State::AskingForPassword);
        auto *sheet = world.visible<ui::PasswordSheet>();
        QVERIFY(world.shows("Larkspur needs your administrator password to finish updating granite-vault."));
        auto *field = sheet->findChild<QLineEdit *>();
        QVERIFY(!world.button("Continue")->isEnabled());
        QTest::keyClicks(field, "wrong");
        QTest::keyClick(field, Qt::Key_Return);
        QVERIFY(spinUntil([&] { return world.shows("That password was incorrect. Please try again."); }));
        QCOMPARE(field->text(), QString());
        QTest::keyClicks(field, "sesame");
        QTest::keyClick(field, Qt::Key_Return);
        QVERIFY(spinUntil([&] { return !run->isRunning(); }));
        QCOMPARE(run->outcome(), OperationOutcome::Succeeded);
        QVERIFY(!sheet->isVisible() && field->text().isEmpty());
    }

    void leavingThePasswordSheet_data() {
        QTest::addColumn<bool>("byClosingTheWindow");
        QTest::newRow("Escape") << false;
        QTest::newRow("closing the window") << true;
    }
    void leavingThePasswordSheet() {
        QFETCH(bool, byClosingTheWindow);
        World world;
        QVERIFY(world.startAndLoad());
        const OperationRun *run = world.larkspur->operations().start(
            upgradePackages(world.larkspur->packages(), {{"granite-vault", true}}));
        QVERIFY(spinUntil([&] { return world.visible<ui::PasswordSheet>(); }));
        if (byClosingTheWindow) {
            world.window->close();
            QTest::mouseClick(world.button("Stop and Quit"), Qt::LeftButton);
        } else {
            QTest::keyClick(world.visible<ui::PasswordSheet>(), Qt::Key_Escape);
        }
        QVERIFY(spinUntil([&] { return !run->isRunning(); }));
        QCOMPARE(run->wasStopped(), byClosingTheWindow);
        QCOMPARE(run->wasCancelled(), !byClosingTheWindow);
        QVERIFY(!world.visible<ui::PasswordSheet>());
    }

    void servicesCanBeRestarted() {
        World world;
        QVERIFY(world.startAndLoad());
        const OperationRun *run = world.larkspur->operations().start(
            upgradePackages(world.larkspur->packages(), {{"meadowdb", false}}));
        QVERIFY(spinUntil([&] { return world.button("Restart meadowdb"); }));
        QTest::mouseClick(world.button("Restart meadowdb"), Qt::LeftButton);
        QVERIFY(spinUntil([&] { return world.larkspur->operations().shown() != run; }));
        const OperationRun *restart = world.larkspur->operations().shown();
        QVERIFY(spinUntil([&] { return !restart->isRunning(); }));
        QCOMPARE(restart->outcome(), OperationOutcome::Succeeded);
    }

    void theTimeMachineTakesComparesAndRestores() {
        World world;
        QVERIFY(world.startAndLoad());
        world.window->showScreen("timemachine");
        QVERIFY(spinUntil([&] { return world.larkspur->tasks().isDrained(); }));
        QVERIFY(world.shows("No Restore Points"));
        QTest::mouseClick(world.button("Take Restore Point"), Qt::LeftButton);
        QVERIFY(spinUntil([&] { return world.shows("Restore point saved"); }));
        const QTreeWidget *timeline = nullptr;
        for (const auto *tree : world.visible<ui::TimeMachineScreen>()->findChildren<QTreeWidget *>())
            if (tree->accessibleName() == "Restore points")
                timeline = tree;
        EVENTUALLY_EQUAL(timeline->topLevelItemCount(), 1);
        timeline->topLevelItem(0)->setText(4, "before the removal"); // as an edit does
        EVENTUALLY_EQUAL(world.larkspur->snapshots().snapshots().first().note.value_or(QString()),
                         "before the removal");

        const OperationRun *removal = world.larkspur->operations().start(
            uninstallPackages(world.larkspur->packages(), {{"tidepool", true}}));
        QVERIFY(spinUntil([&] { return !removal->isRunning() && world.larkspur->tasks().isDrained(); }));
        auto *changes = world.visible<ui::DiffView>();
        QCOMPARE(changes->topLevelItem(0)->text(0), "Removed since (1)");
        QTest::mouseClick(world.button("Restore…"), Qt::LeftButton);
        auto *sheet = world.visible<ui::RestoreSheet>();
        QCOMPARE(sheet->findChild<ui::DiffView *>()->topLevelItem(0)->text(0),
                 "In the snapshot but missing now (1)");
        sheet->accept();
        const OperationRun *restore = world.larkspur->operations().shown();
        QVERIFY(spinUntil([&] { return !restore->isRunning() && world.larkspur->tasks().isDrained(); }));
        QCOMPARE(restore->outcome(), OperationOutcome::Succeeded);
        QVERIFY(QFile::exists(world.folder.filePath("Applications/Tidepool.app/Contents")));
        QVERIFY(world.larkspur->inventory().value().cask("tidepool"));
    }

    void restorePointsAreComparedAndDeleted() {
        World world;
        QVERIFY(world.startAndLoad());
        for (const char *note : {"first", "second"})
            QVERIFY(await(world.larkspur->snapshots().take(SnapshotTrigger::Manual, QString(note))));
        QFile::copy(":/larkspur.svg", world.larkspur->locations().snapshots() + "/notes.json");
        await(world.larkspur->snapshots().load());
        world.window->showScreen("timemachine");
        EVENTUALLY(world.shows("2 restore points · 1 files cannot be read: notes.json"));
        QTest::mouseClick(world.button("Compare…"), Qt::LeftButton);
        QVERIFY(world.visible<ui::CompareSheet>());
        world.visible<ui::CompareSheet>()->close();
        const auto confirm = [&](const QString &button, const QString &question) {
            QTest::mouseClick(world.button(button), Qt::LeftButton);
            QVERIFY(world.shows(question));
            QTest::mouseClick(world.button("Delete"), Qt::LeftButton);
        };
        // A file that cannot be removed: a folder with something in it has taken its place.
        const QUuid newest = world.larkspur->snapshots().snapshots().first().id;
        const QString file = world.larkspur->locations().snapshots() + '/' +
                             newest.toString(QUuid::WithoutBraces).toUpper() + ".json";
        QVERIFY2(QFile::remove(file), qPrintable(file));
        QVERIFY(QDir().mkpath(file + "/in the way"));
        confirm("Delete…", "Delete this restore point?");
        EVENTUALLY(world.shows("The restore point could not be deleted."));
        QVERIFY(QDir(file).removeRecursively());
        confirm("Delete All…", "Delete all 2 restore points?");
        EVENTUALLY(world.larkspur->snapshots().snapshots().size() <= 1);
        QVERIFY(spinUntil([&] { return world.larkspur->tasks().isDrained(); }));
    }

    void checkingForUpdates() {
        World world;
        QVERIFY(world.startAndLoad());
        world.window->showScreen("updates");
        QTest::mouseClick(world.button("Check Now"), Qt::LeftButton);
        QVERIFY(world.shows("Fetching Homebrew's newest catalogue…"));
        QVERIFY(!world.button("Check Now")->isEnabled());
        QVERIFY(spinUntil([&] { return world.larkspur->tasks().isDrained(); }));
        EVENTUALLY(world.shows("packages can be upgraded"));
        QCOMPARE(world.larkspur->userData().history().first().action, HistoryAction::Update);
        world.replaceBrew("if [ \"$1\" = update ]; then echo 'Error: no route to host' >&2; exit 1; fi");
        QTest::mouseClick(world.button("Check Now"), Qt::LeftButton);
        QVERIFY(spinUntil([&] { return world.larkspur->tasks().isDrained(); }));
        EVENTUALLY(world.shows("The check failed"));
        QVERIFY(world.button("Check Now")->isEnabled());
        QVERIFY(!world.larkspur->userData().history().first().success);
    }

    void theMenuFindsAndSimplifies() {
        World world;
        QVERIFY(world.startAndLoad());
        const auto trigger = [&](const QString &text) {
            for (QAction *action : world.window->findChildren<QAction *>())
                if (action->text() == text)
                    action->trigger();
        };
        world.window->showScreen("casks");
        trigger("&Find");
        EVENTUALLY(world.visible<ui::Screen>()->filterField() == QApplication::focusWidget() ||
                   !world.window->isActiveWindow());
        const auto isListed = [&](const QString &title) {
            const auto *sidebar = world.window->findChild<ui::Sidebar *>();
            const auto items = sidebar->findItems(title, Qt::MatchExactly | Qt::MatchRecursive);
            return !items.isEmpty() && !items.first()->isHidden();
        };
        QVERIFY(isListed("Taps"));
        trigger("Simple Mode");
        QVERIFY(!isListed("Taps") && isListed("Casks"));
        QVERIFY(world.larkspur->preferences().boolean(keys::simpleMode));
        // A choice that cannot be saved counts, and is told.
        QVERIFY(QFile::rename(world.folder.filePath("data/preferences.json"), world.folder.filePath("old")));
        QVERIFY(QDir(world.folder.path()).mkdir("data/preferences.json"));
        trigger("Simple Mode");
        trigger("Simple Mode");
        QVERIFY(!isListed("Taps"));
        const auto alerts = world.window->findChildren<QMessageBox *>("notSaved");
        QCOMPARE(alerts.size(), 1);
        QVERIFY(alerts.first()->isVisible() && alerts.first()->informativeText().contains("preferences"));
        trigger("&Settings…");
        QVERIFY(world.visible<ui::SettingsDialog>());
        world.visible<ui::SettingsDialog>()->close();
    }

    void aRollbackIsOfferedAndCanBeHeld() {
        World world;
        QVERIFY(world.startAndLoad());
        const OperationRun *upgrade = world.larkspur->operations().start(
            upgradePackages(world.larkspur->packages(), {{"heron", false, "8.10.0", "8.11.1"}}));
        QVERIFY(spinUntil([&] { return !upgrade->isRunning() && world.larkspur->tasks().isDrained(); }));
        world.window->showScreen("formulae");
        world.visible<ui::PackageTable>()->select({"heron", false});
        QVERIFY(spinUntil([&] { return world.button("Roll Back to 8.10.0…"); }));
        QTest::mouseClick(world.button("Roll Back to 8.10.0…"), Qt::LeftButton);
        QVERIFY(spinUntil([&] { return world.button("Roll Back"); }));
        QTest::mouseClick(world.button("Roll Back"), Qt::LeftButton);
        QVERIFY(spinUntil([&] { return world.button("Pin heron"); }));
        QTest::mouseClick(world.button("Pin heron"), Qt::LeftButton);
        QVERIFY(spinUntil([&] { return world.larkspur->tasks().isDrained(); }));
        QVERIFY(world.larkspur->inventory().value().pinnedPackages.contains("heron"));
        QCOMPARE(world.larkspur->inventory().value().formula("heron")->version, "8.10.0");
    }

    void aRolledBackVersionCanBeSkipped() {
        World world;
        QVERIFY(world.startAndLoad());
        const auto isOffered = [&] {
            world.window->showScreen("updates");
            return world.visible<ui::PackageTable>()->model().indexOf({"heron", false}) >= 0;
        };
        const OperationRun *upgrade = world.larkspur->operations().start(
            upgradePackages(world.larkspur->packages(), {{"heron", false, "8.10.0", "8.11.1"}}));
        QVERIFY(spinUntil([&] { return !upgrade->isRunning() && world.larkspur->tasks().isDrained(); }));
        world.window->showScreen("history"); // the way back stands beside what was done
        auto *history = world.visible<QTableView>();
        QCOMPARE(history->model()->index(0, 1).data().toString(), "heron");
        history->selectRow(0);
        QVERIFY(world.button("Roll heron Back to 8.10.0…"));
        QTest::mouseClick(world.button("Roll heron Back to 8.10.0…"), Qt::LeftButton);
        QVERIFY(spinUntil([&] { return world.button("Roll Back"); }));
        QTest::mouseClick(world.button("Roll Back"), Qt::LeftButton);
        QVERIFY(spinUntil([&] { return world.button("Skip 8.11.1"); }));
        QVERIFY(spinUntil([&] { return world.larkspur->tasks().isDrained(); }));
        QVERIFY(isOffered());
        QTest::mouseClick(world.button("Skip 8.11.1"), Qt::LeftButton);
        QVERIFY(!world.button("Skip 8.11.1"));
        EVENTUALLY(!isOffered());
        QVERIFY(world.shows("1 snoozed"));
        QTest::mouseClick(world.button("Upgrade All"), Qt::LeftButton);
        const QString command = world.visible<ui::PlanSheet>()->operation()->terminalCommand();
        QVERIFY2(command.startsWith("brew upgrade ") && !command.contains("heron") &&
                     !command.contains("kelp"), // snoozed, pinned
                 qPrintable(command));
        world.visible<ui::PlanSheet>()->reject();
        QVERIFY(spinUntil([&] { return world.larkspur->tasks().isDrained(); }));
        world.larkspur->userData().unsnoozePackage("heron");
        EVENTUALLY(isOffered());
    }

    void aFailureOpensTheOutput() {
        World world;
        QVERIFY(world.startAndLoad());
        world.larkspur->operations().start(
            upgradePackages(world.larkspur->packages(), {{"hearthbuild", false}}));
        QVERIFY(spinUntil([&] { return world.shows("undefined reference to `kindling'"); }));
        EVENTUALLY(
            world.window->findChild<ui::OutputView *>()->toPlainText().contains("without naming a reason"));
        QVERIFY(world.window->findChild<ui::OutputView *>()->isVisible());
    }

    void startsFromTheCacheWithoutBrew() {
        World world;
        QVERIFY(world.startAndLoad());
        world.close();
        world.open();
        world.window->start();
        auto *table = world.visible<ui::PackageTable>();
        QVERIFY(table && table->model().rowCount() > 10); // before the event loop has run at all
        QVERIFY(spinUntil([&] { return world.larkspur->tasks().isDrained(); }));
    }

    void failureScreens() {
        World world;
        world.replaceBrew("if [ \"$1\" = info ]; then echo 'Error: You have not agreed to the Xcode "
                          "license.' >&2; exit 1; fi");
        world.window->start();
        QVERIFY(spinUntil([&] { return world.shows("Xcode Setup Required"); }));
        QVERIFY(spinUntil([&] { return world.larkspur->tasks().isDrained(); }));
        world.replaceBrew({});
        QTest::mouseClick(world.button("Retry"), Qt::LeftButton);
        QVERIFY(spinUntil([&] { return world.visible<ui::PackageTable>() != nullptr; }));
        QVERIFY(spinUntil([&] { return world.larkspur->tasks().isDrained(); }));
    }

    void withoutBrewTheScreenSaysSo() {
        World world;
        QFile::remove(world.brew());
        world.window->start();
        QVERIFY(spinUntil([&] { return world.shows("Homebrew is not installed"); }));
        QVERIFY(world.button("Retry") && world.button("Settings…"));
        // Naming a brew in the settings counts at once.
        QVERIFY(QFile::copy("/bin/true", world.folder.filePath("mybrew")));
        world.larkspur->preferences().set(keys::brewPathOverride, world.folder.filePath("mybrew"));
        QTest::mouseClick(world.button("Retry"), Qt::LeftButton);
        QVERIFY(spinUntil([&] { return world.visible<ui::Screen>() != nullptr; }));
        QVERIFY(spinUntil([&] { return world.larkspur->tasks().isDrained(); }));
    }

    void closingDuringAnOperationAsks_data() {
        QTest::addColumn<QString>("answer");
        QTest::newRow("stop") << "Stop and Quit";
        QTest::newRow("wait") << "Quit When Finished";
    }
    void closingDuringAnOperationAsks() {
        QFETCH(QString, answer);
        World world;
        world.replaceBrew("if [ \"$1\" = upgrade ]; then echo begun; sleep 3; exit 0; fi");
        QVERIFY(world.startAndLoad());
        const QSignalSpy closed(world.window.get(), &ui::MainWindow::closed);
        OperationRun *run =
            world.larkspur->operations().start(upgradeOfAll(world.larkspur->packages(), {}, false));
        QVERIFY(spinUntil([&] { return run->transcript().lineCount() > 0; }));
        world.window->close();
        QCOMPARE(closed.count(), 0);
        QVERIFY(world.window->isVisible());
        EVENTUALLY(world.button(answer));
        QTest::mouseClick(world.button(answer), Qt::LeftButton);
        QVERIFY(spinUntil([&] { return closed.count() == 1; }));
        QVERIFY(!run->isRunning());
        QCOMPARE(run->wasStopped(), answer == "Stop and Quit");
    }

    void sizesAreMeasuredWhenAskedFor() {
        World world;
        QVERIFY(world.startAndLoad());
        world.window->showScreen("formulae");
        auto *order = world.visible<QComboBox>();
        order->setCurrentIndex(2);
        Q_EMIT order->activated(2);
        auto *table = world.visible<ui::PackageTable>();
        QVERIFY(spinUntil([&] { return table->model().largestSize() > 0; }));
        QCOMPARE(table->model().row(0).id.name, "meadowdb");
        QCOMPARE(world.larkspur->preferences().string(keys::packageSortOrder), "size");
        QVERIFY(spinUntil([&] { return world.larkspur->tasks().isDrained(); }));
    }
};

QTEST_MAIN(MainWindowTest)
#include "MainWindow_test.moc"
