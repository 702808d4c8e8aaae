#pragma once

#include "cli/Command.h"

namespace larkspur::cli {

/// What it means that a command is run where nobody can be asked, in a script for example.
enum class WithoutTerminal {
    GoOn,   ///< a script means what it says
    Refuse, ///< what cannot be undone wants --yes there
};

/// Asks on an interactive terminal, unless the person has agreed beforehand (--yes). A refusal says why.
Task<bool> agrees(CommandContext context, QString question, bool isAgreed,
                  WithoutTerminal otherwise = WithoutTerminal::GoOn);

} // namespace larkspur::cli
