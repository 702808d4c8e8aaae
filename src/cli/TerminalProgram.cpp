#include "cli/TerminalProgram.h"

#include "app/Larkspur.h"
#include "cli/CommandLine.h"
#include "cli/InterruptWatch.h"

#include <QCoreApplication>
#include <QTimer>

namespace larkspur::cli {

namespace {

Task<> runAndQuit(CommandContext context, QStringList words) {
    Larkspur &larkspur = context.larkspur;
    larkspur.recoverFromCrash();
    const ExitStatus status = co_await runCommandLine(std::move(context), std::move(words));
    QObject::connect(&larkspur, &Larkspur::drained, QCoreApplication::instance(),
                     [status] { QCoreApplication::exit(static_cast<int>(status)); });
    larkspur.shutDown();
}

} // namespace

int runTerminalProgram(int argc, char *argv[], const LaunchOptions &options) {
    QCoreApplication application(argc, argv);
    const Terminal terminal;
    auto environment = environmentFor(options);
    if (!environment) {
        terminal.error(environment.error());
        return static_cast<int>(ExitStatus::Failed);
    }
    Larkspur larkspur(std::move(*environment));
    StopSource stop;
    const InterruptWatch interrupts([&stop] { stop.request_stop(); });
    // Started inside the event loop: a command that needs no child would otherwise end before the loop
    // begins.
    QTimer::singleShot(0, &larkspur, [&] {
        [[maybe_unused]] const auto running =
            runAndQuit({larkspur, terminal, stop.get_token()}, options.commandWords);
    });
    return QCoreApplication::exec();
}

} // namespace larkspur::cli
