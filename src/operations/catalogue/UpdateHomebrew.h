#pragma once

#include "operations/run/Operation.h"

namespace larkspur {

/// Fetches Homebrew's newest catalogue, without which no newer versions are ever found. Waits for its turn
/// among the operations: an update under a running upgrade would pull the rug from under it.
OperationPtr updateHomebrew();

} // namespace larkspur
