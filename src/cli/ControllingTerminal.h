#pragma once

#include "core/async/Task.h"

#include <QString>

#include <optional>

namespace larkspur::cli {

/// The terminal at which the person sits, wherever standard input and output lead.
class ControllingTerminal {
  public:
    enum class Echo { On, Off };

    /// Whether there is one.
    static bool exists();

    /// Writes the prompt, made safe for a terminal, and waits for a line, without its line feed. Nothing at
    /// the end of input, when stop is requested, or without a terminal. The echo is on again afterwards,
    /// whatever happened.
    static Task<std::optional<QString>> readLine(QString prompt, Echo echo, StopToken stop);
};

} // namespace larkspur::cli
