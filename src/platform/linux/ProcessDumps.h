#pragma once

#include "core/authorization/MemoryProtection.h"

namespace larkspur {

/// Neither core files nor another process of the same person may see the memory.
class ProcessDumps final : public MemoryProtection {
  public:
    void forbidDumps() override;
};

} // namespace larkspur
