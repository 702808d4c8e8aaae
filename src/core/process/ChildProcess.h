#pragma once

#include "core/async/Completion.h"
#include "core/process/Descendants.h"
#include "core/process/GroupEnd.h"
#include "core/process/OutputCollector.h"
#include "core/process/PseudoTerminal.h"
#include "core/process/ShellCommand.h"
#include "core/process/ShellResult.h"

#include <QElapsedTimer>
#include <QObject>
#include <QProcess>
#include <QProcessEnvironment>
#include <QSocketNotifier>
#include <QTimer>

#include <memory>
#include <optional>

namespace larkspur {

/// One run of one child, from start to its drained end. Leads its own process group, reads nothing from the
/// person's terminal, and takes its whole group with it when it is stopped, times out or crashes.
class ChildProcess : public QObject {
    Q_OBJECT
  public:
    struct System {
        PseudoTerminal &terminal;
        const ProcessTable &processes;
        std::chrono::milliseconds grace; ///< between SIGTERM and SIGKILL
    };
    ChildProcess(ShellCommand command, const QProcessEnvironment &environment, const System &system);

    /// Starts the child. The completion is settled exactly once, after which the object may be deleted.
    Completion<ShellResult> start();

  Q_SIGNALS:
    /// Something that belongs into the log.
    void noticed(const QString &line);

  private:
    void onStarted();
    void onFinished(int exitCode, QProcess::ExitStatus status);
    void onFailedToStart(QString reason);
    void readPipes();
    void readTerminal();
    void take(OutputChannel channel, QByteArrayView bytes);
    void checkSilence();
    void requestEnd(ProcessEnd why);
    void onGroupEnded();
    void awaitTerminalEnd();
    void settle();

    ShellCommand m_command;
    PseudoTerminal &m_terminal;
    QProcess m_process;
    std::unique_ptr<TerminalConnection> m_connection;
    std::unique_ptr<QSocketNotifier> m_terminalNotifier;
    ProcessGroup m_group;
    Descendants m_descendants;
    GroupEnd m_groupEnd;
    OutputCollector m_output;
    QElapsedTimer m_silence;
    QTimer m_silenceTimer;
    std::optional<ProcessEnd> m_forcedEnd;
    ShellResult m_result;
    Completion<ShellResult> m_done;
    std::optional<std::stop_callback<std::function<void()>>> m_onStop;
};

} // namespace larkspur
