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
    Capture,  ///< to completion: everything at the end, up to a limit
    Stream,   ///< line by line through two pipes; the kept text is bounded
    Terminal, ///< through a terminal: both streams as one, redraws replace lines
};

/// One child process that is to run. Started directly, never through a shell.
struct ShellCommand {
    /// Many times what Homebrew's longest answer takes today, and still no danger to a machine's memory.
    static constexpr qsizetype defaultCaptureLimit = 256 * 1024 * 1024;

    QString program = {};
    QStringList arguments = {};
    RunMode mode = RunMode::Capture;
    /// Extra environment entries; they win over everything else.
    EnvironmentMap environment = {};
    /// For a sudo that the child may run: stands in its environment and nowhere else.
    std::optional<Password> password = std::nullopt;
    /// Whether Homebrew may not update itself first.
    bool suppressAutoUpdate = false;
    /// A descriptor of the program's that stays open in the child and in what it starts; not owned. -1: none.
    int keptOpen = -1;
    /// Ends the child early: SIGTERM to its whole process group, SIGKILL after a grace time.
    StopToken stop = {};
    /// A child that prints nothing for this long is ended and counts as timed out; zero: no limit.
    std::chrono::milliseconds silenceLimit{0};
    /// Bytes that are captured of each stream. A child that prints more is ended and counts as failed: half
    /// an answer could be taken for a whole one.
    qsizetype captureLimit = defaultCaptureLimit;
    /// Called with each piece of output as it arrives, in Stream and Terminal mode.
    std::function<void(const OutputChange &)> onOutput = {};
    /// Called once a second while nothing has come for `silenceNotice`, with the length of the silence.
    std::function<void(std::chrono::seconds)> onSilence = {};
    std::chrono::milliseconds silenceNotice{60'000};

    /// Program and arguments joined with blanks, for the log and for messages.
    QString commandLine() const { return (QStringList{program} + arguments).join(QLatin1Char(' ')); }
};

} // namespace larkspur
