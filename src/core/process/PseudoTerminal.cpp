#include "core/process/PseudoTerminal.h"

namespace larkspur {

std::expected<std::unique_ptr<TerminalConnection>, QString> NullPseudoTerminal::attach(QProcess &process) {
    process.setProcessChannelMode(QProcess::MergedChannels);
    return std::make_unique<TerminalConnection>();
}

} // namespace larkspur
