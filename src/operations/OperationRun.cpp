#include "operations/OperationRun.h"

#include "core/brew/PackageName.h"

#include <QPointer>

namespace larkspur {

/// Outlives its run without harm: late output of a dying child goes nowhere.
class OperationRun::Sink final : public OutputSink {
  public:
    explicit Sink(OperationRun *run)
        : m_run(run) {}
    void receive(const OutputChange &change) override {
        if (m_run)
            m_run->receive(change);
    }

  private:
    QPointer<OperationRun> m_run;
};

OperationRun::OperationRun(OperationRequest request, QObject *parent)
    : QObject(parent)
    , m_request(std::move(request))
    , m_progress(m_request.expectedSteps) {}

void OperationRun::stop() {
    if (!isRunning() || m_stop.stop_requested())
        return;
    m_stop.request_stop();
    Q_EMIT changed();
}

OutputSinkPtr OperationRun::sink() {
    return std::make_shared<Sink>(this);
}

void OperationRun::begin() {
    m_state = State::Running;
    Q_EMIT changed();
}

void OperationRun::receive(const OutputChange &change) {
    m_transcript.apply(change);
    m_progress.apply(change);
    m_silence = {};
    Q_EMIT outputReceived(change);
    Q_EMIT changed();
}

void OperationRun::noteSilence(std::chrono::seconds silence) {
    m_silence = silence;
    Q_EMIT changed();
}

void OperationRun::notePackage(const QString &name, int done, int total) {
    m_progress.beginPackage(shortName(name), done, total);
    Q_EMIT changed();
}

void OperationRun::notePrompt(bool isAsking) {
    if (m_state == State::Finished)
        return;
    m_state = isAsking ? State::AskingForPassword : State::Running;
    Q_EMIT changed();
}

void OperationRun::finish(Result<OperationReport> report, OperationOutcome outcome) {
    m_state = State::Finished;
    m_silence = {};
    if (report)
        m_report = std::move(*report);
    else
        m_failure = report.error();
    // The text counts from the last retry with a password or with force; what came to a good end after one
    // more, or failed before it, only the report knows.
    const bool isComplete =
        !m_failure && m_report.count(PackageEnd::Done) == static_cast<int>(m_report.packages.size());
    if (!isComplete)
        m_outcome = OperationOutcome::Failed;
    else if (outcome == OperationOutcome::Failed && !m_report.packages.isEmpty())
        m_outcome =
            m_report.hasWarnings ? OperationOutcome::CompletedWithWarnings : OperationOutcome::Succeeded;
    else
        m_outcome = outcome;
    Q_EMIT changed();
    Q_EMIT finished();
}

} // namespace larkspur
