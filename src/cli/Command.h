#pragma once

#include "cli/ExitStatus.h"
#include "cli/Terminal.h"
#include "core/async/Task.h"

#include <QMap>
#include <QSet>
#include <QStringList>

#include <memory>

namespace larkspur {
class Larkspur;
}

namespace larkspur::cli {

/// The words after a command, taken apart.
struct CommandArguments {
    QStringList names;
    QSet<QString> options;

    bool has(const char *option) const { return options.contains(QLatin1String(option)); }
    bool wantsJson() const { return has("--json"); }
};

/// What a command works with. Lives until the command has ended.
struct CommandContext {
    Larkspur &larkspur;
    const Terminal &terminal;
    StopToken stop;   ///< Ctrl-C and what is like it
    StopToken insist; ///< the same for the second time
};

/// How a command is called.
struct CommandShape {
    QString name;
    QString synopsis;     ///< what follows the name, for example "NAME [--cask]"
    QString summary;      ///< one sentence
    QString details = {}; ///< what more its own help says
    QStringList options = {};
    /// Where the first name is a verb: each verb with the options that it takes.
    QMap<QString, QStringList> verbs = {};
    int fewestNames = 0;
    int mostNames = 0; ///< -1: any number
};

/// One command of the terminal.
class Command {
  public:
    virtual ~Command() = default;
    virtual CommandShape shape() const = 0;
    virtual Task<ExitStatus> run(CommandContext context, CommandArguments arguments) = 0;
};

} // namespace larkspur::cli
