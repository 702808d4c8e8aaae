#pragma once

#include "core/brew/BrewService.h"
#include "operations/OperationRequest.h"

namespace larkspur {

/// What became of an operation, beside its output.
struct OperationReport {
    bool wasStopped = false;
    int failedPackages = 0;
};

/// Does the work of an operation request: takes the lock for the whole of it, runs brew for one package after
/// the other, and goes on after a package that failed.
class PackageOperations {
  public:
    explicit PackageOperations(BrewService &brew)
        : m_brew(brew) {}

    /// Fails if the lock was never got or brew could not be run; what failed inside brew is told by the
    /// output. `onBegin` is called once the lock is held.
    Task<Result<OperationReport>> perform(OperationRequest request, OperationContext context,
                                          std::function<void()> onBegin = {});

  private:
    Task<Result<OperationReport>> performBatch(BrewSession session, OperationRequest request,
                                               OperationContext context);

    BrewService &m_brew;
};

} // namespace larkspur
