#pragma once

#include "core/process/PseudoTerminal.h"

#include <QStringList>

namespace larkspur {

/// A terminal that /usr/bin/script makes: all of the child's output comes back on script's standard output.
class ScriptPseudoTerminal final : public PseudoTerminal {
  public:
    std::expected<std::unique_ptr<TerminalConnection>, QString> attach(QProcess &process) override;
};

} // namespace larkspur
