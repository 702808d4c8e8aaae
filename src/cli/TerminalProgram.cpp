#include "cli/TerminalProgram.h"

#include "app/Larkspur.h"
#include "cli/CommandLine.h"
#include "cli/OutputWatch.h"
#include "core/process/StopSignals.h"

#include <QCoreApplication>
#include <QTimer>

namespace larkspur::cli {

namespace {

/// What has to be told beside the command's own output.
class ErrorLines final : public OutputSink {
  public:
    explicit ErrorLines(const Terminal &terminal)
        : m_terminal(terminal) {}
    void receive(const OutputChange &change) override {
        for (const QString &line : change.lines)
            m_terminal.error(line);
    }

  private:
    const Terminal &m_terminal;
};

/// Commands that say nothing about packages.
bool isAboutTheProgram(const QStringList &words) {
    static const QStringList some{QStringLiteral("help"), QStringLiteral("--help"), QStringLiteral("log")};
    return words.isEmpty() || some.contains(words.first());
}

Task<> runAndQuit(CommandContext context, QStringList words, OutputWatch *output) {
    Larkspur &larkspur = context.larkspur;
    // First, so that the answer is about what is put right.
    if (!isAboutTheProgram(words)) {
        if (const QString damage = larkspur.preferences().damage(); !damage.isEmpty())
            context.terminal.error(QStringLiteral("Warning: ") + damage);
        co_await larkspur.recoverFromCrash(context.stop, std::make_shared<ErrorLines>(context.terminal),
                                           Recovery::Patience::Leaves);
    }
    ExitStatus status = co_await runCommandLine(std::move(context), std::move(words));
    if (output->hasFailed() && status == ExitStatus::Done)
        status = ExitStatus::Failed;
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
    StopSource insist;
    const StopSignals signals([&] { (stop.stop_requested() ? insist : stop).request_stop(); });
    OutputWatch output([&] {
        if (!larkspur.operations().unfinished().isEmpty()) // what only tells something ends unsaid
            terminal.error(QStringLiteral("The output takes nothing any more, so what runs is stopped."));
        stop.request_stop();
    });
    // Started inside the event loop: a command that needs no child would otherwise end before the loop
    // begins.
    QTimer::singleShot(0, &larkspur, [&] {
        [[maybe_unused]] const auto running = runAndQuit(
            {larkspur, terminal, stop.get_token(), insist.get_token()}, options.commandWords, &output);
    });
    return QCoreApplication::exec();
}

} // namespace larkspur::cli
