#pragma once

#include "core/async/Task.h"
#include "core/process/ShellCommand.h"
#include "core/process/ShellResult.h"

namespace larkspur {

/// Runs child processes, any number at once. The engine talks to this interface, so that its tests need none.
class ShellExecutor {
  public:
    virtual ~ShellExecutor() = default;

    /// Runs the command and resumes on the main thread when it has ended and its output is drained. Never
    /// fails: a child that could not be started is a result too.
    virtual Task<ShellResult> run(ShellCommand command) = 0;
};

} // namespace larkspur
