#include "core/process/PseudoTerminal.h"

#include <unistd.h>

namespace larkspur {

std::expected<std::unique_ptr<TerminalConnection>, QString> NullPseudoTerminal::attach(QProcess &process) {
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setChildProcessModifier([] { ::setsid(); });
    return std::make_unique<TerminalConnection>();
}

} // namespace larkspur
