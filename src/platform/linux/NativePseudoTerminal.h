#pragma once

#include "core/process/PseudoTerminal.h"

namespace larkspur {

/// A terminal of the kernel's own (/dev/ptmx), which the child gets as its controlling terminal.
class NativePseudoTerminal final : public PseudoTerminal {
  public:
    std::expected<std::unique_ptr<TerminalConnection>, QString> attach(QProcess &process) override;
};

} // namespace larkspur
