#pragma once

#include "core/output/OutputChange.h"

#include <memory>

namespace larkspur {

/// Receives an operation's output as it grows: the operation sheet, the terminal, the history and the tests
/// are four sinks. Called on the main thread.
class OutputSink {
  public:
    virtual ~OutputSink() = default;
    virtual void receive(const OutputChange &change) = 0;

    /// Adds one line that the program itself writes.
    void addLine(const QString &line) { receive(OutputChange::line(line)); }
};

using OutputSinkPtr = std::shared_ptr<OutputSink>;

} // namespace larkspur
