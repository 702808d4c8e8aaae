#include "app/Larkspur.h"
#include "bench/Scenes.h"
#include "inventory/cache/PackageCache.h"
#include "tests/support/Fixture.h"
#include "ui/MainWindow.h"

#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QMainWindow>
#include <QProcess>
#include <QStandardItemModel>
#include <QTableView>

#include <benchmark/benchmark.h>

#include <unistd.h>

// Start/bare is a process with nothing but a Qt window and a table of 400 cached packages, until it is
// painted; Start/larkspur the program's own window on the same cache. Aim: at most 1.5 to 1, and no brew
// before.

namespace bench {

namespace {

using namespace larkspur;

constexpr int packages = 400;

/// Ends the process once a table with rows has been painted.
class QuitOnPaint : public QObject {
  public:
    bool eventFilter(QObject *object, QEvent *event) override {
        auto *view = qobject_cast<QTableView *>(object->parent());
        if (event->type() == QEvent::Paint && view && view->model() && view->model()->rowCount() > 0)
            QMetaObject::invokeMethod(this, [] { ::_exit(0); }, Qt::QueuedConnection);
        return false;
    }
};

void fillCache(const QString &folder) {
    Logger logger(folder);
    PackageCache cache(folder + QStringLiteral("/data/Cache"), logger);
    QList<Formula> formulae;
    QList<OutdatedPackage> outdated;
    for (int i = 0; i < packages; ++i) {
        Formula formula;
        formula.name = formula.fullName = QStringLiteral("package-%1").arg(i);
        formula.version = QStringLiteral("1.%1").arg(i);
        formula.description = QStringLiteral("Does what package number %1 does").arg(i);
        formulae.append(formula);
        outdated.append({formula.name, formula.name, false, {formula.version}, QStringLiteral("2.0"), false});
    }
    cache.saveFormulae(formulae);
    cache.saveCasks({});
    cache.saveOutdated(outdated);
}

void startProcess(benchmark::State &state, const QString &scene) {
    const QTemporaryDir folder;
    const QDir root(folder.path());
    root.mkpath(QStringLiteral("homebrew/bin"));
    // A brew that would be noticed: it leaves a mark when it is called.
    test::Fixture::write(root.filePath(QStringLiteral("homebrew/bin/brew")),
                         "#!/bin/sh\ntouch " + root.filePath(QStringLiteral("called")).toUtf8() + "\n", true);
    fillCache(folder.path());
    for (auto _ : state)
        if (QProcess::execute(self(), {scene, folder.path()}) != 0)
            state.SkipWithError("the window was not shown");
    if (QFile::exists(root.filePath(QStringLiteral("called"))))
        state.SkipWithError("brew was called before the list was shown");
}

void startBare(benchmark::State &state) {
    startProcess(state, QStringLiteral("--bare-window"));
}

void startLarkspur(benchmark::State &state) {
    startProcess(state, QStringLiteral("--larkspur-window"));
}

} // namespace

int showBareWindow(const QString &folder) {
    int argc = 1;
    char name[] = "bench";
    char *argv[] = {name, nullptr};
    QApplication application(argc, argv);
    Logger logger(folder);
    const auto cached = PackageCache(folder + QStringLiteral("/data/Cache"), logger).loadFormulae();
    QStandardItemModel model;
    for (const Formula &formula : cached->data)
        model.appendRow({new QStandardItem(formula.name), new QStandardItem(formula.version),
                         new QStandardItem(formula.description.value_or(QString()))});
    QMainWindow window;
    auto *view = new QTableView;
    view->setModel(&model);
    window.setCentralWidget(view);
    window.resize(1120, 720);
    QuitOnPaint quit;
    view->viewport()->installEventFilter(&quit);
    window.show();
    return QApplication::exec();
}

int showLarkspur(const QString &folder) {
    int argc = 1;
    char name[] = "bench";
    char *argv[] = {name, nullptr};
    QApplication application(argc, argv);
    auto environment = sampleEnvironment(folder, false);
    if (!environment)
        return 1;
    Larkspur larkspur(std::move(*environment));
    ui::MainWindow window(larkspur);
    QuitOnPaint quit;
    window.show();
    window.start();
    for (QTableView *view : window.findChildren<QTableView *>())
        view->viewport()->installEventFilter(&quit);
    return QApplication::exec();
}

BENCHMARK(startBare)->Name("Start/bare")->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(startLarkspur)->Name("Start/larkspur")->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace bench
