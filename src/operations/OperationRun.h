#pragma once

#include "core/async/Task.h"
#include "core/errors/Result.h"
#include "core/output/OperationProgress.h"
#include "core/output/OutputSink.h"
#include "core/output/Transcript.h"
#include "operations/run/Operation.h"

#include <QObject>

#include <chrono>

namespace larkspur {

/// One operation from the moment it was asked for until its outcome is known: what the operation bar, its
/// sheet and the terminal show.
class OperationRun : public QObject {
    Q_OBJECT
  public:
    enum class State { Queued, Running, AskingForPassword, Finished };

    explicit OperationRun(OperationPtr operation, QObject *parent = nullptr);

    const OperationPtr &operation() const { return m_operation; }
    QString title() const { return m_operation->title(); }
    State state() const { return m_state; }
    bool isRunning() const { return m_state != State::Finished; }
    OperationOutcome outcome() const { return m_outcome; }
    bool wasStopped() const { return m_report.wasStopped(); }
    /// The person did not give the password, and nothing else has come of it.
    bool wasCancelled() const { return m_report.wasCancelled(); }
    /// What became of each package; empty until the end.
    const OperationReport &report() const { return m_report; }
    /// What a person needs to know of a failure, above the output.
    FailureSummary failureSummary() const;
    bool isStopping() const { return isRunning() && m_stop.stop_requested(); }
    const Transcript &transcript() const { return m_transcript; }
    const OperationProgress &progress() const { return m_progress; }
    /// How long nothing has come from Homebrew; zero while that is not worth a word.
    std::chrono::seconds silence() const { return m_silence; }

    StopToken stopToken() const { return m_stop.get_token(); }
    /// Asks the operation to end. It ends by itself once its child has, and what had begun is put right.
    void stop();
    StopToken insistToken() const { return m_insist.get_token(); }
    bool isStoppingRepair() const { return isRunning() && m_insist.stop_requested(); }
    /// Asks for the end of that too; then it is put right before the next operation.
    void stopRepair();

    // For the one who runs it.
    OutputSinkPtr sink();
    void begin();
    void noteSilence(std::chrono::seconds silence);
    void notePackage(const QString &name, int done, int total);
    void notePrompt(bool isAsking);
    void finish(OperationReport report);

  Q_SIGNALS:
    void outputReceived(const larkspur::OutputChange &change);
    /// State, progress, current item or silence are no longer what they were.
    void changed();
    void finished();

  private:
    class Sink;
    void receive(const OutputChange &change);

    OperationPtr m_operation;
    State m_state = State::Queued;
    OperationOutcome m_outcome = OperationOutcome::Running;
    OperationReport m_report;
    Transcript m_transcript;
    OperationProgress m_progress;
    std::chrono::seconds m_silence{0};
    StopSource m_stop;
    StopSource m_insist;
};

} // namespace larkspur
