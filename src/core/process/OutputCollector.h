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
    OutputCollector(RunMode mode, std::function<void(const OutputChange &)> consumer);

    void take(OutputChannel channel, QByteArrayView bytes);

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
    void deliver(OutputChannel channel, const OutputChange &change);

    RunMode m_mode;
    std::function<void(const OutputChange &)> m_consumer;
    Stream m_output;
    Stream m_errors;
    TerminalReader m_terminal;
};

} // namespace larkspur
