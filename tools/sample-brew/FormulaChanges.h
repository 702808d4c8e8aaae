#pragma once

#include "Brew.h"

namespace sample {

/// The formula's dependencies that are missing or outdated, deepest first.
QList<const Formula *> neededDependencies(const Brew &brew, const Formula &formula);

// Each returns brew's exit status.
int installFormula(Brew &brew, const Formula &formula, bool onRequest, const QString &verb);
int reinstallFormula(Brew &brew, const Formula &formula);
int removeFormula(Brew &brew, const Formula &formula, const Arguments &arguments);
int unlinkFormula(Brew &brew, const Formula &formula);
/// Makes the links of the newest keg; a keg-only formula gets none.
int linkFormula(Brew &brew, const Formula &formula);

} // namespace sample
