#pragma once

#include "core/brew/BrewService.h"
#include "operations/OperationRequest.h"

namespace larkspur {

/// The brew command line that does what is requested to one of its packages; for the upgrade of all, without
/// one. The flags of an install count for casks only. Empty if the package's name is none.
BrewArguments brewArguments(const OperationRequest &request, const PackageTarget &package);

/// Commands that download run on a terminal, so that today's Homebrew shows how far it is.
BrewSession::Style streamStyle(OperationKind kind);

} // namespace larkspur
