#pragma once

#include "operations/casks/CaskUpgrade.h"
#include "operations/casks/RepairStep.h"

namespace larkspur {

/// Where Homebrew has not come to the end of an upgrade, takes back to how it was before: applications, links
/// and records. Where the new version was installed, only the removal of the old was cut off: that is
/// finished if the new applications are in place, and left alone, with a warning, if that cannot be told; as
/// is an application of which nobody has kept a copy. Does nothing where the applications are whole, old or
/// new, or the cask is not there any more. What is in the way goes to the trash. Blocking.
QList<RepairStep> putRight(const CaskUpgrade &upgrade, const CaskSetting &setting);

} // namespace larkspur
