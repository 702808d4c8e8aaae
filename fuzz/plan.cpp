#include "operations/plan/OperationPlan.h"

#include <cstddef>
#include <cstdint>

/// What brew prints before an upgrade.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    larkspur::OperationPlan plan;
    larkspur::readDryRun(
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)), plan);
    larkspur::describePlan({.kind = larkspur::OperationKind::UpgradeAll}, plan);
    return 0;
}
