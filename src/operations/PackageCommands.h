#pragma once

#include "core/brew/BrewService.h"
#include "operations/OperationRequest.h"

namespace larkspur {

/// The brew command line that does `kind` to one package; for the upgrade of all, without a package.
QStringList brewArguments(OperationKind kind, const PackageTarget &package);

/// Commands that download run on a terminal, so that today's Homebrew shows how far it is.
BrewSession::Style streamStyle(OperationKind kind);

} // namespace larkspur
