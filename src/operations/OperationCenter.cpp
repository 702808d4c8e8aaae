#include "operations/OperationCenter.h"

#include "core/authorization/SudoAuth.h"
#include "inventory/queries/InventoryQueries.h"
#include "operations/recovery/Recovery.h"

#include <QPointer>

#include <algorithm>

namespace larkspur {

OperationCenter::OperationCenter(Parts parts)
    : m_parts(parts) {
    // The prompt belongs to the operation that holds the lock: the oldest of those that have begun.
    connect(&m_parts.sudoAuth, &SudoAuth::changed, this, [this] {
        for (OperationRun *run : unfinished())
            if (run->state() != OperationRun::State::Queued) {
                run->notePrompt(m_parts.sudoAuth.isPrompting());
                break;
            }
    });
}

OperationRun *OperationCenter::start(OperationPtr operation) {
    OperationRun *run = create(std::move(operation));
    start(run);
    return run;
}

OperationRun *OperationCenter::create(OperationPtr operation) {
    forgetOldRuns();
    m_runs.append(new OperationRun(std::move(operation), this));
    return m_runs.last();
}

void OperationCenter::start(OperationRun *run) {
    Q_EMIT started(run);
    m_parts.tasks.spawn(run->title(), perform(run));
}

OperationContext OperationCenter::contextFor(OperationRun *run) {
    OperationContext context;
    context.output = run->sink();
    context.stop = run->stopToken();
    context.insist = run->insistToken();
    context.sudoAuth = &m_parts.sudoAuth;
    context.wantsRedraws = m_wantsRedraws;
    context.onSilence = [run = QPointer(run)](std::chrono::seconds silence) {
        if (run)
            run->noteSilence(silence);
    };
    context.onPackage = [run = QPointer(run)](const QString &name, int done, int total) {
        if (run)
            run->notePackage(name, done, total);
    };
    return context;
}

Task<> OperationCenter::perform(OperationRun *run) {
    const OperationContext context = contextFor(run);
    auto report = run->operation()->endWithoutLock(context.output);
    if (!report)
        report = co_await performLocked(run, context);
    if (report->wasStopped())
        context.output->addLine(QStringLiteral("==> Stopped. The operation may be incomplete."));
    else if (report->failure)
        context.output->addLine(QStringLiteral("==> Error: ") + report->failure->description());
    run->finish(std::move(*report));
    Q_EMIT finished(run);
}

Task<OperationReport> OperationCenter::performLocked(OperationRun *run, OperationContext context) {
    auto session = co_await m_parts.recovery.beginOperation(context);
    if (!session)
        co_return OperationReport{.failure = session.error()};
    run->begin();
    Q_EMIT packagesWillChange();
    const auto prefix = co_await m_parts.queries.homebrewPrefix(context.stop);
    if (!prefix) // nothing could be protected, nor looked at afterwards
        co_return OperationReport{.failure = prefix.error()};
    const OperationPtr operation = run->operation();
    co_return co_await operation->perform({&*session, std::move(context), *prefix, &m_parts.logger});
}

QList<OperationRun *> OperationCenter::unfinished() const {
    QList<OperationRun *> runs;
    std::ranges::copy_if(m_runs, std::back_inserter(runs), &OperationRun::isRunning);
    return runs;
}

OperationRun *OperationCenter::shown() const {
    const auto running = std::ranges::find_if(m_runs, &OperationRun::isRunning);
    if (running != m_runs.end())
        return *running;
    return m_runs.isEmpty() ? nullptr : m_runs.last();
}

void OperationCenter::stopAll() {
    for (OperationRun *run : unfinished())
        run->isStopping() ? run->stopRepair() : run->stop();
}

void OperationCenter::forgetOldRuns() {
    constexpr qsizetype kept = 8;
    while (m_runs.size() > kept && !m_runs.first()->isRunning())
        m_runs.takeFirst()->deleteLater();
}

} // namespace larkspur
