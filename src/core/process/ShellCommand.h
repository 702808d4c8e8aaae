#pragma once

#include "core/async/Task.h"
#include "core/authorization/Password.h"
#include "core/output/OutputChange.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>
#include <optional>

namespace larkspur {

using EnvironmentMap = QMap<QString, QString>;

/// How a child's output is collected.
enum class RunMode {
    Capture,  ///< to completion: everything at the end, however much
    Stream,   ///< line by line through two pipes; the kept text is bounded
    Terminal, ///< through a terminal: both streams as one, redraws replace lines
};

/// One child process that is to run. Started directly, never through a shell.
struct ShellCommand {
    QString program = {};
    QStringList arguments = {};
    RunMode mode = RunMode::Capture;
    /// Extra environment entries; they win over everything else.
    EnvironmentMap environment = {};
    /// For a sudo that the child may run: stands in its environment and nowhere else.
    std::optional<Password> password = std::nullopt;
    /// Whether Homebrew may not update itself first.
    bool suppressAutoUpdate = false;
    /// Ends the child early: SIGTERM to its whole process group, SIGKILL after a grace time.
    StopToken stop = {};
    /// A child that prints nothing for this long is ended and counts as timed out; zero: no limit.
    std::chrono::milliseconds silenceLimit{0};
    /// Called with each piece of output as it arrives, in Stream and Terminal mode.
    std::function<void(const OutputChange &)> onOutput = {};
    /// Called once a second while nothing has come for `silenceNotice`, with the length of the silence.
    std::function<void(std::chrono::seconds)> onSilence = {};
    std::chrono::milliseconds silenceNotice{60'000};

    /// Program and arguments joined with blanks, for the log and for messages.
    QString commandLine() const { return (QStringList{program} + arguments).join(QLatin1Char(' ')); }
};

} // namespace larkspur
