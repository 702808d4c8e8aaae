#pragma once

#include "Brew.h"

namespace sample {

// Each returns brew's exit status.
int installCask(Brew &brew, const Cask &cask, const Arguments &arguments);
int upgradeCask(Brew &brew, const Cask &cask);
int reinstallCask(Brew &brew, const Cask &cask, const Arguments &arguments);
int removeCask(Brew &brew, const Cask &cask);

/// What Homebrew says after the caveats header of formulae and casks alike.
void printCaveats(const Brew &brew, QString caveats);

} // namespace sample
