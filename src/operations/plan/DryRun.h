#pragma once

#include "core/brew/BrewService.h"
#include "operations/plan/OperationPlan.h"

namespace larkspur {

/// Asks Homebrew what `brew upgrade` would change, and changes nothing: neither does it update the catalogue.
/// `selfUpdating`: casks that update themselves, too.
BrewCommand dryRunOfAll(bool selfUpdating, StopToken stop);
/// The same of some packages of one kind; names that are none are left out.
BrewCommand dryRunOf(const QStringList &names, bool areCasks, StopToken stop);

/// What an installation would change besides what it adds: outdated dependencies come along.
BrewCommand dryRunOfInstall(const QStringList &names, bool areCasks, StopToken stop);

/// The changes in its output; adds to what the plan holds.
void readDryRun(const QString &output, OperationPlan &plan);

} // namespace larkspur
