#include "platform/macos/ScriptPseudoTerminal.h"

#include "core/process/ScriptCommandLine.h"

namespace larkspur {

std::expected<std::unique_ptr<TerminalConnection>, QString> ScriptPseudoTerminal::attach(QProcess &process) {
    // script copies the size of its own standard input, which is none here: the child's shell sets it first.
    const QString size = QStringLiteral("stty columns %1 rows %2; ").arg(columns).arg(rows);
    const QString commandLine = scriptCommandLine(process.program(), process.arguments(), size);
    process.setProgram(QStringLiteral("/bin/zsh"));
    process.setArguments({QStringLiteral("-c"), QStringLiteral("exec ") + commandLine});
    process.setProcessChannelMode(QProcess::MergedChannels);
    return std::make_unique<TerminalConnection>();
}

} // namespace larkspur
