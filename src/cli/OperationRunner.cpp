#include "cli/OperationRunner.h"

#include "app/Larkspur.h"
#include "cli/LiveOutput.h"
#include "cli/OperationQuestion.h"
#include "cli/PasswordPrompt.h"

namespace larkspur::cli {

namespace {

QString outcomeLine(const OperationRun &run) {
    if (run.wasCancelled())
        return QStringLiteral("Cancelled: %1.").arg(run.title());
    const QString tally =
        run.report().packages.size() > 1 ? QStringLiteral(" %1.").arg(run.report().tally()) : QString();
    if (run.wasStopped())
        return QStringLiteral("Stopped: %1. The operation may be incomplete.").arg(run.title()) + tally;
    switch (run.outcome()) {
    case OperationOutcome::Succeeded:
        return QStringLiteral("Done: %1.").arg(run.title());
    case OperationOutcome::CompletedWithWarnings:
        return QStringLiteral("Completed with warnings: %1.").arg(run.title());
    case OperationOutcome::Running:
    case OperationOutcome::Failed:
        break;
    }
    return QStringLiteral("Failed: %1.").arg(run.title()) + tally;
}

/// What the output of a failed operation comes down to, and what to do about it.
void printReason(const Terminal &terminal, const OperationRun &run) {
    const FailureSummary summary = run.failureSummary();
    for (const QString &text : {summary.text, summary.suggestion, summary.commandToCopy})
        if (!text.isEmpty())
            terminal.error(text);
}

} // namespace

Task<ExitStatus> runOperation(CommandContext context, OperationPtr operation, bool isAgreed) {
    if (!co_await mayProceed(context, operation, isAgreed)) {
        context.terminal.error(QStringLiteral("Nothing was changed."));
        co_return ExitStatus::Failed;
    }
    const PasswordPrompt passwords(context.larkspur.sudoAuth(), context.terminal, context.larkspur.tasks(),
                                   context.stop);
    OperationCenter &center = context.larkspur.operations();
    center.setWantsRedraws(context.terminal.isInteractive());
    OperationRun *run = center.create(std::move(operation));
    const auto output = std::make_shared<LiveOutput>(context.terminal);
    Completion<bool> ended;
    QObject::connect(run, &OperationRun::outputReceived, run, [run, output](const OutputChange &change) {
        output->receive(change);
        output->showProgress(run->progress());
    });
    QObject::connect(run, &OperationRun::changed, run, [run, output] {
        if (run->state() == OperationRun::State::AskingForPassword)
            output->clearBar();
        else if (run->isStopping())
            output->showNote(QStringLiteral("Stopping; what has begun is put right (Ctrl-C again: later)…"));
        else if (run->silence() > std::chrono::seconds(0))
            output->showNote(QStringLiteral("Nothing has come from Homebrew for %1 s; Ctrl-C stops it.")
                                 .arg(run->silence().count()));
    });
    QObject::connect(run, &OperationRun::finished, run, [ended]() mutable { ended.complete(true); });
    const std::stop_callback onStop(context.stop, [run] { run->stop(); });
    const std::stop_callback onInsisting(context.insist, [run] { run->stopRepair(); });
    center.start(run);
    co_await ended;
    output->clearBar();
    if (run->outcome() == OperationOutcome::Failed) {
        context.terminal.error(outcomeLine(*run));
        if (!run->wasStopped() && !run->wasCancelled())
            printReason(context.terminal, *run);
    } else
        context.terminal.line(outcomeLine(*run));
    const ExitStatus status =
        run->report().failure ? statusFor(*run->report().failure) : statusFor(run->outcome());
    co_return status;
}

} // namespace larkspur::cli
