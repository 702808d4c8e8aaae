#include "core/process/ShellResult.h"

namespace larkspur {

QString ShellResult::combinedOutput() const {
    if (errorBytes.isEmpty())
        return standardOutput();
    if (outputBytes.isEmpty())
        return standardError();
    return standardOutput() + QLatin1Char('\n') + standardError();
}

std::expected<void, BrewError> ShellResult::verdict() const {
    switch (end) {
    case ProcessEnd::Stopped:
        return std::unexpected(BrewError::stopped());
    case ProcessEnd::TimedOut:
        return std::unexpected(BrewError::timeout(commandLine));
    case ProcessEnd::TooLong:
        return std::unexpected(BrewError::commandFailed(
            QStringLiteral("%1 was ended: %2").arg(commandLine, standardError().trimmed())));
    case ProcessEnd::FailedToStart:
        return std::unexpected(BrewError::commandFailed(
            QStringLiteral("%1 could not be started: %2").arg(commandLine, standardError().trimmed())));
    case ProcessEnd::Crashed:
    case ProcessEnd::Exited:
        break;
    }
    if (exitCode == 0)
        return {};
    QString text = standardError().trimmed();
    if (text.isEmpty())
        text = standardOutput().trimmed();
    if (text.isEmpty())
        text = QStringLiteral("%1 ended with status %2").arg(commandLine).arg(exitCode);
    return std::unexpected(BrewError::commandFailed(text));
}

} // namespace larkspur
