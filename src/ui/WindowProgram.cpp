#include "ui/WindowProgram.h"

#include "app/Larkspur.h"
#include "core/output/TerminalSafeText.h"
#include "core/process/StopSignals.h"
#include "ui/MainWindow.h"
#include "ui/theme/Appearance.h"

#include <QApplication>

#include <cstdio>

namespace larkspur::ui {

bool hasDisplay() {
    // A platform plug-in that was asked for by name decides for itself; so does macOS, which has no such
    // variables.
    if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") || QSysInfo::productType() == QLatin1String("macos"))
        return true;
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

namespace {

/// What "Stop and Quit" does, for a person who cannot be asked.
void stopAndQuit(OperationCenter &operations, MainWindow &window) {
    operations.stopAll();
    const auto closeWhenIdle = [&operations, &window] {
        if (operations.unfinished().isEmpty())
            window.close();
    };
    QObject::connect(&operations, &OperationCenter::finished, &window, closeWhenIdle);
    closeWhenIdle();
}

} // namespace

int runWindowProgram(int argc, char *argv[], const LaunchOptions &options) {
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Larkspur"));
    QApplication::setQuitOnLastWindowClosed(false); // what still runs is brought to its end first
    auto environment = environmentFor(options);
    if (!environment) {
        std::fprintf(stderr, "larkspur: %s\n", qPrintable(safeForTerminal(environment.error())));
        return 1;
    }
    applyAppearance();
    Larkspur larkspur(std::move(*environment));
    MainWindow window(larkspur);
    QObject::connect(&window, &MainWindow::closed, &larkspur, &Larkspur::shutDown);
    QObject::connect(&larkspur, &Larkspur::drained, &application, &QApplication::quit);
    const StopSignals signals([&] { stopAndQuit(larkspur.operations(), window); });
    window.show();
    window.start();
    return QApplication::exec();
}

} // namespace larkspur::ui
