#include "operations/OperationCenter.h"

#include "core/authorization/SudoAuth.h"

#include <QPointer>

#include <algorithm>

namespace larkspur {

OperationCenter::OperationCenter(PackageOperations &operations, SudoAuth &sudoAuth, TaskScope &scope)
    : m_operations(operations)
    , m_sudoAuth(sudoAuth)
    , m_scope(scope) {
    // The prompt belongs to the operation that holds the lock: the oldest of those that have begun.
    connect(&m_sudoAuth, &SudoAuth::changed, this, [this] {
        for (OperationRun *run : unfinished())
            if (run->state() != OperationRun::State::Queued) {
                run->notePrompt(m_sudoAuth.isPrompting());
                break;
            }
    });
}

OperationRun *OperationCenter::start(OperationRequest request) {
    OperationRun *run = create(std::move(request));
    start(run);
    return run;
}

OperationRun *OperationCenter::create(OperationRequest request) {
    forgetOldRuns();
    m_runs.append(new OperationRun(std::move(request), this));
    return m_runs.last();
}

void OperationCenter::start(OperationRun *run) {
    Q_EMIT started(run);
    m_scope.spawn(run->title(), perform(run));
}

Task<> OperationCenter::perform(OperationRun *run) {
    OperationContext context;
    context.output = run->sink();
    context.stop = run->stopToken();
    context.insist = run->insistToken();
    context.sudoAuth = &m_sudoAuth;
    context.wantsRedraws = m_wantsRedraws;
    context.onSilence = [run = QPointer(run)](std::chrono::seconds silence) {
        if (run)
            run->noteSilence(silence);
    };
    context.onPackage = [run = QPointer(run)](const QString &name, int done, int total) {
        if (run)
            run->notePackage(name, done, total);
    };
    const auto begin = [this, run] {
        run->begin();
        Q_EMIT packagesWillChange();
    };
    Result<OperationReport> report = co_await m_operations.perform(run->request(), context, begin);
    const bool wasStopped = !report && report.error().kind == BrewError::Kind::Stopped;
    if (wasStopped)
        context.output->addLine(QStringLiteral("==> Stopped. The operation may be incomplete."));
    else if (!report)
        context.output->addLine(QStringLiteral("==> Error: ") + report.error().description());
    run->finish(std::move(report));
    Q_EMIT finished(run);
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
