#pragma once

#include "operations/casks/CaskUpgrade.h"

namespace larkspur {

/// The words about what was done; the error is what could not be, and why. One line each.
using RepairStep = std::expected<QString, QString>;

/// Where Homebrew has not come to the end of an upgrade, takes all back to how it was before: applications,
/// links and records. Does nothing where the applications are whole, old or new, or the cask is not there any
/// more. What is in the way goes to the trash. Blocking.
QList<RepairStep> putRight(const CaskUpgrade &upgrade, const CaskSetting &setting);

} // namespace larkspur
