#include "operations/plan/DryRun.h"

#include <cstddef>
#include <cstdint>

/// What brew prints before an upgrade.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    larkspur::OperationPlan plan;
    larkspur::readDryRun(
        QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)), plan);
    larkspur::describePlan(plan);
    return 0;
}
