#pragma once

#include <QProcess>
#include <QString>

#include <expected>
#include <memory>

namespace larkspur {

/// One child's terminal, from before its start until its output has ended.
class TerminalConnection {
  public:
    virtual ~TerminalConnection() = default;

    /// File descriptor that the child's output arrives on, owned by this object; -1 if it arrives on the
    /// child's standard output.
    virtual int descriptor() const { return -1; }

    /// Called in the child between fork and exec, when it leads a session of its own: makes the terminal that
    /// session's. Async-signal-safe calls only.
    virtual void enterInChild() const {}

    /// To be called once the child runs: the program's own copy of the child's side is closed.
    virtual void childStarted() {}
};

/// Port: gives a child a terminal of `columns` × `rows`.
class PseudoTerminal {
  public:
    static constexpr int columns = 120;
    static constexpr int rows = 40;

    virtual ~PseudoTerminal() = default;

    /// Prepares a process that has not been started. The error is one line of text.
    virtual std::expected<std::unique_ptr<TerminalConnection>, QString> attach(QProcess &process) = 0;
};

/// Without terminals: the child runs on one pipe for both streams.
class NullPseudoTerminal final : public PseudoTerminal {
  public:
    std::expected<std::unique_ptr<TerminalConnection>, QString> attach(QProcess &process) override;
};

} // namespace larkspur
