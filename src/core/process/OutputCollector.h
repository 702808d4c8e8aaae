#pragma once

#include "core/output/LineSplitter.h"
#include "core/output/OutputChange.h"
#include "core/output/TerminalReader.h"
#include "core/output/Transcript.h"
#include "core/process/ShellCommand.h"
#include "core/process/ShellResult.h"

namespace larkspur {

enum class OutputChannel { Output, Errors };

/// Takes a child's bytes and makes of them what its run mode promises: changes for the consumer while it
/// runs, texts for the result at the end.
class OutputCollector {
  public:
    /// `captureLimit`: bytes of each stream that are captured.
    OutputCollector(RunMode mode, qsizetype captureLimit, std::function<void(const OutputChange &)> consumer);

    void take(OutputChannel channel, QByteArrayView bytes);

    /// Whether there was more to capture than the limit allows; nothing is kept then.
    bool isOverLimit() const { return m_isOverLimit; }

    /// A line of the program's own between the child's; captured output stays the child's alone.
    void add(const QString &line);

    /// The end of both streams: delivers last fragments.
    void finish();

    /// Moves the collected texts into the result.
    void fill(ShellResult &result);

  private:
    struct Stream {
        QByteArray captured;
        LineSplitter splitter;
        Transcript transcript;
    };
    Stream &stream(OutputChannel channel) { return channel == OutputChannel::Output ? m_output : m_errors; }
    void capture(Stream &stream, QByteArrayView bytes);
    void deliver(OutputChannel channel, const OutputChange &change);

    RunMode m_mode;
    qsizetype m_captureLimit;
    bool m_isOverLimit = false;
    std::function<void(const OutputChange &)> m_consumer;
    Stream m_output;
    Stream m_errors;
    TerminalReader m_terminal;
};

} // namespace larkspur
