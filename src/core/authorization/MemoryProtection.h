#pragma once

namespace larkspur {

/// Keeps the program's memory out of core dumps.
class MemoryProtection {
  public:
    virtual ~MemoryProtection() = default;

    /// From now on, until the program ends: toolkits copy what passes through them, and no later moment is
    /// known at which the last copy is gone. May be called again.
    virtual void forbidDumps() = 0;
};

class NullMemoryProtection final : public MemoryProtection {
  public:
    void forbidDumps() override {}
};

} // namespace larkspur
