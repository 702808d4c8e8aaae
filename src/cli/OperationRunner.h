#pragma once

#include "cli/Command.h"
#include "operations/run/Operation.h"

namespace larkspur::cli {

/// Asks before what is worth a question, unless the person has agreed beforehand; then starts the operation,
/// prints its output as it comes, and waits for its end.
Task<ExitStatus> runOperation(CommandContext context, OperationPtr operation, bool isAgreed);

} // namespace larkspur::cli
