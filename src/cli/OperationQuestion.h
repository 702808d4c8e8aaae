#pragma once

#include "cli/Command.h"
#include "operations/run/Operation.h"

namespace larkspur::cli {

/// Shows what an upgrade or a removal will do and asks whether to go on, at the controlling terminal. Does
/// not ask where there is nothing to tell, where standard output is no terminal, with --yes, or where the
/// person has switched it off. A pinned package is upgraded only after a yes.
Task<bool> mayProceed(CommandContext context, OperationPtr operation, bool isAgreed);

} // namespace larkspur::cli
