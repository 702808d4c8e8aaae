#pragma once

#include "core/errors/Result.h"

#include <QByteArray>
#include <QString>

namespace larkspur {

/// How a child came to its end.
enum class ProcessEnd {
    Exited,        ///< by itself, with a status
    Crashed,       ///< killed by a signal that was not ours
    Stopped,       ///< ended because stop was requested
    TimedOut,      ///< ended because it printed nothing for too long
    TooLong,       ///< ended because it printed more than is captured
    FailedToStart, ///< never ran
};

/// The outcome of one child process. The bytes are kept as they came; the text forms decode them.
struct ShellResult {
    QByteArray outputBytes;
    /// Empty in terminal mode, where both streams arrive as one; the reason if it never ran or was too long.
    QByteArray errorBytes;
    int exitCode = 0; ///< 128 + signal for a crash, 127 if it never ran
    ProcessEnd end = ProcessEnd::Exited;
    QString commandLine;

    /// Everything written to standard output; undecodable bytes become U+FFFD.
    QString standardOutput() const { return QString::fromUtf8(outputBytes); }
    QString standardError() const { return QString::fromUtf8(errorBytes); }
    /// Both texts, for rules that look for a phrase wherever it was printed.
    QString combinedOutput() const;

    bool succeeded() const { return end == ProcessEnd::Exited && exitCode == 0; }

    /// The one table that turns an end into an error: nothing for success.
    std::expected<void, BrewError> verdict() const;
};

} // namespace larkspur
