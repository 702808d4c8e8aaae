#include "app/Larkspur.h"
#include "operations/kegs/RollBackKegs.h"
#include "operations/packages/InstallPackages.h"
#include "operations/packages/UninstallPackages.h"
#include "operations/packages/UpgradeAll.h"
#include "operations/packages/UpgradePackages.h"
#include "ui/MainWindow.h"
#include "ui/Screen.h"
#include "ui/operation/OperationPanel.h"
#include "ui/operation/PlanSheet.h"
#include "ui/settings/SettingsDialog.h"
#include "ui/theme/Appearance.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableView>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <vector>

// Usage: larkspur-pictures FOLDER. LARKSPUR_APPEARANCE chooses light or dark.

namespace {

using namespace larkspur;

struct Scene {
    QString name;
    int wait; ///< milliseconds between preparing and drawing
    std::function<void()> prepare;
};

void selectRow(ui::MainWindow &window, int row) {
    for (QTableView *view : window.findChildren<QTableView *>())
        if (view->isVisible())
            view->selectRow(row);
}

void typeInto(ui::MainWindow &window, const QString &text) {
    for (ui::Screen *screen : window.findChildren<ui::Screen *>())
        if (screen->isVisible() && screen->filterField())
            screen->filterField()->setText(text);
}

/// A machine with a thousand formulae whose authors like to explain.
void fillWithLongTexts(Inventory &inventory) {
    for (int i = 0; i < 1000; ++i) {
        Formula formula;
        formula.name = QStringLiteral("a-formula-with-quite-a-long-name-%1").arg(i);
        formula.fullName = QStringLiteral("somebody/tools-for-everything/") + formula.name;
        formula.version = QStringLiteral("2026.11.22-snapshot-%1_3").arg(i);
        formula.description =
            QStringLiteral("Does one thing, and that thoroughly, at length, in every format. ").repeated(3);
        formula.caveats =
            QStringLiteral("Remember to read the manual before the first start.\n").repeated(40);
        formula.license =
            QStringLiteral("Apache-2.0 OR MIT OR GPL-3.0-or-later WITH Classpath-exception-2.0");
        inventory.installedFormulae.append(formula);
    }
}

Task<> ask(SudoAuth *auth, PasswordRequest request) {
    co_await auth->requestPassword(std::move(request));
}

void showPlan(Larkspur &larkspur, ui::MainWindow &window, const OperationPtr &operation) {
    auto *sheet = new ui::PlanSheet({larkspur.preferences(), larkspur.tasks()}, operation, &window);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    sheet->open();
}

std::vector<Scene> scenes(Larkspur &larkspur, ui::MainWindow &window) {
    return {
        {QStringLiteral("updates"), 2500, [&] { selectRow(window, 6); }},
        {QStringLiteral("formulae"), 400,
         [&] {
             window.showScreen(QStringLiteral("formulae"));
             selectRow(window, 24);
         }},
        {QStringLiteral("formulae-by-size"), 1500,
         [&] {
             for (auto *box : window.findChildren<QComboBox *>())
                 if (box->isVisible()) {
                     box->setCurrentIndex(2);
                     Q_EMIT box->activated(2);
                 }
         }},
        {QStringLiteral("casks"), 400,
         [&] {
             window.showScreen(QStringLiteral("casks"));
             selectRow(window, 5);
         }},
        {QStringLiteral("pinned"), 300, [&] { window.showScreen(QStringLiteral("pinned")); }},
        {QStringLiteral("search-empty"), 300, [&] { window.showScreen(QStringLiteral("search")); }},
        {QStringLiteral("search"), 2000,
         [&] {
             typeInto(window, QStringLiteral("wi"));
             QTimer::singleShot(1200, &window, [&] { selectRow(window, 2); });
         }},
        {QStringLiteral("services"), 300, [&] { window.showScreen(QStringLiteral("services")); }},
        {QStringLiteral("taps"), 300, [&] { window.showScreen(QStringLiteral("taps")); }},
        {QStringLiteral("settings"), 300,
         [&] {
             auto *dialog = new ui::SettingsDialog(
                 {larkspur.preferences(), larkspur.storedPassword(), larkspur.kegs(), larkspur.tasks()},
                 &window);
             dialog->setAttribute(Qt::WA_DeleteOnClose);
             dialog->show();
         }},
        {QStringLiteral("plan-upgrade"), 3500,
         [&] {
             showPlan(
                 larkspur, window,
                 upgradePackages(larkspur.packages(), {{QStringLiteral("quillmark"), false},
                                                       {QStringLiteral("granite-vault"), true},
                                                       {QStringLiteral("kelp"), false, QStringLiteral("1.0"),
                                                        QStringLiteral("1.1"), true}}));
         }},
        {QStringLiteral("plan-removal"), 2500,
         [&] {
             showPlan(larkspur, window,
                      uninstallPackages(larkspur.packages(),
                                        {{QStringLiteral("libtide"), false, QStringLiteral("0.9.11")}}));
         }},
        {QStringLiteral("password"), 5000,
         [&] {
             larkspur.operations().start(
                 upgradePackages(larkspur.packages(), {{QStringLiteral("granite-vault"), true}}));
         }},
        {QStringLiteral("password-cancelled"), 500, [] {}},
        {QStringLiteral("password-unusual"), 500,
         [&] {
             larkspur.tasks().spawn(
                 QStringLiteral("A question"),
                 ask(&larkspur.sudoAuth(),
                     {.reason = QStringLiteral("Larkspur needs your administrator password to finish "
                                               "installing somebody/tools/helper."),
                      .package = QStringLiteral("somebody/tools/helper"),
                      .command = QStringLiteral("brew install somebody/tools/helper"),
                      .trigger = QStringLiteral("<b>sudo</b>: a password is required ").repeated(20),
                      .isUnusual = true}));
         }},
        {QStringLiteral("services-restart"), 5000,
         [&] {
             larkspur.operations().start(
                 upgradePackages(larkspur.packages(), {{QStringLiteral("meadowdb"), false}}));
         }},
        {QStringLiteral("time-machine"), 1500, [&] { window.showScreen(QStringLiteral("timemachine")); }},
        {QStringLiteral("time-machine-restore"), 1200,
         [&] {
             for (auto *button : window.findChildren<QPushButton *>())
                 if (button->isVisible() && button->text() == QStringLiteral("Restore…"))
                     button->click();
         }},
        {QStringLiteral("rolled-back"), 5000,
         [&] {
             larkspur.operations().start(
                 upgradePackages(larkspur.packages(), {{QStringLiteral("osprey-sync"), true}}));
         }},
        {QStringLiteral("licence"), 4000,
         [&] {
             larkspur.operations().start(
                 installPackages(larkspur.packages(), {{QStringLiteral("toadflax-odbc"), false}}));
         }},
        {QStringLiteral("settings-time-machine"), 500,
         [&] {
             auto *dialog = new ui::SettingsDialog(
                 {larkspur.preferences(), larkspur.storedPassword(), larkspur.kegs(), larkspur.tasks()},
                 &window);
             dialog->setAttribute(Qt::WA_DeleteOnClose);
             dialog->findChild<QTabWidget *>()->setCurrentIndex(2);
             dialog->show();
         }},
        {QStringLiteral("rollback"), 4000,
         [&] {
             larkspur.operations().start(rollBackKegs(
                 larkspur.packages(),
                 {{.name = QStringLiteral("meadowdb"), .latestVersion = QStringLiteral("7.0.3")}}));
         }},
        {QStringLiteral("snoozed"), 500,
         [&] {
             for (const char *name : {"heron", "kelp"})
                 larkspur.userData().snoozePackage(QString::fromLatin1(name), QStringLiteral("8.11.1"), false,
                                                   SnoozeDuration::OneWeek);
             larkspur.userData().snoozePackage(QStringLiteral("mosswood-photos"), QStringLiteral("8.0"), true,
                                               UntilNextVersion());
             window.showScreen(QStringLiteral("snoozed"));
             selectRow(window, 0);
         }},
        {QStringLiteral("history"), 500,
         [&] {
             window.showScreen(QStringLiteral("history"));
             selectRow(window, 0);
         }},
        {QStringLiteral("upgrade"), 3500,
         [&] {
             window.showScreen(QStringLiteral("updates"));
             larkspur.operations().start(upgradeOfAll(larkspur.packages(), {}, false));
         }},
        {QStringLiteral("upgrade-output"), 9000,
         [&] { window.findChild<ui::OperationPanel *>()->setOutputVisible(true); }},
        {QStringLiteral("upgrade-stopped"), 3000, [&] { larkspur.operations().stopAll(); }},
        {QStringLiteral("upgrade-failed"), 9000,
         [&] {
             larkspur.operations().start(
                 upgradePackages(larkspur.packages(), {{QStringLiteral("hearthbuild"), false}}));
         }},
        {QStringLiteral("thousand-rows"), 500,
         [&] {
             window.showScreen(QStringLiteral("formulae"));
             larkspur.inventory().update(fillWithLongTexts);
             for (auto *box : window.findChildren<QComboBox *>())
                 if (box->isVisible()) {
                     box->setCurrentIndex(0);
                     Q_EMIT box->activated(0);
                 }
             QTimer::singleShot(200, &window, [&] { selectRow(window, 1); });
         }},
        {QStringLiteral("xcode-setup"), 300,
         [&] {
             larkspur.inventory().update([](Inventory &inventory) { inventory.needsXcodeSetup = true; });
         }},
    };
}

void draw(ui::MainWindow &window, const QString &path) {
    QWidget *subject = &window;
    for (auto *dialog : window.findChildren<QDialog *>())
        if (dialog->isVisible())
            subject = dialog;
    subject->grab().save(path);
    std::printf("%s\n", qPrintable(path));
    if (subject != &window)
        subject->close();
}

void run(const std::vector<Scene> *all, std::size_t index, ui::MainWindow *window, const QString &folder) {
    if (index == all->size()) {
        window->close();
        return;
    }
    const Scene &scene = (*all)[index];
    scene.prepare();
    QTimer::singleShot(scene.wait, window, [=] {
        draw(*window, QStringLiteral("%1/%2.png").arg(folder, (*all)[index].name));
        run(all, index + 1, window, folder);
    });
}

} // namespace

int main(int argc, char *argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const QTemporaryDir scratch;
    const QString folder = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral(".");
    QDir().mkpath(folder);
    auto environment = sampleEnvironment(scratch.path(), true);
    if (!environment) {
        std::fprintf(stderr, "%s\n", qPrintable(environment.error()));
        return 1;
    }
    ui::applyAppearance();
    Larkspur larkspur(std::move(*environment));
    ui::MainWindow window(larkspur);
    window.resize(1180, 760);
    const std::vector<Scene> all = scenes(larkspur, window);
    QObject::connect(&window, &ui::MainWindow::closed, &larkspur, &Larkspur::shutDown);
    QObject::connect(&larkspur, &Larkspur::drained, &application, &QApplication::quit);
    window.show();
    window.start();
    QTimer::singleShot(3500, &window, [&] { run(&all, 0, &window, folder); });
    return QApplication::exec();
}
