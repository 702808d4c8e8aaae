#include "operations/OperationRun.h"

#include "core/brew/PackageName.h"
#include "core/errors/AppError.h"

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

OperationRun::OperationRun(OperationPtr operation, QObject *parent)
    : QObject(parent)
    , m_operation(std::move(operation))
    , m_progress(m_operation->expectedSteps()) {}

FailureSummary OperationRun::failureSummary() const {
    if (!m_report.failure || m_report.hasFailed())
        return m_operation->explain(m_report, m_transcript.lines());
    const AppError error = AppError::from(*m_report.failure); // nothing was tried: the output tells nothing
    return {error.message(), error.recoverySuggestion()};
}

void OperationRun::stop() {
    if (!isRunning() || m_stop.stop_requested())
        return;
    m_stop.request_stop();
    Q_EMIT changed();
}

void OperationRun::stopRepair() {
    stop();
    if (!isRunning() || m_insist.stop_requested())
        return;
    m_insist.request_stop();
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

void OperationRun::finish(OperationReport report) {
    m_state = State::Finished;
    m_silence = {};
    m_report = std::move(report);
    m_outcome = m_report.outcome();
    Q_EMIT changed();
    Q_EMIT finished();
}

} // namespace larkspur
