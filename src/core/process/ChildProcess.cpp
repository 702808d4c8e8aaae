#include "core/process/ChildProcess.h"

#include <array>
#include <cerrno>
#include <unistd.h>

namespace larkspur {

using namespace std::chrono_literals;

namespace {

constexpr auto groupPoll = 50ms;           // how often survivors of a stopped group are looked for
constexpr auto terminalDrainLimit = 500ms; // a descendant may hold the terminal open for ever
constexpr int terminalReadsAtOnce = 16;    // then other events get their turn

} // namespace

ChildProcess::ChildProcess(ShellCommand command, QProcessEnvironment environment, PseudoTerminal &terminal,
                           std::chrono::milliseconds grace)
    : m_command(std::move(command))
    , m_terminal(terminal)
    , m_grace(grace)
    , m_output(m_command.mode, m_command.onOutput) {
    m_process.setProgram(m_command.program);
    m_process.setArguments(m_command.arguments);
    m_process.setProcessEnvironment(environment);
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_process.setChildProcessModifier([] { ::setsid(); });
    m_result.commandLine = m_command.commandLine();
    m_killTimer.setSingleShot(true);
    connect(&m_killTimer, &QTimer::timeout, this, [this] { m_group.kill(); });
    connect(&m_silenceTimer, &QTimer::timeout, this, &ChildProcess::checkSilence);
}

Completion<ShellResult> ChildProcess::start() {
    connect(&m_process, &QProcess::started, this, &ChildProcess::onStarted);
    connect(&m_process, &QProcess::finished, this, &ChildProcess::onFinished);
    connect(&m_process, &QProcess::readyReadStandardOutput, this, &ChildProcess::readPipes);
    connect(&m_process, &QProcess::readyReadStandardError, this, &ChildProcess::readPipes);
    connect(&m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            onFailedToStart(m_process.errorString());
    });
    if (m_command.mode == RunMode::Terminal) {
        auto connection = m_terminal.attach(m_process);
        if (!connection) {
            onFailedToStart(connection.error());
            return m_done;
        }
        m_connection = std::move(*connection);
    }
    m_process.start();
    return m_done;
}

void ChildProcess::onStarted() {
    m_group = ProcessGroup(m_process.processId());
    if (m_connection) {
        m_connection->childStarted();
        if (m_connection->descriptor() >= 0) {
            m_terminalNotifier =
                std::make_unique<QSocketNotifier>(m_connection->descriptor(), QSocketNotifier::Read);
            connect(m_terminalNotifier.get(), &QSocketNotifier::activated, this, &ChildProcess::readTerminal);
        }
    }
    m_silence.start();
    m_silenceTimer.start(m_command.silenceLimit > 0ms
                             ? std::min<std::chrono::milliseconds>(m_command.silenceLimit / 4, 1s)
                             : 1s);
    // Queued: stop may be requested from anywhere in the call stack, even from this child's own output.
    m_onStop.emplace(m_command.stop, [this] {
        QMetaObject::invokeMethod(this, [this] { requestEnd(ProcessEnd::Stopped); }, Qt::QueuedConnection);
    });
}

void ChildProcess::onFailedToStart(QString reason) {
    m_result.end = ProcessEnd::FailedToStart;
    m_result.exitCode = 127;
    m_result.errorBytes = reason.toUtf8();
    m_done.complete(std::move(m_result));
}

void ChildProcess::readPipes() {
    take(OutputChannel::Output, m_process.readAllStandardOutput());
    take(OutputChannel::Errors, m_process.readAllStandardError());
}

void ChildProcess::readTerminal() {
    std::array<char, 16 * 1024> buffer; // NOLINT: filled by read
    for (int i = 0; i < terminalReadsAtOnce; ++i) {
        const auto count = ::read(m_connection->descriptor(), buffer.data(), buffer.size());
        if (count > 0) {
            take(OutputChannel::Output, QByteArrayView(buffer.data(), count));
            continue;
        }
        if (count < 0 && (errno == EAGAIN || errno == EINTR))
            return;
        m_terminalNotifier->setEnabled(false); // the last holder has closed the terminal
        m_terminalNotifier->disconnect(this);
        if (m_process.state() == QProcess::NotRunning)
            settle();
        return;
    }
}

void ChildProcess::take(OutputChannel channel, QByteArrayView bytes) {
    if (bytes.isEmpty())
        return;
    m_silence.start();
    m_output.take(channel, bytes);
}

void ChildProcess::checkSilence() {
    const auto silent = std::chrono::milliseconds(m_silence.elapsed());
    if (m_command.silenceLimit > 0ms && silent >= m_command.silenceLimit)
        requestEnd(ProcessEnd::TimedOut);
    else if (m_command.onSilence && silent >= m_command.silenceNotice)
        m_command.onSilence(std::chrono::duration_cast<std::chrono::seconds>(silent));
}

void ChildProcess::requestEnd(ProcessEnd why) {
    if (m_forcedEnd || m_process.state() == QProcess::NotRunning)
        return;
    m_forcedEnd = why;
    m_group.terminate();
    m_killTimer.start(m_grace);
}

void ChildProcess::onFinished(int exitCode, QProcess::ExitStatus status) {
    readPipes();
    m_silenceTimer.stop();
    const bool crashed = status == QProcess::CrashExit;
    m_result.exitCode = crashed ? 128 + exitCode : exitCode;
    m_result.end = m_forcedEnd.value_or(crashed ? ProcessEnd::Crashed : ProcessEnd::Exited);
    if (m_result.end == ProcessEnd::Exited) {
        awaitTerminalEnd();
        return;
    }
    // Nothing that the child has started may go on by itself.
    m_group.terminate();
    if (!m_killTimer.isActive())
        m_killTimer.start(m_grace);
    awaitGroup();
}

void ChildProcess::awaitGroup() {
    if (m_group.isAlive() && m_killTimer.isActive()) {
        QTimer::singleShot(groupPoll, this, &ChildProcess::awaitGroup);
        return;
    }
    m_group.kill();
    m_killTimer.stop();
    awaitTerminalEnd();
}

void ChildProcess::awaitTerminalEnd() {
    if (!m_terminalNotifier || !m_terminalNotifier->isEnabled()) {
        settle();
        return;
    }
    readTerminal();
    QTimer::singleShot(terminalDrainLimit, this, &ChildProcess::settle);
}

void ChildProcess::settle() {
    if (m_done.isComplete() || m_killTimer.isActive())
        return;
    m_onStop.reset();
    if (m_terminalNotifier) { // this may run inside its own signal
        m_terminalNotifier->setEnabled(false);
        m_terminalNotifier.release()->deleteLater();
    }
    m_output.finish();
    m_output.fill(m_result);
    m_done.complete(std::move(m_result));
}

} // namespace larkspur
