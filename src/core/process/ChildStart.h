#pragma once

#include "core/authorization/Password.h"

#include <QByteArray>
#include <QProcess>

#include <optional>
#include <vector>

namespace larkspur {

class Descendants;
class TerminalConnection;

/// What happens in a child between fork and exec, and what has to be ready for it. A password is put into the
/// child's environment here and not by QProcess, which would leave copies of it in freed memory.
class ChildStart {
  public:
    /// `process`: not started yet, with its program, arguments and environment. `terminal` may be null.
    ChildStart(const QProcess &process, const TerminalConnection *terminal,
               const std::optional<Password> &password, int keptOpen, const Descendants &descendants);
    ~ChildStart();
    ChildStart(const ChildStart &) = delete;
    ChildStart &operator=(const ChildStart &) = delete;

    /// Runs in the child, which may share the program's memory until exec: async-signal-safe calls only, and
    /// nothing is written. Returns for QProcess to exec; with a password only if its own exec has failed, and
    /// QProcess then meets the same failure and reports it.
    void run() const;

  private:
    void prepareExec(const QProcess &process, const Password &password);

    const TerminalConnection *m_terminal;
    int m_keptOpen;
    const Descendants &m_descendants;
    std::vector<QByteArray> m_words;   ///< program and arguments; empty without a password
    std::vector<QByteArray> m_entries; ///< "NAME=VALUE"; the last is the one with the password
    std::vector<char *> m_arguments;
    std::vector<char *> m_environment;
};

} // namespace larkspur
