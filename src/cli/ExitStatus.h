#pragma once

#include "core/errors/BrewError.h"
#include "operations/OperationRun.h"

namespace larkspur::cli {

/// What scripts learn of a command's end.
enum class ExitStatus { Done = 0, Failed = 1, WrongUsage = 2, DoneWithWarnings = 3, NoHomebrew = 4 };

ExitStatus statusFor(const BrewError &error);
ExitStatus statusFor(OperationOutcome outcome);

} // namespace larkspur::cli
