#pragma once

#include "core/authorization/MemoryProtection.h"

namespace larkspur {

/// The program writes no core files any more.
class ProcessDumps final : public MemoryProtection {
  public:
    void forbidDumps() override;
};

} // namespace larkspur
