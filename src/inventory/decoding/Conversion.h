#pragma once

#include "inventory/decoding/WireRecords.h"
#include "inventory/records/Cask.h"
#include "inventory/records/Formula.h"
#include "inventory/records/OutdatedPackage.h"

namespace larkspur {

/// The newest of several installed versions counts; without any, the stable version.
Formula toFormula(const FormulaJSON &json);

/// The installed version counts before the one that the tap offers.
Cask toCask(const CaskJSON &json);

OutdatedPackage toOutdatedPackage(const OutdatedFormula &formula);
OutdatedPackage toOutdatedPackage(const OutdatedCask &cask);

} // namespace larkspur
