#pragma once

#include "cli/Command.h"

#include <expected>
#include <vector>

namespace larkspur::cli {

/// Every command, in the order in which help lists them.
class CommandRegistry {
  public:
    CommandRegistry();

    Command *find(const QString &name) const;
    /// The command whose name is closest to a misspelt one; null if none is near.
    Command *nearest(const QString &name) const;
    QString overview() const;
    QString help(const Command &command) const;

  private:
    std::vector<std::unique_ptr<Command>> m_commands;
};

/// Takes the words after a command's name apart; the error says what is wrong with them.
std::expected<CommandArguments, QString> parseArguments(const CommandShape &shape, const QStringList &words);

/// Finds and runs the command that the words name, help included.
Task<ExitStatus> runCommandLine(CommandContext context, QStringList words);

} // namespace larkspur::cli
