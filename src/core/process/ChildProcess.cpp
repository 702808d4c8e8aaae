#include "core/process/ChildProcess.h"

#include "core/process/ChildStart.h"

#include <array>
#include <cerrno>
#include <unistd.h>

namespace larkspur {

using namespace std::chrono_literals;

namespace {

constexpr auto terminalDrainLimit = 500ms; // a descendant may hold the terminal open for ever
constexpr int terminalReadsAtOnce = 16;    // then other events get their turn

} // namespace

ChildProcess::ChildProcess(ShellCommand command, const QProcessEnvironment &environment, const System &system)
    : m_command(std::move(command))
    , m_terminal(system.terminal)
    , m_groupEnd(system.processes, m_descendants, system.grace)
    , m_output(m_command.mode, m_command.captureLimit, m_command.onOutput) {
    m_process.setProgram(m_command.program);
    m_process.setArguments(m_command.arguments);
    m_process.setProcessEnvironment(environment);
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_result.commandLine = m_command.commandLine();
    connect(&m_groupEnd, &GroupEnd::ended, this, &ChildProcess::onGroupEnded);
    connect(&m_groupEnd, &GroupEnd::survived, this, [this](const QString &line) {
        m_output.add(line);
        Q_EMIT noticed(line);
    });
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
    if (m_command.keptOpen >= 0)
        m_descendants.prepare();
    const ChildStart start(m_process, m_connection.get(), m_command.password, m_command.keptOpen,
                           m_descendants);
    m_process.setChildProcessModifier([&start] { start.run(); });
    m_process.start();
    m_process.setChildProcessModifier({});
    m_descendants.childStarted();
    m_command.password.reset(); // the child has it
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
    if (m_output.isOverLimit())
        requestEnd(ProcessEnd::TooLong);
}

void ChildProcess::checkSilence() {
    const auto silent = std::chrono::milliseconds(m_silence.elapsed());
    if (m_command.silenceLimit > 0ms && silent >= m_command.silenceLimit)
        requestEnd(ProcessEnd::TimedOut);
    else if (m_command.onSilence && silent >= m_command.silenceNotice)
        m_command.onSilence(std::chrono::duration_cast<std::chrono::seconds>(silent));
}

void ChildProcess::requestEnd(ProcessEnd why) {
    if (m_forcedEnd)
        return;
    const bool isRunning = m_process.state() != QProcess::NotRunning;
    if (isRunning || why == ProcessEnd::TooLong) // which its last words can be
        m_forcedEnd = why;
    if (isRunning)
        m_groupEnd.begin(m_group);
}

void ChildProcess::onFinished(int exitCode, QProcess::ExitStatus status) {
    readPipes();
    m_silenceTimer.stop();
    const bool crashed = status == QProcess::CrashExit;
    m_result.exitCode = crashed ? 128 + exitCode : exitCode;
    m_result.end = m_forcedEnd.value_or(crashed ? ProcessEnd::Crashed : ProcessEnd::Exited);
    if (m_result.end == ProcessEnd::TooLong && exitCode == 0)
        m_result.exitCode = 1; // its own was about an answer that nobody has
    if (m_result.end == ProcessEnd::Exited) {
        awaitTerminalEnd();
        return;
    }
    m_groupEnd.begin(m_group); // nothing that the child has started may go on by itself
}

void ChildProcess::onGroupEnded() {
    if (m_process.state() == QProcess::NotRunning) // else its end is reported in a moment
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
    if (m_done.isComplete() || m_groupEnd.isUnderWay())
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
